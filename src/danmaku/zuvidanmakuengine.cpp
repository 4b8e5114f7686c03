#include "zuvidanmakuengine.h"

#include "zuvidanmakulabelpainter.h"

#include <QElapsedTimer>
#include <QRandomGenerator>

#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>

namespace {

quint32 systemRandom(quint32 bound)
{
    return QRandomGenerator::global()->bounded(bound);
}

} // namespace

double ZuviDanmakuEngine::monotonicSeconds()
{
    static QElapsedTimer timer = [] {
        QElapsedTimer started;
        started.start();
        return started;
    }();
    return double(timer.nsecsElapsed()) * 1e-9;
}

ZuviDanmakuEngine::ZuviDanmakuEngine(ZuviIdiom::Kind idiom, FlightClock clock, RandomSource random,
                                     TextMeasurer measurer)
    : m_idiom(idiom), m_lanes([this](int count) { return randomIndexWithCount(count); })
{
    setFlightClock(std::move(clock));
    setRandomSource(std::move(random));
    setTextMeasurer(std::move(measurer));
    // Reserved once, so that launching and recycling never grow a container.
    m_visible.reserve(64);
    m_reusable.reserve(poolLimit);
}

ZuviDanmakuEngine::~ZuviDanmakuEngine() = default;

void ZuviDanmakuEngine::setFlightClock(FlightClock clock)
{
    m_clock = clock ? std::move(clock) : FlightClock(monotonicSeconds);
}

void ZuviDanmakuEngine::setRandomSource(RandomSource random)
{
    m_random = random ? std::move(random) : RandomSource(systemRandom);
}

void ZuviDanmakuEngine::setTextMeasurer(TextMeasurer measurer)
{
    m_measurer =
        measurer ? std::move(measurer) : TextMeasurer(ZuviDanmakuLabelPainter::measureText);
}

double ZuviDanmakuEngine::now() const
{
    return m_clock();
}

// --- Switches and list -----------------------------------------------------

double ZuviDanmakuEngine::resetPositionFromLastTime() const
{
    return m_lastPlaybackTime > 0 ? m_lastPlaybackTime : 0;
}

void ZuviDanmakuEngine::setDanmakuEnabled(bool enabled)
{
    m_enabled = enabled;
    m_hidden = !enabled;
    if (!enabled)
        clearVisibleDanmaku();
    else
        resetForPlaybackTime(resetPositionFromLastTime());
}

void ZuviDanmakuEngine::setDanmakuItems(const QList<ZuviDanmakuItem> &items)
{
    m_sourceItems = items;
    m_items = m_filter.apply(items);
    resetForPlaybackTime(resetPositionFromLastTime());
}

bool ZuviDanmakuEngine::setDanmakuSettings(const ZuviDanmakuSettings &settings)
{
    const ZuviDanmakuSettings next = settings.clamped();
    const bool refilter = !next.filtersLike(m_settings);
    m_settings = next;
    if (!refilter)
        return false;
    m_filter = ZuviDanmakuFilter(next);
    m_items = m_filter.apply(m_sourceItems);
    resetForPlaybackTime(resetPositionFromLastTime());
    return true;
}

void ZuviDanmakuEngine::setViewSize(const QSizeF &size)
{
    m_viewSize = size;
    if (size != m_lastLayoutSize)
        resetForPlaybackTime(resetPositionFromLastTime());
}

void ZuviDanmakuEngine::setIdiom(ZuviIdiom::Kind idiom)
{
    if (idiom == m_idiom)
        return;
    m_idiom = idiom;
    resetForPlaybackTime(resetPositionFromLastTime());
}

// --- Metrics ---------------------------------------------------------------

qreal ZuviDanmakuEngine::bottomInset() const
{
    return m_viewSize.height() >= 180 ? 46 : 30;
}

int ZuviDanmakuEngine::scrollLaneCount() const
{
    const double lanes = std::floor((m_viewSize.height() - topInset - bottomInset()) / lanePitch());
    const int ceiling = m_idiom == ZuviIdiom::Pad ? 14 : 8;
    const int fitting = int(std::clamp(lanes, 1.0, double(ceiling)));
    // The area is a share of the lanes, so that half the area is half the
    // lanes on every screen, however many the ceiling left.
    return std::max(1, fitting * m_settings.displayArea / ZuviDanmakuSettings::FullArea);
}

