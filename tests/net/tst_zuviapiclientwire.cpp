#include "platform/zuvihttptransport.h"
#include "zuviclienttestfixture.h"

#include <QNetworkReply>
#include <QSignalSpy>
#include <QTest>
#include <QThread>

// The client core on a real loopback connection: the header sets as the
// server sees them, delivery on the main thread, connection failures and the
// request-error log.
class TestZuviAPIClientWire : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void apiRequestHeaders();
    void browserAndPostHeaders();
    void completionRunsOnceOnTheMainThread();
    void badAnswersEndInClearErrors_data();
    void badAnswersEndInClearErrors();
    void errorLogFollowsDeveloperMode();
    void nilCompletionStillRecordsTheError();
    void actionMessagesAreFilled();
    void clearingTheErrorLogNotifies();

private:
    struct Outcome {
        int calls = 0;
        bool onMainThread = false;
        ZuviError error;
    };
    // A minimal operation built the way every endpoint is: send, parse the
    // root on the network queue, finish through the family.
    void fetchRoot(const ZuviURLRequest &request, Outcome *outcome);

    std::unique_ptr<ZuviClientTestFixture> m_f;
};

void TestZuviAPIClientWire::init()
{
    m_f = std::make_unique<ZuviClientTestFixture>();
}

void TestZuviAPIClientWire::cleanup()
{
    m_f.reset();
}

void TestZuviAPIClientWire::fetchRoot(const ZuviURLRequest &request, Outcome *outcome)
{
    ZuviAPIClient *client = m_f->client.get();
    m_f->client->send(request, [client, outcome](const ZuviHTTPResponse &response,
                                                 const ZuviError &connectionError) {
        ZuviError error = connectionError;
        if (error.isNull())
            ZuviAPIClient::jsonRootDictionaryFromData(response.body, &error);
        client->finishWithVideos(
            {}, error, [outcome](const QList<ZuviVideoItem> &, const ZuviError &e) {
                ++outcome->calls;
                outcome->onMainThread = QThread::currentThread() == qApp->thread();
                outcome->error = e;
            });
    });
}

void TestZuviAPIClientWire::apiRequestHeaders()
{
    m_f->server.setAnswer("GET", "/x/web-interface/popular", ZuviScriptedAnswer::json("{}"));
    m_f->client->updateCredentialCookie("SESSDATA=s; zuvi_jct=t");
    Outcome outcome;
    fetchRoot(
        m_f->client->requestWithURLString(
            m_f->server.urlString("/x/web-interface/popular?pn=1&ps=20"), m_f->client->siteRoot()),
        &outcome);
    QTRY_COMPARE(outcome.calls, 1);
    // The rest of the API kind's headers, and the stored cookie, are checked
    // on every list operation in the list suite.
    const ZuviRecordedRequest request = m_f->server.requests().value(0);
    QCOMPARE(request.header("Accept-Language"), QByteArray("zh-CN,zh;q=0.9,en;q=0.8"));

    // Signed out, the API kind sends no Cookie header at all.
    m_f->client->clearCredentialCookie();
    Outcome second;
    fetchRoot(m_f->client->requestWithURLString(m_f->server.urlString("/x/web-interface/popular"),
                                                m_f->client->siteRoot()),
              &second);
    QTRY_COMPARE(second.calls, 1);
    QVERIFY(!m_f->server.requests().value(1).hasHeader("Cookie"));
}

