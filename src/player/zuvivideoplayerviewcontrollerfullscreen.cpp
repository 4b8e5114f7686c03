// The video screen in fullscreen: the movie's finish while fullscreen, the
// fullscreen notifications, the overlay's placement over the fullscreen
// picture, the edge exit, and the keys and controls the page forwards.

#include "zuvivideoplayerviewcontroller.h"

#include "danmaku/zuvidanmakuoverlayview.h"
#include "net/zuviapiclient.h"
#include "platform/zuvidefaults.h"
#include "platform/zuvischeduler.h"
#include "zuvivideoplayercalls.h"

#include <QQuickWindow>

#include <algorithm>
#include <cmath>

using namespace ZuviVideoPlayerCalls;

// MARK: - Finishing

void ZuviVideoPlayerViewController::moviePlaybackDidFinish(int reason)
{
    if (!m_moviePlayer || sender() != m_moviePlayer)
        return;
    const bool fullscreen = isPlayerFullscreen();
    if (reason == ZuviMoviePlayer::FinishReasonUserExited) {
        m_movieFinishPendingAfterFullscreenExit = false;
        m_pendingMovieFinishReason = 0;
        m_movieShouldResumeAfterFullscreenExit = true;
        prepareDanmakuOverlayForFullscreenExit();
        if (m_moviePlayer->isFullscreen())
            m_moviePlayer->setFullscreen(false, true);
        m_scheduler->callAfter(this, kRecoverFromUserExit, 0.6,
                               [this] { recoverFromFullscreenUserExitIfNeeded(); });
        return;
    }
    if (!fullscreen) {
        completeMoviePlaybackWithReason(reason);
        return;
    }
    if (reason == ZuviMoviePlayer::FinishReasonPlaybackError) {
        m_pendingMovieFinishReason = reason;
        m_movieFinishPendingAfterFullscreenExit = true;
        prepareDanmakuOverlayForFullscreenExit();
        m_moviePlayer->setFullscreen(false, true);
        m_scheduler->callAfter(this, kCompletePendingFinish, 1.0,
                               [this] { completePendingFullscreenMovieFinish(); });
        return;
    }
    completeFullscreenMoviePlaybackWithReason(reason);
}

void ZuviVideoPlayerViewController::completeFullscreenMoviePlaybackWithReason(int reason)
{
    m_movieFinishPendingAfterFullscreenExit = false;
    m_pendingMovieFinishReason = 0;
    m_movieShouldResumeAfterFullscreenExit = false;
    m_danmakuSuspendedForFullscreenExit = false;
    stopDanmakuTimer();
    // The end card covers the picture; pending placements must not bring
    // the overlay back over it.
    cancelDelayedOverlayMoves();
    m_overlay->clearVisibleDanmaku();
    setOverlayShown(false);
    m_fullscreenDirectionText.clear();
    emit fullscreenDirectionChanged();
    // The player stays fullscreen behind the end view.
    showPlaybackEndViewWithReason(reason);
}

void ZuviVideoPlayerViewController::completePendingFullscreenMovieFinish()
{
    if (!m_movieFinishPendingAfterFullscreenExit || !m_moviePlayer)
        return;
    const int reason = m_pendingMovieFinishReason;
    m_movieFinishPendingAfterFullscreenExit = false;
    m_pendingMovieFinishReason = 0;
    m_moviePlayerFullscreen = false;
    completeMoviePlaybackWithReason(reason);
}

void ZuviVideoPlayerViewController::completeMoviePlaybackWithReason(int reason)
{
    releaseMoviePlayer();
    if (reason == ZuviMoviePlayer::FinishReasonPlaybackError)
        showPlaybackError(QStringLiteral("播放器无法打开当前 MP4 地址"));
    else
        showPlaybackEndViewWithReason(reason);
}

// MARK: - Keys and controls

void ZuviVideoPlayerViewController::togglePlayPause()
{
    if (m_moviePlayer)
        m_moviePlayer->togglePlayPause();
}

void ZuviVideoPlayerViewController::seekBy(double seconds)
{
    if (m_moviePlayer)
        seekTo(moviePlaybackTime() + seconds);
}

void ZuviVideoPlayerViewController::seekTo(double seconds)
{
    if (!m_moviePlayer)
        return;
    double target = std::max(0.0, seconds);
    const double duration = m_moviePlayer->duration();
    if (duration > 0)
        target = std::min(target, duration);
    m_moviePlayer->seek(target);
}

void ZuviVideoPlayerViewController::toggleFullscreen()
{
    if (!m_moviePlayer)
        return;
    if (m_moviePlayer->isFullscreen())
        m_moviePlayer->userExitFullscreen();
    else
        m_moviePlayer->setFullscreen(true, true);
}

