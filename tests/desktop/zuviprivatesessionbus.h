#pragma once

#include <QDBusConnection>
#include <QProcess>
#include <QStringList>
#include <QtTest>

// A session bus of the suite's own: a dbus-daemon started for the suite and
// stopped after it, so that names taken in a test never reach the desktop's
// bus and tests never see the desktop's services. Each connection() is a
// separate client of the bus with a unique name of its own, as separate
// processes would be.
class ZuviPrivateSessionBus
{
public:
    ZuviPrivateSessionBus()
    {
        m_daemon.setProgram(QStringLiteral(ZUVI_DBUS_DAEMON));
        m_daemon.setArguments({QStringLiteral("--session"), QStringLiteral("--nofork"),
                               QStringLiteral("--nopidfile"), QStringLiteral("--print-address=1")});
        m_daemon.start();
        if (!m_daemon.waitForStarted(10000))
            return;
        // The daemon prints its address once it listens.
        while (!m_daemon.canReadLine() && m_daemon.waitForReadyRead(10000)) {
        }
        m_address = QString::fromUtf8(m_daemon.readLine()).trimmed();
    }

    ~ZuviPrivateSessionBus()
    {
        for (const QString &name : std::as_const(m_connections))
            QDBusConnection::disconnectFromBus(name);
        m_daemon.terminate();
        m_daemon.waitForFinished(10000);
    }

    bool isRunning() const { return !m_address.isEmpty(); }

    QDBusConnection connection(const QString &name)
    {
        m_connections.append(name);
        return QDBusConnection::connectToBus(m_address, name);
    }

private:
    QProcess m_daemon;
    QString m_address;
    QStringList m_connections;
};
