#include "zuvivideogridviewcontroller.h"

#include "app/zuvinavigationcontroller.h"
#include "net/zuviapiclient.h"
#include "platform/zuvilifetime.h"
#include "platform/zuvischeduler.h"
#include "views/zuvistateview.h"
#include "zuvisearchresultsviewcontroller.h"
#include "zuvivideogridlayout.h"
#include "zuvivideolistmodel.h"
#include "zuvivideoscreenopener.h"

const char *const ZuviVideoGridViewController::kCancelUnusedPrefetchCallName =
    "cancelUnusedPullRefreshPrefetchIfNeeded";

namespace {
QString trimmedSearchText(const QString &text)
{
    return text.trimmed();
}
} // namespace

ZuviVideoGridViewController *ZuviVideoGridViewController::createWithRecommendedTitle(
    const QString &title, const QString &emptyMessage, ZuviAPIClient *client,
    ZuviScheduler *scheduler)
{
    return new ZuviVideoGridViewController(Mode::Recommended, title, {}, emptyMessage, client,
                                           scheduler);
}

ZuviVideoGridViewController *
ZuviVideoGridViewController::createWithPopularTitle(const QString &title,
                                                    const QString &emptyMessage,
                                                    ZuviAPIClient *client, ZuviScheduler *scheduler)
{
    return new ZuviVideoGridViewController(Mode::Popular, title, {}, emptyMessage, client,
                                           scheduler);
}

ZuviVideoGridViewController *ZuviVideoGridViewController::createWithTitle(
    const QString &title, const QList<ZuviVideoItem> &videos, const QString &emptyMessage,
    ZuviAPIClient *client, ZuviScheduler *scheduler)
{
    return new ZuviVideoGridViewController(Mode::Static, title, videos, emptyMessage, client,
                                           scheduler);
}

ZuviVideoGridViewController::ZuviVideoGridViewController(Mode mode, const QString &title,
                                                         const QList<ZuviVideoItem> &videos,
                                                         const QString &emptyMessage,
                                                         ZuviAPIClient *client,
                                                         ZuviScheduler *scheduler)
    : ZuviVideoListViewController(title), m_mode(mode), m_emptyMessage(emptyMessage),
      m_client(client), m_scheduler(scheduler), m_model(new ZuviVideoListModel(this)),
      m_videos(videos)
{
    m_model->setVideos(m_videos);
}

ZuviVideoGridViewController::~ZuviVideoGridViewController()
{
    m_scheduler->cancelAll(this);
}

QUrl ZuviVideoGridViewController::pageUrl() const
{
    return modulePageUrl(QStringLiteral("VideoGridPage.qml"));
}

void ZuviVideoGridViewController::viewDidLoad()
{
    if (loadsRemoteVideos())
        loadRemoteVideos();
    else
        updateBackgroundState();
}

// --- Texts

QString ZuviVideoGridViewController::remoteLoadingMessage() const
{
    return m_mode == Mode::Popular ? QStringLiteral("正在获取综合热门视频。")
                                   : QStringLiteral("正在获取推荐视频。");
}

QString ZuviVideoGridViewController::contentHeaderTitle() const
{
    switch (m_mode) {
    case Mode::Recommended:
        return QStringLiteral("推荐视频");
    case Mode::Popular:
        return QStringLiteral("综合热门");
    case Mode::Static:
        break;
    }
    return title().isEmpty() ? QStringLiteral("视频") : title();
}

QString ZuviVideoGridViewController::contentHeaderSubtitle() const
{
    switch (m_mode) {
    case Mode::Recommended:
        return QStringLiteral("根据当前浏览热度更新");
    case Mode::Popular:
        return QStringLiteral("今日热门 · 全站榜单");
    case Mode::Static:
        break;
    }
    return QString();
}

QString ZuviVideoGridViewController::searchPlaceholder() const
{
    return QStringLiteral("搜索视频、番剧、UP主");
}

QString ZuviVideoGridViewController::brandText() const
{
    return QStringLiteral("lumetra");
}

