#include "browse/zuvifollowingcollectionviewcell.h"
#include "browse/zuvifollowingrowsmodel.h"
#include "browse/zuvifollowingviewcontroller.h"
#include "net/zuvifollowingfeedparser.h"
#include "platform/zuviidiom.h"
#include "platform/zuvivirtualscheduler.h"
#include "views/zuvistateview.h"
#include "zuvibrowsetestfeed.h"
#include "zuviscreenlifetimecheck.h"

#include <QAbstractItemModelTester>
#include <QtTest>

#include <memory>

using Following = ZuviFollowingViewController;

namespace {
const QString kFeedPath = QStringLiteral("/x/polymer/web-dynamic/v1/feed/all");
const QString kNavPath = QStringLiteral("/x/web-interface/nav");

// A video post and a text post, in the feed's item shape.
QJsonObject videoPost(const QString &id)
{
    return QJsonObject{
        {"id_str", id},
        {"modules",
         QJsonObject{
             {"module_author", QJsonObject{{"name", "UP " + id}}},
             {"module_dynamic",
              QJsonObject{{"major", QJsonObject{{"archive", QJsonObject{{"bvid", "BV1" + id},
                                                                        {"title", "video " + id},
                                                                        {"aid", 7}}}}}}}}}};
}

QJsonObject textPost(const QString &id)
{
    return QJsonObject{
        {"id_str", id},
        {"modules", QJsonObject{{"module_author", QJsonObject{{"name", "UP " + id}}},
                                {"module_dynamic",
                                 QJsonObject{{"desc", QJsonObject{{"text", "post " + id}}}}}}}};
}

ZuviScriptedAnswer feedAnswer(const QJsonArray &items, bool hasMore, const QString &offset,
                              int delayMs = 0)
{
    ZuviScriptedAnswer answer = ZuviScriptedAnswer::json(
        QJsonDocument(
            QJsonObject{
                {"code", 0},
                {"data", QJsonObject{{"items", items}, {"has_more", hasMore}, {"offset", offset}}}})
            .toJson());
    answer.delayMs = delayMs;
    return answer;
}
} // namespace

// The following tab against a loopback feed: paging by offset and where it
// stops, repeats, the segments, the viewport check on the virtual clock, the
// login states and the screen going away with its request out.
class TestFollowingViewController : public QObject
{
    Q_OBJECT

private:
    ZuviBrowseTestService service;
    std::unique_ptr<ZuviVirtualScheduler> scheduler;
    std::unique_ptr<Following> screen;
    std::unique_ptr<QAbstractItemModelTester> tester;

    void signIn(bool signedIn)
    {
        service.defaults.get()->setObject(signedIn ? QStringLiteral("SESSDATA=s; DedeUserID=42")
                                                   : QString(),
                                          QString::fromLatin1(ZuviAPIClient::kCredentialCookieKey));
    }
    Following *open()
    {
        screen = std::make_unique<Following>(service.client.get(), scheduler.get());
        tester.reset(new QAbstractItemModelTester(
            screen->rowsModel(), QAbstractItemModelTester::FailureReportingMode::QtTest));
        screen->rowsModel()->setColumnCount(4);
        screen->loadViewIfNeeded();
        return screen.get();
    }
    void waitForIdle() { QTRY_VERIFY(!screen->isLoading() && !screen->isLoadingMore()); }
    QString stateTitle() const
    {
        return screen->stateView() ? screen->stateView()->title() : QString();
    }
    QString stateMessage() const
    {
        return screen->stateView() ? screen->stateView()->message() : QString();
    }
    ZuviRecordedRequest lastFeedRequest() const
    {
        return service.server.requests(kFeedPath).last();
    }

private slots:
    void initTestCase()
    {
        QVERIFY(service.start());
        service.watchFailedAnswers();
    }
    void init()
    {
        ZuviIdiom::setCurrent(ZuviIdiom::Pad);
        signIn(true);
        scheduler.reset(new ZuviVirtualScheduler);
        service.failedAnswers = 0;
        service.server.clearRequests();
    }
    void cleanup()
    {
        tester.reset();
        screen.reset();
    }

