#include "platform/zuvivirtualscheduler.h"
#include "zuvidemoservice.h"
#include "zuvidemotestclient.h"

#include <QImage>
#include <QJsonArray>
#include <QNetworkCookie>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

// The demo service over real loopback HTTP, for what the end-to-end suite
// (which drives the lists, a video's detail and bytes, comments, the signed-in
// actions and their effects and the failure switches through the client, all
// matched against content built in its own process from the same seed) does
// not reach: regions, search paging, the feed's end, Range answers,
// thumbnails, conditional configuration, the QR login's page and expiry, the
// checks on writes, persistence and the switches' clearing.
class TestZuviDemoService : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void rankingFollowsRegion();
    void searchPagesToTheEnd();
    void followingFeedPagesToItsEnd();
    void mediaAnswersRanges_data();
    void mediaAnswersRanges();
    void thumbnailsAtTheAskedSize_data();
    void thumbnailsAtTheAskedSize();
    void configurationRevalidates();
    void qrLoginWalksThroughItsStates();
    void qrLoginExpires();
    void writesAreChecked_data();
    void writesAreChecked();
    void stateSurvivesRestartWithDataDirectory();
    void limitedSwitchAndAdminClear();

private:
    std::unique_ptr<ZuviDemoService> makeService(quint64 seed, const QString &dataDirectory = {});
    // Signs in through the QR flow and fetches the device identity; returns
    // the cookie a browser would then hold.
    QString signIn(ZuviDemoTestClient &client);

    std::unique_ptr<QTemporaryDir> m_media;
    std::unique_ptr<ZuviVirtualScheduler> m_scheduler;
    std::unique_ptr<ZuviDemoService> m_service;
    std::unique_ptr<ZuviDemoTestClient> m_client;
    QByteArray m_clip;
};

namespace {
// The version of the configuration message a source serves.
int messageVersion(ZuviDemoTestClient &client, const QString &path = "/config/remote_config.json")
{
    return client.get(path).json().value("message").toObject().value("version").toInt();
}
} // namespace

std::unique_ptr<ZuviDemoService> TestZuviDemoService::makeService(quint64 seed,
                                                                  const QString &dataDirectory)
{
    ZuviDemoOptions options;
    options.seed = seed;
    options.mediaDirectory = m_media->path();
    options.dataDirectory = dataDirectory;
    options.qrLifetimeSeconds = 180;
    auto service = std::make_unique<ZuviDemoService>(options, m_scheduler.get());
    QString errorText;
    if (!service->start(0, &errorText))
        qFatal("demo service did not start: %s", qPrintable(errorText));
    return service;
}

void TestZuviDemoService::init()
{
    m_media = std::make_unique<QTemporaryDir>();
    // A stand-in clip: the service serves bytes, it never decodes them.
    m_clip.clear();
    for (int i = 0; i < 5000; ++i)
        m_clip.append(char(i % 251));
    for (const ZuviDemoClip &clip : ZuviDemoContent::clips()) {
        for (int height : {360, 480, 720}) {
            QFile file(m_media->filePath(QStringLiteral("%1-%2.mp4").arg(clip.name).arg(height)));
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(m_clip);
        }
    }
    m_scheduler = std::make_unique<ZuviVirtualScheduler>();
    m_service = makeService(1);
    m_client = std::make_unique<ZuviDemoTestClient>(m_service->port());
}

void TestZuviDemoService::cleanup()
{
    m_client.reset();
    m_service.reset();
    m_scheduler.reset();
    m_media.reset();
}

QString TestZuviDemoService::signIn(ZuviDemoTestClient &client)
{
    client.setCookie(QString());
    const QString key = client.get("/x/passport-login/web/qrcode/generate?source=main-fe-header")
                            .data()
                            .value("qrcode_key")
                            .toString();
    client.post("/admin/confirm", {{"qrcode_key", key}});
    client.get("/x/passport-login/web/qrcode/poll?qrcode_key=" + key); // "scanned"
    const auto success = client.get("/x/passport-login/web/qrcode/poll?qrcode_key=" + key);
    QStringList pairs;
    for (const QByteArray &line : success.response.header("Set-Cookie").split('\n')) {
        for (const QNetworkCookie &cookie : QNetworkCookie::parseCookies(line)) {
            if (cookie.name() != "demo_visit")
                pairs << QString::fromUtf8(cookie.name() + '=' + cookie.value());
        }
    }
    const QJsonObject device = client.get("/x/frontend/finger/spi").data();
    const QString b3 = device.value("b_3").toString();
    pairs << "buvid3=" + b3 << "buvid4=" + device.value("b_4").toString() << "buvid_fp=" + b3;
    client.setCookie(pairs.join("; "));
    return client.cookie();
}

