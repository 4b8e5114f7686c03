#include "account/zuviloginviewcontroller.h"
#include "zuviaccounttestservice.h"

#include <QSignalSpy>
#include <QtTest>

using Login = ZuviLoginViewController;
using Service = ZuviAccountTestService;

class TestLoginViewController : public QObject
{
    Q_OBJECT

private:
    Service service;
    std::unique_ptr<ZuviNavigationController> navigation;
    QPointer<Login> login;
    QStringList statuses;
    int logins = 0;
    const QString generatePath = QString::fromLatin1(Service::kGeneratePath);
    const QString pollPath = QString::fromLatin1(Service::kPollPath);

    // Pushes the login screen on a stack, recording every status it shows.
    void open()
    {
        navigation.reset(new ZuviNavigationController(new ZuviStandInViewController("我的"),
                                                      &service.screenClock));
        login = new Login(service.client.get(), &service.screenClock);
        connect(login, &Login::statusTextChanged, this,
                [this] { statuses.append(login->statusText()); });
        connect(login, &Login::didLogin, this, [this] { ++logins; });
        navigation->pushViewController(login);
    }
    void waitForPolls(int count)
    {
        QTRY_COMPARE(service.server.requestCount(pollPath), count);
        // The server has the request; the answer still has to reach the
        // screen before the next tick may ask again.
        QTRY_VERIFY(login.isNull() || !login->isPollingInFlight());
    }

private slots:
    void initTestCase() { QVERIFY(service.start()); }
    void init()
    {
        ZuviIdiom::setCurrent(ZuviIdiom::Pad);
        service.server.clearRequests();
        service.server.setAnswer("GET", generatePath,
                                 Service::generated("http://127.0.0.1/qr?k=key1", "key1"));
        statuses.clear();
        logins = 0;
        service.defaults.get()->removeObjectForKey(ZuviAPIClient::kCredentialCookieKey);
    }
    void cleanup()
    {
        navigation.reset();
        service.client->networkQueue()->waitForDone();
        QCoreApplication::processEvents();
    }

    void aConfirmedLoginReportsOnceAndCloses()
    {
        service.server.setAnswerSequence(
            "GET", pollPath,
            {Service::polled(86101), Service::polled(86090), Service::polled(0, "登录成功")});
        open();
        QCOMPARE(login->title(), QStringLiteral("扫码登录"));
        QVERIFY(!login->isRefreshEnabled());
        QTRY_COMPARE(statuses.size(), 3);
        QVERIFY(login->isRefreshEnabled());
        // The code is drawn at the tablet's side, never larger.
        QVERIFY(!login->qrcodeImage().isNull());
        QVERIFY(login->qrcodeImage().width() <= Login::kPadImageSide);
        QCOMPARE(service.server.requests(pollPath).first().queryValue("qrcode_key"),
                 QStringLiteral("key1"));
        service.screenClock.advance(Login::kPollInterval);
        waitForPolls(2);
        service.screenClock.advance(Login::kPollInterval);
        waitForPolls(3);
        QCOMPARE(statuses, QStringList({"正在生成二维码...", "请扫码并在手机上确认登录。",
                                        "等待扫码", "已扫码，请在手机上确认", "登录成功"}));
        QCOMPARE(logins, 1);
        QCOMPARE(navigation->depth(), 1);
        QVERIFY(!login->isPolling());
        QVERIFY(service.client->credentialCookie().contains("SESSDATA=s1"));
        service.screenClock.advance(10);
        QCOMPARE(service.server.requestCount(pollPath), 3);
        QCOMPARE(logins, 1);
    }

