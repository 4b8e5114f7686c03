#include "browse/zuvilogingate.h"
#include "net/zuviclienttestfixture.h"

#include <memory>

// The account check in front of the signed-in-only tabs, against a loopback
// nav endpoint.
class TestZuviLoginGate : public QObject
{
    Q_OBJECT
private slots:
    void storedCookieRunsAtOnceWithoutAsking();
    void navAnswerDecides_data();
    void navAnswerDecides();
    void secondActionDuringACheckIsDropped();
    void loginRequiredErrors();

private:
    struct Seen {
        int actions = 0;
        int checking = 0;
        int loginRequired = 0;
        QList<ZuviError> failures;
        bool settled() const { return actions + loginRequired + failures.size() > 0; }
    };
    static std::unique_ptr<ZuviLoginGate> makeGate(ZuviClientTestFixture &f, Seen &seen)
    {
        return std::make_unique<ZuviLoginGate>(
            f.client.get(),
            ZuviLoginGate::Handlers{[&seen] { ++seen.checking; }, [&seen] { ++seen.loginRequired; },
                                    [&seen](const ZuviError &e) { seen.failures << e; }});
    }
};

void TestZuviLoginGate::storedCookieRunsAtOnceWithoutAsking()
{
    ZuviClientTestFixture f;
    f.defaults.get()->setObject(QStringLiteral("SESSDATA=abc; DedeUserID=42"),
                                QString::fromLatin1(ZuviAPIClient::kCredentialCookieKey));
    Seen seen;
    auto gate = makeGate(f, seen);
    gate->performWhenLoggedIn([&] { ++seen.actions; });
    QCOMPARE(seen.actions, 1);
    QCOMPARE(seen.checking, 0);
    QCOMPARE(f.server.requestCount(), 0);
}

void TestZuviLoginGate::navAnswerDecides_data()
{
    QTest::addColumn<QByteArray>("nav");
    QTest::addColumn<int>("actions");
    QTest::addColumn<int>("loginRequired");
    QTest::addColumn<int>("failureCode");

    QTest::newRow("signed in on the service")
        << zuviJson({{"code", 0},
                     {"data", QJsonObject{{"isLogin", true}, {"mid", 42}, {"uname", "小明"}}}})
        << 1 << 0 << 0;
    QTest::newRow("signed in without a member id")
        << zuviJson({{"code", 0}, {"data", QJsonObject{{"isLogin", true}, {"mid", 0}}}}) << 0 << 1
        << 0;
    QTest::newRow("logged out") << zuviJson({{"code", -101},
                                             {"message", "账号未登录"},
                                             {"data", QJsonObject{{"isLogin", false}}}})
                                << 0 << 1 << 0;
    QTest::newRow("service failure")
        << zuviJson({{"code", -500}, {"message", "服务繁忙"}}) << 0 << 0 << -500;
}

void TestZuviLoginGate::navAnswerDecides()
{
    QFETCH(QByteArray, nav);
    QFETCH(int, actions);
    QFETCH(int, loginRequired);
    QFETCH(int, failureCode);

    ZuviClientTestFixture f;
    f.answerJson("/x/web-interface/nav", nav);
    f.server.setAnswer("GET", "/x/relation/stat",
                       ZuviScriptedAnswer::json(zuviJson({{"code", 0}})));
    Seen seen;
    auto gate = makeGate(f, seen);
    gate->performWhenLoggedIn([&] { ++seen.actions; });
    QCOMPARE(seen.checking, 1);
    QVERIFY(gate->isCheckingLoginState());
    ZUVI_WAIT(seen.settled());
    QVERIFY(!gate->isCheckingLoginState());
    QCOMPARE(seen.actions, actions);
    QCOMPARE(seen.loginRequired, loginRequired);
    QCOMPARE(seen.failures.isEmpty() ? 0 : seen.failures.first().code, failureCode);
}

void TestZuviLoginGate::secondActionDuringACheckIsDropped()
{
    ZuviClientTestFixture f;
    f.answerJson("/x/web-interface/nav",
                 zuviJson({{"code", 0}, {"data", QJsonObject{{"isLogin", true}, {"mid", 7}}}}));
    f.server.setAnswer("GET", "/x/relation/stat",
                       ZuviScriptedAnswer::json(zuviJson({{"code", 0}})));
    Seen seen;
    auto gate = makeGate(f, seen);
    int second = 0;
    gate->performWhenLoggedIn([&] { ++seen.actions; });
    gate->performWhenLoggedIn([&] { ++second; });
    ZUVI_WAIT(seen.actions == 1);
    QCOMPARE(second, 0);
    QCOMPARE(seen.checking, 1);
    QCOMPARE(f.server.requestCount("/x/web-interface/nav"), 1);
}

void TestZuviLoginGate::loginRequiredErrors()
{
    QVERIFY(!ZuviLoginGate::isLoginRequiredError(ZuviError()));
    QVERIFY(ZuviLoginGate::isLoginRequiredError(ZuviError{"d", -101, "随便"}));
    QVERIFY(ZuviLoginGate::isLoginRequiredError(ZuviError{"d", 500, QString()}));
    QVERIFY(ZuviLoginGate::isLoginRequiredError(ZuviError{"d", 500, "会话登录失效，请重新扫码"}));
    QVERIFY(!ZuviLoginGate::isLoginRequiredError(ZuviError{"d", -500, "服务繁忙"}));
}

QTEST_GUILESS_MAIN(TestZuviLoginGate)
#include "tst_zuvilogingate.moc"