int ZuviDanmakuEngine::fixedLaneCount() const
{
    const int scroll = scrollLaneCount();
    if (scroll < 2)
        return 1;
    // Without motion every item stands still, so the still lanes take over
    // the room the scrolling ones leave, half above and half below.
    if (m_settings.reducedMotion)
        return scroll / 2;
    return std::min(scroll / 2, 3);
}

int ZuviDanmakuEngine::maximumVisibleCount() const
{
    return m_idiom == ZuviIdiom::Pad ? 42 : 24;
}

qreal ZuviDanmakuEngine::scrollSpeed() const
{
    return m_idiom == ZuviIdiom::Pad ? 88 : 76;
}

// --- The heartbeat ---------------------------------------------------------

void ZuviDanmakuEngine::tickAtPlaybackTime(double t, bool playing)
{
    // Flights that ended since the last tick leave first, as their
    // completions would have run before this tick.
    completeFinishedFlights();
    if (!m_enabled || m_hidden) {
        m_lastPlaybackTime = t;
        return;
    }
    if (!playing) {
        // The last playback time stays as it was on purpose: the first
        // playing tick after a pause is measured against the last playing one.
        setDanmakuPaused(true);
        return;
    }
    setDanmakuPaused(false);
    if (m_items.isEmpty() || !(m_viewSize.width() > 0) || !(m_viewSize.height() > 0)) {
        m_lastPlaybackTime = t;
        return;
    }
    if (m_lastPlaybackTime >= 0) {
        const bool steppedBack = t < m_lastPlaybackTime - 0.4;
        const bool jumped = std::fabs(t - m_lastPlaybackTime) > 1.5;
        if (steppedBack || jumped)
            resetForPlaybackTime(t);
    }
    const int count = int(m_items.size());
    const int cap = maximumVisibleCount();
    while (m_nextItemIndex < count) {
        const ZuviDanmakuItem &item = m_items.at(m_nextItemIndex);
        if (item.time > t + lookAhead)
            break;
        ++m_nextItemIndex; // consumed, whatever follows
        if (item.time < t - lateCut)
            ++m_counters.late;
        else if (int(m_visible.size()) < cap)
            launchDanmakuItem(item, t);
        else
            ++m_counters.droppedByCap;
    }
    m_lastPlaybackTime = t;
}

void ZuviDanmakuEngine::resetForPlaybackTime(double t)
{
    m_lastLayoutSize = m_viewSize;
    clearVisibleDanmaku();
    m_lastPlaybackTime = t;
    const double from = t - replayWindow;
    m_nextItemIndex = firstItemIndexAtOrAfterTime(from > 0 ? from : 0);
    m_lanes.rewindCursors();
}

void ZuviDanmakuEngine::clearVisibleDanmaku()
{
    // Detach every label before recycling any, so that the list is empty
    // while labels go back to the pool.
    std::vector<LabelPtr> snapshot;
    snapshot.swap(m_visible);
    for (LabelPtr &label : snapshot) {
        detachLabel(*label);
        recycleLabel(std::move(label));
    }
    snapshot.clear();
    // Keep the reserved storage for the next launches.
    m_visible.swap(snapshot);
    m_lanes.clear(scrollLaneCount(), fixedLaneCount());
}

int ZuviDanmakuEngine::firstItemIndexAtOrAfterTime(double time) const
{
    int low = 0;
    int high = int(m_items.size());
    while (low < high) {
        const int probe = low + (high - low) / 2;
        if (m_items.at(probe).time < time)
            low = probe + 1;
        else
            high = probe;
    }
    return low;
}

QString ZuviDanmakuEngine::debugStateTextForPlaybackTime(double t, bool playing) const
{
    const bool hasNext = m_nextItemIndex >= 0 && m_nextItemIndex < m_items.size();
    const QString next =
        hasNext ? QString::number(m_items.at(m_nextItemIndex).time, 'f', 1) : QStringLiteral("--");
    return QStringLiteral("tick %1 %2 next %3 %4/%5 vis %6 lanes %7")
        .arg(QString::number(t, 'f', 1), playing ? QStringLiteral("play") : QStringLiteral("hold"),
             next)
        .arg(m_nextItemIndex)
        .arg(m_items.size())
        .arg(m_visible.size())
        .arg(scrollLaneCount());
}

// --- Launching -------------------------------------------------------------

