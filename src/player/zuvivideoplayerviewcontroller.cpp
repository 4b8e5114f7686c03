#include "zuvivideoplayerviewcontroller.h"

#include "browse/zuvivideoscreenopener.h"

#include "app/zuvinavigationcontroller.h"
#include "danmaku/zuvidanmakuoverlayview.h"
#include "net/zuviapiclient.h"
#include "platform/zuvidefaults.h"
#include "platform/zuviidiom.h"
#include "platform/zuvinotificationcenter.h"
#include "platform/zuvischeduler.h"
#include "zuvigstreamertuning.h"
#include "zuvimediamovieplayer.h"

#include <QGuiApplication>
#include <QQuickWindow>
#include <QScreen>

#include <algorithm>
#include <cmath>

const char *const ZuviVideoPlayerViewController::kPreferredQualityModeKey =
    "ZuviPreferredQualityMode";
const char *const ZuviVideoPlayerViewController::kPreferredQualityModeLegacyMigratedKey =
    "ZuviPreferredQualityModeLegacyMigrated";
const char *const ZuviVideoPlayerViewController::kDanmakuEnabledKey = "ZuviDanmakuEnabled";
const char *const ZuviVideoPlayerViewController::kFullscreenDirectionGuideEnabledKey =
    "ZuviFullscreenDirectionGuideEnabled";
const char *const ZuviVideoPlayerViewController::kDanmakuAPILogNotification =
    "ZuviDanmakuAPILogNotification";

namespace {
// Names of the delayed calls and the timer, cancelled by name on release.
const QString kDanmakuTimer = QStringLiteral("danmakuTimer");
const QString kCompletePendingFinish = QStringLiteral("completePendingFullscreenMovieFinish");
const QString kResumeAfterExit = QStringLiteral("resumeMovieAfterFullscreenExitIfNeeded");
const QString kRecoverFromUserExit = QStringLiteral("recoverFromFullscreenUserExitIfNeeded");
const QString kMoveOverlay = QStringLiteral("moveDanmakuOverlayToFullscreenWindow");

constexpr double kPi = 3.14159265358979323846;
constexpr int kPreviewLimit = 20;
constexpr int kLogLineLimit = 8;
constexpr int kStallTickLimit = 4;

QString rectText(const QRectF &r)
{
    return QStringLiteral("{{%1, %2}, {%3, %4}}")
        .arg(r.x(), 0, 'g', 6)
        .arg(r.y(), 0, 'g', 6)
        .arg(r.width(), 0, 'g', 6)
        .arg(r.height(), 0, 'g', 6);
}

bool isPausedLike(ZuviMoviePlayer::PlaybackState state)
{
    return state == ZuviMoviePlayer::PlaybackStopped || state == ZuviMoviePlayer::PlaybackPaused ||
           state == ZuviMoviePlayer::PlaybackInterrupted;
}
} // namespace

ZuviVideoPlayerViewController *
ZuviVideoPlayerViewController::createWithVideoItem(const ZuviVideoItem &item,
                                                   const QString &sourceTitle)
{
    return new ZuviVideoPlayerViewController(
        item, sourceTitle, ZuviAPIClient::sharedClient(), ZuviScheduler::sharedScheduler(),
        ZuviDefaults::standardDefaults(), mediaPlayerFactory());
}

void ZuviVideoPlayerViewController::openVideosFromLists(ZuviAPIClient *client,
                                                        ZuviScheduler *scheduler,
                                                        ZuviDefaults *defaults)
{
    ZuviVideoScreenOpener::setFactory(
        [client, scheduler, defaults](const ZuviVideoItem &item,
                                      const QString &sourceTitle) -> ZuviViewController * {
            return new ZuviVideoPlayerViewController(item, sourceTitle, client, scheduler, defaults,
                                                     mediaPlayerFactory());
        });
}

ZuviVideoPlayerViewController::PlayerFactory ZuviVideoPlayerViewController::mediaPlayerFactory()
{
    // Called as a video screen is made, before its page builds the video
    // output: that output's sink has a queue of its own to bound.
    ZuviGStreamerTuning::install();
    return [](QObject *owner) { return new ZuviMediaMoviePlayer(owner); };
}

