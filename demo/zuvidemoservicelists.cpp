// The demo service's video lists: popular, recommended, the rankings,
// search, history, watch later and the favourite folders.
#include "zuvidemoservice.h"

#include "zuvidemoservicesupport.h"

#include <QJsonArray>

using namespace ZuviDemoServiceSupport;

ZuviDemoResponse ZuviDemoService::popular(const ZuviDemoRequest &request)
{
    const int page = clamped(request.queryValue("pn"), 1, 1, 100000);
    const int size = clamped(request.queryValue("ps"), 20, 1, 100);
    const QList<int> order = m_content.popularOrder();
    QJsonArray list;
    for (int i = (page - 1) * size; i < qMin(int(order.size()), page * size); ++i)
        list.append(m_content.popularDictionary(withState(m_content.videos().at(order.at(i)))));
    return ok(QJsonObject{{"list", list}, {"no_more", page * size >= order.size()}});
}

ZuviDemoResponse ZuviDemoService::recommended(const ZuviDemoRequest &request)
{
    const int page = clamped(request.queryValue("fresh_idx"), 1, 1, 100000);
    const int size = clamped(request.queryValue("ps"), 12, 1, 100);
    QJsonArray items;
    for (int index : m_content.recommendedPage(page, size))
        items.append(m_content.recommendedDictionary(withState(m_content.videos().at(index))));
    const ZuviDemoSession *session = sessionOf(request);
    return ok(QJsonObject{{"item", items}, {"mid", session ? session->mid : 0}});
}

ZuviDemoResponse ZuviDemoService::ranking(const ZuviDemoRequest &request)
{
    const int rid = clamped(request.queryValue("rid"), 0, -1, 100000);
    if (rid != 0 && ZuviDemoContent::regionName(rid) == QStringLiteral("全站"))
        return fail(kNotFound, QStringLiteral("分区不存在"));
    // Asked the way the ranking page of the web site asks (with its page
    // location), the ranking wants a signed-in member coming from that
    // region's own ranking page.
    if (request.queryValue("web_location").size() > 0) {
        if (!sessionOf(request))
            return fail(kNotLoggedIn, QStringLiteral("账号未登录"));
        const QString route = rid == 0 ? QStringLiteral("all") : ZuviDemoContent::regionRoute(rid);
        if (!QString::fromUtf8(request.header("Referer")).endsWith("/v/popular/rank/" + route))
            return fail(kDeviceUnknown, QStringLiteral("请求被拦截：来源页面不符"));
    }
    const int size = clamped(request.queryValue("ps"), 100, 1, 100);
    QJsonArray list;
    for (int index : m_content.ranking(rid, size))
        list.append(m_content.popularDictionary(withState(m_content.videos().at(index))));
    return ok(QJsonObject{{"region", rid}, {"list", list}});
}

ZuviDemoResponse ZuviDemoService::legacyRanking(const ZuviDemoRequest &request)
{
    const int rid = clamped(request.queryValue("rid"), 0, -1, 100000);
    QJsonArray list;
    for (int index : m_content.ranking(rid, 30))
        list.append(m_content.legacyRankingDictionary(withState(m_content.videos().at(index))));
    return ok(list);
}

ZuviDemoResponse ZuviDemoService::search(const ZuviDemoRequest &request)
{
    const QString keyword = request.queryValue("keyword").trimmed();
    if (keyword.isEmpty())
        return fail(kBadRequest, QStringLiteral("关键词不能为空"));
    const int page = clamped(request.queryValue("page"), 1, 1, 100000);
    const QList<int> found = m_content.search(keyword);
    const int size = ZuviDemoContent::kSearchPageSize;
    QJsonArray result;
    for (int i = (page - 1) * size; i < qMin(int(found.size()), page * size); ++i)
        result.append(
            m_content.searchDictionary(withState(m_content.videos().at(found.at(i))), keyword));
    const int pages = (int(found.size()) + size - 1) / size;
    return ok(QJsonObject{{"page", page},
                          {"page_size", size},
                          {"total", int(found.size())},
                          {"pages", pages},
                          {"result", result}});
}

