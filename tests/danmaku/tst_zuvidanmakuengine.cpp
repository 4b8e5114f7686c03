// The danmaku engine on virtual clocks (ZuviDanmakuEngineRig): lanes, launch
// windows, seeks, flights, pauses, the label pool and the drawn colours.
#include "zuvidanmakuenginerig.h"

#include <QSet>
#include <QtTest>

#include <climits>

namespace {

ZuviDanmakuItem item(double time, int mode = 1, const QString &text = QStringLiteral("abcd"))
{
    ZuviDanmakuItem made;
    made.text = text;
    made.time = time;
    made.mode = mode;
    return made;
}

// Items every step seconds in [from, to), each text naming its index.
QList<ZuviDanmakuItem> stream(double from, double to, double step, int mode = 1)
{
    QList<ZuviDanmakuItem> items;
    for (int i = 0; from + i * step < to; ++i)
        items.append(item(from + i * step, mode, QStringLiteral("n%1").arg(i, 4, 10, QChar('0'))));
    return items;
}

using Rig = ZuviDanmakuEngineRig;

} // namespace

class TestZuviDanmakuEngine : public QObject
{
    Q_OBJECT

private slots:
    void laneMetrics_data();
    void laneMetrics();
    void launchWindowEdges_data();
    void launchWindowEdges();
    void modesDispatch_data();
    void modesDispatch();
    void seekRules_data();
    void seekRules();
    void resetIndex_data();
    void resetIndex();
    void randomLaneAmongFree();
    void visibleCapDrops();
    void scrollingFlight_data();
    void scrollingFlight();
    void fixedFlight();
    void fixedPlacement_data();
    void fixedPlacement();
    void pauseForAMinuteAndResume();
    void tokenWrapsToOne();
    void staleCompletionIgnored();
    void poolKeepsAtMost36();
    void sizeChangeResetsToLastPosition();
    void emptyListOrZeroSizeOnlyRecordTime();
    void readableColor_data();
    void readableColor();
    void labelSize_data();
    void labelSize();
    void verticalOffset_data();
    void verticalOffset();
};

void TestZuviDanmakuEngine::laneMetrics_data()
{
    QTest::addColumn<bool>("pad");
    QTest::addColumn<qreal>("height");
    QTest::addColumn<int>("scroll");
    QTest::addColumn<int>("fixed");
    QTest::addColumn<qreal>("bottomInset");

    QTest::newRow("100 high") << true << 100.0 << 2 << 1 << 30.0;
    QTest::newRow("30 high still one lane") << true << 30.0 << 1 << 1 << 30.0;
    QTest::newRow("180 high, large inset") << true << 180.0 << 5 << 2 << 46.0;
    QTest::newRow("179 high, small inset") << true << 179.0 << 6 << 3 << 30.0;
    QTest::newRow("phone clamps at 8") << false << 568.0 << 8 << 3 << 46.0;
}

void TestZuviDanmakuEngine::laneMetrics()
{
    QFETCH(bool, pad);
    QFETCH(qreal, height);
    QFETCH(int, scroll);
    QFETCH(int, fixed);
    QFETCH(qreal, bottomInset);

    Rig rig(pad ? ZuviIdiom::Pad : ZuviIdiom::Phone, QSizeF(400, height));
    QCOMPARE(rig.engine.scrollLaneCount(), scroll);
    QCOMPARE(rig.engine.fixedLaneCount(), fixed);
    QCOMPARE(rig.engine.bottomInset(), bottomInset);
    QCOMPARE(rig.engine.maximumVisibleCount(), pad ? 42 : 24);
    QCOMPARE(rig.engine.scrollSpeed(), pad ? 88.0 : 76.0);
    // The size change reset every lane table to its count, all free.
    QCOMPARE(rig.engine.scrollLaneAvailableTimes(), std::vector<double>(size_t(scroll), 0.0));
    QCOMPARE(rig.engine.topLaneAvailableTimes(), std::vector<double>(size_t(fixed), 0.0));
    QCOMPARE(rig.engine.bottomLaneAvailableTimes(), std::vector<double>(size_t(fixed), 0.0));
}

