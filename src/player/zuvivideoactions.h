#pragma once

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

#include <functional>
#include <optional>

class ZuviAPIClient;
struct ZuviError;

// The signed-in things a viewer does to the video on screen: favourite it,
// save it to watch later, comment and send a danmaku. One action runs at a
// time; its progress and failure are told in the status line, a failure also
// in a dialog. The page asks for text through inputRequested and shows
// results through resultRequested; the screen reacts to a posted comment and
// a sent danmaku.
class ZuviVideoActions : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Part of the video screen")
    Q_PROPERTY(bool inProgress READ isInProgress NOTIFY changed)
    Q_PROPERTY(QString statusText READ statusText NOTIFY changed)
    Q_PROPERTY(bool favorited READ isFavorited NOTIFY changed)
    Q_PROPERTY(bool watchLater READ isWatchLater NOTIFY changed)
    Q_PROPERTY(bool liked READ isLiked NOTIFY changed)

public:
    // Tags of the interaction buttons and of the two input dialogs.
    enum Tag {
        FavoriteButton = 7202,
        WatchLaterButton = 7203,
        CommentButton = 7204,
        DanmakuButton = 7205,
        CommentInput = 7304,
        DanmakuInput = 7305,
    };
    Q_ENUM(Tag)

    // The video the actions apply to: its ids and the selected page's cid.
    struct Target {
        qint64 aid = 0;
        QString bvid;
        qint64 cid = 0;
    };

    explicit ZuviVideoActions(ZuviAPIClient *client, QObject *parent = nullptr);

    // A new video clears what was done to the previous one; none means the
    // detail has not arrived yet.
    void setTarget(const std::optional<Target> &target);
    void setSelectedCID(qint64 cid);
    // Where a sent danmaku is placed: the movie's clock at the moment of sending.
    void setPlaybackTimeSource(std::function<double()> source) { m_timeSource = std::move(source); }

    Q_INVOKABLE void videoInteractionButtonTapped(int tag);
    // "发送" in an input dialog; cancelling simply closes it.
    Q_INVOKABLE void inputSubmitted(int tag, const QString &text);

    void sendFavoriteAction();
    void sendWatchLaterAction();
    void sendCommentActionWithText(const QString &text);
    void sendDanmakuActionWithText(const QString &text);
    static QString trimmedInteractionText(const QString &text);

    qint64 currentVideoAID() const { return m_target ? m_target->aid : 0; }
    QString currentVideoBVID() const { return m_target ? m_target->bvid : QString(); }
    bool isInProgress() const { return m_inProgress; }
    QString statusText() const { return m_statusText; }
    bool isFavorited() const { return m_favorited; }
    bool isWatchLater() const { return m_watchLater; }
    bool isLiked() const { return m_liked; }

signals:
    void changed();
    void inputRequested(const QString &title, const QString &placeholder, int tag);
    void resultRequested(const QString &title, const QString &message);
    void commentPosted();
    void danmakuSent(const QString &text, double playbackTime);

private:
    void beginVideoActionWithTitle(const QString &title);
    void finishVideoActionWithTitle(const QString &title, bool success, const QString &message,
                                    const ZuviError &error);
    // The action's completion, bound to this object's lifetime, finishing
    // the action and then running onSuccess.
    std::function<void(bool, const QString &, const ZuviError &)>
    completionFor(const QString &title, std::function<void()> onSuccess);

    ZuviAPIClient *m_client;
    std::optional<Target> m_target;
    std::function<double()> m_timeSource;
    bool m_inProgress = false;
    QString m_statusText = QStringLiteral("登录后可收藏、稍后再看、评论和发弹幕");
    bool m_favorited = false;
    bool m_watchLater = false;
    bool m_liked = false;
};
