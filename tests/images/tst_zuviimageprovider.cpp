#include "images/zuviimageloader.h"
#include "images/zuviimageprovider.h"
#include "zuviloopbackservices.h"

#include <QBuffer>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QtTest>

namespace {
ZuviScriptedAnswer pngAnswer(int width, int height)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::blue);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return ZuviScriptedAnswer::text(bytes, "image/png");
}
} // namespace

// QML Image elements load through the provider and so get the loader's rules.
class TestZuviImageProvider : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void imageSources_data();
    void imageSources();
    void sourceReplacedWhileLoading();

private:
    std::unique_ptr<ZuviLoopbackServices> m_services;
    std::unique_ptr<ZuviImageLoader> m_loader;
};

void TestZuviImageProvider::init()
{
    m_services = std::make_unique<ZuviLoopbackServices>();
    QVERIFY(m_services->started);
    m_loader = std::make_unique<ZuviImageLoader>(
        &m_services->log, ZuviEndpoints::allOn(m_services->server.baseUrl()), nullptr);
    m_services->server.setAnswer("GET", "/v/a%20b.png@320w_180h_1c_80q.jpg", pngAnswer(32, 18));
    m_services->server.setAnswer("GET", "/v/a%20b.png@160w_90h_1c_60q.jpg", pngAnswer(16, 9));
    m_services->server.setAnswer("GET", "/v/a%20b.png@50w_40h_1c_70q.jpg", pngAnswer(5, 4));
    m_services->server.setAnswer("GET", "/v/full.png", pngAnswer(64, 36));
}

void TestZuviImageProvider::cleanup()
{
    m_loader.reset();
    m_services.reset();
}

void TestZuviImageProvider::imageSources_data()
{
    QTest::addColumn<QString>("source");     // "%1" stands for the server's base URL
    QTest::addColumn<QSize>("expectedSize"); // invalid when the load must fail
    QTest::addColumn<QStringList>("fetchedPaths");
    QTest::addColumn<QString>("cacheKey");

    const QString address = "%1/v/a b.png";
    QTest::newRow("low") << ZuviImageProvider::sourceURL("low", address) << QSize(16, 9)
                         << QStringList{"/v/a%20b.png@160w_90h_1c_60q.jpg"} << "%1/v/a%20b.png#low";
    QTest::newRow("thumb of a chosen size")
        << ZuviImageProvider::thumbnailSourceURL(address, 50, 40, 70, address) << QSize(5, 4)
        << QStringList{"/v/a%20b.png@50w_40h_1c_70q.jpg"} << "%1/v/a%20b.png#50x40q70";
    QTest::newRow("thumb falls back to another picture")
        << ZuviImageProvider::thumbnailSourceURL("%1/v/missing.png", 50, 40, 70, "%1/v/full.png")
        << QSize(64, 36) << QStringList{"/v/missing.png@50w_40h_1c_70q.jpg", "/v/full.png"}
        << "%1/v/missing.png#50x40q70";
    QTest::newRow("thumb without fallback fails once")
        << ZuviImageProvider::thumbnailSourceURL("%1/v/missing.png", 50, 40, 70, QString())
        << QSize() << QStringList{"/v/missing.png@50w_40h_1c_70q.jpg"} << QString();
    QTest::newRow("no address") << QStringLiteral("image://zuvi/normal?url=") << QSize()
                                << QStringList() << QString();
}

void TestZuviImageProvider::imageSources()
{
    QFETCH(QString, source);
    QFETCH(QSize, expectedSize);
    QFETCH(QStringList, fetchedPaths);
    QFETCH(QString, cacheKey);
    const QString base = m_services->server.baseUrl().toString(QUrl::StripTrailingSlash);
    // The address sits percent-encoded inside the source.
    source.replace("%251", QString::fromLatin1(QUrl::toPercentEncoding(base)));

    QQmlEngine engine;
    engine.addImageProvider(ZuviImageProvider::kProviderId, new ZuviImageProvider(m_loader.get()));
    QQmlComponent component(&engine);
    component.setData("import QtQuick\nImage { asynchronous: true }", QUrl());
    std::unique_ptr<QObject> image(component.create());
    QVERIFY2(image, qPrintable(component.errorString()));
    image->setProperty("source", source);

    const int ready = 1;
    const int error = 3;
    const int expectedStatus = expectedSize.isValid() ? ready : error;
    QTRY_COMPARE(image->property("status").toInt(), expectedStatus);
    if (expectedSize.isValid())
        QCOMPARE(image->property("sourceSize").toSize(), expectedSize);
    else
        QTRY_VERIFY(m_services->log.logText().contains("[图片加载失败]"));

    QStringList paths;
    for (const ZuviRecordedRequest &request : m_services->server.requests())
        paths << request.path;
    QCOMPARE(paths, fetchedPaths);
    if (!cacheKey.isEmpty())
        QVERIFY(m_loader->hasCachedImage(cacheKey.replace("%1", base)));
}

void TestZuviImageProvider::sourceReplacedWhileLoading()
{
    // The first picture is still on its way when the item asks for another;
    // its late answer must not reach the response QML already dropped.
    ZuviScriptedAnswer slow = pngAnswer(32, 18);
    slow.delayMs = 200;
    m_services->server.setAnswer("GET", "/v/slow.png@320w_180h_1c_80q.jpg", slow);
    QQmlEngine engine;
    engine.addImageProvider(ZuviImageProvider::kProviderId, new ZuviImageProvider(m_loader.get()));
    QQmlComponent component(&engine);
    component.setData("import QtQuick\nImage { asynchronous: true }", QUrl());
    std::unique_ptr<QObject> image(component.create());
    QVERIFY(image);
    image->setProperty("source", ZuviImageProvider::sourceURL(
                                     "normal", m_services->server.urlString("/v/slow.png")));
    QTRY_COMPARE(m_services->server.requestCount(), 1);
    image->setProperty(
        "source", ZuviImageProvider::sourceURL("low", m_services->server.urlString("/v/a b.png")));
    QTRY_COMPARE(image->property("status").toInt(), 1);
    QCOMPARE(image->property("sourceSize").toSize(), QSize(16, 9));
    // The slow picture still lands in the memory cache for the next time.
    QTRY_VERIFY(m_loader->hasCachedImage(m_services->server.urlString("/v/slow.png")));
    QCOMPARE(image->property("sourceSize").toSize(), QSize(16, 9));
}

QTEST_MAIN(TestZuviImageProvider)
#include "tst_zuviimageprovider.moc"
