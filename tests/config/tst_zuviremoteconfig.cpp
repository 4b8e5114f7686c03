#include "config/zuvipropertylist.h"
#include "config/zuviremoteconfig.h"
#include "platform/zuvihttptransport.h"
#include "platform/zuvivirtualscheduler.h"
#include "zuviloopbackservices.h"

#include <QJsonDocument>
#include <QtTest>

namespace {
const QByteArray kDocumentA = R"({"name":"A","message":{"version":2,"text":"hello"}})";
const QByteArray kDocumentB = R"({"name":"B"})";
const QByteArray kLastModified = "Sat, 21 Nov 2026 10:00:00 GMT";

ZuviScriptedAnswer document(const QByteArray &body, const QByteArray &etag = QByteArray())
{
    ZuviScriptedAnswer answer = ZuviScriptedAnswer::json(body);
    if (!etag.isEmpty()) {
        answer.headers.append({"ETag", etag});
        answer.headers.append({"Last-Modified", kLastModified});
    }
    return answer;
}

ZuviScriptedAnswer status(int code)
{
    ZuviScriptedAnswer answer;
    answer.status = code;
    return answer;
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString nameOf(const std::optional<QJsonObject> &config)
{
    return config ? config->value("name").toString() : QStringLiteral("<none>");
}
} // namespace

class TestZuviRemoteConfig : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void failoverInstallsSecondSource();
    void allSourcesFailWithLastError_data();
    void allSourcesFailWithLastError();
    void noSourcesAnswersAtOnce();
    void conditionalRequestsAnd304();
    void identicalBytesAnnouncedOnce();
    void badDocumentKeepsPrevious();
    void restartDropsOldAnswers();
    void messageOncePerVersionAndSource();
    void pollTimer();
    void requestTimeoutFailsOver();
    void cacheSurvivesRestart();
    void badCacheIgnored();
    void destroyedWithRequestInFlight();

private:
    struct Refresh {
        bool done = false;
        std::optional<QJsonObject> config;
        ZuviError error;
    };
    // Refreshes and waits for the callback.
    void refresh(Refresh *result);
    void startService(const QStringList &sources, double pollInterval = 0,
                      double requestTimeout = 0);
    std::unique_ptr<ZuviRemoteConfig> makeService();
    int count(const char *name) const;
    QList<ZuviNotification> notes(const char *name) const;
    QString url(const QString &path) const { return m_services->server.urlString(path); }

    std::unique_ptr<ZuviLoopbackServices> m_services;
    std::unique_ptr<ZuviVirtualScheduler> m_scheduler;
    std::unique_ptr<QTemporaryDir> m_cacheDir;
    std::unique_ptr<ZuviRemoteConfig> m_config;
    QList<ZuviNotification> m_notes;
};

void TestZuviRemoteConfig::init()
{
    m_services = std::make_unique<ZuviLoopbackServices>();
    QVERIFY(m_services->started);
    m_scheduler = std::make_unique<ZuviVirtualScheduler>();
    m_cacheDir = std::make_unique<QTemporaryDir>();
    m_notes.clear();
    m_services->center.addObserver(QString(), this, [this](const ZuviNotification &note) {
        QVERIFY(QThread::currentThread() == qApp->thread());
        m_notes.append(note);
    });
    m_config = makeService();
}

void TestZuviRemoteConfig::cleanup()
{
    m_config.reset();
    m_scheduler.reset();
    m_cacheDir.reset();
    m_services.reset();
}

std::unique_ptr<ZuviRemoteConfig> TestZuviRemoteConfig::makeService()
{
    return std::make_unique<ZuviRemoteConfig>(m_services->defaults.get(), &m_services->center,
                                              m_scheduler.get());
}

void TestZuviRemoteConfig::refresh(Refresh *result)
{
    *result = Refresh();
    m_config->refreshWithCompletion(
        [result](const std::optional<QJsonObject> &config, const ZuviError &error) {
            QVERIFY(QThread::currentThread() == qApp->thread());
            QVERIFY(!result->done);
            result->done = true;
            result->config = config;
            result->error = error;
        });
    QTRY_VERIFY_WITH_TIMEOUT(result->done, 10000);
}

void TestZuviRemoteConfig::startService(const QStringList &sources, double pollInterval,
                                        double requestTimeout)
{
    ZuviRemoteConfigOptions options = ZuviRemoteConfigOptions::optionsWithSources(sources);
    options.pollInterval = pollInterval;
    options.requestTimeout = requestTimeout;
    options.cacheDirectoryPath = m_cacheDir->path();
    m_config->startWithOptions(options);
}

