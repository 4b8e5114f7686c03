// Costs of the danmaku overlay: the engine's tick over a long dense replay
// (with the heap allocations made in steady state), at the default settings
// and with every viewer setting moved, configuring one label
// (measure and rasterise), the tick right after a seek that fills the
// screen, and the render-thread time of a frame with a full screen of labels.
//
//   QT_QPA_PLATFORM=offscreen build/bin/zuvi_bench_danmakuoverlay
//   xvfb-run -a build/bin/zuvi_bench_danmakuoverlay --benchmark_filter=Frame   (GL frames)
#include "danmaku/zuvidanmakuengine.h"
#include "danmaku/zuvidanmakulabelpainter.h"
#include "danmaku/zuvidanmakuoverlayview.h"

#include <benchmark/benchmark.h>

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QQuickWindow>
#include <QSGRendererInterface>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <random>
#include <time.h>
#include <vector>

// --- Heap allocation counting ----------------------------------------------
// malloc and friends are interposed for the whole process (Qt's containers
// and operator new all end here); only the benchmark thread's calls are
// counted, and only while it asks for it.
extern "C" {
void *__libc_malloc(size_t size);
void *__libc_calloc(size_t count, size_t size);
void *__libc_realloc(void *pointer, size_t size);
void *__libc_memalign(size_t alignment, size_t size);
void __libc_free(void *pointer);
}

namespace {
thread_local bool countingAllocations = false;
thread_local quint64 allocationCount = 0;

inline void noteAllocation()
{
    if (countingAllocations)
        ++allocationCount;
}
} // namespace

extern "C" {
void *malloc(size_t size)
{
    noteAllocation();
    return __libc_malloc(size);
}
void *calloc(size_t count, size_t size)
{
    noteAllocation();
    return __libc_calloc(count, size);
}
void *realloc(void *pointer, size_t size)
{
    noteAllocation();
    return __libc_realloc(pointer, size);
}
void *aligned_alloc(size_t alignment, size_t size)
{
    noteAllocation();
    return __libc_memalign(alignment, size);
}
int posix_memalign(void **out, size_t alignment, size_t size)
{
    noteAllocation();
    *out = __libc_memalign(alignment, size);
    return *out ? 0 : 12; // ENOMEM
}
void free(void *pointer)
{
    __libc_free(pointer);
}
}

namespace {

// --- A dense document ----------------------------------------------------

const QStringList &sampleTexts()
{
    static const QStringList texts = {
        QStringLiteral("前方高能"),
        QStringLiteral("哈哈哈哈哈哈"),
        QStringLiteral("awsl"),
        QStringLiteral("这个转场太丝滑了吧"),
        QStringLiteral("第一次看到这么好看的画面，收藏了"),
        QStringLiteral("2333"),
        QStringLiteral("来了来了"),
        QStringLiteral("good job"),
        QStringLiteral("空降成功"),
        QStringLiteral("弹幕护体"),
        QStringLiteral("作者辛苦了，每一帧都是壁纸"),
        QStringLiteral("what a shot, seriously"),
        QStringLiteral("？？？"),
        QStringLiteral("名场面"),
        QStringLiteral("bgm是什么，求告知"),
        QStringLiteral("这一段我能看一百遍，真的一百遍，不骗你"),
    };
    return texts;
}

// count items spread over seconds: mostly scrolling, some top and bottom,
// a few of the never-drawn modes; sorted by time.
QList<ZuviDanmakuItem> denseDocument(int count, double seconds)
{
    std::mt19937 random(20261122);
    std::uniform_real_distribution<double> time(0, seconds);
    std::uniform_int_distribution<int> percent(0, 99);
    const QStringList &texts = sampleTexts();
    QList<ZuviDanmakuItem> items;
    items.reserve(count);
    for (int i = 0; i < count; ++i) {
        ZuviDanmakuItem item;
        item.text = texts.at(int(random() % quint32(texts.size())));
        item.time = time(random);
        const int roll = percent(random);
        item.mode = roll < 78 ? 1 : roll < 87 ? 5 : roll < 96 ? 4 : roll < 98 ? 7 : 8;
        item.fontSize = float(13 + random() % 8);
        item.colorRGB = percent(random) < 70 ? 0xFFFFFF : random() % 0x1000000;
        items.append(item);
    }
    std::sort(items.begin(), items.end(),
              [](const ZuviDanmakuItem &a, const ZuviDanmakuItem &b) { return a.time < b.time; });
    return items;
}

quint32 xorshift(quint32 bound)
{
    static quint32 state = 2463534242u;
    state ^= state << 13;
    state ^= state >> 17;
    state ^= state << 5;
    return state % bound;
}

// A measurement stand-in of the right shape, so that the tick's own logic is
// what the replay measures (measuring text is a configuration cost, below).
QSizeF approximateSize(const QString &text, qreal fontSize)
{
    return QSizeF(0.95 * fontSize * text.size(), 1.2 * fontSize);
}

double threadCpuSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) + double(now.tv_nsec) * 1e-9;
}

