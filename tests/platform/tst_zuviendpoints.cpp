#include "platform/zuviendpoints.h"
#include "platform/zuvilaunchoptions.h"

#include <QTemporaryDir>
#include <QTest>

namespace {
QString writeFile(const QTemporaryDir &dir, const QByteArray &content)
{
    const QString path = dir.filePath("endpoints.json");
    QFile file(path);
    file.open(QIODevice::WriteOnly | QIODevice::Truncate);
    file.write(content);
    return path;
}
} // namespace

class TestZuviEndpoints : public QObject
{
    Q_OBJECT
private slots:
    void defaultsPointAtTheDemoService();
    void partialFileKeepsOtherDefaults();
    void badFilesFailWithAClearMessage_data();
    void badFilesFailWithAClearMessage();
    void launchOptionsReadEndpointsIdiomAndEnvironment();
    void launchOptionsRejectBadValues_data();
    void launchOptionsRejectBadValues();
};

void TestZuviEndpoints::defaultsPointAtTheDemoService()
{
    const ZuviEndpoints endpoints = ZuviEndpoints::defaults();
    QCOMPARE(ZuviEndpoints::origin(endpoints.api), QStringLiteral("http://127.0.0.1:8470"));
    QCOMPARE(endpoints.siteRoot(), QStringLiteral("http://127.0.0.1:8470/"));
    QCOMPARE(endpoints.remoteConfigSource,
             QStringLiteral("http://127.0.0.1:8470/config/remote_config.json"));
    // What toJson() writes reads back to the same values.
    ZuviEndpoints reread = ZuviEndpoints::allOn(QUrl("http://127.0.0.1:1"));
    ZuviError error;
    QVERIFY(ZuviEndpoints::loadJson(endpoints.toJson(), "round trip", &reread, &error));
    QCOMPARE(reread.passport, endpoints.passport);
    QCOMPARE(reread.remoteConfigDeveloperSource, endpoints.remoteConfigDeveloperSource);
}

void TestZuviEndpoints::partialFileKeepsOtherDefaults()
{
    QTemporaryDir dir;
    const QString path = writeFile(dir, R"({"api": "https://api.example.test:9443/",
                                            "videoCDNDomainSuffix": ".cdn.example.test"})");
    ZuviEndpoints endpoints = ZuviEndpoints::defaults();
    ZuviError error;
    QVERIFY2(ZuviEndpoints::loadFile(path, &endpoints, &error), qPrintable(error.message));
    QCOMPARE(ZuviEndpoints::origin(endpoints.api), QStringLiteral("https://api.example.test:9443"));
    QCOMPARE(endpoints.videoCDNDomainSuffix, QStringLiteral(".cdn.example.test"));
    QCOMPARE(endpoints.web, ZuviEndpoints::defaults().web);
    QCOMPARE(endpoints.remoteConfigSource, ZuviEndpoints::defaults().remoteConfigSource);
}

void TestZuviEndpoints::badFilesFailWithAClearMessage_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("mentions");
    QTest::newRow("not json") << QByteArray("{api: nope") << "格式错误";
    QTest::newRow("array root") << QByteArray("[]") << "顶层不是 JSON 对象";
    QTest::newRow("relative url") << QByteArray(R"({"web": "/just/a/path"})") << "\"web\"";
    QTest::newRow("ftp scheme") << QByteArray(R"({"passport": "ftp://127.0.0.1"})") << "http";
    QTest::newRow("url with path") << QByteArray(R"({"api": "http://127.0.0.1:1/x"})") << "路径";
    QTest::newRow("number value") << QByteArray(R"({"comment": 8080})") << "字符串";
    QTest::newRow("unknown key") << QByteArray(R"({"apii": "http://127.0.0.1"})") << "\"apii\"";
    QTest::newRow("bad source") << QByteArray(R"({"remoteConfigSource": "nonsense"})")
                                << "remoteConfigSource";
}

void TestZuviEndpoints::badFilesFailWithAClearMessage()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, mentions);
    QTemporaryDir dir;
    const QString path = writeFile(dir, content);
    ZuviEndpoints endpoints = ZuviEndpoints::defaults();
    const ZuviEndpoints before = endpoints;
    ZuviError error;
    QVERIFY(!ZuviEndpoints::loadFile(path, &endpoints, &error));
    QVERIFY2(error.message.contains(mentions), qPrintable(error.message));
    QVERIFY2(error.message.contains(path), qPrintable(error.message));
    // A failed load leaves every value as it was.
    QCOMPARE(endpoints.api, before.api);
    QCOMPARE(endpoints.remoteConfigSource, before.remoteConfigSource);
}

void TestZuviEndpoints::launchOptionsReadEndpointsIdiomAndEnvironment()
{
    QTemporaryDir dir;
    const QString path = writeFile(dir, R"({"search": "http://127.0.0.1:9999"})");
    ZuviLaunchOptions options;
    ZuviError error;
    QVERIFY(
        ZuviLaunchOptions::parse({"oldzuvi", "--idiom", "phone", "--endpoints=" + path, "popular"},
                                 QProcessEnvironment(), &options, &error));
    QCOMPARE(options.idiom, ZuviIdiom::Phone);
    QCOMPARE(ZuviEndpoints::origin(options.endpoints.search),
             QStringLiteral("http://127.0.0.1:9999"));
    QCOMPARE(options.remaining, QStringList{"popular"});

    QProcessEnvironment environment;
    environment.insert("OLDZUVI_ENDPOINTS", path);
    ZuviLaunchOptions fromEnvironment;
    QVERIFY(ZuviLaunchOptions::parse({"oldzuvi"}, environment, &fromEnvironment, &error));
    QCOMPARE(fromEnvironment.endpointsFile, path);
    QCOMPARE(fromEnvironment.idiom, ZuviIdiom::Pad);
    QCOMPARE(fromEnvironment.endpoints.search, options.endpoints.search);
}

void TestZuviEndpoints::launchOptionsRejectBadValues_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("mentions");
    QTest::newRow("idiom value") << QStringList{"x", "--idiom", "watch"} << "watch";
    QTest::newRow("missing value") << QStringList{"x", "--endpoints"} << "--endpoints";
    QTest::newRow("missing file") << QStringList{"x", "--endpoints", "/nonexistent.json"}
                                  << "/nonexistent.json";
}

void TestZuviEndpoints::launchOptionsRejectBadValues()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, mentions);
    ZuviLaunchOptions options;
    ZuviError error;
    QVERIFY(!ZuviLaunchOptions::parse(arguments, QProcessEnvironment(), &options, &error));
    QVERIFY2(error.message.contains(mentions), qPrintable(error.message));
}

QTEST_GUILESS_MAIN(TestZuviEndpoints)
#include "tst_zuviendpoints.moc"
