#include "zuvidanmakudensity.h"

#include <algorithm>

QVector<int> ZuviDanmakuDensity::countsPerSlice(const QList<ZuviDanmakuItem> &items,
                                                double duration, int sliceCount)
{
    if (items.isEmpty() || sliceCount < 1)
        return {};
    const double length = duration > 0 ? duration : items.constLast().time;
    QVector<int> counts(sliceCount, 0);
    int counted = 0;
    for (const ZuviDanmakuItem &item : items) {
        if (item.mode == 7 || item.mode == 8)
            continue;
        const double share = length > 0 ? item.time / length : 0;
        const int slice = std::clamp(int(share * sliceCount), 0, sliceCount - 1);
        ++counts[slice];
        ++counted;
    }
    if (counted == 0)
        return {};
    return counts;
}
