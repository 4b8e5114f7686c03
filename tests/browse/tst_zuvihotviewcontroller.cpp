#include "app/zuvinavigationcontroller.h"
#include "app/zuvitabbarcontroller.h"
#include "browse/zuvihotregionsettingsviewcontroller.h"
#include "browse/zuvihotviewcontroller.h"
#include "browse/zuvivideolistmodel.h"
#include "browse/zuvivideoscreenopener.h"
#include "platform/zuviidiom.h"
#include "views/zuvistateview.h"
#include "zuvibrowsetestfeed.h"
#include "zuvistandinviewcontroller.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

using Hot = ZuviHotViewController;

// The ranking tab and its region settings against a loopback service: the
// stored choices, the login gate's states, the per-region caches, answers
// that arrive for a region no longer shown, and re-reading the settings on
// every appearance.
class TestHotViewController : public QObject
{
    Q_OBJECT

private:
    ZuviBrowseTestService service;
    ZuviVirtualScheduler scheduler;
    std::unique_ptr<ZuviTabBarController> tabs;
    QPointer<Hot> hot;
    std::unique_ptr<QAbstractItemModelTester> tester;

    const QString ranking = QStringLiteral("/x/web-interface/ranking/v2");
    const QString popular = QString::fromLatin1(ZuviBrowseTestService::kPopularPath);
    const QString nav = QStringLiteral("/x/web-interface/nav");

    ZuviDefaults *defaults() { return service.defaults.get(); }
    void signIn()
    {
        defaults()->setString(QStringLiteral("SESSDATA=abc; DedeUserID=42"),
                              QString::fromLatin1(ZuviAPIClient::kCredentialCookieKey));
    }
    void storeKeys(const QStringList &keys) { Hot::setVisibleHotRegionKeys(keys, defaults()); }

    // The tab root with the ranking tab second and three stand-ins, so the
    // login button has a profile tab to open.
    Hot *makeHot(bool show = true)
    {
        tabs = std::make_unique<ZuviTabBarController>();
        auto *screen = new Hot(service.client.get(), defaults());
        hot = screen;
        tester = std::make_unique<QAbstractItemModelTester>(
            screen->videosModel(), QAbstractItemModelTester::FailureReportingMode::QtTest);
        const QStringList titles{"推荐", "热门", "关注", "我的"};
        for (int i = 0; i < 4; ++i) {
            ZuviViewController *root = i == 1 ? static_cast<ZuviViewController *>(screen)
                                              : new ZuviStandInViewController(titles[i]);
            tabs->addTab(new ZuviNavigationController(root, &scheduler), {titles[i], {}, {}, i});
        }
        if (show)
            tabs->selectTab(1);
        return screen;
    }
    // The ranking answer for a region: count entries named after the rid.
    static ZuviScriptedAnswer rankingFor(const ZuviRecordedRequest &request, int count = 3)
    {
        return ZuviBrowseTestService::popularPage("r" + request.queryValue("rid"), count);
    }
    QStringList rids() const
    {
        QStringList seen;
        for (const ZuviRecordedRequest &request : service.server.requests(ranking))
            seen << request.queryValue("rid");
        return seen;
    }
    QString firstBVID() const
    {
        return hot->videos().isEmpty() ? QString() : hot->videos().first().bvid;
    }
    static QJsonObject countedEntry(const QString &bvid, qint64 plays, qint64 replies)
    {
        return QJsonObject{{"bvid", bvid},
                           {"title", bvid},
                           {"owner", QJsonObject{{"name", "UP"}}},
                           {"stat", QJsonObject{{"view", plays}, {"reply", replies}}}};
    }
    static QByteArray json(const QJsonObject &object)
    {
        return QJsonDocument(object).toJson(QJsonDocument::Compact);
    }
    static ZuviScriptedAnswer loggedOutNav()
    {
        return ZuviScriptedAnswer::json(json({{"code", -101},
                                              {"message", "账号未登录"},
                                              {"data", QJsonObject{{"isLogin", false}}}}));
    }

private slots:
    void initTestCase() { QVERIFY(service.start()); }
    void init()
    {
        ZuviIdiom::setCurrent(ZuviIdiom::Pad);
        defaults()->removeObjectForKey(QString::fromLatin1(ZuviAPIClient::kCredentialCookieKey));
        defaults()->removeObjectForKey(QString::fromLatin1(Hot::kVisibleHotRegionKeysKey));
        defaults()->removeObjectForKey(QString::fromLatin1(Hot::kPreferredHotSortModeKey));
        service.server.setAnswer("GET", popular, ZuviBrowseTestService::popularPage("p", 4));
        service.server.setHandler("GET", ranking,
                                  [](const ZuviRecordedRequest &r) { return rankingFor(r); });
        service.server.clearRequests();
    }
    void cleanup()
    {
        tester.reset();
        tabs.reset();
        ZuviVideoScreenOpener::setFactory(nullptr);
    }

