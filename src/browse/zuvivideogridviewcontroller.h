#pragma once

#include "app/zuviphonechromecontroller.h"
#include "model/zuvivideoitem.h"
#include "platform/zuvierror.h"
#include "views/zuvistateview.h"
#include "zuvivideolistviewcontroller.h"

#include <QList>
#include <QPointer>
#include <QVariantMap>
Q_MOC_INCLUDE("browse/zuvivideolistmodel.h")

class ZuviAPIClient;
class ZuviScheduler;
class ZuviVideoListModel;

// The first screen of the application (the "推荐" tab) and a general video
// grid. In a remote mode it pages through the recommended or the popular
// feed, refreshes by pull-to-refresh (fetching page 1 early, while the user
// is still pulling) or by its refresh button, and shows loading, empty and
// error states; in static mode it shows a given list. Answers are matched
// to requests by number, so a stale answer is dropped, never cancelled.
class ZuviVideoGridViewController : public ZuviVideoListViewController
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the application shell")
    Q_PROPERTY(ZuviVideoListModel *videos READ videosModel CONSTANT)
    Q_PROPERTY(bool pullRefreshRefreshing READ isPullRefreshRefreshing NOTIFY loadStateChanged)
    Q_PROPERTY(bool loadsRemoteVideos READ loadsRemoteVideos CONSTANT)
    Q_PROPERTY(bool showsBrandLabel READ showsBrandLabel CONSTANT)
    Q_PROPERTY(bool showsHeader READ showsHeader CONSTANT)
    Q_PROPERTY(QString contentHeaderTitle READ contentHeaderTitle CONSTANT)
    Q_PROPERTY(QString contentHeaderSubtitle READ contentHeaderSubtitle CONSTANT)
    Q_PROPERTY(QString searchPlaceholder READ searchPlaceholder CONSTANT)
    Q_PROPERTY(QString brandText READ brandText CONSTANT)

