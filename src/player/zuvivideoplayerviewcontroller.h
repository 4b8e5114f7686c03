#pragma once

#include "app/zuviviewcontroller.h"
#include "model/zuvidanmakuitem.h"
#include "model/zuvivideodetail.h"
#include "model/zuvivideoitem.h"
#include "platform/zuvierror.h"
#include "zuvifastforward.h"
#include "zuvimovieplayer.h"
#include "zuviplaybackendcard.h"
#include "zuviplaybackoptions.h"
#include "zuvivideoactions.h"
#include "zuvivideosidecontent.h"

#include <QObject>
#include <QPointer>
#include <QQuickItem>
#include <QStringList>
#include <QUrl>
#include <QVariantMap>
#include <QtQml/qqmlregistration.h>

#include <functional>
#include <optional>

class ZuviAPIClient;
class ZuviDanmakuOverlayView;
class ZuviDefaults;
class ZuviScheduler;

// The video screen. It fetches the detail of the video it was opened with
// (or makes one from the list entry), picks the page, asks for a playable
// address in the user's quality order, plays it in a movie player inside the
// player container and drives the danmaku overlay from the movie's clock,
// inline and fullscreen. Every asynchronous step carries a request number so
// that an answer arriving after the user has moved on is dropped, and every
// completion is bound to the screen's lifetime.
//
// The screen coordinates parts of its own: the side content (related videos
// and comments), the video actions, the end card with its countdown, the
// fast-forward gesture and the playback options (volume, speed, quality
// menu, the controls' hiding). QML binds to those parts directly; what joins them
// to the player lives here.
class ZuviVideoPlayerViewController : public ZuviViewController
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made for a list entry by ZuviVideoScreenOpener")
    Q_PROPERTY(QString sourceTitle READ sourceTitle NOTIFY detailChanged)
    Q_PROPERTY(QString videoTitle READ videoTitle NOTIFY detailChanged)
    Q_PROPERTY(QString detailMetaText READ detailMetaText NOTIFY detailChanged)
    Q_PROPERTY(QString detailDescription READ detailDescription NOTIFY detailChanged)
    Q_PROPERTY(QStringList pageTitles READ pageTitles NOTIFY detailChanged)
    Q_PROPERTY(int selectedPageIndex READ selectedPageIndex NOTIFY detailChanged)
    Q_PROPERTY(QString stateText READ stateText NOTIFY stateLabelChanged)
    Q_PROPERTY(bool stateVisible READ isStateVisible NOTIFY stateLabelChanged)
    Q_PROPERTY(QString retryTitle READ retryTitle NOTIFY stateLabelChanged)
    Q_PROPERTY(bool retryVisible READ isRetryVisible NOTIFY stateLabelChanged)
    Q_PROPERTY(ZuviMoviePlayer *moviePlayer READ moviePlayer NOTIFY moviePlayerChanged)
    Q_PROPERTY(bool moviePlayerFullscreen READ isMoviePlayerFullscreen NOTIFY moviePlayerChanged)
    Q_PROPERTY(ZuviDanmakuOverlayView *danmakuOverlay READ danmakuOverlay CONSTANT)
    Q_PROPERTY(QQuickItem *playerContainer READ playerContainer WRITE setPlayerContainer NOTIFY
                   containersChanged)
    Q_PROPERTY(QQuickItem *movieView READ movieView WRITE setMovieView NOTIFY containersChanged)
    Q_PROPERTY(bool danmakuEnabled READ isDanmakuEnabled WRITE setDanmakuEnabledByUser NOTIFY
                   danmakuChanged)
    Q_PROPERTY(QString danmakuStatusText READ danmakuStatusText NOTIFY danmakuChanged)
    Q_PROPERTY(
        QString danmakuPreviewSummaryText READ danmakuPreviewSummaryText NOTIFY danmakuChanged)
    Q_PROPERTY(
        QString danmakuPreviewAlertMessage READ danmakuPreviewAlertMessage NOTIFY danmakuChanged)
    Q_PROPERTY(bool showsDanmakuPreview READ showsDanmakuPreview NOTIFY danmakuChanged)
    Q_PROPERTY(QStringList danmakuLogLines READ danmakuLogLines NOTIFY danmakuChanged)
    Q_PROPERTY(QString fullscreenDirectionText READ fullscreenDirectionText NOTIFY
                   fullscreenDirectionChanged)
    Q_PROPERTY(bool playbackEndVisible READ isPlaybackEndVisible NOTIFY playbackEndChanged)
    Q_PROPERTY(
        bool playbackEndInFullscreen READ isPlaybackEndInFullscreen NOTIFY playbackEndChanged)
    Q_PROPERTY(int playbackEndReason READ playbackEndReason NOTIFY playbackEndChanged)
    Q_PROPERTY(QString playbackEndBadgeText READ playbackEndBadgeText NOTIFY playbackEndChanged)
    Q_PROPERTY(QString playbackEndTitleText READ playbackEndTitleText NOTIFY playbackEndChanged)
    Q_PROPERTY(QString playbackEndMetaText READ playbackEndMetaText NOTIFY playbackEndChanged)
    Q_PROPERTY(ZuviVideoSideContent *sideContent READ sideContent CONSTANT)
    Q_PROPERTY(ZuviVideoActions *actions READ actions CONSTANT)
    Q_PROPERTY(ZuviPlaybackEndCard *endCard READ endCard CONSTANT)
    Q_PROPERTY(ZuviFastForward *fastForward READ fastForward CONSTANT)
    Q_PROPERTY(ZuviPlaybackOptions *playbackOptions READ playbackOptions CONSTANT)
    Q_PROPERTY(bool padIdiom READ isPadIdiom CONSTANT)

