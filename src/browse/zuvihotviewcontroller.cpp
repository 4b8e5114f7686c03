#include "zuvihotviewcontroller.h"

#include "app/zuviphonechromecontroller.h"
#include "net/zuviapiclient.h"
#include "platform/zuvidefaults.h"
#include "platform/zuvilifetime.h"
#include "views/zuvistateview.h"
#include "zuvilogingate.h"
#include "zuvivideogridlayout.h"
#include "zuvivideolistmodel.h"
#include "zuvivideoscreenopener.h"

ZuviHotViewController::ZuviHotViewController(ZuviAPIClient *client, ZuviDefaults *defaults,
                                             QObject *parent)
    : ZuviVideoListViewController(QStringLiteral("热门"), parent), m_client(client),
      m_defaults(defaults), m_model(new ZuviVideoListModel(this))
{
    m_gate =
        new ZuviLoginGate(client,
                          {[this] {
                               m_showingLoginRequiredState = false;
                               m_videos.clear();
                               reloadGrid();
                               showLoginCheckingState();
                           },
                           [this] { showHotLoginRequiredState(); },
                           [this](const ZuviError &error) { showLoginCheckFailedState(error); }},
                          this);
    m_sortModeIndex = preferredHotSortMode(defaults);
    applyVisibleRegionKeys(visibleHotRegionKeys(defaults));
}

ZuviHotViewController::~ZuviHotViewController() = default;

QUrl ZuviHotViewController::pageUrl() const
{
    return modulePageUrl(QStringLiteral("HotPage.qml"));
}

// --- State

bool ZuviHotViewController::hasCachedVideosForRegionKey(const QString &key) const
{
    if (key == QLatin1String(kPopularRegionKey))
        return !m_popularVideos.isEmpty();
    return !m_videosByRegionKey.value(key).isEmpty();
}

QString ZuviHotViewController::selectedSortTitle() const
{
    switch (m_sortModeIndex) {
    case SortByPlayCount:
        return QStringLiteral("播放排序");
    case SortByCommentCount:
        return QStringLiteral("评论排序");
    default:
        return QStringLiteral("默认排序");
    }
}

QStringList ZuviHotViewController::regionTitles() const
{
    QStringList titles;
    for (const HotRegionItem &item : m_visibleRegions)
        titles.append(item.title);
    return titles;
}

bool ZuviHotViewController::isCheckingLoginState() const
{
    return m_gate->isCheckingLoginState();
}

ZuviHotViewController::HotRegionItem ZuviHotViewController::selectedRegionItem() const
{
    if (m_selectedRegionIndex >= 0 && m_selectedRegionIndex < m_visibleRegions.size())
        return m_visibleRegions.at(m_selectedRegionIndex);
    // The visible list is never empty: sanitising leaves at least "popular".
    return m_visibleRegions.value(0, hotRegionItems().first());
}

bool ZuviHotViewController::selectedRegionIsPopular() const
{
    return selectedRegionCacheKey() == QLatin1String(kPopularRegionKey);
}

bool ZuviHotViewController::selectedRegionIsAllRanking() const
{
    return selectedRegionCacheKey() == QLatin1String(kAllRegionKey);
}

int ZuviHotViewController::indexForRegionKey(const QString &key) const
{
    for (int i = 0; i < m_visibleRegions.size(); ++i) {
        if (m_visibleRegions.at(i).key == key)
            return i;
    }
    return 0;
}

QString ZuviHotViewController::currentSourceTitle() const
{
    if (selectedRegionIsPopular())
        return title();
    if (selectedRegionIsAllRanking())
        return QStringLiteral("全站热门");
    return QStringLiteral("%1热门").arg(selectedRegionName());
}

// --- Actions

void ZuviHotViewController::refreshButtonTapped()
{
    // Only the shown region is fetched again; the others keep their lists.
    if (selectedRegionIsPopular())
        m_popularVideos.clear();
    else
        m_videosByRegionKey.remove(selectedRegionCacheKey());
    reloadVideos();
}

