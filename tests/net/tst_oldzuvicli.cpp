// Runs the built oldzuvi-cli against a loopback server and reads what it
// prints: the JSON shapes scripts rely on, the error object and the exit
// statuses. The login flow, the play address, the region ranking and the
// following feed's pages are the end-to-end suite's, against the demo service.
#include "platform/zuvidefaults.h"
#include "zuvitesthttpserver.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

namespace {
QByteArray json(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

const QStringList kVideoKeys{
    "aid",          "bvid",         "cid",       "commentCountText", "coverURLString",
    "durationText", "metadataText", "ownerName", "playCountText",    "title"};

QJsonObject videoEntry()
{
    return QJsonObject{{"bvid", "BV1cli"},
                       {"title", "命令行"},
                       {"aid", 5},
                       {"cid", 6},
                       {"owner", QJsonObject{{"name", "UP"}}},
                       {"stat", QJsonObject{{"view", 10}}}};
}
} // namespace

class TestOldZuviCLI : public QObject
{
    Q_OBJECT
private:
    struct Run {
        int exitCode = -1;
        QByteArray out;
        QByteArray err;
        QJsonDocument document;
    };

    ZuviTestHttpServer m_server;
    QTemporaryDir m_dir;

    QString settingsPath() const { return m_dir.filePath("settings.ini"); }

    Run run(const QStringList &arguments)
    {
        QProcess process;
        process.setProgram(OLDZUVI_CLI_PATH);
        process.setArguments(QStringList{"--endpoints", m_dir.filePath("endpoints.json"),
                                         "--settings", settingsPath()} +
                             arguments);
        process.start();
        Run result;
        if (!process.waitForFinished(30000)) {
            process.kill();
            process.waitForFinished();
            return result;
        }
        result.exitCode = process.exitCode();
        result.out = process.readAllStandardOutput();
        result.err = process.readAllStandardError();
        result.document = QJsonDocument::fromJson(result.out);
        return result;
    }

private slots:
    void initTestCase();
    void init();
    void outputShapes_data();
    void outputShapes();
    void failuresPrintErrorObject_data();
    void failuresPrintErrorObject();
    void danmakuFileSummary();
    void developerModeTracesDanmakuSources();
};

void TestOldZuviCLI::initTestCase()
{
    QVERIFY(m_server.start());
    QVERIFY(m_dir.isValid());
    const QString base = m_server.baseUrl().toString(QUrl::StripTrailingSlash);
    QJsonObject endpoints;
    for (const char *role : {"api", "web", "passport", "comment", "search", "space", "dynamic"})
        endpoints.insert(role, base);
    QFile file(m_dir.filePath("endpoints.json"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(json(endpoints));
}

void TestOldZuviCLI::init()
{
    m_server.clearRequests();
    QFile::remove(settingsPath());
}

void TestOldZuviCLI::outputShapes_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("query");
    QTest::addColumn<QStringList>("keys"); // of the object, or of the first array element

    const QByteArray list =
        json({{"code", 0}, {"data", QJsonObject{{"list", QJsonArray{videoEntry()}}}}});
    QTest::newRow("popular") << QStringList{"popular", "--page", "2", "--page-size", "5"}
                             << "/x/web-interface/popular" << list << "pn=2&ps=5" << kVideoKeys;
    QTest::newRow("detail")
        << QStringList{"detail", "--bvid", "BV1cli"} << "/x/web-interface/view"
        << json(
               {{"code", 0},
                {"data", QJsonObject{{"bvid", "BV1cli"},
                                     {"title", "t"},
                                     {"pages", QJsonArray{QJsonObject{{"cid", 6}, {"page", 1}}}}}}})
        << "bvid=BV1cli"
        << QStringList{"aid",
                       "bvid",
                       "cid",
                       "commentCountText",
                       "coverURLString",
                       "danmakuCountText",
                       "desc",
                       "metadataText",
                       "ownerAvatarURLString",
                       "ownerName",
                       "pages",
                       "playCountText",
                       "title"};
    QTest::newRow("comments")
        << QStringList{"comments", "--aid", "5", "--bvid", "BV1cli"} << "/x/v2/reply"
        << json({{"code", 0},
                 {"data",
                  QJsonObject{{"replies", QJsonArray{QJsonObject{
                                              {"content", QJsonObject{{"message", "好"}}}}}}}}})
        << "type=1&oid=5&pn=1&ps=20&sort=2"
        << QStringList{"authorName", "avatarURLString", "likeCountText", "message", "timeText"};
    QTest::newRow("nav") << QStringList{"nav"} << "/x/web-interface/nav"
                         << json({{"code", -101}, {"data", QJsonObject{{"isLogin", false}}}}) << ""
                         << QStringList{"coinText",      "faceURLString", "followerText",
                                        "followingText", "isLogin",       "levelText",
                                        "mid",           "summaryText",   "userName",
                                        "vipText"};
}

void TestOldZuviCLI::outputShapes()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, path);
    QFETCH(QByteArray, answer);
    QFETCH(QString, query);
    QFETCH(QStringList, keys);

