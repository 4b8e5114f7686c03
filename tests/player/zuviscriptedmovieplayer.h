#pragma once

#include "player/zuvimovieplayer.h"

#include <QList>
#include <QPointer>

// A movie player whose clock, states and notifications are set by the test.
// It moves its view for fullscreen exactly as the real player does, so the
// screen's overlay placement is exercised on real items.
class ZuviScriptedMoviePlayer : public ZuviMoviePlayer
{
    Q_OBJECT
public:
    explicit ZuviScriptedMoviePlayer(QObject *parent = nullptr) : ZuviMoviePlayer(parent) {}

    void setContentURL(const QUrl &url) override { m_url = url; }
    QUrl contentURL() const override { return m_url; }
    void setInitialPlaybackTime(double seconds) override { m_initialTime = seconds; }
    double initialPlaybackTime() const override { return m_initialTime; }
    void setView(QQuickItem *view) override { m_view = view; }
    QQuickItem *view() const override { return m_view; }
    QSizeF naturalSize() const override { return m_naturalSize; }
    void setNaturalSize(const QSizeF &size) { m_naturalSize = size; }

    void play() override
    {
        ++playCount;
        changeState(PlaybackPlaying);
    }
    void pause() override { changeState(PlaybackPaused); }
    void stop() override
    {
        ++stopCount;
        changeState(PlaybackStopped);
    }
    void seek(double seconds) override { m_time = seconds; }

    double currentPlaybackTime() const override { return m_time; }
    void setTime(double seconds) { m_time = seconds; }
    double duration() const override { return 600; }
    PlaybackState playbackState() const override { return m_state; }
    // Changes the state as the player itself would, notifying its owner.
    void changeState(PlaybackState state)
    {
        m_state = state;
        emit playbackStateDidChange();
    }
    int loadState() const override { return m_loadState; }
    void changeLoadState(int bits)
    {
        m_loadState = bits;
        emit loadStateDidChange();
    }
    void finish(int reason) { emit playbackDidFinish(reason); }

    bool isFullscreen() const override { return m_fullscreen; }
    void setFullscreen(bool fullscreen, bool animated) override
    {
        if (fullscreen == m_fullscreen)
            return;
        lastFullscreenAnimated = animated;
        fullscreen ? emit willEnterFullscreen() : emit willExitFullscreen();
        m_fullscreen = fullscreen;
        placeViewForFullscreen(fullscreen);
        fullscreen ? emit didEnterFullscreen() : emit didExitFullscreen();
    }

    double currentPlaybackRate() const override { return m_rate; }
    void setCurrentPlaybackRate(double rate) override { m_rate = rate; }
    double volume() const override { return m_volume; }
    void setVolume(double volume) override { m_volume = volume; }
    bool isMuted() const override { return m_muted; }
    void setMuted(bool muted) override { m_muted = muted; }

    int playCount = 0;
    int stopCount = 0;
    bool lastFullscreenAnimated = false;

private:
    QUrl m_url;
    double m_initialTime = 0;
    QPointer<QQuickItem> m_view;
    QSizeF m_naturalSize;
    double m_time = 0;
    PlaybackState m_state = PlaybackStopped;
    int m_loadState = LoadStateUnknown;
    bool m_fullscreen = false;
    double m_rate = 1;
    double m_volume = 1;
    bool m_muted = false;
};
