#include "zuvifollowingviewcontroller.h"

#include "app/zuvinavigationcontroller.h"
#include "model/zuvivideoitem.h"
#include "net/zuviapiclient.h"
#include "platform/zuviidiom.h"
#include "platform/zuvilifetime.h"
#include "platform/zuvischeduler.h"
#include "views/zuvistateview.h"
#include "zuvifollowingrowsmodel.h"
#include "zuvilogingate.h"
#include "zuvivideogridlayout.h"
#include "zuvivideoscreenopener.h"

#include <QSet>

const char *const ZuviFollowingViewController::kViewportCheckCallName =
    "loadNextRowsIfContentDoesNotFillViewport";

namespace {
bool rowHasVideo(const ZuviFollowingRow &row)
{
    return row.contains(QStringLiteral("video"));
}
} // namespace

ZuviFollowingViewController::ZuviFollowingViewController(ZuviAPIClient *client,
                                                         ZuviScheduler *scheduler, QObject *parent)
    : ZuviVideoListViewController(QStringLiteral("关注"), parent), m_client(client),
      m_scheduler(scheduler), m_model(new ZuviFollowingRowsModel(this)),
      m_showsSegmentControl(ZuviIdiom::isPad())
{
    ZuviLoginGate::Handlers handlers;
    handlers.showChecking = [this] {
        emptyRows();
        showLoginCheckingState();
    };
    handlers.showLoginRequired = [this] {
        emptyRows();
        m_showingLoginRequiredState = true;
        showLoginRequiredState(QStringLiteral("登录后可查看关注动态。"));
    };
    handlers.showCheckFailed = [this](const ZuviError &error) { showLoginCheckFailedState(error); };
    m_gate = new ZuviLoginGate(client, std::move(handlers), this);
}

ZuviFollowingViewController::~ZuviFollowingViewController()
{
    m_scheduler->cancelAll(this);
}

QUrl ZuviFollowingViewController::pageUrl() const
{
    return modulePageUrl(QStringLiteral("FollowingPage.qml"));
}

void ZuviFollowingViewController::viewDidLoad()
{
    loadRowsReset(true);
}

bool ZuviFollowingViewController::isCheckingLoginState() const
{
    return m_gate->isCheckingLoginState();
}

QStringList ZuviFollowingViewController::segmentTitles() const
{
    return {QStringLiteral("全部"), QStringLiteral("视频"), QStringLiteral("动态")};
}

// --- Actions

void ZuviFollowingViewController::refreshButtonTapped()
{
    loadRowsReset(true);
}

void ZuviFollowingViewController::tabBarItemReselected()
{
    refreshButtonTapped();
}

void ZuviFollowingViewController::segmentChanged(int segment)
{
    if (!m_showsSegmentControl) {
        // A phone has no segments: whatever asked, the feed stays on videos.
        m_selectedSegment = All;
        emit selectedSegmentChanged();
        return;
    }
    if (segment < All || segment > Posts)
        return;
    m_selectedSegment = segment;
    emit selectedSegmentChanged();
    cancelRowsRequest();
    loadRowsReset(true);
}

void ZuviFollowingViewController::selectItem(int index)
{
    if (index < 0 || index >= m_rows.size() || !rowHasVideo(m_rows.at(index)))
        return;
    const ZuviVideoItem video =
        m_rows.at(index).value(QStringLiteral("video")).value<ZuviVideoItem>();
    ZuviVideoScreenOpener::open(navigationController(), video, title());
}

void ZuviFollowingViewController::gridDidScroll(double visibleHeight, double contentHeight,
                                                double offsetY, double topInset)
{
    m_scroll = {visibleHeight, contentHeight, offsetY, topInset};
    ZuviPhoneChromeController::updateChromeForScrollView(
        m_scroll, this, &m_lastScrollOffsetY, &m_phoneChromeHidden, hidesPhoneTabBarOnScroll());
    // Less than 0.8 of a screen left below: the next page starts.
    if (visibleHeight > 0 && contentHeight > visibleHeight &&
        contentHeight - (offsetY + visibleHeight) < 0.8 * visibleHeight)
        loadNextRowsIfNeeded();
}

// --- Layout

int ZuviFollowingViewController::columnCountForWidth(double width) const
{
    return ZuviVideoGridLayout::columnCountForWidth(width);
}

QVariantMap ZuviFollowingViewController::layoutForWidth(double width) const
{
    if (ZuviIdiom::isPad()) {
        QVariantMap layout = ZuviVideoGridLayout::gridLayoutForWidth(width).toVariantMap();
        layout.insert(QStringLiteral("largePreview"), false);
        return layout;
    }
    // A phone shows one card per line with a full-width video preview.
    const double inset = 8;
    return {{"columns", 1},        {"insetTop", inset},
            {"insetLeft", inset},  {"insetBottom", 16},
            {"insetRight", inset}, {"lineSpacing", 10},
            {"itemSpacing", 0},    {"itemWidth", std::max(0.0, width - 2 * inset)},
            {"largePreview", true}};
}

