#include "zuviscreensaverinhibitor.h"

#include "zuvinowplaying.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

const char ZuviScreenSaverInhibitor::kApplicationName[] = "oldZuvi";
const char ZuviScreenSaverInhibitor::kReason[] = "正在播放视频";

namespace {
QDBusMessage screenSaverCall(const QString &method)
{
    return QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.ScreenSaver"),
                                          QStringLiteral("/org/freedesktop/ScreenSaver"),
                                          QStringLiteral("org.freedesktop.ScreenSaver"), method);
}
} // namespace

ZuviScreenSaverInhibitor::ZuviScreenSaverInhibitor(const QDBusConnection &connection,
                                                   QObject *parent)
    : QObject(parent), m_connection(connection)
{
}

ZuviScreenSaverInhibitor::~ZuviScreenSaverInhibitor()
{
    // An inhibition still on its way is lifted by the screen saver itself
    // when this process leaves the bus; one already granted is lifted here.
    uninhibit();
}

void ZuviScreenSaverInhibitor::followNowPlaying(ZuviNowPlaying *nowPlaying)
{
    auto follow = [this, nowPlaying] {
        setPlaying(nowPlaying->isActive() &&
                   nowPlaying->playbackStatus() == ZuviNowPlaying::Playing);
    };
    connect(nowPlaying, &ZuviNowPlaying::playbackStatusChanged, this, follow);
    connect(nowPlaying, &ZuviNowPlaying::activeChanged, this, follow);
    follow();
}

void ZuviScreenSaverInhibitor::setPlaying(bool playing)
{
    m_playing = playing;
    update();
}

void ZuviScreenSaverInhibitor::update()
{
    if (m_waitingForCookie || !m_connection.isConnected())
        return;
    if (m_playing && !m_cookie)
        inhibit();
    else if (!m_playing && m_cookie)
        uninhibit();
}

void ZuviScreenSaverInhibitor::inhibit()
{
    QDBusMessage call = screenSaverCall(QStringLiteral("Inhibit"));
    call << QString::fromLatin1(kApplicationName) << QString::fromUtf8(kReason);
    m_waitingForCookie = true;
    // The watcher is a child: an answer after destruction goes nowhere.
    auto *watcher = new QDBusPendingCallWatcher(m_connection.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        m_waitingForCookie = false;
        const QDBusPendingReply<uint> reply = *watcher;
        // A missing service answers with an error: stay as we are, and try
        // again only when playback starts again, never in a loop.
        if (reply.isError())
            return;
        m_cookie = reply.value();
        emit inhibitedChanged();
        update();
    });
}

void ZuviScreenSaverInhibitor::uninhibit()
{
    if (!m_cookie)
        return;
    QDBusMessage call = screenSaverCall(QStringLiteral("UnInhibit"));
    call << *m_cookie;
    call.setAutoStartService(false);
    m_connection.send(call);
    m_cookie.reset();
    emit inhibitedChanged();
}
