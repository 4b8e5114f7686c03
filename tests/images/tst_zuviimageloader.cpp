#include "images/zuviimageloader.h"
#include "platform/zuvihttptransport.h"
#include "zuviloopbackservices.h"

#include <QBuffer>
#include <QNetworkDiskCache>
#include <QtTest>

namespace {
const QString kFailureCategory = QStringLiteral("[图片加载失败]");

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
    QString url(const QString &path) const { return m_services->server.urlString(path); }

    std::unique_ptr<ZuviLoopbackServices> m_services;
    std::unique_ptr<ZuviImageLoader> m_loader;
    std::vector<std::unique_ptr<Delivery>> m_deliveries;
};

void TestZuviImageLoader::init()
{
    m_services = std::make_unique<ZuviLoopbackServices>();
    QVERIFY(m_services->started);
    m_loader = std::make_unique<ZuviImageLoader>(
        &m_services->log, ZuviEndpoints::allOn(m_services->server.baseUrl()), nullptr);
}

void TestZuviImageLoader::cleanup()
{
    m_loader.reset();
    m_deliveries.clear();
    m_services.reset();
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
    m_services->server.setAnswer("GET", "/c/x.jpg@320w_180h_1c_80q.jpg", imageAnswer(6, 5));
    // Scheme-relative, as the service's JSON gives it; the test server only
    // speaks http, so the scheme is put back for the request itself.
    const QString relative =
        "//127.0.0.1:" + QString::number(m_services->server.port()) + "/c/x.jpg";
    QCOMPARE(ZuviImageLoader::normalizedURLString(relative), "https:" + relative);

    Delivery *delivery = load(url("/c/x.jpg"));
    QTRY_VERIFY(delivery->delivered);
    QCOMPARE(delivery->image.size(), QSize(6, 5));
    QCOMPARE(m_services->server.requestCount(), 1);
    const ZuviRecordedRequest request = m_services->server.requests().first();
    QCOMPARE(request.method, QByteArray("GET"));
    QCOMPARE(request.header("User-Agent"), QByteArray(ZuviImageLoader::kUserAgent));
    QCOMPARE(request.header("Referer"),
             (m_services->server.baseUrl().toString(QUrl::StripTrailingSlash) + "/").toUtf8());
    QVERIFY(m_services->log.logText().isEmpty());
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
    m_services->server.setFallbackHandler(
        [](const ZuviRecordedRequest &) { return imageAnswer(); });

    Delivery *first = load(url("/p.png"), lowQuality);
    QTRY_VERIFY(first->delivered);
    QCOMPARE(m_services->server.requests().first().path, fetchedPath);
    QVERIFY(m_loader->hasCachedImage(url("/p.png") + keySuffix));
    QVERIFY(!m_loader->hasCachedImage(url("/p.png") + otherSuffix));

    // The same kind is then served from memory; the other kind is fetched.
    Delivery *again = load(url("/p.png"), lowQuality);
    QTRY_VERIFY(again->delivered);
    QCOMPARE(m_services->server.requestCount(), 1);
    Delivery *other = load(url("/p.png"), !lowQuality);
    QTRY_VERIFY(other->delivered);
    QCOMPARE(m_services->server.requestCount(), 2);
    QCOMPARE(m_loader->memoryCacheCount(), 2);
}

void TestZuviImageLoader::fallbackServesFullPictureUnderFirstKey()
{
    m_services->server.setAnswer(
        "GET", "/f.png@320w_180h_1c_80q.jpg",
        ZuviScriptedAnswer::text("<html>missing</html>", "text/html", 404));
    m_services->server.setAnswer("GET", "/f.png", imageAnswer(40, 30));

    Delivery *first = load(url("/f.png"));
    QTRY_VERIFY(first->delivered);
    QCOMPARE(first->image.size(), QSize(40, 30));
    QCOMPARE(m_services->server.requestCount(), 2);
    QCOMPARE(m_services->server.requests().at(1).path, QStringLiteral("/f.png"));
    // The thumbnail's failure is not logged when the fallback succeeds.
    QVERIFY(m_services->log.logText().isEmpty());
    QVERIFY(m_loader->hasCachedImage(url("/f.png")));
    QCOMPARE(m_loader->memoryCacheCount(), 1);

    Delivery *second = load(url("/f.png"));
    QTRY_VERIFY(second->delivered);
    QCOMPARE(second->image.size(), QSize(40, 30));
    QCOMPARE(m_services->server.requestCount(), 2);
}

void TestZuviImageLoader::failureEntries_data()
{
    QTest::addColumn<QVariant>("value"); // "%1": the server's base URL, "%2": a closed port's
    QTest::addColumn<bool>("lowQuality");
    QTest::addColumn<QStringList>("fetchedPaths");

    QTest::newRow("not a string") << QVariant(7) << false << QStringList();
    QTest::newRow("blank, low quality") << QVariant(QStringLiteral("  ")) << true << QStringList();
    QTest::newRow("unparseable, no fallback tried")
        << QVariant(QStringLiteral("http://127.0.0.1:port/x.png")) << false << QStringList();
    QTest::newRow("both fail with 404")
        << QVariant(QStringLiteral("%1/gone.png")) << false
        << QStringList{"/gone.png@320w_180h_1c_80q.jpg", "/gone.png"};
    QTest::newRow("already sized: one attempt only")
        << QVariant(QStringLiteral("%1/s.png@100w.jpg")) << false << QStringList{"/s.png@100w.jpg"};
    QTest::newRow("undecodable 200") << QVariant(QStringLiteral("%1/junk.png")) << true
                                     << QStringList{"/junk.png@160w_90h_1c_60q.jpg", "/junk.png"};
    // Nothing listens on the closed port: both attempts fail to connect.
    QTest::newRow("connection refused")
        << QVariant(QStringLiteral("%2/r.png")) << false << QStringList();
}