ZuviDemoResponse ZuviDemoService::history(const ZuviDemoRequest &request)
{
    if (!sessionOf(request))
        return fail(kNotLoggedIn, QStringLiteral("账号未登录"));
    const int size = clamped(request.queryValue("ps"), 20, 1, 30);
    QJsonArray list;
    for (const ZuviDemoListEntry &entry : m_state.history()) {
        const ZuviDemoVideo *video = m_content.videoForAID(entry.aid);
        if (!video || list.size() >= size)
            continue;
        const ZuviDemoOwner &owner = m_content.owners().at(video->ownerIndex);
        // History entries carry the video's ids in "history" and no counts.
        list.append(QJsonObject{
            {"title", video->title},
            {"cover", m_content.coverURL(*video)},
            {"history", QJsonObject{{"oid", video->aid},
                                    {"bvid", video->bvid},
                                    {"cid", video->pages.first().cid},
                                    {"page", 1}}},
            {"author_name", owner.name},
            {"view_at", entry.at},
            {"progress", video->duration / 3},
            {"duration", video->duration},
        });
    }
    const qint64 last = m_state.history().isEmpty() ? 0 : m_state.history().last().at;
    return ok(QJsonObject{{"cursor", QJsonObject{{"max", 0}, {"view_at", last}, {"ps", size}}},
                          {"list", list}});
}

ZuviDemoResponse ZuviDemoService::watchLater(const ZuviDemoRequest &request)
{
    if (!sessionOf(request))
        return fail(kNotLoggedIn, QStringLiteral("账号未登录"));
    QJsonArray list;
    for (const ZuviDemoListEntry &entry : m_state.watchLater()) {
        if (const ZuviDemoVideo *video = m_content.videoForAID(entry.aid)) {
            QJsonObject item = accountVideoDictionary(*video);
            item.insert("add_at", entry.at);
            item.insert("progress", 0);
            list.append(item);
        }
    }
    return ok(QJsonObject{{"count", list.size()}, {"list", list}});
}

ZuviDemoResponse ZuviDemoService::favoriteFolders(const ZuviDemoRequest &request)
{
    bool valid = false;
    const qint64 mid = request.queryValue("up_mid").toLongLong(&valid);
    if (!valid || mid <= 0)
        return fail(kBadRequest, QStringLiteral("请求错误"));
    QJsonArray list;
    if (mid == ZuviDemoContent::kDemoMID) {
        for (const ZuviDemoFolder &folder : m_state.folders())
            list.append(QJsonObject{{"id", folder.id},
                                    {"mid", mid},
                                    {"title", folder.title},
                                    {"media_count", int(folder.entries.size())}});
    }
    return ok(QJsonObject{{"count", list.size()}, {"list", list}});
}

ZuviDemoResponse ZuviDemoService::favoriteContents(const ZuviDemoRequest &request)
{
    const ZuviDemoFolder *folder = m_state.folder(request.queryValue("media_id").toLongLong());
    if (!folder)
        return fail(kNotFound, QStringLiteral("收藏夹不存在"));
    const int page = clamped(request.queryValue("pn"), 1, 1, 100000);
    const int size = clamped(request.queryValue("ps"), 20, 1, 40);
    QJsonArray medias;
    for (int i = (page - 1) * size; i < qMin(int(folder->entries.size()), page * size); ++i) {
        const ZuviDemoListEntry &entry = folder->entries.at(i);
        const ZuviDemoVideo *found = m_content.videoForAID(entry.aid);
        if (!found)
            continue;
        const ZuviDemoVideo video = withState(*found);
        const ZuviDemoOwner &owner = m_content.owners().at(video.ownerIndex);
        // Folder entries name the uploader "upper" and keep counts in "cnt_info".
        medias.append(QJsonObject{
            {"id", video.aid},
            {"bvid", video.bvid},
            {"title", video.title},
            {"cover", m_content.coverURL(video)},
            {"intro", video.desc},
            {"duration", video.duration},
            {"upper", QJsonObject{{"mid", owner.mid},
                                  {"name", owner.name},
                                  {"face", m_content.faceURL(owner.mid)}}},
            {"cnt_info", QJsonObject{{"collect", video.favorite},
                                     {"play", video.view},
                                     {"danmaku", video.danmaku}}},
            {"fav_time", entry.at},
        });
    }
    const QJsonObject info{
        {"id", folder->id}, {"title", folder->title}, {"media_count", int(folder->entries.size())}};
    return ok(QJsonObject{
        {"info", info}, {"medias", medias}, {"has_more", page * size < folder->entries.size()}});
}