void ZuviVideoPlayerViewController::escapePressed()
{
    if (m_moviePlayer && m_moviePlayer->isFullscreen())
        m_moviePlayer->userExitFullscreen();
}

// The end of playback, the next video and the gestures on the picture are in
// zuvivideoplayerviewcontrollerend.cpp; fullscreen and the overlay placement in
// zuvivideoplayerviewcontrollerfullscreen.cpp; the danmaku list in
// zuvivideoplayerviewcontrollerdanmaku.cpp.

// MARK: - Overlay placement

void ZuviVideoPlayerViewController::setPlayerContainer(QQuickItem *container)
{
    if (container == m_playerContainer)
        return;
    disconnect(m_containerWidth);
    disconnect(m_containerHeight);
    m_playerContainer = container;
    if (container) {
        m_containerWidth = connect(container, &QQuickItem::widthChanged, this,
                                   &ZuviVideoPlayerViewController::layoutOverlayInPlayerContainer);
        m_containerHeight = connect(container, &QQuickItem::heightChanged, this,
                                    &ZuviVideoPlayerViewController::layoutOverlayInPlayerContainer);
    }
    if (!m_danmakuOverlayInFullscreen) {
        m_overlay->setParentItem(container);
        layoutOverlayInPlayerContainer();
    }
    emit containersChanged();
}

void ZuviVideoPlayerViewController::setMovieView(QQuickItem *view)
{
    if (view == m_movieView)
        return;
    m_movieView = view;
    if (m_moviePlayer)
        m_moviePlayer->setView(view);
    emit containersChanged();
}

void ZuviVideoPlayerViewController::layoutOverlayInPlayerContainer()
{
    if (m_danmakuOverlayInFullscreen || !m_playerContainer ||
        m_overlay->parentItem() != m_playerContainer)
        return;
    m_overlay->setRotation(0);
    m_overlay->setPosition(QPointF(0, 0));
    m_overlay->setSize(m_playerContainer->size());
}

void ZuviVideoPlayerViewController::setOverlayShown(bool shown)
{
    m_overlay->setVisible(shown);
}

void ZuviVideoPlayerViewController::cancelDelayedOverlayMoves()
{
    m_scheduler->cancel(this, kMoveOverlay);
}

void ZuviVideoPlayerViewController::scheduleOverlayMove(double delay)
{
    m_scheduler->callAfter(this, kMoveOverlay, delay,
                           [this] { moveDanmakuOverlayToFullscreenWindow(); });
}

QRectF ZuviVideoPlayerViewController::fullscreenDanmakuFrameInWindowForContainerView(
    QQuickItem *container) const
{
    QQuickItem *view = m_moviePlayer ? m_moviePlayer->view() : nullptr;
    if (!view || !container)
        return {};
    QRectF picture(0, 0, view->width(), view->height());
    const QSizeF natural = m_moviePlayer->naturalSize();
    // Until the picture's size is known it is taken to fill the view.
    if (natural.width() > 0 && natural.height() > 0 && !picture.isEmpty()) {
        const QSizeF fitted = natural.scaled(picture.size(), Qt::KeepAspectRatio);
        picture = QRectF(QPointF((picture.width() - fitted.width()) / 2,
                                 (picture.height() - fitted.height()) / 2),
                         fitted);
    }
    return view->mapRectToItem(container, picture);
}

void ZuviVideoPlayerViewController::moveDanmakuOverlayToFullscreenWindow()
{
    if (!m_moviePlayerFullscreen || !m_moviePlayer || !m_danmakuEnabled ||
        m_danmakuSuspendedForFullscreenExit)
        return;
    QQuickItem *movieView = m_moviePlayer->view();
    QQuickItem *container = movieView ? movieView->parentItem() : nullptr;
    if (!container || container == m_playerContainer)
        container = movieView && movieView->window() ? movieView->window()->contentItem() : nullptr;
    if (!container)
        return;
    const QRectF frame = fullscreenDanmakuFrameInWindowForContainerView(container);
    if (frame.isEmpty() || frame.width() <= 0 || frame.height() <= 0)
        return;
    const QPointF centre = frame.center();
    const double angle = fullscreenDanmakuCorrectionAngleForContainerView(container);
    const double degrees = angle * 180.0 / kPi;
    const QPointF currentCentre =
        m_overlay->position() + QPointF(m_overlay->width() / 2, m_overlay->height() / 2);
    bool changed = m_overlay->size() != frame.size() ||
                   std::abs(currentCentre.x() - centre.x()) > 0.5 ||
                   std::abs(currentCentre.y() - centre.y()) > 0.5 ||
                   !qFuzzyCompare(1.0 + m_overlay->rotation(), 1.0 + degrees);
    if (m_overlay->parentItem() != container) {
        m_overlay->setParentItem(container);
        // Directly above the picture when it shares the container.
        if (movieView->parentItem() == container)
            m_overlay->stackAfter(movieView);
        changed = true;
    }
    setOverlayShown(m_danmakuEnabled);
    m_overlay->setRotation(0);
    m_overlay->setSize(frame.size());
    m_overlay->setPosition(centre - QPointF(frame.width() / 2, frame.height() / 2));
    m_overlay->setRotation(degrees);
    m_overlay->setZ(movieView->parentItem() == container ? movieView->z() + 1 : 10001);
    updateFullscreenDirectionText(angle);
    m_danmakuOverlayInFullscreen = true;
    if (!changed)
        return;
    if (developerModeEnabled())
        appendDanmakuAPILogLine(QStringLiteral("全屏弹幕层 %1 %2 %3 %4度")
                                    .arg(QString::fromLatin1(container->metaObject()->className()),
                                         rectText(frame), interfaceOrientationText())
                                    .arg(degrees, 0, 'f', 0));
    m_overlay->resetForPlaybackTime(moviePlaybackTime());
    m_lastDanmakuTickPlaybackTime = -1.0;
    m_stagnantPlaybackTickCount = 0;
}

