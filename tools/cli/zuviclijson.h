#pragma once

#include "model/zuvicommentitem.h"
#include "model/zuvidanmakuitem.h"
#include "model/zuvifollowingrow.h"
#include "model/zuviuserprofile.h"
#include "model/zuvivideodetail.h"
#include "model/zuvivideoitem.h"
#include "platform/zuvierror.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QList>

// The command-line client's output shapes. Every record becomes an object
// whose keys are the record's property names; lists become arrays; a failure
// is {"error": {"domain", "code", "message"}}. Scripts and the demo's
// end-to-end tests read these, so the keys stay stable.
class ZuviCLIJson
{
public:
    static QJsonObject videoItem(const ZuviVideoItem &item);
    static QJsonArray videoItems(const QList<ZuviVideoItem> &items);
    static QJsonObject videoPage(const ZuviVideoPage &page);
    static QJsonObject videoDetail(const ZuviVideoDetail &detail);
    static QJsonObject danmakuItem(const ZuviDanmakuItem &item);
    static QJsonArray danmakuItems(const QList<ZuviDanmakuItem> &items);
    // {"count", "firstTime", "lastTime", "modes": {"1": n, ...}}; the times
    // are null for an empty list.
    static QJsonObject danmakuSummary(const QList<ZuviDanmakuItem> &items);
    static QJsonObject commentItem(const ZuviCommentItem &item);
    static QJsonArray commentItems(const QList<ZuviCommentItem> &items);
    static QJsonObject followingRow(const ZuviFollowingRow &row);
    static QJsonObject followingPage(const QList<ZuviFollowingRow> &rows, bool hasMore,
                                     const QString &nextOffset);
    static QJsonObject userProfile(const ZuviUserProfile &profile);
    static QJsonObject playURL(const QString &urlString, int quality);
    static QJsonObject action(bool success, const QString &message);
    static QJsonObject error(const ZuviError &error);
};