void ZuviHotViewController::tabBarItemReselected()
{
    refreshButtonTapped();
}

void ZuviHotViewController::regionControlTapped(int index)
{
    if (index < 0 || index >= m_visibleRegions.size())
        return;
    if (index == m_selectedRegionIndex) {
        // The selected button stays selected; nothing loads again.
        emit regionsChanged();
        return;
    }
    regionChanged(index);
}

void ZuviHotViewController::regionChanged(int index)
{
    m_selectedRegionIndex = index;
    emit regionsChanged();
    setRefreshEnabled(true);
    reloadVideos();
}

void ZuviHotViewController::selectItem(int row)
{
    if (row < 0 || row >= m_videos.size())
        return;
    ZuviVideoScreenOpener::open(navigationController(), m_videos.at(row), currentSourceTitle());
}

void ZuviHotViewController::gridDidScroll(double visibleHeight, double contentHeight,
                                          double offsetY, double topInset)
{
    m_scrollOffsetY = offsetY;
    m_scrollTopInset = topInset;
    bool hidden = m_phoneChromeHidden;
    ZuviPhoneChromeController::updateChromeForScrollView(
        {visibleHeight, contentHeight, offsetY, topInset}, this, &m_lastScrollOffsetY, &hidden,
        true);
    setPhoneChromeHidden(hidden);
}

QVariantMap ZuviHotViewController::layoutForWidth(double width) const
{
    return ZuviVideoGridLayout::hotLayoutForWidth(width).toVariantMap();
}

// --- Loading

void ZuviHotViewController::reloadVideos()
{
    // The gate belongs to this screen, so the action never outlives it.
    m_gate->performWhenLoggedIn([this] {
        m_showingLoginRequiredState = false;
        if (!selectedRegionIsPopular()) {
            loadRankingVideosIfNeeded();
        } else if (!m_popularVideos.isEmpty()) {
            showVideos(m_popularVideos);
        } else {
            loadPopularVideos();
        }
    });
}

void ZuviHotViewController::loadPopularVideos()
{
    setRefreshEnabled(false);
    m_videos.clear();
    reloadGrid();
    showStateMode(ZuviStateView::Loading, QStringLiteral("正在加载"),
                  QStringLiteral("正在获取综合热门视频。"), QString());
    m_client->fetchPopularPage(
        1, kPageSize,
        ZuviLifetime::bound(this,
                            [this](const QList<ZuviVideoItem> &received, const ZuviError &error) {
                                setRefreshEnabled(true);
                                // The user has moved on to a region's ranking meanwhile.
                                if (!selectedRegionIsPopular())
                                    return;
                                applyPopularVideos(received, error);
                            }));
}

void ZuviHotViewController::applyPopularVideos(const QList<ZuviVideoItem> &received,
                                               const ZuviError &error)
{
    if (ZuviLoginGate::isLoginRequiredError(error)) {
        showHotLoginRequiredState();
        return;
    }
    if (error.hasError()) {
        showLoadError(error, QStringLiteral("加载失败"), QStringLiteral("请检查网络后重试。"));
        return;
    }
    m_popularVideos = received;
    showVideos(received);
    if (received.isEmpty())
        showStateMode(ZuviStateView::Empty, QStringLiteral("暂无热门视频"),
                      QStringLiteral("综合热门接口返回了空列表。"), QStringLiteral("重试"));
}

void ZuviHotViewController::loadRankingVideosIfNeeded()
{
    if (selectedRegionIsPopular()) {
        loadPopularVideos();
        return;
    }
    const HotRegionItem region = selectedRegionItem();
    const QList<ZuviVideoItem> cached = m_videosByRegionKey.value(region.key);
    if (!cached.isEmpty()) {
        showVideos(cached);
        return;
    }
    setRefreshEnabled(false);
    m_videos.clear();
    reloadGrid();
    showStateMode(ZuviStateView::Loading, QStringLiteral("正在加载"),
                  QStringLiteral("正在获取%1榜单。").arg(region.title), QString());
    m_client->fetchWebRankingWithRID(
        region.rid, region.route, kPageSize,
        ZuviLifetime::bound(
            this, [this, region](const QList<ZuviVideoItem> &received, const ZuviError &error) {
                setRefreshEnabled(true);
                // Another region was chosen while this one loaded.
                if (selectedRegionIsPopular() || selectedRegionCacheKey() != region.key)
                    return;
                applyRankingVideos(region.key, region.title, received, error);
            }));
}

