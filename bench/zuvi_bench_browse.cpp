// The ranking tab re-sorts a full region list (50 entries) from the
// service's order on every region switch and every appearance with a count
// order chosen, reading each count text ("9999", "1.2万", "3亿") as it goes.
#include "browse/zuvihotviewcontroller.h"

#include <benchmark/benchmark.h>

static QList<ZuviVideoItem> regionList()
{
    const QStringList units{"", "万", "亿"};
    QList<ZuviVideoItem> videos;
    for (int i = 0; i < ZuviHotViewController::kPageSize; ++i) {
        ZuviVideoItem item;
        item.bvid = QStringLiteral("BV%1").arg(i);
        item.playCountText = QString::number((i * 7919 % 9973) / 10.0) + units[i % 3];
        item.commentCountText = QString::number(i * 31 % 997) + units[(i + 1) % 2];
        videos.append(item);
    }
    return videos;
}

static void BM_HotSortRegionList(benchmark::State &state)
{
    const QList<ZuviVideoItem> videos = regionList();
    const int mode = int(state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(ZuviHotViewController::sortedVideosFromVideos(videos, mode));
    state.SetItemsProcessed(state.iterations() * videos.size());
}
BENCHMARK(BM_HotSortRegionList)
    ->Arg(ZuviHotViewController::SortByPlayCount)
    ->Arg(ZuviHotViewController::SortByCommentCount);