void ZuviVideoPlayerViewController::restoreDanmakuOverlayToPlayerContainer()
{
    if (!m_fullscreenDirectionText.isEmpty()) {
        m_fullscreenDirectionText.clear();
        emit fullscreenDirectionChanged();
    }
    if (m_overlay->parentItem() != m_playerContainer) {
        m_overlay->setParentItem(m_playerContainer);
        m_overlay->setZ(1);
    }
    m_danmakuOverlayInFullscreen = false;
    layoutOverlayInPlayerContainer();
}

void ZuviVideoPlayerViewController::updateFullscreenDirectionText(double correctionAngle)
{
    if (!showsFullscreenDirectionGuide())
        return;
    ++m_fullscreenDirectionDebugCounter;
    m_fullscreenDirectionText =
        QStringLiteral("%1 弹幕 %2 #%3")
            .arg(interfaceOrientationText(), directionNameForAngle(correctionAngle))
            .arg(m_fullscreenDirectionDebugCounter);
    emit fullscreenDirectionChanged();
}

// MARK: - Fullscreen notifications

void ZuviVideoPlayerViewController::moviePlayerWillEnterFullscreen()
{
    if (!m_moviePlayer || sender() != m_moviePlayer)
        return;
    m_moviePlayerFullscreen = true;
    m_danmakuSuspendedForFullscreenExit = false;
    m_movieShouldResumeAfterFullscreenExit =
        m_moviePlayer->playbackState() == ZuviMoviePlayer::PlaybackPlaying;
    m_fullscreenDirectionDebugCounter = 0;
    setOverlayShown(m_danmakuEnabled);
    moveDanmakuOverlayToFullscreenWindow();
    // The fullscreen window settles in steps; place the overlay again.
    for (double delay : {0.15, 0.45, 0.9})
        scheduleOverlayMove(delay);
    emit moviePlayerChanged();
}

void ZuviVideoPlayerViewController::moviePlayerDidEnterFullscreen()
{
    if (!m_moviePlayer || sender() != m_moviePlayer)
        return;
    m_moviePlayerFullscreen = true;
    if (m_moviePlayer->playbackState() == ZuviMoviePlayer::PlaybackPlaying)
        m_movieShouldResumeAfterFullscreenExit = true;
    moveDanmakuOverlayToFullscreenWindow();
}

void ZuviVideoPlayerViewController::moviePlayerWillExitFullscreen()
{
    if (!m_moviePlayer || sender() != m_moviePlayer)
        return;
    if (!m_movieFinishPendingAfterFullscreenExit &&
        m_moviePlayer->playbackState() == ZuviMoviePlayer::PlaybackPlaying)
        m_movieShouldResumeAfterFullscreenExit = true;
    prepareDanmakuOverlayForFullscreenExit();
}

void ZuviVideoPlayerViewController::prepareDanmakuOverlayForFullscreenExit()
{
    cancelDelayedOverlayMoves();
    m_danmakuSuspendedForFullscreenExit = true;
    m_overlay->clearVisibleDanmaku();
    setOverlayShown(false);
    if (!m_fullscreenDirectionText.isEmpty()) {
        m_fullscreenDirectionText.clear();
        emit fullscreenDirectionChanged();
    }
}