public:
    enum class Mode { Recommended, Popular, Static };

    static constexpr int kRecommendedPageSize = 20;
    static constexpr int kPopularPageSize = 50;
    // Pulling the list this far down starts fetching page 1 early.
    static constexpr double kPrefetchPullOffset = -42;
    // Pulling this far fires the pull-to-refresh control.
    static constexpr double kPullRefreshTriggerOffset = -72;
    // After a drag ends without a refresh, an unused prefetch is dropped this
    // much later (unless the list is still moving).
    static constexpr double kUnusedPrefetchDelay = 0.25;
    static const char *const kCancelUnusedPrefetchCallName;

    // The three ways the screen is made; the mode never changes afterwards.
    static ZuviVideoGridViewController *createWithRecommendedTitle(const QString &title,
                                                                   const QString &emptyMessage,
                                                                   ZuviAPIClient *client,
                                                                   ZuviScheduler *scheduler);
    static ZuviVideoGridViewController *createWithPopularTitle(const QString &title,
                                                               const QString &emptyMessage,
                                                               ZuviAPIClient *client,
                                                               ZuviScheduler *scheduler);
    static ZuviVideoGridViewController *
    createWithTitle(const QString &title, const QList<ZuviVideoItem> &videos,
                    const QString &emptyMessage, ZuviAPIClient *client, ZuviScheduler *scheduler);
    ~ZuviVideoGridViewController() override;

    QUrl pageUrl() const override;

    // --- State
    Mode mode() const { return m_mode; }
    bool loadsRemoteVideos() const { return m_mode != Mode::Static; }
    QList<ZuviVideoItem> videos() const { return m_videos; }
    ZuviVideoListModel *videosModel() const { return m_model; }
    QString emptyMessage() const { return m_emptyMessage; }
    bool isPullRefreshRefreshing() const { return m_pullRefreshRefreshing; }
    int currentPage() const { return m_currentPage; }
    bool hasMorePages() const { return m_hasMorePages; }
    int requestID() const { return m_requestID; }
    bool isPullRefreshPrefetching() const { return m_pullRefreshPrefetching; }
    bool pullRefreshHasPrefetchedResult() const { return m_pullRefreshHasPrefetchedResult; }
    bool pullRefreshApplyAfterRelease() const { return m_pullRefreshApplyAfterRelease; }
    int pullRefreshPrefetchRequestID() const { return m_pullRefreshPrefetchRequestID; }
    QList<ZuviVideoItem> pullRefreshPrefetchedVideos() const { return m_prefetchedVideos; }
    bool phoneChromeHidden() const { return m_phoneChromeHidden; }
    double lastScrollOffsetY() const { return m_lastScrollOffsetY; }

    // --- Texts
    QString remoteLoadingMessage() const;
    QString contentHeaderTitle() const;
    QString contentHeaderSubtitle() const;
    bool showsHeader() const { return m_mode != Mode::Recommended; }
    bool showsBrandLabel() const { return m_mode == Mode::Recommended; }
    QString searchPlaceholder() const;
    QString brandText() const;

    // --- Actions
    Q_INVOKABLE void refreshButtonTapped() override;
    // The tab of this screen was tapped again while it is the root.
    Q_INVOKABLE void tabBarItemReselected();
    Q_INVOKABLE void pullRefreshTriggered();
    // The user tapped the card at that row.
    Q_INVOKABLE void selectItem(int row);
    // The search button of the bar; true when a search screen was opened
    // (the page then clears the bar and drops the keyboard).
    Q_INVOKABLE bool searchButtonClicked(const QString &text);

    // --- Scrolling, as the page reports it
    Q_INVOKABLE void gridDidScroll(double visibleHeight, double contentHeight, double offsetY,
                                   double topInset, bool dragging);
    Q_INVOKABLE void gridDidEndDragging(bool willDecelerate);
    Q_INVOKABLE void gridDidEndDecelerating();

    // --- Layout
    Q_INVOKABLE int columnCountForWidth(double width) const;
    Q_INVOKABLE QVariantMap layoutForWidth(double width) const;
    Q_INVOKABLE double searchBarWidth(double shorterScreenSide) const;
    bool hidesPhoneTabBarOnScroll() const;

    // --- Loading steps
    void loadRemoteVideos();
    void loadNextRemotePageIfNeeded();
    void loadRemoteVideosReset(bool reset);
    QList<ZuviVideoItem> videosByAppendingVideos(const QList<ZuviVideoItem> &received) const;
    void beginPullRefreshPrefetchIfNeeded();
    void applyPrefetchedPullRefreshIfReady();
    void cancelUnusedPullRefreshPrefetchIfNeeded();
    void resetPullRefreshPrefetchState();
    void endPullRefreshIfNeeded();

    void viewWillAppear() override;
    void viewWillDisappear() override;

protected:
    void viewDidLoad() override;

private:
    ZuviVideoGridViewController(Mode mode, const QString &title, const QList<ZuviVideoItem> &videos,
                                const QString &emptyMessage, ZuviAPIClient *client,
                                ZuviScheduler *scheduler);

    int pageSize() const;
    // Asks the client for a page of this screen's feed.
    void
    requestPage(int page,
                std::function<void(const QList<ZuviVideoItem> &, const ZuviError &)> completion);
    void applyRemoteVideos(const QList<ZuviVideoItem> &received, const ZuviError &error, int page,
                           bool reset, bool keepVisibleVideos, int previousPage,
                           bool previousHasMorePages);
    void updateBackgroundState();
    void reloadGrid();

    Mode m_mode;
    QString m_emptyMessage;
    ZuviAPIClient *m_client;
    ZuviScheduler *m_scheduler;
    ZuviVideoListModel *m_model;

    QList<ZuviVideoItem> m_videos;
    int m_currentPage = 0;
    bool m_hasMorePages = false;
    int m_requestID = 0;

    bool m_pullRefreshRefreshing = false;
    bool m_pullRefreshPrefetching = false;
    bool m_pullRefreshHasPrefetchedResult = false;
    QList<ZuviVideoItem> m_prefetchedVideos;
    ZuviError m_prefetchedError;
    bool m_pullRefreshApplyAfterRelease = false;
    int m_pullRefreshPrefetchRequestID = 0;

    ZuviScrollMetrics m_scroll;
    bool m_dragging = false;
    bool m_decelerating = false;
    double m_lastScrollOffsetY = 0;
    bool m_phoneChromeHidden = false;
};