    // Paging goes on only while the service says so with a new offset, and
    // stops when a page brings nothing new.
    void pagingStops_data()
    {
        QTest::addColumn<QJsonArray>("secondItems");
        QTest::addColumn<QString>("secondOffset");
        QTest::addColumn<int>("rowsAfter");
        QTest::newRow("the same offset again")
            << QJsonArray{textPost("3")} << QStringLiteral("o1") << 3;
        QTest::newRow("no offset") << QJsonArray{textPost("3")} << QString() << 3;
        QTest::newRow("only rows already shown")
            << QJsonArray{textPost("1"), videoPost("2")} << QStringLiteral("o2") << 2;
    }
    void pagingStops()
    {
        QFETCH(QJsonArray, secondItems);
        QFETCH(QString, secondOffset);
        QFETCH(int, rowsAfter);
        service.server.setHandler("GET", kFeedPath, [=](const ZuviRecordedRequest &request) {
            if (request.queryValue("offset").isEmpty())
                return feedAnswer({textPost("1"), videoPost("2")}, true, "o1");
            return feedAnswer(secondItems, true, secondOffset);
        });
        open();
        waitForIdle();
        QCOMPARE(screen->rows().size(), 2);
        QVERIFY(screen->hasMoreRows());

        // Scrolling near the end asks for the next page by the offset.
        screen->gridDidScroll(600, 1000, 700, 0);
        QVERIFY(screen->isLoadingMore());
        waitForIdle();
        QCOMPARE(lastFeedRequest().queryValue("offset"), QStringLiteral("o1"));
        QCOMPARE(lastFeedRequest().queryValue("page"), QStringLiteral("1"));
        QCOMPARE(screen->rows().size(), rowsAfter);
        QVERIFY(!screen->hasMoreRows());
        QCOMPARE(screen->currentPage(), 2);

        screen->loadNextRowsIfNeeded();
        scheduler->advance(1);
        QVERIFY(!screen->isLoadingMore());
        QCOMPARE(service.server.requestCount(kFeedPath), 2);
    }

    // Across pages, the copy a second page brings is pagingStops' last row.
    void repeatsAreDroppedByIdentity()
    {
        screen = std::make_unique<Following>(service.client.get(), scheduler.get());
        const auto row = [](const QString &id, const QString &title) {
            return ZuviFollowingRow{{"rowType", "dynamic"}, {"rowID", id}, {"title", title}};
        };
        const QList<ZuviFollowingRow> kept =
            screen->rowsByAppendingRows({row("7", "a"), row("7", "b"), row({}, {}), row({}, {}),
                                         row({}, "same"), row({}, "same")});
        QCOMPARE(kept.size(), 4);
        QCOMPARE(kept.at(0).value("title").toString(), QStringLiteral("a"));
    }

    // On "动态" a page of videos alone leaves nothing to show: the screen
    // says it is fetching more, and the check 0.05 s after the page loads on.
    void postsSegmentFetchesThroughTheViewportCheck()
    {
        service.server.setHandler("GET", kFeedPath, [](const ZuviRecordedRequest &request) {
            const QString offset = request.queryValue("offset");
            if (offset.isEmpty())
                return feedAnswer({videoPost("1"), videoPost("2")}, true, "o1");
            if (offset == "o1")
                return feedAnswer({videoPost("3")}, true, "o2");
            return feedAnswer({textPost("4"), videoPost("5")}, true, "o3");
        });
        open();
        waitForIdle();
        screen->segmentChanged(Following::Posts);
        waitForIdle();
        QCOMPARE(lastFeedRequest().queryValue("type"), QStringLiteral("all"));
        QVERIFY(screen->rows().isEmpty());
        QCOMPARE(screen->stateView()->mode(), int(ZuviStateView::Loading));
        QCOMPARE(stateMessage(), QStringLiteral("正在获取更多关注动态。"));

        // The empty grid is reported; nothing loads before the check is due.
        screen->gridDidScroll(600, 0, 0, 0);
        const int before = service.server.requestCount(kFeedPath);
        scheduler->advance(0.04);
        QCOMPARE(service.server.requestCount(kFeedPath), before);
        scheduler->advance(0.01);
        QVERIFY(screen->isLoadingMore());
        waitForIdle();
        QCOMPARE(lastFeedRequest().queryValue("offset"), QStringLiteral("o1"));
        QVERIFY(screen->rows().isEmpty());
        QCOMPARE(stateMessage(), QStringLiteral("正在获取更多关注动态。"));

        scheduler->advance(0.05);
        waitForIdle();
        QCOMPARE(screen->rows().size(), 1);
        QVERIFY(!screen->stateView());

        // Content that fills the view stops the check.
        screen->gridDidScroll(600, 2000, 0, 0);
        scheduler->advance(0.05);
        QVERIFY(!screen->isLoadingMore());
    }