void ZuviDanmakuEngine::launchDanmakuItem(const ZuviDanmakuItem &item, double t)
{
    switch (item.mode) {
    case 7:
    case 8:
        ++m_counters.hidden;
        break;
    case 5:
        launchFixedDanmakuItem(item, t, true);
        break;
    case 4:
        launchFixedDanmakuItem(item, t, false);
        break;
    default:
        if (m_settings.reducedMotion)
            launchFixedDanmakuItem(item, t, prefersTopLaneForStillItem(t));
        else
            launchScrollingDanmakuItem(item, t);
        break;
    }
}

bool ZuviDanmakuEngine::prefersTopLaneForStillItem(double t)
{
    return m_lanes.hasFreeLane(ZuviDanmakuLanes::Top, t, fixedLaneCount());
}

qreal ZuviDanmakuEngine::bottomLaneBase() const
{
    // In a reduced area the bottom lanes close the lane band from below,
    // so nothing is drawn outside the area.
    if (m_settings.displayArea < ZuviDanmakuSettings::FullArea)
        return topInset + scrollLaneCount() * lanePitch();
    return m_viewSize.height() - bottomInset();
}

void ZuviDanmakuEngine::launchScrollingDanmakuItem(const ZuviDanmakuItem &item, double t)
{
    const int lane = m_lanes.takeFreeLane(ZuviDanmakuLanes::Scroll, t, scrollLaneCount());
    if (lane < 0) {
        ++m_counters.droppedNoLane;
        return;
    }
    ZuviDanmakuLabel *label = configuredLabelForItem(item);
    const qreal width = m_viewSize.width();
    label->size = sizeForLabel(*label, maximumWidthFactor * width);
    const qreal pitch = lanePitch();
    const qreal y =
        lane * pitch + topInset + randomVerticalOffsetForLaneHeight(pitch, label->size.height());
    label->origin = QPointF(width, y); // just beyond the right edge
    label->alpha = 1;

    const qreal labelWidth = label->size.width();
    const qreal distance = width + labelWidth;
    // The viewer's speed scales the flight after the clamps, so it shows on
    // every screen width, even where the clamps would have swallowed it.
    const double duration =
        std::clamp(double(distance / scrollSpeed()), 5.5, 9.0) / m_settings.speed;
    // The lane frees when the tail has cleared the right edge, plus a gap.
    m_lanes.occupy(ZuviDanmakuLanes::Scroll, lane,
                   t + double(labelWidth / distance) * duration + 0.35);

    label->tag = nextAnimationToken();
    label->flight = ZuviDanmakuLabel::Scrolling;
    label->duration = duration;
    label->targetX = -labelWidth;
    label->flightStart = localTime(*label);
    noteFlightStarted(*label);
    ++m_counters.launched;
}

void ZuviDanmakuEngine::launchFixedDanmakuItem(const ZuviDanmakuItem &item, double t, bool top)
{
    const ZuviDanmakuLanes::Kind kind = top ? ZuviDanmakuLanes::Top : ZuviDanmakuLanes::Bottom;
    const int lane = m_lanes.takeFreeLane(kind, t, fixedLaneCount());
    if (lane < 0) {
        ++m_counters.droppedNoLane;
        return;
    }
    ZuviDanmakuLabel *label = configuredLabelForItem(item);
    const QSizeF viewSize = m_viewSize;
    label->size = sizeForLabel(*label, maximumWidthFactor * viewSize.width());
    const qreal x = std::floor((viewSize.width() - label->size.width()) * 0.5);
    const qreal pitch = lanePitch();
    const qreal offset = randomVerticalOffsetForLaneHeight(pitch, label->size.height());
    qreal y =
        top ? lane * pitch + topInset + offset : bottomLaneBase() - (lane + 1) * pitch + offset;
    if (y < 0)
        y = 0;
    label->origin = QPointF(x, y);
    label->alpha = 0;
    m_lanes.occupy(kind, lane, t + fixedLaneHold);

    label->tag = nextAnimationToken();
    label->flight = ZuviDanmakuLabel::Fixed;
    label->duration = fixedFadeIn + fixedHold + fixedFadeOut;
    label->targetX = x;
    label->flightStart = localTime(*label);
    noteFlightStarted(*label);
    ++m_counters.launched;
}

