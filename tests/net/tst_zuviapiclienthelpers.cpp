#include "zuviclienttestfixture.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QTest>

// The client's text helpers: form bodies, escaping, cookies, the stored
// credential, JSON root checks and display texts (field reading is the
// records' suite).
class TestZuviAPIClientHelpers : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void formBodyIsSortedAndEscaped();
    void escapingRules_data();
    void escapingRules();
    void cookieStringsParse_data();
    void cookieStringsParse();
    void cookieDictionaryWritesLoginAndDeviceCookiesFirst();
    void credentialStoreTrimsAndRemoves();
    void credentialReadsTokenAndMemberId();
    void credentialCookieFromSetCookieHeaders_data();
    void credentialCookieFromSetCookieHeaders();
    void shortErrorText_data();
    void shortErrorText();

private:
    std::unique_ptr<ZuviClientTestFixture> m_f;
};

void TestZuviAPIClientHelpers::init()
{
    m_f = std::make_unique<ZuviClientTestFixture>();
}

void TestZuviAPIClientHelpers::cleanup()
{
    m_f.reset();
}

void TestZuviAPIClientHelpers::formBodyIsSortedAndEscaped()
{
    QCOMPARE(ZuviAPIClient::formBodyStringWithParameters({{"rnd", 1}, {"aid", 2}, {"Zed", 3}}),
             QStringLiteral("Zed=3&aid=2&rnd=1"));
    QCOMPARE(ZuviAPIClient::formBodyStringWithParameters(
                 {{"message", "a b&c=d/é"}, {"csrf", "t"}, {"aid", 170001}, {"flag", true}}),
             QStringLiteral("aid=170001&csrf=t&flag=1&message=a%20b%26c%3Dd%2F%C3%A9"));
    QCOMPARE(ZuviAPIClient::formBodyStringWithParameters({}), QString());
}

void TestZuviAPIClientHelpers::escapingRules_data()
{
    QTest::addColumn<QString>("input");
    QTest::addColumn<QString>("form");
    QTest::addColumn<QString>("url");
    // A lone "%" is escaped too, so that a keyword such as "100%" arrives intact.
    QTest::newRow("reserved") << "!*'();:@&=+$,/?%#[]"
                              << "%21%2A%27%28%29%3B%3A%40%26%3D%2B%24%2C%2F%3F%25%23%5B%5D"
                              << "!*'();:@&=+$,/?%25#[]";
    QTest::newRow("unreserved") << "AZaz09-._~"
                                << "AZaz09-._~"
                                << "AZaz09-._~";
    QTest::newRow("illegal") << "<\"{|}\\^`>"
                             << "%3C%22%7B%7C%7D%5C%5E%60%3E"
                             << "%3C%22%7B%7C%7D%5C%5E%60%3E";
}

void TestZuviAPIClientHelpers::escapingRules()
{
    QFETCH(QString, input);
    QFETCH(QString, form);
    QFETCH(QString, url);
    QCOMPARE(ZuviAPIClient::formEscapedString(input), form);
    QCOMPARE(ZuviAPIClient::urlEscapedString(input), url);
}

void TestZuviAPIClientHelpers::cookieStringsParse_data()
{
    QTest::addColumn<QString>("cookie");
    QTest::addColumn<QVariantMap>("expected");
    QTest::newRow("stray pieces") << " SESSDATA=x=y ; =bad; novalue=; k=v"
                                  << QVariantMap{{"SESSDATA", "x=y"}, {"k", "v"}};
    QTest::newRow("later wins") << "a=1; b=2; a=3\n" << QVariantMap{{"a", "3"}, {"b", "2"}};
    QTest::newRow("no equals") << "flag; Path" << QVariantMap{};
}

void TestZuviAPIClientHelpers::cookieStringsParse()
{
    QFETCH(QString, cookie);
    QFETCH(QVariantMap, expected);
    const ZuviCookieDictionary parsed = ZuviAPIClient::mutableCookieDictionaryFromString(cookie);
    QVariantMap actual;
    for (auto it = parsed.begin(); it != parsed.end(); ++it)
        actual.insert(it.key(), it.value());
    QCOMPARE(actual, expected);
}

void TestZuviAPIClientHelpers::cookieDictionaryWritesLoginAndDeviceCookiesFirst()
{
    QCOMPARE(ZuviAPIClient::cookieStringFromDictionary(
                 {{"zz", "1"}, {"SESSDATA", "s"}, {"buvid3", "b"}, {"DedeUserID", ""}}),
             QStringLiteral("SESSDATA=s; buvid3=b; zz=1"));
    // The whole order, device cookies included, is the account suite's
    // device-identity test's.
    QCOMPARE(ZuviAPIClient::cookieStringFromDictionary({}), QString());
}

