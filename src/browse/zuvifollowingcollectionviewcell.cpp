#include "zuvifollowingcollectionviewcell.h"

#include "model/zuvivideoitem.h"
#include "zuvivideolistmodel.h"

namespace {
QString text(const QVariantMap &map, const char *key)
{
    return map.value(QString::fromLatin1(key)).toString();
}

void configureVideo(const ZuviFollowingRow &row, QVariantMap *card)
{
    const ZuviVideoItem video = row.value(QStringLiteral("video")).value<ZuviVideoItem>();
    card->insert("coverURL", video.coverURLString);
    card->insert("durationText", video.durationText);
    card->insert("playText", QStringLiteral("播放 %1").arg(video.playCountText.isEmpty()
                                                               ? QStringLiteral("0")
                                                               : video.playCountText));
    card->insert("commentText", QStringLiteral("评论 %1").arg(video.commentCountText.isEmpty()
                                                                  ? QStringLiteral("0")
                                                                  : video.commentCountText));
    card->insert("placeholderColor", ZuviVideoListModel::placeholderColorForBVID(video.bvid));
    card->insert("opensVideo", true);
    // The post's own words, when the uploader wrote any beside the video.
    card->insert("bodyText", text(row, "dynamicText"));
}

void configureLive(const ZuviFollowingRow &row, QVariantMap *card)
{
    const QVariantMap live = row.value(QStringLiteral("liveInfo")).toMap();
    const QString status = text(live, "status");
    card->insert("coverURL", text(live, "coverURLString"));
    card->insert("badgeText", status);
    card->insert("badgeLive", status == QStringLiteral("直播中"));
    card->insert("areaText", text(live, "area"));
    const QString online = text(live, "online");
    card->insert("onlineText",
                 online.isEmpty() ? text(live, "watched") : QStringLiteral("%1在线").arg(online));
}

void configureArticle(const ZuviFollowingRow &row, QVariantMap *card)
{
    const QVariantMap article = row.value(QStringLiteral("articleInfo")).toMap();
    card->insert("coverURL", text(article, "coverURLString"));
    card->insert("bodyText", text(article, "desc"));
    card->insert("labelText", text(article, "label"));
}

void configureDraw(const ZuviFollowingRow &row, QVariantMap *card)
{
    const QVariantMap draw = row.value(QStringLiteral("drawInfo")).toMap();
    card->insert("imageURLs", draw.value(QStringLiteral("imageURLStrings")).toStringList());
    card->insert("emptyPictures", draw.value(QStringLiteral("empty")).toBool());
    card->insert("bodyText", text(draw, "text"));
}
} // namespace

QVariantMap ZuviFollowingCollectionViewCell::configurationForRow(const ZuviFollowingRow &row)
{
    const QString kind = text(row, "rowType");
    const QString author = text(row, "authorName");
    QVariantMap card{
        {"kind", kind.isEmpty() ? QStringLiteral("dynamic") : kind},
        {"title", text(row, "title")},
        {"subtitle", text(row, "subtitle")},
        {"authorName", author.isEmpty() ? QStringLiteral("未知 UP") : author},
        // The avatar's stand-in until (or unless) the picture arrives.
        {"authorInitial", author.isEmpty() ? QStringLiteral("?") : author.left(1)},
        {"avatarURL", text(row, "avatarURLString")},
        {"actionText", text(row, "actionText")},
        {"imageURLs", QStringList()},
        {"badgeLive", false},
        {"emptyPictures", false},
        {"opensVideo", false},
        {"placeholderColor", ZuviVideoListModel::placeholderColorForBVID(text(row, "rowID"))},
    };
    if (kind == QLatin1String("video") && row.contains(QStringLiteral("video")))
        configureVideo(row, &card);
    else if (kind == QLatin1String("live"))
        configureLive(row, &card);
    else if (kind == QLatin1String("article"))
        configureArticle(row, &card);
    else if (kind == QLatin1String("draw"))
        configureDraw(row, &card);
    else
        card.insert("bodyText", text(row, "dynamicText").isEmpty() ? text(row, "title")
                                                                   : text(row, "dynamicText"));
    return card;
}