int TestZuviRemoteConfig::count(const char *name) const
{
    return notes(name).size();
}

QList<ZuviNotification> TestZuviRemoteConfig::notes(const char *name) const
{
    QList<ZuviNotification> result;
    for (const ZuviNotification &note : m_notes) {
        if (note.name == QLatin1String(name))
            result.append(note);
    }
    return result;
}

void TestZuviRemoteConfig::failoverInstallsSecondSource()
{
    ZuviScriptedAnswer slowFailure = status(500);
    slowFailure.delayMs = 50;
    m_services->server.setAnswer("GET", "/first.json", slowFailure);
    m_services->server.setAnswer("GET", "/second.json", document(kDocumentA, "\"e1\""));
    startService({url("/first.json"), url("/second.json")});

    QTRY_COMPARE(count(ZuviRemoteConfig::kDidUpdateNotification), 1);
    const ZuviNotification update = notes(ZuviRemoteConfig::kDidUpdateNotification).first();
    QCOMPARE(update.object.data(), m_config.get());
    QCOMPARE(update.userInfo.value("sourceURL").toString(), url("/second.json"));
    QCOMPARE(update.userInfo.value("config").toMap().value("name").toString(), QStringLiteral("A"));
    QCOMPARE(nameOf(m_config->currentConfig()), QStringLiteral("A"));
    QCOMPARE(m_config->currentSourceURLString(), url("/second.json"));
    QCOMPARE(count(ZuviRemoteConfig::kDidFailNotification), 0);

    // One source at a time, in order, each request as the service sends it.
    QCOMPARE(m_services->server.maxInFlight(), 1);
    const QList<ZuviRecordedRequest> requests = m_services->server.requests();
    QCOMPARE(requests.size(), 2);
    QCOMPARE(requests.at(0).path, QStringLiteral("/first.json"));
    for (const ZuviRecordedRequest &request : requests) {
        QCOMPARE(request.header("Accept"), QByteArray("application/json,text/plain,*/*"));
        QCOMPARE(request.header("User-Agent"), QByteArray("oldZuvi/1.0 remote-config"));
        QVERIFY(!request.hasHeader("If-None-Match"));
        QVERIFY(!request.hasHeader("If-Modified-Since"));
    }

    // Both cache files: the raw bytes and the metadata property list.
    // The service writes the data file first and the metadata just after, on
    // its own queue: wait for both.
    QTRY_COMPARE(readFile(m_config->cacheDataPath()), kDocumentA);
    std::optional<QVariantMap> metadata;
    QTRY_VERIFY((metadata = ZuviPropertyList::dictionaryFromXmlData(
                     readFile(m_config->cacheMetadataPath())))
                    .has_value());
    // The answering source, not the first one. (The validators kept there
    // are seen at work in the restart test's revalidation.)
    QCOMPARE(metadata->value("sourceURL").toString(), url("/second.json"));
}

void TestZuviRemoteConfig::allSourcesFailWithLastError_data()
{
    QTest::addColumn<QStringList>("sources"); // %S: test server, %C: a closed port, %F: a file
    QTest::addColumn<QString>("domain");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("message"); // empty: the connection's own text

    const QString configDomain = "ZuviRemoteConfigErrorDomain";
    QTest::newRow("500, then an empty 200") << QStringList{"%S/500", "%S/empty"} << configDomain
                                            << 4 << "remote config response is empty";
    QTest::newRow("empty 200, then 500") << QStringList{"%S/empty", "%S/500"} << configDomain << 3
                                         << "remote config request failed with status 500";
    QTest::newRow("404, then not a URL")
        << QStringList{"%S/404", "http://exa mple/c.json"} << configDomain << 2
        << "remote config source URL is invalid";
    QTest::newRow("not a URL, then refused")
        << QStringList{"http://exa mple/c.json", "%C/c.json"}
        << QString::fromLatin1(ZuviHTTPTransport::kErrorDomain) << -1 << QString();
    QTest::newRow("an answer that is not HTTP")
        << QStringList{"%F"} << configDomain << 3 << "remote config request failed with status 0";
}

