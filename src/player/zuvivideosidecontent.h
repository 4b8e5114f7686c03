#pragma once

#include "browse/zuvivideolistmodel.h"
#include "model/zuvicommentitem.h"
#include "model/zuvivideoitem.h"

#include <QObject>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

#include <optional>

class ZuviAPIClient;

// What the video screen shows beside or below the player apart from the
// video's own information: the related videos and the comments, loaded page
// by page. It knows the current video only by its aid and bvid; every answer
// is checked against the request number and that video before it is used, so
// a late page of an earlier video never lands in the list.
class ZuviVideoSideContent : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Part of the video screen")
    Q_PROPERTY(ZuviVideoListModel *relatedModel READ relatedModel CONSTANT)
    Q_PROPERTY(QString relatedStatusText READ relatedStatusText NOTIFY relatedChanged)
    Q_PROPERTY(bool loadingRelated READ isLoadingRelated NOTIFY relatedChanged)
    Q_PROPERTY(bool relatedImagesAllowed READ relatedImagesAllowed NOTIFY relatedChanged)
    Q_PROPERTY(bool relatedFailed READ relatedFailed NOTIFY relatedChanged)
    Q_PROPERTY(QVariantList comments READ commentRows NOTIFY commentsChanged)
    Q_PROPERTY(QString commentsStatusText READ commentsStatusText NOTIFY commentsChanged)
    Q_PROPERTY(bool showsCommentStatusRow READ showsCommentStatusRow NOTIFY commentsChanged)
    Q_PROPERTY(bool commentsFailed READ commentsFailed NOTIFY commentsChanged)
    Q_PROPERTY(int sideSegment READ sideSegment WRITE setSideSegment NOTIFY sideSegmentChanged)

public:
    static constexpr int kCommentPageSize = 20;

    explicit ZuviVideoSideContent(ZuviAPIClient *client, QObject *parent = nullptr);

    // A new video (or none): empties both lists, resets paging and makes
    // every answer still under way stale.
    void resetForVideo(qint64 aid, const QString &bvid);
    void clearVideo();
    // The video itself could not be loaded: both lists say they failed,
    // without a retry of their own (the screen's retry loads everything).
    void showUnavailable();

    // --- Related videos
    void loadRelatedVideos();
    const QList<ZuviVideoItem> &relatedVideos() const { return m_relatedVideos; }
    std::optional<ZuviVideoItem> firstRelatedVideo() const;
    ZuviVideoListModel *relatedModel() const { return m_relatedModel; }
    QString relatedStatusText() const { return m_relatedStatusText; }
    bool isLoadingRelated() const { return m_loadingRelated; }
    // Covers wait until the movie can play, fails or ends, so that their
    // transfers do not compete with the detail and the address.
    bool relatedImagesAllowed() const { return m_relatedImagesAllowed; }
    void setRelatedImagesAllowed(bool allowed);
    // The last related request failed; its status row then offers a retry.
    bool relatedFailed() const { return m_relatedFailed; }

    // --- Comments
    void loadCommentsReset(bool reset);
    Q_INVOKABLE void loadNextCommentsIfNeeded();
    const QList<ZuviCommentItem> &commentItems() const { return m_commentItems; }
    QList<ZuviCommentItem>
    commentsByAppendingComments(const QList<ZuviCommentItem> &comments) const;
    static QString identityForComment(const std::optional<ZuviCommentItem> &comment);
    int commentsPage() const { return m_commentsPage; }
    bool hasMoreComments() const { return m_hasMoreComments; }
    bool isLoadingComments() const { return m_loadingComments; }
    int commentsRequestID() const { return m_commentsRequestID; }
    QString commentsStatusText() const { return m_commentsStatusText; }
    bool showsCommentStatusRow() const;
    QVariantList commentRows() const;
    // The last comment request failed, a first page or a later one.
    bool commentsFailed() const { return m_commentsFailed; }

    // A tap on a list's status row: after a failure it asks again (the
    // comments for the page that failed), otherwise it does nothing.
    Q_INVOKABLE void statusRowTapped(bool forComments);

    // 0 shows the related videos, 1 the comments.
    int sideSegment() const { return m_sideSegment; }
    void setSideSegment(int segment);

signals:
    void relatedChanged();
    void commentsChanged();
    void sideSegmentChanged();

private:
    bool hasVideo() const { return !m_bvid.isEmpty() || m_aid > 0; }

    ZuviAPIClient *m_client;
    qint64 m_aid = 0;
    QString m_bvid;
    int m_relatedRequestID = 0;

    QList<ZuviVideoItem> m_relatedVideos;
    ZuviVideoListModel *m_relatedModel;
    QString m_relatedStatusText = QStringLiteral("相关推荐加载中");
    bool m_loadingRelated = false;
    bool m_relatedImagesAllowed = false;
    bool m_relatedFailed = false;

    QList<ZuviCommentItem> m_commentItems;
    int m_commentsPage = 0;
    bool m_hasMoreComments = true;
    bool m_loadingComments = false;
    int m_commentsRequestID = 0;
    QString m_commentsStatusText = QStringLiteral("评论加载中");
    bool m_commentsFailed = false;
    int m_sideSegment = 0;
};