void TestZuviAPIClientWire::browserAndPostHeaders()
{
    m_f->server.setAnswer("*", "/x/web-interface/archive/like", ZuviScriptedAnswer::json("{}"));
    // The stored credential is not what browser requests send: only the cookie handed in.
    m_f->client->updateCredentialCookie("SESSDATA=stored");
    const QString url = m_f->server.urlString("/x/web-interface/archive/like");
    const QString referer = m_f->client->videoRefererForBVID("BV1ab 411");
    QCOMPARE(referer, QStringLiteral("http://web.test/video/BV1ab%20411/"));
    QCOMPARE(m_f->client->videoRefererForBVID(""), m_f->client->siteRoot());

    Outcome get;
    fetchRoot(m_f->client->browserRequestWithURLString(url, referer, QString()), &get);
    Outcome post;
    fetchRoot(m_f->client->POSTRequestWithURLString(url, referer,
                                                    {{"like", 1}, {"csrf", "t"}, {"aid", "170001"}},
                                                    "SESSDATA=s; buvid3=b"),
              &post);
    QTRY_COMPARE(get.calls + post.calls, 2);

    const QList<ZuviRecordedRequest> requests = m_f->server.requests();
    const ZuviRecordedRequest browser = requests[0].method == "GET" ? requests[0] : requests[1];
    const ZuviRecordedRequest form = requests[0].method == "POST" ? requests[0] : requests[1];
    QCOMPARE(browser.header("User-Agent"), QByteArray(ZuviAPIClient::kBrowserUserAgent));
    QCOMPARE(browser.header("Accept"), QByteArray("*/*"));
    QCOMPARE(browser.header("Origin"), QByteArray("http://web.test"));
    QCOMPARE(browser.header("Referer"), referer.toUtf8());
    QVERIFY(!browser.hasHeader("Cookie"));

    // A form's method, type and body are checked on every action in the
    // account suite; here, the cookie is the one handed in, not the stored one.
    QCOMPARE(form.header("Cookie"), QByteArray("SESSDATA=s; buvid3=b"));
    QCOMPARE(form.header("Content-Length"), QByteArray::number(form.body.size()));
}

void TestZuviAPIClientWire::completionRunsOnceOnTheMainThread()
{
    m_f->server.setAnswer("GET", "/slow", [] {
        ZuviScriptedAnswer answer = ZuviScriptedAnswer::json("{\"code\":0}");
        answer.delayMs = 30;
        return answer;
    }());
    QList<Outcome> outcomes(6);
    for (Outcome &outcome : outcomes)
        fetchRoot(m_f->client->requestWithURLString(m_f->server.urlString("/slow"), "r"), &outcome);
    // Counted from the moment they are sent, before the network thread
    // has seen them.
    QCOMPARE(m_f->client->requestsInFlight(), 6);
    QTRY_VERIFY(std::all_of(outcomes.begin(), outcomes.end(),
                            [](const Outcome &o) { return o.calls > 0; }));
    // Give any duplicate delivery the chance to show itself.
    QCoreApplication::processEvents();
    for (const Outcome &outcome : outcomes) {
        QCOMPARE(outcome.calls, 1);
        QVERIFY(outcome.onMainThread);
        QVERIFY(outcome.error.isNull());
    }
    QCOMPARE(m_f->client->requestsInFlight(), 0);
}

void TestZuviAPIClientWire::badAnswersEndInClearErrors_data()
{
    // Bodies that are no JSON object are the parser hostility suite's; here,
    // the connection failures.
    QTest::addColumn<int>("kind"); // 1 drop, 2 never answer, 3 no server
    QTest::addColumn<int>("code");
    QTest::newRow("dropped connection") << 1 << -1;
    QTest::newRow("never answers") << 2 << int(QNetworkReply::TimeoutError);
    QTest::newRow("refused") << 3 << int(QNetworkReply::ConnectionRefusedError);
}

void TestZuviAPIClientWire::badAnswersEndInClearErrors()
{
    QFETCH(int, kind);
    QFETCH(int, code);
    ZuviScriptedAnswer answer = ZuviScriptedAnswer::text(QByteArray(), "text/html", 500);
    answer.dropConnection = kind == 1;
    answer.neverAnswer = kind == 2;
    m_f->server.setAnswer("GET", "/bad", answer);
    m_f->client->setRequestTimeoutMs(300);
    QString url = m_f->server.urlString("/bad");
    if (kind == 3) {
        // A port that was just free: nothing listens there.
        ZuviTestHttpServer closed;
        QVERIFY(closed.start());
        url = closed.urlString("/bad");
    }
    Outcome outcome;
    fetchRoot(m_f->client->requestWithURLString(url, "r"), &outcome);
    QTRY_COMPARE_WITH_TIMEOUT(outcome.calls, 1, 10000);
    // A failed request stops counting as one that is out.
    QCOMPARE(m_f->client->requestsInFlight(), 0);
    QCOMPARE(outcome.error.domain, QString::fromLatin1(ZuviHTTPTransport::kErrorDomain));
    if (code >= 0)
        QCOMPARE(outcome.error.code, code);
    QVERIFY(!outcome.error.message.isEmpty());
    QVERIFY(!ZuviAPIClient::shortErrorText(outcome.error).isEmpty());
}

