// Signed-in actions, device identity, QR login and the current user against
// a loopback server.
#include "net/zuviaccountparser.h"
#include "zuviclienttestfixture.h"

#include <QtTest>

namespace {
const QString kLoggedIn = "DedeUserID=42; DedeUserID__ckMd5=m; SESSDATA=s; zuvi_jct=tok";
const QString kWithIdentity = kLoggedIn + "; buvid3=b3; buvid4=b4; buvid_fp=b3; b_nut=1";

struct ActionOutcome {
    bool success = false;
    QString message;
    ZuviError error;
    int calls = 0;
};

ZuviAPIClient::ActionCompletion recorder(ActionOutcome *outcome)
{
    return [outcome](bool success, const QString &message, const ZuviError &error) {
        outcome->success = success;
        outcome->message = message;
        outcome->error = error;
        outcome->calls += 1;
    };
}

// Starts one of the five actions by name.
void startAction(ZuviAPIClient *client, const QString &action, qint64 aid, qint64 cid,
                 const QString &text, ActionOutcome *outcome)
{
    if (action == "like")
        client->likeVideoWithAID(aid, "BV1x", recorder(outcome));
    else if (action == "favorite")
        client->addFavoriteWithAID(aid, "BV1x", recorder(outcome));
    else if (action == "watchLater")
        client->addWatchLaterWithAID(aid, "BV1x", recorder(outcome));
    else if (action == "comment")
        client->sendCommentForAID(aid, "BV1x", text, recorder(outcome));
    else if (action == "danmaku")
        client->sendDanmakuWithAID(aid, cid, "BV1x", text, 12345, recorder(outcome));
}

QByteArray okAnswer(const char *message = "")
{
    return zuviJson({{"code", 0}, {"message", message}});
}
} // namespace

class TestZuviAPIClientAccount : public QObject
{
    Q_OBJECT
private slots:
    void checksComeFirstAndSendNothing_data();
    void checksComeFirstAndSendNothing();
    void actionRequests_data();
    void actionRequests();
    void actionServiceFailure();
    void deviceIdentityIsFetchedOnce();
    void deviceIdentityPartialAnswerAsksAgain();
    void deviceIdentityFailures_data();
    void deviceIdentityFailures();
    void favoriteWithoutFolders();
    void qrGenerate_data();
    void qrGenerate();
    void qrPollMessages_data();
    void qrPollMessages();
    void qrPollStoresSessionCookie_data();
    void qrPollStoresSessionCookie();
    void qrPollWithoutKeySendsNothing();
    void currentUser_data();
    void currentUser();
    void profileTexts_data();
    void profileTexts();
};

void TestZuviAPIClientAccount::checksComeFirstAndSendNothing_data()
{
    QTest::addColumn<QString>("action");
    QTest::addColumn<QString>("cookie");
    QTest::addColumn<qint64>("aid");
    QTest::addColumn<qint64>("cid");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("message");

    const QString token = "缺少登录凭证或 zuvi_jct，请先登录";
    QTest::newRow("like aid before token")
        << "like"
        << "" << qint64(0) << qint64(0) << "" << 740 << "当前视频缺少 aid，无法点赞";
    QTest::newRow("like token") << "like"
                                << "" << qint64(5) << qint64(0) << "" << 741 << token;
    QTest::newRow("favourite aid")
        << "favorite"
        << "" << qint64(-1) << qint64(0) << "" << 742 << "当前视频缺少 aid，无法收藏";
    QTest::newRow("favourite member") << "favorite"
                                      << "zuvi_jct=tok" << qint64(5) << qint64(0) << "" << 743
                                      << "缺少登录用户 MID，无法自动查找收藏夹";
    QTest::newRow("watch later aid") << "watchLater" << kLoggedIn << qint64(0) << qint64(0) << ""
                                     << 745 << "当前视频缺少 aid，无法添加稍后再看";
    QTest::newRow("comment aid before text")
        << "comment"
        << "" << qint64(0) << qint64(0) << "" << 746 << "当前视频缺少 aid，无法发表评论";
    QTest::newRow("comment blank text") << "comment" << kLoggedIn << qint64(5) << qint64(0)
                                        << " \n\t " << 747 << "评论内容不能为空";
    QTest::newRow("comment token after text")
        << "comment"
        << "" << qint64(5) << qint64(0) << "好" << 741 << token;
    QTest::newRow("danmaku cid 0") << "danmaku" << kLoggedIn << qint64(5) << qint64(0) << "" << 748
                                   << "当前视频缺少 aid 或 cid，无法发送弹幕";
    QTest::newRow("danmaku blank text")
        << "danmaku"
        << "" << qint64(5) << qint64(6) << "  " << 749 << "弹幕内容不能为空";
}

