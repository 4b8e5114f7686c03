#pragma once

#include <QObject>
#include <QString>

#include <functional>

// Timers and delayed calls on the main thread. Every call belongs to an owner
// (a QObject, or nullptr for process-wide calls) and has a name; an owner
// cancels its calls by name, and all of them go when the owner is destroyed.
// Screens and services take a scheduler in their constructor, so tests hand
// them a ZuviVirtualScheduler and advance its clock by hand.
class ZuviScheduler : public QObject
{
    Q_OBJECT
public:
    using Task = std::function<void()>;

    explicit ZuviScheduler(QObject *parent = nullptr) : QObject(parent) {}
    ~ZuviScheduler() override = default;

    // The real-time scheduler used by the running application.
    static ZuviScheduler *sharedScheduler();

    // Seconds on this scheduler's clock (monotonic; the origin is arbitrary).
    virtual double now() const = 0;

    // Runs the task once, delay seconds from now. Several calls may share a name.
    virtual void callAfter(QObject *owner, const QString &name, double delay, Task task) = 0;
    // Runs the task every interval seconds until cancelled.
    virtual void repeat(QObject *owner, const QString &name, double interval, Task task) = 0;
    // Cancels every pending call and timer of the owner with that name.
    virtual void cancel(QObject *owner, const QString &name) = 0;
    virtual void cancelAll(QObject *owner) = 0;
    virtual bool isScheduled(QObject *owner, const QString &name) const = 0;
};
