#include "platform/zuvihttptransport.h"
#include "zuvidemocontent.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

// The demo service as a process on a free port, driven by oldzuvi-cli as a
// user would drive it: every list, a video from detail to its bytes, the QR
// login to a stored cookie, the signed-in actions and what they change, and
// the fallbacks that recover from the service's failure switches. (What each
// switch looks like on every screen is tst_zuvifailureswitches' part; how the
// command line prints a failure, tst_oldzuvicli's.)
class TestZuviDemoEndToEnd : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void init();

    void everyListAnswers_data();
    void everyListAnswers();
    void videoFromDetailToBytes();
    void qualityWalkAndSegmentedDiagnosis();
    void danmakuAndItsFallback();
    void commentsPageThrough();
    void signedOutBehaviour();
    void loginActionsAndTheirEffects();
    void retriesAndFallbacksRecover();

private:
    struct Run {
        int exitCode = -1;
        QJsonValue json; // the final document on stdout
        QByteArray out;
        QByteArray err;
        QJsonObject error() const { return json.toObject().value("error").toObject(); }
    };

    Run cli(const QStringList &arguments, int timeoutMs = 60000);
    Run demoCommand(const QStringList &arguments);
    void setFailure(const QString &path, const QString &mode);
    void signIn();
    QByteArray fetch(const QString &url, const QByteArray &range, int *status);

    static constexpr quint64 kSeed = 7;
    QTemporaryDir m_work;
    QProcess m_service;
    quint16 m_port = 0;
    QString m_endpoints;
    QString m_settings;
    QString m_media;
    std::unique_ptr<ZuviDemoContent> m_content;
};

namespace {
QString binary(const char *name)
{
    return QDir(QStringLiteral(ZUVI_BIN_DIR)).filePath(QString::fromLatin1(name));
}

// The last top-level JSON document a command printed: the result follows
// any one-line progress documents (the login prints one per poll).
QJsonValue finalDocument(const QByteArray &out)
{
    const QList<QByteArray> lines = out.split('\n');
    for (int start = lines.size() - 1; start >= 0; --start) {
        const QByteArray first = lines.at(start);
        if (!first.startsWith('{') && !first.startsWith('['))
            continue;
        const QJsonDocument document = QJsonDocument::fromJson(lines.mid(start).join('\n'));
        if (!document.isNull())
            return document.isArray() ? QJsonValue(document.array())
                                      : QJsonValue(document.object());
    }
    return QJsonValue();
}
} // namespace

void TestZuviDemoEndToEnd::initTestCase()
{
    QVERIFY(m_work.isValid());
    QVERIFY2(QFile::exists(binary("oldzuvi-demo-service")), "build oldzuvi-demo-service first");
    QVERIFY2(QFile::exists(binary("oldzuvi-cli")), "build oldzuvi-cli first");
    m_content = std::make_unique<ZuviDemoContent>(kSeed);
    // The real clips when ./run has made them; otherwise stand-in bytes, which
    // are enough for addresses and Range answers.
    m_media = QStringLiteral(ZUVI_MEDIA_DIR);
    if (!QFile::exists(QDir(m_media).filePath("demo-a-720.mp4"))) {
        m_media = m_work.filePath("media");
        QDir().mkpath(m_media);
        for (const ZuviDemoClip &clip : ZuviDemoContent::clips()) {
            for (int height : {360, 480, 720}) {
                QFile file(
                    QDir(m_media).filePath(QStringLiteral("%1-%2.mp4").arg(clip.name).arg(height)));
                QVERIFY(file.open(QIODevice::WriteOnly));
                file.write(QByteArray(64 * 1024, 'm'));
            }
        }
    }
    m_endpoints = m_work.filePath("endpoints.json");
    m_service.setProgram(binary("oldzuvi-demo-service"));
    m_service.setArguments({"--port", "0", "--seed", QString::number(kSeed), "--media", m_media,
                            "--data", m_work.filePath("state"), "--write-endpoints", m_endpoints,
                            "--qr-lifetime", "120"});
    m_service.setProcessChannelMode(QProcess::SeparateChannels);
    m_service.start();
    QVERIFY(m_service.waitForStarted());
    QTRY_VERIFY_WITH_TIMEOUT(m_service.canReadLine(), 10000);
    const QString first = QString::fromUtf8(m_service.readLine()).trimmed();
    QVERIFY2(first.startsWith("oldzuvi-demo-service listening on http://127.0.0.1:"),
             qPrintable(first));
    m_port = quint16(first.section(':', -1).toUInt());
    QVERIFY(m_port > 0);
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(m_endpoints), 5000);
}

