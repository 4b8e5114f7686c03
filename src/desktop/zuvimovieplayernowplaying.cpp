#include "zuvimovieplayernowplaying.h"

#include "app/zuvikeyboardshortcuts.h"
#include "player/zuvimovieplayer.h"

#include <algorithm>
#include <cmath>

ZuviMoviePlayerNowPlaying::ZuviMoviePlayerNowPlaying(ZuviNowPlaying *nowPlaying,
                                                     ZuviKeyboardShortcuts *shortcuts,
                                                     QObject *parent)
    : QObject(parent), m_nowPlaying(nowPlaying)
{
    takeControls();
    if (!shortcuts)
        return;
    using Keys = ZuviKeyboardShortcuts;
    shortcuts->bind(Keys::PlayPause, this, [this] {
        if (m_player)
            m_player->togglePlayPause();
    });
    shortcuts->bind(Keys::SeekBackward, this, [this] { seekBy(-Keys::kShortSeek); });
    shortcuts->bind(Keys::SeekForward, this, [this] { seekBy(Keys::kShortSeek); });
    shortcuts->bind(Keys::SeekBackwardLong, this, [this] { seekBy(-Keys::kLongSeek); });
    shortcuts->bind(Keys::SeekForwardLong, this, [this] { seekBy(Keys::kLongSeek); });
}

void ZuviMoviePlayerNowPlaying::takeControls()
{
    if (m_nowPlaying->player() == this)
        return;
    // This object holds the controls, so the commands are cut from it as
    // soon as another screen takes them, and end with it.
    m_nowPlaying->begin(this);
    connect(m_nowPlaying, &ZuviNowPlaying::playRequested, this, [this] {
        if (m_player)
            m_player->play();
    });
    connect(m_nowPlaying, &ZuviNowPlaying::pauseRequested, this, [this] {
        if (m_player)
            m_player->pause();
    });
    connect(m_nowPlaying, &ZuviNowPlaying::stopRequested, this, [this] {
        if (m_player)
            m_player->stop();
    });
    connect(m_nowPlaying, &ZuviNowPlaying::positionRequested, this,
            &ZuviMoviePlayerNowPlaying::seekTo);
    connect(m_nowPlaying, &ZuviNowPlaying::rateRequested, this, [this](double rate) {
        if (m_writeRate)
            m_writeRate(rate);
        else if (m_player)
            m_player->setCurrentPlaybackRate(rate);
    });
    connect(m_nowPlaying, &ZuviNowPlaying::volumeRequested, this, [this](double volume) {
        if (m_writeVolume)
            m_writeVolume(volume);
    });
    // What the desktop shows is this screen's again.
    m_nowPlaying->setTrack(m_track);
    if (m_player)
        m_nowPlaying->setRate(m_player->currentPlaybackRate());
    followState();
    followTime();
    volumeDidChange();
}

ZuviMoviePlayerNowPlaying::~ZuviMoviePlayerNowPlaying()
{
    m_nowPlaying->end(this);
}

void ZuviMoviePlayerNowPlaying::setTrack(const ZuviNowPlaying::Track &track)
{
    m_track = track;
    if (!holdsControls())
        return;
    m_nowPlaying->setTrack(track);
    followTime();
}

void ZuviMoviePlayerNowPlaying::setPlayer(ZuviMoviePlayer *player)
{
    for (const QMetaObject::Connection &connection : std::as_const(m_playerConnections))
        disconnect(connection);
    m_playerConnections.clear();
    m_player = player;
    if (player) {
        m_playerConnections = {
            connect(player, &ZuviMoviePlayer::playbackStateDidChange, this,
                    &ZuviMoviePlayerNowPlaying::followState),
            connect(player, &ZuviMoviePlayer::timeChanged, this,
                    &ZuviMoviePlayerNowPlaying::followTime),
            connect(player, &ZuviMoviePlayer::rateChanged, this,
                    [this] {
                        if (holdsControls())
                            m_nowPlaying->setRate(m_player->currentPlaybackRate());
                    }),
            connect(player, &ZuviMoviePlayer::playbackDidFinish, this,
                    [this] {
                        if (holdsControls())
                            m_nowPlaying->setPlaybackStatus(ZuviNowPlaying::Stopped);
                    }),
        };
        if (holdsControls())
            m_nowPlaying->setRate(player->currentPlaybackRate());
    }
    followState();
    followTime();
}

void ZuviMoviePlayerNowPlaying::setVolumeControl(std::function<double()> read,
                                                 std::function<void(double)> write)
{
    m_readVolume = std::move(read);
    m_writeVolume = std::move(write);
    volumeDidChange();
}

void ZuviMoviePlayerNowPlaying::setRateControl(std::function<void(double)> write)
{
    m_writeRate = std::move(write);
}

void ZuviMoviePlayerNowPlaying::volumeDidChange()
{
    if (m_readVolume && holdsControls())
        m_nowPlaying->setVolume(m_readVolume());
}

void ZuviMoviePlayerNowPlaying::followState()
{
    if (!holdsControls())
        return;
    if (!m_player) {
        m_nowPlaying->setPlaybackStatus(ZuviNowPlaying::Stopped);
        return;
    }
    switch (m_player->playbackState()) {
    case ZuviMoviePlayer::PlaybackPlaying:
        m_nowPlaying->setPlaybackStatus(ZuviNowPlaying::Playing);
        break;
    case ZuviMoviePlayer::PlaybackStopped:
        m_nowPlaying->setPlaybackStatus(ZuviNowPlaying::Stopped);
        break;
    default:
        // Interrupted or scrubbing: not playing, and not over either.
        m_nowPlaying->setPlaybackStatus(ZuviNowPlaying::Paused);
        break;
    }
}

void ZuviMoviePlayerNowPlaying::followTime()
{
    if (!m_player || !holdsControls())
        return;
    const double time = m_player->currentPlaybackTime();
    if (std::isfinite(time))
        m_nowPlaying->setPosition(time);
    // The length is known only once the player has the stream.
    const double duration = m_player->duration();
    if (std::isfinite(duration) && duration > 0 && duration != m_nowPlaying->track().length) {
        m_track.length = duration;
        m_nowPlaying->setTrack(m_track);
        if (std::isfinite(time))
            m_nowPlaying->setPosition(time);
    }
}

void ZuviMoviePlayerNowPlaying::seekTo(double seconds)
{
    if (!m_player)
        return;
    m_player->seek(seconds);
    if (holdsControls())
        m_nowPlaying->notifySeeked(seconds);
}

void ZuviMoviePlayerNowPlaying::seekBy(double offset)
{
    if (!m_player)
        return;
    const double time = m_player->currentPlaybackTime();
    const double duration = m_player->duration();
    // A step past either end lands on it.
    double target = std::max(0.0, (std::isfinite(time) ? time : 0) + offset);
    if (std::isfinite(duration) && duration > 0)
        target = std::min(target, duration);
    seekTo(target);
}