void TestZuviDanmakuEngine::launchWindowEdges_data()
{
    QTest::addColumn<double>("itemTime");
    QTest::addColumn<bool>("launched");
    QTest::addColumn<bool>("consumed");

    QTest::newRow("t + 0.6 launched") << 10.6 << true << true;
    QTest::newRow("t + 0.61 waits") << 10.61 << false << false;
    QTest::newRow("t - 2.5 launched") << 7.5 << true << true;
    QTest::newRow("t - 2.51 consumed, never shown") << 7.49 << false << true;
}

void TestZuviDanmakuEngine::launchWindowEdges()
{
    QFETCH(double, itemTime);
    QFETCH(bool, launched);
    QFETCH(bool, consumed);

    Rig rig;
    rig.engine.setDanmakuItems({item(itemTime)});
    // While the owner hides the overlay, ticks only record the time, so the
    // item is still next in line when the playing tick at 10.0 comes.
    rig.engine.setHidden(true);
    rig.engine.tickAtPlaybackTime(10.0, true);
    rig.engine.setHidden(false);
    QCOMPARE(rig.engine.nextItemIndex(), 0);

    rig.engine.tickAtPlaybackTime(10.0, true);
    QCOMPARE(rig.engine.visibleLabelCount(), launched ? 1 : 0);
    QCOMPARE(rig.engine.nextItemIndex(), consumed ? 1 : 0);
    QCOMPARE(rig.engine.counters().late, quint64(consumed && !launched ? 1 : 0));
    QCOMPARE(rig.engine.lastPlaybackTime(), 10.0);
}

void TestZuviDanmakuEngine::modesDispatch_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("flight");
    QTest::addColumn<int>("region"); // 0 none, 1 scroll, 2 top, 3 bottom

    QTest::newRow("7 never shown") << 7 << int(ZuviDanmakuLabel::Idle) << 0;
    QTest::newRow("5 top") << 5 << int(ZuviDanmakuLabel::Fixed) << 2;
    QTest::newRow("4 bottom") << 4 << int(ZuviDanmakuLabel::Fixed) << 3;
    QTest::newRow("1 scrolls") << 1 << int(ZuviDanmakuLabel::Scrolling) << 1;
}

void TestZuviDanmakuEngine::modesDispatch()
{
    QFETCH(int, mode);
    QFETCH(int, flight);
    QFETCH(int, region);

    Rig rig(ZuviIdiom::Pad, QSizeF(400, 200));
    rig.engine.setDanmakuItems({item(0.1, mode), item(0.2, mode)});
    rig.engine.tickAtPlaybackTime(0.0, true);
    QCOMPARE(rig.engine.nextItemIndex(), 2); // consumed whatever the mode
    if (region == 0) {
        QCOMPARE(rig.engine.visibleLabelCount(), 0);
        QCOMPARE(rig.engine.counters().hidden, quint64(2));
        return;
    }
    QCOMPARE(rig.engine.visibleLabelCount(), 2);
    QCOMPARE(int(rig.engine.visibleLabel(0).flight), flight);
    // The lane each kind used is marked busy in its own table only.
    const auto busy = [](const std::vector<double> &lanes) {
        return std::count_if(lanes.begin(), lanes.end(), [](double at) { return at > 0; });
    };
    QCOMPARE(busy(rig.engine.scrollLaneAvailableTimes()), region == 1 ? 2 : 0);
    QCOMPARE(busy(rig.engine.topLaneAvailableTimes()), region == 2 ? 2 : 0);
    QCOMPARE(busy(rig.engine.bottomLaneAvailableTimes()), region == 3 ? 2 : 0);
}

void TestZuviDanmakuEngine::seekRules_data()
{
    QTest::addColumn<double>("previous");
    QTest::addColumn<double>("next");
    QTest::addColumn<bool>("reset");

    QTest::newRow("back 0.3 does not") << 10.3 << 10.0 << false;
    QTest::newRow("back 0.5 resets") << 10.5 << 10.0 << true;
    QTest::newRow("forward 1.6 resets") << 10.0 << 11.6 << true;
    QTest::newRow("forward 1.4 does not") << 10.0 << 11.4 << false;
}

