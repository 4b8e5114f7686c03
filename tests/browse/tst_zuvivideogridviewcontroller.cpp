#include "browse/zuvivideogridviewcontroller.h"
#include "browse/zuvivideolistmodel.h"
#include "platform/zuviidiom.h"
#include "platform/zuvivirtualscheduler.h"
#include "views/zuvistateview.h"
#include "zuvibrowsetestfeed.h"
#include "zuviscreenlifetimecheck.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

using Grid = ZuviVideoGridViewController;

class TestVideoGridViewController : public QObject
{
    Q_OBJECT

private:
    ZuviBrowseTestService service;
    std::unique_ptr<ZuviVirtualScheduler> scheduler;
    std::unique_ptr<Grid> grid;
    std::unique_ptr<QAbstractItemModelTester> tester;

    const QString feed = QString::fromLatin1(ZuviBrowseTestService::kRecommendedPath);

    void makeGrid(Grid *made)
    {
        grid.reset(made);
        tester.reset(new QAbstractItemModelTester(
            grid->videosModel(), QAbstractItemModelTester::FailureReportingMode::QtTest));
    }
    Grid *recommended()
    {
        makeGrid(Grid::createWithRecommendedTitle("推荐", "暂无推荐内容。", service.client.get(),
                                                  scheduler.get()));
        return grid.get();
    }
    // Loads the first page (20 items) and waits for it.
    void loadFirstPage()
    {
        service.server.setAnswer("GET", feed, ZuviBrowseTestService::feedPage("a", 20));
        recommended()->loadViewIfNeeded();
        QTRY_VERIFY(!grid->isLoading());
        QCOMPARE(grid->videos().size(), 20);
    }
    // The user drags the list to a vertical offset (no top inset).
    void dragTo(double offsetY) { grid->gridDidScroll(600, 3000, offsetY, 0, true); }
    // Scrolls near the end of a long list, which asks for the next page.
    void scrollNearEnd() { grid->gridDidScroll(600, 3000, 2000, 0, false); }
    // Waits until the client has handed over that many failed answers,
    // whoever they were for.
    void waitForFailedAnswers(int count)
    {
        QTRY_COMPARE(service.failedAnswers, count);
        service.client->networkQueue()->waitForDone();
        QCoreApplication::processEvents();
    }
    QString stateTitle() const
    {
        return grid->stateView() ? grid->stateView()->title() : QString();
    }

private slots:
    void init()
    {
        ZuviIdiom::setCurrent(ZuviIdiom::Pad);
        scheduler.reset(new ZuviVirtualScheduler);
        service.failedAnswers = 0;
        service.server.clearRequests();
    }
    void initTestCase()
    {
        QVERIFY(service.start());
        service.watchFailedAnswers();
    }
    void cleanup()
    {
        tester.reset();
        grid.reset();
        service.server.clearRequests();
    }

    void firstPageShowsLoadingThenTheList()
    {
        service.server.setAnswer("GET", feed, ZuviBrowseTestService::feedPage("a", 20, 150));
        recommended()->loadViewIfNeeded();
        QVERIFY(grid->isLoading());
        QVERIFY(!grid->isRefreshEnabled());
        QCOMPARE(grid->stateView()->mode(), int(ZuviStateView::Loading));
        QCOMPARE(stateTitle(), QStringLiteral("正在加载"));
        QCOMPARE(grid->stateView()->message(), QStringLiteral("正在获取推荐视频。"));
        QVERIFY(!grid->stateView()->buttonVisible());
        QTRY_VERIFY(!grid->isLoading());
        QVERIFY(grid->isRefreshEnabled());
        QCOMPARE(grid->stateView(), nullptr);
        QCOMPARE(grid->currentPage(), 1);
        QVERIFY(grid->hasMorePages());
        QCOMPARE(grid->videosModel()->rowCount(), 20);
        const auto request = service.server.requests(feed).first();
        QCOMPARE(request.queryValue("ps"), QStringLiteral("20"));
        QCOMPARE(request.queryValue("fresh_idx"), QStringLiteral("1"));
    }