void TestZuviAPIClientAccount::checksComeFirstAndSendNothing()
{
    QFETCH(QString, action);
    QFETCH(QString, cookie);
    QFETCH(qint64, aid);
    QFETCH(qint64, cid);
    QFETCH(QString, text);
    QFETCH(int, code);
    QFETCH(QString, message);

    ZuviClientTestFixture f;
    f.client->updateCredentialCookie(cookie);
    ActionOutcome outcome;
    startAction(f.client.get(), action, aid, cid, text, &outcome);
    ZUVI_WAIT(outcome.calls == 1);
    QVERIFY(!outcome.success);
    QCOMPARE(outcome.error.code, code);
    QCOMPARE(outcome.error.domain, QString(ZuviAPIClient::kErrorDomain));
    QCOMPARE(outcome.error.message, message);
    QCOMPARE(outcome.message, message); // the shown message is the error's text
    f.settle();
    QCOMPARE(f.clientRequestCount(), 0);
}

void TestZuviAPIClientAccount::actionRequests_data()
{
    QTest::addColumn<QString>("action");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("body");

    QTest::newRow("comment") << "comment"
                             << "/x/v2/reply/add"
                             << "csrf=tok&message=%E5%A5%BD%20a%26b%3Dc&oid=5&plat=1&type=1";
    QTest::newRow("favourite") << "favorite"
                               << "/x/v3/fav/resource/deal"
                               << "add_media_ids=77&csrf=tok&del_media_ids=&rid=5&type=2";
    QTest::newRow("danmaku") << "danmaku"
                             << "/x/v2/dm/post"
                             << "aid=5&bvid=BV1x&color=16777215&csrf=tok&fontsize=25&mode=1"
                                "&msg=%E5%A5%BD%20a%26b%3Dc&oid=6&pool=0&progress=12345&rnd=*"
                                "&type=1";
}