void TestZuviDanmakuEngine::seekRules()
{
    QFETCH(double, previous);
    QFETCH(double, next);
    QFETCH(bool, reset);

    Rig rig;
    rig.engine.setDanmakuItems(stream(0, 30, 0.5));
    rig.engine.resetForPlaybackTime(previous);
    rig.engine.tickAtPlaybackTime(previous, true);
    const QSet<QString> before = rig.visibleTexts();
    QVERIFY(!before.isEmpty());

    rig.engine.tickAtPlaybackTime(next, true);
    const QSet<QString> after = rig.visibleTexts();
    // A reset clears the screen; a plain tick keeps what is flying.
    QCOMPARE(after.contains(before), !reset);
    if (reset) {
        const int first = rig.engine.firstItemIndexAtOrAfterTime(next - 0.25);
        QVERIFY(after.contains(rig.engine.danmakuItems().at(first).text));
    }
    // Consumed up to the look-ahead of the furthest position played.
    const double reached = reset ? next : std::max(previous, next);
    QCOMPARE(rig.engine.nextItemIndex(),
             rig.engine.firstItemIndexAtOrAfterTime(reached + 0.6 + 1e-9));
}

void TestZuviDanmakuEngine::resetIndex_data()
{
    QTest::addColumn<double>("position");
    QTest::addColumn<int>("index");

    // Items at 0, 0.5, 1.0, 1.0, 2.0.
    QTest::newRow("0.6 replays from 0.35") << 0.6 << 1;
    QTest::newRow("1.25 replays both at 1.0") << 1.25 << 2;
    QTest::newRow("1.26 is past them") << 1.26 << 4;
    QTest::newRow("past the end") << 5.0 << 5;
}

void TestZuviDanmakuEngine::resetIndex()
{
    QFETCH(double, position);
    QFETCH(int, index);

    Rig rig;
    rig.engine.setDanmakuItems({item(0), item(0.5), item(1.0), item(1.0), item(2.0)});
    rig.engine.resetForPlaybackTime(position);
    QCOMPARE(rig.engine.nextItemIndex(), index);
    QCOMPARE(rig.engine.lastPlaybackTime(), position);

    Rig empty;
    empty.engine.resetForPlaybackTime(position);
    QCOMPARE(empty.engine.nextItemIndex(), 0);
}

void TestZuviDanmakuEngine::randomLaneAmongFree()
{
    Rig rig(ZuviIdiom::Pad, QSizeF(400, 200)); // 6 scroll lanes
    // Label 18 high in a 23 lane: 5 points of slack, offsets 0…5.
    rig.script = {5, 2, 0, 0, 3, 1};
    rig.engine.setDanmakuItems({item(1.0), item(1.0), item(1.0)});
    rig.engine.tickAtPlaybackTime(1.0, true);

    QCOMPARE(rig.bounds, (QList<quint32>{6, 6, 5, 6, 4, 6}));
    QCOMPARE(rig.engine.visibleLabelCount(), 3);
    // Free lanes {0…5} → 5; then {0…4} → 0; then {1…4} → index 3 = lane 4.
    const int lanes[] = {5, 0, 4};
    const int offsets[] = {2, 0, 1};
    for (int i = 0; i < 3; ++i)
        QCOMPARE(rig.engine.visibleLabel(i).origin.y(), lanes[i] * 23.0 + 8 + offsets[i]);
    QCOMPARE(rig.engine.nextScrollLaneIndex(), 5); // (4 + 1) mod 6
    const std::vector<double> &times = rig.engine.scrollLaneAvailableTimes();
    QVERIFY(times[5] > 1.0 && times[0] > 1.0 && times[4] > 1.0);
    QCOMPARE(times[1] + times[2] + times[3], 0.0);
}

