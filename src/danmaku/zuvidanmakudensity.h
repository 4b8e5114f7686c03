#pragma once

#include "model/zuvidanmakuitem.h"

#include <QList>
#include <QVector>

// How many danmaku fall in each slice of a video, for the graph along the
// seek bar. Counted from the list the overlay shows (after the viewer's
// filters); items that are never drawn do not count.
class ZuviDanmakuDensity
{
public:
    // sliceCount equal slices of duration seconds; a duration that is not
    // above 0 (not known yet) stretches to the last item's time. Items past
    // the end count in the last slice. Empty when there is nothing to count.
    static QVector<int> countsPerSlice(const QList<ZuviDanmakuItem> &items, double duration,
                                       int sliceCount);
};
