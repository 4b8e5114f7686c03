#include "zuvidanmakupreviewplayer.h"

#include "danmaku/zuvidanmakuoverlayview.h"

#include <QKeyEvent>
#include <QQuickWindow>

ZuviDanmakuPreviewPlayer::ZuviDanmakuPreviewPlayer(QQuickWindow *window,
                                                   ZuviDanmakuOverlayView *overlay,
                                                   QObject *counters, Clock clock, QObject *parent)
    : QObject(parent), m_window(window), m_overlay(overlay), m_counters(counters),
      m_clock(clock ? std::move(clock) : Clock(ZuviDanmakuEngine::monotonicSeconds))
{
    m_timer.setInterval(120);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &ZuviDanmakuPreviewPlayer::tick);
    window->installEventFilter(this);
}

void ZuviDanmakuPreviewPlayer::start(double position)
{
    m_base = position;
    m_baseWallTime = m_clock();
    m_overlay->resetForPlaybackTime(position);
    m_timer.start();
    tick();
}

double ZuviDanmakuPreviewPlayer::position() const
{
    if (!m_playing)
        return m_base;
    return m_base + m_rate * elapsed();
}

void ZuviDanmakuPreviewPlayer::rebase()
{
    m_base = position();
    m_baseWallTime = m_clock();
}

void ZuviDanmakuPreviewPlayer::togglePause()
{
    rebase();
    m_playing = !m_playing;
    tick();
}

void ZuviDanmakuPreviewPlayer::seekBy(double seconds)
{
    rebase();
    m_base = std::max(0.0, m_base + seconds);
    // The overlay sees the jump on the next tick and re-seeks by itself.
    tick();
}

void ZuviDanmakuPreviewPlayer::setFastForward(bool fast)
{
    rebase();
    m_rate = fast ? 2.0 : 1.0;
    showCounters();
}

void ZuviDanmakuPreviewPlayer::toggleIdiom()
{
    const bool pad = !m_overlay->isPadIdiom();
    m_overlay->setPadIdiom(pad);
    m_window->resize(ZuviIdiom::defaultWindowSize(pad ? ZuviIdiom::Pad : ZuviIdiom::Phone));
    showCounters();
}

void ZuviDanmakuPreviewPlayer::tick()
{
    m_overlay->tickAtPlaybackTime(position(), m_playing);
    showCounters();
}

void ZuviDanmakuPreviewPlayer::showCounters()
{
    if (m_counters)
        m_counters->setProperty("text", countersText());
}

QString ZuviDanmakuPreviewPlayer::countersText() const
{
    const ZuviDanmakuEngine::Counters &counters = m_overlay->engine()->counters();
    return QStringLiteral("%1 s  %2×  %3  visible %4  launched %5  dropped %6 (cap %7, lanes %8)  "
                          "%9  ·  space pause  ←/→ 10 s  hold S 2×  P size")
        .arg(QString::number(position(), 'f', 1), QString::number(m_rate, 'f', 0),
             m_playing ? QStringLiteral("playing") : QStringLiteral("paused"))
        .arg(m_overlay->visibleCount())
        .arg(counters.launched)
        .arg(counters.droppedByCap + counters.droppedNoLane)
        .arg(counters.droppedByCap)
        .arg(counters.droppedNoLane)
        .arg(m_overlay->isPadIdiom() ? QStringLiteral("pad") : QStringLiteral("phone"));
}

bool ZuviDanmakuPreviewPlayer::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::KeyPress && event->type() != QEvent::KeyRelease)
        return QObject::eventFilter(watched, event);
    auto *key = static_cast<QKeyEvent *>(event);
    const bool press = event->type() == QEvent::KeyPress;
    if (key->key() == Qt::Key_S) {
        // Held keys repeat; only the real press and release change the rate.
        if (!key->isAutoRepeat())
            setFastForward(press);
        return true;
    }
    if (!press)
        return false;
    switch (key->key()) {
    case Qt::Key_Space:
        togglePause();
        return true;
    case Qt::Key_Left:
        seekBy(-10);
        return true;
    case Qt::Key_Right:
        seekBy(10);
        return true;
    case Qt::Key_P:
        if (!key->isAutoRepeat())
            toggleIdiom();
        return true;
    default:
        return false;
    }
}
