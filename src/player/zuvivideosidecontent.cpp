#include "zuvivideosidecontent.h"

#include "net/zuviapiclient.h"
#include "platform/zuvilifetime.h"

#include <QSet>

ZuviVideoSideContent::ZuviVideoSideContent(ZuviAPIClient *client, QObject *parent)
    : QObject(parent), m_client(client), m_relatedModel(new ZuviVideoListModel(this))
{
}

void ZuviVideoSideContent::resetForVideo(qint64 aid, const QString &bvid)
{
    m_aid = aid;
    m_bvid = bvid;
    ++m_relatedRequestID;
    ++m_commentsRequestID;
    m_relatedVideos.clear();
    m_relatedModel->setVideos({});
    m_relatedStatusText = QStringLiteral("相关推荐加载中");
    m_loadingRelated = false;
    m_relatedFailed = false;
    m_commentItems.clear();
    m_commentsPage = 0;
    m_hasMoreComments = true;
    m_loadingComments = false;
    m_commentsFailed = false;
    m_commentsStatusText = QStringLiteral("评论加载中");
    emit relatedChanged();
    emit commentsChanged();
}

void ZuviVideoSideContent::clearVideo()
{
    resetForVideo(0, QString());
}

void ZuviVideoSideContent::showUnavailable()
{
    clearVideo();
    m_relatedStatusText = QStringLiteral("相关推荐加载失败");
    m_hasMoreComments = false;
    m_commentsStatusText = QStringLiteral("评论加载失败");
    emit relatedChanged();
    emit commentsChanged();
}

// MARK: - Related videos

void ZuviVideoSideContent::loadRelatedVideos()
{
    if (m_bvid.isEmpty() || m_loadingRelated)
        return;
    const int requestID = ++m_relatedRequestID;
    const QString bvid = m_bvid;
    m_loadingRelated = true;
    m_relatedFailed = false;
    m_relatedStatusText = QStringLiteral("相关推荐加载中");
    emit relatedChanged();
    m_client->fetchRelatedVideosWithBVID(
        bvid, ZuviLifetime::bound(this, [this, requestID, bvid](const QList<ZuviVideoItem> &videos,
                                                                const ZuviError &error) {
            if (requestID != m_relatedRequestID || bvid != m_bvid)
                return;
            m_loadingRelated = false;
            m_relatedFailed = error.hasError();
            if (error.hasError()) {
                m_relatedVideos.clear();
                m_relatedStatusText = QStringLiteral("相关推荐加载失败");
            } else {
                m_relatedVideos = videos;
                m_relatedStatusText = videos.isEmpty() ? QStringLiteral("暂无相关推荐") : QString();
            }
            m_relatedModel->setVideos(m_relatedVideos);
            emit relatedChanged();
        }));
}

std::optional<ZuviVideoItem> ZuviVideoSideContent::firstRelatedVideo() const
{
    if (m_relatedVideos.isEmpty())
        return std::nullopt;
    return m_relatedVideos.constFirst();
}

void ZuviVideoSideContent::setRelatedImagesAllowed(bool allowed)
{
    if (allowed == m_relatedImagesAllowed)
        return;
    m_relatedImagesAllowed = allowed;
    emit relatedChanged();
}

// MARK: - Comments

