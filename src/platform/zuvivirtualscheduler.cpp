#include "zuvivirtualscheduler.h"

#include <algorithm>
#include <limits>

namespace {
// Keeps a repeating call of zero interval from running forever within one advance.
constexpr double kMinimumInterval = 0.001;
} // namespace

ZuviVirtualScheduler::ZuviVirtualScheduler(QObject *parent) : ZuviScheduler(parent) {}

void ZuviVirtualScheduler::callAfter(QObject *owner, const QString &name, double delay, Task task)
{
    add(owner, name, std::max(0.0, delay), 0, std::move(task));
}

void ZuviVirtualScheduler::repeat(QObject *owner, const QString &name, double interval, Task task)
{
    const double step = std::max(kMinimumInterval, interval);
    add(owner, name, step, step, std::move(task));
}

void ZuviVirtualScheduler::add(QObject *owner, const QString &name, double delay, double interval,
                               Task task)
{
    m_entries.push_back(
        Entry{m_nextSequence++, owner, name, m_now + delay, interval, std::move(task)});
    watchOwner(owner);
}

void ZuviVirtualScheduler::watchOwner(QObject *owner)
{
    if (!owner || m_watchedOwners.contains(owner))
        return;
    m_watchedOwners.insert(owner);
    connect(owner, &QObject::destroyed, this, [this, owner] {
        m_watchedOwners.remove(owner);
        cancelAll(owner);
    });
}

void ZuviVirtualScheduler::cancel(QObject *owner, const QString &name)
{
    m_entries.erase(std::remove_if(m_entries.begin(), m_entries.end(),
                                   [&](const Entry &entry) {
                                       return entry.owner == owner && entry.name == name;
                                   }),
                    m_entries.end());
}

void ZuviVirtualScheduler::cancelAll(QObject *owner)
{
    m_entries.erase(std::remove_if(m_entries.begin(), m_entries.end(),
                                   [&](const Entry &entry) { return entry.owner == owner; }),
                    m_entries.end());
}

bool ZuviVirtualScheduler::isScheduled(QObject *owner, const QString &name) const
{
    return std::any_of(m_entries.begin(), m_entries.end(), [&](const Entry &entry) {
        return entry.owner == owner && entry.name == name;
    });
}

int ZuviVirtualScheduler::earliestDueIndex(double limit) const
{
    int best = -1;
    for (int i = 0; i < static_cast<int>(m_entries.size()); ++i) {
        const Entry &entry = m_entries[i];
        if (entry.due > limit)
            continue;
        if (best < 0 || entry.due < m_entries[best].due ||
            (entry.due == m_entries[best].due && entry.sequence < m_entries[best].sequence))
            best = i;
    }
    return best;
}

void ZuviVirtualScheduler::runEntryAt(int index)
{
    Entry &entry = m_entries[index];
    m_now = std::max(m_now, entry.due);
    Task task = entry.task;
    if (entry.interval > 0) {
        // A repeating call is rescheduled before it runs, so that it may cancel itself.
        entry.due += entry.interval;
        entry.sequence = m_nextSequence++;
    } else {
        m_entries.erase(m_entries.begin() + index);
    }
    task();
}

void ZuviVirtualScheduler::advance(double seconds)
{
    const double target = m_now + std::max(0.0, seconds);
    // A small tolerance keeps sums such as 0.12 * 25 from missing a due time by
    // one rounding step.
    const double limit = target + 1e-9;
    for (int index = earliestDueIndex(limit); index >= 0; index = earliestDueIndex(limit))
        runEntryAt(index);
    m_now = target;
}

bool ZuviVirtualScheduler::runNext()
{
    const int index = earliestDueIndex(std::numeric_limits<double>::infinity());
    if (index < 0)
        return false;
    runEntryAt(index);
    return true;
}

double ZuviVirtualScheduler::nextDueIn() const
{
    const int index = earliestDueIndex(std::numeric_limits<double>::infinity());
    return index < 0 ? -1 : m_entries[index].due - m_now;
}
