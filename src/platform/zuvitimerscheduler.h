#pragma once

#include "zuvischeduler.h"

#include <QElapsedTimer>
#include <QHash>
#include <QSet>

class QTimer;

// The scheduler of the running application: one precise QTimer per call.
class ZuviTimerScheduler : public ZuviScheduler
{
    Q_OBJECT
public:
    explicit ZuviTimerScheduler(QObject *parent = nullptr);

    double now() const override;
    void callAfter(QObject *owner, const QString &name, double delay, Task task) override;
    void repeat(QObject *owner, const QString &name, double interval, Task task) override;
    void cancel(QObject *owner, const QString &name) override;
    void cancelAll(QObject *owner) override;
    bool isScheduled(QObject *owner, const QString &name) const override;

private:
    struct Entry {
        QObject *owner = nullptr;
        QString name;
        QTimer *timer = nullptr;
    };

    void start(QObject *owner, const QString &name, double seconds, bool repeating, Task task);
    void watchOwner(QObject *owner);
    void remove(QTimer *timer);

    QElapsedTimer m_clock;
    QHash<QTimer *, Entry> m_entries;
    QSet<QObject *> m_watchedOwners;
};