    void popularModeAsksForFiftyAndShowsItsHeader()
    {
        const QString path = QString::fromLatin1(ZuviBrowseTestService::kPopularPath);
        service.server.setAnswer("GET", path, ZuviBrowseTestService::popularPage("p", 50));
        makeGrid(Grid::createWithPopularTitle("热门", "空", service.client.get(), scheduler.get()));
        grid->loadViewIfNeeded();
        QCOMPARE(grid->stateView()->message(), QStringLiteral("正在获取综合热门视频。"));
        QTRY_VERIFY(!grid->isLoading());
        QCOMPARE(service.server.requests(path).first().queryValue("ps"), QStringLiteral("50"));
        QVERIFY(grid->hasMorePages());
        QVERIFY(grid->showsHeader());
        QCOMPARE(grid->contentHeaderTitle(), QStringLiteral("综合热门"));
        QCOMPARE(grid->contentHeaderSubtitle(), QStringLiteral("今日热门 · 全站榜单"));
    }

    void paging_data()
    {
        QTest::addColumn<int>("secondPageCount");
        QTest::addColumn<bool>("hasMoreAfter");
        QTest::newRow("a short page ends paging") << 19 << false;
        QTest::newRow("a full page keeps paging") << 20 << true;
    }
    void paging()
    {
        QFETCH(int, secondPageCount);
        QFETCH(bool, hasMoreAfter);
        loadFirstPage();
        service.server.setAnswer("GET", feed,
                                 ZuviBrowseTestService::feedPage("b", secondPageCount));
        QSignalSpy inserted(grid->videosModel(), &QAbstractItemModel::rowsInserted);
        QSignalSpy reset(grid->videosModel(), &QAbstractItemModel::modelReset);
        scrollNearEnd();
        QVERIFY(grid->isLoadingMore());
        QTRY_VERIFY(!grid->isLoadingMore());
        QCOMPARE(service.server.requests(feed).last().queryValue("fresh_idx"), QStringLiteral("2"));
        QCOMPARE(grid->currentPage(), 2);
        QCOMPARE(grid->hasMorePages(), hasMoreAfter);
        QCOMPARE(grid->videos().size(), 20 + secondPageCount);
        // Only the new rows are inserted below the ones already shown.
        QCOMPARE(inserted.size(), 1);
        QCOMPARE(inserted.first().at(1).toInt(), 20);
        QCOMPARE(reset.size(), 0);
        // Only a full page lets the next scroll ask for page 3.
        scrollNearEnd();
        QCOMPARE(grid->isLoadingMore(), hasMoreAfter);
        QTRY_VERIFY(!grid->isLoadingMore());
        QCOMPARE(service.server.requestCount(feed), hasMoreAfter ? 3 : 2);
    }

    void scrollingFarFromTheEndLoadsNothing()
    {
        loadFirstPage();
        grid->gridDidScroll(600, 3000, 1900, 0, false); // 500 left, not under 480
        QVERIFY(!grid->isLoadingMore());
        grid->gridDidScroll(600, 3000, 1921, 0, false); // 479 left
        QVERIFY(grid->isLoadingMore());
        QTRY_VERIFY(!grid->isLoadingMore());
        QCOMPARE(service.server.requestCount(feed), 2);
    }

    void anItemOnTwoPagesShowsTwice()
    {
        loadFirstPage();
        service.server.setAnswer("GET", feed, ZuviBrowseTestService::feedPage("a", 20));
        scrollNearEnd();
        QTRY_VERIFY(!grid->isLoadingMore());
        QCOMPARE(grid->videos().size(), 40);
        QCOMPARE(grid->videos().at(0).bvid, grid->videos().at(20).bvid);
    }