// --- Actions

void ZuviVideoGridViewController::refreshButtonTapped()
{
    resetPullRefreshPrefetchState();
    loadRemoteVideos();
}

void ZuviVideoGridViewController::tabBarItemReselected()
{
    if (loadsRemoteVideos())
        refreshButtonTapped();
}

void ZuviVideoGridViewController::selectItem(int row)
{
    if (row < 0 || row >= m_videos.size())
        return;
    ZuviVideoScreenOpener::open(navigationController(), m_videos.at(row), title());
}

bool ZuviVideoGridViewController::searchButtonClicked(const QString &text)
{
    const QString keyword = trimmedSearchText(text);
    if (keyword.isEmpty())
        return false;
    auto *search = new ZuviSearchResultsViewController(keyword, m_client);
    search->setHidesBottomBarWhenPushed(true);
    if (ZuviNavigationController *navigation = navigationController())
        navigation->pushViewController(search, true);
    else
        delete search;
    return true;
}

// --- Loading

int ZuviVideoGridViewController::pageSize() const
{
    return m_mode == Mode::Popular ? kPopularPageSize : kRecommendedPageSize;
}

void ZuviVideoGridViewController::requestPage(
    int page, std::function<void(const QList<ZuviVideoItem> &, const ZuviError &)> completion)
{
    if (m_mode == Mode::Popular)
        m_client->fetchPopularPage(page, pageSize(), std::move(completion));
    else
        m_client->fetchRecommendedPage(page, pageSize(), std::move(completion));
}

void ZuviVideoGridViewController::loadRemoteVideos()
{
    loadRemoteVideosReset(true);
}

void ZuviVideoGridViewController::loadNextRemotePageIfNeeded()
{
    if (!loadsRemoteVideos() || isLoading() || isLoadingMore() || !m_hasMorePages ||
        m_videos.isEmpty())
        return;
    loadRemoteVideosReset(false);
}

void ZuviVideoGridViewController::loadRemoteVideosReset(bool reset)
{
    if (!loadsRemoteVideos())
        return;
    if (isLoading() || isLoadingMore()) {
        // A pull during a running load only ends the spinner.
        if (reset)
            endPullRefreshIfNeeded();
        return;
    }
    int page = 1;
    bool keepVisible = false;
    if (reset)
        keepVisible = m_pullRefreshRefreshing && !m_videos.isEmpty();
    else
        page = qMax(1, m_currentPage + 1);
    const int previousPage = m_currentPage;
    const bool previousHasMore = m_hasMorePages;
    const int requestID = ++m_requestID;
    setLoadingFlags(reset, !reset);
    setRefreshEnabled(false);
    if (reset) {
        m_currentPage = 0;
        m_hasMorePages = false;
        if (!keepVisible) {
            m_videos.clear();
            reloadGrid();
            showStateMode(ZuviStateView::Loading, QStringLiteral("正在加载"),
                          remoteLoadingMessage(), QString());
        }
    }
    requestPage(page, ZuviLifetime::bound(
                          this, [=](const QList<ZuviVideoItem> &received, const ZuviError &error) {
                              if (requestID != m_requestID)
                                  return;
                              setLoadingFlags(false, false);
                              setRefreshEnabled(true);
                              endPullRefreshIfNeeded();
                              applyRemoteVideos(received, error, page, reset, keepVisible,
                                                previousPage, previousHasMore);
                          }));
}