void TestZuviDanmakuEngine::visibleCapDrops()
{
    Rig rig(ZuviIdiom::Phone, QSizeF(320, 568));
    const QList<ZuviDanmakuItem> items = stream(0, 20, 0.05);
    rig.engine.setDanmakuItems(items);
    int most = 0;
    quint64 newest = 0;
    double t = 0;
    for (int tick = 0; tick < 170; ++tick, t += 0.12) {
        rig.engine.tickAtPlaybackTime(t, true);
        most = std::max(most, rig.engine.visibleLabelCount());
        // Every label that came up in this tick belongs to the launch window: no delays.
        for (int i = 0; i < rig.engine.visibleLabelCount(); ++i) {
            const ZuviDanmakuLabel &label = rig.engine.visibleLabel(i);
            if (label.serial <= newest)
                continue;
            const double itemTime = items.at(label.text.mid(1).toInt()).time;
            QVERIFY2(itemTime <= t + 0.6 + 1e-9 && itemTime >= t - 2.5, qPrintable(label.text));
            newest = label.serial;
        }
        rig.clock.advance(0.12);
        rig.engine.completeFinishedFlights();
    }
    QCOMPARE(most, 24);
    const ZuviDanmakuEngine::Counters &counters = rig.engine.counters();
    QVERIFY(counters.droppedByCap > 0);
    QVERIFY(counters.droppedNoLane > 0);
    // Every item was either launched or dropped; none is waiting.
    QCOMPARE(rig.engine.nextItemIndex(), int(items.size()));
    QCOMPARE(counters.launched + counters.droppedByCap + counters.droppedNoLane,
             quint64(items.size()));
}

void TestZuviDanmakuEngine::scrollingFlight_data()
{
    QTest::addColumn<bool>("pad");
    QTest::addColumn<qreal>("width");
    QTest::addColumn<qreal>("measured");
    QTest::addColumn<double>("duration");

    QTest::newRow("phone 480, label 100: 580/76") << false << 480.0 << 92.0 << 580.0 / 76;
    QTest::newRow("phone 160, label 20: clamped up") << false << 160.0 << 12.0 << 5.5;
    QTest::newRow("pad 2000: clamped down") << true << 2000.0 << 92.0 << 9.0;
}

void TestZuviDanmakuEngine::scrollingFlight()
{
    QFETCH(bool, pad);
    QFETCH(qreal, width);
    QFETCH(qreal, measured);
    QFETCH(double, duration);

    Rig rig(pad ? ZuviIdiom::Pad : ZuviIdiom::Phone, QSizeF(width, 300));
    rig.engine.setTextMeasurer([measured](const QString &, qreal) { return QSizeF(measured, 16); });
    rig.engine.setDanmakuItems({item(2.0)});
    rig.clock.advance(100);
    rig.engine.tickAtPlaybackTime(2.0, true);
    QCOMPARE(rig.engine.visibleLabelCount(), 1);
    const ZuviDanmakuLabel &label = rig.engine.visibleLabel(0);
    const qreal labelWidth = measured + 8;
    QCOMPARE(label.size, QSizeF(labelWidth, 18));
    QCOMPARE(label.duration, duration);
    QCOMPARE(rig.engine.currentPosition(label).x(), width); // starts beyond the right edge

    // The lane frees when the tail has cleared the edge, plus 0.35 s.
    const double release = 2.0 + labelWidth / (width + labelWidth) * duration + 0.35;
    QCOMPARE(rig.engine.scrollLaneAvailableTimes()[0], release);

    rig.clock.advance(duration / 2);
    QCOMPARE(rig.engine.currentPosition(label).x(), width - (width + labelWidth) / 2);
    rig.clock.advance(duration / 2 - 0.001);
    QCOMPARE(rig.engine.completeFinishedFlights(), 0);
    rig.clock.advance(0.001);
    QCOMPARE(rig.engine.completeFinishedFlights(), 1);
    QCOMPARE(rig.engine.visibleLabelCount(), 0);
}

void TestZuviDanmakuEngine::fixedFlight()
{
    Rig rig(ZuviIdiom::Pad, QSizeF(400, 200));
    rig.engine.setDanmakuItems({item(1.0, 5)});
    rig.engine.tickAtPlaybackTime(1.0, true);
    const ZuviDanmakuLabel &label = rig.engine.visibleLabel(0);
    QCOMPARE(rig.engine.topLaneAvailableTimes()[0], 5.0);

    const struct {
        double at;
        qreal opacity;
    } steps[] = {{0, 0}, {0.075, 0.5}, {0.15, 1}, {3.8, 1}, {3.9, 0.5}, {3.99, 0.05}};
    double elapsed = 0;
    for (const auto &step : steps) {
        rig.clock.advance(step.at - elapsed);
        elapsed = step.at;
        QVERIFY2(qAbs(rig.engine.currentOpacity(label) - step.opacity) < 1e-9,
                 qPrintable(QString::number(step.at)));
        QCOMPARE(rig.engine.completeFinishedFlights(), 0);
    }
    rig.clock.advance(0.01);
    QCOMPARE(rig.engine.completeFinishedFlights(), 1);
}

