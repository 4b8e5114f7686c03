#pragma once

#include <QObject>
#include <QPointer>
#include <QQuickItem>
#include <QSizeF>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

// What the video screen needs from a movie player, and nothing more: start,
// pause and stop, the clock, the playback state, the load-state bits, an
// initial position, fullscreen, the rate and the sound, plus the seven
// notifications as signals. The running app uses ZuviMediaMoviePlayer; tests drive a scripted
// player through the same interface.
class ZuviMoviePlayer : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Created by the video screen")
    Q_PROPERTY(double currentPlaybackTime READ currentPlaybackTime NOTIFY timeChanged)
    Q_PROPERTY(double duration READ duration NOTIFY timeChanged)
    Q_PROPERTY(int playbackState READ playbackStateValue NOTIFY playbackStateDidChange)
    Q_PROPERTY(bool playing READ isPlaying NOTIFY playbackStateDidChange)
    Q_PROPERTY(bool fullscreen READ isFullscreen NOTIFY fullscreenChanged)
    Q_PROPERTY(double currentPlaybackRate READ currentPlaybackRate WRITE setCurrentPlaybackRate
                   NOTIFY rateChanged)

public:
    enum PlaybackState {
        PlaybackStopped = 0,
        PlaybackPlaying,
        PlaybackPaused,
        PlaybackInterrupted,
        PlaybackSeekingForward,
        PlaybackSeekingBackward,
    };
    Q_ENUM(PlaybackState)

    enum LoadStateBit {
        LoadStateUnknown = 0,
        LoadStatePlayable = 1 << 0,
        LoadStatePlaythroughOK = 1 << 1,
        LoadStateStalled = 1 << 2,
    };
    Q_ENUM(LoadStateBit)

    enum FinishReason {
        FinishReasonPlaybackEnded = 0,
        FinishReasonPlaybackError = 1,
        FinishReasonUserExited = 2,
    };
    Q_ENUM(FinishReason)

    explicit ZuviMoviePlayer(QObject *parent = nullptr) : QObject(parent) {}
    ~ZuviMoviePlayer() override = default;

    virtual void setContentURL(const QUrl &url) = 0;
    virtual QUrl contentURL() const = 0;
    // Position, in seconds, at which the next loaded content starts.
    virtual void setInitialPlaybackTime(double seconds) = 0;
    virtual double initialPlaybackTime() const = 0;

    // The item that shows the picture and the embedded controls. The player
    // moves it into the window's root item while fullscreen and back again.
    virtual void setView(QQuickItem *view) = 0;
    virtual QQuickItem *view() const = 0;
    // The picture's own size, empty until known; used to find the visible
    // picture inside the view.
    virtual QSizeF naturalSize() const = 0;

    Q_INVOKABLE virtual void play() = 0;
    Q_INVOKABLE virtual void pause() = 0;
    Q_INVOKABLE virtual void stop() = 0;
    Q_INVOKABLE virtual void seek(double seconds) = 0;
    Q_INVOKABLE void togglePlayPause() { isPlaying() ? pause() : play(); }

    // Seconds from the start; NaN when the player cannot tell.
    virtual double currentPlaybackTime() const = 0;
    virtual double duration() const = 0;
    virtual PlaybackState playbackState() const = 0;
    int playbackStateValue() const { return playbackState(); }
    bool isPlaying() const { return playbackState() == PlaybackPlaying; }
    virtual int loadState() const = 0;

    virtual bool isFullscreen() const = 0;
    Q_INVOKABLE virtual void setFullscreen(bool fullscreen, bool animated) = 0;
    // The Done control or Esc while fullscreen: the player reports a finish
    // with the user-exited reason and leaves the decision to its owner.
    Q_INVOKABLE void userExitFullscreen()
    {
        if (isFullscreen())
            emit playbackDidFinish(FinishReasonUserExited);
    }

    virtual double currentPlaybackRate() const = 0;
    virtual void setCurrentPlaybackRate(double rate) = 0;

    // Loudness from 0 (silent) to 1 as the listener hears it: half way
    // sounds half as loud. Muting keeps the volume for when it ends.
    virtual double volume() const = 0;
    virtual void setVolume(double volume) = 0;
    virtual bool isMuted() const = 0;
    virtual void setMuted(bool muted) = 0;

signals:
    void loadStateDidChange();
    void playbackStateDidChange();
    void playbackDidFinish(int reason);
    void willEnterFullscreen();
    void didEnterFullscreen();
    void willExitFullscreen();
    void didExitFullscreen();

    // A new picture of the movie reached the screen.
    void videoFrameDidChange();

    // The clock moved. While pictures are coming it moves with them, so a
    // seek bar following it never costs a frame of its own.
    void timeChanged();
    void fullscreenChanged();
    void rateChanged();

protected:
    // Moves the view into the window's root item (filling it, above the
    // page) and the window to full screen, or puts both back.
    void placeViewForFullscreen(bool fullscreen);

private:
    QPointer<QQuickItem> m_inlineParent;
    QRectF m_inlineGeometry;
    qreal m_inlineZ = 0;
    int m_windowVisibilityBeforeFullscreen = 0;
    QMetaObject::Connection m_rootWidth, m_rootHeight;
};
