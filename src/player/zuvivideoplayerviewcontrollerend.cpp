// The video screen's end of playback: the end card's buttons, the countdown's
// next video played in the fullscreen player that is already up, and the
// gestures on the picture (fast forward, the edge pan's arbitration).

#include "zuvivideoplayerviewcontroller.h"

#include "app/zuvinavigationcontroller.h"
#include "browse/zuvivideoscreenopener.h"
#include "danmaku/zuvidanmakuoverlayview.h"
#include "platform/zuviidiom.h"
#include "platform/zuvischeduler.h"
#include "zuvifastforward.h"
#include "zuviplaybackendcard.h"
#include "zuvivideoplayercalls.h"
#include "zuvivideosidecontent.h"

#include <algorithm>

using namespace ZuviVideoPlayerCalls;

namespace {
const QString kRelatedSourceTitle = QStringLiteral("相关推荐");
} // namespace

bool ZuviVideoPlayerViewController::isPlaybackEndVisible() const
{
    return m_endCard->isVisible();
}

bool ZuviVideoPlayerViewController::isPlaybackEndInFullscreen() const
{
    return m_endCard->isInFullscreen();
}

int ZuviVideoPlayerViewController::playbackEndReason() const
{
    return m_endCard->reason();
}

QString ZuviVideoPlayerViewController::playbackEndBadgeText() const
{
    return m_endCard->badgeText();
}

QString ZuviVideoPlayerViewController::playbackEndTitleText() const
{
    return m_endCard->titleText();
}

QString ZuviVideoPlayerViewController::playbackEndMetaText() const
{
    return m_endCard->metaText();
}

bool ZuviVideoPlayerViewController::relatedImagesAllowed() const
{
    return m_sideContent->relatedImagesAllowed();
}

void ZuviVideoPlayerViewController::showPlaybackEndViewWithReason(int reason)
{
    setStateLabel(m_stateText, false);
    setRetryVisible(false);
    m_overlay->clearVisibleDanmaku();
    setRelatedImagesAllowedSoon(true);
    m_endCard->show(reason, isPlayerFullscreen());
    // The card names the next video; fetch the list it comes from if
    // nothing has brought it yet. Its arrival fills the card in.
    if (!m_sideContent->firstRelatedVideo() && !m_sideContent->isLoadingRelated() && m_detail &&
        !m_detail->bvid.isEmpty())
        m_sideContent->loadRelatedVideos();
}

void ZuviVideoPlayerViewController::hidePlaybackEndView()
{
    m_endCard->hide();
}

void ZuviVideoPlayerViewController::playbackEndReplayTapped()
{
    m_endCard->cancelCountdown();
    if (!m_endCard->isInFullscreen() && !isPlayerFullscreen()) {
        hidePlaybackEndView();
        playPendingMovieInline();
        return;
    }
    // From the start again, in the fullscreen player that is still up.
    m_playbackNextShouldKeepFullscreen = true;
    playPendingMovieInline();
}

void ZuviVideoPlayerViewController::playbackEndExitTapped()
{
    m_endCard->cancelCountdown();
    if (!m_endCard->isInFullscreen() && !isPlayerFullscreen()) {
        hidePlaybackEndView();
        if (!navigationController() || !navigationController()->popViewController(true))
            emit closeRequested();
        return;
    }
    // In fullscreen the exit only leaves fullscreen; the end card stays, inline.
    releaseMoviePlayer();
    m_endCard->moveInline();
}

void ZuviVideoPlayerViewController::playbackEndRelatedTapped()
{
    const std::optional<ZuviVideoItem> video = m_sideContent->firstRelatedVideo();
    if (!video) {
        if (!m_sideContent->isLoadingRelated())
            m_sideContent->loadRelatedVideos();
        return;
    }
    // Coming back from the related video's screen shows this end again.
    m_restorePlaybackEndOnAppear = true;
    m_restoreFinishReason = 0;
    m_endCard->cancelCountdown();
    if (!m_endCard->isInFullscreen() && !isPlayerFullscreen()) {
        hidePlaybackEndView();
        openRelatedVideo(*video);
        return;
    }
    m_restorePlaybackEndOnAppear = false;
    playRelatedVideoInCurrentFullscreen(*video);
}

void ZuviVideoPlayerViewController::relatedVideoTapped(int row)
{
    const QList<ZuviVideoItem> &videos = m_sideContent->relatedVideos();
    if (row < 0 || row >= videos.size())
        return;
    openRelatedVideo(videos.at(row));
}

void ZuviVideoPlayerViewController::openRelatedVideo(const ZuviVideoItem &video)
{
    if (!ZuviVideoScreenOpener::open(navigationController(), video, kRelatedSourceTitle))
        emit openVideoRequested(video, kRelatedSourceTitle);
}