void ZuviVideoGridViewController::applyRemoteVideos(const QList<ZuviVideoItem> &received,
                                                    const ZuviError &error, int page, bool reset,
                                                    bool keepVisibleVideos, int previousPage,
                                                    bool previousHasMorePages)
{
    if (error.hasError()) {
        if (!reset) {
            // A failed next page ends paging until the next refresh.
            m_hasMorePages = false;
        } else if (keepVisibleVideos) {
            // A failed refresh leaves the old list as it was.
            m_currentPage = previousPage;
            m_hasMorePages = previousHasMorePages;
        } else {
            showLoadError(error, QStringLiteral("加载失败"), QStringLiteral("请检查网络后重试。"));
        }
        return;
    }
    m_currentPage = page;
    m_hasMorePages = received.size() >= pageSize();
    if (!reset) {
        const int oldCount = static_cast<int>(m_videos.size());
        m_videos = videosByAppendingVideos(received);
        if (m_videos.size() - oldCount < 1)
            return;
        m_model->showAppendedVideos(m_videos, oldCount);
        return;
    }
    m_videos = received;
    clearStateView();
    reloadGrid();
    if (m_videos.isEmpty())
        showStateMode(ZuviStateView::Empty, QStringLiteral("暂无内容"), m_emptyMessage,
                      QStringLiteral("重试"));
}

QList<ZuviVideoItem>
ZuviVideoGridViewController::videosByAppendingVideos(const QList<ZuviVideoItem> &received) const
{
    // Repeats are kept: an item that arrives on two pages shows twice.
    QList<ZuviVideoItem> combined = m_videos;
    combined.append(received);
    return combined;
}

// --- Pull-to-refresh with an early page 1

void ZuviVideoGridViewController::beginPullRefreshPrefetchIfNeeded()
{
    if (!loadsRemoteVideos() || isLoading() || isLoadingMore() || m_pullRefreshPrefetching ||
        m_pullRefreshHasPrefetchedResult || m_pullRefreshApplyAfterRelease ||
        m_pullRefreshRefreshing || !m_dragging)
        return;
    if (m_scroll.offsetY + m_scroll.topInset > kPrefetchPullOffset)
        return;
    m_pullRefreshPrefetching = true;
    m_pullRefreshHasPrefetchedResult = false;
    m_prefetchedVideos.clear();
    m_prefetchedError = ZuviError();
    const int prefetchID = ++m_pullRefreshPrefetchRequestID;
    requestPage(1, ZuviLifetime::bound(
                       this, [=](const QList<ZuviVideoItem> &received, const ZuviError &error) {
                           if (prefetchID != m_pullRefreshPrefetchRequestID)
                               return;
                           m_pullRefreshPrefetching = false;
                           m_pullRefreshHasPrefetchedResult = true;
                           m_prefetchedVideos = received;
                           m_prefetchedError = error;
                           applyPrefetchedPullRefreshIfReady();
                       }));
}

void ZuviVideoGridViewController::pullRefreshTriggered()
{
    if (!loadsRemoteVideos())
        return;
    m_pullRefreshRefreshing = true;
    emit loadStateChanged();
    if (!m_pullRefreshPrefetching && !m_pullRefreshHasPrefetchedResult) {
        loadRemoteVideos();
        return;
    }
    // The early page 1 is on its way or here: use it instead of loading.
    m_pullRefreshApplyAfterRelease = true;
    setLoadingFlags(true, isLoadingMore());
    setRefreshEnabled(false);
    applyPrefetchedPullRefreshIfReady();
}

void ZuviVideoGridViewController::applyPrefetchedPullRefreshIfReady()
{
    if (!m_pullRefreshApplyAfterRelease || !m_pullRefreshHasPrefetchedResult)
        return;
    const QList<ZuviVideoItem> received = m_prefetchedVideos;
    const ZuviError error = m_prefetchedError;
    const int previousPage = m_currentPage;
    const bool previousHasMore = m_hasMorePages;
    resetPullRefreshPrefetchState();
    setLoadingFlags(false, false);
    setRefreshEnabled(true);
    endPullRefreshIfNeeded();
    // requestID stays: a next page still loading is appended to this list.
    applyRemoteVideos(received, error, 1, true, !m_videos.isEmpty(), previousPage, previousHasMore);
}

void ZuviVideoGridViewController::cancelUnusedPullRefreshPrefetchIfNeeded()
{
    if (m_pullRefreshApplyAfterRelease || m_pullRefreshRefreshing || m_dragging || m_decelerating)
        return;
    resetPullRefreshPrefetchState();
}