    void storedChoicesAreSanitised()
    {
        // Only strings naming a region count, each once; a number does not,
        // even one that spells a rid.
        QCOMPARE(
            Hot::sanitizedHotRegionKeysFromKeys(QVariantList{"1005", "综艺", "1005", 1008}, true),
            QStringList{"1005"});
        // Nothing stored, or an empty list: every region in table order.
        defaults()->setObject(QStringList(), QString::fromLatin1(Hot::kVisibleHotRegionKeysKey));
        const QStringList all = Hot::visibleHotRegionKeys(defaults());
        QCOMPARE(all.size(), 18);
        QCOMPARE(all.first(), QStringLiteral("popular"));
        // Storing nothing keeps the popular list.
        storeKeys({});
        QCOMPARE(Hot::sanitizedHotRegionKeysFromKeys(
                     defaults()->objectForKey(QString::fromLatin1(Hot::kVisibleHotRegionKeysKey)),
                     false),
                 QStringList{"popular"});
        storeKeys({"1018", "all"});
        QCOMPARE(Hot::preferredHotRegionKey(defaults()), QStringLiteral("1018"));
        QCOMPARE(Hot::titleForHotRegionKey("nope"), QStringLiteral("综合"));
        // The sort preference beyond its three orders reads as the service's.
        defaults()->setInteger(3, QString::fromLatin1(Hot::kPreferredHotSortModeKey));
        QCOMPARE(Hot::preferredHotSortMode(defaults()), 0);
        defaults()->setInteger(2, QString::fromLatin1(Hot::kPreferredHotSortModeKey));
        QCOMPARE(Hot::preferredHotSortMode(defaults()), 2);
    }

    // The play order, with counts in 万 and 亿, is appearingRereadsSortAndRegions'
    // through the screen; here the comment order, and text that reads as nothing.
    void commentCountsSortLargestFirst()
    {
        QCOMPARE(Hot::countValueFromText("--"), 0.0);
        const QStringList comments{"5", "1.5万", "200"};
        QList<ZuviVideoItem> videos(3);
        for (int i = 0; i < 3; ++i) {
            videos[i].bvid = QString(QChar('a' + i));
            videos[i].commentCountText = comments[i];
        }
        const auto order = [&videos] {
            QString ids;
            for (const ZuviVideoItem &item :
                 Hot::sortedVideosFromVideos(videos, Hot::SortByCommentCount))
                ids += item.bvid;
            return ids;
        };
        QCOMPARE(order(), "bca");
        videos[2].commentCountText = "3";
        QCOMPARE(order(), "bac");
    }

    void signedOutShowsTheLoginCardOnceShown()
    {
        service.server.setAnswer("GET", nav, loggedOutNav());
        // Built with the other tabs, the screen waits until it is shown.
        makeHot(false);
        QVERIFY(!hot->isCheckingLoginState());
        QCOMPARE(hot->stateView(), nullptr);
        tabs->selectTab(1);
        QVERIFY(hot->isCheckingLoginState());
        QCOMPARE(hot->stateView()->title(), QStringLiteral("正在检查登录状态"));
        QVERIFY(!hot->isRefreshEnabled());
        QTRY_VERIFY(hot->isShowingLoginRequiredState());
        QCOMPARE(hot->stateView()->message(), QStringLiteral("登录后可查看热门内容。"));
        QVERIFY(hot->stateView()->usesProminentActionButton());
        QCOMPARE(service.server.requestCount(popular), 0);
        // The card's title, its "登录" and signing in there: hot-e2e.sh.
    }

    void loginErrorAtAnyStepShowsTheLoginCard_data()
    {
        QTest::addColumn<QStringList>("keys");
        QTest::addColumn<QString>("path");
        QTest::newRow("popular list") << QStringList{"popular"} << popular;
        QTest::newRow("region ranking") << QStringList{"1005"} << ranking;
    }
    void loginErrorAtAnyStepShowsTheLoginCard()
    {
        QFETCH(QStringList, keys);
        QFETCH(QString, path);
        // A stored cookie the service no longer accepts.
        signIn();
        storeKeys(keys);
        service.server.setAnswer("GET", path, loggedOutNav());
        makeHot();
        QTRY_VERIFY(hot->isShowingLoginRequiredState());
        QCOMPARE(hot->stateView()->title(), QStringLiteral("用户未登录"));
        QVERIFY(!hot->isRefreshEnabled());
        QCOMPARE(service.server.requestCount(nav), 0);
    }