void TestZuviAPIClientAccount::actionRequests()
{
    QFETCH(QString, action);
    QFETCH(QString, path);
    QFETCH(QString, body);

    ZuviClientTestFixture f;
    f.client->updateCredentialCookie(kWithIdentity);
    f.answerJson(path, okAnswer("点赞成功"));
    f.answerJson("/x/v3/fav/folder/created/list-all",
                 zuviJson({{"code", 0},
                           {"data", QJsonObject{{"list", QJsonArray{QJsonObject{{"id", 77}}}}}}}));
    ActionOutcome outcome;
    startAction(f.client.get(), action, 5, 6, "  好 a&b=c\n", &outcome);
    ZUVI_WAIT(outcome.calls == 1);

    QVERIFY2(outcome.success, qPrintable(outcome.error.message));
    QCOMPARE(outcome.message, QString("点赞成功"));
    // With the identity stored, nothing asks the fingerprint endpoint.
    QCOMPARE(f.server.requestCount("/x/frontend/finger/spi"), 0);
    QCOMPARE(f.server.requestCount(path), 1);
    const ZuviRecordedRequest post = f.server.requests(path).first();
    QCOMPARE(post.method, QByteArray("POST"));
    QString sent = QString::fromUtf8(post.body);
    if (body.contains("rnd=*")) {
        // The random part is the current time in seconds.
        const QRegularExpression rnd("rnd=(\\d+)");
        const auto match = rnd.match(sent);
        QVERIFY(match.hasMatch());
        QVERIFY(qAbs(match.captured(1).toLongLong() - QDateTime::currentSecsSinceEpoch()) < 60);
        sent.replace(match.capturedStart(1), match.capturedLength(1), "*");
    }
    QCOMPARE(sent, body);
    QCOMPARE(post.header("Content-Type"),
             QByteArray("application/x-www-form-urlencoded; charset=UTF-8"));
    QCOMPARE(post.header("User-Agent"), QByteArray(ZuviAPIClient::kBrowserUserAgent));
    QCOMPARE(post.header("Origin"), QByteArray("http://web.test"));
    QCOMPARE(post.header("Referer"), QByteArray("http://web.test/video/BV1x/"));
    QCOMPARE(post.header("Cookie"), kWithIdentity.toUtf8());
    if (action == "favorite") {
        const ZuviRecordedRequest folders =
            f.server.requests("/x/v3/fav/folder/created/list-all").first();
        QCOMPARE(folders.query, QString("up_mid=42"));
        QCOMPARE(folders.header("User-Agent"), QByteArray(ZuviAPIClient::kBrowserUserAgent));
        QCOMPARE(folders.header("Referer"), QByteArray("http://space.test/"));
        QCOMPARE(f.server.requestCount(), 2);
    } else {
        QCOMPARE(f.server.requestCount(), 1);
    }
}

void TestZuviAPIClientAccount::actionServiceFailure()
{
    ZuviClientTestFixture f;
    f.client->updateCredentialCookie(kWithIdentity);
    f.answerJson("/x/web-interface/archive/like", zuviJson({{"code", 65006}, {"msg", "已赞过"}}));
    ActionOutcome outcome;
    startAction(f.client.get(), "like", 5, 0, QString(), &outcome);
    ZUVI_WAIT(outcome.calls == 1);
    QVERIFY(!outcome.success);
    QCOMPARE(outcome.error.code, 65006);
    QCOMPARE(outcome.message, QString("已赞过"));

    f.answerJson("/x/web-interface/archive/like", zuviJson({{"code", 1}}));
    startAction(f.client.get(), "like", 5, 0, QString(), &outcome);
    ZUVI_WAIT(outcome.calls == 2);
    QCOMPARE(outcome.message, QString("接口返回错误"));
}

void TestZuviAPIClientAccount::deviceIdentityIsFetchedOnce()
{
    ZuviClientTestFixture f;
    f.client->updateCredentialCookie(kLoggedIn + "; other=1");
    f.answerJson("/x/frontend/finger/spi",
                 zuviJson({{"code", 0}, {"data", QJsonObject{{"b_3", "B3"}, {"buvid4", "B4"}}}}));
    f.answerJson("/x/web-interface/archive/like", okAnswer());
    ActionOutcome outcome;
    startAction(f.client.get(), "like", 5, 0, QString(), &outcome);
    ZUVI_WAIT(outcome.calls == 1);
    QVERIFY(outcome.success);

    const ZuviRecordedRequest finger = f.server.requests().at(0);
    QCOMPARE(finger.path, QString("/x/frontend/finger/spi"));
    QCOMPARE(finger.header("User-Agent"), QByteArray(ZuviAPIClient::kBrowserUserAgent));
    QCOMPARE(finger.header("Referer"), QByteArray("http://web.test/"));
    QCOMPARE(finger.header("Cookie"), QByteArray((kLoggedIn + "; other=1").toUtf8()));

    // Stored in the fixed order, the login cookies first, identity next.
    const QString stored = f.client->credentialCookie();
    const QRegularExpression shape("^DedeUserID=42; DedeUserID__ckMd5=m; SESSDATA=s; zuvi_jct=tok; "
                                   "buvid3=B3; buvid4=B4; buvid_fp=B3; b_nut=(\\d+); other=1$");
    const auto match = shape.match(stored);
    QVERIFY2(match.hasMatch(), qPrintable(stored));
    QVERIFY(qAbs(match.captured(1).toLongLong() - QDateTime::currentSecsSinceEpoch()) < 60);
    QCOMPARE(f.server.requests("/x/web-interface/archive/like").first().header("Cookie"),
             stored.toUtf8());

    startAction(f.client.get(), "like", 5, 0, QString(), &outcome);
    ZUVI_WAIT(outcome.calls == 2);
    QCOMPARE(f.server.requestCount("/x/frontend/finger/spi"), 1);
    QCOMPARE(f.server.requestCount("/x/web-interface/archive/like"), 2);
}

