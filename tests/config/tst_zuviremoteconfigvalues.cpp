#include "config/zuvipropertylist.h"
#include "config/zuviremoteconfig.h"
#include "config/zuviremoteconfigmessage.h"
#include "config/zuviremoteconfigoptions.h"

#include <QJsonDocument>
#include <QtTest>

#include <limits>

class TestZuviRemoteConfigValues : public QObject
{
    Q_OBJECT
private slots:
    void sanitizedSources_data();
    void sanitizedSources();
    void copyReplacesNonPositiveTimes_data();
    void copyReplacesNonPositiveTimes();
    void messageWithDictionary_data();
    void messageWithDictionary();
    void parseConfig_data();
    void parseConfig();
    void propertyListRoundTrip();
    void propertyListRejectsOtherXml_data();
    void propertyListRejectsOtherXml();
};

void TestZuviRemoteConfigValues::sanitizedSources_data()
{
    QTest::addColumn<QVariantList>("sources");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("trimmed, blanks dropped, order and duplicates kept")
        << QVariantList{" http://a/c.json\n", "", "  \t", "http://b/c.json", "http://a/c.json"}
        << QStringList{"http://a/c.json", "http://b/c.json", "http://a/c.json"};
    QTest::newRow("non-strings dropped")
        << QVariantList{42, QVariantMap(), "http://a/c.json", QVariant()}
        << QStringList{"http://a/c.json"};
}

void TestZuviRemoteConfigValues::sanitizedSources()
{
    QFETCH(QVariantList, sources);
    QFETCH(QStringList, expected);
    const ZuviRemoteConfigOptions options = ZuviRemoteConfigOptions::optionsWithSources(sources);
    QCOMPARE(options.sanitizedSources(), expected);
    QCOMPARE(options.copy().sources, QVariantList(expected.cbegin(), expected.cend()));
}

void TestZuviRemoteConfigValues::copyReplacesNonPositiveTimes_data()
{
    QTest::addColumn<double>("pollInterval");
    QTest::addColumn<double>("requestTimeout");
    QTest::addColumn<double>("expectedPoll");
    QTest::addColumn<double>("expectedTimeout");
    QTest::newRow("zero") << 0.0 << 0.0 << 14400.0 << 30.0;
    QTest::newRow("negative") << -5.0 << -1.0 << 14400.0 << 30.0;
    QTest::newRow("positive kept") << 0.5 << 2.5 << 0.5 << 2.5;
}

void TestZuviRemoteConfigValues::copyReplacesNonPositiveTimes()
{
    QFETCH(double, pollInterval);
    QFETCH(double, requestTimeout);
    QFETCH(double, expectedPoll);
    QFETCH(double, expectedTimeout);
    ZuviRemoteConfigOptions options = ZuviRemoteConfigOptions::optionsWithSources(QStringList{});
    options.pollInterval = pollInterval;
    options.requestTimeout = requestTimeout;
    options.cacheDirectoryPath = "/tmp/somewhere";
    const ZuviRemoteConfigOptions copy = options.copy();
    QCOMPARE(copy.pollInterval, expectedPoll);
    QCOMPARE(copy.requestTimeout, expectedTimeout);
    QCOMPARE(copy.cacheDirectoryPath, options.cacheDirectoryPath);
}

