#include "account/zuviaccountvideolistviewcontroller.h"
#include "account/zuviprofileviewcontroller.h"
#include "browse/zuvivideolistmodel.h"
#include "browse/zuvivideoscreenopener.h"
#include "zuviaccounttestservice.h"
#include "zuviscreenlifetimecheck.h"

#include <QAbstractItemModelTester>
#include <QtTest>

using Profile = ZuviProfileViewController;
using Service = ZuviAccountTestService;

class TestProfileViewController : public QObject
{
    Q_OBJECT

private:
    Service service;
    std::unique_ptr<ZuviNavigationController> navigation;
    QPointer<Profile> profile;
    std::unique_ptr<QAbstractItemModelTester> tester;
    const QString navPath = QString::fromLatin1(Service::kNavPath);
    const QString relationPath = QString::fromLatin1(Service::kRelationPath);
    const QString historyPath = QString::fromLatin1(Service::kHistoryPath);

    // The profile as the root of its tab, loading at once.
    void open()
    {
        profile = new Profile(service.client.get(), &service.screenClock);
        tester.reset(new QAbstractItemModelTester(
            profile->recentVideosModel(), QAbstractItemModelTester::FailureReportingMode::QtTest));
        navigation.reset(new ZuviNavigationController(profile, &service.screenClock));
    }
    void settle()
    {
        QString failure;
        QVERIFY2(ZuviScreenLifetimeCheck::drainClient(service.client.get(), &failure),
                 qPrintable(failure));
    }
    void openSignedIn()
    {
        service.server.setAnswer("GET", navPath, Service::signedIn());
        open();
        QTRY_VERIFY(profile->isLoggedIn());
    }

private slots:
    void initTestCase()
    {
        QVERIFY(service.start());
        service.server.setAnswer("GET", relationPath, Service::relation(9999, 10000));
        service.server.setAnswer("GET", historyPath, Service::videoList("h", 12));
    }
    void init()
    {
        ZuviIdiom::setCurrent(ZuviIdiom::Pad);
        service.server.clearRequests();
    }
    void cleanup()
    {
        ZuviVideoScreenOpener::setFactory(nullptr);
        tester.reset();
        navigation.reset();
        settle();
    }

    void signedInCardAndRecentPanel()
    {
        service.server.setAnswer("GET", navPath, Service::signedIn(200));
        open();
        QVERIFY(profile->isLoadingProfile());
        QCOMPARE(profile->statusMessage(), QStringLiteral("正在检查登录状态..."));
        QCOMPARE(profile->displayName(), QStringLiteral("检查登录中"));
        QVERIFY(!profile->isLoginButtonEnabled());
        QTRY_VERIFY(profile->isLoggedIn());
        QVERIFY(profile->isLoginButtonEnabled());
        QCOMPARE(profile->displayName(), QStringLiteral("测试用户"));
        QCOMPARE(profile->avatarCharacter(), QStringLiteral("测"));
        QVERIFY(profile->avatarSource().contains("face.jpg"));
        QCOMPARE(profile->levelTag(), QStringLiteral("LV5"));
        QCOMPARE(profile->membershipTag(), QStringLiteral("大会员"));
        QVERIFY(profile->isMembershipHighlighted());
        QCOMPARE(profile->statValues(), QStringList({"12", "9999", "1.0万"}));
        QCOMPARE(profile->statusLine(), QStringLiteral("这个人很神秘，什么都没有写"));
        QCOMPARE(profile->loginButtonTitle(), QStringLiteral("退出登录"));
        QCOMPARE(service.server.requests(relationPath).first().queryValue("vmid"),
                 QStringLiteral("42"));
        // The panel shows the first nine of the history.
        QTRY_COMPARE(profile->recentVideos().size(), Profile::kRecentVideoCount);
        QCOMPARE(profile->recentStatusText(), QString());
        QCOMPARE(profile->recentVideos().first().bvid, QStringLiteral("BVhx0"));
    }