void TestZuviAPIClientAccount::deviceIdentityPartialAnswerAsksAgain()
{
    ZuviClientTestFixture f;
    f.client->updateCredentialCookie(kLoggedIn);
    f.answerJson("/x/frontend/finger/spi",
                 zuviJson({{"code", 0}, {"data", QJsonObject{{"b_3", "B3"}}}}));
    f.answerJson("/x/v2/history/toview/add", okAnswer());
    ActionOutcome outcome;
    startAction(f.client.get(), "watchLater", 5, 0, QString(), &outcome);
    ZUVI_WAIT(outcome.calls == 1);
    QVERIFY(outcome.success);
    const auto stored =
        ZuviAPIClient::mutableCookieDictionaryFromString(f.client->credentialCookie());
    QCOMPARE(stored.value("buvid3"), QString("B3"));
    QCOMPARE(stored.value("buvid_fp"), QString("B3"));
    QVERIFY(!stored.contains("buvid4"));
    QVERIFY(!ZuviAPIClient::cookieHasDeviceIdentity(f.client->credentialCookie()));

    startAction(f.client.get(), "watchLater", 5, 0, QString(), &outcome);
    ZUVI_WAIT(outcome.calls == 2);
    QCOMPARE(f.server.requestCount("/x/frontend/finger/spi"), 2);
}

void TestZuviAPIClientAccount::deviceIdentityFailures_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("message");

    QTest::newRow("service code with msg")
        << zuviJson({{"code", -352}, {"msg", "风控"}}) << -352 << "风控";
    QTest::newRow("service code bare") << zuviJson({{"code", 7}}) << 7 << "补设备 Cookie 失败";
    QTest::newRow("no data") << zuviJson({{"code", 0}, {"data", "x"}}) << 750
                             << "补设备 Cookie 失败：finger/spi 缺少 data 字段";
    QTest::newRow("no ids") << zuviJson({{"code", 0}, {"data", QJsonObject{{"b_3", ""}}}}) << 751
                            << "补设备 Cookie 失败：finger/spi 没有返回 buvid3/buvid4";
}

void TestZuviAPIClientAccount::deviceIdentityFailures()
{
    QFETCH(QByteArray, answer);
    QFETCH(int, code);
    QFETCH(QString, message);

    ZuviClientTestFixture f;
    f.client->updateCredentialCookie(kLoggedIn);
    f.answerJson("/x/frontend/finger/spi", answer);
    ActionOutcome outcome;
    startAction(f.client.get(), "comment", 5, 0, "好", &outcome);
    ZUVI_WAIT(outcome.calls == 1);
    QVERIFY(!outcome.success);
    QCOMPARE(outcome.error.code, code);
    QCOMPARE(outcome.message, message);
    QCOMPARE(f.server.requestCount("/x/v2/reply/add"), 0);
    QCOMPARE(f.client->credentialCookie(), kLoggedIn);
}

void TestZuviAPIClientAccount::favoriteWithoutFolders()
{
    ZuviClientTestFixture f;
    f.client->updateCredentialCookie(kWithIdentity);
    f.answerJson("/x/v3/fav/folder/created/list-all",
                 zuviJson({{"code", 0},
                           {"data", QJsonObject{{"list", QJsonArray{QJsonObject{{"id", 0}}}}}}}));
    ActionOutcome outcome;
    startAction(f.client.get(), "favorite", 5, 0, QString(), &outcome);
    ZUVI_WAIT(outcome.calls == 1);
    QCOMPARE(outcome.error.code, 744);
    QCOMPARE(outcome.message, QString("没有找到可用收藏夹 media_id"));
    QCOMPARE(f.server.requestCount(), 1);
    QCOMPARE(f.server.requestCount("/x/v3/fav/resource/deal"), 0);
}

