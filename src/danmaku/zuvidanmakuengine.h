#pragma once

#include "model/zuvidanmakuitem.h"
#include "platform/zuviidiom.h"
#include "zuvidanmakufilter.h"
#include "zuvidanmakulabel.h"
#include "zuvidanmakulanes.h"
#include "zuvidanmakusettings.h"

#include <QList>
#include <QPointF>
#include <QRgb>
#include <QSizeF>
#include <QString>

#include <functional>
#include <limits>
#include <memory>
#include <vector>

// Everything the danmaku overlay decides, without any window: which items are
// due at a playback time, which lane each label takes, how labels fly and when
// they leave, seeks, pause and resume. ZuviDanmakuOverlayView renders it.
//
// Two clocks meet here. Playback time comes in through tickAtPlaybackTime()
// and decides launches and lane release; the flight clock (wall time, in
// seconds) moves the labels. Both, and the random source and the text
// measurement, are injected so that tests drive the engine exactly.
// Main thread only.
class ZuviDanmakuEngine
{
public:
    // Seconds of wall time from an arbitrary origin; must not go backwards.
    using FlightClock = std::function<double()>;
    // A uniform integer in [0, bound) for bound >= 2.
    using RandomSource = std::function<quint32(quint32 bound)>;
    // The size of text set on one line in the bold danmaku font of that size.
    using TextMeasurer = std::function<QSizeF(const QString &text, qreal fontSize)>;

    static constexpr qreal laneHeight = 23;
    static constexpr qreal topInset = 8;
    static constexpr double lookAhead = 0.6;     // items launch up to this early
    static constexpr double lateCut = 2.5;       // items later than this are never shown
    static constexpr double replayWindow = 0.25; // a reset replays this much before the position
    static constexpr int poolLimit = 36;
    static constexpr double fixedFadeIn = 0.15;
    static constexpr double fixedHold = 3.65;
    static constexpr double fixedFadeOut = 0.2;
    static constexpr double fixedLaneHold = 4.0;
    static constexpr qreal maximumWidthFactor = 0.86;

    // What happened to the items the engine considered, for live counters.
    struct Counters {
        quint64 launched = 0;      // labels put on screen
        quint64 droppedByCap = 0;  // visible cap reached
        quint64 droppedNoLane = 0; // every lane of the kind busy
        quint64 late = 0;          // more than the late cut behind
        quint64 hidden = 0;        // modes that are never drawn
    };

    explicit ZuviDanmakuEngine(ZuviIdiom::Kind idiom = ZuviIdiom::current(), FlightClock clock = {},
                               RandomSource random = {}, TextMeasurer measurer = {});
    ~ZuviDanmakuEngine();
    ZuviDanmakuEngine(const ZuviDanmakuEngine &) = delete;
    ZuviDanmakuEngine &operator=(const ZuviDanmakuEngine &) = delete;

    // The default flight clock: monotonic seconds since first asked.
    static double monotonicSeconds();

    // Injection points; an empty function restores the default.
    void setFlightClock(FlightClock clock);
    void setRandomSource(RandomSource random);
    void setTextMeasurer(TextMeasurer measurer);

    // --- The overlay's interface -------------------------------------------
    bool isDanmakuEnabled() const { return m_enabled; }
    void setDanmakuEnabled(bool enabled);
    // Whether the view is hidden by its owner; a hidden overlay only records time.
    void setHidden(bool hidden) { m_hidden = hidden; }

    // The items shown: the list given, through the viewer's filters (the
    // same list while every filter is at its default). Indexes of the
    // tick and of firstItemIndexAtOrAfterTime() point into this list.
    const QList<ZuviDanmakuItem> &danmakuItems() const { return m_items; }
    // The list as given, before filtering.
    const QList<ZuviDanmakuItem> &sourceDanmakuItems() const { return m_sourceItems; }
    // The list must be sorted by time; the engine never sorts.
    void setDanmakuItems(const QList<ZuviDanmakuItem> &items);

    // --- The viewer's settings ---------------------------------------------
    const ZuviDanmakuSettings &danmakuSettings() const { return m_settings; }
    // Applies new settings. A change of what is shown filters the list
    // again and resets to the last position; the look (opacity, size,
    // speed, area, motion) applies from the next launch, and opacity at
    // once. Returns whether the shown list changed.
    bool setDanmakuSettings(const ZuviDanmakuSettings &settings);
    const ZuviDanmakuBlockList &blockList() const { return m_filter.blockList(); }

    void tickAtPlaybackTime(double playbackTime, bool playing);
    void resetForPlaybackTime(double playbackTime);
    void clearVisibleDanmaku();
    bool isDanmakuPaused() const { return m_paused; }
    void setDanmakuPaused(bool paused);
    QString debugStateTextForPlaybackTime(double playbackTime, bool playing) const;

    // The view's size; a change resets to the last position.
    QSizeF viewSize() const { return m_viewSize; }
    void setViewSize(const QSizeF &size);
    ZuviIdiom::Kind idiom() const { return m_idiom; }
    // A different idiom changes every metric, so it resets like a size change.
    void setIdiom(ZuviIdiom::Kind idiom);

    // --- Flights -----------------------------------------------------------
    // Ends every flight whose time is up, as animation completions would.
    // Returns how many labels left the screen.
    int completeFinishedFlights();
    // Where a visible label stands now and how opaque it is.
    QPointF currentPosition(const ZuviDanmakuLabel &label) const;
    qreal currentOpacity(const ZuviDanmakuLabel &label) const;
    // Seconds of flight the label has behind it (its local clock since launch).
    double flightElapsed(const ZuviDanmakuLabel &label) const;
    // Whether some label is on screen and its clock runs, so frames change.
    bool isAnimating() const { return !m_visible.empty() && !m_paused; }

