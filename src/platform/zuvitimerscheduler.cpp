#include "zuvitimerscheduler.h"

#include <QTimer>

#include <cmath>

ZuviScheduler *ZuviScheduler::sharedScheduler()
{
    static ZuviScheduler *scheduler = new ZuviTimerScheduler;
    return scheduler;
}

ZuviTimerScheduler::ZuviTimerScheduler(QObject *parent) : ZuviScheduler(parent)
{
    m_clock.start();
}

double ZuviTimerScheduler::now() const
{
    return m_clock.nsecsElapsed() / 1e9;
}

void ZuviTimerScheduler::callAfter(QObject *owner, const QString &name, double delay, Task task)
{
    start(owner, name, delay, false, std::move(task));
}

void ZuviTimerScheduler::repeat(QObject *owner, const QString &name, double interval, Task task)
{
    start(owner, name, interval, true, std::move(task));
}

void ZuviTimerScheduler::start(QObject *owner, const QString &name, double seconds, bool repeating,
                               Task task)
{
    auto *timer = new QTimer(this);
    timer->setTimerType(Qt::PreciseTimer);
    timer->setSingleShot(!repeating);
    const double msecs = std::max(0.0, seconds) * 1000.0;
    // A repeating timer of zero would spin the event loop; one millisecond is the floor.
    timer->setInterval(static_cast<int>(std::llround(repeating ? std::max(1.0, msecs) : msecs)));
    m_entries.insert(timer, Entry{owner, name, timer});
    watchOwner(owner);
    connect(timer, &QTimer::timeout, this, [this, timer, repeating, task] {
        if (!repeating)
            remove(timer);
        task();
    });
    timer->start();
}

void ZuviTimerScheduler::watchOwner(QObject *owner)
{
    if (!owner || m_watchedOwners.contains(owner))
        return;
    m_watchedOwners.insert(owner);
    connect(owner, &QObject::destroyed, this, [this, owner] {
        m_watchedOwners.remove(owner);
        cancelAll(owner);
    });
}

void ZuviTimerScheduler::remove(QTimer *timer)
{
    if (m_entries.remove(timer) > 0) {
        timer->stop();
        timer->deleteLater();
    }
}

void ZuviTimerScheduler::cancel(QObject *owner, const QString &name)
{
    const QList<QTimer *> timers = m_entries.keys();
    for (QTimer *timer : timers) {
        const Entry &entry = m_entries[timer];
        if (entry.owner == owner && entry.name == name)
            remove(timer);
    }
}

void ZuviTimerScheduler::cancelAll(QObject *owner)
{
    const QList<QTimer *> timers = m_entries.keys();
    for (QTimer *timer : timers) {
        if (m_entries[timer].owner == owner)
            remove(timer);
    }
}

bool ZuviTimerScheduler::isScheduled(QObject *owner, const QString &name) const
{
    for (const Entry &entry : m_entries) {
        if (entry.owner == owner && entry.name == name)
            return true;
    }
    return false;
}