ZuviDanmakuLabel *ZuviDanmakuEngine::configuredLabelForItem(const ZuviDanmakuItem &item)
{
    LabelPtr label = dequeueLabel();
    label->text = item.text;
    label->fontSize = item.fontSize * m_settings.textScale();
    label->color = readableColorForItem(item);
    label->serial = m_nextSerial++;
    ZuviDanmakuLabel *added = addVisibleLabel(std::move(label));
    return added;
}

ZuviDanmakuLabel *ZuviDanmakuEngine::addVisibleLabel(LabelPtr label)
{
    // A label launched while the overlay is paused starts frozen.
    if (m_paused)
        pauseLayer(*label);
    m_visible.push_back(std::move(label));
    return m_visible.back().get();
}

QRgb ZuviDanmakuEngine::readableColorForItem(const ZuviDanmakuItem &item)
{
    const double r = (item.colorRGB >> 16) & 0xFF;
    const double g = (item.colorRGB >> 8) & 0xFF;
    const double b = item.colorRGB & 0xFF;
    const double luminance = 0.299 * r / 255 + 0.587 * g / 255 + 0.114 * b / 255;
    if (luminance < 0.18)
        return qRgba(255, 255, 255, 255);
    return item.textColorARGB();
}

QSizeF ZuviDanmakuEngine::sizeForLabel(const ZuviDanmakuLabel &label, qreal maximumWidth) const
{
    const QSizeF measured =
        label.text.isEmpty() ? QSizeF(0, 0) : m_measurer(label.text, label.fontSize);
    qreal width = std::ceil(measured.width()) + 8;
    const qreal height = std::ceil(measured.height()) + 2;
    if (maximumWidth > 0 && width > maximumWidth)
        width = maximumWidth;
    if (width < 8)
        width = 8;
    QSizeF size(width, height);
    return size;
}

// --- Random choices --------------------------------------------------------

int ZuviDanmakuEngine::randomIndexWithCount(int count) const
{
    if (count < 2)
        return 0;
    return int(m_random(quint32(count)));
}

qreal ZuviDanmakuEngine::randomVerticalOffsetForLaneHeight(qreal laneHeight,
                                                           qreal labelHeight) const
{
    const qreal slack = laneHeight - labelHeight;
    if (slack <= 1)
        return std::floor(slack * 0.5); // negative for a tall label, which centres it
    return randomIndexWithCount(int(std::floor(slack)) + 1);
}

int ZuviDanmakuEngine::nextAnimationToken()
{
    const qint64 next = qint64(m_animationToken) + 1;
    m_animationToken = (next > INT_MAX || next < 1) ? 1 : int(next);
    return m_animationToken;
}

// --- Pool ------------------------------------------------------------------

ZuviDanmakuEngine::LabelPtr ZuviDanmakuEngine::dequeueLabel()
{
    LabelPtr label;
    if (!m_reusable.empty()) {
        label = std::move(m_reusable.back());
        m_reusable.pop_back();
    } else {
        label = std::make_unique<ZuviDanmakuLabel>();
    }
    label->tag = 0;
    label->flight = ZuviDanmakuLabel::Idle;
    resetLayerTiming(*label);
    return label;
}

void ZuviDanmakuEngine::recycleLabel(LabelPtr label)
{
    label->text.clear();
    label->alpha = 1;
    label->origin = QPointF();
    label->size = QSizeF();
    resetLayerTiming(*label);
    if (int(m_reusable.size()) < poolLimit)
        m_reusable.push_back(std::move(label));
}

void ZuviDanmakuEngine::detachLabel(ZuviDanmakuLabel &label)
{
    label.flight = ZuviDanmakuLabel::Idle; // stops its animations
    label.tag = 0;
}

void ZuviDanmakuEngine::removeVisibleLabel(ZuviDanmakuLabel *label, int token)
{
    if (!label || (token != 0 && token != label->tag))
        return; // a completion from an earlier flight of a reused label
    const auto found = std::find_if(m_visible.begin(), m_visible.end(),
                                    [label](const LabelPtr &p) { return p.get() == label; });
    if (found == m_visible.end())
        return;
    LabelPtr removed = std::move(*found);
    m_visible.erase(found);
    detachLabel(*removed);
    recycleLabel(std::move(removed));
}

// --- Flight clock ----------------------------------------------------------

double ZuviDanmakuEngine::localTime(const ZuviDanmakuLabel &label) const
{
    return label.frozen ? label.frozenLocal : now() - label.beginOffset;
}