    void regionsLoadOnceAndRefreshDropsOnlyTheShownOne()
    {
        signIn();
        storeKeys({"all", "1005", "1008"});
        QList<QString> sources;
        ZuviVideoScreenOpener::setFactory([&sources](const ZuviVideoItem &, const QString &title) {
            sources << title;
            return new ZuviStandInViewController(title);
        });
        makeHot();
        QTRY_COMPARE(hot->videos().size(), 3);
        // The whole-site ranking is rid 0 on the route "all".
        const ZuviRecordedRequest all = service.server.requests(ranking).first();
        QCOMPARE(all.queryValue("rid"), QStringLiteral("0"));
        QCOMPARE(all.queryValue("ps"), QStringLiteral("50"));
        QVERIFY(all.header("Referer").endsWith("/v/popular/rank/all"));
        hot->selectItem(0);
        hot->regionControlTapped(1);
        QTRY_COMPARE(firstBVID(), QStringLiteral("BVr1005x0"));
        hot->selectItem(0);
        hot->regionControlTapped(2);
        QTRY_COMPARE(firstBVID(), QStringLiteral("BVr1008x0"));
        // Back to a region already loaded: shown at once, nothing asked.
        hot->regionControlTapped(1);
        QCOMPARE(firstBVID(), QStringLiteral("BVr1005x0"));
        QCOMPARE(rids(), (QStringList{"0", "1005", "1008"}));
        // Tapping the selected button again loads nothing either.
        hot->regionControlTapped(1);
        QCOMPARE(service.server.requestCount(ranking), 3);
        hot->refreshButtonTapped();
        QTRY_COMPARE(rids(), (QStringList{"0", "1005", "1008", "1005"}));
        QTRY_VERIFY(hot->isRefreshEnabled());
        hot->regionControlTapped(2);
        hot->regionControlTapped(0);
        QCOMPARE(service.server.requestCount(ranking), 4);
        QCOMPARE(sources, (QList<QString>{"全站热门", "动画热门"}));
    }

    void lateAnswerForAnotherRegionOnlyReenablesRefresh()
    {
        signIn();
        storeKeys({"popular", "1005", "1008"});
        makeHot();
        QTRY_COMPARE(hot->videos().size(), 4);
        service.server.setHandler("GET", ranking, [](const ZuviRecordedRequest &r) {
            ZuviScriptedAnswer answer = rankingFor(r);
            answer.delayMs = r.queryValue("rid") == "1005" ? 100 : 2000;
            return answer;
        });
        hot->regionControlTapped(1);
        hot->regionControlTapped(2);
        QVERIFY(!hot->isRefreshEnabled());
        // The 1005 answer comes back while 1008 is still on its way.
        QTRY_VERIFY(hot->isRefreshEnabled());
        QVERIFY(hot->videos().isEmpty());
        QCOMPARE(hot->stateView()->message(), QStringLiteral("正在获取游戏榜单。"));
        QVERIFY(!hot->hasCachedVideosForRegionKey("1005"));
        QTRY_COMPARE_WITH_TIMEOUT(firstBVID(), QStringLiteral("BVr1008x0"), 10000);
    }

    void appearingRereadsSortAndRegions()
    {
        signIn();
        storeKeys({"popular", "1005", "1008"});
        service.server.setAnswer(
            "GET", popular,
            ZuviScriptedAnswer::json(json(
                {{"code", 0},
                 {"data", QJsonObject{{"list", QJsonArray{countedEntry("BVlow", 9999, 1),
                                                          countedEntry("BVtop", 300000000, 0),
                                                          countedEntry("BVmid", 12000, 2)}}}}})));
        makeHot();
        QTRY_COMPARE(firstBVID(), QStringLiteral("BVlow"));
        // The settings chose the play order: the cached list is sorted again.
        defaults()->setInteger(Hot::SortByPlayCount,
                               QString::fromLatin1(Hot::kPreferredHotSortModeKey));
        tabs->selectTab(0);
        tabs->selectTab(1);
        QCOMPARE(firstBVID(), QStringLiteral("BVtop"));
        QCOMPARE(hot->videos().last().bvid, QStringLiteral("BVlow"));
        QCOMPARE(service.server.requestCount(popular), 1);
        // Region lists follow the play order too: the last entry was played most.
        hot->regionControlTapped(2);
        QTRY_COMPARE(firstBVID(), QStringLiteral("BVr1008x2"));
        // A hidden region gives way to the first button. (A region moved keeps
        // its selection: hot-e2e.sh's last step.)
        storeKeys({"1005", "popular"});
        hot->viewWillAppear();
        QCOMPARE(hot->selectedRegionIndex(), 0);
        QCOMPARE(hot->selectedRegionCacheKey(), QStringLiteral("1005"));
    }

