#include "images/zuviimageloader.h"
#include "platform/zuvidebuglog.h"
#include "platform/zuvihttptransport.h"
#include "platform/zuvinotificationcenter.h"
#include "zuvitesthttpserver.h"
#include "zuvitestsupport.h"

#include <QBuffer>
#include <QNetworkDiskCache>
#include <QtTest>

namespace {
const char *const kEntryHeader = "[2026-01-02 03:04:05] [图片加载失败]\n";

QByteArray pngBytes(int width, int height, QColor color)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(color);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

ZuviScriptedAnswer imageAnswer(int width = 4, int height = 3, int delayMs = 0)
{
    ZuviScriptedAnswer answer =
        ZuviScriptedAnswer::text(pngBytes(width, height, Qt::red), "image/png");
    answer.delayMs = delayMs;
    return answer;
}

// One load's outcome, and where and when it arrived.
struct Delivery {
    bool delivered = false;
    bool onMainThread = false;
    QImage image;
};
} // namespace

class TestZuviImageLoader : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void normalLoadFetchesThumbnailWithHeaders();
    void cacheKeysAndSeparateEntries_data();
    void cacheKeysAndSeparateEntries();
    void fallbackServesFullPictureUnderFirstKey();
    void failureEntries_data();
    void failureEntries();
    void deliveryIsAlwaysLaterAndOnMainThread();
    void nilCompletionStillFillsCache();
    void neverMoreThanTwoTransfers();
    void memoryCacheHoldsEightyEntries();
    void urlCacheAnswersRepeatedLoad_data();
    void urlCacheAnswersRepeatedLoad();
    void transportCachesOnlyRequestsThatAllowIt();
    void destroyedWithLoadsInFlight();

private:
    Delivery *load(const QVariant &url, bool lowQuality = false);
    QString url(const QString &path) const { return m_server->urlString(path); }

    std::unique_ptr<ZuviTestHttpServer> m_server;
    std::unique_ptr<ZuviScratchDefaults> m_defaults;
    std::unique_ptr<ZuviNotificationCenter> m_center;
    std::unique_ptr<ZuviDebugLog> m_log;
    std::unique_ptr<ZuviImageLoader> m_loader;
    std::vector<std::unique_ptr<Delivery>> m_deliveries;
};

void TestZuviImageLoader::init()
{
    m_server = std::make_unique<ZuviTestHttpServer>();
    QVERIFY(m_server->start());
    m_defaults = std::make_unique<ZuviScratchDefaults>();
    m_center = std::make_unique<ZuviNotificationCenter>();
    m_log = std::make_unique<ZuviDebugLog>(m_defaults->get(), m_center.get());
    m_log->setClock([] { return QDateTime(QDate(2026, 1, 2), QTime(3, 4, 5)); });
    m_loader = std::make_unique<ZuviImageLoader>(
        m_log.get(), ZuviEndpoints::allOn(m_server->baseUrl()), nullptr);
}

void TestZuviImageLoader::cleanup()
{
    m_loader.reset();
    m_deliveries.clear();
    m_log.reset();
    m_center.reset();
    m_defaults.reset();
    m_server.reset();
}

Delivery *TestZuviImageLoader::load(const QVariant &urlValue, bool lowQuality)
{
    m_deliveries.push_back(std::make_unique<Delivery>());
    Delivery *delivery = m_deliveries.back().get();
    auto completion = [delivery](const QImage &image) {
        QVERIFY(!delivery->delivered); // at most once
        delivery->delivered = true;
        delivery->onMainThread = QThread::currentThread() == qApp->thread();
        delivery->image = image;
    };
    if (lowQuality)
        m_loader->loadLowQualityImageWithURLString(urlValue, completion);
    else
        m_loader->loadImageWithURLString(urlValue, completion);
    return delivery;
}