void TestZuviAPIClientAccount::qrGenerate_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("url");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("message");

    QTest::newRow("ok") << zuviJson({{"code", 0},
                                     {"data", QJsonObject{{"url", "http://login.test/q?k=1"},
                                                          {"qrcode_key", "k1"}}}})
                        << "http://login.test/q?k=1" << 0 << "";
    QTest::newRow("no key") << zuviJson({{"code", 0}, {"data", QJsonObject{{"url", "u"}}}}) << ""
                            << 711 << "二维码生成接口缺少 url 或 qrcode_key";
    QTest::newRow("service code") << zuviJson({{"code", -3}}) << "" << -3
                                  << "二维码生成接口返回错误";
}

void TestZuviAPIClientAccount::qrGenerate()
{
    QFETCH(QByteArray, answer);
    QFETCH(QString, url);
    QFETCH(int, code);
    QFETCH(QString, message);

    ZuviClientTestFixture f;
    f.answerJson("/x/passport-login/web/qrcode/generate", answer, &f.otherServer);
    ZuviCompletionSpy<const QString &, const QString &, const ZuviError &> spy;
    f.client->generateLoginQRCodeWithCompletion(spy.completion());
    ZUVI_WAIT(spy.calls == 1);
    const auto &[gotURL, gotKey, gotError] = spy.arguments;
    QCOMPARE(f.server.requestCount(), 0); // the passport host, not the API host
    const ZuviRecordedRequest request = f.otherServer.requests().first();
    QCOMPARE(request.query, QString("source=main-fe-header"));
    QCOMPARE(request.header("Referer"), QByteArray("http://web.test/"));
    QCOMPARE(gotURL, url);
    QCOMPARE(gotError.code, code);
    QCOMPARE(gotError.message, message);
    QCOMPARE(gotKey.isEmpty(), code != 0);
}

void TestZuviAPIClientAccount::qrPollMessages_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("message");
    QTest::addColumn<int>("errorCode");

    auto poll = [](const QJsonValue &code, const QString &message) {
        return zuviJson(
            {{"code", -1}, {"data", QJsonObject{{"code", code}, {"message", message}}}});
    };
    QTest::newRow("other with message") << poll(5, "服务端的话") << 5 << "服务端的话" << 0;
    QTest::newRow("no data") << zuviJson({{"code", 0}}) << -1 << "" << 712;
}

void TestZuviAPIClientAccount::qrPollMessages()
{
    QFETCH(QByteArray, answer);
    QFETCH(int, code);
    QFETCH(QString, message);
    QFETCH(int, errorCode);

    ZuviClientTestFixture f;
    f.answerJson("/x/passport-login/web/qrcode/poll", answer, &f.otherServer);
    ZuviCompletionSpy<int, const QString &, const ZuviError &> spy;
    f.client->pollLoginQRCodeWithKey(" key/1&2 \n", spy.completion());
    ZUVI_WAIT(spy.calls == 1);
    const auto &[gotCode, gotMessage, gotError] = spy.arguments;
    QCOMPARE(f.otherServer.requests().first().query, QString("qrcode_key=key/1&2"));
    QCOMPARE(gotCode, code);
    QCOMPARE(gotMessage, message);
    QCOMPARE(gotError.code, errorCode);
    if (errorCode == 712)
        QCOMPARE(gotError.message, QString("二维码轮询接口缺少 data 字段"));
}

