#include "zuvivideoactions.h"

#include "net/zuviapiclient.h"
#include "platform/zuvierror.h"
#include "platform/zuvilifetime.h"

#include <cmath>

ZuviVideoActions::ZuviVideoActions(ZuviAPIClient *client, QObject *parent)
    : QObject(parent), m_client(client)
{
}

void ZuviVideoActions::setTarget(const std::optional<Target> &target)
{
    m_target = target;
    m_liked = false;
    m_favorited = false;
    m_watchLater = false;
    emit changed();
}

void ZuviVideoActions::setSelectedCID(qint64 cid)
{
    if (m_target)
        m_target->cid = cid;
}

void ZuviVideoActions::videoInteractionButtonTapped(int tag)
{
    if (m_inProgress)
        return;
    if (!m_target) {
        emit resultRequested(QStringLiteral("互动"), QStringLiteral("视频信息还没有加载完成"));
        return;
    }
    switch (tag) {
    case FavoriteButton:
        sendFavoriteAction();
        break;
    case WatchLaterButton:
        sendWatchLaterAction();
        break;
    case CommentButton:
        emit inputRequested(QStringLiteral("发表评论"), QStringLiteral("输入评论内容"),
                            CommentInput);
        break;
    case DanmakuButton:
        emit inputRequested(QStringLiteral("发弹幕"), QStringLiteral("输入弹幕内容"), DanmakuInput);
        break;
    default:
        break;
    }
}

void ZuviVideoActions::inputSubmitted(int tag, const QString &text)
{
    if (tag == CommentInput)
        sendCommentActionWithText(text);
    else if (tag == DanmakuInput)
        sendDanmakuActionWithText(text);
}

QString ZuviVideoActions::trimmedInteractionText(const QString &text)
{
    return text.trimmed();
}

void ZuviVideoActions::sendFavoriteAction()
{
    if (m_inProgress || !m_target)
        return;
    const QString title = QStringLiteral("收藏");
    beginVideoActionWithTitle(title);
    m_client->addFavoriteWithAID(m_target->aid, m_target->bvid,
                                 completionFor(title, [this] { m_favorited = true; }));
}

void ZuviVideoActions::sendWatchLaterAction()
{
    if (m_inProgress || !m_target)
        return;
    const QString title = QStringLiteral("稍后再看");
    beginVideoActionWithTitle(title);
    m_client->addWatchLaterWithAID(m_target->aid, m_target->bvid,
                                   completionFor(title, [this] { m_watchLater = true; }));
}

void ZuviVideoActions::sendCommentActionWithText(const QString &text)
{
    const QString title = QStringLiteral("评论");
    const QString message = trimmedInteractionText(text);
    if (message.isEmpty()) {
        emit resultRequested(title, QStringLiteral("评论内容不能为空"));
        return;
    }
    if (m_inProgress || !m_target)
        return;
    beginVideoActionWithTitle(title);
    m_client->sendCommentForAID(m_target->aid, m_target->bvid, message,
                                completionFor(title, [this] { emit commentPosted(); }));
}

void ZuviVideoActions::sendDanmakuActionWithText(const QString &text)
{
    const QString title = QStringLiteral("弹幕");
    const QString message = trimmedInteractionText(text);
    if (message.isEmpty()) {
        emit resultRequested(title, QStringLiteral("弹幕内容不能为空"));
        return;
    }
    if (m_inProgress || !m_target)
        return;
    // The moment is taken before sending: the answer may come seconds later.
    const double time = m_timeSource ? m_timeSource() : 0;
    const int progress = int(std::floor(time * 1000));
    beginVideoActionWithTitle(title);
    m_client->sendDanmakuWithAID(
        m_target->aid, m_target->cid, m_target->bvid, message, progress,
        completionFor(title, [this, message, time] { emit danmakuSent(message, time); }));
}

void ZuviVideoActions::beginVideoActionWithTitle(const QString &title)
{
    m_inProgress = true;
    m_statusText = QStringLiteral("%1中...").arg(title);
    emit changed();
}

void ZuviVideoActions::finishVideoActionWithTitle(const QString &title, bool success,
                                                  const QString &message, const ZuviError &error)
{
    m_inProgress = false;
    QString text = success ? message : (error.message.isEmpty() ? message : error.message);
    if (text.isEmpty())
        text = success ? QStringLiteral("操作成功") : QStringLiteral("操作失败");
    if (success) {
        m_statusText.clear();
        emit changed();
        return;
    }
    m_statusText = QStringLiteral("%1失败：%2").arg(title, text);
    emit changed();
    emit resultRequested(title, text);
}

std::function<void(bool, const QString &, const ZuviError &)>
ZuviVideoActions::completionFor(const QString &title, std::function<void()> onSuccess)
{
    return ZuviLifetime::bound(
        this, [this, title, onSuccess = std::move(onSuccess)](bool success, const QString &message,
                                                              const ZuviError &error) {
            if (success)
                onSuccess();
            finishVideoActionWithTitle(title, success, message, error);
        });
}
