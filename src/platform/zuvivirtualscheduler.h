#pragma once

#include "zuvischeduler.h"

#include <QSet>

#include <vector>

// A scheduler whose clock moves only when a test advances it. Calls run in
// the order of their due time (ties in the order they were scheduled), with
// now() set to each call's due time while it runs.
class ZuviVirtualScheduler : public ZuviScheduler
{
    Q_OBJECT
public:
    explicit ZuviVirtualScheduler(QObject *parent = nullptr);

    double now() const override { return m_now; }
    void callAfter(QObject *owner, const QString &name, double delay, Task task) override;
    void repeat(QObject *owner, const QString &name, double interval, Task task) override;
    void cancel(QObject *owner, const QString &name) override;
    void cancelAll(QObject *owner) override;
    bool isScheduled(QObject *owner, const QString &name) const override;

    // Moves the clock forward by seconds, running every call that falls due.
    void advance(double seconds);
    // Moves the clock to the next due call and runs it; false when none is pending.
    bool runNext();
    int pendingCount() const { return static_cast<int>(m_entries.size()); }
    // Seconds until the earliest pending call, or -1 when none is pending.
    double nextDueIn() const;

private:
    struct Entry {
        quint64 sequence = 0;
        QObject *owner = nullptr;
        QString name;
        double due = 0;
        double interval = 0; // 0 for a one-shot call
        Task task;
    };

    void add(QObject *owner, const QString &name, double delay, double interval, Task task);
    int earliestDueIndex(double limit) const;
    void runEntryAt(int index);
    void watchOwner(QObject *owner);

    double m_now = 0;
    quint64 m_nextSequence = 1;
    std::vector<Entry> m_entries;
    QSet<QObject *> m_watchedOwners;
};