void TestZuviAPIClientAccount::qrPollStoresSessionCookie_data()
{
    QTest::addColumn<int>("pollCode");
    QTest::addColumn<QList<QByteArray>>("setCookies");
    QTest::addColumn<QString>("stored");

    const QList<QByteArray> session{"SESSDATA=sess%2C1; Path=/; HttpOnly", "zuvi_jct=jct; Path=/",
                                    "DedeUserID=42; Path=/", "sid=zzz; Path=/",
                                    "DedeUserID__ckMd5=md5; Path=/"};
    QTest::newRow("success without cookies") << 0 << QList<QByteArray>() << "";
    QTest::newRow("waiting ignores cookies") << 86101 << session << "";
}

void TestZuviAPIClientAccount::qrPollStoresSessionCookie()
{
    QFETCH(int, pollCode);
    QFETCH(QList<QByteArray>, setCookies);
    QFETCH(QString, stored);

    ZuviClientTestFixture f;
    ZuviScriptedAnswer answer = ZuviScriptedAnswer::json(
        zuviJson({{"code", 0}, {"data", QJsonObject{{"code", pollCode}, {"message", ""}}}}));
    for (const QByteArray &cookie : setCookies)
        answer.headers.append({"Set-Cookie", cookie});
    f.otherServer.setAnswer("GET", "/x/passport-login/web/qrcode/poll", answer);
    int gotCode = -2;
    f.client->pollLoginQRCodeWithKey(
        "k", [&](int code, const QString &, const ZuviError &) { gotCode = code; });
    ZUVI_WAIT(gotCode != -2);
    QCOMPARE(gotCode, pollCode);
    QCOMPARE(f.client->credentialCookie(), stored);
}

void TestZuviAPIClientAccount::qrPollWithoutKeySendsNothing()
{
    ZuviClientTestFixture f;
    ZuviCompletionSpy<int, const QString &, const ZuviError &> spy;
    f.client->pollLoginQRCodeWithKey(" \n", spy.completion());
    ZUVI_WAIT(spy.calls == 1);
    const auto &[gotCode, gotMessage, gotError] = spy.arguments;
    QCOMPARE(gotCode, -1);
    QCOMPARE(gotMessage, QString("缺少 qrcode_key"));
    QVERIFY(gotError.isNull());
    QCOMPARE(f.otherServer.requestCount(), 0);
}

void TestZuviAPIClientAccount::currentUser_data()
{
    QTest::addColumn<QByteArray>("nav");
    QTest::addColumn<ZuviScriptedAnswer>("stat");
    QTest::addColumn<int>("statRequests");
    QTest::addColumn<bool>("hasProfile");
    QTest::addColumn<QString>("summary");
    QTest::addColumn<int>("errorCode");

    const QJsonObject member{{"isLogin", true},
                             {"mid", "42"},
                             {"uname", "小明"},
                             {"face", "//img.test/f.jpg"},
                             {"level_info", QJsonObject{{"current_level", 5}}},
                             {"vipStatus", 1},
                             {"money", 12.5}};
    const auto statOk = ZuviScriptedAnswer::json(
        zuviJson({{"code", 0}, {"data", QJsonObject{{"following", 9999}, {"follower", 10000}}}}));
    QTest::newRow("signed in") << zuviJson({{"code", 0}, {"data", member}}) << statOk << 1 << true
                               << "LV5  大会员  硬币 12.5  关注 9999  粉丝 1.0万" << 0;
    QTest::newRow("relation failure keeps profile")
        << zuviJson({{"code", 0}, {"data", member}})
        << ZuviScriptedAnswer::json(zuviJson({{"code", -400}})) << 1 << true
        << "LV5  大会员  硬币 12.5" << 0;
    QTest::newRow("service error")
        << zuviJson({{"code", -101}}) << statOk << 0 << false << "" << -101;
    QTest::newRow("no user") << zuviJson({{"code", 0}}) << statOk << 0 << false << "" << 701;
}

