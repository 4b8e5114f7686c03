#include "zuvidemoservice.h"

#include "platform/zuvischeduler.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLocale>
#include <QLoggingCategory>
#include <QRegularExpression>
#include <QSize>

// One line per request, for --verbose.
Q_LOGGING_CATEGORY(lcDemo, "zuvi.demo", QtInfoMsg)

namespace {
// Codes of the service's own envelope. Signed-out answers use -101; the
// others are this service's choice.
constexpr int kNotLoggedIn = -101;
constexpr int kCSRFFailed = -403;
constexpr int kDeviceUnknown = -412;
constexpr int kBadRequest = -400;
constexpr int kNotFound = -404;
constexpr int kWrongMethod = -405;

qint64 nowSeconds()
{
    return QDateTime::currentSecsSinceEpoch();
}

QByteArray httpDate(qint64 seconds)
{
    return QLocale::c()
               .toString(QDateTime::fromSecsSinceEpoch(seconds, Qt::UTC),
                         QStringLiteral("ddd, dd MMM yyyy hh:mm:ss"))
               .toLatin1() +
           " GMT";
}

qint64 parseHttpDate(const QByteArray &text)
{
    QString trimmed = QString::fromLatin1(text).trimmed();
    trimmed.chop(trimmed.endsWith(QLatin1String(" GMT")) ? 4 : 0);
    const QDateTime date =
        QLocale::c().toDateTime(trimmed, QStringLiteral("ddd, dd MMM yyyy hh:mm:ss"));
    if (!date.isValid())
        return -1;
    QDateTime utc = date;
    utc.setTimeSpec(Qt::UTC);
    return utc.toSecsSinceEpoch();
}

int clamped(const QString &text, int fallback, int low, int high)
{
    bool ok = false;
    const int value = text.toInt(&ok);
    return ok ? qBound(low, value, high) : fallback;
}

QString html(const QString &title, const QString &body)
{
    return QStringLiteral("<!DOCTYPE html><html lang=\"zh-CN\"><head><meta charset=\"utf-8\">"
                          "<meta name=\"viewport\" content=\"width=device-width\"><title>%1</title>"
                          "<style>body{font-family:sans-serif;max-width:34em;margin:3em auto;"
                          "padding:0 1em;color:#333}h1{color:#ee709c}button{font-size:1.2em;"
                          "padding:.5em 2em;background:#ee709c;color:#fff;border:0;"
                          "border-radius:6px}code{background:#f4f4f4;padding:0 .3em}</style>"
                          "</head><body><h1>%1</h1>%2</body></html>")
        .arg(title.toHtmlEscaped(), body);
}

ZuviDemoResponse htmlResponse(const QString &title, const QString &body, int status = 200)
{
    return ZuviDemoResponse::content(html(title, body).toUtf8(), "text/html; charset=utf-8",
                                     status);
}

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

ZuviDemoService::ZuviDemoService(const ZuviDemoOptions &options, ZuviScheduler *scheduler,
                                 QObject *parent)
    : QObject(parent), m_options(options), m_scheduler(scheduler), m_content(options.seed),
      m_state(&m_content, options.qrLifetimeSeconds), m_images(options.seed)
{
    m_danmakuCache.setMaxCost(64 * 1024 * 1024);
    registerRoutes();
    m_server.setHandler(
        [this](const ZuviDemoRequest &request, const ZuviDemoHttpServer::Responder &respond) {
            handle(request, respond);
        });
}

ZuviDemoService::~ZuviDemoService()
{
    m_scheduler->cancelAll(this);
}

bool ZuviDemoService::start(quint16 port, QString *errorText)
{
    if (!m_server.listen(port, errorText))
        return false;
    m_content.setOrigin(origin());
    if (!m_options.dataDirectory.isEmpty() &&
        !m_state.attachDirectory(m_options.dataDirectory, errorText))
        return false;
    return true;
}

QString ZuviDemoService::origin() const
{
    return QStringLiteral("http://127.0.0.1:%1").arg(port());
}

void ZuviDemoService::registerRoutes()
{
    m_routes = {
        {"/x/web-interface/popular", &ZuviDemoService::popular},
        {"/x/web-interface/index/top/feed/rcmd", &ZuviDemoService::recommended},
        {"/x/web-interface/ranking/v2", &ZuviDemoService::ranking},
        {"/x/web-interface/ranking/region", &ZuviDemoService::legacyRanking},
        {"/x/web-interface/search/type", &ZuviDemoService::search},
        {"/x/web-interface/history/cursor", &ZuviDemoService::history},
        {"/x/v2/history/toview/web", &ZuviDemoService::watchLater},
        {"/x/v3/fav/folder/created/list-all", &ZuviDemoService::favoriteFolders},
        {"/x/v3/fav/resource/list", &ZuviDemoService::favoriteContents},
        {"/x/web-interface/view", &ZuviDemoService::view},
        {"/x/player/playurl", &ZuviDemoService::playURL},
        {"/x/v1/dm/list.so", &ZuviDemoService::danmaku},
        {"/x/web-interface/archive/related", &ZuviDemoService::related},
        {"/x/v2/reply", &ZuviDemoService::comments},
        {"/x/v2/reply/main", &ZuviDemoService::mainComments},
        {"/x/polymer/web-dynamic/v1/feed/all", &ZuviDemoService::following},
        {"/x/passport-login/web/qrcode/generate", &ZuviDemoService::qrGenerate},
        {"/x/passport-login/web/qrcode/poll", &ZuviDemoService::qrPoll},
        {"/x/web-interface/nav", &ZuviDemoService::nav},
        {"/x/relation/stat", &ZuviDemoService::relationStat},
        {"/x/frontend/finger/spi", &ZuviDemoService::fingerprint},
        {"/x/web-interface/archive/like", &ZuviDemoService::like},
        {"/x/v3/fav/resource/deal", &ZuviDemoService::favoriteDeal},
        {"/x/v2/history/toview/add", &ZuviDemoService::watchLaterAdd},
        {"/x/v2/reply/add", &ZuviDemoService::replyAdd},
        {"/x/v2/dm/post", &ZuviDemoService::danmakuPost},
        {"/config/remote_config.json", &ZuviDemoService::remoteConfig},
        {"/config/remote_config_dev.json", &ZuviDemoService::remoteConfig},
        {"/qr/login", &ZuviDemoService::qrPage},
        {"/qr/confirm", &ZuviDemoService::qrConfirm},
        {"/admin/announce", &ZuviDemoService::adminAnnounce},
        {"/admin/confirm", &ZuviDemoService::adminConfirm},
        {"/admin/fail", &ZuviDemoService::adminFail},
        {"/admin/state", &ZuviDemoService::adminState},
        {"/", &ZuviDemoService::index},
    };
}

void ZuviDemoService::handle(const ZuviDemoRequest &request,
                             const ZuviDemoHttpServer::Responder &answer)
{
    QElapsedTimer clock;
    clock.start();
    const ZuviDemoHttpServer::Responder respond = [request, answer,
                                                   clock](const ZuviDemoResponse &response) {
        qCDebug(lcDemo).noquote() << request.method << request.path << request.header("Range")
                                  << (response.drop ? 0 : response.status) << response.body.size()
                                  << "bytes" << clock.nsecsElapsed() / 1000 << "µs";
        answer(response);
    };
    // The admin endpoints and the confirmation page never fail on purpose:
    // they are how failures are switched off again.
    const bool controlPath = request.path.startsWith("/admin/") || request.path.startsWith("/qr/");
    if (!controlPath) {
        if (const std::optional<ZuviDemoFailure> failure = m_failures.take(request.path)) {
            applyFailure(*failure, request, respond);
            return;
        }
    }
    respond(dispatch(request));
}

void ZuviDemoService::applyFailure(const ZuviDemoFailure &failure, const ZuviDemoRequest &request,
                                   const ZuviDemoHttpServer::Responder &respond)
{
    switch (failure.mode) {
    case ZuviDemoFailure::Slow:
        m_scheduler->callAfter(this, QStringLiteral("slow-answer"), failure.delayMs / 1000.0,
                               [this, request, respond] { respond(dispatch(request)); });
        return;
    case ZuviDemoFailure::ServiceError:
        respond(fail(failure.code,
                     failure.message.isEmpty()
                         ? QStringLiteral("服务暂时不可用（演示故障 %1）").arg(failure.code)
                         : failure.message));
        return;
    case ZuviDemoFailure::BrokenBody: {
        // The real answer, cut off in the middle, as a failing proxy leaves it.
        ZuviDemoResponse response = dispatch(request);
        response.body.truncate(qMax(1, int(response.body.size() / 2)));
        if (response.body.isEmpty() || response.body == "{")
            response.body = "{\"code\":0,\"data\":";
        respond(response);
        return;
    }
    case ZuviDemoFailure::HtmlError:
        respond(htmlResponse(
            QStringLiteral("502 Bad Gateway"),
            QStringLiteral("<p>上游服务暂时不可用，请稍后再试。</p><hr>oldzuvi-demo-service"),
            502));
        return;
    case ZuviDemoFailure::Drop:
        respond(ZuviDemoResponse::dropped());
        return;
    }
}

ZuviDemoResponse ZuviDemoService::dispatch(const ZuviDemoRequest &request)
{
    const auto route = m_routes.constFind(request.path);
    if (route != m_routes.constEnd())
        return (this->*route.value())(request);
    if (request.path.startsWith("/img/"))
        return picture(request);
    if (request.path.startsWith("/media/"))
        return media(request);
    static const QRegularExpression legacyDanmaku(QStringLiteral("^/(\\d+)\\.xml$"));
    const QRegularExpressionMatch match = legacyDanmaku.match(request.path);
    if (match.hasMatch())
        return ZuviDemoResponse::content(danmakuDocument(match.captured(1).toLongLong()),
                                         "text/xml; charset=utf-8");
    return ZuviDemoResponse::content("404 page not found\n", "text/plain; charset=utf-8", 404);
}

ZuviDemoResponse ZuviDemoService::ok(const QJsonValue &data, const QString &message)
{
    return ZuviDemoResponse::json(
        QJsonDocument(QJsonObject{{"code", 0}, {"message", message}, {"ttl", 1}, {"data", data}}));
}

ZuviDemoResponse ZuviDemoService::fail(int code, const QString &message, const QJsonValue &data)
{
    QJsonObject root{{"code", code}, {"message", message}, {"ttl", 1}};
    if (!data.isUndefined())
        root.insert("data", data);
    return ZuviDemoResponse::json(QJsonDocument(root));
}

const ZuviDemoSession *ZuviDemoService::sessionOf(const ZuviDemoRequest &request) const
{
    const QString sessdata = request.cookies().value("SESSDATA");
    return sessdata.isEmpty() ? nullptr : m_state.sessionFor(sessdata);
}

std::optional<ZuviDemoResponse> ZuviDemoService::checkWrite(const ZuviDemoRequest &request,
                                                            const ZuviDemoSession **session) const
{
    if (request.method != "POST")
        return fail(kWrongMethod, QStringLiteral("请求方法不支持"));
    *session = sessionOf(request);
    if (!*session)
        return fail(kNotLoggedIn, QStringLiteral("账号未登录"));
    // The token travels twice, as a cookie and as a form field; both must
    // be the session's own.
    const QString formToken = request.form().value("csrf");
    if (formToken.isEmpty() || formToken != (*session)->csrf ||
        request.cookies().value("zuvi_jct") != (*session)->csrf)
        return fail(kCSRFFailed, QStringLiteral("csrf 校验失败"));
    const QMap<QString, QString> cookies = request.cookies();
    if (!m_state.isKnownDevice(cookies.value("buvid3")) || cookies.value("buvid4").isEmpty() ||
        cookies.value("buvid_fp").isEmpty())
        return fail(kDeviceUnknown, QStringLiteral("请求被拦截：缺少设备标识"));
    return std::nullopt;
}

ZuviDemoVideo ZuviDemoService::withState(const ZuviDemoVideo &video) const
{
    // Counts move with what signed-in users did.
    ZuviDemoVideo result = video;
    result.like += m_state.isLiked(video.aid) ? 1 : 0;
    result.reply += m_state.postedReplies(video.aid).size();
    for (const ZuviDemoPage &page : video.pages)
        result.danmaku += m_state.postedDanmaku(page.cid).size();
    result.favorite += m_state.isFavorite(video.aid) ? 1 : 0;
    return result;
}

QJsonObject ZuviDemoService::accountVideoDictionary(const ZuviDemoVideo &video) const
{
    return m_content.popularDictionary(withState(video));
}

// ---------------------------------------------------------------- video lists

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

// ---------------------------------------------------------------- one video

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

// ---------------------------------------------------------------- account

ZuviDemoResponse ZuviDemoService::qrGenerate(const ZuviDemoRequest &)
{
    const ZuviDemoQRLogin &login = m_state.createQRLogin(m_scheduler->now());
    const QString url = origin() + "/qr/login?qrcode_key=" + login.key;
    emit notice(QStringLiteral(
                    "扫码登录：在浏览器打开 %1 确认，或运行 oldzuvi-demo-service confirm --port %2")
                    .arg(url)
                    .arg(port()));
    return ok(QJsonObject{{"url", url}, {"qrcode_key", login.key}});
}

ZuviDemoResponse ZuviDemoService::qrPoll(const ZuviDemoRequest &request)
{
    const QString key = request.queryValue("qrcode_key");
    if (key.isEmpty())
        return fail(kBadRequest, QStringLiteral("缺少 qrcode_key"));
    ZuviDemoSession session;
    const int code = m_state.pollQRLogin(key, m_scheduler->now(), &session);
    const QString message = code == 86101   ? QStringLiteral("未扫码")
                            : code == 86090 ? QStringLiteral("已扫码，等待确认")
                            : code == 86038 ? QStringLiteral("二维码已失效")
                                            : QString();
    ZuviDemoResponse response = ok(QJsonObject{{"code", code}, {"message", message}});
    if (code != 0)
        return response;
    emit notice(QStringLiteral("登录成功：演示用户（mid %1）").arg(session.mid));
    const QByteArray attributes =
        "; Path=/; Expires=" + httpDate(nowSeconds() + 180 * 86400) + "; Max-Age=15552000";
    const QList<QPair<QByteArray, QByteArray>> cookies = {
        {"DedeUserID", QByteArray::number(session.mid)},
        {"DedeUserID__ckMd5", session.ckMd5.toLatin1()},
        {"SESSDATA", session.sessdata.toLatin1()},
        {"zuvi_jct", session.csrf.toLatin1()},
        // Not a login cookie: a client keeps only the four above.
        {"demo_visit", QByteArray::number(nowSeconds())},
    };
    for (const auto &cookie : cookies) {
        response.addHeader("Set-Cookie", cookie.first + '=' + cookie.second + attributes +
                                             (cookie.first == "SESSDATA" ? "; HttpOnly" : ""));
    }
    return response;
}

ZuviDemoResponse ZuviDemoService::nav(const ZuviDemoRequest &request)
{
    const ZuviDemoSession *session = sessionOf(request);
    if (!session)
        return fail(kNotLoggedIn, QStringLiteral("账号未登录"), QJsonObject{{"isLogin", false}});
    return ok(QJsonObject{{"isLogin", true},
                          {"mid", session->mid},
                          {"uname", QStringLiteral("演示用户")},
                          {"face", m_content.faceURL(session->mid)},
                          {"level_info", QJsonObject{{"current_level", 5}}},
                          {"vipStatus", 1},
                          {"money", 128.5}});
}

ZuviDemoResponse ZuviDemoService::relationStat(const ZuviDemoRequest &request)
{
    if (!sessionOf(request))
        return fail(kNotLoggedIn, QStringLiteral("账号未登录"));
    const qint64 mid = request.queryValue("vmid").toLongLong();
    qint64 following = 0;
    qint64 follower = 0;
    if (mid == ZuviDemoContent::kDemoMID) {
        following = 20; // the uploaders of the following feed
        follower = 12345;
    } else if (const ZuviDemoOwner *owner = m_content.ownerForMID(mid)) {
        following = 100 + owner->level * 17;
        follower = owner->follower;
    }
    return ok(QJsonObject{{"mid", mid}, {"following", following}, {"follower", follower}});
}

ZuviDemoResponse ZuviDemoService::fingerprint(const ZuviDemoRequest &)
{
    const QPair<QString, QString> identity = m_state.issueDeviceIdentity();
    return ok(QJsonObject{{"b_3", identity.first}, {"b_4", identity.second}});
}

// ---------------------------------------------------------------- writes

ZuviDemoResponse ZuviDemoService::like(const ZuviDemoRequest &request)
{
    const ZuviDemoSession *session = nullptr;
    if (std::optional<ZuviDemoResponse> refused = checkWrite(request, &session))
        return *refused;
    const QMap<QString, QString> form = request.form();
    if (!m_content.videoForAID(form.value("aid").toLongLong()))
        return fail(kNotFound, QStringLiteral("视频不存在"));
    if (form.value("like") != QLatin1String("1"))
        return fail(kBadRequest, QStringLiteral("请求错误"));
    if (!m_state.like(form.value("aid").toLongLong()))
        return fail(-409, QStringLiteral("已经点过赞了"));
    return ok(QJsonValue(), QStringLiteral("点赞成功"));
}

ZuviDemoResponse ZuviDemoService::favoriteDeal(const ZuviDemoRequest &request)
{
    const ZuviDemoSession *session = nullptr;
    if (std::optional<ZuviDemoResponse> refused = checkWrite(request, &session))
        return *refused;
    const QMap<QString, QString> form = request.form();
    const qint64 aid = form.value("rid").toLongLong();
    if (form.value("type") != QLatin1String("2") || form.value("add_media_ids").isEmpty())
        return fail(kBadRequest, QStringLiteral("请求错误"));
    if (!m_content.videoForAID(aid))
        return fail(kNotFound, QStringLiteral("视频不存在"));
    const QStringList folders = form.value("add_media_ids").split(',', Qt::SkipEmptyParts);
    for (const QString &folder : folders) {
        if (!m_state.folder(folder.toLongLong()))
            return fail(kNotFound, QStringLiteral("收藏夹不存在"));
    }
    for (const QString &folder : folders)
        m_state.addFavorite(folder.toLongLong(), aid, nowSeconds());
    return ok(QJsonObject{{"prompt", false}}, QStringLiteral("收藏成功"));
}

ZuviDemoResponse ZuviDemoService::watchLaterAdd(const ZuviDemoRequest &request)
{
    const ZuviDemoSession *session = nullptr;
    if (std::optional<ZuviDemoResponse> refused = checkWrite(request, &session))
        return *refused;
    const qint64 aid = request.form().value("aid").toLongLong();
    if (!m_content.videoForAID(aid))
        return fail(kNotFound, QStringLiteral("视频不存在"));
    const bool fresh = m_state.addWatchLater(aid, nowSeconds());
    return ok(QJsonValue(), fresh ? QStringLiteral("已添加到稍后再看")
                                  : QStringLiteral("已在稍后再看中，已移到最前"));
}

ZuviDemoResponse ZuviDemoService::replyAdd(const ZuviDemoRequest &request)
{
    const ZuviDemoSession *session = nullptr;
    if (std::optional<ZuviDemoResponse> refused = checkWrite(request, &session))
        return *refused;
    const QMap<QString, QString> form = request.form();
    const ZuviDemoVideo *video = m_content.videoForAID(form.value("oid").toLongLong());
    if (form.value("type") != QLatin1String("1") || !video)
        return fail(kNotFound, QStringLiteral("评论区不存在"));
    const QString message = form.value("message").trimmed();
    if (message.isEmpty())
        return fail(kBadRequest, QStringLiteral("评论内容不能为空"));
    if (message.size() > 1000)
        return fail(kBadRequest, QStringLiteral("评论字数过多"));
    const qint64 rpid = 900000000000LL + m_state.nextID();
    const QJsonObject reply{
        {"rpid", rpid},
        {"mid", session->mid},
        {"ctime", nowSeconds()},
        {"like", 0},
        {"member", QJsonObject{{"mid", QString::number(session->mid)},
                               {"uname", QStringLiteral("演示用户")},
                               {"avatar", m_content.faceURL(session->mid)}}},
        {"content", QJsonObject{{"message", message.toHtmlEscaped()}}},
    };
    m_state.addReply(video->aid, reply);
    return ok(QJsonObject{{"rpid", rpid}, {"reply", reply}}, QStringLiteral("发送成功"));
}

ZuviDemoResponse ZuviDemoService::danmakuPost(const ZuviDemoRequest &request)
{
    const ZuviDemoSession *session = nullptr;
    if (std::optional<ZuviDemoResponse> refused = checkWrite(request, &session))
        return *refused;
    const QMap<QString, QString> form = request.form();
    const qint64 cid = form.value("oid").toLongLong();
    const ZuviDemoVideo *video = m_content.videoForCID(cid);
    if (!video || video->aid != form.value("aid").toLongLong())
        return fail(kNotFound, QStringLiteral("视频不存在"));
    const QString text = form.value("msg").trimmed();
    if (text.isEmpty())
        return fail(kBadRequest, QStringLiteral("弹幕内容不能为空"));
    if (text.size() > 100)
        return fail(kBadRequest, QStringLiteral("弹幕字数超出限制"));
    ZuviDemoDanmaku item;
    item.time = qMax(0, form.value("progress").toInt()) / 1000.0;
    item.mode = clamped(form.value("mode"), 1, 1, 8);
    item.fontSize = clamped(form.value("fontsize"), 25, 12, 64);
    item.color = quint32(qBound(qint64(0), form.value("color").toLongLong(), qint64(0xFFFFFF)));
    item.sentAt = nowSeconds();
    item.userHash = QString::number(qHash(session->mid), 16).right(8);
    item.id = 800000000000LL + m_state.nextID();
    item.text = text;
    m_state.addDanmaku(cid, item);
    m_danmakuCache.remove(cid);
    return ok(QJsonObject{{"dmid", item.id}, {"dmid_str", QString::number(item.id)}},
              QStringLiteral("发送成功"));
}

// ---------------------------------------------------------------- configuration, pictures, media

QByteArray ZuviDemoService::configDocument(bool developer) const
{
    const ZuviDemoConfigMessage &message = m_state.configMessage(developer);
    QJsonObject messageObject{{"version", message.version}, {"text", message.text}};
    if (!message.image.isEmpty())
        messageObject.insert("image", message.image);
    return QJsonDocument(QJsonObject{{"message", messageObject},
                                     {"service", "oldzuvi-demo-service"},
                                     {"channel", developer ? "developer" : "main"}})
        .toJson(QJsonDocument::Indented);
}

ZuviDemoResponse ZuviDemoService::remoteConfig(const ZuviDemoRequest &request)
{
    const bool developer = request.path.contains("_dev");
    const QByteArray body = configDocument(developer);
    const QByteArray etag =
        '"' + QCryptographicHash::hash(body, QCryptographicHash::Sha1).toHex().left(20) + '"';
    const qint64 modified = m_state.configMessage(developer).modifiedAt;
    const QByteArray lastModified = httpDate(modified);
    // An entity tag, when sent, decides alone; otherwise the date does.
    const QByteArray ifNoneMatch = request.header("If-None-Match");
    const QByteArray ifModifiedSince = request.header("If-Modified-Since");
    bool unchanged = false;
    if (!ifNoneMatch.isEmpty()) {
        for (const QByteArray &tag : ifNoneMatch.split(','))
            unchanged = unchanged || tag.trimmed() == etag || tag.trimmed() == "W/" + etag ||
                        tag.trimmed() == "*";
    } else if (!ifModifiedSince.isEmpty()) {
        const qint64 since = parseHttpDate(ifModifiedSince);
        unchanged = since >= 0 && modified <= since;
    }
    ZuviDemoResponse response =
        unchanged ? ZuviDemoResponse::content(QByteArray(), QByteArray(), 304)
                  : ZuviDemoResponse::content(body, "application/json; charset=utf-8");
    response.addHeader("ETag", etag);
    response.addHeader("Last-Modified", lastModified);
    response.addHeader("Cache-Control", "no-cache");
    return response;
}

ZuviDemoResponse ZuviDemoService::picture(const ZuviDemoRequest &request)
{
    // "/img/<kind>/<key>.jpg", optionally followed by the thumbnail suffix
    // "@<w>w_<h>h_1c_<q>q.jpg" that asks for a size and a quality.
    static const QRegularExpression pattern(
        QStringLiteral("^/img/(cover|face|pic)/"
                       "([A-Za-z0-9_-]+)\\.(?:jpg|png)(?:@(\\d+)w_(\\d+)h_1c_(\\d+)q\\.jpg)?$"));
    const QRegularExpressionMatch match = pattern.match(request.path);
    if (!match.hasMatch())
        return ZuviDemoResponse::content("404 picture not found\n", "text/plain", 404);
    const QString kindName = match.captured(1);
    const ZuviDemoImageRenderer::Kind kind =
        kindName == QLatin1String("cover")  ? ZuviDemoImageRenderer::Cover
        : kindName == QLatin1String("face") ? ZuviDemoImageRenderer::Face
                                            : ZuviDemoImageRenderer::Picture;
    QSize size = ZuviDemoImageRenderer::naturalSize(kind);
    int quality = 85;
    if (match.hasCaptured(3) && !match.captured(3).isEmpty()) {
        size = QSize(match.captured(3).toInt(), match.captured(4).toInt());
        quality = match.captured(5).toInt();
        if (size.width() < 1 || size.height() < 1)
            return ZuviDemoResponse::content("400 bad size\n", "text/plain", 400);
    }
    ZuviDemoResponse response = ZuviDemoResponse::content(
        m_images.jpeg(kind, match.captured(2), size, quality), "image/jpeg");
    response.addHeader("Cache-Control", "max-age=86400");
    response.acceptsRanges = true;
    return response;
}

ZuviDemoResponse ZuviDemoService::media(const ZuviDemoRequest &request)
{
    static const QRegularExpression pattern(QStringLiteral("^/media/([A-Za-z0-9_-]+\\.mp4)$"));
    const QRegularExpressionMatch match = pattern.match(request.path);
    if (!match.hasMatch())
        return ZuviDemoResponse::content("404 media not found\n", "text/plain", 404);
    const QString name = match.captured(1);
    auto cached = m_mediaCache.find(name);
    if (cached == m_mediaCache.end()) {
        QFile file(QDir(m_options.mediaDirectory).filePath(name));
        if (!file.open(QIODevice::ReadOnly))
            return ZuviDemoResponse::content(
                "404 media not found: run demo/make-media.sh build/media\n", "text/plain", 404);
        cached = m_mediaCache.insert(name, file.readAll());
    }
    ZuviDemoResponse response = ZuviDemoResponse::content(cached.value(), "video/mp4");
    response.acceptsRanges = true;
    return response;
}

// ---------------------------------------------------------------- the person running the service

ZuviDemoResponse ZuviDemoService::qrPage(const ZuviDemoRequest &request)
{
    const QString key = request.queryValue("qrcode_key");
    // Opening the page is scanning the code.
    if (!m_state.scanQRLogin(key, m_scheduler->now()))
        return htmlResponse(
            QStringLiteral("二维码已失效"),
            QStringLiteral("<p>这个登录二维码已过期或已使用，请在客户端重新生成。</p>"));
    return htmlResponse(QStringLiteral("确认登录 oldZuvi"),
                        QStringLiteral("<p>客户端正在以<b>演示用户</b>的身份登录。</p>"
                                       "<form method=\"post\" action=\"/qr/confirm\">"
                                       "<input type=\"hidden\" name=\"qrcode_key\" value=\"%1\">"
                                       "<button type=\"submit\">确认登录</button></form>")
                            .arg(key.toHtmlEscaped()));
}

ZuviDemoResponse ZuviDemoService::qrConfirm(const ZuviDemoRequest &request)
{
    const QString key = request.form().value("qrcode_key", request.queryValue("qrcode_key"));
    if (key.isEmpty() || m_state.confirmQRLogin(key, m_scheduler->now()).isEmpty())
        return htmlResponse(
            QStringLiteral("二维码已失效"),
            QStringLiteral("<p>这个登录二维码已过期或已使用，请在客户端重新生成。</p>"));
    emit notice(QStringLiteral("已确认登录，客户端下次轮询时完成登录"));
    return htmlResponse(QStringLiteral("已确认"),
                        QStringLiteral("<p>已确认登录，客户端会在下一次查询时完成登录。</p>"));
}

ZuviDemoResponse ZuviDemoService::adminAnnounce(const ZuviDemoRequest &request)
{
    const QMap<QString, QString> form = request.form();
    const QString text = form.value("text").trimmed();
    if (text.isEmpty() && form.value("image").isEmpty())
        return fail(kBadRequest, QStringLiteral("消息内容不能为空"));
    const bool developer = form.value("dev") == QLatin1String("1");
    const int version =
        m_state.announce(developer, text, form.value("image").trimmed(), nowSeconds());
    emit notice(QStringLiteral("已发布%1消息 version %2：%3")
                    .arg(developer ? QStringLiteral("开发者") : QString())
                    .arg(version)
                    .arg(text));
    return ok(QJsonObject{{"version", version}});
}

ZuviDemoResponse ZuviDemoService::adminConfirm(const ZuviDemoRequest &request)
{
    const QString key =
        m_state.confirmQRLogin(request.form().value("qrcode_key"), m_scheduler->now());
    if (key.isEmpty())
        return fail(1, QStringLiteral("没有等待确认的登录二维码"));
    emit notice(QStringLiteral("已确认登录，客户端下次轮询时完成登录"));
    return ok(QJsonObject{{"qrcode_key", key}});
}

ZuviDemoResponse ZuviDemoService::adminFail(const ZuviDemoRequest &request)
{
    const QMap<QString, QString> form = request.form();
    const QString path = form.value("path").trimmed();
    const QString mode = form.value("mode").trimmed();
    if (path.isEmpty() && mode == QLatin1String("off")) {
        m_failures.clearAll();
        return ok(m_failures.describe());
    }
    std::optional<ZuviDemoFailure> failure;
    QString errorText;
    if (!path.startsWith('/') || !ZuviDemoFailureSwitches::parseMode(mode, &failure, &errorText))
        return fail(kBadRequest,
                    errorText.isEmpty() ? QStringLiteral("路径必须以 / 开头") : errorText);
    if (!failure) {
        m_failures.clear(path);
    } else {
        const int times = form.value("times").toInt();
        failure->remaining = times > 0 ? times : -1;
        m_failures.set(path, *failure);
    }
    return ok(m_failures.describe());
}

ZuviDemoResponse ZuviDemoService::adminState(const ZuviDemoRequest &)
{
    QJsonArray folders;
    for (const ZuviDemoFolder &folder : m_state.folders())
        folders.append(QJsonObject{
            {"id", folder.id}, {"title", folder.title}, {"count", int(folder.entries.size())}});
    return ok(QJsonObject{{"seed", QString::number(m_content.seed())},
                          {"origin", origin()},
                          {"videos", int(m_content.videos().size())},
                          {"history", int(m_state.history().size())},
                          {"watchLater", int(m_state.watchLater().size())},
                          {"folders", folders},
                          {"messageVersion", m_state.configMessage(false).version},
                          {"failures", m_failures.describe()}});
}

ZuviDemoResponse ZuviDemoService::index(const ZuviDemoRequest &)
{
    return htmlResponse(
        QStringLiteral("oldZuvi 演示服务"),
        QStringLiteral(
            "<p>这个本机服务为 oldZuvi 提供生成的视频、弹幕、评论、关注动态与登录。</p>"
            "<ul><li>热门：<a "
            "href=\"/x/web-interface/popular?pn=1&amp;ps=20\">/x/web-interface/popular</a></li>"
            "<li>配置：<a href=\"/config/remote_config.json\">/config/remote_config.json</a></li>"
            "<li>状态：<a href=\"/admin/state\">/admin/state</a></li></ul>"
            "<p>发布消息：<code>oldzuvi-demo-service announce \"文字\" --port %1</code><br>"
            "确认登录：<code>oldzuvi-demo-service confirm --port %1</code><br>"
            "故障开关：<code>oldzuvi-demo-service fail /x/web-interface/popular code:-500 --port "
            "%1</code></p>")
            .arg(port()));
}