ZuviVideoPlayerViewController::ZuviVideoPlayerViewController(
    const ZuviVideoItem &item, const QString &sourceTitle, ZuviAPIClient *client,
    ZuviScheduler *scheduler, ZuviDefaults *defaults, PlayerFactory playerFactory, QObject *parent)
    : ZuviViewController(QStringLiteral("视频播放"), parent), m_client(client),
      m_scheduler(scheduler), m_defaults(defaults), m_playerFactory(std::move(playerFactory)),
      m_overlay(new ZuviDanmakuOverlayView)
{
    m_overlay->setParent(this);
    m_overlay->setPadIdiom(ZuviIdiom::isPad());
    m_overlay->setZ(1);
    m_client->notificationCenter()->addObserver(
        QString::fromLatin1(kDanmakuAPILogNotification), this, [this](const ZuviNotification &n) {
            danmakuAPILogNotification(n.userInfo.value(QStringLiteral("message")).toString());
        });
    initWithVideoItem(item, sourceTitle);
}

ZuviVideoPlayerViewController::~ZuviVideoPlayerViewController()
{
    m_scheduler->cancelAll(this);
    releaseMoviePlayer();
    m_client->notificationCenter()->removeObserver(this);
    // The overlay may sit in a page that outlives this screen for a moment.
    m_overlay->setParentItem(nullptr);
}

// MARK: - Opening and lifecycle

void ZuviVideoPlayerViewController::initWithVideoItem(const ZuviVideoItem &item,
                                                      const QString &sourceTitle)
{
    m_videoItem = item;
    m_sourceTitle = sourceTitle;
    m_selectedPageIndex = 0;
    m_danmakuEnabled = defaultDanmakuEnabled();
    m_overlay->setDanmakuEnabled(m_danmakuEnabled);
    m_danmakuStatusText = QStringLiteral("弹幕加载中");
    m_danmakuLogLines.clear();
    m_lastDanmakuTickPlaybackTime = -1.0;
    emit detailChanged();
    emit danmakuChanged();
}

ZuviVideoItem ZuviVideoPlayerViewController::videoItemFromMap(const QVariantMap &item)
{
    ZuviVideoItem video;
    video.title = item.value(QStringLiteral("title")).toString();
    video.coverURLString = item.value(QStringLiteral("coverURLString")).toString();
    video.ownerName = item.value(QStringLiteral("ownerName")).toString();
    video.playCountText = item.value(QStringLiteral("playCountText")).toString();
    video.commentCountText = item.value(QStringLiteral("commentCountText")).toString();
    video.durationText = item.value(QStringLiteral("durationText")).toString();
    video.bvid = item.value(QStringLiteral("bvid")).toString();
    video.aid = item.value(QStringLiteral("aid")).toLongLong();
    video.cid = item.value(QStringLiteral("cid")).toLongLong();
    return video;
}

QUrl ZuviVideoPlayerViewController::pageUrl() const
{
    return modulePageUrl(QStringLiteral("VideoPlayerPage.qml"));
}

void ZuviVideoPlayerViewController::viewWillAppear()
{
    m_acceptsMediaCallbacks = true;
    syncDanmakuEnabledFromDefaults();
    restorePlaybackStateAfterNavigationIfNeeded();
}

void ZuviVideoPlayerViewController::viewWillDisappear()
{
    // The fullscreen window covers the screen; nothing has really gone away.
    if (isPlayerFullscreen())
        return;
    if (!m_playbackEndVisible || m_playbackEndInFullscreen) {
        if (m_moviePlayer && !m_pendingPlayURL.isEmpty()) {
            m_restorePlaybackOnAppear = true;
            m_restorePlaybackTime = moviePlaybackTime();
        }
    } else {
        m_restorePlaybackEndOnAppear = true;
        m_restoreFinishReason = 0;
    }
    m_acceptsMediaCallbacks = false;
    ++m_detailRequestID;
    ++m_playbackRequestID;
    ++m_movieStartRequestID;
    stopCurrentMovie();
}

void ZuviVideoPlayerViewController::restorePlaybackStateAfterNavigationIfNeeded()
{
    if (!m_detail || m_moviePlayer || m_loadingPlayURL || m_loadingDetail)
        return;
    if (m_restorePlaybackEndOnAppear) {
        m_restorePlaybackEndOnAppear = false;
        m_restorePlaybackOnAppear = false;
        showPlaybackEndViewWithReason(m_restoreFinishReason >= 1 ? m_restoreFinishReason : 0);
        return;
    }
    if (m_restorePlaybackOnAppear && !m_pendingPlayURL.isEmpty()) {
        m_restorePlaybackOnAppear = false;
        m_pendingInitialPlaybackTime = m_restorePlaybackTime;
        m_restorePlaybackTime = 0;
        playPendingMovieInline();
    }
}

void ZuviVideoPlayerViewController::didReceiveMemoryWarning()
{
    m_danmakuItems.clear();
    m_overlay->setDanmakuItems({});
    emit danmakuChanged();
}

