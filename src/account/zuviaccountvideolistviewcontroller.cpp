#include "zuviaccountvideolistviewcontroller.h"

#include "browse/zuvivideogridlayout.h"
#include "browse/zuvivideolistmodel.h"
#include "browse/zuvivideoscreenopener.h"
#include "net/zuviapiclient.h"
#include "platform/zuviidiom.h"
#include "platform/zuvilifetime.h"
#include "views/zuvistateview.h"

ZuviAccountVideoListViewController::ZuviAccountVideoListViewController(const QString &title,
                                                                       const QString &listKind,
                                                                       qint64 mid,
                                                                       ZuviAPIClient *client,
                                                                       QObject *parent)
    : ZuviVideoListViewController(title, parent), m_listKind(listKind), m_mid(mid),
      m_client(client), m_model(new ZuviVideoListModel(this))
{
}

QUrl ZuviAccountVideoListViewController::pageUrl() const
{
    return modulePageUrl(QStringLiteral("AccountVideoListPage.qml"));
}

void ZuviAccountVideoListViewController::viewDidLoad()
{
    loadVideos();
}

int ZuviAccountVideoListViewController::columnCountForWidth(double width)
{
    return ZuviIdiom::isPad() ? ZuviVideoGridLayout::columnCountForWidth(width) : 1;
}

QVariantMap ZuviAccountVideoListViewController::layoutForWidth(double width) const
{
    // The same cards, spacing and compact phone rows as the recommended
    // grid, without its header.
    ZuviVideoGridLayout layout = ZuviVideoGridLayout::gridLayoutForWidth(width);
    layout.headerHeight = 0;
    return layout.toVariantMap();
}

void ZuviAccountVideoListViewController::refreshButtonTapped()
{
    loadVideos();
}

void ZuviAccountVideoListViewController::loadVideos()
{
    setRefreshEnabled(false);
    setLoadingFlags(true, false);
    m_videos.clear();
    m_model->setVideos(m_videos);
    showStateMode(ZuviStateView::Loading, QStringLiteral("正在加载"),
                  QStringLiteral("正在获取%1。").arg(title()), QString());
    const int requestID = ++m_requestID;
    auto completion = ZuviLifetime::bound(
        this, [this, requestID](const QList<ZuviVideoItem> &videos, const ZuviError &error) {
            if (requestID == m_requestID)
                applyVideos(videos, error);
        });
    if (m_listKind == QLatin1String("history"))
        m_client->fetchHistoryVideosWithCompletion(completion);
    else if (m_listKind == QLatin1String("watchLater"))
        m_client->fetchWatchLaterVideosWithCompletion(completion);
    else
        m_client->fetchFavoriteVideosForMID(m_mid, completion);
}

void ZuviAccountVideoListViewController::applyVideos(const QList<ZuviVideoItem> &videos,
                                                     const ZuviError &error)
{
    setLoadingFlags(false, false);
    setRefreshEnabled(true);
    if (error.hasError()) {
        showLoadError(error, QStringLiteral("加载失败"), QStringLiteral("请确认已登录后重试。"));
        return;
    }
    m_videos = videos;
    m_model->setVideos(m_videos);
    if (m_videos.isEmpty()) {
        showStateMode(ZuviStateView::Empty, QStringLiteral("暂无内容"),
                      QStringLiteral("%1为空。").arg(title()), QStringLiteral("重试"));
        return;
    }
    clearStateView();
}

void ZuviAccountVideoListViewController::selectItem(int row)
{
    if (row < 0 || row >= m_videos.size())
        return;
    ZuviVideoScreenOpener::open(navigationController(), m_videos.at(row), title());
}

void ZuviAccountVideoListViewController::gridDidScroll(double visibleHeight, double contentHeight,
                                                       double offsetY, double topInset)
{
    m_scroll = {visibleHeight, contentHeight, offsetY, topInset};
    // A pushed screen has no tab bar to hide, only the navigation bar.
    ZuviPhoneChromeController::updateChromeForScrollView(m_scroll, this, &m_lastScrollOffsetY,
                                                         &m_phoneChromeHidden, false);
}

void ZuviAccountVideoListViewController::viewWillAppear()
{
    showChrome();
}

void ZuviAccountVideoListViewController::viewWillDisappear()
{
    showChrome();
}

void ZuviAccountVideoListViewController::showChrome()
{
    m_phoneChromeHidden = false;
    m_lastScrollOffsetY = m_scroll.offsetY + m_scroll.topInset;
    ZuviPhoneChromeController::setChromeHidden(false, this, false, false);
}