void TestZuviRemoteConfigValues::messageWithDictionary_data()
{
    QTest::addColumn<QByteArray>("json"); // the value under "m"
    QTest::addColumn<bool>("hasMessage");
    QTest::addColumn<qint64>("version");
    QTest::addColumn<QString>("image");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("displayable");

    QTest::newRow("full") << QByteArray(
                                 R"({"version":2,"image":" http://i/x.png\n","text":" 你好 "})")
                          << true << qint64(2) << "http://i/x.png"
                          << "你好" << true;
    QTest::newRow("fractional version truncated")
        << QByteArray(R"({"version":4.9})") << true << qint64(4) << ""
        << "" << false;
    QTest::newRow("number as text")
        << QByteArray(R"({"version":1,"text":12,"image":null})") << true << qint64(1) << ""
        << "12" << true;
    QTest::newRow("object text is empty")
        << QByteArray(R"({"version":1,"text":{"a":1}})") << true << qint64(1) << ""
        << "" << false;
    QTest::newRow("version beyond 64 bits saturates")
        << QByteArray(R"({"version":1e20,"text":"t"})") << true
        << std::numeric_limits<qint64>::max() << ""
        << "t" << true;
    QTest::newRow("version 0") << QByteArray(R"({"version":0,"text":"t"})") << false << qint64(0)
                               << ""
                               << "" << false;
    QTest::newRow("not a dictionary") << QByteArray(R"([1,2])") << false << qint64(0) << ""
                                      << "" << false;
}

void TestZuviRemoteConfigValues::messageWithDictionary()
{
    QFETCH(QByteArray, json);
    QFETCH(bool, hasMessage);
    QFETCH(qint64, version);
    QFETCH(QString, image);
    QFETCH(QString, text);
    QFETCH(bool, displayable);
    const QJsonValue value = QJsonDocument::fromJson("{\"m\":" + json + "}").object().value("m");
    const auto message = ZuviRemoteConfigMessage::messageWithDictionary(value);
    QCOMPARE(message.has_value(), hasMessage);
    if (!message)
        return;
    QCOMPARE(message->version, version);
    QCOMPARE(message->imageURLString, image);
    QCOMPARE(message->text, text);
    QCOMPARE(message->hasDisplayContent(), displayable);
    const QVariantMap dictionary = message->dictionaryRepresentation();
    QCOMPARE(dictionary.value("version").toLongLong(), version);
    QCOMPARE(dictionary.value("image").toString(), image);
    QCOMPARE(dictionary.value("text").toString(), text);
    // The representation reads back as the same message.
    QCOMPARE(ZuviRemoteConfigMessage::messageWithDictionary(QVariant(dictionary)), message);
}

void TestZuviRemoteConfigValues::parseConfig_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<bool>("accepted");
    QTest::newRow("empty object") << QByteArray("{}") << true;
    QTest::newRow("broken") << QByteArray("{\"a\":") << false;
}

void TestZuviRemoteConfigValues::parseConfig()
{
    QFETCH(QByteArray, data);
    QFETCH(bool, accepted);
    ZuviError error;
    const auto config = ZuviRemoteConfig::parseConfigFromData(data, &error);
    QCOMPARE(config.has_value(), accepted);
    if (accepted) {
        QVERIFY(error.isNull());
        return;
    }
    QCOMPARE(error.domain, QStringLiteral("ZuviRemoteConfigErrorDomain"));
    QCOMPARE(error.code, 5);
    QCOMPARE(error.message, QStringLiteral("remote config root must be a JSON object"));
}

void TestZuviRemoteConfigValues::propertyListRoundTrip()
{
    const QDateTime cachedAt(QDate(2026, 11, 22), QTime(5, 6, 7), Qt::UTC);
    const QVariantMap dictionary{{"sourceURL", "http://h/config.json?a=1&b=<2>"},
                                 {"etag", "\"v1\""},
                                 {"cachedAt", cachedAt}};
    const QByteArray xml = ZuviPropertyList::xmlDataFromDictionary(dictionary);
    const QByteArray expected = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                                "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                                "<plist version=\"1.0\">\n"
                                "<dict>\n"
                                "\t<key>cachedAt</key>\n"
                                "\t<date>2026-11-22T05:06:07Z</date>\n"
                                "\t<key>etag</key>\n"
                                "\t<string>&quot;v1&quot;</string>\n"
                                "\t<key>sourceURL</key>\n"
                                "\t<string>http://h/config.json?a=1&amp;b=&lt;2&gt;</string>\n"
                                "</dict>\n"
                                "</plist>\n";
    QCOMPARE(xml, expected);
    const auto read = ZuviPropertyList::dictionaryFromXmlData(xml);
    QVERIFY(read.has_value());
    QCOMPARE(read->value("sourceURL"), dictionary.value("sourceURL"));
    QCOMPARE(read->value("etag"), dictionary.value("etag"));
    QCOMPARE(read->value("cachedAt").toDateTime(), cachedAt);
}

void TestZuviRemoteConfigValues::propertyListRejectsOtherXml_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("not a plist") << QByteArray("<html><dict/></html>");
    QTest::newRow("array root") << QByteArray("<plist><array/></plist>");
    QTest::newRow("truncated") << QByteArray("<plist><dict><key>a</key><string>b");
    QTest::newRow("value without key")
        << QByteArray("<plist><dict><string>b</string></dict></plist>");
    // Deep enough to overflow the stack of a reader without a limit.
    QTest::newRow("nested 20000 arrays")
        << "<plist><dict><key>a</key>" + QByteArray("<array>").repeated(20000) +
               QByteArray("</array>").repeated(20000) + "</dict></plist>";
}

void TestZuviRemoteConfigValues::propertyListRejectsOtherXml()
{
    QFETCH(QByteArray, data);
    QVERIFY(!ZuviPropertyList::dictionaryFromXmlData(data).has_value());
}

QTEST_GUILESS_MAIN(TestZuviRemoteConfigValues)
#include "tst_zuviremoteconfigvalues.moc"
