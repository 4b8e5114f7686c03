#include "zuviscreensaverinhibitor.h"

#include "zuvinowplaying.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QPointer>

const char ZuviScreenSaverInhibitor::kApplicationName[] = "oldZuvi";
const char ZuviScreenSaverInhibitor::kReason[] = "正在播放视频";

namespace {
QDBusMessage screenSaverCall(const QString &method)
{
    return QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.ScreenSaver"),
                                          QStringLiteral("/org/freedesktop/ScreenSaver"),
                                          QStringLiteral("org.freedesktop.ScreenSaver"), method);
}

QDBusMessage unInhibitCall(uint cookie)
{
    QDBusMessage call = screenSaverCall(QStringLiteral("UnInhibit"));
    call << cookie;
    // Lifting an inhibition never starts a screen saver that is not running.
    call.setAutoStartService(false);
    return call;
}
} // namespace

ZuviScreenSaverInhibitor::ZuviScreenSaverInhibitor(const QDBusConnection &connection,
                                                   QObject *parent)
    : QObject(parent), m_connection(connection)
{
}

ZuviScreenSaverInhibitor::~ZuviScreenSaverInhibitor()
{
    // One still on its way is lifted when its cookie arrives (inhibit()).
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
    // The answer may come after this object is gone; the cookie it carries
    // is then handed straight back, so no inhibition outlives its owner.
    auto *watcher = new QDBusPendingCallWatcher(m_connection.asyncCall(call));
    const QPointer<ZuviScreenSaverInhibitor> owner(this);
    const QDBusConnection connection = m_connection;
    connect(watcher, &QDBusPendingCallWatcher::finished, watcher, [owner, connection, watcher] {
        watcher->deleteLater();
        const QDBusPendingReply<uint> reply = *watcher;
        if (owner) {
            owner->cookieArrived(reply.isError() ? std::nullopt
                                                 : std::optional<uint>(reply.value()));
        } else if (!reply.isError()) {
            QDBusConnection(connection).send(unInhibitCall(reply.value()));
        }
    });
}

void ZuviScreenSaverInhibitor::cookieArrived(std::optional<uint> cookie)
{
    m_waitingForCookie = false;
    // A missing service answers with an error: stay as we are, and try
    // again only when playback starts again, never in a loop.
    if (!cookie)
        return;
    m_cookie = cookie;
    emit inhibitedChanged();
    update();
}

void ZuviScreenSaverInhibitor::uninhibit()
{
    if (!m_cookie)
        return;
    m_connection.send(unInhibitCall(*m_cookie));
    m_cookie.reset();
    emit inhibitedChanged();
}
