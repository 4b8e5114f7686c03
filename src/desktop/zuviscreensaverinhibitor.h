#pragma once

#include <QDBusConnection>
#include <QObject>

#include <optional>

class ZuviNowPlaying;

// Keeps the screen awake while a video plays, through the desktop's screen
// saver service: one inhibition, held from play until pause, the end of the
// video, the video screen going away or this object's destruction. Where the
// bus or the service is missing, nothing happens and nothing is reported:
// a desktop without a screen saver has nothing to inhibit.
//
// Calls never wait on the bus. The answer to an inhibition carries the
// cookie that lifts it; if playback stopped meanwhile, the inhibition is
// lifted as soon as the cookie arrives.
class ZuviScreenSaverInhibitor : public QObject
{
    Q_OBJECT

public:
    static const char kApplicationName[];
    static const char kReason[];

    explicit ZuviScreenSaverInhibitor(const QDBusConnection &connection, QObject *parent = nullptr);
    ~ZuviScreenSaverInhibitor() override;

    // Follows the now-playing state: inhibited exactly while it plays.
    void followNowPlaying(ZuviNowPlaying *nowPlaying);

    void setPlaying(bool playing);
    bool isPlaying() const { return m_playing; }
    // Whether the screen saver holds an inhibition of ours right now.
    bool isInhibited() const { return m_cookie.has_value(); }
    // Whether an inhibition was asked for and has not been answered yet.
    bool isWaitingForCookie() const { return m_waitingForCookie; }

signals:
    void inhibitedChanged();

private:
    void update();
    void inhibit();
    void cookieArrived(std::optional<uint> cookie);
    void uninhibit();

    QDBusConnection m_connection;
    bool m_playing = false;
    bool m_waitingForCookie = false;
    std::optional<uint> m_cookie;
};
