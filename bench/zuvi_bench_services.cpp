// Costs of the services' per-item work: every cover in a grid goes through
// the address rules, the login screen draws one QR image per key, and each
// configuration refresh parses a document and may write the cache metadata.
#include "account/zuviqrcodeimagegenerator.h"
#include "config/zuvipropertylist.h"
#include "config/zuviremoteconfig.h"
#include "config/zuviremoteconfigmessage.h"
#include "images/zuviimageloader.h"
#include "images/zuviimageurl.h"

#include <benchmark/benchmark.h>

#include <QDateTime>
#include <QImage>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QThread>

static void BM_ImageAddressRules(benchmark::State &state)
{
    const QVariant covers[] = {
        QVariant(QStringLiteral("//img.cdn.test/covers/3f2a9c0d1e.jpg")),
        QVariant(QStringLiteral(" http://127.0.0.1:8470/covers/封面 12.png?v=3\n")),
        QVariant(QStringLiteral("https://cdn.test/a/b.png@100w.jpg"))};
    for (auto _ : state) {
        for (const QVariant &cover : covers) {
            const QString normalized = ZuviImageURL::normalizedURLString(cover);
            benchmark::DoNotOptimize(
                ZuviImageURL::thumbnailURLStringForURLString(normalized, 320, 180, 80));
        }
    }
    state.SetItemsProcessed(state.iterations() * 3);
}
BENCHMARK(BM_ImageAddressRules);

static void BM_QRCodeImage(benchmark::State &state)
{
    const QString loginURL =
        "http://127.0.0.1:8470/login/confirm?qrcode_key=8f14e45fceea167a5a36dedd4bea2543";
    for (auto _ : state)
        benchmark::DoNotOptimize(ZuviQRCodeImageGenerator::imageWithString(loginURL, 260));
}
BENCHMARK(BM_QRCodeImage)->Unit(benchmark::kMicrosecond);

static void BM_ParseConfigAndMessage(benchmark::State &state)
{
    const QByteArray document =
        R"({"message":{"version":"7","image":" http://127.0.0.1:8470/m.png ","text":"维护通知：今晚 23:00 起暂停服务一小时。"},)"
        R"("features":{"danmaku":true,"hot":["all","game","music"]},"updatedAt":"2026-11-22"})";
    for (auto _ : state) {
        ZuviError error;
        const auto config = ZuviRemoteConfig::parseConfigFromData(document, &error);
        benchmark::DoNotOptimize(
            ZuviRemoteConfigMessage::messageWithDictionary(config->value("message")));
    }
}
BENCHMARK(BM_ParseConfigAndMessage);

static void BM_CacheMetadataRoundTrip(benchmark::State &state)
{
    const QVariantMap metadata{{"sourceURL", "http://127.0.0.1:8470/config.json"},
                               {"etag", "\"5f1c-62a0b\""},
                               {"lastModified", "Sat, 21 Nov 2026 10:00:00 GMT"},
                               {"cachedAt", QDateTime::currentDateTimeUtc()}};
    for (auto _ : state) {
        const QByteArray xml = ZuviPropertyList::xmlDataFromDictionary(metadata);
        benchmark::DoNotOptimize(ZuviPropertyList::dictionaryFromXmlData(xml));
    }
}
BENCHMARK(BM_CacheMetadataRoundTrip);

// A grid cell that scrolls back into view: a memory-cache hit. The cache is
// warmed from a local file (its thumbnail address does not exist, so the
// loader falls back to the file itself and stores it under the cell's key).
static void BM_ImageLoaderMemoryHit(benchmark::State &state)
{
    QTemporaryDir dir;
    QImage picture(320, 180, QImage::Format_RGB32);
    picture.fill(Qt::darkCyan);
    const QString path = dir.filePath("cover.png");
    picture.save(path);
    const QString address = QUrl::fromLocalFile(path).toString();

    ZuviImageLoader loader(nullptr, ZuviEndpoints::defaults(), nullptr);
    loader.loadImageWithURLString(address, ZuviImageLoader::Completion());
    const QString key = ZuviImageLoader::normalizedURLString(address);
    for (int i = 0; i < 500 && !loader.hasCachedImage(key); ++i)
        QThread::msleep(2);
    if (!loader.hasCachedImage(key)) {
        state.SkipWithError("the cache could not be warmed");
        return;
    }
    for (auto _ : state)
        loader.loadImageWithURLString(address, ZuviImageLoader::Completion());
}
BENCHMARK(BM_ImageLoaderMemoryHit);
