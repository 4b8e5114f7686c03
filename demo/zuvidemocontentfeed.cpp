// The demo account's following feed: video, live, article, picture and text
// posts (some forwarding another), by followed uploaders, newest first.
#include "zuvidemocontent.h"

#include "zuvidemorandom.h"

#include <QDateTime>
#include <QJsonDocument>

QJsonObject ZuviDemoContent::feedAuthor(int ownerIndex, const QString &action, qint64 time) const
{
    const ZuviDemoOwner &owner = m_owners.at(ownerIndex);
    return QJsonObject{
        {"mid", owner.mid},
        {"name", owner.name},
        {"face", faceURL(owner.mid)},
        {"pub_action", action},
        {"pub_time", QDateTime::fromSecsSinceEpoch(time, Qt::UTC).toString("MM-dd hh:mm")},
    };
}

QJsonObject ZuviDemoContent::feedVideoItem(int index, const ZuviDemoVideo &video, qint64 time) const
{
    const QJsonObject archive{
        {"aid", QString::number(video.aid)},
        {"bvid", video.bvid},
        {"title", video.title},
        {"cover", coverURL(video)},
        {"desc", video.desc},
        {"duration_text", formatDuration(video.duration)},
        {"jump_url", m_origin + "/video/" + video.bvid + "/"},
        {"stat", QJsonObject{{"play", QString::number(video.view)},
                             {"danmaku", QString::number(video.danmaku)}}},
    };
    return QJsonObject{
        {"id_str", QString::number(900000000000LL + index)},
        {"basic", QJsonObject{{"comment_id_str", QString::number(video.aid)},
                              {"comment_type", 1},
                              {"rid_str", QString::number(video.aid)}}},
        {"modules",
         QJsonObject{
             {"module_author", feedAuthor(video.ownerIndex, "投稿了视频", time)},
             {"module_dynamic",
              QJsonObject{{"desc", index % 3 == 0
                                       ? QJsonValue(QJsonObject{{"text", "新视频来啦，求三连！"}})
                                       : QJsonValue()},
                          {"major", QJsonObject{{"archive", archive}}}}},
         }},
    };
}

QJsonObject ZuviDemoContent::feedLiveItem(int index, int ownerIndex, qint64 time) const
{
    ZuviDemoRandom random(m_seed, FeedStream, 10000 + index);
    const ZuviDemoOwner &owner = m_owners.at(ownerIndex);
    const bool live = (index / kFeedPageSize) % 2 == 0;
    const QJsonObject playInfo{
        {"title", owner.name + "的直播间：" + (live ? "今晚一起玩" : "明天见")},
        {"room_id", 21000000 + index},
        {"uid", owner.mid},
        {"cover", pictureURL(QStringLiteral("live-%1").arg(index))},
        {"online", random.between(0, 300000)},
        {"parent_area_name", "虚拟主播"},
        {"area_name", "聊天"},
        {"watched_show",
         QJsonObject{{"text_large", QStringLiteral("%1人看过").arg(random.between(10, 99999))},
                     {"text_small", "看过"}}},
        {"live_status", live ? 1 : 0},
        {"link", m_origin + QStringLiteral("/live/%1").arg(21000000 + index)},
        {"live_id", QString::number(7700000 + index)},
    };
    // The live card's content travels as a JSON text inside the JSON.
    const QString content = QString::fromUtf8(
        QJsonDocument(QJsonObject{{"live_play_info", playInfo}}).toJson(QJsonDocument::Compact));
    return QJsonObject{
        {"id_str", QString::number(900000000000LL + index)},
        {"basic", QJsonObject{{"rid_str", QString::number(7700000 + index)}, {"comment_type", 0}}},
        {"modules",
         QJsonObject{
             {"module_author", feedAuthor(ownerIndex, "直播了", time)},
             {"module_dynamic",
              QJsonObject{
                  {"major", QJsonObject{{"live_rcmd", QJsonObject{{"content", content}}}}}}},
         }},
    };
}

QJsonObject ZuviDemoContent::feedArticleItem(int index, int ownerIndex, qint64 time) const
{
    const qint64 articleID = 30000000 + index;
    const QJsonObject article{
        {"id", articleID},
        {"title",
         QStringLiteral("专栏：%1的第 %2 篇笔记").arg(m_owners.at(ownerIndex).name).arg(index)},
        {"desc", "今天聊聊创作心得。[图片]\n第一点，坚持；\n\n第二点，  多看多练。"},
        {"label", QStringLiteral("%1阅读").arg(1000 + index * 37)},
        {"jump_url", m_origin + QStringLiteral("/read/cv%1").arg(articleID)},
        {"covers", QJsonArray{pictureURL(QStringLiteral("article-%1").arg(index))}},
    };
    return QJsonObject{
        {"id_str", QString::number(900000000000LL + index)},
        {"basic", QJsonObject{{"rid_str", QString::number(articleID)},
                              {"comment_type", 12},
                              {"comment_id_str", QString::number(articleID)}}},
        {"modules",
         QJsonObject{
             {"module_author", feedAuthor(ownerIndex, "投稿了文章", time)},
             {"module_dynamic", QJsonObject{{"major", QJsonObject{{"article", article}}}}},
         }},
    };
}

