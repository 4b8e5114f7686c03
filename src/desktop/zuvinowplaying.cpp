#include "zuvinowplaying.h"

#include <QtGlobal>

ZuviNowPlaying::ZuviNowPlaying(QObject *parent) : QObject(parent) {}

ZuviNowPlaying *ZuviNowPlaying::sharedNowPlaying()
{
    static ZuviNowPlaying *shared = new ZuviNowPlaying;
    return shared;
}

void ZuviNowPlaying::begin(QObject *player)
{
    if (!player || player == m_player)
        return;
    if (m_player) {
        // The covered screen keeps its state but no longer hears commands.
        disconnect(this, nullptr, m_player, nullptr);
        disconnect(m_playerDestroyed);
    }
    const bool wasActive = isActive();
    m_player = player;
    m_playerDestroyed = connect(player, &QObject::destroyed, this, [this, player] { end(player); });
    reset();
    if (!wasActive)
        emit activeChanged();
}

void ZuviNowPlaying::end(QObject *player)
{
    // A screen that already lost the controls to another has nothing to give up.
    if (!player || player != m_player)
        return;
    disconnect(m_playerDestroyed);
    disconnect(this, nullptr, m_player, nullptr);
    m_player = nullptr;
    reset();
    emit activeChanged();
}

void ZuviNowPlaying::reset()
{
    m_track = Track();
    m_position = 0;
    emit trackChanged();
    setPlaybackStatus(Stopped);
}

void ZuviNowPlaying::setTrack(const Track &track)
{
    m_track = track;
    m_position = 0;
    emit trackChanged();
}

void ZuviNowPlaying::setPlaybackStatus(PlaybackStatus status)
{
    if (m_status == status)
        return;
    m_status = status;
    emit playbackStatusChanged();
}

void ZuviNowPlaying::setPosition(double seconds)
{
    m_position = qMax(0.0, seconds);
}

void ZuviNowPlaying::notifySeeked(double seconds)
{
    setPosition(seconds);
    emit seeked(m_position);
}

void ZuviNowPlaying::setVolume(double volume)
{
    volume = qBound(0.0, volume, 1.0);
    if (qFuzzyCompare(m_volume, volume))
        return;
    m_volume = volume;
    emit volumeChanged();
}

void ZuviNowPlaying::setRate(double rate)
{
    if (rate <= 0 || qFuzzyCompare(m_rate, rate))
        return;
    m_rate = rate;
    emit rateChanged();
}

void ZuviNowPlaying::requestPlay()
{
    if (isActive())
        emit playRequested();
}

void ZuviNowPlaying::requestPause()
{
    if (isActive())
        emit pauseRequested();
}

void ZuviNowPlaying::requestPlayPause()
{
    if (m_status == Playing)
        requestPause();
    else
        requestPlay();
}

void ZuviNowPlaying::requestStop()
{
    if (isActive())
        emit stopRequested();
}

void ZuviNowPlaying::requestSeek(double offsetSeconds)
{
    requestPosition(m_position + offsetSeconds);
}

void ZuviNowPlaying::requestPosition(double seconds)
{
    if (!isActive())
        return;
    // A position past the end stops at the end rather than being refused:
    // a long press on a media key should land on the last frame.
    seconds = qMax(0.0, seconds);
    if (m_track.length > 0)
        seconds = qMin(seconds, m_track.length);
    emit positionRequested(seconds);
}

void ZuviNowPlaying::requestVolume(double volume)
{
    if (isActive())
        emit volumeRequested(qBound(0.0, volume, 1.0));
}

void ZuviNowPlaying::requestRate(double rate)
{
    // A rate of zero would mean pause; the pause command says that already.
    if (isActive() && rate > 0)
        emit rateRequested(qBound(kMinimumRate, rate, kMaximumRate));
}
