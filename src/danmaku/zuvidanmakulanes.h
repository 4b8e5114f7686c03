#pragma once

#include <functional>
#include <vector>

// The danmaku engine's lane bookkeeping. Labels fly in horizontal lanes of
// three kinds: scrolling lanes, still lanes counted down from the top and
// still lanes counted up from the bottom. Each lane holds the playback time
// at which it takes a new label; a lane is free once that time has come.
//
// The lane counts follow the view (its size, the idiom, the viewer's area),
// so every call names the count it expects and the table grows or shrinks
// to it. Which free lane a label takes is random, through the picker given.
// Main thread only.
class ZuviDanmakuLanes
{
public:
    enum Kind { Scroll, Top, Bottom };

    // Lane tables never hold more lanes than the largest scroll lane count.
    static constexpr int maximumLaneCount = 14;

    // An index in [0, count) for count >= 1, uniformly chosen.
    using Picker = std::function<int(int count)>;

    explicit ZuviDanmakuLanes(Picker picker);

    // Every lane free again, the tables sized to the counts given. The
    // cursors stay where they were: only a reset of position rewinds them.
    void clear(int scrollLaneCount, int fixedLaneCount);
    void rewindCursors();

    // Whether some lane of the kind is free at playback time t.
    bool hasFreeLane(Kind kind, double t, int laneCount);
    // A free lane of the kind, chosen at random among the free ones, or -1
    // when all are busy (the caller drops the item: nothing waits for a lane).
    int takeFreeLane(Kind kind, double t, int laneCount);
    // The lane stays busy until playback time `until`.
    void occupy(Kind kind, int lane, double until);

    const std::vector<double> &availableTimes(Kind kind) const { return m_lanes[kind]; }
    // The lane after the one last taken (bookkeeping only; the choice never reads it).
    int nextIndex(Kind kind) const { return m_cursors[kind]; }

private:
    std::vector<double> &lanesFor(Kind kind, int laneCount);

    Picker m_picker;
    std::vector<double> m_lanes[3];
    int m_cursors[3] = {0, 0, 0};
};