void TestZuviRemoteConfig::allSourcesFailWithLastError()
{
    QFETCH(QStringList, sources);
    QFETCH(QString, domain);
    QFETCH(int, code);
    QFETCH(QString, message);
    m_services->server.setAnswer("GET", "/500", status(500));
    m_services->server.setAnswer("GET", "/404", status(404));
    m_services->server.setAnswer("GET", "/empty", ZuviScriptedAnswer::json(QByteArray()));
    QString closedBase;
    {
        ZuviTestHttpServer closed;
        QVERIFY(closed.start());
        closedBase = closed.baseUrl().toString(QUrl::StripTrailingSlash);
    }
    const QString filePath = m_cacheDir->filePath("local.json");
    {
        QFile file(filePath);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(kDocumentA);
    }
    for (QString &source : sources) {
        source.replace("%S", m_services->server.baseUrl().toString(QUrl::StripTrailingSlash))
            .replace("%C", closedBase)
            .replace("%F", QUrl::fromLocalFile(filePath).toString());
    }
    startService(sources);
    Refresh result;
    refresh(&result);

    QCOMPARE(result.error.domain, domain);
    if (code >= 0)
        QCOMPARE(result.error.code, code);
    if (!message.isEmpty())
        QCOMPARE(result.error.message, message);
    else
        QVERIFY(!result.error.message.isEmpty());
    QVERIFY(!result.config.has_value());
    // The start's refresh and this one: one failure notification each.
    QTRY_COMPARE(count(ZuviRemoteConfig::kDidFailNotification), 2);
    for (const ZuviNotification &note : notes(ZuviRemoteConfig::kDidFailNotification))
        QCOMPARE(note.userInfo.value("error").value<ZuviError>(), result.error);
    QCOMPARE(count(ZuviRemoteConfig::kDidUpdateNotification), 0);
}

void TestZuviRemoteConfig::noSourcesAnswersAtOnce()
{
    startService({" ", "\n"});
    bool called = false;
    m_config->refreshWithCompletion(
        [&called](const std::optional<QJsonObject> &config, const ZuviError &error) {
            called = true;
            QVERIFY(!config.has_value());
            QVERIFY(error.isNull());
        });
    QVERIFY(called); // on the calling thread, inside the call
    QCOMPARE(m_config->currentSourceURLString(), QString());
    QCOMPARE(m_config->messageVersionDefaultsKey(),
             QStringLiteral("ZuviRemoteConfigMessageVersion"));
    QCoreApplication::processEvents();
    QVERIFY(m_notes.isEmpty());
    QCOMPARE(m_services->server.requestCount(), 0);
}

void TestZuviRemoteConfig::conditionalRequestsAnd304()
{
    m_services->server.setAnswer("GET", "/down.json", status(503));
    m_services->server.setAnswerSequence(
        "GET", "/c.json", {document(kDocumentA, "\"e1\""), status(304), status(304)});
    startService({url("/down.json"), url("/c.json")});
    QTRY_COMPARE(count(ZuviRemoteConfig::kDidUpdateNotification), 1);
    QTRY_COMPARE(readFile(m_config->cacheDataPath()), kDocumentA);
    const QByteArray metadataBefore = readFile(m_config->cacheMetadataPath());

    Refresh result;
    refresh(&result);
    QVERIFY(result.error.isNull());
    QCOMPARE(nameOf(result.config), QStringLiteral("A"));

    // The validators of the document in force go to every source tried.
    const QList<ZuviRecordedRequest> requests = m_services->server.requests();
    QCOMPARE(requests.size(), 4);
    for (int i = 2; i < 4; ++i) {
        QCOMPARE(requests.at(i).header("If-None-Match"), QByteArray("\"e1\""));
        QCOMPARE(requests.at(i).header("If-Modified-Since"), kLastModified);
    }
    // Unchanged: nothing announced, nothing rewritten, validators kept.
    QCOMPARE(count(ZuviRemoteConfig::kDidUpdateNotification), 1);
    QCOMPARE(count(ZuviRemoteConfig::kDidFailNotification), 0);
    QCOMPARE(readFile(m_config->cacheMetadataPath()), metadataBefore);
    refresh(&result);
    QCOMPARE(m_services->server.requests().last().header("If-None-Match"), QByteArray("\"e1\""));
    QCOMPARE(m_config->currentSourceURLString(), url("/c.json"));
}

