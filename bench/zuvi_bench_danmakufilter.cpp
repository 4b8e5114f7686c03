// Costs of the viewer's danmaku settings, paid once per list rather than per
// tick: filtering and merging a 100 000-item list through 50 block rules (10
// of them regular expressions), and the density graph's counts of the kept
// list. Texts either repeat like a real document (16 phrases) or are nearly
// all distinct, the worst case for the per-text verdict cache.
//
//   build/bin/zuvi_bench_danmakufilter
#include "danmaku/zuvidanmakudensity.h"
#include "danmaku/zuvidanmakufilter.h"

#include <benchmark/benchmark.h>

#include <QStringList>

#include <algorithm>
#include <random>

namespace {

const QStringList &phrases()
{
    static const QStringList texts = {
        "前方高能",
        "哈哈哈哈哈哈",
        "awsl",
        "这个转场太丝滑了吧",
        "第一次看到这么好看的画面，收藏了",
        "2333",
        "来了来了",
        "good job",
        "空降成功",
        "弹幕护体",
        "作者辛苦了，每一帧都是壁纸",
        "what a shot, seriously",
        "？？？",
        "名场面",
        "bgm是什么，求告知",
        "这一段我能看一百遍，真的一百遍，不骗你",
    };
    return texts;
}

QList<ZuviDanmakuItem> document(int count, bool distinctTexts)
{
    std::mt19937 random(20261124);
    std::uniform_real_distribution<double> time(0, 1200);
    QList<ZuviDanmakuItem> items;
    items.reserve(count);
    for (int i = 0; i < count; ++i) {
        ZuviDanmakuItem item;
        item.text = phrases().at(int(random() % quint32(phrases().size())));
        if (distinctTexts)
            item.text += QString::number(random() % 1000000);
        item.time = time(random);
        const quint32 roll = random() % 100;
        item.mode = roll < 80 ? 1 : roll < 90 ? 5 : 4;
        item.colorRGB = roll % 3 ? 0xFFFFFF : 0x66CCFF;
        items.append(item);
    }
    std::sort(items.begin(), items.end(),
              [](const ZuviDanmakuItem &a, const ZuviDanmakuItem &b) { return a.time < b.time; });
    return items;
}

// 40 words and 10 expressions; a few of them hit the phrases above.
ZuviDanmakuSettings blockingSettings()
{
    QStringList rules;
    for (int i = 0; i < 37; ++i)
        rules.append(QStringLiteral("屏蔽词%1").arg(i));
    rules << "AWSL"
          << "剧透"
          << "bgm";
    rules << "/^[0-9]+$/"
          << "/(哈){5,}/"
          << "/^.{40,}$/"
          << "/第[0-9]+集/"
          << "/[a-z]+\\s+[a-z]+,/"
          << "/^？+$/"
          << "/(.)\\1{6,}/"
          << "/来了.*来了/"
          << "/up主?.*(加油|辛苦)/"
          << "/^(牛|强)+$/";
    ZuviDanmakuSettings settings;
    settings.blockListText = rules.join('\n');
    settings.mergesRepeats = true;
    settings.showsBottom = false;
    return settings;
}

} // namespace

// The whole list through the kinds, 50 rules and the merge; time per item
// is the whole list's time over its items (items_per_second inverted).
static void BM_DanmakuFilterList(benchmark::State &state)
{
    const QList<ZuviDanmakuItem> items = document(100000, state.range(0) != 0);
    const ZuviDanmakuFilter filter(blockingSettings());
    if (filter.blockList().keywordCount() != 40 || filter.blockList().expressionCount() != 10) {
        state.SkipWithError("the rules did not compile as expected");
        return;
    }
    qsizetype kept = 0;
    for (auto _ : state) {
        const QList<ZuviDanmakuItem> shown = filter.apply(items);
        kept = shown.size();
        benchmark::DoNotOptimize(shown.constData());
    }
    state.SetItemsProcessed(state.iterations() * items.size());
    state.counters["kept"] = double(kept);
    state.SetLabel(state.range(0) ? "distinct texts" : "repeating texts");
}
BENCHMARK(BM_DanmakuFilterList)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

// Compiling the rules themselves, done once per settings change.
static void BM_DanmakuFilterCompile(benchmark::State &state)
{
    const ZuviDanmakuSettings settings = blockingSettings();
    for (auto _ : state) {
        ZuviDanmakuFilter filter(settings);
        benchmark::DoNotOptimize(&filter);
    }
}
BENCHMARK(BM_DanmakuFilterCompile)->Unit(benchmark::kMicrosecond);

// The density graph's counts for a 100 000-item list, 120 slices.
static void BM_DanmakuDensityCounts(benchmark::State &state)
{
    const QList<ZuviDanmakuItem> items = document(100000, false);
    for (auto _ : state) {
        const QVector<int> counts = ZuviDanmakuDensity::countsPerSlice(items, 1200, 120);
        benchmark::DoNotOptimize(counts.constData());
    }
    state.SetItemsProcessed(state.iterations() * items.size());
}
BENCHMARK(BM_DanmakuDensityCounts)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
