#include "zuvisearchresultsviewcontroller.h"

#include "net/zuviapiclient.h"
#include "platform/zuvilifetime.h"
#include "views/zuvistateview.h"
#include "zuvivideogridlayout.h"
#include "zuvivideolistmodel.h"
#include "zuvivideoscreenopener.h"

#include <algorithm>

ZuviSearchResultsViewController::ZuviSearchResultsViewController(const QString &keyword,
                                                                 ZuviAPIClient *client,
                                                                 QObject *parent)
    : ZuviVideoListViewController(QStringLiteral("搜索"), parent), m_keyword(keyword),
      m_client(client), m_model(new ZuviVideoListModel(this))
{
}

QUrl ZuviSearchResultsViewController::pageUrl() const
{
    return modulePageUrl(QStringLiteral("SearchResultsPage.qml"));
}

void ZuviSearchResultsViewController::viewDidLoad()
{
    loadSearchResults();
}

QString ZuviSearchResultsViewController::trimmedSearchText(const QString &text)
{
    return text.trimmed();
}

void ZuviSearchResultsViewController::refreshButtonTapped()
{
    loadSearchResults();
}

bool ZuviSearchResultsViewController::searchBarSearchButtonClicked(const QString &text)
{
    const QString keyword = trimmedSearchText(text);
    if (keyword.isEmpty() || isLoading())
        return false;
    setKeyword(keyword);
    loadSearchResults();
    return true;
}

void ZuviSearchResultsViewController::selectItem(int row)
{
    if (row < 0 || row >= m_videos.size())
        return;
    ZuviVideoScreenOpener::open(navigationController(), m_videos.at(row), QStringLiteral("搜索"));
}

void ZuviSearchResultsViewController::gridDidScroll(double visibleHeight, double contentHeight,
                                                    double offsetY)
{
    // Only after at least one screen height of scrolling, and when less
    // than 1.6 screens are left below.
    if (offsetY > std::max(contentHeight - 1.6 * visibleHeight, visibleHeight))
        loadNextSearchPageIfNeeded();
}

int ZuviSearchResultsViewController::columnCountForWidth(double width) const
{
    return ZuviVideoGridLayout::columnCountForWidth(width);
}

QVariantMap ZuviSearchResultsViewController::layoutForWidth(double width) const
{
    return ZuviVideoGridLayout::searchLayoutForWidth(width).toVariantMap();
}

double ZuviSearchResultsViewController::searchBarWidth(double shorterScreenSide) const
{
    return ZuviVideoGridLayout::searchBarWidth(shorterScreenSide);
}

void ZuviSearchResultsViewController::loadSearchResults()
{
    loadSearchResultsReset(true);
}

void ZuviSearchResultsViewController::loadNextSearchPageIfNeeded()
{
    if (isLoading() || isLoadingMore() || !m_hasMorePages || m_videos.isEmpty())
        return;
    loadSearchResultsReset(false);
}

void ZuviSearchResultsViewController::loadSearchResultsReset(bool reset)
{
    const QString keyword = trimmedSearchText(m_keyword);
    if (keyword.isEmpty()) {
        m_videos.clear();
        m_model->setVideos(m_videos);
        showStateMode(ZuviStateView::Empty, QStringLiteral("请输入关键词"),
                      QStringLiteral("在顶部搜索框输入关键词后搜索视频。"), QString());
        return;
    }
    setKeyword(keyword);
    // A running load blocks this one; its answer is still awaited.
    if (isLoading() || isLoadingMore())
        return;
    const int page = reset ? 1 : std::max(1, m_currentPage + 1);
    const int requestID = ++m_requestID;
    setLoadingFlags(reset, !reset);
    setRefreshEnabled(false);
    if (reset) {
        m_currentPage = 0;
        m_hasMorePages = false;
        m_videos.clear();
        m_model->setVideos(m_videos);
        showStateMode(ZuviStateView::Loading, QStringLiteral("正在搜索"), keyword, QString());
    }
    m_client->fetchSearchVideosWithKeyword(
        keyword, page,
        ZuviLifetime::bound(this,
                            [=](const QList<ZuviVideoItem> &received, const ZuviError &error) {
                                // An answer for an older request or another keyword changes
                                // nothing at all, not even the loading flags.
                                if (requestID != m_requestID || keyword != m_keyword)
                                    return;
                                setLoadingFlags(false, false);
                                setRefreshEnabled(true);
                                applyResults(received, error, page, reset);
                            }));
}

void ZuviSearchResultsViewController::applyResults(const QList<ZuviVideoItem> &received,
                                                   const ZuviError &error, int page, bool reset)
{
    if (error.hasError()) {
        if (!reset) {
            m_hasMorePages = false;
            return;
        }
        showLoadError(error, QStringLiteral("搜索失败"), QStringLiteral("搜索失败，请稍后重试。"));
        return;
    }
    m_currentPage = page;
    m_hasMorePages = received.size() > kFullPageThreshold;
    m_videos = reset ? received : videosByAppendingVideos(received);
    clearStateView();
    m_model->setVideos(m_videos);
    if (m_videos.isEmpty())
        showStateMode(ZuviStateView::Empty, QStringLiteral("没有结果"),
                      QStringLiteral("换个关键词再试。"), QString());
}

QList<ZuviVideoItem>
ZuviSearchResultsViewController::videosByAppendingVideos(const QList<ZuviVideoItem> &received) const
{
    QList<ZuviVideoItem> combined = m_videos;
    combined.append(received);
    return combined;
}

void ZuviSearchResultsViewController::setKeyword(const QString &keyword)
{
    if (m_keyword == keyword)
        return;
    m_keyword = keyword;
    emit keywordChanged();
}
