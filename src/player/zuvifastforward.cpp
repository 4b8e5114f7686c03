#include "zuvifastforward.h"

#include "zuvimovieplayer.h"

#include <algorithm>
#include <cmath>

void ZuviFastForward::beginIfPossible(ZuviMoviePlayer *player, bool endCardVisible)
{
    if (!player || m_active || endCardVisible ||
        player->playbackState() != ZuviMoviePlayer::PlaybackPlaying)
        return;
    const double rate = player->currentPlaybackRate();
    m_active = true;
    m_restoreRate = rate > 0 ? rate : 1.0;
    player->setCurrentPlaybackRate(kFastRate);
    m_badgeVisible = true;
    emit changed();
}

void ZuviFastForward::endIfNeeded(ZuviMoviePlayer *player)
{
    if (m_active && player)
        player->setCurrentPlaybackRate(m_restoreRate > 0 ? m_restoreRate : 1.0);
    const bool wasShowing = m_active || m_badgeVisible;
    m_active = false;
    m_restoreRate = 0;
    m_badgeVisible = false;
    if (wasShowing)
        emit changed();
}

bool ZuviFastForward::longPressShouldBegin(bool hasPlayer, bool endCardVisible, bool touchOnControl)
{
    return hasPlayer && !endCardVisible && !touchOnControl;
}

bool ZuviFastForward::edgePanShouldBegin(bool fullscreenPlayback, double startX, double viewWidth,
                                         double velocityX, double velocityY, bool touchOnControl)
{
    if (!fullscreenPlayback || touchOnControl)
        return false;
    if (startX > edgeZoneWidth(viewWidth))
        return false;
    // Only a rightward, mostly horizontal move leaves; a vertical drag near
    // the edge stays with whatever else the picture does.
    return velocityX > 0 && std::abs(velocityX) > 0.75 * std::abs(velocityY);
}

double ZuviFastForward::edgeZoneWidth(double viewWidth)
{
    return std::min(58.0, std::floor(viewWidth * 0.25));
}
