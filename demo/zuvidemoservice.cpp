// The demo service's routing: construction and start, the table from path
// to endpoint, the failure switches applied in front of it, the envelope and
// the checks every write makes. The endpoints live in zuvidemoservice*.cpp
// by family.
#include "zuvidemoservice.h"

#include "zuvidemoservicesupport.h"

#include "platform/zuvischeduler.h"

#include <QElapsedTimer>
#include <QLoggingCategory>

// One line per request, for --verbose.
Q_LOGGING_CATEGORY(lcDemo, "zuvi.demo", QtInfoMsg)

using namespace ZuviDemoServiceSupport;

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
    // The first message's picture lives on this service, whose address is
    // only known now; a stored state attached next keeps its own messages.
    m_state.seedMessages();
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
