// The demo service's answers about one video (detail, play address, danmaku,
// related videos, comments) and the following feed.
#include "zuvidemoservice.h"

#include "zuvidemoservicesupport.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>

namespace {
// The quality a request gets: the asked one when it exists, else the best
// below it, else the lowest.
int servedQuality(int requested)
{
    for (int quality : {64, 32, 16}) {
        if (requested >= quality)
            return quality;
    }
    return 16;
}
} // namespace

using namespace ZuviDemoServiceSupport;

ZuviDemoResponse ZuviDemoService::view(const ZuviDemoRequest &request)
{
    const ZuviDemoVideo *video = m_content.videoForBVID(request.queryValue("bvid"));
    if (!video)
        return fail(kNotFound, QStringLiteral("视频不存在"));
    return ok(m_content.viewDictionary(withState(*video)));
}

ZuviDemoResponse ZuviDemoService::playURL(const ZuviDemoRequest &request)
{
    const ZuviDemoVideo *video = m_content.videoForBVID(request.queryValue("bvid"));
    const qint64 cid = request.queryValue("cid").toLongLong();
    if (!video || m_content.videoForCID(cid) != video)
        return fail(kNotFound, QStringLiteral("视频不存在"));
    // Asking for a play address is watching: it goes into the history.
    if (sessionOf(request))
        m_state.noteWatched(video->aid, nowSeconds());
    const int quality = servedQuality(request.queryValue("qn").toInt());
    const int length = ZuviDemoContent::clips().at(video->clip).seconds * 1000;
    const bool segmented = video->playKind == ZuviDemoPlayKind::SegmentedOnly ||
                           (video->playKind == ZuviDemoPlayKind::DashAtBest && quality == 64);
    QJsonArray accept = {64, 32, 16};
    if (video->playKind == ZuviDemoPlayKind::SegmentedOnly)
        accept.prepend(80);
    QJsonObject data{{"quality", quality},
                     {"timelength", length},
                     {"accept_quality", accept},
                     {"accept_description", QJsonArray{"高清 720P", "清晰 480P", "流畅 360P"}}};
    if (segmented) {
        // Separate video and audio segments only: no single file to play.
        const QString base =
            origin() + QStringLiteral("/media/segments/%1/%2").arg(cid).arg(quality);
        data.insert("format", "dash");
        data.insert("dash", QJsonObject{
                                {"duration", length / 1000},
                                {"video", QJsonArray{QJsonObject{{"id", quality},
                                                                 {"base_url", base + "-video.m4s"},
                                                                 {"codecs", "avc1.64001F"}}}},
                                {"audio", QJsonArray{QJsonObject{{"id", 30280},
                                                                 {"base_url", base + "-audio.m4s"},
                                                                 {"codecs", "mp4a.40.2"}}}},
                            });
        return ok(data);
    }
    const QString url = m_content.mediaURL(*video, quality);
    const QString fileName = url.section('/', -1);
    const qint64 size = QFileInfo(QDir(m_options.mediaDirectory).filePath(fileName)).size();
    data.insert("format", "mp4");
    data.insert("durl", QJsonArray{QJsonObject{{"order", 1},
                                               {"length", length},
                                               {"size", size},
                                               {"url", url},
                                               {"backup_url", QJsonArray{url + "?backup=1"}}}});
    return ok(data);
}

QByteArray ZuviDemoService::danmakuDocument(qint64 cid)
{
    // A document is generated once and kept; a posted danmaku drops it so
    // the next fetch carries the new item.
    if (const QByteArray *cached = m_danmakuCache.object(cid))
        return *cached;
    QList<ZuviDemoDanmaku> items = m_content.danmaku(cid);
    items.append(m_state.postedDanmaku(cid));
    const QByteArray document = ZuviDemoContent::danmakuDocument(cid, items);
    m_danmakuCache.insert(cid, new QByteArray(document), int(document.size()));
    return document;
}

ZuviDemoResponse ZuviDemoService::danmaku(const ZuviDemoRequest &request)
{
    return ZuviDemoResponse::content(danmakuDocument(request.queryValue("oid").toLongLong()),
                                     "text/xml; charset=utf-8");
}

ZuviDemoResponse ZuviDemoService::related(const ZuviDemoRequest &request)
{
    const ZuviDemoVideo *video = m_content.videoForBVID(request.queryValue("bvid"));
    if (!video)
        return fail(kNotFound, QStringLiteral("视频不存在"));
    QJsonArray list;
    for (int index : m_content.related(*video))
        list.append(m_content.popularDictionary(withState(m_content.videos().at(index))));
    return ok(list);
}