    m_server.setAnswer("*", path, ZuviScriptedAnswer::json(answer));
    const Run result = run(arguments);
    QVERIFY2(result.exitCode == 0, result.out + result.err);
    QCOMPARE(m_server.requestCount(path), 1);
    QCOMPARE(m_server.requests(path).first().query, query);
    const QJsonObject object = result.document.isArray()
                                   ? result.document.array().first().toObject()
                                   : result.document.object();
    QCOMPARE(object.keys(), keys);
    if (arguments.first() == "popular")
        QCOMPARE(object.value("aid").toInt(), 5);
}

void TestOldZuviCLI::failuresPrintErrorObject_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("domain");
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("requests");

    QTest::newRow("service error")
        << QStringList{"popular"} << 1 << "ZuviAPIClientErrorDomain" << -400 << 1;
    QTest::newRow("missing argument")
        << QStringList{"search"} << 2 << "ZuviCLIErrorDomain" << 2 << 0;
    QTest::newRow("option without value")
        << QStringList{"detail", "--bvid"} << 2 << "ZuviCLIErrorDomain" << 2 << 0;
    QTest::newRow("not a number") << QStringList{"comments", "--aid", "x5"} << 2
                                  << "ZuviCLIErrorDomain" << 2 << 0;
    QTest::newRow("unknown option")
        << QStringList{"popular", "--colour", "red"} << 2 << "ZuviCLIErrorDomain" << 2 << 0;
    QTest::newRow("unknown command") << QStringList{"dance"} << 2 << "ZuviCLIErrorDomain" << 2 << 0;
}

void TestOldZuviCLI::failuresPrintErrorObject()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, exitCode);
    QFETCH(QString, domain);
    QFETCH(int, code);
    QFETCH(int, requests);

    m_server.setAnswer("*", "/x/web-interface/popular",
                       ZuviScriptedAnswer::json(json({{"code", -400}, {"message", "请求错误"}})));
    const Run result = run(arguments);
    QCOMPARE(result.exitCode, exitCode);
    const QJsonObject error = result.document.object().value("error").toObject();
    QCOMPARE(result.document.object().keys(), QStringList{"error"});
    QCOMPARE(error.keys(), (QStringList{"code", "domain", "message"}));
    QCOMPARE(error.value("domain").toString(), domain);
    QCOMPARE(error.value("code").toInt(), code);
    QVERIFY(!error.value("message").toString().isEmpty());
    QCOMPARE(m_server.requestCount(), requests);
}

void TestOldZuviCLI::danmakuFileSummary()
{
    const QString path = m_dir.filePath("dm.xml");
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("<?xml version=\"1.0\"?><i><d p=\"9.5,1,25,16777215,0,0,0,7\">后</d>"
               "<d p=\"1.25,5,18,255\">先</d><d p=\"3,5\">中</d></i>");
    file.close();

    Run result = run({"danmaku", "--file", path, "--summary"});
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.document.object(), (QJsonObject{{"count", 3},
                                                    {"firstTime", 1.25},
                                                    {"lastTime", 9.5},
                                                    {"modes", QJsonObject{{"1", 1}, {"5", 2}}}}));

    result = run({"danmaku", "--file", path});
    QCOMPARE(result.exitCode, 0);
    const QJsonArray items = result.document.array();
    QCOMPARE(items.size(), 3);
    QCOMPARE(items.first().toObject().keys(),
             (QStringList{"colorRGB", "danmakuID", "fontSize", "mode", "text", "time"}));
    QCOMPARE(items.first().toObject().value("text").toString(), QString("先"));
    QCOMPARE(items.last().toObject().value("danmakuID").toString(), QString("7"));
    QCOMPARE(m_server.requestCount(), 0);

    result = run({"danmaku", "--file", m_dir.filePath("missing.xml")});
    QCOMPARE(result.exitCode, 1);
    QCOMPARE(result.document.object().value("error").toObject().value("code").toInt(), 3);
}

void TestOldZuviCLI::developerModeTracesDanmakuSources()
{
    m_server.setAnswer("GET", "/x/v1/dm/list.so",
                       ZuviScriptedAnswer::text("<i><d p=\"1,1\">x</d></i>", "text/xml"));
    const Run traced = run({"--developer-mode", "danmaku", "--cid", "77"});
    QCOMPARE(traced.exitCode, 0);
    QVERIFY2(traced.err.contains("[弹幕接口] GET x/v1/dm/list.so oid=77\n"), traced.err);
    QVERIFY(traced.err.contains("[弹幕接口] 主接口"));
    // Forced for the run only: the stored preference stays off.
    ZuviDefaults settings(settingsPath());
    QVERIFY(!settings.boolForKey("ZuviDeveloperModeEnabled"));

    const Run quiet = run({"danmaku", "--cid", "77"});
    QCOMPARE(quiet.exitCode, 0);
    QVERIFY(!quiet.err.contains("弹幕接口"));
}

QTEST_MAIN(TestOldZuviCLI)
#include "tst_oldzuvicli.moc"