    // The grid's failures and empty states; a failed first page with its
    // retry is a row of tst_zuvifailureswitches.
    void failures_data()
    {
        QTest::addColumn<QString>("situation");
        QTest::addColumn<int>("mode"); // -1: no overlay
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("button");
        QTest::newRow("refresh fails, old list stays") << "refreshFails" << -1 << ""
                                                       << ""
                                                       << "";
        QTest::newRow("next page fails") << "nextFails" << -1 << ""
                                         << ""
                                         << "";
        QTest::newRow("first page empty") << "firstEmpty" << 1 << "暂无内容"
                                          << "暂无推荐内容。"
                                          << "重试";
        QTest::newRow("static list empty") << "staticEmpty" << 1 << "暂无内容"
                                           << "没有视频"
                                           << "";
    }
    void failures()
    {
        QFETCH(QString, situation);
        QFETCH(int, mode);
        QFETCH(QString, title);
        QFETCH(QString, message);
        QFETCH(QString, button);
        const auto refusal = ZuviBrowseTestService::serviceError("风控校验失败");
        if (situation == "refreshFails") {
            loadFirstPage();
            service.server.setAnswer("GET", feed, refusal);
            grid->pullRefreshTriggered();
            QVERIFY(grid->isLoading());
            QTRY_VERIFY(!grid->isLoading());
            QVERIFY(!grid->isPullRefreshRefreshing());
            // Page and has-more as before the refresh; the list untouched.
            QCOMPARE(grid->currentPage(), 1);
            QVERIFY(grid->hasMorePages());
            QCOMPARE(grid->videos().size(), 20);
        } else if (situation == "nextFails") {
            loadFirstPage();
            service.server.setAnswer("GET", feed, refusal);
            scrollNearEnd();
            QTRY_VERIFY(!grid->isLoadingMore());
            QVERIFY(!grid->hasMorePages());
            QCOMPARE(grid->videos().size(), 20);
            scrollNearEnd();
            QCOMPARE(service.server.requestCount(feed), 2);
        } else if (situation == "firstEmpty") {
            service.server.setAnswer("GET", feed, ZuviBrowseTestService::feedPage("a", 0));
            recommended()->loadViewIfNeeded();
            QTRY_VERIFY(!grid->isLoading());
            QVERIFY(!grid->hasMorePages());
        } else if (situation == "staticEmpty") {
            makeGrid(
                Grid::createWithTitle("", {}, "没有视频", service.client.get(), scheduler.get()));
            grid->loadViewIfNeeded();
            QCOMPARE(grid->contentHeaderTitle(), QStringLiteral("视频"));
            QCOMPARE(service.server.requestCount(), 0);
        }
        if (mode < 0) {
            QCOMPARE(grid->stateView(), nullptr);
            return;
        }
        QVERIFY(grid->stateView());
        QCOMPARE(grid->stateView()->mode(), mode);
        QCOMPARE(grid->stateView()->title(), title);
        QCOMPARE(grid->stateView()->message(), message);
        QCOMPARE(grid->stateView()->buttonTitle(), button);
    }

    void refreshAndReselectDuringALoadStartNothing()
    {
        service.server.setAnswer("GET", feed, ZuviBrowseTestService::feedPage("a", 20, 200));
        recommended()->loadViewIfNeeded();
        const int id = grid->requestID();
        grid->tabBarItemReselected();
        grid->refreshButtonTapped();
        QCOMPARE(grid->requestID(), id);
        QTRY_VERIFY(!grid->isLoading());
        QCOMPARE(service.server.requestCount(feed), 1);
        // Once idle, reselecting the tab refreshes.
        grid->tabBarItemReselected();
        QVERIFY(grid->isLoading());
        QCOMPARE(grid->requestID(), id + 1);
        QTRY_VERIFY(!grid->isLoading());
    }

    // --- Leaving the screen

    // The grid is deleted while a page is on its way (and, after a drag, its
    // delayed prefetch cancel is pending); the late answer and the timer
    // must find nothing to touch.
    void leftWhileWorkIsOutstanding_data()
    {
        QTest::addColumn<QString>("work");
        QTest::newRow("first page") << "first";
        QTest::newRow("next page") << "next";
        QTest::newRow("pull-refresh prefetch") << "prefetch";
    }
    void leftWhileWorkIsOutstanding()
    {
        QFETCH(QString, work);
        if (work == "first")
            recommended();
        else
            loadFirstPage();
        service.server.setAnswer("GET", feed, ZuviBrowseTestService::feedPage("b", 20, 150));
        ZuviScreenLifetimeCheck check(&service.server, service.client.get(),
                                      {scheduler.get(), &service.clientClock});
        if (work == "first") {
            grid->loadViewIfNeeded();
            QVERIFY(grid->isLoading());
        } else if (work == "next") {
            scrollNearEnd();
            QVERIFY(grid->isLoadingMore());
        } else {
            dragTo(-50);
            QVERIFY(grid->isPullRefreshPrefetching());
        }
        grid->gridDidEndDragging(false);
        QVERIFY2(check.waitForRequests(1), qPrintable(check.failure()));
        tester.reset();
        QVERIFY2(check.destroyAndDrain(grid.release()), qPrintable(check.failure()));
        QCOMPARE(check.requestsAfterDestruction(), 0);
    }

