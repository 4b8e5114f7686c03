#pragma once

#include "zuvimovieplayer.h"

#include <QAudioOutput>
#include <QMediaPlayer>

// The movie player of the running app: a QMediaPlayer whose picture goes to
// the VideoOutput inside the view (the child whose objectName is
// "videoOutput"). Media status and buffering become the load-state bits; the
// end of the media and playback errors become finishes.
class ZuviMediaMoviePlayer : public ZuviMoviePlayer
{
    Q_OBJECT
public:
    explicit ZuviMediaMoviePlayer(QObject *parent = nullptr);
    ~ZuviMediaMoviePlayer() override;

    void setContentURL(const QUrl &url) override;
    QUrl contentURL() const override { return m_player.source(); }
    void setInitialPlaybackTime(double seconds) override { m_initialPlaybackTime = seconds; }
    double initialPlaybackTime() const override { return m_initialPlaybackTime; }
    void setView(QQuickItem *view) override;
    QQuickItem *view() const override { return m_view; }
    QSizeF naturalSize() const override;

    void play() override;
    void pause() override;
    void stop() override;
    void seek(double seconds) override;

    double currentPlaybackTime() const override;
    double duration() const override { return m_player.duration() / 1000.0; }
    PlaybackState playbackState() const override;
    int loadState() const override { return m_loadState; }

    bool isFullscreen() const override { return m_fullscreen; }
    void setFullscreen(bool fullscreen, bool animated) override;

    double currentPlaybackRate() const override;
    void setCurrentPlaybackRate(double rate) override;

    double volume() const override { return m_volume; }
    void setVolume(double volume) override;
    bool isMuted() const override { return m_audio.isMuted(); }
    void setMuted(bool muted) override { m_audio.setMuted(muted); }

    // Load-state bits for a media status and buffer level.
    static int loadStateForStatus(QMediaPlayer::MediaStatus status, float bufferProgress);

private:
    void mediaStatusChanged(QMediaPlayer::MediaStatus status);
    void updateLoadState();
    void endSeek();
    void finishAtEnd();
    static void returnFreedMemory();
    void positionChanged();
    void applyInitialPlaybackTime();
    void videoFrameArrived();

    QMediaPlayer m_player;
    QAudioOutput m_audio;
    QPointer<QQuickItem> m_view;
    double m_volume = 1;
    double m_initialPlaybackTime = 0;
    bool m_initialTimeApplied = false;
    bool m_newMediaLoading = false; // the media of the current address began loading
    int m_startSeekTries = 0;
    int m_loadState = LoadStateUnknown;
    bool m_fullscreen = false;
    bool m_finished = false;
    bool m_endedBySeek = false;                  // paused at the end by a seek there
    PlaybackState m_seekState = PlaybackStopped; // a seeking state while a seek runs
    QMetaObject::Connection m_frameConnection;
    // A clock change seen since the last picture, held back for the next one.
    bool m_timeChangeHeld = false;
    bool m_pictureSinceLastReport = false;
};