void TestZuviDemoEndToEnd::cleanupTestCase()
{
    m_service.terminate();
    if (!m_service.waitForFinished(5000))
        m_service.kill();
}

void TestZuviDemoEndToEnd::init()
{
    // Every case starts signed out, with no switches on.
    m_settings =
        m_work.filePath(QStringLiteral("settings-%1.ini").arg(QTest::currentTestFunction()));
    QFile::remove(m_settings);
    QCOMPARE(demoCommand({"fail", "off"}).exitCode, 0);
}

TestZuviDemoEndToEnd::Run TestZuviDemoEndToEnd::cli(const QStringList &arguments, int timeoutMs)
{
    QProcess process;
    process.start(binary("oldzuvi-cli"),
                  QStringList{"--endpoints", m_endpoints, "--settings", m_settings} + arguments);
    Run run;
    if (!process.waitForFinished(timeoutMs)) {
        process.kill();
        process.waitForFinished();
    }
    run.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    run.out = process.readAllStandardOutput();
    run.err = process.readAllStandardError();
    run.json = finalDocument(run.out);
    return run;
}

TestZuviDemoEndToEnd::Run TestZuviDemoEndToEnd::demoCommand(const QStringList &arguments)
{
    QProcess process;
    process.start(binary("oldzuvi-demo-service"),
                  arguments + QStringList{"--port", QString::number(m_port)});
    Run run;
    process.waitForFinished(20000);
    run.exitCode = process.exitCode();
    run.out = process.readAllStandardOutput();
    run.err = process.readAllStandardError();
    run.json = finalDocument(run.out);
    return run;
}

void TestZuviDemoEndToEnd::setFailure(const QString &path, const QString &mode)
{
    const Run run = demoCommand({"fail", path, mode});
    QVERIFY2(run.exitCode == 0, run.err.constData());
}

QByteArray TestZuviDemoEndToEnd::fetch(const QString &url, const QByteArray &range, int *status)
{
    ZuviHTTPTransport transport;
    ZuviURLRequest request;
    request.url = QUrl(url);
    if (!range.isEmpty())
        request.setHeader("Range", range);
    QEventLoop loop;
    ZuviHTTPResponse response;
    transport.send(request, [&](const ZuviHTTPResponse &r, const ZuviError &) {
        response = r;
        QMetaObject::invokeMethod(&loop, "quit", Qt::QueuedConnection);
    });
    loop.exec();
    *status = response.statusCode;
    return response.body;
}

void TestZuviDemoEndToEnd::signIn()
{
    // The login polls every two seconds; the service's confirm command is
    // the phone's "confirm" button.
    QProcess login;
    login.start(binary("oldzuvi-cli"),
                {"--endpoints", m_endpoints, "--settings", m_settings, "login"});
    QVERIFY(login.waitForStarted());
    QByteArray out;
    QTRY_VERIFY_WITH_TIMEOUT((out += login.readAllStandardOutput()).contains("\"code\":86101"),
                             15000);
    QVERIFY(out.contains("\"qrcodeKey\""));
    QVERIFY(out.contains("等待扫码"));
    QCOMPARE(demoCommand({"confirm"}).exitCode, 0);
    QVERIFY(login.waitForFinished(20000));
    out += login.readAllStandardOutput();
    QCOMPARE(login.exitCode(), 0);
    QVERIFY2(out.contains("已扫码，请在手机上确认"), out.constData());
    const QJsonObject result = finalDocument(out).toObject();
    QCOMPARE(result.value("code").toInt(-1), 0);
    QCOMPARE(result.value("message").toString(), QStringLiteral("登录成功"));
    QCOMPARE(result.value("stored").toBool(), true);
}

void TestZuviDemoEndToEnd::everyListAnswers_data()
{
    const ZuviDemoVideo &video = m_content->videos().at(10);
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("count"); // -1: some
    QTest::newRow("popular") << QStringList{"popular", "--page", "2", "--page-size", "20"} << 20;
    QTest::newRow("recommended") << QStringList{"recommended", "--page", "3", "--page-size", "12"}
                                 << 12;
    QTest::newRow("region ranking") << QStringList{"region-ranking", "--rid", "1008"} << -1;
    QTest::newRow("search") << QStringList{"search", "--keyword", "动画", "--page", "1"} << 20;
    QTest::newRow("related") << QStringList{"related", "--bvid", video.bvid} << 20;
}