namespace {
// Posted replies first, then the generated ones.
QJsonArray replyPage(const ZuviDemoContent &content, const ZuviDemoVideo &video,
                     const QList<QJsonObject> &posted, int first, int count)
{
    QJsonArray replies;
    const int total = int(posted.size()) + video.commentTotal;
    for (int i = first; i < qMin(total, first + count); ++i)
        replies.append(i < posted.size() ? posted.at(i)
                                         : content.reply(video, i - int(posted.size())));
    return replies;
}
} // namespace

ZuviDemoResponse ZuviDemoService::comments(const ZuviDemoRequest &request)
{
    const ZuviDemoVideo *video = m_content.videoForAID(request.queryValue("oid").toLongLong());
    if (!video)
        return fail(kNotFound, QStringLiteral("评论区不存在"));
    const int page = clamped(request.queryValue("pn"), 1, 1, 100000);
    const int size = clamped(request.queryValue("ps"), 20, 1, 49);
    const QList<QJsonObject> posted = m_state.postedReplies(video->aid);
    const int total = int(posted.size()) + video->commentTotal;
    const QJsonArray replies = replyPage(m_content, *video, posted, (page - 1) * size, size);
    // Past the last page the list is null, not empty, as it often is in the wild.
    return ok(QJsonObject{{"page", QJsonObject{{"num", page}, {"size", size}, {"count", total}}},
                          {"replies", replies.isEmpty() && page > 1 ? QJsonValue(QJsonValue::Null)
                                                                    : QJsonValue(replies)},
                          {"top_replies", QJsonArray()}});
}

ZuviDemoResponse ZuviDemoService::mainComments(const ZuviDemoRequest &request)
{
    const ZuviDemoVideo *video = m_content.videoForAID(request.queryValue("oid").toLongLong());
    if (!video)
        return fail(kNotFound, QStringLiteral("评论区不存在"));
    const int size = clamped(request.queryValue("ps"), 20, 1, 30);
    const int next = clamped(request.queryValue("next"), 0, 0, 100000);
    const QList<QJsonObject> posted = m_state.postedReplies(video->aid);
    const int total = int(posted.size()) + video->commentTotal;
    const int first = qMax(0, next - 1) * size;
    return ok(QJsonObject{
        {"cursor", QJsonObject{{"next", qMax(1, next) + 1}, {"is_end", first + size >= total}}},
        {"replies", replyPage(m_content, *video, posted, first, size)}});
}

ZuviDemoResponse ZuviDemoService::following(const ZuviDemoRequest &request)
{
    if (!sessionOf(request))
        return fail(kNotLoggedIn, QStringLiteral("账号未登录"));
    const QString type = request.queryValue("type");
    const QString offset = request.queryValue("offset");
    // The kind filter: videos and articles alone, or everything.
    const auto wanted = [&type](const QJsonObject &item) {
        const QJsonObject major = item.value("modules")
                                      .toObject()
                                      .value("module_dynamic")
                                      .toObject()
                                      .value("major")
                                      .toObject();
        if (type == QLatin1String("video"))
            return major.contains("archive");
        if (type == QLatin1String("article"))
            return major.contains("article");
        return true;
    };
    const QJsonArray &feed = m_content.feedItems();
    int start = 0;
    if (!offset.isEmpty()) {
        start = int(feed.size());
        for (int i = 0; i < feed.size(); ++i) {
            if (feed.at(i).toObject().value("id_str").toString() == offset) {
                start = i + 1;
                break;
            }
        }
    } else {
        start =
            (clamped(request.queryValue("page"), 1, 1, 1000) - 1) * ZuviDemoContent::kFeedPageSize;
    }
    QJsonArray items;
    int i = start;
    for (; i < feed.size() && items.size() < ZuviDemoContent::kFeedPageSize; ++i) {
        if (wanted(feed.at(i).toObject()))
            items.append(feed.at(i));
    }
    bool more = false;
    for (int j = i; j < feed.size() && !more; ++j)
        more = wanted(feed.at(j).toObject());
    const QString nextOffset =
        items.isEmpty() ? QString() : items.last().toObject().value("id_str").toString();
    return ok(QJsonObject{{"items", items}, {"has_more", more}, {"offset", nextOffset}});
}