void TestZuviImageLoader::failureEntries()
{
    QFETCH(QVariant, value);
    QFETCH(bool, lowQuality);
    QFETCH(QStringList, fetchedPaths);
    const QString base = m_services->server.baseUrl().toString(QUrl::StripTrailingSlash);
    m_services->server.setFallbackHandler([](const ZuviRecordedRequest &request) {
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
    for (const ZuviRecordedRequest &request : m_services->server.requests())
        paths << request.path;
    QCOMPARE(paths, fetchedPaths);
    // One entry for the load, however many attempts it made.
    QCOMPARE(m_services->log.logText().count(kFailureCategory), 1);
}

void TestZuviImageLoader::deliveryIsAlwaysLaterAndOnMainThread()
{
    m_services->server.setAnswer("GET", "/h.png@320w_180h_1c_80q.jpg", imageAnswer());
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
    QCOMPARE(m_services->server.requestCount(), 1);
}

void TestZuviImageLoader::nilCompletionStillFillsCache()
{
    m_services->server.setAnswer("GET", "/n.png@320w_180h_1c_80q.jpg", imageAnswer());
    m_loader->loadImageWithURLString(url("/n.png"), ZuviImageLoader::Completion());
    QTRY_VERIFY(m_loader->hasCachedImage(url("/n.png")));
}

void TestZuviImageLoader::neverMoreThanTwoTransfers()
{
    m_services->server.setFallbackHandler(
        [](const ZuviRecordedRequest &) { return imageAnswer(4, 3, 120); });
    QList<Delivery *> deliveries;
    for (int i = 0; i < 7; ++i)
        deliveries << load(url(QStringLiteral("/q%1.png").arg(i)));
    QTRY_VERIFY_WITH_TIMEOUT(std::all_of(deliveries.cbegin(), deliveries.cend(),
                                         [](Delivery *d) { return d->delivered; }),
                             10000);
    QCOMPARE(m_services->server.requestCount(), 7);
    // Two at once, never more: the limit is reached and holds.
    QCOMPARE(m_services->server.maxInFlight(), 2);
    for (Delivery *delivery : deliveries)
        QVERIFY(!delivery->image.isNull());
}

void TestZuviImageLoader::memoryCacheHoldsEightyEntries()
{
    m_services->server.setFallbackHandler(
        [](const ZuviRecordedRequest &) { return imageAnswer(); });
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
        &m_services->log, ZuviEndpoints::allOn(m_services->server.baseUrl()), diskCache);
    m_services->server.setAnswer("GET", "/d.png@320w_180h_1c_80q.jpg", imageAnswer(9, 9));

    Delivery *first = load(url("/d.png"));
    QTRY_VERIFY(first->delivered);
    QCOMPARE(m_services->server.requestCount(), 1);

    // With the memory cache emptied, the stored answer on disk serves the picture.
    m_loader->clearMemoryCache();
    Delivery *fromDisk = load(url("/d.png"));
    QTRY_VERIFY(fromDisk->delivered);
    QCOMPARE(fromDisk->image.size(), QSize(9, 9));
    QCOMPARE(m_services->server.requestCount(), 1);

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
    QCOMPARE(m_services->server.requestCount(), requestsAfterReload);
}

void TestZuviImageLoader::transportCachesOnlyRequestsThatAllowIt()
{
    QTemporaryDir cacheDir;
    ZuviHTTPTransport transport;
    auto *cache = new QNetworkDiskCache;
    cache->setCacheDirectory(cacheDir.path());
    transport.setCache(cache);
    m_services->server.setAnswer("GET", "/api", ZuviScriptedAnswer::json("{}"));
    m_services->server.setAnswer("GET", "/picture", imageAnswer());
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
    QCOMPARE(m_services->server.requestCount("/api"), 2);
    sendTwice("/picture", true);
    QCOMPARE(m_services->server.requestCount("/picture"), 1);
    transport.clearCache();
    sendTwice("/picture", true);
    QCOMPARE(m_services->server.requestCount("/picture"), 2);
}

void TestZuviImageLoader::destroyedWithLoadsInFlight()
{
    // Thumbnails fail slowly, so fallbacks are due just as the loader goes.
    m_services->server.setFallbackHandler([](const ZuviRecordedRequest &) {
        ZuviScriptedAnswer answer = ZuviScriptedAnswer::text("<h1>404</h1>", "text/html", 404);
        answer.delayMs = 30;
        return answer;
    });
    for (int i = 0; i < 6; ++i)
        load(url(QStringLiteral("/gone%1.png").arg(i)));
    QTRY_VERIFY(m_services->server.requestCount() >= 2);
    m_loader.reset();
    const int sent = m_services->server.requestCount();
    // The answers that were on the way go out and find no loader.
    QTRY_COMPARE(m_services->server.inFlight(), 0);
    QCoreApplication::processEvents();
    QCOMPARE(m_services->server.requestCount(), sent);
}

QTEST_MAIN(TestZuviImageLoader)
#include "tst_zuviimageloader.moc"