public:
    using PlayerFactory = std::function<ZuviMoviePlayer *(QObject *parent)>;

    // The screen for a list entry and the title of the list it came from.
    ZuviVideoPlayerViewController(const ZuviVideoItem &item, const QString &sourceTitle,
                                  ZuviAPIClient *client, ZuviScheduler *scheduler,
                                  ZuviDefaults *defaults, PlayerFactory playerFactory,
                                  QObject *parent = nullptr);
    // The same on the shared client, the real-time scheduler, the standard
    // defaults and QMediaPlayer-backed players.
    static ZuviVideoPlayerViewController *createWithVideoItem(const ZuviVideoItem &item,
                                                              const QString &sourceTitle);
    static PlayerFactory mediaPlayerFactory();
    // Makes this the screen that opening a video from any list pushes, on
    // the given services and QMediaPlayer-backed players.
    static void openVideosFromLists(ZuviAPIClient *client, ZuviScheduler *scheduler,
                                    ZuviDefaults *defaults);
    // Builds the item from a map of ZuviVideoItem's field names.
    static ZuviVideoItem videoItemFromMap(const QVariantMap &map);
    ~ZuviVideoPlayerViewController() override;

    static const char *const kPreferredQualityModeKey;
    static const char *const kPreferredQualityModeLegacyMigratedKey;
    static const char *const kDanmakuEnabledKey;
    static const char *const kFullscreenDirectionGuideEnabledKey;
    static const char *const kDanmakuAPILogNotification;
    static constexpr double kDanmakuTickInterval = 0.12;

    // --- Screen lifecycle
    QUrl pageUrl() const override;
    void viewWillAppear() override;
    void viewWillDisappear() override;
    Q_INVOKABLE void didReceiveMemoryWarning();

    // --- Quality preference
    int preferredQualityModeIndex() const;
    QList<int> currentQualityOrder() const;
    QString currentQualityModeTitle() const;
    static QString qualityDisplayTitleForQuality(int quality);

    // --- Detail and pages
    static std::optional<ZuviVideoDetail> fallbackDetailFromVideoItem(const ZuviVideoItem &item);
    std::optional<ZuviVideoPage> selectedPage();
    Q_INVOKABLE void selectPage(int index);
    void loadVideoDetail();
    void loadPlaybackForSelectedPage();

    // --- Playback
    void showPlaybackError(const QString &message);
    Q_INVOKABLE void retryButtonTapped();
    void releaseMoviePlayer();
    void stopCurrentMovie() { releaseMoviePlayer(); }
    void restorePlaybackStateAfterNavigationIfNeeded();
    void playPendingMovieInline();

    // --- Danmaku
    bool defaultDanmakuEnabled() const;
    void syncDanmakuEnabledFromDefaults();
    void tickDanmakuAtCurrentPlaybackTime();
    void movieVideoFrameDidChange();
    void checkVideoFramesStillComing();
    double currentPlaybackTimeForDanmaku() const;
    Q_INVOKABLE void appendLocalDanmakuText(const QString &text, double playbackTime);
    static QString danmakuTimeRangeTextForItems(const QList<ZuviDanmakuItem> &items);
    QString danmakuPreviewSummaryText() const;
    QString danmakuPreviewAlertMessage() const;
    bool showsDanmakuPreview() const;
    bool showsFullscreenDirectionGuide() const;
    void appendDanmakuAPILogLine(const QString &line);

    // --- Fullscreen
    Q_INVOKABLE void toggleFullscreen();
    void prepareDanmakuOverlayForFullscreenExit();
    void moveDanmakuOverlayToFullscreenWindow();
    void restoreDanmakuOverlayToPlayerContainer();
    void resumeMovieAfterFullscreenExitIfNeeded();
    void recoverFromFullscreenUserExitIfNeeded();
    // A pan from the left edge of the fullscreen picture, reported when it
    // ends: far or fast enough to the right, it leaves fullscreen.
    Q_INVOKABLE void fullscreenEdgeExitPanRecognized(double translationX, double velocityX);
    void exitFullscreenPlaybackFromEdgeGesture();
    // Width of the left-edge zone where such a pan may start.
    Q_INVOKABLE static double fullscreenEdgeZoneWidth(double viewWidth);
    // The visible picture inside the movie view, in the container's coordinates.
    QRectF fullscreenDanmakuFrameInWindowForContainerView(QQuickItem *container) const;

    // --- Angles (radians; screen coordinates with y pointing down)
    static double normalizedAngle(double angle);
    static QString directionNameForAngle(double angle);
    static double xAxisAngleInWindowForView(const QQuickItem *view);
    double currentInterfaceVisualAngle() const;
    double fullscreenDanmakuCorrectionAngleForContainerView(const QQuickItem *container) const;
    // The interface rotation in radians; 0 on a desktop, where the window never turns.
    void setInterfaceRotation(double radians) { m_interfaceRotation = radians; }

    // --- End of playback
    void showPlaybackEndViewWithReason(int reason);
    void hidePlaybackEndView();
    Q_INVOKABLE void playbackEndReplayTapped();
    Q_INVOKABLE void playbackEndExitTapped();
    Q_INVOKABLE void playbackEndRelatedTapped();
    // A related video tapped in the side list opens a screen of its own.
    Q_INVOKABLE void relatedVideoTapped(int row);
    void playbackEndAutoPlayRelatedVideo();
    bool shouldKeepFullscreenForNextPlayback() const;
    void playRelatedVideoInCurrentFullscreen(const ZuviVideoItem &video);
    void playPendingMovieInCurrentFullscreenWithRequestID(int requestID);

    // --- Gestures on the picture
    Q_INVOKABLE bool fastForwardLongPressShouldBegin(bool touchOnControl) const;
    Q_INVOKABLE void fastForwardLongPressBegan();
    Q_INVOKABLE void fastForwardLongPressEnded();
    Q_INVOKABLE bool fullscreenEdgePanShouldBegin(double startX, double viewWidth, double velocityX,
                                                  double velocityY, bool touchOnControl) const;
    // Pad portrait content column: at most 680 wide on a pad, all of it on a phone.
    Q_INVOKABLE static double portraitContentWidthForWidth(double width);

    // --- Keys and controls forwarded by the page
    Q_INVOKABLE void togglePlayPause();
    Q_INVOKABLE void seekBy(double seconds);
    Q_INVOKABLE void seekTo(double seconds);
    Q_INVOKABLE void setDanmakuEnabledByUser(bool enabled);
    Q_INVOKABLE void escapePressed();

    // --- Quality chosen in the player
    // Asks for the address again from that quality down, and plays it from
    // where the movie is; the stored preference stays as it is.
    void switchQuality(int quality);
    int qualitySwitchRequestID() const { return m_qualitySwitchRequestID; }

    // --- Read-only state
    QString sourceTitle() const { return m_sourceTitle; }
    const ZuviVideoItem &videoItem() const { return m_videoItem; }
    const std::optional<ZuviVideoDetail> &detail() const { return m_detail; }
    QString videoTitle() const;
    QString detailMetaText() const;
    QString detailDescription() const;
    QStringList pageTitles() const;
    int selectedPageIndex() const { return m_selectedPageIndex; }
    QString stateText() const { return m_stateText; }
    bool isStateVisible() const { return m_stateVisible; }
    QString retryTitle() const { return m_retryTitle; }
    bool isRetryVisible() const { return m_retryVisible; }
    ZuviMoviePlayer *moviePlayer() const { return m_moviePlayer; }
    bool isMoviePlayerFullscreen() const { return m_moviePlayerFullscreen; }
    ZuviDanmakuOverlayView *danmakuOverlay() const { return m_overlay; }
    QQuickItem *playerContainer() const { return m_playerContainer; }
    void setPlayerContainer(QQuickItem *container);
    QQuickItem *movieView() const { return m_movieView; }
    void setMovieView(QQuickItem *view);
    bool isDanmakuEnabled() const { return m_danmakuEnabled; }
    QString danmakuStatusText() const { return m_danmakuStatusText; }
    const QList<ZuviDanmakuItem> &danmakuItems() const { return m_danmakuItems; }
    QStringList danmakuLogLines() const { return m_danmakuLogLines; }
    QString fullscreenDirectionText() const { return m_fullscreenDirectionText; }
    bool isPlaybackEndVisible() const;
    bool isPlaybackEndInFullscreen() const;
    int playbackEndReason() const;
    QString playbackEndBadgeText() const;
    QString playbackEndTitleText() const;
    QString playbackEndMetaText() const;
    ZuviVideoSideContent *sideContent() const { return m_sideContent; }
    ZuviVideoActions *actions() const { return m_actions; }
    ZuviPlaybackEndCard *endCard() const { return m_endCard; }
    ZuviFastForward *fastForward() const { return m_fastForward; }
    ZuviPlaybackOptions *playbackOptions() const { return m_playbackOptions; }
    static bool isPadIdiom();
    bool relatedImagesAllowed() const;

    int detailRequestID() const { return m_detailRequestID; }
    int playbackRequestID() const { return m_playbackRequestID; }
    int movieStartRequestID() const { return m_movieStartRequestID; }
    bool acceptsMediaCallbacks() const { return m_acceptsMediaCallbacks; }
    bool isLoadingDetail() const { return m_loadingDetail; }
    bool isLoadingPlayURL() const { return m_loadingPlayURL; }
    qint64 loadingCID() const { return m_loadingCID; }
    QUrl pendingPlayURL() const { return m_pendingPlayURL; }
    int pendingQuality() const { return m_pendingQuality; }
    int activeQuality() const { return m_activeQuality; }
    double lastDanmakuTickPlaybackTime() const { return m_lastDanmakuTickPlaybackTime; }
    int stagnantPlaybackTickCount() const { return m_stagnantPlaybackTickCount; }
    bool isDanmakuSuspendedForFullscreenExit() const { return m_danmakuSuspendedForFullscreenExit; }
    bool movieShouldResumeAfterFullscreenExit() const
    {
        return m_movieShouldResumeAfterFullscreenExit;
    }
    bool isDanmakuOverlayInFullscreen() const { return m_danmakuOverlayInFullscreen; }
    bool isDanmakuTimerRunning() const;

