#include "zuvidanmakulanes.h"

#include <array>

ZuviDanmakuLanes::ZuviDanmakuLanes(Picker picker) : m_picker(std::move(picker))
{
    // Reserved once, so that launching never grows a table.
    for (std::vector<double> &lanes : m_lanes)
        lanes.reserve(maximumLaneCount);
}

void ZuviDanmakuLanes::clear(int scrollLaneCount, int fixedLaneCount)
{
    m_lanes[Scroll].assign(size_t(scrollLaneCount), 0.0);
    m_lanes[Top].assign(size_t(fixedLaneCount), 0.0);
    m_lanes[Bottom].assign(size_t(fixedLaneCount), 0.0);
}

void ZuviDanmakuLanes::rewindCursors()
{
    m_cursors[Scroll] = m_cursors[Top] = m_cursors[Bottom] = 0;
}

std::vector<double> &ZuviDanmakuLanes::lanesFor(Kind kind, int laneCount)
{
    // A count that changed since the last clear keeps the lanes it shares
    // with the old one; new lanes start free.
    std::vector<double> &lanes = m_lanes[kind];
    lanes.resize(size_t(laneCount), 0.0);
    return lanes;
}

bool ZuviDanmakuLanes::hasFreeLane(Kind kind, double t, int laneCount)
{
    for (double availableAt : lanesFor(kind, laneCount)) {
        if (availableAt <= t)
            return true;
    }
    return false;
}

int ZuviDanmakuLanes::takeFreeLane(Kind kind, double t, int laneCount)
{
    const std::vector<double> &lanes = lanesFor(kind, laneCount);
    const int count = int(lanes.size());
    if (count == 0)
        return -1;
    std::array<int, maximumLaneCount> free{};
    int freeCount = 0;
    for (int lane = 0; lane < count && freeCount < maximumLaneCount; ++lane) {
        if (lanes[size_t(lane)] <= t)
            free[size_t(freeCount++)] = lane;
    }
    if (freeCount == 0)
        return -1;
    const int lane = free[size_t(m_picker(freeCount))];
    m_cursors[kind] = (lane + 1) % count;
    return lane;
}

void ZuviDanmakuLanes::occupy(Kind kind, int lane, double until)
{
    m_lanes[kind][size_t(lane)] = until;
}