// MARK: - Quality preference

int ZuviVideoPlayerViewController::preferredQualityModeIndex() const
{
    const QString key = QString::fromLatin1(kPreferredQualityModeKey);
    const QString migratedKey = QString::fromLatin1(kPreferredQualityModeLegacyMigratedKey);
    qint64 value = m_defaults->integerForKey(key);
    if (!m_defaults->boolForKey(migratedKey)) {
        // The old preference counted qualities on a longer scale.
        if (m_defaults->containsKey(key)) {
            value = value < 2 ? 0 : (value == 2 ? 1 : 2);
            m_defaults->setInteger(value, key);
        }
        m_defaults->setBool(true, migratedKey);
        m_defaults->synchronize();
    }
    return value >= 0 && value <= 2 ? int(value) : 0;
}

QList<int> ZuviVideoPlayerViewController::currentQualityOrder() const
{
    switch (preferredQualityModeIndex()) {
    case 1:
        return {32, 64, 16};
    case 2:
        return {16, 32, 64};
    default:
        return {64, 32, 16};
    }
}

QString ZuviVideoPlayerViewController::currentQualityModeTitle() const
{
    return qualityDisplayTitleForQuality(currentQualityOrder().constFirst());
}

QString ZuviVideoPlayerViewController::qualityDisplayTitleForQuality(int quality)
{
    if (quality >= 64)
        return QStringLiteral("720P");
    if (quality >= 32)
        return QStringLiteral("480P");
    if (quality >= 16)
        return QStringLiteral("360P");
    return QStringLiteral("%1p").arg(quality);
}

// MARK: - Detail and pages

std::optional<ZuviVideoDetail>
ZuviVideoPlayerViewController::fallbackDetailFromVideoItem(const ZuviVideoItem &item)
{
    if (item.cid <= 0 || item.bvid.isEmpty())
        return std::nullopt;
    ZuviVideoDetail detail;
    detail.aid = item.aid;
    detail.cid = item.cid;
    detail.bvid = item.bvid;
    detail.title = item.title;
    detail.ownerName = item.ownerName;
    detail.coverURLString = item.coverURLString;
    detail.playCountText = item.playCountText;
    detail.commentCountText = item.commentCountText;
    detail.danmakuCountText = QStringLiteral("--");
    detail.desc = QStringLiteral("详情接口暂不可用，正在使用列表里的 cid 尝试播放。");
    ZuviVideoPage page;
    page.cid = item.cid;
    page.pageNumber = 1;
    page.partTitle = QStringLiteral("P1");
    detail.pages = {page};
    return detail;
}

std::optional<ZuviVideoPage> ZuviVideoPlayerViewController::selectedPage()
{
    if (!m_detail)
        return std::nullopt;
    if (!m_detail->pages.isEmpty()) {
        if (m_selectedPageIndex < 0 || m_selectedPageIndex >= m_detail->pages.size())
            m_selectedPageIndex = 0;
        return m_detail->pages.at(m_selectedPageIndex);
    }
    if (m_detail->cid > 0) {
        ZuviVideoPage page;
        page.cid = m_detail->cid;
        page.pageNumber = 1;
        page.partTitle = QStringLiteral("P1");
        return page;
    }
    return std::nullopt;
}

void ZuviVideoPlayerViewController::selectPage(int index)
{
    if (!m_detail || index < 0 || index >= m_detail->pages.size())
        return;
    m_selectedPageIndex = index;
    hidePlaybackEndView();
    emit detailChanged();
    loadPlaybackForSelectedPage();
}

void ZuviVideoPlayerViewController::loadVideoDetail()
{
    const int requestID = ++m_detailRequestID;
    m_acceptsMediaCallbacks = true;
    m_loadingDetail = true;
    setStateLabel(QStringLiteral("正在加载视频信息"), true);
    setRetryVisible(false);
    m_client->fetchVideoDetailWithBVID(
        m_videoItem.bvid,
        [this, requestID](const std::optional<ZuviVideoDetail> &detail, const ZuviError &error) {
            if (!m_acceptsMediaCallbacks || requestID != m_detailRequestID)
                return;
            m_loadingDetail = false;
            if (!error.isNull() || !detail) {
                m_detail = fallbackDetailFromVideoItem(m_videoItem);
                if (!m_detail) {
                    showPlaybackError(error.message);
                    emit detailChanged();
                    return;
                }
            } else {
                m_detail = detail;
            }
            emit detailChanged();
            loadPlaybackForSelectedPage();
        });
}