void ZuviVideoPlayerViewController::moviePlayerDidExitFullscreen()
{
    if (!m_moviePlayer || sender() != m_moviePlayer)
        return;
    cancelDelayedOverlayMoves();
    m_moviePlayerFullscreen = false;
    m_danmakuSuspendedForFullscreenExit = false;
    restoreDanmakuOverlayToPlayerContainer();
    setOverlayShown(m_danmakuEnabled);
    m_overlay->resetForPlaybackTime(moviePlaybackTime());
    m_lastDanmakuTickPlaybackTime = -1.0;
    m_stagnantPlaybackTickCount = 0;
    emit moviePlayerChanged();
    if (m_movieFinishPendingAfterFullscreenExit) {
        m_scheduler->cancel(this, kCompletePendingFinish);
        completePendingFullscreenMovieFinish();
        return;
    }
    if (m_movieShouldResumeAfterFullscreenExit) {
        m_scheduler->cancel(this, kResumeAfterExit);
        m_moviePlayer->play();
        m_scheduler->callAfter(this, kResumeAfterExit, 0.3,
                               [this] { resumeMovieAfterFullscreenExitIfNeeded(); });
    }
}

void ZuviVideoPlayerViewController::resumeMovieAfterFullscreenExitIfNeeded()
{
    if (!m_movieShouldResumeAfterFullscreenExit || !m_moviePlayer || isPlayerFullscreen())
        return;
    m_movieShouldResumeAfterFullscreenExit = false;
    m_moviePlayer->play();
    m_lastDanmakuTickPlaybackTime = -1.0;
    m_stagnantPlaybackTickCount = 0;
    m_overlay->resetForPlaybackTime(moviePlaybackTime());
    tickDanmakuAtCurrentPlaybackTime();
}

void ZuviVideoPlayerViewController::recoverFromFullscreenUserExitIfNeeded()
{
    if (!m_movieShouldResumeAfterFullscreenExit || !m_moviePlayer)
        return;
    m_moviePlayerFullscreen = false;
    m_danmakuSuspendedForFullscreenExit = false;
    restoreDanmakuOverlayToPlayerContainer();
    setOverlayShown(m_danmakuEnabled);
    emit moviePlayerChanged();
    resumeMovieAfterFullscreenExitIfNeeded();
}

void ZuviVideoPlayerViewController::fullscreenEdgeExitPanRecognized(double translationX,
                                                                    double velocityX)
{
    if (!m_moviePlayer || !isPlayerFullscreen())
        return;
    if (translationX >= 52 || velocityX >= 260)
        exitFullscreenPlaybackFromEdgeGesture();
}

void ZuviVideoPlayerViewController::exitFullscreenPlaybackFromEdgeGesture()
{
    m_fastForward->endIfNeeded(m_moviePlayer);
    m_movieShouldResumeAfterFullscreenExit =
        m_moviePlayer->playbackState() == ZuviMoviePlayer::PlaybackPlaying;
    prepareDanmakuOverlayForFullscreenExit();
    if (m_moviePlayer->isFullscreen())
        m_moviePlayer->setFullscreen(false, true);
}

double ZuviVideoPlayerViewController::fullscreenEdgeZoneWidth(double viewWidth)
{
    return ZuviFastForward::edgeZoneWidth(viewWidth);
}

// MARK: - Angles

double ZuviVideoPlayerViewController::normalizedAngle(double angle)
{
    while (angle > kPi)
        angle -= 2 * kPi;
    while (angle <= -kPi)
        angle += 2 * kPi;
    return angle;
}

QString ZuviVideoPlayerViewController::directionNameForAngle(double angle)
{
    const double s = std::sin(angle);
    const double c = std::cos(angle);
    if (std::abs(c) >= std::abs(s))
        return c >= 0 ? QStringLiteral("右") : QStringLiteral("左");
    return s >= 0 ? QStringLiteral("下") : QStringLiteral("上");
}

double ZuviVideoPlayerViewController::xAxisAngleInWindowForView(const QQuickItem *view)
{
    if (!view)
        return 0;
    const QPointF a = view->mapToScene(QPointF(0, 0));
    const QPointF b = view->mapToScene(QPointF(100, 0));
    const double dx = b.x() - a.x();
    const double dy = b.y() - a.y();
    if (std::abs(dx) < 0.01 && std::abs(dy) < 0.01)
        return 0;
    return std::atan2(dy, dx);
}

double ZuviVideoPlayerViewController::currentInterfaceVisualAngle() const
{
    return m_interfaceRotation;
}

QString ZuviVideoPlayerViewController::interfaceOrientationText() const
{
    const double a = normalizedAngle(m_interfaceRotation);
    if (std::abs(std::abs(a) - kPi) < 0.01)
        return QStringLiteral("UI:倒");
    if (std::abs(a - kPi / 2) < 0.01)
        return QStringLiteral("UI:右");
    if (std::abs(a + kPi / 2) < 0.01)
        return QStringLiteral("UI:左");
    return QStringLiteral("UI:上");
}

double ZuviVideoPlayerViewController::fullscreenDanmakuCorrectionAngleForContainerView(
    const QQuickItem *container) const
{
    return -normalizedAngle(xAxisAngleInWindowForView(container) + currentInterfaceVisualAngle());
}