QJsonObject ZuviDemoContent::feedDrawItem(int index, int ownerIndex, qint64 time) const
{
    // Picture posts with three pictures, more than the four a card shows
    // (one of them twice), one, and none, changing from page to page.
    const int variant = (index / kFeedPageSize) % 4;
    const int pictureCount = variant == 0 ? 3 : variant == 1 ? 7 : variant == 2 ? 1 : 0;
    QJsonArray pictures;
    for (int i = 0; i < pictureCount; ++i) {
        const QString key = QStringLiteral("draw-%1-%2").arg(index).arg(i == 6 ? 0 : i);
        pictures.append(QJsonObject{{"src", pictureURL(key)}, {"width", 800}, {"height", 600}});
    }
    const bool silent = pictureCount == 0 && (index / kFeedPageSize) % 8 == 3;
    const QJsonObject desc{
        {"text", silent ? QString() : QStringLiteral("分享图片 %1 张").arg(pictureCount)},
        {"rich_text_nodes", QJsonArray()}};
    const qint64 drawID = 40000000 + index;
    return QJsonObject{
        {"id_str", QString::number(900000000000LL + index)},
        {"basic", QJsonObject{{"rid_str", QString::number(drawID)},
                              {"comment_type", 11},
                              {"comment_id_str", QString::number(drawID)}}},
        {"modules",
         QJsonObject{
             {"module_author", feedAuthor(ownerIndex, "", time)},
             {"module_dynamic",
              QJsonObject{{"desc", desc},
                          {"major", QJsonObject{{"draw", QJsonObject{{"id", drawID},
                                                                     {"items", pictures}}}}}}},
         }},
    };
}

QJsonObject ZuviDemoContent::feedTextItem(int index, int ownerIndex, qint64 time,
                                          bool forward) const
{
    QJsonObject item{
        {"id_str", QString::number(900000000000LL + index)},
        {"basic",
         QJsonObject{{"rid_str", QString::number(50000000 + index)}, {"comment_type", 17}}},
    };
    // Text made of rich-text nodes, the way the feed sends mentions and emoji.
    const QJsonObject desc{
        {"text", ""},
        {"rich_text_nodes",
         QJsonArray{
             QJsonObject{{"text", "今天也要加油呀 "}},
             QJsonObject{{"text", ""}, {"orig_text", "[打call]"}},
             QJsonObject{{"text", "@" + m_owners.at((ownerIndex + 1) % kOwnerCount).name}}}}};
    QJsonObject dynamic;
    if (!forward)
        dynamic.insert("desc", desc);
    item.insert("modules", QJsonObject{{"module_author",
                                        feedAuthor(ownerIndex, forward ? "转发了动态" : "", time)},
                                       {"module_dynamic", dynamic}});
    if (forward)
        item.insert("orig",
                    feedTextItem(index + 500, (ownerIndex + 3) % kOwnerCount, time - 3600, false));
    return item;
}

void ZuviDemoContent::setOrigin(const QString &origin)
{
    m_origin = origin;
    makeFeed();
}

void ZuviDemoContent::makeFeed()
{
    // The demo account follows the first twenty uploaders. Each page of
    // the feed starts with one post of every other kind among the videos,
    // so the first screen shows all five; the rest of a page is videos, so
    // a list of posts alone fills slowly and has to keep fetching.
    m_feed = QJsonArray();
    qint64 time = kEpoch - 600;
    for (int i = 0; i < kFeedItemCount; ++i) {
        ZuviDemoRandom random(m_seed, FeedStream, i);
        const int ownerIndex = random.below(20);
        time -= random.between(300, 4 * 3600);
        const int place = i % kFeedPageSize;
        QJsonObject item;
        if (place == 1) {
            item = feedLiveItem(i, ownerIndex, time);
        } else if (place == 3) {
            item = feedArticleItem(i, ownerIndex, time);
        } else if (place == 5) {
            item = feedDrawItem(i, ownerIndex, time);
        } else if (place == 7) {
            // Every other page's text post forwards another.
            item = feedTextItem(i, ownerIndex, time, (i / kFeedPageSize) % 2 == 1);
        } else {
            // A video of that uploader, or any video when they have none.
            int found = random.below(kVideoCount);
            for (int v = 0; v < kVideoCount; ++v) {
                if (m_videos.at((found + v) % kVideoCount).ownerIndex == ownerIndex) {
                    found = (found + v) % kVideoCount;
                    break;
                }
            }
            item = feedVideoItem(i, m_videos.at(found), time);
        }
        m_feed.append(item);
    }
}