void TestZuviDemoEndToEnd::everyListAnswers()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, count);
    const Run run = cli(arguments);
    QVERIFY2(run.exitCode == 0, run.out.constData());
    const QJsonArray list = run.json.toArray();
    if (count >= 0)
        QCOMPARE(list.size(), count);
    QVERIFY(!list.isEmpty());
    for (const QJsonValue &value : list) {
        const QJsonObject item = value.toObject();
        QVERIFY(m_content->videoForBVID(item.value("bvid").toString()));
        QVERIFY(!item.value("title").toString().contains('<')); // highlight tags are gone
        QVERIFY(item.value("coverURLString").toString().startsWith("http://127.0.0.1:"));
        QVERIFY(!item.value("ownerName").toString().isEmpty());
    }
}

void TestZuviDemoEndToEnd::videoFromDetailToBytes()
{
    const ZuviDemoVideo *video = nullptr;
    for (const ZuviDemoVideo &candidate : m_content->videos()) {
        if (candidate.playKind == ZuviDemoPlayKind::Progressive && candidate.pages.size() > 1) {
            video = &candidate;
            break;
        }
    }
    QVERIFY(video);
    const Run detail = cli({"detail", "--bvid", video->bvid});
    QCOMPARE(detail.exitCode, 0);
    const QJsonObject object = detail.json.toObject();
    QCOMPARE(object.value("title").toString(), video->title);
    const QJsonArray pages = object.value("pages").toArray();
    QCOMPARE(pages.size(), video->pages.size());
    QCOMPARE(pages.at(1).toObject().value("partTitle").toString(),
             QStringLiteral("P2")); // untitled part
    const qint64 cid = qint64(pages.at(0).toObject().value("cid").toDouble());

    const Run play = cli({"playurl", "--bvid", video->bvid, "--cid", QString::number(cid)});
    QCOMPARE(play.exitCode, 0);
    QCOMPARE(play.json.toObject().value("quality").toInt(), 64);
    const QString url = play.json.toObject().value("url").toString();
    QVERIFY(url.endsWith("-720.mp4"));
    int status = 0;
    const QByteArray whole = fetch(url, QByteArray(), &status);
    QCOMPARE(status, 200);
    const QByteArray part = fetch(url, "bytes=1000-1999", &status);
    QCOMPARE(status, 206);
    QCOMPARE(part, whole.mid(1000, 1000));
    // The cover the list shows comes at the thumbnail size the client asks for.
    const QByteArray thumbnail = fetch(
        object.value("coverURLString").toString() + "@320w_180h_1c_80q.jpg", QByteArray(), &status);
    QCOMPARE(status, 200);
    QVERIFY(thumbnail.startsWith("\xFF\xD8"));
}

void TestZuviDemoEndToEnd::qualityWalkAndSegmentedDiagnosis()
{
    const ZuviDemoVideo *walk = nullptr;
    const ZuviDemoVideo *segmented = nullptr;
    for (const ZuviDemoVideo &candidate : m_content->videos()) {
        if (!walk && candidate.playKind == ZuviDemoPlayKind::DashAtBest)
            walk = &candidate;
        if (!segmented && candidate.playKind == ZuviDemoPlayKind::SegmentedOnly)
            segmented = &candidate;
    }
    QVERIFY(walk && segmented);
    const Run stepped =
        cli({"playurl", "--bvid", walk->bvid, "--cid", QString::number(walk->pages.first().cid)});
    QCOMPARE(stepped.exitCode, 0);
    QCOMPARE(stepped.json.toObject().value("quality").toInt(), 32);
    QVERIFY(stepped.json.toObject().value("url").toString().endsWith("-480.mp4"));

    const Run failed = cli({"playurl", "--bvid", segmented->bvid, "--cid",
                            QString::number(segmented->pages.first().cid)});
    QVERIFY(failed.exitCode != 0);
    QCOMPARE(failed.error().value("code").toInt(), 302);
    QCOMPARE(failed.error().value("message").toString(),
             QStringLiteral("请求qn=16，接口quality=16，accept=80,64,32,16，format="
                            "dash，返回了DASH，没有传统durl"));
}

