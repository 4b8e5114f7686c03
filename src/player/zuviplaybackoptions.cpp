#include "zuviplaybackoptions.h"

#include "platform/zuvidefaults.h"
#include "platform/zuvischeduler.h"
#include "zuvifastforward.h"
#include "zuvimovieplayer.h"
#include "zuviqualitypreference.h"

#include <algorithm>
#include <cmath>

const char *const ZuviPlaybackOptions::kVolumeKey = "ZuviPlayerVolume";
const char *const ZuviPlaybackOptions::kMutedKey = "ZuviPlayerMuted";

namespace {
const QString kHideControls = QStringLiteral("hideControls");
constexpr int kNormalSpeedIndex = 2;
} // namespace

ZuviPlaybackOptions::ZuviPlaybackOptions(ZuviScheduler *scheduler, ZuviDefaults *defaults,
                                         ZuviFastForward *fastForward, QObject *parent)
    : QObject(parent), m_scheduler(scheduler), m_defaults(defaults), m_fastForward(fastForward)
{
    loadStoredVolume();
}

void ZuviPlaybackOptions::setPlayer(ZuviMoviePlayer *player)
{
    disconnect(m_stateConnection);
    m_player = player;
    if (player) {
        m_stateConnection = connect(player, &ZuviMoviePlayer::playbackStateDidChange, this,
                                    &ZuviPlaybackOptions::followPlaybackState);
        applyVolume();
        applyRate();
    }
    followPlaybackState();
}

// MARK: - Volume

void ZuviPlaybackOptions::setVolume(double volume)
{
    volume = std::isfinite(volume) ? std::clamp(volume, 0.0, 1.0) : m_volume;
    // Rounded, so steps of a tenth land on tenths and come back to them.
    volume = std::round(volume * 1000) / 1000;
    if (volume == m_volume)
        return;
    m_volume = volume;
    applyVolume();
    saveVolume();
    emit volumeChanged();
}

void ZuviPlaybackOptions::setMuted(bool muted)
{
    if (muted == m_muted)
        return;
    m_muted = muted;
    applyVolume();
    saveVolume();
    emit volumeChanged();
}

void ZuviPlaybackOptions::stepVolume(int steps)
{
    setMuted(false);
    setVolume(m_volume + steps * kVolumeStep);
    pointerMoved();
}

void ZuviPlaybackOptions::loadStoredVolume()
{
    const QString volumeKey = QString::fromLatin1(kVolumeKey);
    const double volume =
        m_defaults->containsKey(volumeKey) ? m_defaults->doubleForKey(volumeKey) : 1.0;
    const bool muted = m_defaults->boolForKey(QString::fromLatin1(kMutedKey));
    const double clamped = std::isfinite(volume) ? std::clamp(volume, 0.0, 1.0) : 1.0;
    if (clamped == m_volume && muted == m_muted)
        return;
    m_volume = clamped;
    m_muted = muted;
    applyVolume();
    emit volumeChanged();
}

void ZuviPlaybackOptions::applyVolume()
{
    if (!m_player)
        return;
    m_player->setVolume(m_volume);
    m_player->setMuted(m_muted);
}

void ZuviPlaybackOptions::saveVolume()
{
    m_defaults->setObject(m_volume, QString::fromLatin1(kVolumeKey));
    m_defaults->setBool(m_muted, QString::fromLatin1(kMutedKey));
    m_defaults->synchronize();
}

// MARK: - Speed

const QList<double> &ZuviPlaybackOptions::speeds()
{
    static const QList<double> list{0.5, 0.75, 1.0, 1.25, 1.5, 2.0};
    return list;
}

QStringList ZuviPlaybackOptions::speedTitles()
{
    QStringList titles;
    for (double speed : speeds())
        titles << QString::number(speed) + QStringLiteral("×");
    return titles;
}

void ZuviPlaybackOptions::chooseSpeed(int index)
{
    if (index < 0 || index >= speeds().size() || index == m_speedIndex)
        return;
    m_speedIndex = index;
    applyRate();
    emit speedChanged();
}

void ZuviPlaybackOptions::stepSpeed(int steps)
{
    chooseSpeed(std::clamp(m_speedIndex + steps, 0, int(speeds().size()) - 1));
    pointerMoved();
}