void TestZuviImageLoader::normalLoadFetchesThumbnailWithHeaders()
{
    m_server->setAnswer("GET", "/c/x.jpg@320w_180h_1c_80q.jpg", imageAnswer(6, 5));
    // Scheme-relative, as the service's JSON gives it; the test server only
    // speaks http, so the scheme is put back for the request itself.
    const QString relative = "//127.0.0.1:" + QString::number(m_server->port()) + "/c/x.jpg";
    QCOMPARE(ZuviImageLoader::normalizedURLString(relative), "https:" + relative);

    Delivery *delivery = load(url("/c/x.jpg"));
    QTRY_VERIFY(delivery->delivered);
    QCOMPARE(delivery->image.size(), QSize(6, 5));
    QCOMPARE(m_server->requestCount(), 1);
    const ZuviRecordedRequest request = m_server->requests().first();
    QCOMPARE(request.method, QByteArray("GET"));
    QCOMPARE(request.header("User-Agent"), QByteArray(ZuviImageLoader::kUserAgent));
    QCOMPARE(request.header("Referer"),
             (m_server->baseUrl().toString(QUrl::StripTrailingSlash) + "/").toUtf8());
    QVERIFY(m_log->logText().isEmpty());
}

void TestZuviImageLoader::cacheKeysAndSeparateEntries_data()
{
    QTest::addColumn<bool>("lowQuality");
    QTest::addColumn<QString>("fetchedPath");
    QTest::addColumn<QString>("keySuffix");
    QTest::addColumn<QString>("otherSuffix");
    QTest::newRow("normal") << false << "/p.png@320w_180h_1c_80q.jpg"
                            << ""
                            << "#low";
    QTest::newRow("low") << true << "/p.png@160w_90h_1c_60q.jpg"
                         << "#low"
                         << "";
}

void TestZuviImageLoader::cacheKeysAndSeparateEntries()
{
    QFETCH(bool, lowQuality);
    QFETCH(QString, fetchedPath);
    QFETCH(QString, keySuffix);
    QFETCH(QString, otherSuffix);
    m_server->setFallbackHandler([](const ZuviRecordedRequest &) { return imageAnswer(); });

    Delivery *first = load(url("/p.png"), lowQuality);
    QTRY_VERIFY(first->delivered);
    QCOMPARE(m_server->requests().first().path, fetchedPath);
    QVERIFY(m_loader->hasCachedImage(url("/p.png") + keySuffix));
    QVERIFY(!m_loader->hasCachedImage(url("/p.png") + otherSuffix));

    // The same kind is then served from memory; the other kind is fetched.
    Delivery *again = load(url("/p.png"), lowQuality);
    QTRY_VERIFY(again->delivered);
    QCOMPARE(m_server->requestCount(), 1);
    Delivery *other = load(url("/p.png"), !lowQuality);
    QTRY_VERIFY(other->delivered);
    QCOMPARE(m_server->requestCount(), 2);
    QCOMPARE(m_loader->memoryCacheCount(), 2);
}

void TestZuviImageLoader::fallbackServesFullPictureUnderFirstKey()
{
    m_server->setAnswer("GET", "/f.png@320w_180h_1c_80q.jpg",
                        ZuviScriptedAnswer::text("<html>missing</html>", "text/html", 404));
    m_server->setAnswer("GET", "/f.png", imageAnswer(40, 30));

    Delivery *first = load(url("/f.png"));
    QTRY_VERIFY(first->delivered);
    QCOMPARE(first->image.size(), QSize(40, 30));
    QCOMPARE(m_server->requestCount(), 2);
    QCOMPARE(m_server->requests().at(1).path, QStringLiteral("/f.png"));
    // The thumbnail's failure is not logged when the fallback succeeds.
    QVERIFY(m_log->logText().isEmpty());
    QVERIFY(m_loader->hasCachedImage(url("/f.png")));
    QCOMPARE(m_loader->memoryCacheCount(), 1);

    Delivery *second = load(url("/f.png"));
    QTRY_VERIFY(second->delivered);
    QCOMPARE(second->image.size(), QSize(40, 30));
    QCOMPARE(m_server->requestCount(), 2);
}

