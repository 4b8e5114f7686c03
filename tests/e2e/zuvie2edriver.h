#pragma once

// What the end-to-end drivers share: the application started the way
// oldzuvi starts it, against a running demo service, and a run of steps that
// each wait on the event loop for their condition before they act. The
// drivers are run by the shell scripts beside them under Xvfb; each prints a
// line per step and exits with the number of failures.

#include "app/zuviappdelegate.h"
#include "app/zuvinavigationcontroller.h"
#include "app/zuvitabbarcontroller.h"
#include "platform/zuvidefaults.h"
#include "platform/zuviendpoints.h"
#include "player/zuvivideoplayerviewcontroller.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QRegularExpression>
#include <QTextStream>
#include <QTimer>

#include <functional>
#include <memory>

namespace ZuviE2E {

inline void say(const QString &line)
{
    QTextStream(stdout) << line << Qt::endl;
}

// A figure of this process from /proc/self/status ("VmRSS", "VmHWM"), in kB.
inline qint64 processStatusKiB(const char *field)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    const QRegularExpression line(QStringLiteral("%1:\\s+(\\d+) kB").arg(QLatin1String(field)));
    const auto match = line.match(QString::fromLatin1(status.readAll()));
    return match.hasMatch() ? match.captured(1).toLongLong() : -1;
}

// The application shell on the shared services, with the video screen
// behind every list's taps, as oldzuvi's main() builds it.
class App
{
public:
    // Reads the demo service's endpoints file and keeps the settings in
    // settingsFile (either empty: as the launch options already set them);
    // adjust sees the services before the shell is built. Says why and
    // returns false when the endpoints cannot be read or the shell does not
    // start.
    bool launch(const QString &endpointsFile, const QString &settingsFile,
                const std::function<void(ZuviAppDelegate::Services &)> &adjust = {})
    {
        if (!settingsFile.isEmpty())
            ZuviDefaults::setStandardFilePath(settingsFile);
        if (!endpointsFile.isEmpty()) {
            ZuviEndpoints endpoints = ZuviEndpoints::defaults();
            ZuviError error;
            if (!ZuviEndpoints::loadFile(endpointsFile, &endpoints, &error)) {
                say(QStringLiteral("endpoints: ") + error.message);
                return false;
            }
            ZuviEndpoints::setShared(endpoints);
        }
        services = ZuviAppDelegate::sharedServices();
        if (adjust)
            adjust(services);
        ZuviVideoPlayerViewController::openVideosFromLists(services.client, services.scheduler,
                                                           services.defaults);
        m_delegate = std::make_unique<ZuviAppDelegate>(services);
        if (!m_delegate->applicationDidFinishLaunching(&m_engine) || !window()) {
            say(QStringLiteral("the application did not start"));
            return false;
        }
        return true;
    }

    QQuickWindow *window() const { return qobject_cast<QQuickWindow *>(m_delegate->window()); }
    ZuviTabBarController *tabs() const { return m_delegate->rootTabBarController(); }
    ZuviNavigationController *tab(int index) const { return tabs()->viewControllerAt(index); }
    // The root screen of a tab, when it is of that class.
    template <class Screen> Screen *root(int index) const
    {
        return qobject_cast<Screen *>(tab(index)->rootViewController());
    }
    void shot(const QString &path) const { window()->grabWindow().save(path); }

    ZuviAppDelegate::Services services;

private:
    // Declared first, so the shell goes before the engine its pages run in.
    QQmlEngine m_engine;
    std::unique_ptr<ZuviAppDelegate> m_delegate;
};

// Steps run in order. Each waits (polled every 100 ms, for at most its
// timeout) until its condition holds, then acts; a condition that never
// holds ends the run there. Checks inside the actions count failures, which
// become the exit status once the run ends.
class Steps
{
public:
    void add(const QString &name, std::function<bool()> ready, std::function<void()> act = {},
             int timeoutMs = 20000)
    {
        m_steps.append({name, std::move(ready), std::move(act), timeoutMs});
    }
    // A step whose action says whether it saw what it expected.
    void expect(const QString &name, std::function<bool()> ready, std::function<bool()> holds)
    {
        add(name, std::move(ready), [name, holds] { check(holds(), name); });
    }
    // A step that acts that many seconds after the one before it.
    void after(double seconds, std::function<void()> act)
    {
        m_steps.append({QString(), {}, std::move(act), 0, int(seconds * 1000)});
    }
    // Text shown with a step that gives up: what its condition last saw.
    void setLastSeen(const QString &text) { m_lastSeen = text; }

    static void check(bool condition, const QString &what)
    {
        say((condition ? QStringLiteral("ok: ") : QStringLiteral("FAIL: ")) + what);
        failures() += condition ? 0 : 1;
    }
    static int &failures()
    {
        static int count = 0;
        return count;
    }

    // Starts the run on the event loop, with pauseMs between the steps (to
    // let the window draw what a step changed).
    void run(int pauseMs = 0)
    {
        m_pauseMs = pauseMs;
        poll(0, QElapsedTimer());
    }

private:
    struct Step {
        QString name;
        std::function<bool()> ready; // null for a step that only waits
        std::function<void()> act;
        int timeoutMs;
        int delayMs = 0;
    };

    void poll(int index, QElapsedTimer waited)
    {
        if (index >= m_steps.size()) {
            QCoreApplication::exit(failures());
            return;
        }
        if (!waited.isValid())
            waited.start();
        const Step &step = m_steps[index];
        if (!step.ready) {
            QTimer::singleShot(step.delayMs, [this, index] { act(index); });
            return;
        }
        if (!step.ready()) {
            if (waited.elapsed() > step.timeoutMs) {
                check(false, step.name + QStringLiteral(" (never came; ") + m_lastSeen + ')');
                QCoreApplication::exit(failures());
                return;
            }
            QTimer::singleShot(100, [this, index, waited] { poll(index, waited); });
            return;
        }
        act(index);
    }

    void act(int index)
    {
        const Step &step = m_steps[index];
        if (!step.name.isEmpty())
            say(QStringLiteral("step: ") + step.name);
        if (step.act)
            step.act();
        QTimer::singleShot(m_pauseMs, [this, index] { poll(index + 1, QElapsedTimer()); });
    }

    QList<Step> m_steps;
    QString m_lastSeen;
    int m_pauseMs = 0;
};

} // namespace ZuviE2E