void ZuviPlaybackOptions::chooseNearestSpeed(double rate)
{
    if (!std::isfinite(rate))
        return;
    int nearest = 0;
    for (int i = 1; i < speeds().size(); ++i) {
        if (std::abs(speeds().at(i) - rate) < std::abs(speeds().at(nearest) - rate))
            nearest = i;
    }
    chooseSpeed(nearest);
}

QString ZuviPlaybackOptions::speedButtonTitle() const
{
    return m_speedIndex == kNormalSpeedIndex ? QStringLiteral("倍速")
                                             : speedTitles().at(m_speedIndex);
}

void ZuviPlaybackOptions::applyRate()
{
    // While the picture is held for fast forward, the chosen speed waits
    // for the release.
    if (m_fastForward && m_fastForward->isActive()) {
        m_fastForward->setRestoreRate(rate());
        return;
    }
    if (m_player)
        m_player->setCurrentPlaybackRate(rate());
}

// MARK: - Quality

const QList<int> &ZuviPlaybackOptions::qualities()
{
    static const QList<int> list{64, 32, 16};
    return list;
}

QStringList ZuviPlaybackOptions::qualityTitles()
{
    QStringList titles;
    for (int quality : qualities())
        titles << ZuviQualityPreference::displayTitleForQuality(quality);
    return titles;
}

QList<int> ZuviPlaybackOptions::qualityLadderFrom(int quality)
{
    QList<int> ladder;
    for (int step : qualities()) {
        if (step <= quality)
            ladder << step;
    }
    // Below the lowest step there is still the lowest to ask for.
    return ladder.isEmpty() ? QList<int>{qualities().constLast()} : ladder;
}

int ZuviPlaybackOptions::qualityIndex() const
{
    // The service may answer with a code between the steps; it counts as
    // the step it reaches.
    for (int i = 0; i < qualities().size(); ++i) {
        if (m_activeQuality >= qualities().at(i))
            return i;
    }
    return -1;
}

QString ZuviPlaybackOptions::qualityButtonTitle() const
{
    const int index = qualityIndex();
    return index < 0 ? QStringLiteral("清晰度") : qualityTitles().at(index);
}

void ZuviPlaybackOptions::chooseQuality(int index)
{
    if (index < 0 || index >= qualities().size())
        return;
    if (index == qualityIndex() && !m_switchingQuality)
        return;
    emit qualityRequested(qualities().at(index));
}

void ZuviPlaybackOptions::setActiveQuality(int quality)
{
    if (quality == m_activeQuality)
        return;
    m_activeQuality = quality;
    emit qualityChanged();
}

void ZuviPlaybackOptions::setSwitchingQuality(bool switching)
{
    if (switching == m_switchingQuality)
        return;
    m_switchingQuality = switching;
    emit qualityChanged();
}

// MARK: - Controls

void ZuviPlaybackOptions::setControlsInUse(bool inUse)
{
    if (inUse == m_controlsInUse)
        return;
    m_controlsInUse = inUse;
    if (inUse) {
        m_scheduler->cancel(this, kHideControls);
        setControlsVisible(true);
    } else {
        scheduleHide();
    }
    emit controlsVisibleChanged();
}

void ZuviPlaybackOptions::pointerMoved()
{
    setControlsVisible(true);
    scheduleHide();
}

void ZuviPlaybackOptions::followPlaybackState()
{
    if (isPlaying()) {
        // Already counting down: the movie playing on changes nothing.
        if (!m_scheduler->isScheduled(this, kHideControls) && m_controlsVisible)
            scheduleHide();
        return;
    }
    m_scheduler->cancel(this, kHideControls);
    setControlsVisible(true);
}

void ZuviPlaybackOptions::scheduleHide()
{
    m_scheduler->cancel(this, kHideControls);
    if (!isPlaying() || m_controlsInUse)
        return;
    m_scheduler->callAfter(this, kHideControls, kControlsHideDelay, [this] {
        if (isPlaying() && !m_controlsInUse)
            setControlsVisible(false);
    });
}

void ZuviPlaybackOptions::setControlsVisible(bool visible)
{
    if (visible == m_controlsVisible)
        return;
    m_controlsVisible = visible;
    emit controlsVisibleChanged();
}

bool ZuviPlaybackOptions::isPlaying() const
{
    return m_player && m_player->playbackState() == ZuviMoviePlayer::PlaybackPlaying;
}