void ZuviVideoSideContent::loadCommentsReset(bool reset)
{
    if (!hasVideo() || m_loadingComments)
        return;
    const int page = reset ? 1 : m_commentsPage + 1;
    m_loadingComments = true;
    m_commentsFailed = false;
    m_commentsStatusText =
        reset ? QStringLiteral("评论加载中") : QStringLiteral("正在加载更多评论");
    if (reset) {
        ++m_commentsRequestID;
        m_commentsPage = 0;
        m_hasMoreComments = true;
        m_commentItems.clear();
    }
    emit commentsChanged();
    const int requestID = m_commentsRequestID;
    const qint64 aid = m_aid;
    const QString bvid = m_bvid;
    m_client->fetchCommentsForAID(
        aid, bvid, page, kCommentPageSize,
        ZuviLifetime::bound(
            this, [=](const QList<ZuviCommentItem> &comments, const ZuviError &error) {
                // A stale answer leaves the loading flag alone: the request that
                // made the current series has its own answer coming.
                if (requestID != m_commentsRequestID || aid != m_aid || bvid != m_bvid)
                    return;
                m_loadingComments = false;
                m_commentsFailed = error.hasError();
                if (error.hasError()) {
                    QString text = error.message;
                    if (text.isEmpty())
                        text = reset ? QStringLiteral("评论加载失败")
                                     : QStringLiteral("更多评论加载失败");
                    m_commentsStatusText = text;
                    // A failed later page keeps the list and paging, so the
                    // next scroll to the end tries it again.
                    if (reset)
                        m_commentItems.clear();
                    emit commentsChanged();
                    return;
                }
                m_commentsPage = page;
                m_hasMoreComments = comments.size() >= kCommentPageSize;
                m_commentItems = reset ? comments : commentsByAppendingComments(comments);
                m_commentsStatusText =
                    m_commentItems.isEmpty() ? QStringLiteral("暂无评论") : QString();
                emit commentsChanged();
            }));
}

void ZuviVideoSideContent::statusRowTapped(bool forComments)
{
    if (!forComments) {
        if (m_relatedFailed)
            loadRelatedVideos();
        return;
    }
    // A failed first page left the list empty; a failed later page kept it.
    if (m_commentsFailed)
        loadCommentsReset(m_commentItems.isEmpty());
}

void ZuviVideoSideContent::loadNextCommentsIfNeeded()
{
    if (!hasVideo() || m_loadingComments || !m_hasMoreComments || m_commentItems.isEmpty())
        return;
    loadCommentsReset(false);
}

QList<ZuviCommentItem>
ZuviVideoSideContent::commentsByAppendingComments(const QList<ZuviCommentItem> &comments) const
{
    if (comments.isEmpty())
        return m_commentItems;
    QList<ZuviCommentItem> merged = m_commentItems;
    QSet<QString> seen;
    for (const ZuviCommentItem &item : m_commentItems) {
        const QString identity = identityForComment(item);
        if (!identity.isEmpty())
            seen.insert(identity);
    }
    for (const ZuviCommentItem &item : comments) {
        const QString identity = identityForComment(item);
        if (!identity.isEmpty() && seen.contains(identity))
            continue;
        merged.append(item);
        if (!identity.isEmpty())
            seen.insert(identity);
    }
    return merged;
}

QString ZuviVideoSideContent::identityForComment(const std::optional<ZuviCommentItem> &comment)
{
    if (!comment)
        return {};
    // With nothing to tell them apart, comments are kept as they come:
    // two replies missing every field are not the same reply.
    if (comment->authorName.isEmpty() && comment->timeText.isEmpty() && comment->message.isEmpty())
        return {};
    return QStringLiteral("%1|%2|%3").arg(comment->authorName, comment->timeText, comment->message);
}

bool ZuviVideoSideContent::showsCommentStatusRow() const
{
    return m_loadingComments || m_hasMoreComments || !m_commentsStatusText.isEmpty() ||
           m_commentItems.isEmpty();
}

QVariantList ZuviVideoSideContent::commentRows() const
{
    QVariantList rows;
    rows.reserve(m_commentItems.size());
    for (const ZuviCommentItem &item : m_commentItems)
        rows.append(QVariantMap{{QStringLiteral("authorName"), item.authorName},
                                {QStringLiteral("message"), item.message},
                                {QStringLiteral("timeText"), item.timeText},
                                {QStringLiteral("likeCountText"), item.likeCountText},
                                {QStringLiteral("avatarURL"), item.avatarURLString}});
    return rows;
}

void ZuviVideoSideContent::setSideSegment(int segment)
{
    segment = segment == 1 ? 1 : 0;
    if (segment == m_sideSegment)
        return;
    m_sideSegment = segment;
    emit sideSegmentChanged();
}