    void aTickWhileAPollIsOutstandingSendsNothing()
    {
        service.server.setAnswer("GET", pollPath, Service::polled(86101, QString(), 400));
        open();
        QTRY_VERIFY(login->isPollingInFlight());
        service.screenClock.advance(Login::kPollInterval);
        service.screenClock.advance(Login::kPollInterval);
        QTRY_COMPARE(login->statusText(), QStringLiteral("等待扫码"));
        service.client->networkQueue()->waitForDone();
        QCOMPARE(service.server.requestCount(pollPath), 1);
        // With the answer in, the next tick asks again.
        service.screenClock.advance(Login::kPollInterval);
        waitForPolls(2);
    }

    void anExpiredCodeStopsPollingUntilANewOne()
    {
        service.server.setAnswer("GET", pollPath, Service::polled(86038));
        open();
        waitForPolls(1);
        QCOMPARE(login->statusText(), QStringLiteral("二维码已过期"));
        QVERIFY(!login->isPolling());
        QVERIFY(login->isRefreshEnabled());
        service.screenClock.advance(10);
        QCOMPARE(service.server.requestCount(pollPath), 1);
        service.server.setAnswer("GET", generatePath,
                                 Service::generated("http://127.0.0.1/qr?k=key2", "key2"));
        service.server.setAnswer("GET", pollPath, Service::polled(12345));
        login->refreshButtonTapped();
        waitForPolls(2);
        QCOMPARE(service.server.requests(pollPath).last().queryValue("qrcode_key"),
                 QStringLiteral("key2"));
        QCOMPARE(login->statusText(), QStringLiteral("登录状态 12345"));
        QVERIFY(login->isPolling());
    }

    void aFailedPollIsShownAndPollingGoesOn()
    {
        service.server.setAnswerSequence(
            "GET", pollPath,
            {Service::object({{"code", 0}}), Service::polled(12345, QStringLiteral("请扫码"))});
        open();
        waitForPolls(1);
        QCOMPARE(login->statusText(), QStringLiteral("二维码轮询接口缺少 data 字段"));
        service.screenClock.advance(Login::kPollInterval);
        waitForPolls(2);
        QCOMPARE(login->statusText(), QStringLiteral("请扫码"));
    }

    void generateFailures_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("status");
        // A malformed answer's error (tst_zuviapiclientaccount) takes the same way.
        QTest::newRow("service refuses")
            << QByteArray(R"({"code":-3,"message":"维护中"})") << "维护中";
    }
    void generateFailures()
    {
        QFETCH(QByteArray, body);
        QFETCH(QString, status);
        service.server.setAnswer("GET", generatePath, ZuviScriptedAnswer::json(body));
        open();
        QTRY_COMPARE(login->statusText(), status);
        QVERIFY(login->isRefreshEnabled());
        QVERIFY(login->qrcodeImage().isNull());
        QVERIFY(!login->isPolling());
        service.screenClock.advance(10);
        QCOMPARE(service.server.requestCount(pollPath), 0);
    }

    void leavingMidPollSendsNothingMore()
    {
        // The user confirms just as they leave: the late answer neither
        // reports a login nor touches the deleted screen.
        service.server.setAnswer("GET", pollPath, Service::polled(0, "登录成功", 300));
        open();
        QTRY_VERIFY(login->isPollingInFlight());
        QVERIFY(navigation->popViewController(false));
        QVERIFY(!login->isPolling());
        // The stack lets its popped screen go a moment later.
        service.screenClock.advance(5);
        QTRY_VERIFY(login.isNull());
        waitForPolls(1);
        QCOMPARE(logins, 0);
        QCOMPARE(navigation->depth(), 1);
        QCOMPARE(service.server.requestCount(pollPath), 1);
    }

    void coveredByAnotherScreenItKeepsPolling()
    {
        service.server.setAnswer("GET", pollPath, Service::polled(86101));
        open();
        waitForPolls(1);
        navigation->pushViewController(new ZuviStandInViewController("其他"));
        QVERIFY(login->isPolling());
        service.screenClock.advance(Login::kPollInterval);
        waitForPolls(2);
    }
};

QTEST_GUILESS_MAIN(TestLoginViewController)
#include "tst_zuviloginviewcontroller.moc"