bool ZuviFollowingViewController::hidesPhoneTabBarOnScroll() const
{
    ZuviNavigationController *navigation = navigationController();
    return tabBarController() && navigation && navigation->rootViewController() == this;
}

void ZuviFollowingViewController::viewWillAppear()
{
    m_phoneChromeHidden = false;
    m_lastScrollOffsetY = m_scroll.offsetY + m_scroll.topInset;
    ZuviPhoneChromeController::setChromeHidden(false, this, hidesPhoneTabBarOnScroll(), false);
    // Back from the profile tab, perhaps signed in now: try again.
    if (m_showingLoginRequiredState)
        loadRowsReset(true);
}

void ZuviFollowingViewController::viewWillDisappear()
{
    m_phoneChromeHidden = false;
    m_lastScrollOffsetY = m_scroll.offsetY + m_scroll.topInset;
    ZuviPhoneChromeController::setChromeHidden(false, this, false, false);
}

// --- Loading

void ZuviFollowingViewController::performWhenLoggedIn(std::function<void()> action)
{
    m_gate->performWhenLoggedIn(std::move(action));
}

void ZuviFollowingViewController::cancelRowsRequest()
{
    m_scheduler->cancel(this, QString::fromLatin1(kViewportCheckCallName));
    // Nothing is cancelled on the wire; a new number makes the running
    // request's answer stale.
    ++m_requestID;
    setLoadingFlags(false, false);
}

void ZuviFollowingViewController::loadRowsReset(bool reset)
{
    if (isLoading() || isLoadingMore())
        return;
    // Rows on screen prove a signed-in user; only a first page (or a page
    // after a list left empty by filtering) asks again.
    if (!reset && !m_rows.isEmpty()) {
        beginRowsRequestReset(false);
        return;
    }
    performWhenLoggedIn([this, reset] { beginRowsRequestReset(reset); });
}

void ZuviFollowingViewController::loadNextRowsIfNeeded()
{
    if (isLoading() || isLoadingMore() || !m_hasMoreRows)
        return;
    loadRowsReset(false);
}

void ZuviFollowingViewController::loadNextRowsIfContentDoesNotFillViewport()
{
    if (isLoading() || isLoadingMore() || !m_hasMoreRows)
        return;
    if (m_scroll.boundsHeight > 0 &&
        m_scroll.contentHeight <= m_scroll.boundsHeight + kViewportSlack)
        loadNextRowsIfNeeded();
}

QString ZuviFollowingViewController::feedTypeForSelectedSegment() const
{
    if (!m_showsSegmentControl || m_selectedSegment == Videos)
        return QStringLiteral("video");
    return QStringLiteral("all");
}

void ZuviFollowingViewController::beginRowsRequestReset(bool reset)
{
    m_showingLoginRequiredState = false;
    const QString type = feedTypeForSelectedSegment();
    const QString offset = reset ? QString() : m_nextOffset;
    const int page = reset ? 1 : m_currentPage + 1;
    const int requestID = ++m_requestID;
    setLoadingFlags(reset, !reset);
    setRefreshEnabled(false);
    if (reset) {
        m_currentPage = 0;
        m_hasMoreRows = false;
        m_nextOffset.clear();
        emptyRows();
        showStateMode(ZuviStateView::Loading, QStringLiteral("正在加载"),
                      QStringLiteral("正在获取关注动态。"), QString());
    }
    m_client->fetchFollowingRowsWithType(
        type, page, offset,
        ZuviLifetime::bound(this, [=](const QList<ZuviFollowingRow> &received, bool hasMore,
                                      const QString &nextOffset, const ZuviError &error) {
            if (requestID != m_requestID)
                return;
            setLoadingFlags(false, false);
            setRefreshEnabled(true);
            applyAnswer(received, hasMore, nextOffset, offset, error, page, reset);
        }));
}

void ZuviFollowingViewController::applyAnswer(const QList<ZuviFollowingRow> &received, bool hasMore,
                                              const QString &offset, const QString &sentOffset,
                                              const ZuviError &error, int page, bool reset)
{
    if (error.hasError()) {
        if (ZuviLoginGate::isLoginRequiredError(error)) {
            emptyRows();
            m_showingLoginRequiredState = true;
            showLoginRequiredState(QStringLiteral("登录后可查看关注动态。"));
            return;
        }
        if (!reset) {
            m_hasMoreRows = false;
            if (!m_rows.isEmpty())
                return;
        }
        showLoadError(error, QStringLiteral("加载失败"), QStringLiteral("请确认已登录后重试。"));
        return;
    }
    m_currentPage = page;
    m_nextOffset = offset;
    // A service that hands back the offset it was given would page forever.
    m_hasMoreRows = hasMore && !offset.isEmpty() && offset != sentOffset;
    applyRows(filteredRowsForSelectedSegment(received), reset);
    scheduleViewportCheck();
}