double percentile(std::vector<double> values, double fraction)
{
    std::sort(values.begin(), values.end());
    return values[std::min(values.size() - 1, size_t(fraction * double(values.size())))];
}

} // namespace

// 100 000 items over 20 minutes, replayed at 60 ticks per second on a
// 1920×1080 pad overlay; flights run on a flight clock moved with playback.
// The viewer's settings are applied before the replay, as when a video loads.
static void replayTicks(benchmark::State &state, const ZuviDanmakuSettings &settings)
{
    const QList<ZuviDanmakuItem> items = denseDocument(100000, 1200);
    const int ticks = 1200 * 60;
    const int warmUp = 30 * 60; // the pool fills in the first seconds
    std::vector<double> costs(static_cast<size_t>(ticks));
    quint64 steadyAllocations = 0;
    ZuviDanmakuEngine::Counters counters;
    for (auto _ : state) {
        double wall = 1000;
        ZuviDanmakuEngine engine(
            ZuviIdiom::Pad, [&wall] { return wall; }, xorshift, approximateSize);
        engine.setViewSize(QSizeF(1920, 1080));
        engine.setDanmakuSettings(settings);
        engine.setDanmakuItems(items);
        allocationCount = 0;
        for (int tick = 0; tick < ticks; ++tick) {
            const double t = tick / 60.0;
            countingAllocations = tick >= warmUp;
            const auto start = std::chrono::steady_clock::now();
            engine.tickAtPlaybackTime(t, true);
            const auto end = std::chrono::steady_clock::now();
            countingAllocations = false;
            costs[size_t(tick)] = std::chrono::duration<double, std::nano>(end - start).count();
            wall += 1.0 / 60;
        }
        steadyAllocations = allocationCount;
        counters = engine.counters();
    }
    double total = 0;
    for (double cost : costs)
        total += cost;
    state.counters["tick_mean_ns"] = total / ticks;
    state.counters["tick_median_ns"] = percentile(costs, 0.5);
    state.counters["tick_p99_ns"] = percentile(costs, 0.99);
    state.counters["tick_max_ns"] = percentile(costs, 1.0);
    state.counters["steady_allocs"] = double(steadyAllocations);
    state.counters["launched"] = double(counters.launched);
    state.counters["dropped_cap"] = double(counters.droppedByCap);
    state.counters["dropped_lane"] = double(counters.droppedNoLane);
    state.counters["late"] = double(counters.late);
    state.counters["never_drawn"] = double(counters.hidden);
}

// Every setting at its default: the overlay as it always was.
static void BM_DanmakuReplayTick(benchmark::State &state)
{
    replayTicks(state, ZuviDanmakuSettings());
}
BENCHMARK(BM_DanmakuReplayTick)->Unit(benchmark::kMillisecond)->Iterations(3);