void TestZuviDanmakuEngine::fixedPlacement_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<qreal>("height");
    QTest::addColumn<qreal>("fontSize");
    QTest::addColumn<quint32>("laneChoice");
    QTest::addColumn<QPointF>("origin");

    // A 38 wide label in a 400 wide view: x = floor(362 / 2) = 181. The
    // random offset drawn is 0 when the lane has slack.
    QTest::newRow("top lane 2") << 5 << 200.0 << 16.0 << 2u << QPointF(181, 54);
    QTest::newRow("bottom lane 1: 200-46-2*23") << 4 << 200.0 << 16.0 << 1u << QPointF(181, 108);
    // A 32 high label: slack −9 centres it, 5 points up.
    QTest::newRow("tall label on top") << 5 << 200.0 << 30.0 << 0u << QPointF(181, 3);
    QTest::newRow("bottom above 0 clamps") << 4 << 30.0 << 30.0 << 0u << QPointF(181, 0);
}

void TestZuviDanmakuEngine::fixedPlacement()
{
    QFETCH(int, mode);
    QFETCH(qreal, height);
    QFETCH(qreal, fontSize);
    QFETCH(quint32, laneChoice);
    QFETCH(QPointF, origin);

    Rig rig(ZuviIdiom::Pad, QSizeF(400, height));
    rig.script = {laneChoice, 0};
    ZuviDanmakuItem fixed = item(1.0, mode, QStringLiteral("abc")); // 38 wide: x = 181
    fixed.fontSize = float(fontSize);
    rig.engine.setDanmakuItems({fixed});
    rig.engine.tickAtPlaybackTime(1.0, true);
    QCOMPARE(rig.engine.visibleLabelCount(), 1);
    QCOMPARE(rig.engine.visibleLabel(0).origin, origin);
    QCOMPARE(rig.engine.currentPosition(rig.engine.visibleLabel(0)), origin);
}

void TestZuviDanmakuEngine::pauseForAMinuteAndResume()
{
    Rig rig(ZuviIdiom::Pad, QSizeF(700, 300));
    rig.engine.setDanmakuItems({item(10.0, 1, QString(9, 'x')), item(10.0, 5)});
    rig.engine.resetForPlaybackTime(10.0);
    rig.play(10.0, 2.04); // 17 ticks: 2.04 s of flight
    const ZuviDanmakuLabel &scrolling = rig.engine.visibleLabel(0);
    const ZuviDanmakuLabel &fixed = rig.engine.visibleLabel(1);
    const qreal x = rig.engine.currentPosition(scrolling).x();
    QCOMPARE(x, 700 - 798 * (2.04 / 9.0)); // 798/88 s is clamped to 9 s

    rig.engine.tickAtPlaybackTime(12.04, false);
    QVERIFY(rig.engine.isDanmakuPaused());
    QCOMPARE(rig.engine.lastPlaybackTime(), 11.92); // a paused tick records nothing
    for (int i = 0; i < 500; ++i) {                 // a minute of paused ticks
        rig.clock.advance(0.12);
        rig.engine.tickAtPlaybackTime(12.04, false);
    }
    QCOMPARE(rig.engine.visibleLabelCount(), 2); // a 4 s fixed label outlives the minute
    QCOMPARE(rig.engine.currentPosition(scrolling).x(), x);
    QCOMPARE(rig.engine.currentOpacity(fixed), 1.0);
    QCOMPARE(rig.engine.flightElapsed(fixed), 2.04);

    // Playing again continues each label from where it stood, without a reset.
    rig.engine.tickAtPlaybackTime(12.04, true);
    QVERIFY(!rig.engine.isDanmakuPaused());
    QCOMPARE(rig.engine.visibleLabelCount(), 2);
    rig.clock.advance(1.0);
    QCOMPARE(rig.engine.flightElapsed(scrolling), 3.04);
    QCOMPARE(rig.engine.currentPosition(scrolling).x(), 700 - 798 * (3.04 / 9.0));
    rig.clock.advance(4.0 - 3.04 - 0.001);
    QCOMPARE(rig.engine.completeFinishedFlights(), 0);
    rig.clock.advance(0.002);
    QCOMPARE(rig.engine.completeFinishedFlights(), 1); // the fixed one, 4 s after launch
}

