#include "zuvimprisservice.h"

#include "zuvimprisplayeradaptor.h"
#include "zuvimprisrootadaptor.h"
#include "zuvinowplaying.h"

#include <QCoreApplication>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcDesktop, "zuvi.desktop")

const char ZuviMprisService::kServiceName[] = "org.mpris.MediaPlayer2.oldzuvi";
const char ZuviMprisService::kObjectPath[] = "/org/mpris/MediaPlayer2";

ZuviMprisService::ZuviMprisService(ZuviNowPlaying *nowPlaying, const QDBusConnection &connection,
                                   QObject *parent)
    : QObject(parent), m_nowPlaying(nowPlaying), m_connection(connection)
{
    // The adaptors are children of this object: registering it exports them.
    new ZuviMprisRootAdaptor(this);
    new ZuviMprisPlayerAdaptor(this, nowPlaying);
    connect(nowPlaying, &ZuviNowPlaying::activeChanged, this, &ZuviMprisService::update);
    update();
}

ZuviMprisService::~ZuviMprisService()
{
    unpublish();
}

void ZuviMprisService::update()
{
    if (m_nowPlaying->isActive())
        publish();
    else
        unpublish();
}

void ZuviMprisService::publish()
{
    if (isServing() || !m_connection.isConnected())
        return;
    if (!m_connection.registerObject(QString::fromLatin1(kObjectPath), this,
                                     QDBusConnection::ExportAdaptors)) {
        qCDebug(lcDesktop) << "the media player object could not be registered";
        return;
    }
    // A second running copy takes an instance name of its own, as the
    // desktop expects, instead of going without media keys.
    const QString name = QString::fromLatin1(kServiceName);
    const QString instanceName =
        name + QStringLiteral(".instance%1").arg(QCoreApplication::applicationPid());
    for (const QString &candidate : {name, instanceName}) {
        if (m_connection.registerService(candidate)) {
            m_servedName = candidate;
            return;
        }
    }
    qCDebug(lcDesktop) << "no media player name could be taken on the session bus";
    m_connection.unregisterObject(QString::fromLatin1(kObjectPath));
}

void ZuviMprisService::unpublish()
{
    if (!isServing())
        return;
    m_connection.unregisterService(m_servedName);
    m_connection.unregisterObject(QString::fromLatin1(kObjectPath));
    m_servedName.clear();
}

void ZuviMprisService::sendPropertiesChanged(const QString &interface, const QVariantMap &changed)
{
    if (!isServing() || changed.isEmpty())
        return;
    QDBusMessage signal = QDBusMessage::createSignal(
        QString::fromLatin1(kObjectPath), QStringLiteral("org.freedesktop.DBus.Properties"),
        QStringLiteral("PropertiesChanged"));
    signal << interface << changed << QStringList();
    m_connection.send(signal);
}