    void staticListReselectDoesNothing()
    {
        ZuviVideoItem item;
        item.bvid = "BVs";
        item.title = "s";
        makeGrid(
            Grid::createWithTitle("合集", {item}, "空", service.client.get(), scheduler.get()));
        grid->loadViewIfNeeded();
        QCOMPARE(grid->stateView(), nullptr);
        grid->tabBarItemReselected();
        grid->pullRefreshTriggered();
        QVERIFY(!grid->isLoading());
        QCOMPARE(service.server.requestCount(), 0);
        QCOMPARE(grid->contentHeaderTitle(), QStringLiteral("合集"));
        QCOMPARE(grid->contentHeaderSubtitle(), QString());
    }

    // --- The pull-to-refresh prefetch

    void prefetchBeginsAtMinus42WhileDragging_data()
    {
        QTest::addColumn<double>("offset");
        QTest::addColumn<double>("inset");
        QTest::addColumn<bool>("dragging");
        QTest::addColumn<bool>("begins");
        QTest::newRow("-41.9") << -41.9 << 0.0 << true << false;
        QTest::newRow("-42") << -42.0 << 0.0 << true << true;
        QTest::newRow("-42 with inset counted") << -106.0 << 64.0 << true << true;
        QTest::newRow("-30 with inset counted") << -94.0 << 64.0 << true << false;
        QTest::newRow("-60 but not dragging") << -60.0 << 0.0 << false << false;
    }
    void prefetchBeginsAtMinus42WhileDragging()
    {
        QFETCH(double, offset);
        QFETCH(double, inset);
        QFETCH(bool, dragging);
        QFETCH(bool, begins);
        loadFirstPage();
        const int prefetchID = grid->pullRefreshPrefetchRequestID();
        grid->gridDidScroll(600, 3000, offset, inset, dragging);
        QCOMPARE(grid->isPullRefreshPrefetching(), begins);
        QCOMPARE(grid->pullRefreshPrefetchRequestID(), begins ? prefetchID + 1 : prefetchID);
        QTRY_COMPARE(service.server.requestCount(feed), begins ? 2 : 1);
        if (begins)
            QCOMPARE(service.server.requests(feed).last().queryValue("fresh_idx"),
                     QStringLiteral("1"));
    }

    void prefetchIsAppliedAfterRelease()
    {
        loadFirstPage();
        service.server.setAnswer("GET", feed, ZuviBrowseTestService::feedPage("n", 20));
        dragTo(-50);
        QTRY_VERIFY(grid->pullRefreshHasPrefetchedResult());
        QCOMPARE(grid->videos().first().bvid, QStringLiteral("BVax0")); // held, not shown
        const int id = grid->requestID();
        dragTo(-80); // the control fires
        QVERIFY(!grid->isLoading());
        QVERIFY(!grid->isPullRefreshRefreshing());
        QCOMPARE(grid->videos().first().bvid, QStringLiteral("BVnx0"));
        QCOMPARE(grid->requestID(), id);
        QCOMPARE(grid->currentPage(), 1);
        QVERIFY(!grid->pullRefreshHasPrefetchedResult());
        QCOMPARE(service.server.requestCount(feed), 2);
    }