void ZuviHotViewController::applyRankingVideos(const QString &key, const QString &title,
                                               const QList<ZuviVideoItem> &received,
                                               const ZuviError &error)
{
    if (ZuviLoginGate::isLoginRequiredError(error)) {
        showHotLoginRequiredState();
        return;
    }
    if (error.hasError()) {
        showLoadError(error, QStringLiteral("加载失败"), QStringLiteral("分区榜单加载失败。"));
        return;
    }
    m_videosByRegionKey.insert(key, received);
    showVideos(received);
    if (received.isEmpty())
        showStateMode(ZuviStateView::Empty, QStringLiteral("暂无内容"),
                      QStringLiteral("%1榜单为空。").arg(title), QStringLiteral("重试"));
}

void ZuviHotViewController::showVideos(const QList<ZuviVideoItem> &unsorted)
{
    m_videos = sortedVideosFromVideos(unsorted, m_sortModeIndex);
    clearStateView();
    reloadGrid();
}

void ZuviHotViewController::showHotLoginRequiredState()
{
    m_showingLoginRequiredState = true;
    m_videos.clear();
    reloadGrid();
    showLoginRequiredState(QStringLiteral("登录后可查看热门内容。"));
}

// --- Appearing

void ZuviHotViewController::viewWillAppear()
{
    setPhoneChromeHidden(false);
    m_lastScrollOffsetY = m_scrollOffsetY + m_scrollTopInset;
    ZuviPhoneChromeController::setChromeHidden(false, this, true, false);
    // The settings may have changed the order, the regions or the sort while
    // this tab was away.
    const int sortMode = preferredHotSortMode(m_defaults);
    const bool sortChanged = sortMode != m_sortModeIndex;
    m_sortModeIndex = sortMode;
    const bool keysChanged = applyVisibleRegionKeys(visibleHotRegionKeys(m_defaults));
    // The shell builds every tab at launch; the first load waits until this
    // one is first shown, so a launch only pays for the tab on screen.
    const bool firstAppearance = !m_hasAppeared;
    m_hasAppeared = true;
    if (firstAppearance || keysChanged || sortChanged || m_showingLoginRequiredState)
        reloadVideos();
}

void ZuviHotViewController::viewWillDisappear()
{
    setPhoneChromeHidden(false);
    m_lastScrollOffsetY = m_scrollOffsetY + m_scrollTopInset;
    ZuviPhoneChromeController::setChromeHidden(false, this, false, false);
}

bool ZuviHotViewController::applyVisibleRegionKeys(const QStringList &keys)
{
    if (keys == m_appliedVisibleRegionKeys && !m_visibleRegions.isEmpty())
        return false;
    // The selection follows its region to its new place, or falls back to
    // the first button when the region is no longer shown.
    const QString selectedKey = m_visibleRegions.isEmpty() ? QString() : selectedRegionCacheKey();
    m_appliedVisibleRegionKeys = keys;
    m_visibleRegions.clear();
    for (const QString &key : keys) {
        if (const HotRegionItem *item = hotRegionItemForKey(key))
            m_visibleRegions.append(*item);
    }
    m_selectedRegionIndex = selectedKey.isEmpty() ? 0 : indexForRegionKey(selectedKey);
    emit regionsChanged();
    return true;
}

void ZuviHotViewController::setPhoneChromeHidden(bool hidden)
{
    if (m_phoneChromeHidden == hidden)
        return;
    m_phoneChromeHidden = hidden;
    emit phoneChromeChanged();
}

void ZuviHotViewController::reloadGrid()
{
    m_model->setVideos(m_videos);
}