void ZuviVideoGridViewController::resetPullRefreshPrefetchState()
{
    ++m_pullRefreshPrefetchRequestID;
    m_pullRefreshPrefetching = false;
    m_pullRefreshApplyAfterRelease = false;
    m_pullRefreshHasPrefetchedResult = false;
    m_prefetchedVideos.clear();
    m_prefetchedError = ZuviError();
}

void ZuviVideoGridViewController::endPullRefreshIfNeeded()
{
    if (!m_pullRefreshRefreshing)
        return;
    m_pullRefreshRefreshing = false;
    emit loadStateChanged();
}

// --- Scrolling

void ZuviVideoGridViewController::gridDidScroll(double visibleHeight, double contentHeight,
                                                double offsetY, double topInset, bool dragging)
{
    m_scroll = {visibleHeight, contentHeight, offsetY, topInset};
    m_dragging = dragging;
    if (dragging)
        m_decelerating = false;
    ZuviPhoneChromeController::updateChromeForScrollView(
        m_scroll, this, &m_lastScrollOffsetY, &m_phoneChromeHidden, hidesPhoneTabBarOnScroll());
    // Near the end of the list (less than 0.8 of a screen left) the next
    // page starts.
    if (visibleHeight > 0 && contentHeight > visibleHeight &&
        contentHeight - (offsetY + visibleHeight) < 0.8 * visibleHeight)
        loadNextRemotePageIfNeeded();
    beginPullRefreshPrefetchIfNeeded();
    if (dragging && loadsRemoteVideos() && !m_pullRefreshRefreshing &&
        offsetY + topInset <= kPullRefreshTriggerOffset)
        pullRefreshTriggered();
}

void ZuviVideoGridViewController::gridDidEndDragging(bool willDecelerate)
{
    m_dragging = false;
    m_decelerating = willDecelerate;
    m_scheduler->cancel(this, kCancelUnusedPrefetchCallName);
    m_scheduler->callAfter(this, kCancelUnusedPrefetchCallName, kUnusedPrefetchDelay,
                           [this] { cancelUnusedPullRefreshPrefetchIfNeeded(); });
}

void ZuviVideoGridViewController::gridDidEndDecelerating()
{
    m_decelerating = false;
}

// --- Layout

int ZuviVideoGridViewController::columnCountForWidth(double width) const
{
    return ZuviVideoGridLayout::columnCountForWidth(width);
}

QVariantMap ZuviVideoGridViewController::layoutForWidth(double width) const
{
    ZuviVideoGridLayout layout = ZuviVideoGridLayout::gridLayoutForWidth(width);
    if (!showsHeader())
        layout.headerHeight = 0;
    return layout.toVariantMap();
}

double ZuviVideoGridViewController::searchBarWidth(double shorterScreenSide) const
{
    return ZuviVideoGridLayout::searchBarWidth(shorterScreenSide);
}

bool ZuviVideoGridViewController::hidesPhoneTabBarOnScroll() const
{
    ZuviNavigationController *navigation = navigationController();
    return tabBarController() && navigation && navigation->rootViewController() == this;
}

void ZuviVideoGridViewController::viewWillAppear()
{
    m_phoneChromeHidden = false;
    m_lastScrollOffsetY = m_scroll.offsetY + m_scroll.topInset;
    ZuviPhoneChromeController::setChromeHidden(false, this, hidesPhoneTabBarOnScroll(), false);
}

void ZuviVideoGridViewController::viewWillDisappear()
{
    m_phoneChromeHidden = false;
    m_lastScrollOffsetY = m_scroll.offsetY + m_scroll.topInset;
    ZuviPhoneChromeController::setChromeHidden(false, this, false, false);
}

// --- States

void ZuviVideoGridViewController::updateBackgroundState()
{
    if (m_videos.isEmpty())
        showStateMode(ZuviStateView::Empty, QStringLiteral("暂无内容"), m_emptyMessage, QString());
    else
        clearStateView();
}

void ZuviVideoGridViewController::reloadGrid()
{
    m_model->setVideos(m_videos);
}