void TestZuviDanmakuEngine::tokenWrapsToOne()
{
    Rig rig;
    rig.engine.setAnimationToken(INT_MAX - 1);
    QCOMPARE(rig.engine.nextAnimationToken(), INT_MAX);
    QCOMPARE(rig.engine.nextAnimationToken(), 1);
    QCOMPARE(rig.engine.nextAnimationToken(), 2);

    // A launch at the wrap gets tag 1, never 0 (which means idle).
    rig.engine.setAnimationToken(INT_MAX);
    rig.engine.setDanmakuItems({item(0.1)});
    rig.engine.tickAtPlaybackTime(0.0, true);
    QCOMPARE(rig.engine.visibleLabel(0).tag, 1);
}

void TestZuviDanmakuEngine::staleCompletionIgnored()
{
    Rig rig;
    rig.engine.setDanmakuItems({item(0.1), item(5.0)});
    rig.engine.tickAtPlaybackTime(0.0, true);
    ZuviDanmakuLabel *label = rig.engine.visibleLabelPointer(0);
    const int oldToken = label->tag;
    rig.engine.clearVisibleDanmaku();
    QCOMPARE(label->tag, 0);

    // The pool is last in, first out: the next flight reuses the same label.
    rig.engine.tickAtPlaybackTime(4.5, true);
    QCOMPARE(rig.engine.visibleLabelPointer(0), label);
    QVERIFY(label->tag != oldToken);
    rig.engine.removeVisibleLabel(label, oldToken);
    QCOMPARE(rig.engine.visibleLabelCount(), 1);
    rig.engine.removeVisibleLabel(label, label->tag);
    QCOMPARE(rig.engine.visibleLabelCount(), 0);
}

void TestZuviDanmakuEngine::poolKeepsAtMost36()
{
    Rig rig(ZuviIdiom::Pad, QSizeF(1024, 768));
    rig.engine.setDanmakuItems(stream(0, 40, 0.05));
    rig.play(0, 8);
    QCOMPARE(rig.engine.visibleLabelCount(), 42);
    QSet<ZuviDanmakuLabel *> made;
    for (int i = 0; i < 42; ++i)
        made.insert(rig.engine.visibleLabelPointer(i));

    rig.engine.clearVisibleDanmaku();
    QCOMPARE(rig.engine.reusableLabelCount(), 36);

    // The next 36 launches take pooled labels; none is made anew.
    rig.play(8, 2.4);
    QVERIFY(rig.engine.visibleLabelCount() >= 36);
    for (int i = 0; i < 36; ++i)
        QVERIFY(made.contains(rig.engine.visibleLabelPointer(i)));
    QCOMPARE(rig.engine.reusableLabelCount(), 0);

    // Flights ending on their own recycle into the same bounded pool.
    const int flying = rig.engine.visibleLabelCount();
    rig.clock.advance(10);
    QCOMPARE(rig.engine.completeFinishedFlights(), flying);
    QCOMPARE(rig.engine.reusableLabelCount(), 36);
}

void TestZuviDanmakuEngine::sizeChangeResetsToLastPosition()
{
    Rig rig(ZuviIdiom::Pad, QSizeF(1024, 768));
    rig.engine.setDanmakuItems(stream(0, 40, 0.25));
    rig.play(18.0, 2.04);
    QVERIFY(rig.engine.visibleLabelCount() > 0);
    const double last = rig.engine.lastPlaybackTime();

    rig.engine.setViewSize(QSizeF(1024, 768)); // same size: nothing happens
    QVERIFY(rig.engine.visibleLabelCount() > 0);

    rig.engine.setViewSize(QSizeF(320, 200));
    QCOMPARE(rig.engine.visibleLabelCount(), 0);
    QCOMPARE(rig.engine.lastLayoutSize(), QSizeF(320, 200));
    QCOMPARE(rig.engine.lastPlaybackTime(), last);
    QCOMPARE(rig.engine.nextItemIndex(), rig.engine.firstItemIndexAtOrAfterTime(last - 0.25));
    QCOMPARE(rig.engine.scrollLaneAvailableTimes().size(), size_t(6));
    QCOMPARE(rig.engine.scrollLaneAvailableTimes(), std::vector<double>(6, 0.0));

    // The next tick replays from a quarter second back in the new lanes.
    rig.engine.tickAtPlaybackTime(last + 0.12, true);
    QVERIFY(rig.engine.visibleLabelCount() > 0);
    QVERIFY(rig.engine.visibleLabel(0).origin.y() < 200);
}