    void firingOverAPendingPrefetchWaitsForIt()
    {
        loadFirstPage();
        service.server.setAnswer("GET", feed, ZuviBrowseTestService::feedPage("n", 20, 150));
        dragTo(-50);
        dragTo(-80);
        QVERIFY(grid->pullRefreshApplyAfterRelease());
        QVERIFY(grid->isLoading());
        QVERIFY(!grid->isRefreshEnabled());
        // Loading blocks next pages and new prefetches meanwhile.
        scrollNearEnd();
        QVERIFY(!grid->isLoadingMore());
        QTRY_VERIFY(!grid->isLoading());
        QCOMPARE(grid->videos().first().bvid, QStringLiteral("BVnx0"));
        QVERIFY(grid->isRefreshEnabled());
        QCOMPARE(service.server.requestCount(feed), 2);
    }

    void unusedPrefetchIsDiscardedAQuarterSecondAfterRelease()
    {
        loadFirstPage();
        service.server.setAnswer("GET", feed, ZuviBrowseTestService::feedPage("n", 20));
        dragTo(-50);
        QTRY_VERIFY(grid->pullRefreshHasPrefetchedResult());
        grid->gridDidEndDragging(false);
        scheduler->advance(0.24);
        QVERIFY(grid->pullRefreshHasPrefetchedResult());
        scheduler->advance(0.02);
        QVERIFY(!grid->pullRefreshHasPrefetchedResult());
        QVERIFY(grid->pullRefreshPrefetchedVideos().isEmpty());
        // The next pull fetches afresh.
        dragTo(-50);
        QVERIFY(grid->isPullRefreshPrefetching());
        QTRY_COMPARE(service.server.requestCount(feed), 3);
    }

    void aNewReleaseRestartsTheQuarterSecond()
    {
        loadFirstPage();
        dragTo(-50);
        QTRY_VERIFY(grid->pullRefreshHasPrefetchedResult());
        grid->gridDidEndDragging(false);
        scheduler->advance(0.2);
        grid->gridDidEndDragging(false);
        scheduler->advance(0.2);
        QVERIFY(grid->pullRefreshHasPrefetchedResult());
        scheduler->advance(0.06);
        QVERIFY(!grid->pullRefreshHasPrefetchedResult());
    }

    void aDeceleratingListKeepsThePrefetchForTheNextPull()
    {
        loadFirstPage();
        service.server.setAnswer("GET", feed, ZuviBrowseTestService::feedPage("n", 20));
        dragTo(-50);
        QTRY_VERIFY(grid->pullRefreshHasPrefetchedResult());
        grid->gridDidEndDragging(true);
        scheduler->advance(1.0);
        QVERIFY(grid->pullRefreshHasPrefetchedResult());
        grid->gridDidEndDecelerating();
        dragTo(-80);
        QCOMPARE(grid->videos().first().bvid, QStringLiteral("BVnx0"));
        QCOMPARE(service.server.requestCount(feed), 2);
    }

    void aLatePrefetchIsIgnored()
    {
        loadFirstPage();
        service.server.setAnswer("GET", feed, ZuviBrowseTestService::serviceError("迟到", 100));
        dragTo(-50);
        QVERIFY(grid->isPullRefreshPrefetching());
        grid->gridDidEndDragging(false);
        scheduler->advance(0.25);
        QVERIFY(!grid->isPullRefreshPrefetching());
        waitForFailedAnswers(1);
        // The late answer changed nothing: nothing held, nothing shown.
        QVERIFY(!grid->pullRefreshHasPrefetchedResult());
        QVERIFY(!grid->isPullRefreshPrefetching());
        QCOMPARE(grid->stateView(), nullptr);
        QCOMPARE(grid->videos().first().bvid, QStringLiteral("BVax0"));
    }

    void aNextPageIsAppendedToTheRefreshedList()
    {
        loadFirstPage();
        service.server.setAnswer("GET", feed, ZuviBrowseTestService::feedPage("n", 20));
        dragTo(-50);
        QTRY_VERIFY(grid->pullRefreshHasPrefetchedResult());
        grid->gridDidEndDragging(true);
        // The list swings back and reaches the end: page 2 starts, slowly.
        service.server.setAnswer("GET", feed, ZuviBrowseTestService::feedPage("b", 20, 200));
        scrollNearEnd();
        QVERIFY(grid->isLoadingMore());
        dragTo(-80);
        QCOMPARE(grid->videos().first().bvid, QStringLiteral("BVnx0"));
        QTRY_COMPARE(grid->videos().size(), 40);
        QCOMPARE(grid->videos().at(20).bvid, QStringLiteral("BVbx0"));
        QCOMPARE(grid->currentPage(), 2);
    }