    void phoneChromeFollowsTheGrid()
    {
        ZuviIdiom::setCurrent(ZuviIdiom::Phone);
        signIn();
        makeHot();
        QTRY_COMPARE(hot->videos().size(), 4);
        QSignalSpy chrome(hot.data(), &Hot::phoneChromeChanged);
        ZuviNavigationController *stack = tabs->viewControllerAt(1);
        hot->gridDidScroll(500, 2000, 0, 10);
        hot->gridDidScroll(500, 2000, 120, 10);
        QVERIFY(hot->phoneChromeHidden());
        QVERIFY(stack->isNavigationBarHidden());
        QCOMPARE(chrome.size(), 1);
        // Leaving with the bar hidden brings it back for the next screen. (How
        // far a scroll goes before the bars move is tst_zuvinavigationchrome's.)
        tabs->selectTab(0);
        QVERIFY(!stack->isNavigationBarHidden());
    }

    void screenGoneWithItsRequestsOutstanding_data()
    {
        QTest::addColumn<bool>("signedIn");
        QTest::newRow("account check") << false;
        QTest::newRow("region ranking") << true;
    }
    void screenGoneWithItsRequestsOutstanding()
    {
        QFETCH(bool, signedIn);
        if (signedIn)
            signIn();
        storeKeys({"1005"});
        ZuviScriptedAnswer slowNav = loggedOutNav();
        slowNav.delayMs = 150;
        service.server.setAnswer("GET", nav, slowNav);
        service.server.setHandler("GET", ranking, [](const ZuviRecordedRequest &r) {
            ZuviScriptedAnswer answer = rankingFor(r);
            answer.delayMs = 150;
            return answer;
        });
        makeHot();
        tester.reset();
        tabs.reset();
        QVERIFY(hot.isNull());
        // A request sent after the screen's is answered after it: once it is
        // back, the screen's answer has met a completion whose owner is gone.
        bool probed = false;
        service.client->fetchPopularPage(
            1, 1, [&](const QList<ZuviVideoItem> &, const ZuviError &) { probed = true; });
        QTRY_VERIFY(probed);
        QCOMPARE(service.server.requestCount(signedIn ? ranking : nav), 1);
    }

    void regionSettingsTapsAndDrags()
    {
        storeKeys({"1005", "popular"});
        ZuviHotRegionSettingsViewController settings(defaults());
        QCOMPARE(settings.selectedRegionTitles(), (QStringList{"动画", "综合"}));
        QCOMPARE(settings.hiddenRegionKeys().size(), 16);
        QCOMPARE(settings.hiddenRegionKeys().first(), QStringLiteral("all"));
        QSignalSpy alerts(&settings, &ZuviHotRegionSettingsViewController::alertRequested);
        // Hiding a region puts it back in table order among the hidden.
        settings.selectRow(0, 0);
        QCOMPARE(Hot::visibleHotRegionKeys(defaults()), QStringList{"popular"});
        QCOMPARE(settings.hiddenRegionKeys().at(1), QStringLiteral("1005"));
        // The last shown region stays, with an alert.
        settings.selectRow(0, 0);
        QCOMPARE(alerts.size(), 1);
        QCOMPARE(alerts.first().at(0).toString(), QStringLiteral("至少保留一个分区"));
        QCOMPARE(alerts.first().at(2).toString(), QStringLiteral("好"));
        QCOMPARE(settings.selectedRegionKeys(), QStringList{"popular"});
        settings.selectRow(1, settings.hiddenRegionKeys().indexOf("1008"));
        settings.selectRow(1, settings.hiddenRegionKeys().indexOf("all"));
        QCOMPARE(Hot::visibleHotRegionKeys(defaults()), (QStringList{"popular", "1008", "all"}));
        // A drop into the hidden section lands at the end of the shown one.
        settings.setEditing(true);
        const QVariantMap target = settings.targetForMove(1, 4);
        QCOMPARE(target.value("section").toInt(), 0);
        QCOMPARE(target.value("row").toInt(), 2);
        settings.moveRow(0, 0, target.value("section").toInt(), target.value("row").toInt());
        QCOMPARE(Hot::visibleHotRegionKeys(defaults()), (QStringList{"1008", "all", "popular"}));
        // Taps wait while editing; a move out of the section changes nothing.
        settings.selectRow(0, 0);
        settings.moveRow(0, 0, 1, 0);
        QCOMPARE(Hot::visibleHotRegionKeys(defaults()), (QStringList{"1008", "all", "popular"}));
    }
};

QTEST_MAIN(TestHotViewController)
#include "tst_zuvihotviewcontroller.moc"