void TestZuviImageLoader::failureEntries_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<bool>("lowQuality");
    QTest::addColumn<QStringList>("fetchedPaths");
    QTest::addColumn<QString>("entry"); // "%1" stands for the server's base URL

    QTest::newRow("not a string") << QVariant(7) << false << QStringList()
                                  << "图片 URL 无效\nurl=7";
    QTest::newRow("blank, low quality")
        << QVariant(QStringLiteral("  ")) << true << QStringList() << "低清图片 URL 无效\nurl=  ";
    QTest::newRow("no value") << QVariant() << false << QStringList() << "图片 URL 无效\nurl=";
    QTest::newRow("unparseable, no fallback tried")
        << QVariant(QStringLiteral("http://127.0.0.1:port/x.png")) << false << QStringList()
        << "图片 URL 解析失败\nurl=http://127.0.0.1:port/x.png@320w_180h_1c_80q.jpg";
    QTest::newRow("both fail with 404")
        << QVariant(QStringLiteral("%1/gone.png")) << false
        << QStringList{"/gone.png@320w_180h_1c_80q.jpg", "/gone.png"}
        << "url=%1/gone.png\nhttp=404\nmime=text/html\nbytes=12\nerror=无 "
           "NSError，可能是返回数据无法解码成 UIImage";
    QTest::newRow("already sized: one attempt only")
        << QVariant(QStringLiteral("%1/s.png@100w.jpg")) << false << QStringList{"/s.png@100w.jpg"}
        << "url=%1/s.png@100w.jpg\nhttp=404\nmime=text/html\nbytes=12\nerror=无 "
           "NSError，可能是返回数据无法解码成 UIImage";
    QTest::newRow("undecodable 200")
        << QVariant(QStringLiteral("%1/junk.png")) << true
        << QStringList{"/junk.png@160w_90h_1c_60q.jpg", "/junk.png"}
        << "url=%1/junk.png\nhttp=200\nmime=image/png\nbytes=4\nerror=无 "
           "NSError，可能是返回数据无法解码成 UIImage";
    // Nothing listens on the closed port: both attempts fail to connect.
    QTest::newRow("connection refused")
        << QVariant(QStringLiteral("%2/r.png")) << false << QStringList()
        << "url=%2/r.png\nhttp=0\nmime=\nbytes=0\nerror=REFUSED";
}

void TestZuviImageLoader::failureEntries()
{
    QFETCH(QVariant, value);
    QFETCH(bool, lowQuality);
    QFETCH(QStringList, fetchedPaths);
    QFETCH(QString, entry);
    const QString base = m_server->baseUrl().toString(QUrl::StripTrailingSlash);
    m_server->setFallbackHandler([](const ZuviRecordedRequest &request) {
        if (request.path.startsWith("/junk"))
            return ZuviScriptedAnswer::text("junk", "image/png; charset=binary");
        return ZuviScriptedAnswer::text("<h1>404</h1>", "text/html", 404);
    });
    QString closedBase;
    {
        ZuviTestHttpServer closed;
        QVERIFY(closed.start());
        closedBase = closed.baseUrl().toString(QUrl::StripTrailingSlash);
    }
    if (value.typeId() == QMetaType::QString)
        value = value.toString().replace("%1", base).replace("%2", closedBase);

    Delivery *delivery = load(value, lowQuality);
    QTRY_VERIFY(delivery->delivered);
    QVERIFY(delivery->image.isNull());
    QVERIFY(delivery->onMainThread);

    QStringList paths;
    for (const ZuviRecordedRequest &request : m_server->requests())
        paths << request.path;
    QCOMPARE(paths, fetchedPaths);

    QString expected =
        kEntryHeader + QString(entry).replace("%1", base).replace("%2", closedBase) + "\n";
    if (expected.contains("error=REFUSED")) {
        // The connection's own message, whatever the network layer calls it.
        const QString logText = m_log->logText();
        const int errorAt = logText.indexOf("error=");
        QVERIFY(errorAt > 0);
        QVERIFY(logText.size() > errorAt + 7);
        QCOMPARE(logText.left(errorAt), expected.left(expected.indexOf("error=")));
        QCOMPARE(logText.count('\n'), 6);
        return;
    }
    QCOMPARE(m_log->logText(), expected);
}