    void recentPanelStates_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("status");
        QTest::newRow("none") << QByteArray(R"({"code":0,"data":{"list":[]}})") << "暂无最近观看";
        QTest::newRow("failed") << QByteArray(R"({"code":-500,"message":"x"})")
                                << "最近观看加载失败";
    }
    void recentPanelStates()
    {
        QFETCH(QByteArray, body);
        QFETCH(QString, status);
        // Slow enough that the panel is seen loading once the card is in.
        ZuviScriptedAnswer answer = ZuviScriptedAnswer::json(body);
        answer.delayMs = 300;
        service.server.setAnswer("GET", historyPath, answer);
        openSignedIn();
        QCOMPARE(profile->recentStatusText(), QStringLiteral("正在加载最近观看"));
        QTRY_COMPARE(profile->recentStatusText(), status);
        QVERIFY(profile->recentVideos().isEmpty());
        service.server.setAnswer("GET", historyPath, Service::videoList("h", 12));
    }

    void aPhoneNeverLoadsTheRecentPanel()
    {
        ZuviIdiom::setCurrent(ZuviIdiom::Phone);
        openSignedIn();
        settle();
        QVERIFY(!Profile::showsRecentPanel());
        QCOMPARE(service.server.requestCount(historyPath), 0);
        QVERIFY(profile->recentVideos().isEmpty());
    }

    void signedOutIsAStateNotAnError()
    {
        service.server.setAnswer("GET", navPath, Service::signedOut());
        open();
        QTRY_VERIFY(!profile->isLoadingProfile());
        QVERIFY(!profile->isLoggedIn());
        QCOMPARE(profile->statusLine(), QStringLiteral("未登录，请扫码登录。"));
        QCOMPARE(profile->displayName(), QStringLiteral("未登录用户"));
        QCOMPARE(profile->avatarCharacter(), QStringLiteral("未"));
        QCOMPARE(profile->avatarSource(), QString());
        QCOMPARE(profile->loginButtonTitle(), QStringLiteral("扫码登录"));
        QCOMPARE(profile->statValues(), QStringList({"--", "--", "--"}));
        // The entries do nothing for nobody.
        for (int index = 0; index < 3; ++index)
            profile->openEntryAtIndex(index);
        QCOMPARE(navigation->depth(), 1);
        settle();
        QCOMPARE(service.server.requestCount(relationPath), 0);
        QCOMPARE(service.server.requestCount(historyPath), 0);
    }

    void aFailedCheckSaysWhy()
    {
        service.server.setAnswer("GET", navPath, Service::serviceError("服务繁忙"));
        open();
        QTRY_VERIFY(!profile->isLoadingProfile());
        QCOMPARE(profile->statusLine(), QStringLiteral("登录状态检查失败：服务繁忙"));
        QCOMPARE(profile->loginButtonTitle(), QStringLiteral("扫码登录"));
        QVERIFY(profile->isLoginButtonEnabled());
    }

    void logoutForgetsTheSessionWithoutAsking()
    {
        service.client->updateCredentialCookie("SESSDATA=s1; DedeUserID=42");
        openSignedIn();
        QTRY_COMPARE(profile->recentVideos().size(), Profile::kRecentVideoCount);
        settle();
        const int sent = service.server.requestCount();
        profile->loginButtonTapped();
        QVERIFY(!profile->isLoggedIn());
        QCOMPARE(service.client->credentialCookie(), QString());
        QCOMPARE(profile->statusLine(), QStringLiteral("已退出登录。"));
        QVERIFY(profile->recentVideos().isEmpty());
        QCOMPARE(profile->recentStatusText(), QString());
        QCOMPARE(profile->loginButtonTitle(), QStringLiteral("扫码登录"));
        settle();
        QCOMPARE(service.server.requestCount(), sent);
    }

    void aLogoutDropsTheCheckUnderWay()
    {
        service.server.setAnswer("GET", navPath, Service::signedIn(300));
        open();
        profile->logoutButtonTapped();
        QVERIFY(!profile->isLoggedIn());
        // The check's answer, signed in, comes after the logout and changes
        // nothing.
        settle();
        QCOMPARE(service.server.requestCount(navPath), 1);
        QVERIFY(!profile->isLoggedIn());
        QCOMPARE(profile->statusLine(), QStringLiteral("已退出登录。"));
    }

    void entriesOpenTheAccountLists_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("kind");
        QTest::newRow("history") << 0 << "历史记录"
                                 << "history";
        QTest::newRow("watch later") << 1 << "稍后再看"
                                     << "watchLater";
        QTest::newRow("favourites") << 2 << "我的收藏"
                                    << "favorites";
    }
    void entriesOpenTheAccountLists()
    {
        QFETCH(int, index);
        QFETCH(QString, title);
        QFETCH(QString, kind);
        openSignedIn();
        profile->openEntryAtIndex(index);
        auto *list =
            qobject_cast<ZuviAccountVideoListViewController *>(navigation->topViewController());
        QVERIFY(list);
        QCOMPARE(list->title(), title);
        QCOMPARE(list->listKind(), kind);
        QCOMPARE(list->mid(), qint64(42));
        QVERIFY(list->hidesBottomBarWhenPushed());
        profile->openEntryAtIndex(3);
        QCOMPARE(navigation->depth(), 2);
    }

    void aRecentVideoOpensWithItsSourceTitle()
    {
        QString opened;
        QString source;
        ZuviVideoScreenOpener::setFactory([&](const ZuviVideoItem &item, const QString &title) {
            opened = item.bvid;
            source = title;
            return new ZuviStandInViewController("视频");
        });
        openSignedIn();
        QTRY_COMPARE(profile->recentVideos().size(), Profile::kRecentVideoCount);
        profile->selectRecentItem(9);
        QCOMPARE(navigation->depth(), 1);
        profile->selectRecentItem(2);
        QCOMPARE(opened, QStringLiteral("BVhx2"));
        QCOMPARE(source, QStringLiteral("最近观看"));
        ZuviVideoScreenOpener::setFactory(nullptr);
    }

    void recentColumns_data()
    {
        QTest::addColumn<bool>("pad");
        QTest::addColumn<double>("width");
        QTest::addColumn<int>("columns");
        QTest::newRow("pad 560") << true << 560.0 << 3;
        QTest::newRow("pad 559") << true << 559.0 << 2;
        QTest::newRow("pad 339") << true << 339.0 << 1;
        QTest::newRow("phone 300") << false << 300.0 << 2;
        QTest::newRow("phone 299") << false << 299.0 << 1;
    }
    void recentColumns()
    {
        QFETCH(bool, pad);
        QFETCH(double, width);
        QFETCH(int, columns);
        ZuviIdiom::setCurrent(pad ? ZuviIdiom::Pad : ZuviIdiom::Phone);
        QCOMPARE(Profile::recentColumnCountForWidth(width), columns);
    }

    void destroyedWithItsRequestsOutstanding()
    {
        service.server.setAnswer("GET", navPath, Service::signedIn(300));
        ZuviScreenLifetimeCheck check(&service.server, service.client.get(),
                                      {&service.screenClock, &service.clientClock});
        open();
        QVERIFY2(check.waitForRequests(1), qPrintable(check.failure()));
        QVERIFY(profile->isLoadingProfile());
        tester.reset();
        // The nav answer arrives for nobody: no relation or history request
        // follows it.
        QVERIFY2(check.destroyAndDrain(navigation.release()), qPrintable(check.failure()));
        QVERIFY(profile.isNull());
        // The client still finishes its own check (the counts follow the
        // nav answer); the screen, which would load its recent panel on a
        // tablet, asks nothing more.
        QCOMPARE(check.requestsAfterDestruction(), 1);
        QCOMPARE(service.server.requestCount(relationPath), 1);
        QCOMPARE(service.server.requestCount(historyPath), 0);
    }
};

QTEST_GUILESS_MAIN(TestProfileViewController)
#include "tst_zuviprofileviewcontroller.moc"