void TestZuviAPIClientWire::errorLogFollowsDeveloperMode()
{
    QSignalSpy spy(&m_f->center, &ZuviNotificationCenter::notificationPosted);
    auto logNotifications = [&spy] {
        int count = 0;
        for (const QList<QVariant> &arguments : spy)
            count += arguments.at(0).toString() == "ZuviAPIRequestErrorLogUpdatedNotification";
        return count;
    };
    const ZuviError error = ZuviAPIClient::errorWithCode(501, "分区榜单缺少列表字段");
    int delivered = 0;
    auto completion = [&](const QList<ZuviVideoItem> &, const ZuviError &e) {
        QCOMPARE(e, error);
        ++delivered;
    };

    m_f->client->finishWithVideos({}, error, completion);
    QTRY_COMPARE(delivered, 1);
    QCOMPARE(m_f->log->logText(), QString());
    QCOMPARE(logNotifications(), 0);
    QVERIFY(m_f->client->apiRequestErrorLogs().isEmpty());

    m_f->defaults.get()->setBool(true, "ZuviDeveloperModeEnabled");
    m_f->client->finishWithVideos({}, error, completion);
    QTRY_COMPARE(delivered, 2);
    QTRY_COMPARE(logNotifications(), 1);
    const QString text = m_f->log->logText();
    QVERIFY2(text.contains("] [请求错误]\n视频列表接口\ndomain=ZuviAPIClientErrorDomain\ncode=501\n"
                           "message=分区榜单缺少列表字段\n"),
             qPrintable(text));
    QCOMPARE(m_f->client->apiRequestErrorLogs(), QStringList{text});
}

void TestZuviAPIClientWire::nilCompletionStillRecordsTheError()
{
    m_f->defaults.get()->setBool(true, "ZuviDeveloperModeEnabled");
    m_f->client->finishWithDetail(std::nullopt,
                                  ZuviAPIClient::errorWithCode(201, "视频详情字段不完整"), {});
    QVERIFY(
        m_f->log->logText().contains("视频详情接口\ndomain=ZuviAPIClientErrorDomain\ncode=201"));
}

void TestZuviAPIClientWire::actionMessagesAreFilled()
{
    QList<QString> messages;
    auto completion = [&](bool, const QString &message, const ZuviError &) { messages << message; };
    m_f->client->finishWithActionSuccess(true, QString(), ZuviError(), "点赞", completion);
    m_f->client->finishWithActionSuccess(
        false, QString(), ZuviAPIClient::errorWithCode(741, "缺少登录凭证或 zuvi_jct，请先登录"),
        "点赞", completion);
    m_f->client->finishWithActionSuccess(true, "已点赞", ZuviError(), "点赞", completion);
    QTRY_COMPARE(messages.size(), 3);
    QCOMPARE(messages, (QList<QString>{"操作成功", "缺少登录凭证或 zuvi_jct，请先登录", "已点赞"}));
}

void TestZuviAPIClientWire::clearingTheErrorLogNotifies()
{
    QSignalSpy spy(&m_f->center, &ZuviNotificationCenter::notificationPosted);
    m_f->log->appendText("x");
    m_f->client->clearAPIRequestErrorLogs();
    QCOMPARE(m_f->log->logText(), QString());
    QTRY_VERIFY(std::any_of(spy.begin(), spy.end(), [](const QList<QVariant> &arguments) {
        return arguments.at(0).toString() == "ZuviAPIRequestErrorLogUpdatedNotification";
    }));
}

QTEST_GUILESS_MAIN(TestZuviAPIClientWire)
#include "tst_zuviapiclientwire.moc"