void TestZuviDemoService::rankingFollowsRegion()
{
    // Each region's list holds only that region's videos.
    const auto game = m_client->get("/x/web-interface/ranking/v2?rid=1008&type=all");
    QVERIFY(!game.data().value("list").toArray().isEmpty());
    for (const QJsonValue &item : game.data().value("list").toArray())
        QCOMPARE(item.toObject().value("region").toInt(), 1008);
    // An unknown region is refused, which sends the client to the older ranking.
    QCOMPARE(m_client->get("/x/web-interface/ranking/v2?rid=4242&type=all").code(), -404);
    // Asked as the web ranking page asks, a member must be signed in and come
    // from the region's own ranking page.
    const QString web = "/x/web-interface/ranking/v2?rid=1008&type=all&web_location=333.934";
    // (Signed in, from the right page, is hot-e2e.sh's choice of 动画.)
    signIn(*m_client);
    QCOMPARE(m_client->get(web, {{"Referer", "http://web.test/v/popular/rank/douga"}}).code(),
             -412);
}

void TestZuviDemoService::searchPagesToTheEnd()
{
    const QString keyword = QString::fromUtf8(QUrl::toPercentEncoding("动画"));
    const auto first = m_client->get(
        "/x/web-interface/search/type?search_type=video&keyword=" + keyword + "&page=1");
    // A first page of results is the end-to-end suite's search.
    const QJsonArray results = first.data().value("result").toArray();
    const int pages = first.data().value("pages").toInt();
    QVERIFY(pages >= 2);
    const auto second = m_client->get(
        "/x/web-interface/search/type?search_type=video&keyword=" + keyword + "&page=2");
    QVERIFY(second.data().value("result").toArray().first() != results.first());
    const auto beyond = m_client->get(
        QStringLiteral("/x/web-interface/search/type?search_type=video&keyword=%1&page=%2")
            .arg(keyword)
            .arg(pages + 1));
    QCOMPARE(beyond.data().value("result").toArray().size(), 0);
    QCOMPARE(m_client->get("/x/web-interface/search/type?search_type=video&keyword=&page=1").code(),
             -400);
}

// The feed pages on by offset, a full page at a time, until it says it has
// no more. (The pictures its addresses name, on the port the service really
// runs on, and the kinds of post are following-e2e.sh's.)
void TestZuviDemoService::followingFeedPagesToItsEnd()
{
    signIn(*m_client);
    QString offset;
    int pages = 0;
    bool more = true;
    while (more) {
        const auto page = m_client->get("/x/polymer/web-dynamic/v1/feed/all?type=all&page=1" +
                                        (offset.isEmpty() ? QString() : "&offset=" + offset));
        QCOMPARE(page.code(), 0);
        QCOMPARE(page.data().value("items").toArray().size(), ZuviDemoContent::kFeedPageSize);
        offset = page.data().value("offset").toString();
        more = page.data().value("has_more").toBool();
        QVERIFY(++pages <= ZuviDemoContent::kFeedItemCount);
    }
    QVERIFY(pages >= 5);
}

void TestZuviDemoService::mediaAnswersRanges_data()
{
    QTest::addColumn<QByteArray>("range");
    QTest::addColumn<int>("status");
    QTest::addColumn<int>("first");
    QTest::addColumn<int>("length");
    QTest::newRow("open end") << QByteArray("bytes=4990-") << 206 << 4990 << 10;
    QTest::newRow("suffix") << QByteArray("bytes=-20") << 206 << 4980 << 20;
    QTest::newRow("end past size") << QByteArray("bytes=4000-9999") << 206 << 4000 << 1000;
    QTest::newRow("start past size") << QByteArray("bytes=5000-") << 416 << 0 << 0;
}

void TestZuviDemoService::mediaAnswersRanges()
{
    QFETCH(QByteArray, range);
    QFETCH(int, status);
    QFETCH(int, first);
    QFETCH(int, length);
    const auto result = m_client->get("/media/demo-a-480.mp4", {{"Range", range}});
    QCOMPARE(result.response.statusCode, status);
    QCOMPARE(result.response.header("Accept-Ranges"), QByteArray("bytes"));
    if (status == 416) {
        QCOMPARE(result.response.header("Content-Range"), QByteArray("bytes */5000"));
        return;
    }
    QCOMPARE(result.response.body, m_clip.mid(first, length));
    QCOMPARE(result.response.header("Content-Range"),
             QStringLiteral("bytes %1-%2/5000").arg(first).arg(first + length - 1).toLatin1());
}

