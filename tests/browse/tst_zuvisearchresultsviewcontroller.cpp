#include "browse/zuvisearchresultsviewcontroller.h"
#include "browse/zuvivideolistmodel.h"
#include "platform/zuviidiom.h"
#include "views/zuvistateview.h"
#include "zuvibrowsetestfeed.h"
#include "zuviscreenlifetimecheck.h"

#include <QAbstractItemModelTester>
#include <QtTest>

#include <memory>

using Search = ZuviSearchResultsViewController;

class TestSearchResultsViewController : public QObject
{
    Q_OBJECT

private:
    ZuviBrowseTestService service;
    std::unique_ptr<Search> search;
    std::unique_ptr<QAbstractItemModelTester> tester;
    const QString path = QString::fromLatin1(ZuviBrowseTestService::kSearchPath);

    Search *open(const QString &keyword)
    {
        search.reset(new Search(keyword, service.client.get()));
        tester.reset(new QAbstractItemModelTester(
            search->videosModel(), QAbstractItemModelTester::FailureReportingMode::QtTest));
        search->loadViewIfNeeded();
        return search.get();
    }
    void waitForFailedAnswers(int count)
    {
        QTRY_COMPARE(service.failedAnswers, count);
        service.client->networkQueue()->waitForDone();
        QCoreApplication::processEvents();
    }
    // Scrolled two screens down a long list: the next page is due.
    void scrollFar() { search->gridDidScroll(600, 2400, 1500); }

private slots:
    void init()
    {
        ZuviIdiom::setCurrent(ZuviIdiom::Pad);
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
        search.reset();
    }

    void blankKeywordPromptsAndSendsNothing_data()
    {
        QTest::addColumn<QString>("keyword");
        QTest::newRow("empty") << "";
        QTest::newRow("ideographic space and line break") << QStringLiteral("\u3000\n\t");
    }
    void blankKeywordPromptsAndSendsNothing()
    {
        QFETCH(QString, keyword);
        open(keyword);
        QVERIFY(search->stateView());
        QCOMPARE(search->stateView()->mode(), int(ZuviStateView::Empty));
        QCOMPARE(search->stateView()->title(), QStringLiteral("请输入关键词"));
        QCOMPARE(search->stateView()->message(),
                 QStringLiteral("在顶部搜索框输入关键词后搜索视频。"));
        QVERIFY(!search->stateView()->buttonVisible());
        QVERIFY(!search->isLoading());
        QCOMPARE(service.server.requestCount(), 0);
        QCOMPARE(search->title(), QStringLiteral("搜索"));
    }

    void searchShowsLoadingThenResults()
    {
        service.server.setAnswer("GET", path, ZuviBrowseTestService::searchPage("s", 20, 100));
        open("  猫  ");
        QCOMPARE(search->keyword(), QStringLiteral("猫"));
        QVERIFY(search->isLoading());
        QVERIFY(!search->isRefreshEnabled());
        QCOMPARE(search->stateView()->mode(), int(ZuviStateView::Loading));
        QCOMPARE(search->stateView()->title(), QStringLiteral("正在搜索"));
        QCOMPARE(search->stateView()->message(), QStringLiteral("猫"));
        QTRY_VERIFY(!search->isLoading());
        QCOMPARE(search->stateView(), nullptr);
        QCOMPARE(search->videos().size(), 20);
        const auto request = service.server.requests(path).first();
        QCOMPARE(request.queryValue("keyword"), QStringLiteral("猫"));
        QCOMPARE(request.queryValue("page"), QStringLiteral("1"));
    }

    void pageSizeDecidesPaging_data()
    {
        QTest::addColumn<int>("count");
        QTest::addColumn<bool>("hasMore");
        QTest::newRow("19 results end paging") << 19 << false;
        QTest::newRow("20 results keep it on") << 20 << true;
    }
    void pageSizeDecidesPaging()
    {
        QFETCH(int, count);
        QFETCH(bool, hasMore);
        service.server.setAnswer("GET", path, ZuviBrowseTestService::searchPage("s", count));
        open("猫");
        QTRY_VERIFY(!search->isLoading());
        QCOMPARE(search->hasMorePages(), hasMore);
        service.server.setAnswer("GET", path, ZuviBrowseTestService::searchPage("t", 5));
        scrollFar();
        QCOMPARE(search->isLoadingMore(), hasMore);
        if (!hasMore) {
            QCOMPARE(service.server.requestCount(path), 1);
            return;
        }
        QTRY_VERIFY(!search->isLoadingMore());
        QCOMPARE(service.server.requests(path).last().queryValue("page"), QStringLiteral("2"));
        QCOMPARE(search->videos().size(), count + 5);
        QCOMPARE(search->currentPage(), 2);
        QVERIFY(!search->hasMorePages());
    }

    void scrollingWithinTheFirstScreenLoadsNothing_data()
    {
        QTest::addColumn<double>("offset");
        QTest::addColumn<bool>("loads");
        // H = 600, C = 900: max(C - 1.6 H, H) = 600.
        QTest::newRow("short list, under a screen") << 500.0 << false;
        QTest::newRow("short list, exactly a screen") << 600.0 << false;
        QTest::newRow("short list, past a screen") << 601.0 << true;
    }
    void scrollingWithinTheFirstScreenLoadsNothing()
    {
        QFETCH(double, offset);
        QFETCH(bool, loads);
        service.server.setAnswer("GET", path, ZuviBrowseTestService::searchPage("s", 20));
        open("猫");
        QTRY_VERIFY(!search->isLoading());
        search->gridDidScroll(600, 900, offset);
        QCOMPARE(search->isLoadingMore(), loads);
        QTRY_VERIFY(!search->isLoadingMore());
    }