void ZuviVideoPlayerViewController::loadPlaybackForSelectedPage()
{
    const std::optional<ZuviVideoPage> page = selectedPage();
    if (!page) {
        showPlaybackError(QStringLiteral("视频缺少可播放分 P"));
        return;
    }
    const int requestID = ++m_playbackRequestID;
    m_acceptsMediaCallbacks = true;
    hidePlaybackEndView();
    m_loadingCID = page->cid;
    m_loadingPlayURL = true;
    m_activeQuality = 0;
    m_pendingPlayURL.clear();
    m_pendingQuality = 0;
    setStateLabel(QStringLiteral("正在获取%1播放地址").arg(currentQualityModeTitle()), true);
    setRetry(QStringLiteral("开始播放"), false);
    m_overlay->setDanmakuItems({});
    stopCurrentMovie();
    fetchPlayableURLForPage(*page, requestID);
    loadDanmakuForCID(page->cid, requestID);
}

// MARK: - Address and movie

void ZuviVideoPlayerViewController::fetchPlayableURLForPage(const ZuviVideoPage &page,
                                                            int requestID)
{
    const qint64 cid = page.cid;
    m_client->fetchPlayURLWithBVID(
        m_detail ? m_detail->bvid : m_videoItem.bvid, cid, currentQualityOrder(),
        [this, requestID, cid](const QString &urlString, int quality, const ZuviError &error) {
            if (!m_acceptsMediaCallbacks || requestID != m_playbackRequestID || cid != m_loadingCID)
                return;
            m_loadingPlayURL = false;
            if (!urlString.isEmpty() && error.isNull()) {
                startMovieWithURL(QUrl(urlString), quality);
                return;
            }
            showPlaybackError(error.message.isEmpty() ? QStringLiteral("当前视频无法播放")
                                                      : error.message);
        });
}

void ZuviVideoPlayerViewController::startMovieWithURL(const QUrl &url, int quality)
{
    m_pendingPlayURL = url;
    m_pendingQuality = quality;
    hidePlaybackEndView();
    // The raw code is shown on purpose: it tells which answer was taken.
    setStateLabel(QStringLiteral("已获取 %1p MP4，正在启动播放").arg(quality), true);
    setRetry(QStringLiteral("重试播放"), false);
    m_activeQuality = quality;
    playPendingMovieInline();
}

void ZuviVideoPlayerViewController::playPendingMovieInline()
{
    if (m_pendingPlayURL.isEmpty()) {
        loadPlaybackForSelectedPage();
        return;
    }
    stopCurrentMovie();
    const int requestID = ++m_movieStartRequestID;
    createMoviePlayerWithURL(m_pendingPlayURL, m_pendingQuality, requestID);
}

void ZuviVideoPlayerViewController::createMoviePlayerWithURL(const QUrl &url, int quality,
                                                             int requestID)
{
    if (!m_acceptsMediaCallbacks || requestID != m_movieStartRequestID || m_moviePlayer)
        return;
    setStateLabel(QStringLiteral("正在播放 %1p").arg(quality), true);
    setRetryVisible(false);
    ZuviMoviePlayer *player = m_playerFactory(this);
    player->setView(m_movieView);
    player->setContentURL(url);
    // A restore time of a second or less is not worth skipping to.
    if (m_pendingInitialPlaybackTime > 1.0)
        player->setInitialPlaybackTime(m_pendingInitialPlaybackTime);
    m_pendingInitialPlaybackTime = 0;
    m_moviePlayer = player;
    observeMoviePlayer(player);
    emit moviePlayerChanged();
    m_lastDanmakuTickPlaybackTime = -1.0;
    m_danmakuTickDebugCounter = 0;
    m_stagnantPlaybackTickCount = 0;
    m_overlay->resetForPlaybackTime(0);
    startDanmakuTimer();
    player->play();
}

void ZuviVideoPlayerViewController::observeMoviePlayer(ZuviMoviePlayer *player)
{
    using P = ZuviMoviePlayer;
    using C = ZuviVideoPlayerViewController;
    connect(player, &P::playbackDidFinish, this, &C::moviePlaybackDidFinish);
    connect(player, &P::loadStateDidChange, this, &C::movieLoadStateChanged);
    connect(player, &P::playbackStateDidChange, this, &C::moviePlaybackStateChanged);
    connect(player, &P::willEnterFullscreen, this, &C::moviePlayerWillEnterFullscreen);
    connect(player, &P::didEnterFullscreen, this, &C::moviePlayerDidEnterFullscreen);
    connect(player, &P::willExitFullscreen, this, &C::moviePlayerWillExitFullscreen);
    connect(player, &P::didExitFullscreen, this, &C::moviePlayerDidExitFullscreen);
    connect(player, &P::videoFrameDidChange, this, &C::movieVideoFrameDidChange);
}