void TestZuviDemoEndToEnd::danmakuAndItsFallback()
{
    const ZuviDemoVideo *dense = &m_content->videos().first();
    for (const ZuviDemoVideo &candidate : m_content->videos()) {
        if (candidate.danmakuDocumentSize > dense->danmakuDocumentSize)
            dense = &candidate;
    }
    const QString cid = QString::number(dense->pages.first().cid);
    const Run summary = cli({"danmaku", "--cid", cid, "--summary"});
    QCOMPARE(summary.exitCode, 0);
    QCOMPARE(summary.json.toObject().value("count").toInt(), dense->danmakuDocumentSize);
    QVERIFY(summary.json.toObject().value("modes").toObject().size() >= 5);

    const Run items = cli({"danmaku", "--cid", cid});
    const QJsonArray list = items.json.toArray();
    QCOMPARE(list.size(), dense->danmakuDocumentSize);
    double last = -1;
    for (const QJsonValue &value : list) {
        const QJsonObject item = value.toObject();
        QVERIFY(item.value("time").toDouble() >= last); // sorted by time
        last = item.value("time").toDouble();
        QVERIFY(item.value("fontSize").toDouble() >= 13 && item.value("fontSize").toDouble() <= 20);
    }

    // A broken primary document sends the client to the older source.
    setFailure("/x/v1/dm/list.so", "broken");
    const Run fallback = cli({"--developer-mode", "danmaku", "--cid", cid, "--summary"});
    QCOMPARE(fallback.exitCode, 0);
    QCOMPARE(fallback.json.toObject().value("count").toInt(), dense->danmakuDocumentSize);
    QVERIFY2(fallback.err.contains("主接口解析失败") && fallback.err.contains("兜底成功"),
             fallback.err.constData());
}

void TestZuviDemoEndToEnd::commentsPageThrough()
{
    const ZuviDemoVideo *video = nullptr;
    for (const ZuviDemoVideo &candidate : m_content->videos()) {
        if (candidate.commentTotal > 45 && candidate.commentTotal < 60) {
            video = &candidate;
            break;
        }
    }
    QVERIFY(video);
    QStringList messages;
    for (int page = 1; page <= 4; ++page) {
        const Run run = cli({"comments", "--aid", QString::number(video->aid), "--bvid",
                             video->bvid, "--page", QString::number(page)});
        QCOMPARE(run.exitCode, 0);
        const QJsonArray list = run.json.toArray();
        QCOMPARE(list.size(), qBound(0, video->commentTotal - (page - 1) * 20, 20));
        for (const QJsonValue &item : list) {
            QVERIFY(!item.toObject().value("message").toString().contains("<em>"));
            messages << item.toObject().value("message").toString();
        }
    }
    QCOMPARE(messages.size(), video->commentTotal);
}

void TestZuviDemoEndToEnd::signedOutBehaviour()
{
    const Run history = cli({"history"});
    QVERIFY(history.exitCode != 0);
    QCOMPARE(history.error().value("code").toInt(), -101);
    QCOMPARE(history.error().value("message").toString(), QStringLiteral("账号未登录"));
    const Run nav = cli({"nav"});
    QCOMPARE(nav.exitCode, 0);
    QCOMPARE(nav.json.toObject().value("isLogin").toBool(true), false);
    const Run like = cli({"like", "--aid", QString::number(m_content->videos().at(0).aid)});
    QCOMPARE(like.error().value("code").toInt(), 741);
    const Run following = cli({"following"});
    QCOMPARE(following.error().value("code").toInt(), -101);
    // The web ranking is for signed-in members only.
    const Run ranking = cli({"ranking", "--rid", "1005", "--route", "douga"});
    QCOMPARE(ranking.error().value("code").toInt(), -101);
}