    int visibleLabelCount() const { return static_cast<int>(m_visible.size()); }
    const ZuviDanmakuLabel &visibleLabel(int index) const { return *m_visible[size_t(index)]; }
    ZuviDanmakuLabel *visibleLabelPointer(int index) const
    {
        return m_visible[size_t(index)].get();
    }
    int reusableLabelCount() const { return static_cast<int>(m_reusable.size()); }
    // Stale completions (a token that no longer matches the tag) are ignored.
    void removeVisibleLabel(ZuviDanmakuLabel *label, int token);

    // --- State, readable for the debug line and for tests ------------------
    int nextItemIndex() const { return m_nextItemIndex; }
    double lastPlaybackTime() const { return m_lastPlaybackTime; }
    QSizeF lastLayoutSize() const { return m_lastLayoutSize; }
    // Continues the token sequence from a given value (the next token follows it).
    void setAnimationToken(int token) { m_animationToken = token; }
    const std::vector<double> &scrollLaneAvailableTimes() const
    {
        return m_lanes.availableTimes(ZuviDanmakuLanes::Scroll);
    }
    const std::vector<double> &topLaneAvailableTimes() const
    {
        return m_lanes.availableTimes(ZuviDanmakuLanes::Top);
    }
    const std::vector<double> &bottomLaneAvailableTimes() const
    {
        return m_lanes.availableTimes(ZuviDanmakuLanes::Bottom);
    }
    int nextScrollLaneIndex() const { return m_lanes.nextIndex(ZuviDanmakuLanes::Scroll); }
    const Counters &counters() const { return m_counters; }

    // --- Metrics for the current size and idiom ----------------------------
    qreal bottomInset() const;
    // The distance between lanes: the lane height, scaled with the text.
    qreal lanePitch() const { return laneHeight * m_settings.textScale(); }
    // The lanes that fit the view, then the share of them the display area allows.
    int scrollLaneCount() const;
    int fixedLaneCount() const;
    int maximumVisibleCount() const;
    qreal scrollSpeed() const;

    // --- Pure rules --------------------------------------------------------
    // Lower bound: the first index whose item time is >= time (count when none).
    int firstItemIndexAtOrAfterTime(double time) const;
    // Near-black danmaku turn white; everything else keeps its colour.
    static QRgb readableColorForItem(const ZuviDanmakuItem &item);
    // Label size from the measured text: padded, capped at maximumWidth when that is > 0.
    QSizeF sizeForLabel(const ZuviDanmakuLabel &label, qreal maximumWidth) const;
    int nextAnimationToken();
    int randomIndexWithCount(int count) const;
    qreal randomVerticalOffsetForLaneHeight(qreal laneHeight, qreal labelHeight) const;

private:
    using LabelPtr = std::unique_ptr<ZuviDanmakuLabel>;

    double now() const;
    void launchDanmakuItem(const ZuviDanmakuItem &item, double playbackTime);
    void launchScrollingDanmakuItem(const ZuviDanmakuItem &item, double playbackTime);
    void launchFixedDanmakuItem(const ZuviDanmakuItem &item, double playbackTime, bool top);
    // Without motion, a scrolling item stands still in a top lane, or a
    // bottom one when the top lanes are busy.
    bool prefersTopLaneForStillItem(double playbackTime);
    // Where the bottom lanes count upward from.
    qreal bottomLaneBase() const;
    ZuviDanmakuLabel *configuredLabelForItem(const ZuviDanmakuItem &item);
    ZuviDanmakuLabel *addVisibleLabel(LabelPtr label);
    LabelPtr dequeueLabel();
    void recycleLabel(LabelPtr label);
    void detachLabel(ZuviDanmakuLabel &label);
    double localTime(const ZuviDanmakuLabel &label) const;
    // The label's opacity along its flight, before the viewer's opacity.
    qreal flightOpacity(const ZuviDanmakuLabel &label) const;
    static double localTimeAt(const ZuviDanmakuLabel &label, double wallTime);
    // The wall time at which a running flight ends (infinity when frozen or idle).
    static double finishWallTime(const ZuviDanmakuLabel &label);
    void noteFlightStarted(const ZuviDanmakuLabel &label);
    void pauseLayer(ZuviDanmakuLabel &label) const;
    void resumeLayer(ZuviDanmakuLabel &label) const;
    static void resetLayerTiming(ZuviDanmakuLabel &label);
    double resetPositionFromLastTime() const;

    ZuviIdiom::Kind m_idiom;
    FlightClock m_clock;
    RandomSource m_random;
    TextMeasurer m_measurer;

    bool m_enabled = true;
    bool m_hidden = false;
    bool m_paused = false;
    QList<ZuviDanmakuItem> m_sourceItems;
    QList<ZuviDanmakuItem> m_items; // what is shown: m_sourceItems through m_filter
    ZuviDanmakuSettings m_settings;
    ZuviDanmakuFilter m_filter;
    std::vector<LabelPtr> m_visible;  // launch order
    std::vector<LabelPtr> m_reusable; // a stack, at most poolLimit
    ZuviDanmakuLanes m_lanes;
    int m_nextItemIndex = 0;
    double m_lastPlaybackTime = -1.0;
    int m_animationToken = 0;
    QSizeF m_viewSize;
    QSizeF m_lastLayoutSize;
    quint64 m_nextSerial = 1;
    // No flight ends before this wall time; lowered by every launch, reset
    // by pause and resume, recomputed by every full pass over the labels.
    double m_nextFinishWallTime = -std::numeric_limits<double>::infinity();
    Counters m_counters;
};
