#pragma once

#include <QObject>
#include <QString>
#include <QUrl>

// What the desktop is told about the video being watched, and the commands
// the desktop sends back (media keys, panel widgets, the screen saver).
//
// A video screen feeds it and obeys it:
//
//     auto *nowPlaying = ZuviNowPlaying::sharedNowPlaying();
//     nowPlaying->begin(this);            // this screen now has the controls
//     connect(nowPlaying, &ZuviNowPlaying::pauseRequested, this, [this] { ... });
//     nowPlaying->setTrack({...});
//     nowPlaying->setPlaybackStatus(ZuviNowPlaying::Playing);
//     nowPlaying->setPosition(seconds);   // on every clock tick
//
// Only one screen holds the controls at a time. A screen that begins takes
// them from the one before, whose connections to the command signals are
// cut, so a covered screen never obeys. The controls are given up by end()
// or when the screen is destroyed, whichever comes first.
class ZuviNowPlaying : public QObject
{
    Q_OBJECT

public:
    enum PlaybackStatus { Stopped, Paused, Playing };
    Q_ENUM(PlaybackStatus)

    struct Track {
        // Stable for one video page (for example the video id and page id).
        QString trackId;
        QString title;
        // The uploader.
        QString artist;
        QUrl artUrl;
        // Seconds; 0 while unknown.
        double length = 0;
    };

    // Playback rates the player offers; requests are clamped to them.
    static constexpr double kMinimumRate = 0.5;
    static constexpr double kMaximumRate = 2.0;

    explicit ZuviNowPlaying(QObject *parent = nullptr);

    static ZuviNowPlaying *sharedNowPlaying();

    // The player's side.
    void begin(QObject *player);
    void end(QObject *player);
    void setTrack(const Track &track);
    void setPlaybackStatus(PlaybackStatus status);
    // The current position in seconds. Fed often, so it announces nothing.
    void setPosition(double seconds);
    // The position jumped (a seek, a replay): the desktop is told at once.
    void notifySeeked(double seconds);
    // 0 (silent) to 1.
    void setVolume(double volume);
    void setRate(double rate);

    bool isActive() const { return m_player != nullptr; }
    QObject *player() const { return m_player; }
    Track track() const { return m_track; }
    PlaybackStatus playbackStatus() const { return m_status; }
    double position() const { return m_position; }
    double volume() const { return m_volume; }
    double rate() const { return m_rate; }

    // The desktop's side: each turns into one of the command signals, with
    // the values the player can act on unchanged (a relative seek becomes a
    // position inside the video, a toggle becomes play or pause).
    void requestPlay();
    void requestPause();
    void requestPlayPause();
    void requestStop();
    void requestSeek(double offsetSeconds);
    void requestPosition(double seconds);
    void requestVolume(double volume);
    void requestRate(double rate);

signals:
    void activeChanged();
    void trackChanged();
    void playbackStatusChanged();
    void volumeChanged();
    void rateChanged();
    void seeked(double seconds);

    // Commands for the player holding the controls.
    void playRequested();
    void pauseRequested();
    void stopRequested();
    void positionRequested(double seconds);
    void volumeRequested(double volume);
    void rateRequested(double rate);

private:
    void reset();

    // Compared, never followed: cleared in end(), which the player's
    // destroyed signal calls at the latest.
    QObject *m_player = nullptr;
    QMetaObject::Connection m_playerDestroyed;
    Track m_track;
    PlaybackStatus m_status = Stopped;
    double m_position = 0;
    double m_volume = 1;
    double m_rate = 1;
};
