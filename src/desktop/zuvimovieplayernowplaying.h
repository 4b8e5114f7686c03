#pragma once

#include "zuvinowplaying.h"

#include <QObject>
#include <QPointer>

#include <functional>

class ZuviKeyboardShortcuts;
class ZuviMoviePlayer;

// Joins a video screen's movie player to the desktop, so the screen needs
// one line: a child made with the screen's track, then the player handed
// over each time one is made (a new quality makes a new player).
//
// While it lives it holds the now-playing controls and feeds them from the
// player (state, clock, length, rate); it carries out the desktop's play,
// pause, stop, position and rate commands on the player, and binds the
// keys that act on the player alone: Space, and the 5 s and 30 s seeks.
// The volume belongs to the screen's own controls (it is remembered
// there); the screen hands over a way to read and set it.
class ZuviMoviePlayerNowPlaying : public QObject
{
    Q_OBJECT

public:
    ZuviMoviePlayerNowPlaying(ZuviNowPlaying *nowPlaying, ZuviKeyboardShortcuts *shortcuts,
                              QObject *parent = nullptr);
    ~ZuviMoviePlayerNowPlaying() override;

    // Takes the controls back from a screen that covered this one (call
    // when the screen shows again); made with them already.
    void takeControls();
    bool holdsControls() const { return m_nowPlaying->player() == this; }

    void setTrack(const ZuviNowPlaying::Track &track);
    void setPlayer(ZuviMoviePlayer *player);
    // The screen's volume, 0 to 1, for the desktop to show and set; call
    // volumeDidChange whenever it changes.
    void setVolumeControl(std::function<double()> read, std::function<void(double)> write);
    void volumeDidChange();
    // Where the desktop's rate requests go instead of straight to the
    // player, so the screen's speed choice follows them.
    void setRateControl(std::function<void(double)> write);

private:
    void followState();
    void followTime();
    void seekTo(double seconds);
    void seekBy(double offset);

    ZuviNowPlaying *m_nowPlaying;
    QPointer<ZuviMoviePlayer> m_player;
    QList<QMetaObject::Connection> m_playerConnections;
    ZuviNowPlaying::Track m_track;
    std::function<double()> m_readVolume;
    std::function<void(double)> m_writeVolume;
    std::function<void(double)> m_writeRate;
};