void ZuviFollowingViewController::scheduleViewportCheck()
{
    const QString name = QString::fromLatin1(kViewportCheckCallName);
    m_scheduler->cancel(this, name);
    m_scheduler->callAfter(this, name, kViewportCheckDelay,
                           [this] { loadNextRowsIfContentDoesNotFillViewport(); });
}

void ZuviFollowingViewController::applyRows(const QList<ZuviFollowingRow> &received, bool reset)
{
    if (reset) {
        // A first page can hold a row twice as well; it shows once.
        m_rows.clear();
        m_rows = rowsByAppendingRows(received);
        if (m_rows.isEmpty() && m_hasMoreRows)
            // Filtering left nothing yet; the viewport check fetches on.
            showStateMode(ZuviStateView::Loading, QStringLiteral("正在加载"),
                          QStringLiteral("正在获取更多关注动态。"), QString());
        else
            updateBackgroundState();
        m_model->setRows(m_rows);
        return;
    }
    const int oldCount = static_cast<int>(m_rows.size());
    m_rows = rowsByAppendingRows(received);
    const int added = static_cast<int>(m_rows.size()) - oldCount;
    if (added >= 1) {
        clearStateView();
        m_model->showAppendedRows(m_rows, oldCount);
        return;
    }
    // A page made only of rows already shown: the feed is going round.
    if (!received.isEmpty())
        m_hasMoreRows = false;
    // A filtered list still empty at the feed's end says so.
    if (m_rows.isEmpty() && !m_hasMoreRows)
        updateBackgroundState();
}

QList<ZuviFollowingRow>
ZuviFollowingViewController::rowsByAppendingRows(const QList<ZuviFollowingRow> &received) const
{
    QList<ZuviFollowingRow> combined = m_rows;
    QSet<QString> seen;
    for (const ZuviFollowingRow &row : m_rows) {
        const QString identity = identityForRow(row);
        if (!identity.isEmpty())
            seen.insert(identity);
    }
    for (const ZuviFollowingRow &row : received) {
        const QString identity = identityForRow(row);
        if (!identity.isEmpty()) {
            if (seen.contains(identity))
                continue;
            seen.insert(identity);
        }
        combined.append(row);
    }
    return combined;
}

QString ZuviFollowingViewController::identityForRow(const ZuviFollowingRow &row)
{
    const QString rowID = row.value(QStringLiteral("rowID")).toString();
    if (!rowID.isEmpty())
        return QStringLiteral("dynamic:%1").arg(rowID);
    const QString bvid = row.value(QStringLiteral("video")).value<ZuviVideoItem>().bvid;
    if (!bvid.isEmpty())
        return QStringLiteral("video:%1").arg(bvid);
    const QString title = row.value(QStringLiteral("title")).toString();
    const QString author = row.value(QStringLiteral("authorName")).toString();
    const QString action = row.value(QStringLiteral("actionText")).toString();
    if (title.isEmpty() && author.isEmpty() && action.isEmpty())
        return QString();
    return QStringLiteral("row:%1|%2|%3").arg(title, author, action);
}

QList<ZuviFollowingRow> ZuviFollowingViewController::filteredRowsForSelectedSegment(
    const QList<ZuviFollowingRow> &rows) const
{
    if (m_showsSegmentControl && m_selectedSegment != Posts)
        return rows;
    // "动态" keeps the posts without a video; a phone keeps only videos.
    const bool wantVideo = !m_showsSegmentControl;
    QList<ZuviFollowingRow> kept;
    for (const ZuviFollowingRow &row : rows) {
        if (rowHasVideo(row) == wantVideo)
            kept.append(row);
    }
    return kept;
}

void ZuviFollowingViewController::updateBackgroundState()
{
    if (!m_rows.isEmpty()) {
        clearStateView();
        return;
    }
    if (m_showsSegmentControl)
        showStateMode(ZuviStateView::Empty, QStringLiteral("暂无动态"),
                      QStringLiteral("当前筛选下没有关注动态。"), QStringLiteral("重试"));
    else
        showStateMode(ZuviStateView::Empty, QStringLiteral("暂无视频动态"),
                      QStringLiteral("关注的 UP 暂时没有新视频。"), QStringLiteral("重试"));
}

void ZuviFollowingViewController::emptyRows()
{
    m_rows.clear();
    m_model->setRows(m_rows);
}