void TestZuviRemoteConfig::identicalBytesAnnouncedOnce()
{
    m_services->server.setAnswerSequence(
        "GET", "/c.json", {document(kDocumentA, "\"e1\""), document(kDocumentA, "\"e2\"")});
    startService({url("/c.json")});
    QTRY_COMPARE(count(ZuviRemoteConfig::kDidUpdateNotification), 1);
    QTRY_COMPARE(count(ZuviRemoteConfig::kMessageDidUpdateNotification), 1);

    Refresh result;
    refresh(&result);
    QCOMPARE(nameOf(result.config), QStringLiteral("A"));
    QCoreApplication::processEvents();
    QCOMPARE(count(ZuviRemoteConfig::kDidUpdateNotification), 1);
    QCOMPARE(count(ZuviRemoteConfig::kMessageDidUpdateNotification), 1);
    // The new validators are kept and written to the metadata.
    std::optional<QVariantMap> metadata;
    QTRY_VERIFY((metadata = ZuviPropertyList::dictionaryFromXmlData(
                     readFile(m_config->cacheMetadataPath()))) &&
                metadata->value("etag").toString() == QStringLiteral("\"e2\""));
    refresh(&result);
    QCOMPARE(m_services->server.requests().last().header("If-None-Match"), QByteArray("\"e2\""));
}

void TestZuviRemoteConfig::badDocumentKeepsPrevious()
{
    // Which bodies are refused is the parser's table (the values suite); here,
    // what a refused document leaves in force.
    m_services->server.setAnswerSequence(
        "GET", "/c.json", {document(kDocumentA, "\"e1\""), document("[]", "\"e2\"")});
    startService({url("/c.json")});
    QTRY_COMPARE(count(ZuviRemoteConfig::kDidUpdateNotification), 1);

    Refresh result;
    refresh(&result);
    QCOMPARE(result.error.code, 5);
    QCOMPARE(result.error.message, QStringLiteral("remote config root must be a JSON object"));
    QCOMPARE(nameOf(result.config), QStringLiteral("A"));
    QTRY_COMPARE(count(ZuviRemoteConfig::kDidFailNotification), 1);
    QCOMPARE(notes(ZuviRemoteConfig::kDidFailNotification)
                 .first()
                 .userInfo.value("error")
                 .value<ZuviError>(),
             result.error);

    QCOMPARE(nameOf(m_config->currentConfig()), QStringLiteral("A"));
    QCOMPARE(m_config->currentData(), kDocumentA);
    QCOMPARE(readFile(m_config->cacheDataPath()), kDocumentA);
    // The validators stay those of the document in force.
    refresh(&result);
    QCOMPARE(m_services->server.requests().last().header("If-None-Match"), QByteArray("\"e1\""));
}

void TestZuviRemoteConfig::restartDropsOldAnswers()
{
    ZuviScriptedAnswer slow = document(kDocumentA, "\"old\"");
    slow.delayMs = 300;
    m_services->server.setAnswer("GET", "/old.json", slow);
    m_services->server.setAnswer("GET", "/new.json", document(kDocumentB, "\"new\""));

    startService({url("/old.json")});
    const quint64 firstGeneration = m_config->generation();
    Refresh oldRefresh;
    m_config->refreshWithCompletion(
        [&oldRefresh](const std::optional<QJsonObject> &config, const ZuviError &error) {
            oldRefresh.done = true;
            oldRefresh.config = config;
            oldRefresh.error = error;
        });
    QTRY_COMPARE(m_services->server.requestCount("/old.json"), 2);

    startService({url("/new.json")});
    QCOMPARE(m_config->generation(), firstGeneration + 1);
    QTRY_VERIFY(oldRefresh.done);
    // The old answer came back after the restart: it is dropped, not installed.
    QVERIFY(oldRefresh.error.isNull());
    QTRY_COMPARE(nameOf(m_config->currentConfig()), QStringLiteral("B"));
    QCOMPARE(nameOf(oldRefresh.config), nameOf(m_config->currentConfig()));
    Refresh check;
    refresh(&check);
    QCOMPARE(nameOf(check.config), QStringLiteral("B"));
    QCOMPARE(count(ZuviRemoteConfig::kDidUpdateNotification), 1);
    QCOMPARE(notes(ZuviRemoteConfig::kDidUpdateNotification)
                 .first()
                 .userInfo.value("sourceURL")
                 .toString(),
             url("/new.json"));
    QCOMPARE(count(ZuviRemoteConfig::kMessageDidUpdateNotification), 0);
    QCOMPARE(readFile(m_config->cacheDataPath()), kDocumentB);
}