void ZuviVideoPlayerViewController::movieLoadStateChanged()
{
    if (!m_moviePlayer || sender() != m_moviePlayer)
        return;
    const int state = m_moviePlayer->loadState();
    if (state & (ZuviMoviePlayer::LoadStatePlayable | ZuviMoviePlayer::LoadStatePlaythroughOK)) {
        setStateLabel(m_stateText, false);
        setRetryVisible(false);
    } else if (state == ZuviMoviePlayer::LoadStateStalled) {
        setStateLabel(QStringLiteral("播放缓冲中"), true);
    }
}

void ZuviVideoPlayerViewController::moviePlaybackStateChanged()
{
    if (!m_moviePlayer || sender() != m_moviePlayer)
        return;
    tickDanmakuAtCurrentPlaybackTime();
    if (!m_moviePlayer || !m_moviePlayerFullscreen || m_danmakuSuspendedForFullscreenExit ||
        m_movieFinishPendingAfterFullscreenExit)
        return;
    // While fullscreen, whether to play again after leaving follows the user.
    const auto state = m_moviePlayer->playbackState();
    if (state == ZuviMoviePlayer::PlaybackPlaying)
        m_movieShouldResumeAfterFullscreenExit = true;
    else if (isPausedLike(state))
        m_movieShouldResumeAfterFullscreenExit = false;
}

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

void ZuviVideoPlayerViewController::showPlaybackError(const QString &message)
{
    const QString text = message.isEmpty() ? QStringLiteral("视频加载失败") : message;
    if (m_playbackEndVisible && m_playbackEndInFullscreen) {
        m_playbackEndBadgeText = QStringLiteral("播放失败");
        m_playbackEndTitleText = text;
        m_playbackEndMetaText = QStringLiteral("可以重播当前视频，或稍后再试");
        m_playbackEndReason = ZuviMoviePlayer::FinishReasonPlaybackError;
        emit playbackEndChanged();
        return;
    }
    hidePlaybackEndView();
    m_overlay->clearVisibleDanmaku();
    setStateLabel(text, true);
    setRetry(m_pendingPlayURL.isEmpty() ? QStringLiteral("重试获取") : QStringLiteral("重试播放"),
             true);
}

void ZuviVideoPlayerViewController::retryButtonTapped()
{
    if (!m_pendingPlayURL.isEmpty())
        playPendingMovieInline();
    else if (m_detail)
        loadPlaybackForSelectedPage();
    else
        loadVideoDetail();
}

void ZuviVideoPlayerViewController::releaseMoviePlayer()
{
    for (const QString &name :
         {kCompletePendingFinish, kResumeAfterExit, kRecoverFromUserExit, kMoveOverlay})
        m_scheduler->cancel(this, name);
    m_movieFinishPendingAfterFullscreenExit = false;
    m_movieShouldResumeAfterFullscreenExit = false;
    m_danmakuSuspendedForFullscreenExit = false;
    if (ZuviMoviePlayer *player = m_moviePlayer) {
        // Unhooked first, so that nothing the player says while it goes
        // comes back to this screen.
        player->disconnect(this);
        if (player->isFullscreen())
            player->setFullscreen(false, false);
        player->pause();
        player->stop();
        player->setView(nullptr);
        // The media goes now, not when the player object does: a replay
        // makes its new player before the event loop deletes this one.
        player->setContentURL(QUrl());
        m_moviePlayer = nullptr;
        player->deleteLater();
    }
    m_moviePlayerFullscreen = false;
    restoreDanmakuOverlayToPlayerContainer();
    m_pendingMovieFinishReason = 0;
    stopDanmakuTimer();
    m_overlay->clearVisibleDanmaku();
    emit moviePlayerChanged();
}

// MARK: - State label

void ZuviVideoPlayerViewController::setStateLabel(const QString &text, bool visible)
{
    if (text == m_stateText && visible == m_stateVisible)
        return;
    m_stateText = text;
    m_stateVisible = visible;
    emit stateLabelChanged();
}

void ZuviVideoPlayerViewController::setRetry(const QString &title, bool visible)
{
    m_retryTitle = title;
    m_retryVisible = visible;
    emit stateLabelChanged();
}

void ZuviVideoPlayerViewController::setRetryVisible(bool visible)
{
    setRetry(m_retryTitle, visible);
}

// MARK: - Small helpers