void ZuviVideoPlayerViewController::playbackEndAutoPlayRelatedVideo()
{
    if (m_sideContent->firstRelatedVideo())
        playbackEndRelatedTapped();
}

bool ZuviVideoPlayerViewController::shouldKeepFullscreenForNextPlayback() const
{
    return m_playbackNextShouldKeepFullscreen && m_moviePlayer &&
           (m_endCard->isInFullscreen() || m_moviePlayerFullscreen ||
            m_moviePlayer->isFullscreen());
}

void ZuviVideoPlayerViewController::playRelatedVideoInCurrentFullscreen(const ZuviVideoItem &video)
{
    m_endCard->cancelCountdown();
    m_playbackNextShouldKeepFullscreen = true;
    m_acceptsMediaCallbacks = true;
    m_restorePlaybackOnAppear = false;
    m_restorePlaybackTime = 0;
    m_restorePlaybackEndOnAppear = false;
    m_restoreFinishReason = 0;
    m_pendingInitialPlaybackTime = 0;
    m_selectedPageIndex = 0;
    m_activeQuality = 0;
    m_pendingPlayURL.clear();
    m_pendingQuality = 0;
    m_loadingCID = 0;
    m_loadingDetail = false;
    m_loadingPlayURL = false;
    m_detail.reset();
    m_videoItem = video;
    m_sourceTitle = kRelatedSourceTitle;
    // Every answer still on its way belongs to the video that just ended.
    ++m_detailRequestID;
    ++m_playbackRequestID;
    ++m_movieStartRequestID;
    resetSideContentForLoading();
    m_endCard->showLoadingNextVideo(video);
    emit detailChanged();
    loadVideoDetail();
}

void ZuviVideoPlayerViewController::playPendingMovieInCurrentFullscreenWithRequestID(int requestID)
{
    ZuviMoviePlayer *player = m_moviePlayer;
    if (requestID != m_movieStartRequestID)
        return;
    m_playbackNextShouldKeepFullscreen = false;
    if (!player) {
        playPendingMovieInline();
        return;
    }
    for (const QString &name :
         {kCompletePendingFinish, kResumeAfterExit, kRecoverFromUserExit, kMoveOverlay})
        m_scheduler->cancel(this, name);
    m_movieFinishPendingAfterFullscreenExit = false;
    m_pendingMovieFinishReason = 0;
    m_movieShouldResumeAfterFullscreenExit = false;
    m_danmakuSuspendedForFullscreenExit = false;
    m_activeQuality = m_pendingQuality;
    m_playbackOptions->setActiveQuality(m_activeQuality);
    hidePlaybackEndView();
    setStateLabel(QStringLiteral("正在播放 %1p").arg(m_pendingQuality), true);
    m_overlay->clearVisibleDanmaku();
    m_overlay->resetForPlaybackTime(0);
    m_lastDanmakuTickPlaybackTime = -1.0;
    m_stagnantPlaybackTickCount = 0;
    m_danmakuTickDebugCounter = 0;
    startDanmakuTimer();
    player->pause();
    player->setContentURL(m_pendingPlayURL);
    player->setInitialPlaybackTime(0);
    player->play();
    if (!player->isFullscreen())
        player->setFullscreen(true, true);
    moveDanmakuOverlayToFullscreenWindow();
    for (double delay : {0.15, 0.45})
        scheduleOverlayMove(delay);
}

// MARK: - Gestures on the picture

bool ZuviVideoPlayerViewController::fastForwardLongPressShouldBegin(bool touchOnControl) const
{
    return ZuviFastForward::longPressShouldBegin(m_moviePlayer != nullptr, m_endCard->isVisible(),
                                                 touchOnControl);
}

void ZuviVideoPlayerViewController::fastForwardLongPressBegan()
{
    m_fastForward->beginIfPossible(m_moviePlayer, m_endCard->isVisible());
}

void ZuviVideoPlayerViewController::fastForwardLongPressEnded()
{
    m_fastForward->endIfNeeded(m_moviePlayer);
}

bool ZuviVideoPlayerViewController::fullscreenEdgePanShouldBegin(double startX, double viewWidth,
                                                                 double velocityX, double velocityY,
                                                                 bool touchOnControl) const
{
    return ZuviFastForward::edgePanShouldBegin(m_moviePlayer && isPlayerFullscreen(), startX,
                                               viewWidth, velocityX, velocityY, touchOnControl);
}

double ZuviVideoPlayerViewController::portraitContentWidthForWidth(double width)
{
    return ZuviIdiom::isPad() ? std::min(width, 680.0) : width;
}

bool ZuviVideoPlayerViewController::isPadIdiom()
{
    return ZuviIdiom::isPad();
}