void TestZuviAPIClientAccount::currentUser()
{
    QFETCH(QByteArray, nav);
    QFETCH(ZuviScriptedAnswer, stat);
    QFETCH(int, statRequests);
    QFETCH(bool, hasProfile);
    QFETCH(QString, summary);
    QFETCH(int, errorCode);

    ZuviClientTestFixture f;
    f.answerJson("/x/web-interface/nav", nav);
    f.server.setAnswer("GET", "/x/relation/stat", stat);
    ZuviCompletionSpy<const std::optional<ZuviUserProfile> &, const ZuviError &> spy;
    f.client->fetchCurrentUserProfileWithCompletion(spy.completion());
    ZUVI_WAIT(spy.calls == 1);
    const auto &[profile, gotError] = spy.arguments;
    QCOMPARE(f.server.requests().first().header("Referer"), QByteArray("http://web.test/"));
    QCOMPARE(f.server.requestCount("/x/relation/stat"), statRequests);
    if (statRequests > 0) {
        const ZuviRecordedRequest request = f.server.requests("/x/relation/stat").first();
        QCOMPARE(request.query, QString("vmid=42"));
        QCOMPARE(request.header("Referer"), QByteArray("http://space.test/"));
    }
    QCOMPARE(bool(profile), hasProfile);
    QCOMPARE(gotError.code, errorCode);
    if (profile) {
        QCOMPARE(profile->summaryText(), summary);
        if (profile->isLogin)
            QCOMPARE(profile->faceURLString, QString("https://img.test/f.jpg"));
    }
    if (errorCode == -101)
        QCOMPARE(gotError.message, QString("登录状态接口返回错误"));
    if (errorCode == 701)
        QCOMPARE(gotError.message, QString("登录状态接口缺少用户字段"));
}

void TestZuviAPIClientAccount::profileTexts_data()
{
    QTest::addColumn<QJsonObject>("nav");
    QTest::addColumn<QString>("userName");
    QTest::addColumn<QString>("levelText");
    QTest::addColumn<QString>("vipText");
    QTest::addColumn<QString>("coinText");
    QTest::addColumn<QString>("face");
    QTest::addColumn<QString>("summary");

    QTest::newRow("bare login") << QJsonObject{{"isLogin", "1"}, {"mid", 7}} << "已登录用户"
                                << ""
                                << "普通会员"
                                << ""
                                << ""
                                << "普通会员";
    QTest::newRow("strings for numbers")
        << QJsonObject{{"isLogin", true},
                       {"uname", 5},
                       {"level_info", QJsonObject{{"current_level", "3"}}},
                       {"vipStatus", "1"},
                       {"money", "0"},
                       {"face", "http://x/f.png"}}
        << "5"
        << "LV3"
        << "大会员"
        << "硬币 0"
        << "http://x/f.png"
        << "LV3  大会员  硬币 0";
    QTest::newRow("wrong types") << QJsonObject{{"isLogin", QJsonArray()},
                                                {"uname", QJsonObject()},
                                                {"level_info", 4},
                                                {"money", QJsonValue()}}
                                 << ""
                                 << ""
                                 << "普通会员"
                                 << ""
                                 << ""
                                 << "登录后可查看历史记录、稍后再看、收藏等个人内容。";
}

void TestZuviAPIClientAccount::profileTexts()
{
    QFETCH(QJsonObject, nav);
    QFETCH(QString, userName);
    QFETCH(QString, levelText);
    QFETCH(QString, vipText);
    QFETCH(QString, coinText);
    QFETCH(QString, face);
    QFETCH(QString, summary);

    const auto profile = ZuviUserProfile::profileWithNavDataDictionary(nav);
    QVERIFY(profile);
    QCOMPARE(profile->userName, userName);
    QCOMPARE(profile->levelText, levelText);
    QCOMPARE(profile->vipText, vipText);
    QCOMPARE(profile->coinText, coinText);
    QCOMPARE(profile->faceURLString, face);
    QCOMPARE(profile->summaryText(), summary);
    QVERIFY(!ZuviUserProfile::profileWithNavDataDictionary(QJsonValue("x")));
    QCOMPARE(ZuviUserProfile::countTextFromObject(QJsonValue(123456789)), QString("12345.7万"));
}

QTEST_MAIN(TestZuviAPIClientAccount)
#include "tst_zuviapiclientaccount.moc"
