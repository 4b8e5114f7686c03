#include "account/zuviaccountvideolistviewcontroller.h"
#include "browse/zuvivideolistmodel.h"
#include "views/zuvistateview.h"
#include "zuviaccounttestservice.h"
#include "zuviscreenlifetimecheck.h"

#include <QAbstractItemModelTester>
#include <QtTest>

using List = ZuviAccountVideoListViewController;
using Service = ZuviAccountTestService;

class TestAccountVideoListViewController : public QObject
{
    Q_OBJECT

private:
    Service service;
    std::unique_ptr<ZuviNavigationController> navigation;
    QPointer<List> list;
    std::unique_ptr<QAbstractItemModelTester> tester;

    // Pushes a list screen over a stand-in profile, as the profile does.
    void open(const QString &title, const QString &kind, qint64 mid = 42)
    {
        navigation.reset(new ZuviNavigationController(new ZuviStandInViewController("我的"),
                                                      &service.screenClock));
        list = new List(title, kind, mid, service.client.get());
        tester.reset(new QAbstractItemModelTester(
            list->videosModel(), QAbstractItemModelTester::FailureReportingMode::QtTest));
        navigation->pushViewController(list);
    }
    void settle()
    {
        service.client->networkQueue()->waitForDone();
        QCoreApplication::processEvents();
    }

private slots:
    void initTestCase() { QVERIFY(service.start()); }
    void init()
    {
        ZuviIdiom::setCurrent(ZuviIdiom::Pad);
        service.server.clearRequests();
        service.server.setAnswer("GET", Service::kHistoryPath, Service::videoList("h", 5, 100));
        service.server.setAnswer("GET", Service::kWatchLaterPath, Service::videoList("w", 3));
        service.server.setAnswer("GET", Service::kFolderPath, Service::folders(77));
        service.server.setAnswer("GET", Service::kFavoritesPath, Service::videoList("f", 4));
    }
    void cleanup()
    {
        tester.reset();
        navigation.reset();
        settle();
    }

    void eachKindLoadsItsList_data()
    {
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("path");
        QTest::addColumn<int>("count");
        QTest::newRow("history") << "历史记录"
                                 << "history" << Service::kHistoryPath << 5;
        QTest::newRow("watch later") << "稍后再看"
                                     << "watchLater" << Service::kWatchLaterPath << 3;
        QTest::newRow("favourites") << "我的收藏"
                                    << "favorites" << Service::kFavoritesPath << 4;
    }
    void eachKindLoadsItsList()
    {
        QFETCH(QString, title);
        QFETCH(QString, kind);
        QFETCH(QString, path);
        QFETCH(int, count);
        open(title, kind);
        QVERIFY(list->isLoading());
        QVERIFY(!list->isRefreshEnabled());
        QCOMPARE(list->stateView()->mode(), int(ZuviStateView::Loading));
        QCOMPARE(list->stateView()->title(), QStringLiteral("正在加载"));
        QCOMPARE(list->stateView()->message(), QStringLiteral("正在获取%1。").arg(title));
        QTRY_COMPARE(list->videos().size(), count);
        QVERIFY(list->isRefreshEnabled());
        QCOMPARE(list->stateView(), nullptr);
        QCOMPARE(service.server.requestCount(path), 1);
        if (kind == "favorites")
            QCOMPARE(service.server.requests(Service::kFolderPath).first().queryValue("up_mid"),
                     QStringLiteral("42"));
    }

    void emptyAndFailedLists_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<int>("mode");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("message");
        QTest::newRow("empty") << QByteArray(R"({"code":0,"data":{"list":[]}})")
                               << int(ZuviStateView::Empty) << "暂无内容"
                               << "稍后再看为空。";
        // A refused list and its retry are rows of tst_zuvifailureswitches.
    }
    void emptyAndFailedLists()
    {
        QFETCH(QByteArray, body);
        QFETCH(int, mode);
        QFETCH(QString, title);
        QFETCH(QString, message);
        service.server.setAnswer("GET", Service::kWatchLaterPath, ZuviScriptedAnswer::json(body));
        open("稍后再看", "watchLater");
        QTRY_VERIFY(!list->isLoading());
        QCOMPARE(list->stateView()->mode(), mode);
        QCOMPARE(list->stateView()->title(), title);
        QCOMPARE(list->stateView()->message(), message);
        QCOMPARE(list->stateView()->buttonTitle(), QStringLiteral("重试"));
        // The state's button loads again.
        service.server.setAnswer("GET", Service::kWatchLaterPath, Service::videoList("w", 2));
        list->refreshButtonTapped();
        QTRY_COMPARE(list->videos().size(), 2);
        QCOMPARE(list->stateView(), nullptr);
    }

    void favouritesWithoutAMemberFailWithoutAsking()
    {
        open("我的收藏", "favorites", 0);
        QTRY_VERIFY(!list->isLoading());
        QCOMPARE(list->stateView()->mode(), int(ZuviStateView::Error));
        QCOMPARE(list->stateView()->message(), QStringLiteral("缺少登录用户 MID"));
        QCOMPARE(service.server.requestCount(), 0);
    }

    // A phone shows one column; a tablet the grid's own count.
    void aPhoneShowsOneColumn()
    {
        ZuviIdiom::setCurrent(ZuviIdiom::Phone);
        QCOMPARE(List::columnCountForWidth(900), 1);
    }

    void destroyedWithItsRequestOutstanding()
    {
        service.server.setAnswer("GET", Service::kHistoryPath, Service::videoList("h", 3, 300));
        ZuviScreenLifetimeCheck check(&service.server, service.client.get(),
                                      {&service.screenClock, &service.clientClock});
        open("历史记录", "history");
        QVERIFY2(check.waitForRequests(1), qPrintable(check.failure()));
        QVERIFY(list->isLoading());
        tester.reset();
        QVERIFY2(check.destroyAndDrain(navigation.release()), qPrintable(check.failure()));
        QVERIFY(list.isNull());
        QCOMPARE(check.requestsAfterDestruction(), 0);
    }
};

QTEST_GUILESS_MAIN(TestAccountVideoListViewController)
#include "tst_zuviaccountvideolistviewcontroller.moc"
