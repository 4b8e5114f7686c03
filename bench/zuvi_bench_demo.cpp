// Costs of the demo service's work that a user waits for: generating the
// content at start-up, writing the densest danmaku document, and drawing
// and encoding a cover thumbnail (the first time; later asks hit a cache).
#include "zuvidemocontent.h"
#include "zuvidemoimagerenderer.h"

#include <benchmark/benchmark.h>

static void BM_GenerateContent(benchmark::State &state)
{
    for (auto _ : state) {
        ZuviDemoContent content(1);
        benchmark::DoNotOptimize(content.videos().size());
    }
}
BENCHMARK(BM_GenerateContent)->Unit(benchmark::kMillisecond);

static void BM_DensestDanmakuDocument(benchmark::State &state)
{
    const ZuviDemoContent content(1);
    const ZuviDemoVideo *dense = &content.videos().first();
    for (const ZuviDemoVideo &video : content.videos()) {
        if (video.danmakuDocumentSize > dense->danmakuDocumentSize)
            dense = &video;
    }
    const qint64 cid = dense->pages.first().cid;
    for (auto _ : state) {
        const QByteArray document = ZuviDemoContent::danmakuDocument(cid, content.danmaku(cid));
        benchmark::DoNotOptimize(document.size());
    }
    state.counters["items"] = dense->danmakuDocumentSize;
}
BENCHMARK(BM_DensestDanmakuDocument)->Unit(benchmark::kMillisecond);

static void BM_CoverThumbnail(benchmark::State &state)
{
    int key = 0;
    ZuviDemoImageRenderer renderer(1);
    for (auto _ : state) {
        // A new key each time, so that the cache never answers.
        const QByteArray jpeg =
            renderer.jpeg(ZuviDemoImageRenderer::Cover, QStringLiteral("BV1bench%1").arg(++key),
                          QSize(int(state.range(0)), int(state.range(1))), 80);
        benchmark::DoNotOptimize(jpeg.size());
    }
}
BENCHMARK(BM_CoverThumbnail)
    ->Args({320, 180})
    ->Args({160, 90})
    ->Args({960, 540})
    ->Unit(benchmark::kMillisecond);