    void refreshButtonResetsAHeldPrefetch()
    {
        loadFirstPage();
        dragTo(-50);
        QTRY_VERIFY(grid->pullRefreshHasPrefetchedResult());
        const int prefetchID = grid->pullRefreshPrefetchRequestID();
        grid->refreshButtonTapped();
        QVERIFY(!grid->pullRefreshHasPrefetchedResult());
        QCOMPARE(grid->pullRefreshPrefetchRequestID(), prefetchID + 1);
        QVERIFY(grid->isLoading());
        QTRY_VERIFY(!grid->isLoading());
    }

    void aPullWithoutPrefetchReloadsKeepingTheList()
    {
        loadFirstPage();
        service.server.setAnswer("GET", feed, ZuviBrowseTestService::feedPage("n", 20, 100));
        grid->pullRefreshTriggered();
        QVERIFY(grid->isLoading());
        QCOMPARE(grid->stateView(), nullptr); // the old list stays visible
        QCOMPARE(grid->videos().size(), 20);
        QTRY_VERIFY(!grid->isLoading());
        QCOMPARE(grid->videos().first().bvid, QStringLiteral("BVnx0"));
    }

    // --- Layout

    void columns_data()
    {
        QTest::addColumn<bool>("pad");
        QTest::addColumn<double>("width");
        QTest::addColumn<int>("columns");
        QTest::addColumn<double>("itemWidth");
        QTest::addColumn<double>("itemHeight");
        QTest::newRow("pad 900") << true << 900.0 << 4 << 210.0 << 189.0;
        QTest::newRow("pad 899") << true << 899.0 << 3 << 283.0 << 230.0;
        QTest::newRow("phone 320") << false << 320.0 << 1 << 310.0 << 92.0;
    }
    void columns()
    {
        QFETCH(bool, pad);
        QFETCH(double, width);
        QFETCH(int, columns);
        QFETCH(double, itemWidth);
        QFETCH(double, itemHeight);
        ZuviIdiom::setCurrent(pad ? ZuviIdiom::Pad : ZuviIdiom::Phone);
        const QVariantMap layout = recommended()->layoutForWidth(width);
        QCOMPARE(grid->columnCountForWidth(width), columns);
        QCOMPARE(layout.value("columns").toInt(), columns);
        QCOMPARE(layout.value("itemWidth").toDouble(), itemWidth);
        QCOMPARE(layout.value("itemHeight").toDouble(), itemHeight);
        QCOMPARE(layout.value("compact").toBool(), !pad);
        QCOMPARE(layout.value("headerHeight").toDouble(), 0.0); // recommended shows none
        ZuviIdiom::setCurrent(ZuviIdiom::Pad);
    }

    void cardTexts()
    {
        ZuviVideoItem item;
        item.bvid = "BV1";
        item.ownerName = "某人";
        item.playCountText = "1.2万";
        QCOMPARE(ZuviVideoListModel::ownerTextForItem(item), QStringLiteral("UP 某人"));
        QCOMPARE(ZuviVideoListModel::playTextForItem(item, false), QStringLiteral("播放 1.2万"));
        QCOMPARE(ZuviVideoListModel::playTextForItem(item, true),
                 QStringLiteral("播放 1.2万  评论 0"));
        item.playCountText.clear();
        QCOMPARE(ZuviVideoListModel::playTextForItem(item, false), QStringLiteral("播放 0"));
        // The colour follows the id, and only the four placeholder colours occur.
        QSet<QRgb> seen;
        for (int i = 0; i < 64; ++i)
            seen.insert(ZuviVideoListModel::placeholderColorForBVID(QString("BV%1").arg(i)).rgb());
        QCOMPARE(seen.size(), 4);
        QCOMPARE(ZuviVideoListModel::placeholderColorForBVID("BVx"),
                 ZuviVideoListModel::placeholderColorForBVID("BVx"));
    }
};

QTEST_MAIN(TestVideoGridViewController)
#include "tst_zuvivideogridviewcontroller.moc"
