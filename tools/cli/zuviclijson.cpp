#include "zuviclijson.h"

#include <QMap>

QJsonObject ZuviCLIJson::videoItem(const ZuviVideoItem &item)
{
    return QJsonObject{{"title", item.title},
                       {"coverURLString", item.coverURLString},
                       {"ownerName", item.ownerName},
                       {"playCountText", item.playCountText},
                       {"commentCountText", item.commentCountText},
                       {"durationText", item.durationText},
                       {"bvid", item.bvid},
                       {"aid", item.aid},
                       {"cid", item.cid},
                       {"metadataText", item.metadataText()}};
}

QJsonArray ZuviCLIJson::videoItems(const QList<ZuviVideoItem> &items)
{
    QJsonArray array;
    for (const ZuviVideoItem &item : items)
        array.append(videoItem(item));
    return array;
}

QJsonObject ZuviCLIJson::videoPage(const ZuviVideoPage &page)
{
    return QJsonObject{
        {"cid", page.cid}, {"pageNumber", page.pageNumber}, {"partTitle", page.partTitle}};
}

QJsonObject ZuviCLIJson::videoDetail(const ZuviVideoDetail &detail)
{
    QJsonArray pages;
    for (const ZuviVideoPage &page : detail.pages)
        pages.append(videoPage(page));
    return QJsonObject{{"aid", detail.aid},
                       {"cid", detail.cid},
                       {"bvid", detail.bvid},
                       {"title", detail.title},
                       {"desc", detail.desc},
                       {"coverURLString", detail.coverURLString},
                       {"ownerName", detail.ownerName},
                       {"ownerAvatarURLString", detail.ownerAvatarURLString},
                       {"playCountText", detail.playCountText},
                       {"commentCountText", detail.commentCountText},
                       {"danmakuCountText", detail.danmakuCountText},
                       {"pages", pages},
                       {"metadataText", detail.metadataText()}};
}

QJsonObject ZuviCLIJson::danmakuItem(const ZuviDanmakuItem &item)
{
    return QJsonObject{
        {"text", item.text},
        {"time", item.time},
        {"mode", item.mode},
        {"fontSize", double(item.fontSize)},
        {"colorRGB", qint64(item.colorRGB)},
        {"danmakuID", item.danmakuID.isEmpty() ? QJsonValue() : QJsonValue(item.danmakuID)}};
}

QJsonArray ZuviCLIJson::danmakuItems(const QList<ZuviDanmakuItem> &items)
{
    QJsonArray array;
    for (const ZuviDanmakuItem &item : items)
        array.append(danmakuItem(item));
    return array;
}

QJsonObject ZuviCLIJson::danmakuSummary(const QList<ZuviDanmakuItem> &items)
{
    QMap<int, int> perMode;
    double first = 0;
    double last = 0;
    for (int i = 0; i < items.size(); ++i) {
        const ZuviDanmakuItem &item = items.at(i);
        perMode[item.mode] += 1;
        first = i == 0 ? item.time : qMin(first, item.time);
        last = i == 0 ? item.time : qMax(last, item.time);
    }
    QJsonObject modes;
    for (auto it = perMode.constBegin(); it != perMode.constEnd(); ++it)
        modes.insert(QString::number(it.key()), it.value());
    const bool empty = items.isEmpty();
    return QJsonObject{{"count", int(items.size())},
                       {"firstTime", empty ? QJsonValue() : QJsonValue(first)},
                       {"lastTime", empty ? QJsonValue() : QJsonValue(last)},
                       {"modes", modes}};
}

QJsonObject ZuviCLIJson::commentItem(const ZuviCommentItem &item)
{
    return QJsonObject{{"authorName", item.authorName},
                       {"avatarURLString", item.avatarURLString},
                       {"message", item.message},
                       {"timeText", item.timeText},
                       {"likeCountText", item.likeCountText}};
}

QJsonArray ZuviCLIJson::commentItems(const QList<ZuviCommentItem> &items)
{
    QJsonArray array;
    for (const ZuviCommentItem &item : items)
        array.append(commentItem(item));
    return array;
}

QJsonObject ZuviCLIJson::followingRow(const ZuviFollowingRow &row)
{
    // Plain entries (texts, the image list, the live, article and picture
    // records) convert as they are; the video entry is a record of its own.
    QVariantMap plain = row;
    plain.remove("video");
    QJsonObject object = QJsonObject::fromVariantMap(plain);
    if (row.contains("video"))
        object.insert("video", videoItem(row.value("video").value<ZuviVideoItem>()));
    return object;
}

QJsonObject ZuviCLIJson::followingPage(const QList<ZuviFollowingRow> &rows, bool hasMore,
                                       const QString &nextOffset)
{
    QJsonArray array;
    for (const ZuviFollowingRow &row : rows)
        array.append(followingRow(row));
    QJsonObject page{{"rows", array}, {"hasMore", hasMore}};
    if (!nextOffset.isEmpty())
        page.insert("nextOffset", nextOffset);
    return page;
}

QJsonObject ZuviCLIJson::userProfile(const ZuviUserProfile &profile)
{
    return QJsonObject{
        {"isLogin", profile.isLogin},           {"mid", profile.mid},
        {"userName", profile.userName},         {"faceURLString", profile.faceURLString},
        {"levelText", profile.levelText},       {"vipText", profile.vipText},
        {"coinText", profile.coinText},         {"followingText", profile.followingText},
        {"followerText", profile.followerText}, {"summaryText", profile.summaryText()}};
}

QJsonObject ZuviCLIJson::playURL(const QString &urlString, int quality)
{
    return QJsonObject{{"url", urlString}, {"quality", quality}};
}

QJsonObject ZuviCLIJson::action(bool success, const QString &message)
{
    return QJsonObject{{"success", success}, {"message", message}};
}

QJsonObject ZuviCLIJson::error(const ZuviError &error)
{
    return QJsonObject{
        {"error",
         QJsonObject{{"domain", error.domain}, {"code", error.code}, {"message", error.message}}}};
}
