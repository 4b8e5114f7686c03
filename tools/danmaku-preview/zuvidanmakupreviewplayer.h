#pragma once

#include "platform/zuviidiom.h"

#include <QObject>
#include <QPointer>
#include <QTimer>

#include <functional>

class QQuickWindow;
class ZuviDanmakuOverlayView;

// Stands in for the movie in the danmaku preview: a playback clock that
// runs in real time (or twice as fast), pauses and seeks, and drives the
// overlay every 0.12 s exactly like the video screen does. Keys on the
// window: space pause, ←/→ seek ∓/±10 s, hold S for 2×, P pad/phone size.
class ZuviDanmakuPreviewPlayer : public QObject
{
    Q_OBJECT
public:
    // Wall-clock seconds; the default is a monotonic clock.
    using Clock = std::function<double()>;

    // counters, when given, is a text item whose "text" shows the live counters.
    ZuviDanmakuPreviewPlayer(QQuickWindow *window, ZuviDanmakuOverlayView *overlay,
                             QObject *counters, Clock clock = {}, QObject *parent = nullptr);

    void start(double position);
    double position() const;
    bool isPlaying() const { return m_playing; }
    double rate() const { return m_rate; }

    QString countersText() const;
    void togglePause();
    void seekBy(double seconds);
    void setFastForward(bool fast);
    void toggleIdiom();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void rebase(); // folds the elapsed time into the position before a change
    void tick();
    void showCounters();
    double elapsed() const { return m_clock() - m_baseWallTime; }

    QPointer<QQuickWindow> m_window;
    QPointer<ZuviDanmakuOverlayView> m_overlay;
    QPointer<QObject> m_counters;
    Clock m_clock;
    QTimer m_timer;
    double m_baseWallTime = 0;
    double m_base = 0; // playback position at m_baseWallTime
    double m_rate = 1;
    bool m_playing = true;
};