void TestZuviImageLoader::deliveryIsAlwaysLaterAndOnMainThread()
{
    m_server->setAnswer("GET", "/h.png@320w_180h_1c_80q.jpg", imageAnswer());
    Delivery *network = load(url("/h.png"));
    QVERIFY(!network->delivered);
    QTRY_VERIFY(network->delivered);
    QVERIFY(network->onMainThread);

    // A memory hit is still delivered later, from the main queue.
    Delivery *hit = load(url("/h.png"));
    QVERIFY(!hit->delivered);
    QTRY_VERIFY(hit->delivered);
    QVERIFY(hit->onMainThread);
    QVERIFY(!hit->image.isNull());

    // So is an immediate failure.
    Delivery *invalid = load(QString());
    QVERIFY(!invalid->delivered);
    QTRY_VERIFY(invalid->delivered);
    QCOMPARE(m_server->requestCount(), 1);
}

void TestZuviImageLoader::nilCompletionStillFillsCache()
{
    m_server->setAnswer("GET", "/n.png@320w_180h_1c_80q.jpg", imageAnswer());
    m_loader->loadImageWithURLString(url("/n.png"), ZuviImageLoader::Completion());
    QTRY_VERIFY(m_loader->hasCachedImage(url("/n.png")));
}

void TestZuviImageLoader::neverMoreThanTwoTransfers()
{
    m_server->setFallbackHandler(
        [](const ZuviRecordedRequest &) { return imageAnswer(4, 3, 120); });
    QList<Delivery *> deliveries;
    for (int i = 0; i < 7; ++i)
        deliveries << load(url(QStringLiteral("/q%1.png").arg(i)));
    QTRY_VERIFY_WITH_TIMEOUT(std::all_of(deliveries.cbegin(), deliveries.cend(),
                                         [](Delivery *d) { return d->delivered; }),
                             10000);
    QCOMPARE(m_server->requestCount(), 7);
    // Two at once, never more: the limit is reached and holds.
    QCOMPARE(m_server->maxInFlight(), 2);
    for (Delivery *delivery : deliveries)
        QVERIFY(!delivery->image.isNull());
}

void TestZuviImageLoader::memoryCacheHoldsEightyEntries()
{
    m_server->setFallbackHandler([](const ZuviRecordedRequest &) { return imageAnswer(); });
    QList<Delivery *> deliveries;
    for (int i = 0; i < 90; ++i)
        deliveries << load(url(QStringLiteral("/m%1.png").arg(i)));
    QTRY_VERIFY_WITH_TIMEOUT(std::all_of(deliveries.cbegin(), deliveries.cend(),
                                         [](Delivery *d) { return d->delivered; }),
                             20000);
    QCOMPARE(m_loader->memoryCacheCount(), ZuviImageLoader::kCacheCountLimit);

    m_loader->didReceiveMemoryWarning();
    QCOMPARE(m_loader->memoryCacheCount(), 0);
}

void TestZuviImageLoader::urlCacheAnswersRepeatedLoad_data()
{
    QTest::addColumn<bool>("memoryWarning");
    QTest::addColumn<int>("requestsAfterReload");
    QTest::newRow("settings clear-cache action") << false << 2;
    QTest::newRow("memory warning") << true << 1;
}