void TestZuviDanmakuEngine::emptyListOrZeroSizeOnlyRecordTime()
{
    // Switched off, the same holds; the overlay's suite switches it off and
    // on again in a window.
    Rig empty(ZuviIdiom::Pad, QSizeF(0, 0));
    empty.engine.setDanmakuItems(stream(0, 5, 0.5));
    empty.engine.tickAtPlaybackTime(3.0, true);
    QCOMPARE(empty.engine.nextItemIndex(), 0);
    QCOMPARE(empty.engine.lastPlaybackTime(), 3.0);
}

void TestZuviDanmakuEngine::readableColor_data()
{
    QTest::addColumn<quint32>("rgb");
    QTest::addColumn<quint32>("drawn");

    QTest::newRow("mid grey kept") << 0x808080u << 0xEB808080u;
    QTest::newRow("just below 0.18 turns white") << 0x2D2D2Du << 0xFFFFFFFFu;
    QTest::newRow("just above 0.18 kept") << 0x2E2E2Eu << 0xEB2E2E2Eu;
}

void TestZuviDanmakuEngine::readableColor()
{
    QFETCH(quint32, rgb);
    QFETCH(quint32, drawn);
    ZuviDanmakuItem colored = item(0);
    colored.colorRGB = rgb;
    QCOMPARE(ZuviDanmakuEngine::readableColorForItem(colored), drawn);
}

void TestZuviDanmakuEngine::labelSize_data()
{
    QTest::addColumn<int>("characters");
    QTest::addColumn<qreal>("viewWidth");
    QTest::addColumn<QSizeF>("size");

    QTest::newRow("10 wide gets 18") << 1 << 480.0 << QSizeF(18, 18);
    QTest::newRow("never below 8") << 1 << 5.0 << QSizeF(8, 18);
}

void TestZuviDanmakuEngine::labelSize()
{
    QFETCH(int, characters);
    QFETCH(qreal, viewWidth);
    QFETCH(QSizeF, size);

    ZuviDanmakuLabel label;
    label.text = QString(characters, QChar('x'));
    label.fontSize = 16;
    Rig rig;
    QCOMPARE(rig.engine.sizeForLabel(label, 0.86 * viewWidth), size);

    // Fractional measurements round up before the padding.
    rig.engine.setTextMeasurer([](const QString &, qreal) { return QSizeF(9.2, 16.1); });
    QCOMPARE(rig.engine.sizeForLabel(label, 0), QSizeF(18, 19));
    label.text.clear();
    QCOMPARE(rig.engine.sizeForLabel(label, 0), QSizeF(8, 2));
}

void TestZuviDanmakuEngine::verticalOffset_data()
{
    QTest::addColumn<qreal>("labelHeight");
    QTest::addColumn<quint32>("randomValue");
    QTest::addColumn<qreal>("offset");
    QTest::addColumn<int>("bound"); // 0 when no random number is drawn

    QTest::newRow("slack 5.5: still 0…5") << 17.5 << 5u << 5.0 << 6;
    QTest::newRow("slack 1: half, rounded down") << 22.0 << 0u << 0.0 << 0;
}

void TestZuviDanmakuEngine::verticalOffset()
{
    QFETCH(qreal, labelHeight);
    QFETCH(quint32, randomValue);
    QFETCH(qreal, offset);
    QFETCH(int, bound);

    Rig rig;
    rig.script = {randomValue};
    QCOMPARE(rig.engine.randomVerticalOffsetForLaneHeight(23, labelHeight), offset);
    QCOMPARE(rig.bounds, bound ? QList<quint32>{quint32(bound)} : QList<quint32>{});
    QCOMPARE(rig.engine.randomIndexWithCount(1), 0);
}

QTEST_GUILESS_MAIN(TestZuviDanmakuEngine)
#include "tst_zuvidanmakuengine.moc"
