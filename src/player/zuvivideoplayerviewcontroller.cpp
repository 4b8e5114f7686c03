#include "zuvivideoplayerviewcontroller.h"

#include "browse/zuvivideoscreenopener.h"

#include "app/zuvikeyboardshortcuts.h"
#include "app/zuvinavigationcontroller.h"
#include "danmaku/zuvidanmakuoverlayview.h"
#include "desktop/zuvinowplaying.h"
#include "net/zuviapiclient.h"
#include "platform/zuvidefaults.h"
#include "platform/zuviidiom.h"
#include "platform/zuvilifetime.h"
#include "platform/zuvinotificationcenter.h"
#include "platform/zuvischeduler.h"
#include "zuvifastforward.h"
#include "zuvigstreamertuning.h"
#include "zuvimediamovieplayer.h"
#include "zuviplaybackendcard.h"
#include "zuviqualitypreference.h"
#include "zuvivideoactions.h"
#include "zuvivideoplayercalls.h"
#include "zuvivideoscreendesktop.h"
#include "zuvivideosidecontent.h"

#include <QGuiApplication>
#include <QQuickWindow>
#include <QScreen>

#include <algorithm>
#include <cmath>

const char *const ZuviVideoPlayerViewController::kPreferredQualityModeKey =
    ZuviQualityPreference::kModeKey;
const char *const ZuviVideoPlayerViewController::kPreferredQualityModeLegacyMigratedKey =
    ZuviQualityPreference::kLegacyMigratedKey;
const char *const ZuviVideoPlayerViewController::kDanmakuEnabledKey = "ZuviDanmakuEnabled";
const char *const ZuviVideoPlayerViewController::kFullscreenDirectionGuideEnabledKey =
    "ZuviFullscreenDirectionGuideEnabled";
const char *const ZuviVideoPlayerViewController::kDanmakuAPILogNotification =
    "ZuviDanmakuAPILogNotification";

namespace {
const QString kAllowRelatedImages = QStringLiteral("allowRelatedImages");
} // namespace
using namespace ZuviVideoPlayerCalls;

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
            auto *screen = new ZuviVideoPlayerViewController(item, sourceTitle, client, scheduler,
                                                             defaults, mediaPlayerFactory());
            new ZuviVideoScreenDesktop(screen, ZuviNowPlaying::sharedNowPlaying(),
                                       ZuviKeyboardShortcuts::sharedShortcuts());
            return screen;
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
      m_overlay(new ZuviDanmakuOverlayView), m_sideContent(new ZuviVideoSideContent(client, this)),
      m_actions(new ZuviVideoActions(client, this)),
      m_endCard(new ZuviPlaybackEndCard(scheduler, m_sideContent, this)),
      m_fastForward(new ZuviFastForward(this)),
      m_playbackOptions(new ZuviPlaybackOptions(scheduler, defaults, m_fastForward, this))
{
    m_overlay->setParent(this);
    m_overlay->setPadIdiom(ZuviIdiom::isPad());
    m_overlay->setZ(1);
    // The viewer's look and filters for danmaku, as stored and as changed.
    m_overlay->followStoredSettings(m_defaults, m_client->notificationCenter());
    m_client->notificationCenter()->addObserver(
        QString::fromLatin1(kDanmakuAPILogNotification), this, [this](const ZuviNotification &n) {
            danmakuAPILogNotification(n.userInfo.value(QStringLiteral("message")).toString());
        });
    wireParts();
    initWithVideoItem(item, sourceTitle);
}

void ZuviVideoPlayerViewController::wireParts()
{
    using C = ZuviVideoPlayerViewController;
    // The actions are children of this screen, so the clock they read is
    // never asked for after the screen has gone.
    m_actions->setPlaybackTimeSource([this] { return currentPlaybackTimeForDanmaku(); });
    connect(m_actions, &ZuviVideoActions::danmakuSent, this, &C::appendLocalDanmakuText);
    connect(m_actions, &ZuviVideoActions::commentPosted, this,
            [this] { m_sideContent->loadCommentsReset(true); });
    connect(m_endCard, &ZuviPlaybackEndCard::changed, this, &C::playbackEndChanged);
    connect(m_endCard, &ZuviPlaybackEndCard::autoPlayRequested, this,
            &C::playbackEndAutoPlayRelatedVideo);
    wirePlaybackOptions();
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
    m_playbackOptions->loadStoredVolume();
    restorePlaybackStateAfterNavigationIfNeeded();
}

void ZuviVideoPlayerViewController::viewWillDisappear()
{
    // The fullscreen window covers the screen; nothing has really gone away.
    if (isPlayerFullscreen())
        return;
    m_scheduler->cancel(this, kAllowRelatedImages);
    if (!m_endCard->isVisible() || m_endCard->isInFullscreen()) {
        if (m_moviePlayer && !m_pendingPlayURL.isEmpty()) {
            m_restorePlaybackOnAppear = true;
            m_restorePlaybackTime = moviePlaybackTime();
        }
    } else {
        m_restorePlaybackEndOnAppear = true;
        m_restoreFinishReason = 0;
    }
    m_endCard->cancelCountdown();
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
    m_actions->setSelectedCID(m_detail->pages.at(index).cid);
    hidePlaybackEndView();
    emit detailChanged();
    loadPlaybackForSelectedPage();
}