void TestZuviDemoEndToEnd::loginActionsAndTheirEffects()
{
    signIn();
    const Run nav = cli({"nav"});
    QCOMPARE(nav.json.toObject().value("isLogin").toBool(), true);
    QCOMPARE(qint64(nav.json.toObject().value("mid").toDouble()), ZuviDemoContent::kDemoMID);
    QCOMPARE(nav.json.toObject().value("userName").toString(), QStringLiteral("演示用户"));
    QVERIFY(nav.json.toObject().value("followerText").toString().startsWith("粉丝 "));

    // Signed in, every region's web ranking answers with its own list; the
    // whole-site one fills the page.
    const Run all = cli({"ranking", "--rid", "0", "--route", "all", "--page-size", "50"});
    QCOMPARE(all.json.toArray().size(), 50);
    const Run douga = cli({"ranking", "--rid", "1005", "--route", "douga", "--page-size", "30"});
    const Run game = cli({"ranking", "--rid", "1008", "--route", "game", "--page-size", "30"});
    QVERIFY2(!douga.json.toArray().isEmpty(), douga.out.constData());
    QVERIFY(douga.json.toArray().first() != game.json.toArray().first());

    const ZuviDemoVideo &video = m_content->videos().at(77);
    const QString aid = QString::number(video.aid);
    const QString cid = QString::number(video.pages.first().cid);
    const auto firstBVID = [](const Run &run) {
        return run.json.toArray().first().toObject().value("bvid").toString();
    };

    Run action = cli({"favorite", "--aid", aid, "--bvid", video.bvid});
    QVERIFY2(action.exitCode == 0, action.out.constData());
    QCOMPARE(action.json.toObject().value("message").toString(), QStringLiteral("收藏成功"));
    QCOMPARE(firstBVID(cli({"favorites"})), video.bvid);

    QCOMPARE(cli({"add-watch-later", "--aid", aid, "--bvid", video.bvid}).exitCode, 0);
    QCOMPARE(firstBVID(cli({"watch-later"})), video.bvid);

    QCOMPARE(cli({"playurl", "--bvid", video.bvid, "--cid", cid}).exitCode, 0);
    QCOMPARE(firstBVID(cli({"history"})), video.bvid);

    QCOMPARE(cli({"comment", "--aid", aid, "--bvid", video.bvid, "--text", "端到端的评论 & 测试"})
                 .exitCode,
             0);
    const Run comments = cli({"comments", "--aid", aid, "--bvid", video.bvid});
    QCOMPARE(comments.json.toArray().first().toObject().value("message").toString(),
             QStringLiteral("端到端的评论 & 测试"));
    QCOMPARE(comments.json.toArray().first().toObject().value("authorName").toString(),
             QStringLiteral("演示用户"));

    QCOMPARE(cli({"send-danmaku", "--aid", aid, "--cid", cid, "--bvid", video.bvid, "--text",
                  "端到端弹幕", "--progress", "4321"})
                 .exitCode,
             0);
    bool found = false;
    for (const QJsonValue &item : cli({"danmaku", "--cid", cid}).json.toArray()) {
        found |= item.toObject().value("text").toString() == QStringLiteral("端到端弹幕") &&
                 qFuzzyCompare(item.toObject().value("time").toDouble(), 4.321);
    }
    QVERIFY(found);

    QCOMPARE(cli({"like", "--aid", aid, "--bvid", video.bvid}).exitCode, 0);
    const Run again = cli({"like", "--aid", aid, "--bvid", video.bvid});
    QCOMPARE(again.error().value("code").toInt(), -409);
    QCOMPARE(again.error().value("message").toString(), QStringLiteral("已经点过赞了"));

    // The signed-in following feed, its five kinds of row and its paging by
    // offset are following-e2e.sh's part, in the app's window.

    QCOMPARE(cli({"logout"}).exitCode, 0);
    QCOMPARE(cli({"nav"}).json.toObject().value("isLogin").toBool(true), false);
}

void TestZuviDemoEndToEnd::retriesAndFallbacksRecover()
{
    // A slow answer still arrives.
    setFailure("/x/web-interface/popular", "slow:1200");
    QCOMPARE(cli({"popular", "--page-size", "5"}).json.toArray().size(), 5);
    // One failed search is tried once more and then succeeds.
    const Run once =
        demoCommand({"fail", "/x/web-interface/search/type", "code:-500", "--times", "1"});
    QCOMPARE(once.exitCode, 0);
    QCOMPARE(cli({"search", "--keyword", "AI"}).exitCode, 0);
    // A refused ranking falls back to the older one.
    setFailure("/x/web-interface/ranking/v2", "code:-500");
    const Run legacy = cli({"region-ranking", "--rid", "1005"});
    QCOMPARE(legacy.exitCode, 0);
    QVERIFY(!legacy.json.toArray().isEmpty());
    // Both danmaku sources down: the error of the second is reported.
    setFailure("/x/v1/dm/list.so", "drop");
    setFailure("/{cid}.xml", "code:-500");
    const Run none =
        cli({"danmaku", "--cid", QString::number(m_content->videos().at(0).pages.first().cid)});
    QVERIFY(none.exitCode != 0);
    QVERIFY(!none.error().isEmpty());
}

QTEST_GUILESS_MAIN(TestZuviDemoEndToEnd)
#include "tst_zuvidemoendtoend.moc"