    // A failed next page (after the client's one retry) ends paging and
    // keeps the list; a failed first page is tst_zuvifailureswitches' part.
    void nextPageFailureEndsPaging()
    {
        service.server.setAnswer("GET", path, ZuviBrowseTestService::searchPage("s", 20));
        open("猫");
        QTRY_VERIFY(!search->isLoading());
        service.server.setAnswer("GET", path, ZuviBrowseTestService::serviceError("拒绝"));
        scrollFar();
        QTRY_COMPARE(service.clientClock.pendingCount(), 1);
        service.clientClock.advance(0.6);
        QTRY_VERIFY(!search->isLoadingMore());
        QVERIFY(!search->hasMorePages());
        QCOMPARE(search->stateView(), nullptr);
        QCOMPARE(search->videos().size(), 20);
    }

    void noResults()
    {
        service.server.setAnswer("GET", path, ZuviBrowseTestService::searchPage("s", 0));
        open("没有的东西");
        QTRY_VERIFY(!search->isLoading());
        QCOMPARE(search->stateView()->mode(), int(ZuviStateView::Empty));
        QCOMPARE(search->stateView()->title(), QStringLiteral("没有结果"));
        QCOMPARE(search->stateView()->message(), QStringLiteral("换个关键词再试。"));
        QVERIFY(!search->stateView()->buttonVisible());
    }

    void searchingAgainReplacesTheResults()
    {
        service.server.setAnswer("GET", path, ZuviBrowseTestService::searchPage("s", 20));
        open("猫");
        QTRY_VERIFY(!search->isLoading());
        service.server.setAnswer("GET", path, ZuviBrowseTestService::searchPage("d", 3));
        QVERIFY(!search->searchBarSearchButtonClicked("  "));
        QVERIFY(search->searchBarSearchButtonClicked(" 狗 "));
        QCOMPARE(search->keyword(), QStringLiteral("狗"));
        QTRY_VERIFY(!search->isLoading());
        QCOMPARE(search->videos().size(), 3);
        QCOMPARE(search->videos().first().bvid, QStringLiteral("BVdx0"));
        QCOMPARE(service.server.requests(path).last().queryValue("keyword"), QStringLiteral("狗"));
    }

    void aResetLoadRefusesANewKeyword()
    {
        service.server.setAnswer("GET", path, ZuviBrowseTestService::searchPage("s", 20, 150));
        open("猫");
        QVERIFY(!search->searchBarSearchButtonClicked("狗"));
        QCOMPARE(search->keyword(), QStringLiteral("猫"));
        QTRY_VERIFY(!search->isLoading());
        QCOMPARE(service.server.requestCount(path), 1);
    }

    // Back out of the results while the first or the next page is on its
    // way: the late answer must find nothing to touch.
    void leftWhileAPageIsOutstanding_data()
    {
        QTest::addColumn<bool>("nextPage");
        QTest::newRow("first page") << false;
        QTest::newRow("next page") << true;
    }
    void leftWhileAPageIsOutstanding()
    {
        QFETCH(bool, nextPage);
        service.server.setAnswer("GET", path, ZuviBrowseTestService::searchPage("s", 20));
        if (nextPage) {
            open("猫");
            QTRY_VERIFY(!search->isLoading());
        }
        service.server.setAnswer("GET", path, ZuviBrowseTestService::searchPage("t", 20, 150));
        ZuviScreenLifetimeCheck check(&service.server, service.client.get(),
                                      {&service.clientClock});
        if (nextPage)
            scrollFar();
        else
            open("狗");
        QVERIFY(search->isLoading() || search->isLoadingMore());
        QVERIFY2(check.waitForRequests(1), qPrintable(check.failure()));
        tester.reset();
        QVERIFY2(check.destroyAndDrain(search.release()), qPrintable(check.failure()));
        QCOMPARE(check.requestsAfterDestruction(), 0);
    }

    // A new keyword while the old keyword's next page loads: stored, nothing
    // started, the old page dropped when it arrives, and the screen stays
    // busy until opened anew.
    void aNewKeywordDuringANextPageStallsTheScreen()
    {
        service.server.setAnswer("GET", path, ZuviBrowseTestService::searchPage("s", 20));
        open("猫");
        QTRY_VERIFY(!search->isLoading());
        // The old keyword's next page fails slowly; its answer must be dropped.
        service.server.setAnswer("GET", path, ZuviBrowseTestService::serviceError("旧页", 100));
        scrollFar();
        QVERIFY(search->isLoadingMore());
        const int id = search->requestID();
        QVERIFY(search->searchBarSearchButtonClicked("狗"));
        QCOMPARE(search->keyword(), QStringLiteral("狗"));
        QCOMPARE(search->requestID(), id);
        // A failed search is tried once more by the client, 0.6 s later,
        // before it answers.
        QTRY_COMPARE(service.clientClock.pendingCount(), 1);
        service.clientClock.advance(0.6);
        waitForFailedAnswers(1);
        QCOMPARE(service.server.requestCount(path), 3);
        QVERIFY(search->isLoadingMore());
        QVERIFY(search->hasMorePages());
        QCOMPARE(search->videos().size(), 20);
        QCOMPARE(search->videos().first().bvid, QStringLiteral("BVsx0"));
        const int sent = service.server.requestCount(path);
        search->refreshButtonTapped();
        QVERIFY(search->searchBarSearchButtonClicked("鱼")); // stored, but nothing starts
        scrollFar();
        QCOMPARE(service.server.requestCount(path), sent);
    }
};

QTEST_MAIN(TestSearchResultsViewController)
#include "tst_zuvisearchresultsviewcontroller.moc"