void TestZuviAPIClientHelpers::credentialStoreTrimsAndRemoves()
{
    QCOMPARE(m_f->client->credentialCookie(), QString());
    m_f->client->updateCredentialCookie("  \n SESSDATA=s; zuvi_jct=t \n");
    QCOMPARE(m_f->client->credentialCookie(), QStringLiteral("SESSDATA=s; zuvi_jct=t"));
    QCOMPARE(m_f->defaults.get()->stringForKey("ZuviCredentialCookie"),
             QStringLiteral("SESSDATA=s; zuvi_jct=t"));
    m_f->client->updateCredentialCookie("   \n ");
    QCOMPARE(m_f->client->credentialCookie(), QString());
    QVERIFY(!m_f->defaults.get()->containsKey("ZuviCredentialCookie"));
    m_f->client->updateCredentialCookie("a=1");
    m_f->client->clearCredentialCookie();
    QVERIFY(!m_f->defaults.get()->containsKey("ZuviCredentialCookie"));
}

void TestZuviAPIClientHelpers::credentialReadsTokenAndMemberId()
{
    QCOMPARE(m_f->client->currentMIDFromCredentialCookie(), 0);
    QCOMPARE(m_f->client->csrfTokenFromCredentialCookie(), QString());
    m_f->client->updateCredentialCookie("DedeUserID=9007199254740993; zuvi_jct=abc123; SESSDATA=s");
    QCOMPARE(m_f->client->currentMIDFromCredentialCookie(), Q_INT64_C(9007199254740993));
    QCOMPARE(m_f->client->csrfTokenFromCredentialCookie(), QStringLiteral("abc123"));
    m_f->client->updateCredentialCookie("DedeUserID=12ab");
    QCOMPARE(m_f->client->currentMIDFromCredentialCookie(), 0);
}

void TestZuviAPIClientHelpers::credentialCookieFromSetCookieHeaders_data()
{
    QTest::addColumn<bool>("isHTTP");
    QTest::addColumn<QList<QByteArray>>("setCookies");
    QTest::addColumn<QVariant>("expected"); // invalid = no result at all
    QTest::newRow("login cookies in fixed order")
        << true
        << QList<QByteArray>{"zuvi_jct=t; Path=/; Domain=127.0.0.1", "SESSDATA=s%2C1; HttpOnly",
                             "other=1", "DedeUserID=42", "DedeUserID__ckMd5=m"}
        << QVariant("DedeUserID=42; DedeUserID__ckMd5=m; SESSDATA=s%2C1; zuvi_jct=t");
    QTest::newRow("later cookie replaces earlier")
        << true << QList<QByteArray>{"SESSDATA=old", "SESSDATA=new"} << QVariant("SESSDATA=new");
    QTest::newRow("cookies but none of ours")
        << true << QList<QByteArray>{"buvid3=x", "a=b"} << QVariant(QString(""));
    QTest::newRow("empty values skipped")
        << true << QList<QByteArray>{"SESSDATA=", "zuvi_jct=t"} << QVariant("zuvi_jct=t");
    QTest::newRow("no cookie header") << true << QList<QByteArray>{} << QVariant();
    QTest::newRow("not http") << false << QList<QByteArray>{"SESSDATA=s"} << QVariant();
}

void TestZuviAPIClientHelpers::credentialCookieFromSetCookieHeaders()
{
    QFETCH(bool, isHTTP);
    QFETCH(QList<QByteArray>, setCookies);
    QFETCH(QVariant, expected);
    ZuviHTTPResponse response;
    response.isHTTP = isHTTP;
    response.statusCode = 200;
    response.headers.append(qMakePair(QByteArray("Content-Type"), QByteArray("application/json")));
    // Repeated Set-Cookie lines arrive joined by line breaks, as the transport gives them.
    if (!setCookies.isEmpty())
        response.headers.append(qMakePair(QByteArray("Set-Cookie"), setCookies.join('\n')));
    const std::optional<QString> cookie = ZuviAPIClient::credentialCookieFromHTTPResponse(response);
    QCOMPARE(cookie.has_value(), expected.isValid());
    if (cookie)
        QCOMPARE(*cookie, expected.toString());
}

void TestZuviAPIClientHelpers::shortErrorText_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("expected");
    const QString fortyTwo(42, QChar(0x5F39));
    QTest::newRow("empty") << ""
                           << "未知错误";
    QTest::newRow("42 kept") << fortyTwo << fortyTwo;
    QTest::newRow("43 cut") << fortyTwo + "x" << fortyTwo + "...";
}

void TestZuviAPIClientHelpers::shortErrorText()
{
    QFETCH(QString, message);
    QFETCH(QString, expected);
    QCOMPARE(ZuviAPIClient::shortErrorText(ZuviError("d", 1, message)), expected);
}

QTEST_GUILESS_MAIN(TestZuviAPIClientHelpers)
#include "tst_zuviapiclienthelpers.moc"