    // A segment change makes the running request stale: its late answer
    // (here a failure) changes nothing.
    void segmentChangeDropsTheRunningAnswer()
    {
        service.server.setHandler("GET", kFeedPath, [](const ZuviRecordedRequest &request) {
            if (request.queryValue("type") == "all")
                return ZuviBrowseTestService::serviceError("stale", 300);
            return feedAnswer({videoPost("9")}, false, "o9");
        });
        open();
        QVERIFY(screen->isLoading());
        screen->segmentChanged(Following::Videos);
        QCOMPARE(screen->selectedSegment(), int(Following::Videos));
        QTRY_COMPARE(service.failedAnswers, 1);
        service.client->networkQueue()->waitForDone();
        QCoreApplication::processEvents();
        waitForIdle();
        QCOMPARE(lastFeedRequest().queryValue("type"), QStringLiteral("video"));
        QCOMPARE(screen->rows().size(), 1);
        QVERIFY(!screen->stateView());
    }

    // Signed out: the account check refuses and no feed is asked for;
    // signed in but refused by the feed: the same card.
    void loginRequiredState()
    {
        signIn(false);
        service.server.setAnswer(
            "GET", kNavPath, ZuviScriptedAnswer::json(R"({"code":-101,"message":"账号未登录"})"));
        open();
        QCOMPARE(stateTitle(), QStringLiteral("正在检查登录状态"));
        QTRY_VERIFY(screen->isShowingLoginRequiredState());
        QCOMPARE(stateMessage(), QStringLiteral("登录后可查看关注动态。"));
        QCOMPARE(service.server.requestCount(kFeedPath), 0);
        QVERIFY(!screen->isRefreshEnabled());

        signIn(true);
        service.server.setAnswer(
            "GET", kFeedPath, ZuviScriptedAnswer::json(R"({"code":-101,"message":"账号未登录"})"));
        screen->viewWillAppear();
        QVERIFY(!screen->isShowingLoginRequiredState());
        QTRY_VERIFY(screen->isShowingLoginRequiredState());
        QCOMPARE(service.server.requestCount(kFeedPath), 1);
        QCOMPARE(stateMessage(), QStringLiteral("登录后可查看关注动态。"));
    }

    // A phone has no segments: it asks for videos, keeps video rows only,
    // and a segment change snaps back without loading.
    void phoneShowsVideosOnly()
    {
        ZuviIdiom::setCurrent(ZuviIdiom::Phone);
        service.server.setAnswer("GET", kFeedPath,
                                 feedAnswer({textPost("1"), videoPost("2")}, false, "o1"));
        open();
        waitForIdle();
        QVERIFY(!screen->showsSegmentControl());
        QCOMPARE(lastFeedRequest().queryValue("type"), QStringLiteral("video"));
        QCOMPARE(screen->rows().size(), 1);
        QCOMPARE(screen->rows().first().value("rowType").toString(), QStringLiteral("video"));

        screen->segmentChanged(Following::Posts);
        QCOMPARE(screen->selectedSegment(), int(Following::All));
        QVERIFY(!screen->isLoading());
        QCOMPARE(service.server.requestCount(kFeedPath), 1);

        service.server.setAnswer("GET", kFeedPath, feedAnswer({textPost("1")}, false, "o1"));
        screen->tabBarItemReselected();
        waitForIdle();
        QCOMPARE(stateTitle(), QStringLiteral("暂无视频动态"));
        QCOMPARE(stateMessage(), QStringLiteral("关注的 UP 暂时没有新视频。"));
    }

    // The model regroups cards into lines and inserts the lines a next page
    // adds rather than reloading (the tester checks every signal).
    void linesGrowByInsertion()
    {
        QJsonArray first, second;
        for (int i = 0; i < 6; ++i)
            first.append(textPost(QString::number(i)));
        for (int i = 6; i < 13; ++i)
            second.append(textPost(QString::number(i)));
        service.server.setHandler("GET", kFeedPath, [=](const ZuviRecordedRequest &request) {
            return request.queryValue("offset").isEmpty() ? feedAnswer(first, true, "o1")
                                                          : feedAnswer(second, false, "o2");
        });
        open();
        waitForIdle();
        ZuviFollowingRowsModel *model = screen->rowsModel();
        QCOMPARE(model->rowCount(), 2);
        QSignalSpy reset(model, &QAbstractItemModel::modelReset);
        QSignalSpy inserted(model, &QAbstractItemModel::rowsInserted);
        screen->loadNextRowsIfNeeded();
        waitForIdle();
        QCOMPARE(reset.count(), 0);
        QCOMPARE(inserted.count(), 1);
        QCOMPARE(model->rowCount(), 4);
        const QVariantList secondLine =
            model->data(model->index(1), ZuviFollowingRowsModel::CardsRole).toList();
        QCOMPARE(secondLine.size(), 4);
        QCOMPARE(secondLine.last().toMap().value("index").toInt(), 7);
        model->setColumnCount(3);
        QCOMPARE(model->rowCount(), 5);
    }