void ZuviVideoPlayerViewController::loadVideoDetail()
{
    const int requestID = ++m_detailRequestID;
    m_acceptsMediaCallbacks = true;
    m_loadingDetail = true;
    m_scheduler->cancel(this, kAllowRelatedImages);
    m_sideContent->setRelatedImagesAllowed(false);
    setStateLabel(QStringLiteral("正在加载视频信息"), true);
    setRetryVisible(false);
    resetSideContentForLoading();
    m_client->fetchVideoDetailWithBVID(
        m_videoItem.bvid,
        ZuviLifetime::bound(this, [this, requestID](const std::optional<ZuviVideoDetail> &detail,
                                                    const ZuviError &error) {
            if (!m_acceptsMediaCallbacks || requestID != m_detailRequestID)
                return;
            m_loadingDetail = false;
            if (!error.isNull() || !detail) {
                m_detail = fallbackDetailFromVideoItem(m_videoItem);
                if (!m_detail) {
                    // Nothing else loads for this video until the retry, so
                    // the danmaku line and the side lists stop saying they do.
                    m_danmakuStatusText.clear();
                    emit danmakuChanged();
                    m_sideContent->showUnavailable();
                    showPlaybackError(error.message);
                    emit detailChanged();
                    return;
                }
            } else {
                m_detail = detail;
            }
            emit detailChanged();
            loadPlaybackForSelectedPage();
            loadSideContent();
        }));
}

void ZuviVideoPlayerViewController::resetSideContentForLoading()
{
    m_sideContent->clearVideo();
    m_actions->setTarget(std::nullopt);
}

void ZuviVideoPlayerViewController::loadSideContent()
{
    if (!m_detail)
        return;
    m_sideContent->resetForVideo(m_detail->aid, m_detail->bvid);
    const std::optional<ZuviVideoPage> page = selectedPage();
    m_actions->setTarget(
        ZuviVideoActions::Target{m_detail->aid, m_detail->bvid, page ? page->cid : m_detail->cid});
    m_sideContent->loadRelatedVideos();
    m_sideContent->loadCommentsReset(true);
}

void ZuviVideoPlayerViewController::setRelatedImagesAllowedSoon(bool allowed)
{
    m_scheduler->cancel(this, kAllowRelatedImages);
    if (!allowed) {
        m_sideContent->setRelatedImagesAllowed(false);
        return;
    }
    // A moment later, so the covers do not start in the same turn as the movie.
    m_scheduler->callAfter(this, kAllowRelatedImages, 0.0,
                           [this] { m_sideContent->setRelatedImagesAllowed(true); });
}

void ZuviVideoPlayerViewController::loadPlaybackForSelectedPage()
{
    const std::optional<ZuviVideoPage> page = selectedPage();
    if (!page) {
        showPlaybackError(QStringLiteral("视频缺少可播放分 P"));
        return;
    }
    const bool keep = shouldKeepFullscreenForNextPlayback();
    const int requestID = ++m_playbackRequestID;
    m_acceptsMediaCallbacks = true;
    // Kept in fullscreen, the end card stays up over the player until the
    // next movie starts in it.
    if (!keep)
        hidePlaybackEndView();
    m_loadingCID = page->cid;
    m_loadingPlayURL = true;
    setRelatedImagesAllowedSoon(false);
    m_activeQuality = 0;
    m_pendingPlayURL.clear();
    m_pendingQuality = 0;
    setStateLabel(QStringLiteral("正在获取%1播放地址").arg(currentQualityModeTitle()), true);
    setRetry(QStringLiteral("开始播放"), false);
    m_overlay->setDanmakuItems({});
    if (keep) {
        stopDanmakuTimer();
        m_overlay->clearVisibleDanmaku();
    } else {
        stopCurrentMovie();
    }
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
        ZuviLifetime::bound(this, [this, requestID, cid](const QString &urlString, int quality,
                                                         const ZuviError &error) {
            if (!m_acceptsMediaCallbacks || requestID != m_playbackRequestID || cid != m_loadingCID)
                return;
            m_loadingPlayURL = false;
            if (!urlString.isEmpty() && error.isNull()) {
                startMovieWithURL(QUrl(urlString), quality);
                return;
            }
            showPlaybackError(error.message.isEmpty() ? QStringLiteral("当前视频无法播放")
                                                      : error.message);
        }));
}

void ZuviVideoPlayerViewController::startMovieWithURL(const QUrl &url, int quality)
{
    m_pendingPlayURL = url;
    m_pendingQuality = quality;
    if (shouldKeepFullscreenForNextPlayback())
        m_endCard->setMetaText(QStringLiteral("播放地址已获取，正在全屏播放"));
    else
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
    if (shouldKeepFullscreenForNextPlayback()) {
        playPendingMovieInCurrentFullscreenWithRequestID(++m_movieStartRequestID);
        return;
    }
    m_playbackNextShouldKeepFullscreen = false;
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
        if (!m_sideContent->relatedImagesAllowed())
            setRelatedImagesAllowedSoon(true);
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

void ZuviVideoPlayerViewController::showPlaybackError(const QString &message)
{
    const QString text = message.isEmpty() ? QStringLiteral("视频加载失败") : message;
    if (m_playbackNextShouldKeepFullscreen ||
        (m_endCard->isVisible() && m_endCard->isInFullscreen())) {
        m_playbackNextShouldKeepFullscreen = false;
        m_endCard->showError(text);
        return;
    }
    hidePlaybackEndView();
    m_overlay->clearVisibleDanmaku();
    m_scheduler->cancel(this, kAllowRelatedImages);
    m_sideContent->setRelatedImagesAllowed(true);
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
    m_playbackNextShouldKeepFullscreen = false;
    m_fastForward->endIfNeeded(m_moviePlayer);
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