void TestZuviDemoService::thumbnailsAtTheAskedSize_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QSize>("size");
    QTest::newRow("cover thumbnail")
        << "/img/cover/BV1abc.jpg@320w_180h_1c_80q.jpg" << QSize(320, 180);
    QTest::newRow("clamped") << "/img/pic/x.jpg@9000w_10h_1c_80q.jpg"
                             << QSize(ZuviDemoImageRenderer::kMaxSide, 10);
    QTest::newRow("unknown kind") << "/img/other/x.jpg" << QSize();
    QTest::newRow("bad suffix") << "/img/cover/x.jpg@320w.jpg" << QSize();
}

void TestZuviDemoService::thumbnailsAtTheAskedSize()
{
    QFETCH(QString, path);
    QFETCH(QSize, size);
    const auto result = m_client->get(path);
    if (!size.isValid()) {
        QCOMPARE(result.response.statusCode, 404);
        return;
    }
    QCOMPARE(result.response.statusCode, 200);
    QCOMPARE(result.response.header("Content-Type"), QByteArray("image/jpeg"));
    const QImage image = QImage::fromData(result.response.body, "JPEG");
    QCOMPARE(image.size(), size);
    // The same address always gives the same picture.
    QCOMPARE(m_client->get(path).response.body, result.response.body);
}

void TestZuviDemoService::configurationRevalidates()
{
    const auto first = m_client->get("/config/remote_config.json");
    QCOMPARE(first.response.statusCode, 200);
    const QJsonObject message = first.json().value("message").toObject();
    QCOMPARE(message.value("version").toInt(), 1);
    QVERIFY(!message.value("text").toString().isEmpty());
    const QByteArray etag = first.response.header("ETag");
    const QByteArray lastModified = first.response.header("Last-Modified");
    QVERIFY(!etag.isEmpty() && !lastModified.isEmpty());

    auto again = m_client->get("/config/remote_config.json", {{"If-None-Match", etag}});
    QCOMPARE(again.response.statusCode, 304);
    QVERIFY(again.response.body.isEmpty());
    QCOMPARE(again.response.header("ETag"), etag);
    QCOMPARE(m_client->get("/config/remote_config.json", {{"If-Modified-Since", lastModified}})
                 .response.statusCode,
             304);
    QCOMPARE(m_client->get("/config/remote_config.json", {{"If-None-Match", "\"other\""}})
                 .response.statusCode,
             200);
    // A new announcement answering 200 past the old validators, and the first
    // message's picture on the service's own port, are messages-e2e.sh's.
}

void TestZuviDemoService::qrLoginWalksThroughItsStates()
{
    // The code's address, waiting and a confirmed login's cookies are the
    // end-to-end suites'; here, the page the code prints.
    const QJsonObject generated =
        m_client->get("/x/passport-login/web/qrcode/generate?source=main-fe-header").data();
    const QString key = generated.value("qrcode_key").toString();
    const QUrl page(generated.value("url").toString());
    const QString poll = "/x/passport-login/web/qrcode/poll?qrcode_key=" + key;
    // Opening the printed page is the scan; its button is the confirmation.
    QVERIFY(m_client->get(page.path() + "?" + page.query()).response.body.contains("确认登录"));
    QCOMPARE(m_client->get(poll).data().value("code").toInt(), 86090);
    QCOMPARE(m_client->post("/qr/confirm", {{"qrcode_key", key}}).response.statusCode, 200);
    QCOMPARE(m_client->get(poll).data().value("code").toInt(), 0);
    // A key works once.
    QCOMPARE(m_client->get(poll).data().value("code").toInt(), 86038);
}

void TestZuviDemoService::qrLoginExpires()
{
    const QString key = m_client->get("/x/passport-login/web/qrcode/generate")
                            .data()
                            .value("qrcode_key")
                            .toString();
    const QString poll = "/x/passport-login/web/qrcode/poll?qrcode_key=" + key;
    m_scheduler->advance(179);
    QCOMPARE(m_client->get(poll).data().value("code").toInt(), 86101);
    m_scheduler->advance(2);
    QCOMPARE(m_client->get(poll).data().value("code").toInt(), 86038);
    QCOMPARE(m_client->post("/admin/confirm", {{"qrcode_key", key}}).code(), 1);
    QCOMPARE(m_client->get("/x/passport-login/web/qrcode/poll?qrcode_key=unknown")
                 .data()
                 .value("code")
                 .toInt(),
             86038);
}