// Every setting moved: 50 block rules (10 expressions), merged repeats, no
// bottom items, 60 % opacity, 120 % text, 1.5× speed, three quarters of
// the lanes. The filtering happens once, before the ticks; the ticks walk
// the shorter kept list.
static void BM_DanmakuReplayTickFiltered(benchmark::State &state)
{
    QStringList rules;
    for (int i = 0; i < 40; ++i)
        rules.append(i % 10 == 0 ? sampleTexts().at(i / 10) : QStringLiteral("屏蔽%1").arg(i));
    for (int i = 0; i < 10; ++i)
        rules.append(QStringLiteral("/^%1[0-9]*$/").arg(i));
    ZuviDanmakuSettings settings;
    settings.blockListText = rules.join('\n');
    settings.mergesRepeats = true;
    settings.showsBottom = false;
    settings.opacityPercent = 60;
    settings.textScalePercent = 120;
    settings.speed = 1.5;
    settings.displayArea = ZuviDanmakuSettings::ThreeQuartersArea;
    replayTicks(state, settings);
}
BENCHMARK(BM_DanmakuReplayTickFiltered)->Unit(benchmark::kMillisecond)->Iterations(3);

// Measuring and rasterising one label, as every launch does.
static void BM_DanmakuConfigureLabel(benchmark::State &state)
{
    const QStringList &texts = sampleTexts();
    ZuviDanmakuEngine engine(ZuviIdiom::Pad, {}, xorshift);
    ZuviDanmakuLabel label;
    label.color = 0xFFFFFFFF;
    int next = 0;
    for (auto _ : state) {
        label.text = texts.at(next % texts.size());
        label.fontSize = 13 + next % 8;
        ++next;
        label.size = engine.sizeForLabel(label, 0.86 * 1920);
        const QImage image = ZuviDanmakuLabelPainter::rasterise(label, 1.0);
        benchmark::DoNotOptimize(image.constBits());
    }
}
BENCHMARK(BM_DanmakuConfigureLabel)->Unit(benchmark::kMicrosecond);

// The tick right after a seek: the screen is cleared and the items of the
// look-back and look-ahead fill every free lane, each label measured and
// rasterised as in the running overlay. Timed in thread CPU time, so that
// other processes on a shared machine do not count; wall time is reported
// beside it.
static void BM_DanmakuSeekTick(benchmark::State &state)
{
    const QList<ZuviDanmakuItem> items = denseDocument(100000, 1200);
    ZuviDanmakuEngine engine(ZuviIdiom::Pad, {}, xorshift);
    engine.setViewSize(QSizeF(1920, 1080));
    engine.setDanmakuItems(items);
    double worstCpu = 0;
    double worstWarmCpu = 0; // after the first seek, which also fills the font caches
    double worstWall = 0;
    double totalCpu = 0;
    quint64 launchedTotal = 0;
    int seeks = 0;
    for (auto _ : state) {
        const double target = 30 + (seeks * 37) % 1100; // far from the previous position
        const quint64 before = engine.counters().launched;
        const double cpuStart = threadCpuSeconds();
        const auto wallStart = std::chrono::steady_clock::now();
        engine.tickAtPlaybackTime(target, true);
        // The overlay rasterises each new label as the next frame makes its
        // node; after a seek every label on screen is new.
        for (int i = 0; i < engine.visibleLabelCount(); ++i) {
            const QImage image = ZuviDanmakuLabelPainter::rasterise(engine.visibleLabel(i), 1.0);
            benchmark::DoNotOptimize(image.constBits());
        }
        const auto wallEnd = std::chrono::steady_clock::now();
        const double cpu = threadCpuSeconds() - cpuStart;
        state.SetIterationTime(cpu);
        worstCpu = std::max(worstCpu, cpu);
        if (seeks > 0)
            worstWarmCpu = std::max(worstWarmCpu, cpu);
        worstWall = std::max(worstWall, std::chrono::duration<double>(wallEnd - wallStart).count());
        totalCpu += cpu;
        launchedTotal += engine.counters().launched - before;
        ++seeks;
    }
    state.counters["worst_cpu_ms"] = worstCpu * 1e3;
    state.counters["worst_warm_cpu_ms"] = worstWarmCpu * 1e3;
    state.counters["worst_wall_ms"] = worstWall * 1e3;
    state.counters["mean_cpu_ms"] = totalCpu / seeks * 1e3;
    state.counters["labels_per_seek"] = double(launchedTotal) / seeks;
}
BENCHMARK(BM_DanmakuSeekTick)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(200);