signals:
    void detailChanged();
    void stateLabelChanged();
    void moviePlayerChanged();
    void containersChanged();
    void danmakuChanged();
    void fullscreenDirectionChanged();
    void playbackEndChanged();
    // The end view's exit while inline, for a screen without a stack.
    void closeRequested();
    // A related video to open in a screen of its own, for a screen without a stack.
    void openVideoRequested(const ZuviVideoItem &video, const QString &sourceTitle);

protected:
    void viewDidLoad() override { loadVideoDetail(); }

private:
    void initWithVideoItem(const ZuviVideoItem &item, const QString &sourceTitle);
    void setStateLabel(const QString &text, bool visible);
    void wireParts();
    void resetSideContentForLoading();
    void loadSideContent();
    void setRelatedImagesAllowedSoon(bool allowed);
    void openRelatedVideo(const ZuviVideoItem &video);
    void setRetry(const QString &title, bool visible);
    void setRetryVisible(bool visible);
    void wirePlaybackOptions();
    void playSwitchedQuality(const QUrl &url, int quality, double position);
    void showQualitySwitchFailure(const QString &message);
    void fetchPlayableURLForPage(const ZuviVideoPage &page, int requestID);
    void loadDanmakuForCID(qint64 cid, int requestID);
    void startMovieWithURL(const QUrl &url, int quality);
    void createMoviePlayerWithURL(const QUrl &url, int quality, int requestID);
    void observeMoviePlayer(ZuviMoviePlayer *player);
    void movieLoadStateChanged();
    void moviePlaybackStateChanged();
    void moviePlaybackDidFinish(int reason);
    void moviePlayerWillEnterFullscreen();
    void moviePlayerDidEnterFullscreen();
    void moviePlayerWillExitFullscreen();
    void moviePlayerDidExitFullscreen();
    void completeFullscreenMoviePlaybackWithReason(int reason);
    void completePendingFullscreenMovieFinish();
    void completeMoviePlaybackWithReason(int reason);
    void startDanmakuTimer();
    void stopDanmakuTimer();
    void danmakuAPILogNotification(const QString &message);
    void cancelDelayedOverlayMoves();
    void scheduleOverlayMove(double delay);
    void setOverlayShown(bool shown);
    void layoutOverlayInPlayerContainer();
    void updateFullscreenDirectionText(double correctionAngle);
    QString interfaceOrientationText() const;
    bool developerModeEnabled() const;
    bool isPlayerFullscreen() const;
    double moviePlaybackTime() const;

    ZuviAPIClient *m_client;
    ZuviScheduler *m_scheduler;
    ZuviDefaults *m_defaults;
    PlayerFactory m_playerFactory;
    ZuviDanmakuOverlayView *m_overlay;
    ZuviVideoSideContent *m_sideContent;
    ZuviVideoActions *m_actions;
    ZuviPlaybackEndCard *m_endCard;
    ZuviFastForward *m_fastForward;
    ZuviPlaybackOptions *m_playbackOptions;
    QPointer<QQuickItem> m_playerContainer;
    QPointer<QQuickItem> m_movieView;
    QMetaObject::Connection m_containerWidth, m_containerHeight;

    ZuviVideoItem m_videoItem;
    QString m_sourceTitle;
    std::optional<ZuviVideoDetail> m_detail;
    int m_selectedPageIndex = 0;
    int m_detailRequestID = 0;
    int m_playbackRequestID = 0;
    int m_movieStartRequestID = 0;
    int m_qualitySwitchRequestID = 0;
    bool m_acceptsMediaCallbacks = false;
    bool m_loadingDetail = false;
    bool m_loadingPlayURL = false;
    qint64 m_loadingCID = 0;
    QUrl m_pendingPlayURL;
    int m_pendingQuality = 0;
    int m_activeQuality = 0;
    double m_pendingInitialPlaybackTime = 0;
    ZuviMoviePlayer *m_moviePlayer = nullptr;
    bool m_moviePlayerFullscreen = false;
    bool m_restorePlaybackOnAppear = false;
    double m_restorePlaybackTime = 0;
    bool m_restorePlaybackEndOnAppear = false;
    int m_restoreFinishReason = 0;
    bool m_playbackNextShouldKeepFullscreen = false;

    QString m_stateText;
    bool m_stateVisible = false;
    QString m_retryTitle;
    bool m_retryVisible = false;

    QList<ZuviDanmakuItem> m_danmakuItems;
    QString m_danmakuStatusText;
    bool m_danmakuEnabled = true;
    QStringList m_danmakuLogLines;
    double m_lastDanmakuTickPlaybackTime = -1.0;
    int m_stagnantPlaybackTickCount = 0;
    bool m_videoFrameSinceTimerTick = false;
    int m_danmakuTickDebugCounter = 0;
    bool m_danmakuSuspendedForFullscreenExit = false;
    bool m_movieShouldResumeAfterFullscreenExit = false;
    bool m_movieFinishPendingAfterFullscreenExit = false;
    int m_pendingMovieFinishReason = 0;
    bool m_danmakuOverlayInFullscreen = false;
    int m_fullscreenDirectionDebugCounter = 0;
    QString m_fullscreenDirectionText;
    double m_interfaceRotation = 0;
};