void TestZuviDemoService::writesAreChecked_data()
{
    QTest::addColumn<QString>("breakage");
    QTest::addColumn<int>("code");
    QTest::newRow("complete") << "" << 0;
    QTest::newRow("signed out") << "no session" << -101;
    QTest::newRow("token of another session") << "wrong token" << -403;
    QTest::newRow("device never issued") << "forged device" << -412;
    QTest::newRow("GET") << "get" << -405;
}

void TestZuviDemoService::writesAreChecked()
{
    QFETCH(QString, breakage);
    QFETCH(int, code);
    signIn(*m_client);
    const QMap<QString, QString> cookies =
        ZuviAPIClient::mutableCookieDictionaryFromString(m_client->cookie());
    QVariantMap form{{"aid", QString::number(m_service->content().videos().at(0).aid)},
                     {"like", "1"},
                     {"csrf", cookies.value("zuvi_jct")}};
    ZuviCookieDictionary sent = cookies;
    if (breakage == "no session")
        sent.remove("SESSDATA");
    if (breakage == "wrong token")
        form["csrf"] = "0123456789abcdef0123456789abcdef";
    if (breakage == "forged device")
        sent["buvid3"] = "ABCDEF-demo3";
    m_client->setCookie(ZuviAPIClient::cookieStringFromDictionary(sent));
    const auto result = breakage == "get" ? m_client->get("/x/web-interface/archive/like")
                                          : m_client->post("/x/web-interface/archive/like", form);
    QCOMPARE(result.code(), code);
    QVERIFY(!result.json().value("message").toString().isEmpty());
    QCOMPARE(m_service->state().isLiked(m_service->content().videos().at(0).aid), code == 0);
}

void TestZuviDemoService::stateSurvivesRestartWithDataDirectory()
{
    QTemporaryDir data;
    auto service = makeService(5, data.path());
    ZuviDemoTestClient client(service->port());
    const QString cookie = signIn(client);
    const QString csrf = ZuviAPIClient::mutableCookieDictionaryFromString(cookie).value("zuvi_jct");
    const ZuviDemoVideo video = service->content().videos().at(17); // a copy: the service goes away
    QCOMPARE(
        client
            .post("/x/v2/history/toview/add", {{"aid", QString::number(video.aid)}, {"csrf", csrf}})
            .code(),
        0);
    QCOMPARE(client.post("/admin/announce", {{"text", "保存下来的消息"}}).code(), 0);
    service.reset();

    auto restarted = makeService(5, data.path());
    ZuviDemoTestClient again(restarted->port());
    again.setCookie(cookie);
    QCOMPARE(again.get("/x/web-interface/nav").data().value("isLogin").toBool(), true);
    const QJsonArray toView = again.get("/x/v2/history/toview/web").data().value("list").toArray();
    QCOMPARE(toView.first().toObject().value("bvid").toString(), video.bvid);
    QCOMPARE(messageVersion(again), 2);
    // The developer source keeps its own message.
    QCOMPARE(messageVersion(again, "/config/remote_config_dev.json"), 1);
    // A device identity issued before the restart is still accepted.
    QCOMPARE(again
                 .post("/x/web-interface/archive/like",
                       {{"aid", QString::number(video.aid)}, {"like", "1"}, {"csrf", csrf}})
                 .code(),
             0);
}

void TestZuviDemoService::limitedSwitchAndAdminClear()
{
    // A switch that runs out is the end-to-end suite's (a search failing once).
    const QString search = "/x/web-interface/search/type?search_type=video&keyword=AI&page=1";
    QCOMPARE(m_client->post("/admin/fail", {{"path", "/x/*"}, {"mode", "drop"}}).code(), 0);
    QVERIFY(m_client->get(search).error.hasError());
    // Admin paths never fail, so the switches can always be cleared.
    QCOMPARE(m_client->post("/admin/fail", {{"path", ""}, {"mode", "off"}}).code(), 0);
    QCOMPARE(m_client->get(search).code(), 0);
    QCOMPARE(m_client->post("/admin/fail", {{"path", "nope"}, {"mode", "drop"}}).code(), -400);
    QCOMPARE(m_client->post("/admin/fail", {{"path", "/x/a"}, {"mode", "sideways"}}).code(), -400);
}

QTEST_GUILESS_MAIN(TestZuviDemoService)
#include "tst_zuvidemoservice.moc"