    // What a card shows for the kinds whose look depends on more than the
    // title: the live room's badge and count, the empty picture post's note,
    // the text post's words, and which cards open a video.
    void cardsShowTheirKind()
    {
        const auto card = [](const QJsonObject &major, const QJsonObject &desc = {}) {
            QJsonObject dynamic{{"major", major}};
            if (!desc.isEmpty())
                dynamic.insert("desc", desc);
            return ZuviFollowingCollectionViewCell::configurationForRow(
                ZuviFollowingFeedParser::rowFromItem(QJsonObject{
                    {"id_str", "1"},
                    {"modules", QJsonObject{{"module_author", QJsonObject{{"name", "阿木"}}},
                                            {"module_dynamic", dynamic}}}}));
        };
        const QString liveContent = QString::fromUtf8(
            QJsonDocument(QJsonObject{{"live_play_info", QJsonObject{{"title", "今晚"},
                                                                     {"live_status", 1},
                                                                     {"online", 23456},
                                                                     {"cover", "//img.test/l.jpg"},
                                                                     {"area_name", "聊天"}}}})
                .toJson(QJsonDocument::Compact));
        const QVariantMap live =
            card(QJsonObject{{"live_rcmd", QJsonObject{{"content", liveContent}}}});
        QCOMPARE(live.value("kind").toString(), QStringLiteral("live"));
        QCOMPARE(live.value("badgeText").toString(), QStringLiteral("直播中"));
        QVERIFY(live.value("badgeLive").toBool());
        QCOMPARE(live.value("onlineText").toString(), QStringLiteral("2.3万在线"));
        QCOMPARE(live.value("coverURL").toString(), QStringLiteral("https://img.test/l.jpg"));
        QCOMPARE(live.value("authorInitial").toString(), QStringLiteral("阿"));
        QVERIFY(!live.value("opensVideo").toBool());

        const QVariantMap empty =
            card(QJsonObject{{"draw", QJsonObject{{"id", 5}, {"items", QJsonArray()}}}});
        QVERIFY(empty.value("emptyPictures").toBool());
        QVERIFY(empty.value("imageURLs").toStringList().isEmpty());

        const QVariantMap text = card(QJsonObject(), QJsonObject{{"text", "早上好"}});
        QCOMPARE(text.value("kind").toString(), QStringLiteral("dynamic"));
        QCOMPARE(text.value("bodyText").toString(), QStringLiteral("早上好"));

        const QVariantMap video = card(
            QJsonObject{{"archive", QJsonObject{{"bvid", "BV1xx"}, {"title", "片"}, {"aid", 3}}}});
        QVERIFY(video.value("opensVideo").toBool());
        QCOMPARE(video.value("playText").toString(), QStringLiteral("播放 0"));
    }

    // The screen goes while its page is out, or while the viewport check
    // is pending; the answers and the clocks then find nothing to touch.
    void destroyedWithWorkOutstanding_data()
    {
        QTest::addColumn<bool>("pageOut");
        QTest::newRow("page out") << true;
        QTest::newRow("viewport check pending") << false;
    }
    void destroyedWithWorkOutstanding()
    {
        QFETCH(bool, pageOut);
        service.server.setAnswer("GET", kFeedPath,
                                 feedAnswer({videoPost("1")}, true, "o1", pageOut ? 200 : 0));
        ZuviScreenLifetimeCheck check(&service.server, service.client.get(),
                                      {scheduler.get(), &service.clientClock});
        open();
        QVERIFY2(check.waitForRequests(1), qPrintable(check.failure()));
        if (pageOut) {
            QVERIFY(screen->isLoading());
        } else {
            waitForIdle();
            // An empty-looking grid: the pending check would load page 2.
            screen->gridDidScroll(600, 0, 0, 0);
        }
        tester.reset();
        QVERIFY2(check.destroyAndDrain(screen.release()), qPrintable(check.failure()));
        QCOMPARE(check.requestsAfterDestruction(), 0);
    }
};

QTEST_MAIN(TestFollowingViewController)
#include "tst_zuvifollowingviewcontroller.moc"