double ZuviDanmakuEngine::localTimeAt(const ZuviDanmakuLabel &label, double wallTime)
{
    return label.frozen ? label.frozenLocal : wallTime - label.beginOffset;
}

void ZuviDanmakuEngine::pauseLayer(ZuviDanmakuLabel &label) const
{
    if (label.frozen)
        return;
    label.frozenLocal = localTime(label);
    label.frozen = true;
}

void ZuviDanmakuEngine::resumeLayer(ZuviDanmakuLabel &label) const
{
    if (!label.frozen)
        return;
    const double paused = label.frozenLocal;
    label.frozen = false;
    label.frozenLocal = 0;
    label.beginOffset = 0;
    // From here the local clock reads `paused` again and runs on.
    label.beginOffset = now() - paused;
}

void ZuviDanmakuEngine::resetLayerTiming(ZuviDanmakuLabel &label)
{
    label.frozen = false;
    label.frozenLocal = 0;
    label.beginOffset = 0;
}

void ZuviDanmakuEngine::setDanmakuPaused(bool paused)
{
    if (paused == m_paused)
        return;
    m_paused = paused;
    // Frozen clocks end no flight; thawed ones end at new wall times.
    m_nextFinishWallTime = -std::numeric_limits<double>::infinity();
    for (LabelPtr &label : m_visible) {
        if (paused)
            pauseLayer(*label);
        else
            resumeLayer(*label);
    }
}

double ZuviDanmakuEngine::flightElapsed(const ZuviDanmakuLabel &label) const
{
    return localTime(label) - label.flightStart;
}

double ZuviDanmakuEngine::finishWallTime(const ZuviDanmakuLabel &label)
{
    if (label.frozen || label.flight == ZuviDanmakuLabel::Idle)
        return std::numeric_limits<double>::infinity();
    return label.beginOffset + label.flightStart + label.duration;
}

void ZuviDanmakuEngine::noteFlightStarted(const ZuviDanmakuLabel &label)
{
    m_nextFinishWallTime = std::min(m_nextFinishWallTime, finishWallTime(label));
}

int ZuviDanmakuEngine::completeFinishedFlights()
{
    if (m_visible.empty())
        return 0;
    // One reading of the clock serves every label of this pass, and most
    // calls (every tick and every frame) end here: no flight is due yet.
    const double wallTime = now();
    if (wallTime < m_nextFinishWallTime - 1e-9)
        return 0;
    int removed = 0;
    double nextFinish = std::numeric_limits<double>::infinity();
    for (size_t i = 0; i < m_visible.size();) {
        ZuviDanmakuLabel *label = m_visible[i].get();
        const double elapsed = localTimeAt(*label, wallTime) - label->flightStart;
        if (label->flight != ZuviDanmakuLabel::Idle && elapsed >= label->duration) {
            removeVisibleLabel(label, label->tag);
            ++removed;
        } else {
            nextFinish = std::min(nextFinish, finishWallTime(*label));
            ++i;
        }
    }
    m_nextFinishWallTime = nextFinish;
    return removed;
}

QPointF ZuviDanmakuEngine::currentPosition(const ZuviDanmakuLabel &label) const
{
    if (label.flight != ZuviDanmakuLabel::Scrolling || label.duration <= 0)
        return label.origin;
    const double progress = std::clamp(flightElapsed(label) / label.duration, 0.0, 1.0);
    const qreal x = label.origin.x() + (label.targetX - label.origin.x()) * progress;
    return QPointF(x, label.origin.y());
}

qreal ZuviDanmakuEngine::currentOpacity(const ZuviDanmakuLabel &label) const
{
    return flightOpacity(label) * m_settings.opacity();
}

qreal ZuviDanmakuEngine::flightOpacity(const ZuviDanmakuLabel &label) const
{
    if (label.flight != ZuviDanmakuLabel::Fixed)
        return label.alpha;
    const double elapsed = flightElapsed(label);
    if (elapsed < fixedFadeIn)
        return std::max(0.0, elapsed / fixedFadeIn);
    const double fadeOutStart = fixedFadeIn + fixedHold;
    if (elapsed < fadeOutStart)
        return 1;
    return std::clamp(1.0 - (elapsed - fadeOutStart) / fixedFadeOut, 0.0, 1.0);
}