bool ZuviVideoPlayerViewController::developerModeEnabled() const
{
    return m_defaults->boolForKey(QString::fromLatin1(ZuviAPIClient::kDeveloperModeKey));
}

bool ZuviVideoPlayerViewController::isPlayerFullscreen() const
{
    return m_moviePlayerFullscreen || (m_moviePlayer && m_moviePlayer->isFullscreen());
}

double ZuviVideoPlayerViewController::moviePlaybackTime() const
{
    if (!m_moviePlayer)
        return 0;
    const double t = m_moviePlayer->currentPlaybackTime();
    return std::isfinite(t) && t > 0 ? t : 0;
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

// MARK: - End of playback

void ZuviVideoPlayerViewController::showPlaybackEndViewWithReason(int reason)
{
    setStateLabel(m_stateText, false);
    setRetryVisible(false);
    m_overlay->clearVisibleDanmaku();
    m_playbackEndReason = reason;
    m_playbackEndInFullscreen = isPlayerFullscreen();
    m_playbackEndVisible = true;
    // No related list is loaded on this screen, so the card says there is
    // nothing to play next and points at replay.
    m_playbackEndBadgeText = QStringLiteral("相关推荐");
    m_playbackEndTitleText = QStringLiteral("暂无相关推荐");
    m_playbackEndMetaText = m_playbackEndInFullscreen && reason != 1
                                ? QStringLiteral("没有可自动播放的推荐")
                                : QStringLiteral("上方按钮可重播当前视频");
    emit playbackEndChanged();
}

void ZuviVideoPlayerViewController::hidePlaybackEndView()
{
    if (!m_playbackEndVisible)
        return;
    m_playbackEndVisible = false;
    m_playbackEndInFullscreen = false;
    emit playbackEndChanged();
}

void ZuviVideoPlayerViewController::playbackEndReplayTapped()
{
    // Replay always continues inline: back out of fullscreen first.
    if (isPlayerFullscreen())
        releaseMoviePlayer();
    hidePlaybackEndView();
    playPendingMovieInline();
}

void ZuviVideoPlayerViewController::playbackEndExitTapped()
{
    if (!m_playbackEndInFullscreen && !isPlayerFullscreen()) {
        hidePlaybackEndView();
        if (!navigationController() || !navigationController()->popViewController(true))
            emit closeRequested();
        return;
    }
    // In fullscreen the exit only leaves fullscreen; the end view stays, inline.
    releaseMoviePlayer();
    m_playbackEndInFullscreen = false;
    m_playbackEndVisible = true;
    m_playbackEndMetaText = QStringLiteral("上方按钮可重播当前视频");
    emit playbackEndChanged();
}

// MARK: - Danmaku list

bool ZuviVideoPlayerViewController::defaultDanmakuEnabled() const
{
    const QString key = QString::fromLatin1(kDanmakuEnabledKey);
    return !m_defaults->containsKey(key) || m_defaults->boolForKey(key);
}

void ZuviVideoPlayerViewController::syncDanmakuEnabledFromDefaults()
{
    m_danmakuEnabled = defaultDanmakuEnabled();
    m_overlay->setDanmakuEnabled(m_danmakuEnabled);
    if (m_danmakuEnabled && m_moviePlayer)
        m_overlay->resetForPlaybackTime(moviePlaybackTime());
    emit danmakuChanged();
}

void ZuviVideoPlayerViewController::setDanmakuEnabledByUser(bool enabled)
{
    if (enabled == m_danmakuEnabled)
        return;
    // The switch is the user default; every screen reads it when it appears.
    m_defaults->setBool(enabled, QString::fromLatin1(kDanmakuEnabledKey));
    m_defaults->synchronize();
    syncDanmakuEnabledFromDefaults();
    if (m_danmakuOverlayInFullscreen)
        moveDanmakuOverlayToFullscreenWindow();
}

void ZuviVideoPlayerViewController::loadDanmakuForCID(qint64 cid, int requestID)
{
    m_danmakuItems.clear();
    m_danmakuStatusText = QStringLiteral("弹幕加载中");
    m_danmakuLogLines.clear();
    appendDanmakuAPILogLine(QStringLiteral("开始加载 CID %1").arg(cid));
    emit danmakuChanged();
    m_client->fetchDanmakuWithCID(
        cid, [this, cid, requestID](const QList<ZuviDanmakuItem> &items, const ZuviError &error) {
            if (!m_acceptsMediaCallbacks || requestID != m_playbackRequestID || cid != m_loadingCID)
                return;
            if (error.hasError()) {
                m_danmakuStatusText = QStringLiteral("弹幕加载失败，不影响播放");
                m_danmakuItems.clear();
                appendDanmakuAPILogLine(QStringLiteral("完成 失败 %1").arg(error.message));
            } else {
                m_danmakuItems = items;
                m_danmakuStatusText = items.isEmpty() ? QStringLiteral("暂无弹幕") : QString();
                appendDanmakuAPILogLine(QStringLiteral("完成 成功 %1条").arg(items.size()));
                appendDanmakuAPILogLine(danmakuTimeRangeTextForItems(items));
            }
            m_overlay->setDanmakuItems(m_danmakuItems);
            if (m_moviePlayer) {
                const double t = moviePlaybackTime();
                m_overlay->resetForPlaybackTime(t);
                appendDanmakuAPILogLine(QStringLiteral("reset 到 %1s").arg(t, 0, 'f', 1));
            }
            emit danmakuChanged();
        });
}

void ZuviVideoPlayerViewController::appendLocalDanmakuText(const QString &text, double playbackTime)
{
    std::optional<ZuviDanmakuItem> item = ZuviDanmakuItem::itemWithText(text);
    if (!item)
        return;
    item->time = playbackTime;
    item->mode = 1;
    item->fontSize = 16;
    item->colorRGB = 0xFFFFFF;
    QList<ZuviDanmakuItem> items = m_danmakuItems;
    items.append(*item);
    std::stable_sort(
        items.begin(), items.end(),
        [](const ZuviDanmakuItem &a, const ZuviDanmakuItem &b) { return a.time < b.time; });
    m_danmakuItems = items;
    m_danmakuStatusText.clear();
    m_overlay->setDanmakuItems(m_danmakuItems);
    // A reset to the sent moment launches it within the overlay's look-back.
    m_overlay->resetForPlaybackTime(playbackTime);
    emit danmakuChanged();
}

double ZuviVideoPlayerViewController::currentPlaybackTimeForDanmaku() const
{
    return moviePlaybackTime();
}

// MARK: - Preview texts and the log panel

QString
ZuviVideoPlayerViewController::danmakuTimeRangeTextForItems(const QList<ZuviDanmakuItem> &items)
{
    if (items.isEmpty())
        return QStringLiteral("弹幕时间 --");
    return QStringLiteral("弹幕时间 %1s - %2s")
        .arg(items.constFirst().time, 0, 'f', 1)
        .arg(items.constLast().time, 0, 'f', 1);
}

QString ZuviVideoPlayerViewController::danmakuPreviewSummaryText() const
{
    if (!m_danmakuItems.isEmpty()) {
        const int count = int(m_danmakuItems.size());
        return QStringLiteral("已加载 %1 条，点击查看前 %2 条")
            .arg(count)
            .arg(std::min(count, kPreviewLimit));
    }
    return m_danmakuStatusText.isEmpty() ? QStringLiteral("暂无弹幕") : m_danmakuStatusText;
}

QString ZuviVideoPlayerViewController::danmakuPreviewAlertMessage() const
{
    QString message;
    const int count = int(m_danmakuItems.size());
    const int shown = std::min(count, kPreviewLimit);
    for (int i = 0; i < shown; ++i) {
        const QString &text = m_danmakuItems.at(i).text;
        if (!text.isEmpty())
            message += QStringLiteral("%1. %2\n").arg(i + 1).arg(text);
    }
    if (count > shown)
        message += QStringLiteral("\n还有 %1 条弹幕未显示").arg(count - shown);
    if (message.isEmpty())
        return m_danmakuStatusText.isEmpty() ? QStringLiteral("暂无弹幕") : m_danmakuStatusText;
    return message;
}

bool ZuviVideoPlayerViewController::showsDanmakuPreview() const
{
    return developerModeEnabled();
}

bool ZuviVideoPlayerViewController::showsFullscreenDirectionGuide() const
{
    const QString key = QString::fromLatin1(kFullscreenDirectionGuideEnabledKey);
    return developerModeEnabled() && (!m_defaults->containsKey(key) || m_defaults->boolForKey(key));
}

void ZuviVideoPlayerViewController::appendDanmakuAPILogLine(const QString &line)
{
    if (line.isEmpty())
        return;
    m_danmakuLogLines.append(line);
    while (m_danmakuLogLines.size() > kLogLineLimit)
        m_danmakuLogLines.removeFirst();
    // The lines are kept for the preview; the panel itself stays hidden.
    emit danmakuChanged();
}

void ZuviVideoPlayerViewController::danmakuAPILogNotification(const QString &message)
{
    if (developerModeEnabled())
        appendDanmakuAPILogLine(message);
}

// MARK: - Timer and tick

void ZuviVideoPlayerViewController::startDanmakuTimer()
{
    if (m_scheduler->isScheduled(this, kDanmakuTimer))
        return;
    m_scheduler->repeat(this, kDanmakuTimer, kDanmakuTickInterval, [this] {
        tickDanmakuAtCurrentPlaybackTime();
        checkVideoFramesStillComing();
    });
}

// The overlay draws with the movie's pictures while they come (see
// ZuviDanmakuOverlayView::videoFrameShown); a whole tick without one means
// they stopped, and the overlay goes back to asking for frames itself.
void ZuviVideoPlayerViewController::movieVideoFrameDidChange()
{
    if (!m_moviePlayer || sender() != m_moviePlayer)
        return;
    m_videoFrameSinceTimerTick = true;
    m_overlay->videoFrameShown();
}

void ZuviVideoPlayerViewController::checkVideoFramesStillComing()
{
    if (!m_videoFrameSinceTimerTick)
        m_overlay->stopFollowingVideoFrames();
    m_videoFrameSinceTimerTick = false;
}

void ZuviVideoPlayerViewController::stopDanmakuTimer()
{
    m_scheduler->cancel(this, kDanmakuTimer);
    // Without the tick nothing would notice the pictures stopping.
    m_videoFrameSinceTimerTick = false;
    m_overlay->stopFollowingVideoFrames();
}

bool ZuviVideoPlayerViewController::isDanmakuTimerRunning() const
{
    return m_scheduler->isScheduled(const_cast<ZuviVideoPlayerViewController *>(this),
                                    kDanmakuTimer);
}

void ZuviVideoPlayerViewController::tickDanmakuAtCurrentPlaybackTime()
{
    if (!m_moviePlayer)
        return;
    if (m_danmakuSuspendedForFullscreenExit) {
        m_overlay->clearVisibleDanmaku();
        m_lastDanmakuTickPlaybackTime = moviePlaybackTime();
        return;
    }
    if (m_moviePlayerFullscreen)
        moveDanmakuOverlayToFullscreenWindow();
    const double t = moviePlaybackTime();
    const auto state = m_moviePlayer->playbackState();
    const bool advanced =
        m_lastDanmakuTickPlaybackTime >= 0 && t > m_lastDanmakuTickPlaybackTime + 0.005;
    if (advanced)
        m_stagnantPlaybackTickCount = 0;
    else if (m_lastDanmakuTickPlaybackTime >= 0)
        ++m_stagnantPlaybackTickCount;
    else
        m_stagnantPlaybackTickCount = 0;
    // A clock frozen for four ticks in a row (about half a second) is a
    // stall the player has not reported: the danmaku wait with the picture.
    bool playing = false;
    if (!isPausedLike(state))
        playing = advanced || (state == ZuviMoviePlayer::PlaybackPlaying &&
                               m_stagnantPlaybackTickCount < kStallTickLimit);
    m_overlay->tickAtPlaybackTime(t, playing);
    m_lastDanmakuTickPlaybackTime = t;
    if (developerModeEnabled() && ++m_danmakuTickDebugCounter % 12 == 0)
        appendDanmakuAPILogLine(m_overlay->debugStateTextForPlaybackTime(t, playing));
}

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
    m_movieShouldResumeAfterFullscreenExit =
        m_moviePlayer->playbackState() == ZuviMoviePlayer::PlaybackPlaying;
    prepareDanmakuOverlayForFullscreenExit();
    if (m_moviePlayer->isFullscreen())
        m_moviePlayer->setFullscreen(false, true);
}

double ZuviVideoPlayerViewController::fullscreenEdgeZoneWidth(double viewWidth)
{
    return std::min(58.0, std::floor(viewWidth * 0.25));
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

// MARK: - Detail texts for the page

QString ZuviVideoPlayerViewController::videoTitle() const
{
    return m_detail ? m_detail->title : m_videoItem.title;
}

QString ZuviVideoPlayerViewController::detailMetaText() const
{
    return m_detail ? m_detail->metadataText() : m_videoItem.metadataText();
}

QString ZuviVideoPlayerViewController::detailDescription() const
{
    return m_detail ? m_detail->desc : QString();
}

QStringList ZuviVideoPlayerViewController::pageTitles() const
{
    QStringList titles;
    if (!m_detail)
        return titles;
    for (const ZuviVideoPage &page : m_detail->pages)
        titles << (page.partTitle.isEmpty() ? QStringLiteral("P%1").arg(page.pageNumber)
                                            : page.partTitle);
    return titles;
}