void TestZuviImageLoader::urlCacheAnswersRepeatedLoad()
{
    QFETCH(bool, memoryWarning);
    QFETCH(int, requestsAfterReload);
    QTemporaryDir cacheDir;
    auto *diskCache = new QNetworkDiskCache;
    diskCache->setCacheDirectory(cacheDir.path());
    m_loader = std::make_unique<ZuviImageLoader>(
        m_log.get(), ZuviEndpoints::allOn(m_server->baseUrl()), diskCache);
    m_server->setAnswer("GET", "/d.png@320w_180h_1c_80q.jpg", imageAnswer(9, 9));

    Delivery *first = load(url("/d.png"));
    QTRY_VERIFY(first->delivered);
    QCOMPARE(m_server->requestCount(), 1);

    // With the memory cache emptied, the stored answer on disk serves the picture.
    m_loader->clearMemoryCache();
    Delivery *fromDisk = load(url("/d.png"));
    QTRY_VERIFY(fromDisk->delivered);
    QCOMPARE(fromDisk->image.size(), QSize(9, 9));
    QCOMPARE(m_server->requestCount(), 1);

    // The clear-cache action empties both caches, so the picture is fetched
    // again; a memory warning empties only the memory, and the disk answers.
    if (memoryWarning)
        m_loader->didReceiveMemoryWarning();
    else
        m_loader->clearAllCaches();
    QCOMPARE(m_loader->memoryCacheCount(), 0);
    Delivery *refetched = load(url("/d.png"));
    QTRY_VERIFY(refetched->delivered);
    QVERIFY(!refetched->image.isNull());
    QCOMPARE(m_server->requestCount(), requestsAfterReload);
}

void TestZuviImageLoader::transportCachesOnlyRequestsThatAllowIt()
{
    QTemporaryDir cacheDir;
    ZuviHTTPTransport transport;
    auto *cache = new QNetworkDiskCache;
    cache->setCacheDirectory(cacheDir.path());
    transport.setCache(cache);
    m_server->setAnswer("GET", "/api", ZuviScriptedAnswer::json("{}"));
    m_server->setAnswer("GET", "/picture", imageAnswer());
    auto sendTwice = [&](const QString &path, bool allowsCache) {
        for (int i = 0; i < 2; ++i) {
            ZuviURLRequest request;
            request.url = QUrl(url(path));
            request.allowsCache = allowsCache;
            QAtomicInt done;
            ZuviHTTPResponse answer;
            transport.send(request, [&](const ZuviHTTPResponse &response, const ZuviError &) {
                answer = response;
                done = 1;
            });
            QTRY_VERIFY(done.loadAcquire());
            QCOMPARE(answer.statusCode, 200);
        }
    };
    // API requests go to the network every time, even with a cache present.
    sendTwice("/api", false);
    QCOMPARE(m_server->requestCount("/api"), 2);
    sendTwice("/picture", true);
    QCOMPARE(m_server->requestCount("/picture"), 1);
    transport.clearCache();
    sendTwice("/picture", true);
    QCOMPARE(m_server->requestCount("/picture"), 2);
}

void TestZuviImageLoader::destroyedWithLoadsInFlight()
{
    // Thumbnails fail slowly, so fallbacks are due just as the loader goes.
    m_server->setFallbackHandler([](const ZuviRecordedRequest &) {
        ZuviScriptedAnswer answer = ZuviScriptedAnswer::text("<h1>404</h1>", "text/html", 404);
        answer.delayMs = 30;
        return answer;
    });
    for (int i = 0; i < 6; ++i)
        load(url(QStringLiteral("/gone%1.png").arg(i)));
    QTRY_VERIFY(m_server->requestCount() >= 2);
    m_loader.reset();
    const int sent = m_server->requestCount();
    QCoreApplication::processEvents();
    QTest::qWait(100); // answers that were on the way arrive and find no loader
    QCOMPARE(m_server->requestCount(), sent);
}

QTEST_MAIN(TestZuviImageLoader)
#include "tst_zuviimageloader.moc"