void TestZuviRemoteConfig::messageOncePerVersionAndSource()
{
    auto messageDocument = [](const QByteArray &message, const QByteArray &padding) {
        return document("{\"pad\":\"" + padding + "\",\"message\":" + message + "}");
    };
    m_services->server.setAnswerSequence(
        "GET", "/m.json",
        {messageDocument(R"({"version":2,"text":"first","image":"http://i/2.png"})", "1"),
         messageDocument(R"({"version":2,"text":"changed"})", "2"),
         messageDocument(R"({"version":"3","text":"third"})", "3"),
         messageDocument(R"({"version":5})", "4"),
         messageDocument(R"({"version":5,"text":"late"})", "5"),
         messageDocument(R"({"version":4,"text":"older"})", "6")});
    m_services->server.setAnswer("GET", "/other.json",
                                 messageDocument(R"({"version":3,"text":"elsewhere"})", "7"));

    startService({url("/m.json")});
    QTRY_COMPARE(count(ZuviRemoteConfig::kMessageDidUpdateNotification), 1);
    const QVariantMap info =
        notes(ZuviRemoteConfig::kMessageDidUpdateNotification).first().userInfo;
    QCOMPARE(info.value("version").toLongLong(), 2);
    QCOMPARE(info.value("text").toString(), QStringLiteral("first"));
    QCOMPARE(info.value("image").toString(), QStringLiteral("http://i/2.png"));
    QCOMPARE(info.value("message").value<ZuviRemoteConfigMessage>().text, QStringLiteral("first"));

    const QList<int> expectedCounts{1, 2, 2, 2, 2}; // after each later document
    const QList<qint64> expectedStored{2, 3, 5, 5, 5};
    for (int i = 0; i < expectedCounts.size(); ++i) {
        Refresh result;
        refresh(&result);
        QVERIFY(result.error.isNull());
        QCoreApplication::processEvents();
        QCOMPARE(count(ZuviRemoteConfig::kMessageDidUpdateNotification), expectedCounts.at(i));
        QCOMPARE(m_config->storedMessageVersion(), expectedStored.at(i));
    }
    QCOMPARE(count(ZuviRemoteConfig::kDidUpdateNotification), 6);
    QCOMPARE(m_services->defaults.get()->integerForKey("ZuviRemoteConfigMessageVersion:" +
                                                       url("/m.json")),
             5);

    // Another first source keeps a counter of its own (and, as the other
    // mode does, a cache of its own).
    QTemporaryDir otherCache;
    ZuviRemoteConfigOptions other = ZuviRemoteConfigOptions::optionsWithSources(
        QStringList{url("/other.json"), url("/m.json")});
    other.cacheDirectoryPath = otherCache.path();
    m_config->startWithOptions(other);
    QTRY_COMPARE(count(ZuviRemoteConfig::kMessageDidUpdateNotification), 3);
    QCOMPARE(m_config->messageVersionDefaultsKey(),
             "ZuviRemoteConfigMessageVersion:" + url("/other.json"));
    QCOMPARE(m_config->storedMessageVersion(), 3);
    QCOMPARE(m_services->defaults.get()->integerForKey("ZuviRemoteConfigMessageVersion:" +
                                                       url("/m.json")),
             5);

    m_config->resetStoredMessageVersion();
    QCOMPARE(m_config->storedMessageVersion(), 0);
    QVERIFY(!m_services->defaults.get()->containsKey(m_config->messageVersionDefaultsKey()));
}

void TestZuviRemoteConfig::pollTimer()
{
    // What a zero interval becomes is the values suite's.
    const double expected = 2.0;
    m_services->server.setAnswer("GET", "/c.json", status(304));
    startService({url("/c.json")}, expected);
    QTRY_COMPARE(m_services->server.requestCount(), 1);
    QCOMPARE(m_scheduler->nextDueIn(), expected);

    m_scheduler->advance(expected / 2);
    QCOMPARE(m_scheduler->nextDueIn(), expected / 2);
    m_scheduler->advance(expected / 2);
    QTRY_COMPARE(m_services->server.requestCount(), 2);
    m_scheduler->advance(expected);
    QTRY_COMPARE(m_services->server.requestCount(), 3);

    // Stopped: the timer is gone and no more refreshes follow.
    m_config->stop();
    QVERIFY(!m_config->isRunning());
    QVERIFY(!m_scheduler->isScheduled(m_config.get(), ZuviRemoteConfig::kPollTimerName));
    m_scheduler->advance(expected * 3);
    Refresh result;
    refresh(&result); // an explicit refresh still works after stop
    QCOMPARE(m_services->server.requestCount(), 4);
}

void TestZuviRemoteConfig::requestTimeoutFailsOver()
{
    ZuviScriptedAnswer silent;
    silent.neverAnswer = true;
    m_services->server.setAnswer("GET", "/hang.json", silent);
    m_services->server.setAnswer("GET", "/c.json", document(kDocumentB));

    // A short timeout is the hanging source's transport error; the next source answers.
    startService({url("/hang.json"), url("/c.json")}, 0, 0.3);
    QCOMPARE(m_config->options().requestTimeout, 0.3);
    Refresh result;
    refresh(&result);
    QVERIFY(result.error.isNull());
    QCOMPARE(nameOf(result.config), QStringLiteral("B"));
    QCOMPARE(m_config->currentSourceURLString(), url("/c.json"));
}

void TestZuviRemoteConfig::cacheSurvivesRestart()
{
    m_services->server.setAnswerSequence("GET", "/c.json",
                                         {document(kDocumentA, "\"e1\""), status(304)});
    startService({url("/c.json")});
    QTRY_COMPARE(count(ZuviRemoteConfig::kMessageDidUpdateNotification), 1);
    QTRY_COMPARE(readFile(m_config->cacheDataPath()), kDocumentA);
    QTRY_VERIFY(!readFile(m_config->cacheMetadataPath()).isEmpty());

    // A new process: the cached document is in force before any answer.
    m_config = makeService();
    // As if this store had never announced it.
    m_services->defaults.get()->removeObjectForKey("ZuviRemoteConfigMessageVersion:" +
                                                   url("/c.json"));
    m_notes.clear();
    startService({url("/c.json")});
    QCOMPARE(nameOf(m_config->currentConfig()), QStringLiteral("A"));
    QCOMPARE(m_config->currentData(), kDocumentA);
    QCOMPARE(m_config->currentSourceURLString(), url("/c.json"));
    QVERIFY(m_config->currentMessage().has_value());

    // The first refresh revalidates with the cached validators and gets 304.
    QTRY_COMPARE(m_services->server.requestCount(), 2);
    QCOMPARE(m_services->server.requests().last().header("If-None-Match"), QByteArray("\"e1\""));
    QCOMPARE(m_services->server.requests().last().header("If-Modified-Since"), kLastModified);
    Refresh result;
    refresh(&result);
    QCOMPARE(nameOf(result.config), QStringLiteral("A"));
    QCOMPARE(count(ZuviRemoteConfig::kDidUpdateNotification), 0);
    // The cached message, unannounced in this store, was announced at load.
    QCOMPARE(count(ZuviRemoteConfig::kMessageDidUpdateNotification), 1);
    QCOMPARE(m_config->storedMessageVersion(), 2);
}

void TestZuviRemoteConfig::badCacheIgnored()
{
    QVERIFY(QDir().mkpath(m_cacheDir->path()));
    {
        QFile file(QDir(m_cacheDir->path()).filePath("remote_config.json"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("[1,2,3]");
    }
    m_services->server.setAnswer("GET", "/c.json", status(304));
    startService({url("/c.json")});
    QVERIFY(!m_config->currentConfig().has_value());
    Refresh result;
    refresh(&result);
    QVERIFY(!result.config.has_value());
    QVERIFY(result.error.isNull());
    QVERIFY(!m_services->server.requests().first().hasHeader("If-None-Match"));
    QVERIFY(m_notes.isEmpty());
}

void TestZuviRemoteConfig::destroyedWithRequestInFlight()
{
    ZuviScriptedAnswer slowFailure = status(500);
    slowFailure.delayMs = 300;
    m_services->server.setAnswer("GET", "/a.json", slowFailure);
    m_services->server.setAnswer("GET", "/b.json", document(kDocumentB));
    startService({url("/a.json"), url("/b.json")});
    QTRY_COMPARE(m_services->server.requestCount("/a.json"), 1);
    m_config.reset();
    // The failure is sent after the service is gone; let anything it could
    // still have caused run before looking.
    QTRY_COMPARE(m_services->server.inFlight(), 0);
    QCoreApplication::processEvents();
    QCOMPARE(m_services->server.requestCount("/b.json"), 0);
    QCOMPARE(count(ZuviRemoteConfig::kDidUpdateNotification), 0);
}

QTEST_GUILESS_MAIN(TestZuviRemoteConfig)
#include "tst_zuviremoteconfig.moc"
