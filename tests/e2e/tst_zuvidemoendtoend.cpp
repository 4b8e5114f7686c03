#include "../demo/zuvidemotestclient.h"
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

#include <functional>

// The demo service as a process on a free port, driven by oldzuvi-cli as a
// user would drive it: every list, a video from detail to its bytes, the QR
// login to a stored cookie, the signed-in actions and what they change, and
// the fallbacks that recover from the service's failure switches. (What each
// switch looks like on every screen, both danmaku sources down among them, is
// tst_zuvifailureswitches' part; how the command line prints a failure,
// tst_oldzuvicli's; the member on the profile, tst_zuviaccountendtoend's; the
// web ranking signed in and the following feed, hot-e2e.sh's and
// following-e2e.sh's in the app's window.)
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

    // Runs one of the built programs to its end and keeps what it printed.
    static Run run(const char *program, const QStringList &arguments);
    Run cli(const QStringList &arguments)
    {
        return run("oldzuvi-cli",
                   QStringList{"--endpoints", m_endpoints, "--settings", m_settings} + arguments);
    }
    Run demoCommand(const QStringList &arguments)
    {
        return run("oldzuvi-demo-service",
                   arguments + QStringList{"--port", QString::number(m_port)});
    }
    // The first video of the seeded content that matches.
    const ZuviDemoVideo *findVideo(const std::function<bool(const ZuviDemoVideo &)> &matches) const;
    void setFailure(const QString &path, const QString &mode);
    void signIn();

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
    // The clips ./run makes, as the other end-to-end suites use them.
    m_media = QStringLiteral(ZUVI_MEDIA_DIR);
    QVERIFY2(QFile::exists(QDir(m_media).filePath("demo-a-720.mp4")),
             "make the clips first: demo/make-media.sh BUILD/media");
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

TestZuviDemoEndToEnd::Run TestZuviDemoEndToEnd::run(const char *program,
                                                    const QStringList &arguments)
{
    QProcess process;
    process.start(binary(program), arguments);
    if (!process.waitForFinished(60000)) {
        process.kill();
        process.waitForFinished();
    }
    Run run;
    run.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    run.out = process.readAllStandardOutput();
    run.err = process.readAllStandardError();
    run.json = finalDocument(run.out);
    return run;
}

const ZuviDemoVideo *
TestZuviDemoEndToEnd::findVideo(const std::function<bool(const ZuviDemoVideo &)> &matches) const
{
    for (const ZuviDemoVideo &candidate : m_content->videos()) {
        if (matches(candidate))
            return &candidate;
    }
    return nullptr;
}

void TestZuviDemoEndToEnd::setFailure(const QString &path, const QString &mode)
{
    const Run run = demoCommand({"fail", path, mode});
    QVERIFY2(run.exitCode == 0, run.err.constData());
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
    const ZuviDemoVideo *video = findVideo([](const ZuviDemoVideo &candidate) {
        return candidate.playKind == ZuviDemoPlayKind::Progressive && candidate.pages.size() > 1;
    });
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
    const QUrl address(url);
    ZuviDemoTestClient media(quint16(address.port()));
    const QString path = address.toString(QUrl::RemoveScheme | QUrl::RemoveAuthority);
    const auto whole = media.get(path);
    QCOMPARE(whole.response.statusCode, 200);
    const auto part = media.get(path, {{"Range", "bytes=1000-1999"}});
    QCOMPARE(part.response.statusCode, 206);
    QCOMPARE(part.response.body, whole.response.body.mid(1000, 1000));
}

void TestZuviDemoEndToEnd::qualityWalkAndSegmentedDiagnosis()
{
    const auto ofKind = [this](ZuviDemoPlayKind kind) {
        return findVideo(
            [kind](const ZuviDemoVideo &candidate) { return candidate.playKind == kind; });
    };
    const ZuviDemoVideo *walk = ofKind(ZuviDemoPlayKind::DashAtBest);
    const ZuviDemoVideo *segmented = ofKind(ZuviDemoPlayKind::SegmentedOnly);
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
    // (The order by time and the size bounds of what is read are the XML
    // reader suite's, on generated documents.)

    // A broken primary document sends the client to the older source, which
    // serves the whole document too.
    setFailure("/x/v1/dm/list.so", "broken");
    const Run fallback = cli({"danmaku", "--cid", cid, "--summary"});
    QCOMPARE(fallback.exitCode, 0);
    QCOMPARE(fallback.json.toObject().value("count").toInt(), dense->danmakuDocumentSize);
}

void TestZuviDemoEndToEnd::commentsPageThrough()
{
    const ZuviDemoVideo *video = findVideo([](const ZuviDemoVideo &candidate) {
        return candidate.commentTotal > 45 && candidate.commentTotal < 60;
    });
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
    const Run following = cli({"following"});
    QCOMPARE(following.error().value("code").toInt(), -101);
    // The web ranking is for signed-in members only.
    const Run ranking = cli({"ranking", "--rid", "1005", "--route", "douga"});
    QCOMPARE(ranking.error().value("code").toInt(), -101);
}

void TestZuviDemoEndToEnd::loginActionsAndTheirEffects()
{
    signIn();
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
}

QTEST_GUILESS_MAIN(TestZuviDemoEndToEnd)
#include "tst_zuvidemoendtoend.moc"