// Render-thread CPU time of real frames (sync + render, before the swap) of a
// 1920×1080 window holding only the overlay, counted over frames that show
// exactly the given number of labels: 42 (the pad cap, reached a few seconds
// into a dense stream) or 0 (the same window's frame without danmaku, the
// baseline). The window is repainted at 60 Hz either way; runs a real event
// loop for some seconds.
static void BM_DanmakuFrame(benchmark::State &state)
{
    const int wanted = int(state.range(0));
    const QList<ZuviDanmakuItem> items =
        wanted > 0 ? denseDocument(20000, 240) : QList<ZuviDanmakuItem>();
    QQuickWindow window;
    window.setColor(Qt::black);
    window.resize(1920, 1080);
    ZuviDanmakuOverlayView overlay(window.contentItem());
    overlay.setSize(QSizeF(1920, 1080));
    overlay.setPadIdiom(true);
    overlay.setDanmakuItems(items);

    // Both callbacks run on the render thread: its CPU time between them is
    // what the frame cost that thread, whatever else the machine runs.
    std::vector<double> frameCpu;
    std::vector<double> frameWall;
    frameCpu.reserve(4096);
    frameWall.reserve(4096);
    std::atomic<int> visibleAtSync{0};
    double syncCpu = 0;
    std::chrono::steady_clock::time_point syncWall;
    QObject::connect(
        &window, &QQuickWindow::beforeSynchronizing, &window,
        [&] {
            syncWall = std::chrono::steady_clock::now();
            syncCpu = threadCpuSeconds();
            visibleAtSync = overlay.visibleCount();
        },
        Qt::DirectConnection);
    QObject::connect(
        &window, &QQuickWindow::afterRendering, &window,
        [&] {
            const double cpu = threadCpuSeconds() - syncCpu;
            const auto wall = std::chrono::steady_clock::now() - syncWall;
            if (visibleAtSync == wanted) {
                frameCpu.push_back(cpu * 1e6);
                frameWall.push_back(std::chrono::duration<double, std::micro>(wall).count());
            }
        },
        Qt::DirectConnection);

    QElapsedTimer playback;
    QTimer ticks;
    ticks.setInterval(120);
    QObject::connect(&ticks, &QTimer::timeout, &overlay, [&] {
        overlay.tickAtPlaybackTime(20 + playback.nsecsElapsed() * 1e-9, true);
    });
    QTimer repaint;
    repaint.setInterval(16);
    QObject::connect(&repaint, &QTimer::timeout, &window, &QQuickWindow::update);
    window.show();
    playback.start();
    overlay.tickAtPlaybackTime(20, true);
    ticks.start();
    repaint.start();

    for (auto _ : state) {
        QEventLoop loop;
        QTimer::singleShot(wanted > 0 ? 15000 : 4000, &loop, &QEventLoop::quit);
        loop.exec();
    }
    if (frameCpu.empty()) {
        state.SkipWithError("no frame showed the wanted number of labels");
        return;
    }
    double total = 0;
    for (double cost : frameCpu)
        total += cost;
    state.counters["frames"] = double(frameCpu.size());
    state.counters["frame_cpu_mean_us"] = total / double(frameCpu.size());
    state.counters["frame_cpu_median_us"] = percentile(frameCpu, 0.5);
    state.counters["frame_cpu_p99_us"] = percentile(frameCpu, 0.99);
    state.counters["frame_wall_median_us"] = percentile(frameWall, 0.5);
    state.SetLabel(QSGRendererInterface::GraphicsApi(window.rendererInterface()->graphicsApi()) ==
                           QSGRendererInterface::Software
                       ? "software"
                       : "hardware api");
}
BENCHMARK(BM_DanmakuFrame)->Arg(0)->Arg(42)->Unit(benchmark::kMillisecond)->Iterations(1);

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") && qEnvironmentVariableIsEmpty("DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
