#include "zuviapiclient.h"

#include "model/zuvijsoncoercion.h"
#include "platform/zuvidebuglog.h"
#include "platform/zuvidefaults.h"
#include "platform/zuvihttptransport.h"
#include "platform/zuvinotificationcenter.h"
#include "platform/zuvischeduler.h"
#include "platform/zuviworkqueue.h"
#include "zuviaccountparser.h"
#include "zuvifollowingfeedparser.h"
#include "zuvivideocontentparser.h"
#include "zuvivideolistparser.h"

#include <QDateTime>
#include <QJsonDocument>
#include <QNetworkCookie>
#include <QPointer>

const char *const ZuviAPIClient::kErrorDomain = "ZuviAPIClientErrorDomain";
const char *const ZuviAPIClient::kCredentialCookieKey = "ZuviCredentialCookie";
const char *const ZuviAPIClient::kDeveloperModeKey = "ZuviDeveloperModeEnabled";
const char *const ZuviAPIClient::kRequestErrorLogUpdatedNotification =
    "ZuviAPIRequestErrorLogUpdatedNotification";
const char *const ZuviAPIClient::kAPIUserAgent =
    "Mozilla/5.0 (iPad; CPU OS 6_1 like Mac OS X) AppleWebKit/536.26 (KHTML, like Gecko) "
    "Version/6.0 Mobile/10B141 Safari/8536.25 oldZuvi/1.0";
const char *const ZuviAPIClient::kBrowserUserAgent =
    "Mozilla/5.0 (Macintosh; Intel Mac OS X 10_8) AppleWebKit/536.26 (KHTML, like Gecko) "
    "Version/6.0 Safari/536.26";
const char *const ZuviAPIClient::kDanmakuLogNotification = "ZuviDanmakuAPILogNotification";
const char *const ZuviAPIClient::kSearchRetryCallName = "retrySearchVideos";

namespace {
const char *const kAcceptLanguage = "zh-CN,zh;q=0.9,en;q=0.8";

// The login cookies first, then the device identity cookies, whatever else was merged in.
const char *const kCookieHeadOrder[] = {
    "DedeUserID", "DedeUserID__ckMd5", "SESSDATA", "zuvi_jct", "buvid3",
    "buvid4",     "buvid_fp",          "b_nut"};
const char *const kLoginCookieNames[] = {"DedeUserID", "DedeUserID__ckMd5", "SESSDATA", "zuvi_jct"};

} // namespace

ZuviAPIClient::ZuviAPIClient(ZuviDefaults *defaults, ZuviDebugLog *log,
                             ZuviNotificationCenter *center, const ZuviEndpoints &endpoints,
                             ZuviScheduler *scheduler, QObject *parent)
    : QObject(parent), m_defaults(defaults), m_log(log), m_center(center), m_endpoints(endpoints),
      m_scheduler(scheduler ? scheduler : ZuviScheduler::sharedScheduler()),
      m_networkQueue(std::make_unique<ZuviWorkQueue>(3, "zuvi.net")),
      m_transport(std::make_unique<ZuviHTTPTransport>())
{
}

ZuviAPIClient::~ZuviAPIClient()
{
    // The transport goes first so that no answer reaches a queue being torn down.
    m_transport.reset();
    m_networkQueue->waitForDone();
}

ZuviAPIClient *ZuviAPIClient::sharedClient()
{
    static ZuviAPIClient *client =
        new ZuviAPIClient(ZuviDefaults::standardDefaults(), ZuviDebugLog::sharedLog(),
                          ZuviNotificationCenter::defaultCenter(), ZuviEndpoints::shared(),
                          ZuviScheduler::sharedScheduler());
    return client;
}

// --- Request builders

ZuviURLRequest ZuviAPIClient::requestWithURLString(const QString &urlString,
                                                   const QString &referer) const
{
    ZuviURLRequest request;
    request.url = QUrl(urlString);
    request.timeoutMs = m_timeoutMs;
    request.setHeader("User-Agent", kAPIUserAgent);
    request.setHeader("Referer", referer.toUtf8());
    request.setHeader("Accept", "application/json,text/plain,*/*");
    request.setHeader("Accept-Language", kAcceptLanguage);
    const QString cookie = credentialCookie();
    if (!cookie.isEmpty())
        request.setHeader("Cookie", cookie.toUtf8());
    return request;
}

ZuviURLRequest ZuviAPIClient::browserRequestWithURLString(const QString &urlString,
                                                          const QString &referer,
                                                          const QString &cookie) const
{
    ZuviURLRequest request;
    request.url = QUrl(urlString);
    request.timeoutMs = m_timeoutMs;
    request.setHeader("User-Agent", kBrowserUserAgent);
    request.setHeader("Referer", referer.toUtf8());
    request.setHeader("Accept", "*/*");
    request.setHeader("Accept-Language", kAcceptLanguage);
    request.setHeader("Origin", originOf(m_endpoints.web).toUtf8());
    if (!cookie.isEmpty())
        request.setHeader("Cookie", cookie.toUtf8());
    return request;
}

ZuviURLRequest ZuviAPIClient::POSTRequestWithURLString(const QString &urlString,
                                                       const QString &referer,
                                                       const QVariantMap &parameters,
                                                       const QString &cookie) const
{
    ZuviURLRequest request = browserRequestWithURLString(urlString, referer, cookie);
    request.method = "POST";
    request.body = formBodyStringWithParameters(parameters).toUtf8();
    request.setHeader("Content-Type", "application/x-www-form-urlencoded; charset=UTF-8");
    request.setHeader("Content-Length", QByteArray::number(request.body.size()));
    return request;
}

void ZuviAPIClient::send(const ZuviURLRequest &request, ResponseHandler handler)
{
    ZuviWorkQueue *queue = m_networkQueue.get();
    m_transport->send(request,
                      [queue, handler](const ZuviHTTPResponse &response, const ZuviError &error) {
                          queue->run([handler, response, error] { handler(response, error); });
                      });
}

QString ZuviAPIClient::videoRefererForBVID(const QString &bvid) const
{
    const QString escaped = urlEscapedString(bvid);
    if (escaped.isEmpty())
        return siteRoot();
    return originOf(m_endpoints.web) + "/video/" + escaped + "/";
}

// --- Form and URL encoding

QString ZuviAPIClient::formBodyStringWithParameters(const QVariantMap &parameters)
{
    // QVariantMap keeps its keys in plain code-unit order: upper case before
    // lower case, "aid" before "csrf" before "message".
    QStringList pairs;
    for (auto it = parameters.constBegin(); it != parameters.constEnd(); ++it) {
        const QString value = stringFromObject(QJsonValue::fromVariant(it.value()));
        pairs.append(formEscapedString(it.key()) + "=" + formEscapedString(value));
    }
    return pairs.join("&");
}

QString ZuviAPIClient::formEscapedString(const QString &text)
{
    if (text.isEmpty())
        return QString();
    // Only the unreserved characters (letters, digits, "-._~") stay as they are.
    return QString::fromLatin1(QUrl::toPercentEncoding(text));
}

QString ZuviAPIClient::urlEscapedString(const QString &text)
{
    if (text.isEmpty())
        return QString();
    // Reserved characters are legal in a URL and stay untouched; a lone "%"
    // is escaped so that the text reads back as it was written.
    return QString::fromLatin1(QUrl::toPercentEncoding(text, "!#$&'()*+,/:;=?@[]"));
}

// --- Cookies and the stored credential

ZuviCookieDictionary ZuviAPIClient::mutableCookieDictionaryFromString(const QString &cookie)
{
    ZuviCookieDictionary dictionary;
    const QStringList pieces = cookie.split(';');
    for (const QString &rawPiece : pieces) {
        const QString piece = rawPiece.trimmed();
        const int equals = piece.indexOf('=');
        if (equals <= 0)
            continue;
        const QString name = piece.left(equals);
        const QString value = piece.mid(equals + 1);
        if (name.isEmpty() || value.isEmpty())
            continue;
        dictionary.insert(name, value);
    }
    return dictionary;
}

QString ZuviAPIClient::cookieStringFromDictionary(const ZuviCookieDictionary &dictionary)
{
    QStringList pairs;
    QSet<QString> written;
    for (const char *name : kCookieHeadOrder) {
        const QString value = dictionary.value(name);
        if (!value.isEmpty()) {
            pairs.append(QString::fromLatin1(name) + "=" + value);
            written.insert(name);
        }
    }
    for (auto it = dictionary.constBegin(); it != dictionary.constEnd(); ++it) {
        if (!written.contains(it.key()) && !it.value().isEmpty())
            pairs.append(it.key() + "=" + it.value());
    }
    return pairs.join("; ");
}

QString ZuviAPIClient::credentialCookie() const
{
    return m_defaults->stringForKey(kCredentialCookieKey);
}

void ZuviAPIClient::updateCredentialCookie(const QString &cookie)
{
    const QString trimmed = cookie.trimmed();
    if (trimmed.isEmpty())
        m_defaults->removeObjectForKey(kCredentialCookieKey);
    else
        m_defaults->setString(trimmed, kCredentialCookieKey);
    m_defaults->synchronize();
}

void ZuviAPIClient::clearCredentialCookie()
{
    m_defaults->removeObjectForKey(kCredentialCookieKey);
    m_defaults->synchronize();
}

QString ZuviAPIClient::cookieValueForName(const QString &name) const
{
    return mutableCookieDictionaryFromString(credentialCookie()).value(name);
}

QString ZuviAPIClient::csrfTokenFromCredentialCookie() const
{
    return cookieValueForName("zuvi_jct");
}

qint64 ZuviAPIClient::currentMIDFromCredentialCookie() const
{
    bool ok = false;
    const qint64 mid = cookieValueForName("DedeUserID").toLongLong(&ok);
    return ok ? mid : 0;
}

std::optional<QString>
ZuviAPIClient::credentialCookieFromHTTPResponse(const ZuviHTTPResponse &response)
{
    if (!response.isHTTP)
        return std::nullopt;
    QList<QNetworkCookie> cookies;
    for (const auto &header : response.headers) {
        if (header.first.compare("Set-Cookie", Qt::CaseInsensitive) == 0)
            cookies += QNetworkCookie::parseCookies(header.second);
    }
    if (cookies.isEmpty())
        return std::nullopt;
    ZuviCookieDictionary kept;
    for (const QNetworkCookie &cookie : cookies) {
        const QString name = QString::fromUtf8(cookie.name());
        const QString value = QString::fromUtf8(cookie.value());
        for (const char *loginName : kLoginCookieNames) {
            if (name == QLatin1String(loginName) && !value.isEmpty())
                kept.insert(name, value);
        }
    }
    QStringList pairs;
    for (const char *loginName : kLoginCookieNames) {
        if (kept.contains(loginName))
            pairs.append(QString::fromLatin1(loginName) + "=" + kept.value(loginName));
    }
    return pairs.join("; ");
}

// --- JSON, errors and small texts

std::optional<QJsonObject> ZuviAPIClient::jsonRootDictionaryFromData(const QByteArray &data,
                                                                     ZuviError *error)
{
    if (data.isEmpty()) {
        *error = errorWithCode(100, QStringLiteral("接口没有返回数据"));
        return std::nullopt;
    }
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(data, &parseError);
    if (parseError.error != QJsonParseError::NoError) {
        *error = ZuviError(QStringLiteral("ZuviJSONErrorDomain"), parseError.error,
                           QStringLiteral("接口返回的数据不是有效的 JSON：%1（第 %2 字节）")
                               .arg(parseError.errorString())
                               .arg(parseError.offset));
        return std::nullopt;
    }
    if (!document.isObject()) {
        if (error->isNull())
            *error = errorWithCode(102, QStringLiteral("接口返回格式不是 JSON 对象"));
        return std::nullopt;
    }
    return document.object();
}

ZuviError ZuviAPIClient::errorWithCode(int code, const QString &message)
{
    return ZuviError(kErrorDomain, code, message);
}

int ZuviAPIClient::statusCodeFromResponse(const ZuviHTTPResponse &response)
{
    return response.isHTTP ? response.statusCode : 0;
}

QString ZuviAPIClient::shortErrorText(const ZuviError &error)
{
    const QString text = error.localizedDescription();
    if (text.isEmpty())
        return QStringLiteral("未知错误");
    if (text.size() >= 43)
        return text.left(42) + "...";
    return text;
}

QString ZuviAPIClient::stringFromObject(const QJsonValue &value)
{
    return ZuviJSONCoercion::stringFromObject(value);
}

QString ZuviAPIClient::compactCountStringFromObject(const QJsonValue &value)
{
    return ZuviJSONCoercion::compactCountStringFromObject(value);
}

qint64 ZuviAPIClient::integerFromObject(const QJsonValue &value)
{
    return ZuviJSONCoercion::integerFromObject(value);
}

bool ZuviAPIClient::boolFromObject(const QJsonValue &value)
{
    return ZuviJSONCoercion::boolFromObject(value);
}

ZuviError ZuviAPIClient::serviceErrorFromRootDictionary(const QJsonObject &root,
                                                        const QString &fallbackMessage)
{
    const qint64 code = integerFromObject(root.value("code"));
    if (code == 0)
        return ZuviError();
    const QString message = stringFromObject(root.value("message"));
    return errorWithCode(int(code), message.isEmpty() ? fallbackMessage : message);
}

std::optional<QJsonObject>
ZuviAPIClient::serviceRootDictionaryFromData(const QByteArray &data, const QString &fallbackMessage,
                                             ZuviError *error)
{
    std::optional<QJsonObject> root = jsonRootDictionaryFromData(data, error);
    if (!root)
        return std::nullopt;
    const ZuviError serviceError = serviceErrorFromRootDictionary(*root, fallbackMessage);
    if (serviceError.hasError()) {
        *error = serviceError;
        return std::nullopt;
    }
    return root;
}

bool ZuviAPIClient::developerModeEnabled() const
{
    return m_developerModeForced || m_defaults->boolForKey(kDeveloperModeKey);
}

// --- The finish family

void ZuviAPIClient::finishWithVideos(const QList<ZuviVideoItem> &videos, const ZuviError &error,
                                     const VideosCompletion &completion)
{
    deliver(QStringLiteral("视频列表接口"), error, completion, videos, error);
}

void ZuviAPIClient::finishWithFollowingRows(const QList<ZuviFollowingRow> &rows,
                                            const ZuviError &error,
                                            const FollowingRowsCompletion &completion)
{
    deliver(QStringLiteral("关注动态接口"), error, completion, rows, error);
}

void ZuviAPIClient::finishWithFollowingRows(const QList<ZuviFollowingRow> &rows, bool hasMore,
                                            const QString &nextOffset, const ZuviError &error,
                                            const FollowingPageCompletion &completion)
{
    deliver(QStringLiteral("关注动态接口"), error, completion, rows, hasMore, nextOffset, error);
}

void ZuviAPIClient::finishWithUserProfile(const std::optional<ZuviUserProfile> &profile,
                                          const ZuviError &error,
                                          const UserProfileCompletion &completion)
{
    deliver(QStringLiteral("登录状态接口"), error, completion, profile, error);
}

void ZuviAPIClient::finishWithLoginURL(const QString &loginURL, const QString &qrcodeKey,
                                       const ZuviError &error, const LoginURLCompletion &completion)
{
    deliver(QStringLiteral("登录二维码接口"), error, completion, loginURL, qrcodeKey, error);
}

void ZuviAPIClient::finishWithLoginPollCode(int code, const QString &message,
                                            const ZuviError &error,
                                            const LoginPollCompletion &completion)
{
    deliver(QStringLiteral("登录轮询接口"), error, completion, code, message, error);
}

void ZuviAPIClient::finishWithDetail(const std::optional<ZuviVideoDetail> &detail,
                                     const ZuviError &error, const DetailCompletion &completion)
{
    deliver(QStringLiteral("视频详情接口"), error, completion, detail, error);
}

void ZuviAPIClient::finishWithPlayURL(const QString &urlString, int quality, const ZuviError &error,
                                      const PlayURLCompletion &completion)
{
    deliver(QStringLiteral("播放地址接口"), error, completion, urlString, quality, error);
}

void ZuviAPIClient::finishWithDanmaku(const QList<ZuviDanmakuItem> &items, const ZuviError &error,
                                      const DanmakuCompletion &completion)
{
    deliver(QStringLiteral("弹幕接口"), error, completion, items, error);
}

void ZuviAPIClient::finishWithComments(const QList<ZuviCommentItem> &comments,
                                       const ZuviError &error, const CommentsCompletion &completion)
{
    deliver(QStringLiteral("评论接口"), error, completion, comments, error);
}

void ZuviAPIClient::finishWithActionSuccess(bool success, const QString &message,
                                            const ZuviError &error, const QString &category,
                                            const ActionCompletion &completion)
{
    QString filled = message;
    if (filled.isEmpty())
        filled = success ? QStringLiteral("操作成功") : error.localizedDescription();
    deliver(category, error, completion, success, filled, error);
}

// --- Request-error log

void ZuviAPIClient::recordAPIRequestErrorWithCategory(const QString &category,
                                                      const ZuviError &error)
{
    if (error.isNull() || !developerModeEnabled())
        return;
    const QString description = error.localizedDescription();
    const QString text =
        QStringLiteral("%1\ndomain=%2\ncode=%3\nmessage=%4")
            .arg(category.isEmpty() ? QStringLiteral("接口请求") : category, error.domain)
            .arg(error.code)
            .arg(description.isEmpty() ? QStringLiteral("未知请求错误") : description);
    m_log->appendText(text, QStringLiteral("请求错误"));
    m_center->postOnMainQueue(kRequestErrorLogUpdatedNotification, this);
}

QStringList ZuviAPIClient::apiRequestErrorLogs() const
{
    const QString text = m_log->logText();
    return text.isEmpty() ? QStringList() : QStringList{text};
}

void ZuviAPIClient::clearAPIRequestErrorLogs()
{
    m_log->clearLog();
    m_center->postOnMainQueue(kRequestErrorLogUpdatedNotification, this);
}

// --- Endpoint addresses

QString ZuviAPIClient::hostURL(const QUrl &base, const QString &pathAndQuery) const
{
    return originOf(base) + pathAndQuery;
}

QString ZuviAPIClient::apiURL(const QString &pathAndQuery) const
{
    return hostURL(m_endpoints.api, pathAndQuery);
}

QString ZuviAPIClient::plainAPIURL(const QString &pathAndQuery) const
{
    // The primary danmaku list is served over plain http on the API host.
    QUrl base = m_endpoints.api;
    base.setScheme(QStringLiteral("http"));
    return hostURL(base, pathAndQuery);
}

// --- Video lists

void ZuviAPIClient::sendVideoListRequest(
    const ZuviURLRequest &request,
    std::function<QList<ZuviVideoItem>(const QByteArray &, ZuviError *)> parse,
    VideosCompletion completion)
{
    send(request,
         [this, parse, completion](const ZuviHTTPResponse &response, const ZuviError &error) {
             if (error.hasError()) {
                 finishWithVideos({}, error, completion);
                 return;
             }
             ZuviError parseError;
             const QList<ZuviVideoItem> videos = parse(response.body, &parseError);
             finishWithVideos(videos, parseError, completion);
         });
}

namespace {
// Binds a list name to the flexible parser.
std::function<QList<ZuviVideoItem>(const QByteArray &, ZuviError *)>
flexibleParser(const QString &listName)
{
    return [listName](const QByteArray &data, ZuviError *error) {
        return ZuviVideoListParser::parseFlexibleVideosFromData(data, listName, error);
    };
}
} // namespace

void ZuviAPIClient::fetchPopularPage(int page, int pageSize, VideosCompletion completion)
{
    const QString url = apiURL(QStringLiteral("/x/web-interface/popular?pn=%1&ps=%2")
                                   .arg(page < 1 ? 1 : page)
                                   .arg(pageSize < 1 ? 100 : pageSize));
    sendVideoListRequest(requestWithURLString(url, siteRoot()),
                         &ZuviVideoListParser::parsePopularVideosFromData, completion);
}

void ZuviAPIClient::fetchRecommendedPage(int page, int pageSize, VideosCompletion completion)
{
    const int freshIndex = page < 1 ? 1 : page;
    const QString url =
        apiURL(QStringLiteral("/x/web-interface/index/top/feed/rcmd?ps=%1&fresh_idx=%2"
                              "&fresh_idx_1h=%3&fresh_type=3")
                   .arg(pageSize < 1 ? 100 : pageSize)
                   .arg(freshIndex)
                   .arg(freshIndex));
    sendVideoListRequest(requestWithURLString(url, siteRoot()),
                         flexibleParser(QStringLiteral("推荐流")), completion);
}

void ZuviAPIClient::fetchWebRankingWithRID(int rid, const QString &route, int pageSize,
                                           VideosCompletion completion)
{
    const QString url =
        apiURL(QStringLiteral("/x/web-interface/ranking/v2?rid=%1&type=all&web_location=333.934"
                              "&ps=%2")
                   .arg(rid < 0 ? 0 : rid)
                   .arg(pageSize < 1 ? 100 : pageSize));
    const QString referer = originOf(m_endpoints.web) + "/v/popular/rank/" +
                            (route.isEmpty() ? QStringLiteral("all") : route);
    sendVideoListRequest(requestWithURLString(url, referer),
                         &ZuviVideoListParser::parseRankingVideosFromData, completion);
}

void ZuviAPIClient::fetchRegionRankingWithRID(int rid, VideosCompletion completion)
{
    const int clamped = rid < 0 ? 0 : rid;
    const QString url =
        apiURL(QStringLiteral("/x/web-interface/ranking/v2?rid=%1&type=all").arg(clamped));
    send(requestWithURLString(url, siteRoot()),
         [this, clamped, completion](const ZuviHTTPResponse &response, const ZuviError &error) {
             // Any failure of the current ranking falls back to the old one,
             // whose own result is what the caller sees.
             if (error.hasError()) {
                 fetchLegacyRegionRankingWithRID(clamped, error, completion);
                 return;
             }
             ZuviError parseError;
             const QList<ZuviVideoItem> videos =
                 ZuviVideoListParser::parseRankingVideosFromData(response.body, &parseError);
             if (parseError.hasError())
                 fetchLegacyRegionRankingWithRID(clamped, parseError, completion);
             else
                 finishWithVideos(videos, parseError, completion);
         });
}

void ZuviAPIClient::fetchLegacyRegionRankingWithRID(int rid, const ZuviError &lastError,
                                                    VideosCompletion completion)
{
    Q_UNUSED(lastError) // the old ranking reports only its own outcome
    const QString url =
        apiURL(QStringLiteral("/x/web-interface/ranking/region?rid=%1&day=3").arg(rid));
    sendVideoListRequest(requestWithURLString(url, siteRoot()),
                         &ZuviVideoListParser::parseLegacyRankingVideosFromData, completion);
}

void ZuviAPIClient::fetchSearchVideosWithKeyword(const QString &keyword, int page,
                                                 VideosCompletion completion)
{
    fetchSearchVideosWithKeyword(keyword, page, 1, completion);
}

void ZuviAPIClient::fetchSearchVideosWithKeyword(const QString &keyword, int page, int retryCount,
                                                 VideosCompletion completion)
{
    const QString trimmed = keyword.trimmed();
    if (trimmed.isEmpty()) {
        finishWithVideos({}, ZuviError(), completion);
        return;
    }
    sendSearchRequest(trimmed, page, retryCount, completion);
}

void ZuviAPIClient::sendSearchRequest(const QString &keyword, int page, int retryCount,
                                      VideosCompletion completion)
{
    const QString url =
        apiURL(QStringLiteral("/x/web-interface/search/type?search_type=video&keyword=%1&page=%2")
                   .arg(urlEscapedString(keyword))
                   .arg(page < 1 ? 1 : page));
    const QString referer = originOf(m_endpoints.search) + "/";
    send(requestWithURLString(url, referer),
         [this, keyword, page, retryCount, completion](const ZuviHTTPResponse &response,
                                                       const ZuviError &error) {
             if (error.hasError()) {
                 handleSearchFailure(keyword, page, retryCount, {}, error, completion);
                 return;
             }
             ZuviError parseError;
             const QList<ZuviVideoItem> videos =
                 ZuviVideoListParser::parseSearchVideosFromData(response.body, &parseError);
             if (parseError.hasError())
                 handleSearchFailure(keyword, page, retryCount, videos, parseError, completion);
             else
                 finishWithVideos(videos, parseError, completion);
         });
}

void ZuviAPIClient::handleSearchFailure(const QString &keyword, int page, int retryCount,
                                        const QList<ZuviVideoItem> &items, const ZuviError &error,
                                        const VideosCompletion &completion)
{
    if (retryCount >= 1)
        retrySearchVideosWithKeyword(keyword, page, retryCount - 1, completion);
    else
        finishWithVideos(items, error, completion);
}

void ZuviAPIClient::retrySearchVideosWithKeyword(const QString &keyword, int page, int retryCount,
                                                 VideosCompletion completion)
{
    // The delay runs on the main thread's scheduler, like every other timer;
    // the scheduler drops the call if the client goes away first.
    QPointer<ZuviAPIClient> self(this);
    ZuviMainQueue::post([self, keyword, page, retryCount, completion] {
        if (!self)
            return;
        self->m_scheduler->callAfter(
            self, kSearchRetryCallName, 0.6, [self, keyword, page, retryCount, completion] {
                self->fetchSearchVideosWithKeyword(keyword, page, retryCount, completion);
            });
    });
}

void ZuviAPIClient::fetchHistoryVideosWithCompletion(VideosCompletion completion)
{
    const QString url = apiURL(
        QStringLiteral("/x/web-interface/history/cursor?max=0&view_at=0&business=archive&ps=20"));
    sendVideoListRequest(requestWithURLString(url, originOf(m_endpoints.web) + "/account/history"),
                         flexibleParser(QStringLiteral("历史记录")), completion);
}

void ZuviAPIClient::fetchWatchLaterVideosWithCompletion(VideosCompletion completion)
{
    const QString url = apiURL(QStringLiteral("/x/v2/history/toview/web"));
    sendVideoListRequest(requestWithURLString(url, originOf(m_endpoints.web) + "/watchlater/"),
                         flexibleParser(QStringLiteral("稍后再看")), completion);
}

void ZuviAPIClient::fetchFavoriteVideosForMID(qint64 mid, VideosCompletion completion)
{
    if (mid <= 0) {
        finishWithVideos({}, errorWithCode(720, QStringLiteral("缺少登录用户 MID")), completion);
        return;
    }
    const QString url =
        apiURL(QStringLiteral("/x/v3/fav/folder/created/list-all?up_mid=%1").arg(mid));
    send(requestWithURLString(url, originOf(m_endpoints.space) + "/"),
         [this, completion](const ZuviHTTPResponse &response, const ZuviError &error) {
             if (error.hasError()) {
                 finishWithVideos({}, error, completion);
                 return;
             }
             ZuviError parseError;
             const qint64 mediaID =
                 ZuviVideoListParser::parseFirstFavoriteMediaIDFromData(response.body, &parseError);
             // A member without folders simply has no favourites.
             if (parseError.hasError() || mediaID <= 0)
                 finishWithVideos({}, parseError, completion);
             else
                 fetchFavoriteVideosWithMediaID(mediaID, completion);
         });
}

void ZuviAPIClient::fetchFavoriteVideosWithMediaID(qint64 mediaID, VideosCompletion completion)
{
    const QString url = apiURL(
        QStringLiteral("/x/v3/fav/resource/list?media_id=%1&pn=1&ps=20&platform=web").arg(mediaID));
    sendVideoListRequest(requestWithURLString(url, originOf(m_endpoints.space) + "/"),
                         flexibleParser(QStringLiteral("收藏内容")), completion);
}

// --- One video

void ZuviAPIClient::fetchVideoDetailWithBVID(const QString &bvid, DetailCompletion completion)
{
    const QString escaped = urlEscapedString(bvid);
    const QString url = apiURL(QStringLiteral("/x/web-interface/view?bvid=%1").arg(escaped));
    const QString referer = originOf(m_endpoints.web) + "/video/" + escaped + "/";
    send(requestWithURLString(url, referer),
         [this, completion](const ZuviHTTPResponse &response, const ZuviError &error) {
             if (error.hasError()) {
                 finishWithDetail(std::nullopt, error, completion);
                 return;
             }
             ZuviError parseError;
             const auto detail =
                 ZuviVideoContentParser::parseVideoDetailFromData(response.body, &parseError);
             finishWithDetail(detail, parseError, completion);
         });
}

void ZuviAPIClient::fetchBestPlayURLWithBVID(const QString &bvid, qint64 cid,
                                             PlayURLCompletion completion)
{
    fetchPlayURLWithBVID(bvid, cid, QList<int>{64, 32, 16}, completion);
}

void ZuviAPIClient::fetchPlayURLWithBVID(const QString &bvid, qint64 cid,
                                         const QList<int> &qualities, PlayURLCompletion completion)
{
    const QList<int> walk = qualities.isEmpty() ? QList<int>{64} : qualities;
    fetchPlayURLWithBVID(bvid, cid, walk, 0, ZuviError(), completion);
}

void ZuviAPIClient::fetchPlayURLWithBVID(const QString &bvid, qint64 cid,
                                         const QList<int> &qualities, int index,
                                         const ZuviError &lastError, PlayURLCompletion completion)
{
    if (index < 0 || index >= qualities.size()) {
        finishWithPlayURL(QString(), 0, lastError, completion);
        return;
    }
    const int quality = qualities.at(index);
    const QString escaped = urlEscapedString(bvid);
    const QString url = apiURL(QStringLiteral("/x/player/playurl?bvid=%1&cid=%2&qn=%3&fnval=0"
                                              "&fnver=0&fourk=0&platform=html5&otype=json")
                                   .arg(escaped)
                                   .arg(cid)
                                   .arg(quality));
    const QString referer = originOf(m_endpoints.web) + "/video/" + escaped + "/";
    send(requestWithURLString(url, referer), [this, bvid, cid, qualities, index, quality,
                                              completion](const ZuviHTTPResponse &response,
                                                          const ZuviError &error) {
        // Any failure moves on to the next quality, keeping this error as the last one.
        if (error.hasError()) {
            fetchPlayURLWithBVID(bvid, cid, qualities, index + 1, error, completion);
            return;
        }
        ZuviError parseError;
        int actualQuality = 0;
        const QString address = ZuviVideoContentParser::parsePlayURLFromData(
            response.body, quality, &actualQuality, m_endpoints.videoCDNDomainSuffix, &parseError);
        if (address.isEmpty())
            fetchPlayURLWithBVID(bvid, cid, qualities, index + 1, parseError, completion);
        else
            finishWithPlayURL(address, actualQuality >= 1 ? actualQuality : quality, ZuviError(),
                              completion);
    });
}

void ZuviAPIClient::fetchDanmakuWithCID(qint64 cid, DanmakuCompletion completion)
{
    postDanmakuAPILogMessage(QStringLiteral("GET x/v1/dm/list.so oid=%1").arg(cid));
    ZuviURLRequest request = requestWithURLString(
        plainAPIURL(QStringLiteral("/x/v1/dm/list.so?oid=%1").arg(cid)), siteRoot());
    request.setHeader("Accept", "text/xml,*/*");
    send(request,
         [this, cid, completion](const ZuviHTTPResponse &response, const ZuviError &error) {
             handleDanmakuAnswer(false, cid, response, error, completion);
         });
}

void ZuviAPIClient::fetchLegacyDanmakuWithCID(qint64 cid, const ZuviError &lastError,
                                              DanmakuCompletion completion)
{
    Q_UNUSED(lastError) // the fallback reports only its own outcome
    const QString path = QStringLiteral("/%1.xml").arg(cid);
    postDanmakuAPILogMessage(QStringLiteral("GET ") + m_endpoints.comment.host() + path);
    ZuviURLRequest request = requestWithURLString(hostURL(m_endpoints.comment, path), siteRoot());
    request.setHeader("Accept", "text/xml,*/*");
    send(request,
         [this, cid, completion](const ZuviHTTPResponse &response, const ZuviError &error) {
             handleDanmakuAnswer(true, cid, response, error, completion);
         });
}

void ZuviAPIClient::handleDanmakuAnswer(bool legacy, qint64 cid, const ZuviHTTPResponse &response,
                                        const ZuviError &connectionError,
                                        const DanmakuCompletion &completion)
{
    const QString source = legacy ? QStringLiteral("兜底") : QStringLiteral("主接口");
    const int status = statusCodeFromResponse(response);
    ZuviError error = connectionError;
    std::optional<QList<ZuviDanmakuItem>> items;
    if (error.hasError()) {
        postDanmakuAPILogMessage(source + QStringLiteral("失败 ") + shortErrorText(error));
    } else {
        items = ZuviVideoContentParser::parseDanmakuItemsFromData(response.body, &error);
        if (!items)
            postDanmakuAPILogMessage(QStringLiteral("%1解析失败 HTTP %2 %3")
                                         .arg(source)
                                         .arg(status)
                                         .arg(shortErrorText(error)));
    }
    if (items) {
        postDanmakuAPILogMessage(QStringLiteral("%1成功 HTTP %2 %3条 %4KB")
                                     .arg(source)
                                     .arg(status)
                                     .arg(items->size())
                                     .arg(response.body.size() / 1024));
        finishWithDanmaku(*items, ZuviError(), completion);
    } else if (legacy) {
        finishWithDanmaku({}, error, completion);
    } else {
        fetchLegacyDanmakuWithCID(cid, error, completion);
    }
}

void ZuviAPIClient::postDanmakuAPILogMessage(const QString &message)
{
    if (message.isEmpty())
        return;
    if (developerModeEnabled())
        m_log->appendText(message, QStringLiteral("弹幕接口"));
    m_center->postOnMainQueue(kDanmakuLogNotification, this,
                              {{QStringLiteral("message"), message}});
}

void ZuviAPIClient::fetchRelatedVideosWithBVID(const QString &bvid, VideosCompletion completion)
{
    const QString escaped = urlEscapedString(bvid);
    const QString url =
        apiURL(QStringLiteral("/x/web-interface/archive/related?bvid=%1").arg(escaped));
    const QString referer = originOf(m_endpoints.web) + "/video/" + escaped + "/";
    sendVideoListRequest(requestWithURLString(url, referer),
                         flexibleParser(QStringLiteral("相关推荐")), completion);
}

void ZuviAPIClient::fetchCommentsForAID(qint64 aid, const QString &bvid,
                                        CommentsCompletion completion)
{
    fetchCommentsForAID(aid, bvid, 1, 20, completion);
}

void ZuviAPIClient::fetchCommentsForAID(qint64 aid, const QString &bvid, int page, int pageSize,
                                        CommentsCompletion completion)
{
    if (aid <= 0) {
        finishWithComments({}, errorWithCode(730, QStringLiteral("当前视频缺少 aid，无法加载评论")),
                           completion);
        return;
    }
    const QString url = apiURL(QStringLiteral("/x/v2/reply?type=1&oid=%1&pn=%2&ps=%3&sort=2")
                                   .arg(aid)
                                   .arg(page < 1 ? 1 : page)
                                   .arg(pageSize < 1 ? 20 : pageSize));
    send(requestWithURLString(url, videoRefererForBVID(bvid)),
         [this, aid, bvid, page, completion](const ZuviHTTPResponse &response,
                                             const ZuviError &connectionError) {
             ZuviError error = connectionError;
             QList<ZuviCommentItem> comments;
             if (!error.hasError())
                 comments = ZuviVideoContentParser::parseCommentsFromData(
                     response.body, QStringLiteral("评论"), &error);
             // The first page has a second source; later pages report at once.
             if (error.hasError() && page <= 1)
                 fetchMainCommentsForAID(aid, bvid, error, completion);
             else
                 finishWithComments(error.hasError() ? QList<ZuviCommentItem>() : comments, error,
                                    completion);
         });
}

void ZuviAPIClient::fetchMainCommentsForAID(qint64 aid, const QString &bvid,
                                            const ZuviError &lastError,
                                            CommentsCompletion completion)
{
    Q_UNUSED(lastError) // the main-comments answer is reported on its own
    const QString url =
        apiURL(QStringLiteral("/x/v2/reply/main?type=1&oid=%1&mode=3&ps=20&next=0").arg(aid));
    send(requestWithURLString(url, videoRefererForBVID(bvid)),
         [this, completion](const ZuviHTTPResponse &response, const ZuviError &error) {
             if (error.hasError()) {
                 finishWithComments({}, error, completion);
                 return;
             }
             ZuviError parseError;
             const QList<ZuviCommentItem> comments = ZuviVideoContentParser::parseCommentsFromData(
                 response.body, QStringLiteral("评论"), &parseError);
             finishWithComments(comments, parseError, completion);
         });
}

// --- Following feed

ZuviURLRequest ZuviAPIClient::followingFeedRequest(const QString &type, int page,
                                                   const QString &offset) const
{
    const QString escapedType = urlEscapedString(type.isEmpty() ? QStringLiteral("all") : type);
    // An offset continues a walk, which the service counts from page 1.
    const int pageNumber = (!offset.isEmpty() || page < 1) ? 1 : page;
    QString pathAndQuery =
        QStringLiteral("/x/polymer/web-dynamic/v1/feed/all?timezone_offset=-480&type=%1&page=%2"
                       "&limit=%3&page_size=%4")
            .arg(escapedType)
            .arg(pageNumber)
            .arg(60)
            .arg(60);
    if (!offset.isEmpty())
        pathAndQuery += QStringLiteral("&offset=") + urlEscapedString(offset);
    return requestWithURLString(apiURL(pathAndQuery), originOf(m_endpoints.dynamic) + "/");
}

void ZuviAPIClient::fetchFollowingRowsWithType(const QString &type, int page, const QString &offset,
                                               FollowingPageCompletion completion)
{
    send(followingFeedRequest(type, page, offset),
         [this, completion](const ZuviHTTPResponse &response, const ZuviError &error) {
             if (error.hasError()) {
                 finishWithFollowingRows({}, false, QString(), error, completion);
                 return;
             }
             ZuviError parseError;
             const auto feed =
                 ZuviFollowingFeedParser::parseFollowingFeedFromData(response.body, &parseError);
             if (feed)
                 finishWithFollowingRows(feed->rows, feed->hasMore, feed->nextOffset, parseError,
                                         completion);
             else
                 finishWithFollowingRows({}, false, QString(), parseError, completion);
         });
}

void ZuviAPIClient::fetchFollowingRowsWithType(const QString &type,
                                               FollowingRowsCompletion completion)
{
    send(followingFeedRequest(type, 1, QString()),
         [this, completion](const ZuviHTTPResponse &response, const ZuviError &error) {
             if (error.hasError()) {
                 finishWithFollowingRows({}, error, completion);
                 return;
             }
             ZuviError parseError;
             const QList<ZuviFollowingRow> rows =
                 ZuviFollowingFeedParser::parseFollowingRowsFromData(response.body, &parseError);
             finishWithFollowingRows(rows, parseError, completion);
         });
}

// --- Device identity

bool ZuviAPIClient::cookieHasDeviceIdentity(const QString &cookie)
{
    const ZuviCookieDictionary dictionary = mutableCookieDictionaryFromString(cookie);
    return !dictionary.value("buvid3").isEmpty() && !dictionary.value("buvid4").isEmpty() &&
           !dictionary.value("buvid_fp").isEmpty();
}

void ZuviAPIClient::ensureDeviceCookieWithCompletion(CookieCompletion completion)
{
    const QString cookie = credentialCookie();
    if (cookieHasDeviceIdentity(cookie)) {
        completion(cookie, ZuviError());
        return;
    }
    send(browserRequestWithURLString(apiURL(QStringLiteral("/x/frontend/finger/spi")), siteRoot(),
                                     cookie),
         [this, cookie, completion](const ZuviHTTPResponse &response, const ZuviError &error) {
             if (error.hasError()) {
                 completion(QString(), error);
                 return;
             }
             ZuviError saveError;
             const QString saved = saveDeviceCookieFromData(response.body, cookie, &saveError);
             completion(saved, saveError);
         });
}

QString ZuviAPIClient::saveDeviceCookieFromData(const QByteArray &data, const QString &baseCookie,
                                                ZuviError *error)
{
    const auto root = jsonRootDictionaryFromData(data, error);
    if (!root)
        return QString();
    const qint64 code = integerFromObject(root->value("code"));
    if (code != 0) {
        QString message = stringFromObject(root->value("message"));
        if (message.isEmpty())
            message = stringFromObject(root->value("msg"));
        *error = errorWithCode(int(code),
                               message.isEmpty() ? QStringLiteral("补设备 Cookie 失败") : message);
        return QString();
    }
    if (!root->value("data").isObject()) {
        *error =
            errorWithCode(750, QStringLiteral("补设备 Cookie 失败：finger/spi 缺少 data 字段"));
        return QString();
    }
    const QJsonObject answer = root->value("data").toObject();
    QString b3 = stringFromObject(answer.value("b_3"));
    if (b3.isEmpty())
        b3 = stringFromObject(answer.value("buvid3"));
    QString b4 = stringFromObject(answer.value("b_4"));
    if (b4.isEmpty())
        b4 = stringFromObject(answer.value("buvid4"));
    if (b3.isEmpty() && b4.isEmpty()) {
        *error = errorWithCode(
            751, QStringLiteral("补设备 Cookie 失败：finger/spi 没有返回 buvid3/buvid4"));
        return QString();
    }
    // Merged into the cookie this step started from; with only one of the
    // two ids the identity stays incomplete and the next action asks again.
    ZuviCookieDictionary dictionary = mutableCookieDictionaryFromString(baseCookie);
    if (!b3.isEmpty()) {
        dictionary.insert("buvid3", b3);
        dictionary.insert("buvid_fp", b3);
    }
    if (!b4.isEmpty())
        dictionary.insert("buvid4", b4);
    dictionary.insert("b_nut", QString::number(QDateTime::currentSecsSinceEpoch()));
    const QString cookie = cookieStringFromDictionary(dictionary);
    updateCredentialCookie(cookie);
    return cookie;
}

void ZuviAPIClient::ensureDeviceCookieForCategory(const QString &category,
                                                  ActionCompletion actionCompletion,
                                                  CookiePerform perform)
{
    ensureDeviceCookieWithCompletion(
        [this, category, actionCompletion, perform](const QString &cookie, const ZuviError &error) {
            if (error.hasError()) {
                finishWithActionSuccess(false, QString(), error, category, actionCompletion);
                return;
            }
            if (cookie.isEmpty()) {
                failAction(752, QStringLiteral("补设备 Cookie 失败：合并后的 Cookie 为空"),
                           category, actionCompletion);
                return;
            }
            perform(cookie);
        });
}

void ZuviAPIClient::performActionRequest(const ZuviURLRequest &request, const QString &category,
                                         ActionCompletion completion)
{
    send(request, [this, category, completion](const ZuviHTTPResponse &response,
                                               const ZuviError &error) {
        if (error.hasError()) {
            finishWithActionSuccess(false, QString(), error, category, completion);
            return;
        }
        ZuviError parseError;
        const QString message =
            ZuviAccountParser::parseActionMessageFromData(response.body, &parseError);
        finishWithActionSuccess(!parseError.hasError(), message, parseError, category, completion);
    });
}

void ZuviAPIClient::fetchDefaultFavoriteMediaIDForMID(qint64 mid, const QString &cookie,
                                                      MediaIDCompletion completion)
{
    const QString url =
        apiURL(QStringLiteral("/x/v3/fav/folder/created/list-all?up_mid=%1").arg(mid));
    send(browserRequestWithURLString(url, originOf(m_endpoints.space) + "/", cookie),
         [completion](const ZuviHTTPResponse &response, const ZuviError &error) {
             if (error.hasError()) {
                 completion(0, error);
                 return;
             }
             ZuviError parseError;
             const qint64 mediaID =
                 ZuviVideoListParser::parseFirstFavoriteMediaIDFromData(response.body, &parseError);
             completion(mediaID, parseError);
         });
}

// --- Signed-in actions

void ZuviAPIClient::failAction(int code, const QString &message, const QString &category,
                               const ActionCompletion &completion)
{
    finishWithActionSuccess(false, QString(), errorWithCode(code, message), category, completion);
}

bool ZuviAPIClient::requireCSRFToken(const QString &category, const ActionCompletion &completion,
                                     QString *csrf)
{
    *csrf = csrfTokenFromCredentialCookie();
    if (csrf->isEmpty()) {
        failAction(741, QStringLiteral("缺少登录凭证或 zuvi_jct，请先登录"), category, completion);
        return false;
    }
    return true;
}

void ZuviAPIClient::runAction(const QString &category, ActionCompletion completion,
                              std::function<void(const QString &, const QString &)> perform)
{
    QString csrf;
    if (!requireCSRFToken(category, completion, &csrf))
        return;
    ensureDeviceCookieForCategory(
        category, completion, [perform, csrf](const QString &cookie) { perform(cookie, csrf); });
}

void ZuviAPIClient::postAction(const QString &path, const QString &bvid, const QVariantMap &form,
                               const QString &cookie, const QString &category,
                               ActionCompletion completion)
{
    performActionRequest(
        POSTRequestWithURLString(apiURL(path), videoRefererForBVID(bvid), form, cookie), category,
        completion);
}

void ZuviAPIClient::likeVideoWithAID(qint64 aid, const QString &bvid, ActionCompletion completion)
{
    const QString category = QStringLiteral("点赞接口");
    if (aid <= 0) {
        failAction(740, QStringLiteral("当前视频缺少 aid，无法点赞"), category, completion);
        return;
    }
    runAction(category, completion, [=](const QString &cookie, const QString &csrf) {
        const QVariantMap form{{"aid", QString::number(aid)}, {"like", "1"}, {"csrf", csrf}};
        postAction(QStringLiteral("/x/web-interface/archive/like"), bvid, form, cookie, category,
                   completion);
    });
}

void ZuviAPIClient::addFavoriteWithAID(qint64 aid, const QString &bvid, ActionCompletion completion)
{
    const QString category = QStringLiteral("收藏接口");
    if (aid <= 0) {
        failAction(742, QStringLiteral("当前视频缺少 aid，无法收藏"), category, completion);
        return;
    }
    QString csrf;
    if (!requireCSRFToken(category, completion, &csrf))
        return;
    const qint64 mid = currentMIDFromCredentialCookie();
    if (mid <= 0) {
        failAction(743, QStringLiteral("缺少登录用户 MID，无法自动查找收藏夹"), category,
                   completion);
        return;
    }
    ensureDeviceCookieForCategory(category, completion, [=](const QString &cookie) {
        addFavoriteToFolder(aid, bvid, mid, cookie, csrf, completion);
    });
}

void ZuviAPIClient::addFavoriteToFolder(qint64 aid, const QString &bvid, qint64 mid,
                                        const QString &cookie, const QString &csrf,
                                        ActionCompletion completion)
{
    const QString category = QStringLiteral("收藏接口");
    fetchDefaultFavoriteMediaIDForMID(mid, cookie, [=](qint64 mediaID, const ZuviError &error) {
        if (error.hasError()) {
            finishWithActionSuccess(false, QString(), error, category, completion);
            return;
        }
        if (mediaID <= 0) {
            failAction(744, QStringLiteral("没有找到可用收藏夹 media_id"), category, completion);
            return;
        }
        const QVariantMap form{{"rid", QString::number(aid)},
                               {"type", "2"},
                               {"add_media_ids", QString::number(mediaID)},
                               {"del_media_ids", QString()},
                               {"csrf", csrf}};
        postAction(QStringLiteral("/x/v3/fav/resource/deal"), bvid, form, cookie, category,
                   completion);
    });
}

void ZuviAPIClient::addWatchLaterWithAID(qint64 aid, const QString &bvid,
                                         ActionCompletion completion)
{
    const QString category = QStringLiteral("稍后再看接口");
    if (aid <= 0) {
        failAction(745, QStringLiteral("当前视频缺少 aid，无法添加稍后再看"), category, completion);
        return;
    }
    runAction(category, completion, [=](const QString &cookie, const QString &csrf) {
        const QVariantMap form{{"aid", QString::number(aid)}, {"csrf", csrf}};
        postAction(QStringLiteral("/x/v2/history/toview/add"), bvid, form, cookie, category,
                   completion);
    });
}

void ZuviAPIClient::sendCommentForAID(qint64 aid, const QString &bvid, const QString &message,
                                      ActionCompletion completion)
{
    const QString category = QStringLiteral("评论发布接口");
    if (aid <= 0) {
        failAction(746, QStringLiteral("当前视频缺少 aid，无法发表评论"), category, completion);
        return;
    }
    const QString text = message.trimmed();
    if (text.isEmpty()) {
        failAction(747, QStringLiteral("评论内容不能为空"), category, completion);
        return;
    }
    runAction(category, completion, [=](const QString &cookie, const QString &csrf) {
        const QVariantMap form{{"type", "1"},
                               {"oid", QString::number(aid)},
                               {"message", text},
                               {"plat", "1"},
                               {"csrf", csrf}};
        postAction(QStringLiteral("/x/v2/reply/add"), bvid, form, cookie, category, completion);
    });
}

void ZuviAPIClient::sendDanmakuWithAID(qint64 aid, qint64 cid, const QString &bvid,
                                       const QString &message, int progress,
                                       ActionCompletion completion)
{
    const QString category = QStringLiteral("弹幕发布接口");
    if (aid <= 0 || cid <= 0) {
        failAction(748, QStringLiteral("当前视频缺少 aid 或 cid，无法发送弹幕"), category,
                   completion);
        return;
    }
    const QString text = message.trimmed();
    if (text.isEmpty()) {
        failAction(749, QStringLiteral("弹幕内容不能为空"), category, completion);
        return;
    }
    runAction(category, completion, [=](const QString &cookie, const QString &csrf) {
        QVariantMap form{{"type", "1"},
                         {"oid", QString::number(cid)},
                         {"aid", QString::number(aid)},
                         {"msg", text},
                         {"progress", QString::number(progress)},
                         {"color", "16777215"},
                         {"fontsize", "25"},
                         {"pool", "0"},
                         {"mode", "1"},
                         {"rnd", QString::number(QDateTime::currentSecsSinceEpoch())},
                         {"csrf", csrf}};
        if (!bvid.isEmpty())
            form.insert("bvid", bvid);
        postAction(QStringLiteral("/x/v2/dm/post"), bvid, form, cookie, category, completion);
    });
}

// --- QR login and the current user

void ZuviAPIClient::generateLoginQRCodeWithCompletion(LoginURLCompletion completion)
{
    const QString url =
        hostURL(m_endpoints.passport,
                QStringLiteral("/x/passport-login/web/qrcode/generate?source=main-fe-header"));
    send(requestWithURLString(url, siteRoot()), [this, completion](const ZuviHTTPResponse &response,
                                                                   const ZuviError &error) {
        if (error.hasError()) {
            finishWithLoginURL(QString(), QString(), error, completion);
            return;
        }
        ZuviError parseError;
        const auto result = ZuviAccountParser::parseLoginQRCodeFromData(response.body, &parseError);
        finishWithLoginURL(result ? result->loginURL : QString(),
                           result ? result->qrcodeKey : QString(), parseError, completion);
    });
}

void ZuviAPIClient::pollLoginQRCodeWithKey(const QString &key, LoginPollCompletion completion)
{
    const QString trimmed = key.trimmed();
    if (trimmed.isEmpty()) {
        finishWithLoginPollCode(-1, QStringLiteral("缺少 qrcode_key"), ZuviError(), completion);
        return;
    }
    const QString url = hostURL(m_endpoints.passport,
                                QStringLiteral("/x/passport-login/web/qrcode/poll?qrcode_key=%1")
                                    .arg(urlEscapedString(trimmed)));
    send(requestWithURLString(url, siteRoot()), [this, completion](const ZuviHTTPResponse &response,
                                                                   const ZuviError &error) {
        if (error.hasError()) {
            finishWithLoginPollCode(-1, QString(), error, completion);
            return;
        }
        ZuviError parseError;
        const auto poll =
            ZuviAccountParser::parseLoginQRCodePollFromData(response.body, &parseError);
        if (!poll) {
            finishWithLoginPollCode(-1, QString(), parseError, completion);
            return;
        }
        // The session arrives as Set-Cookie headers of the successful poll.
        if (poll->code == 0) {
            const QString cookie = credentialCookieFromHTTPResponse(response).value_or(QString());
            if (!cookie.isEmpty())
                updateCredentialCookie(cookie);
        }
        finishWithLoginPollCode(poll->code, poll->message, ZuviError(), completion);
    });
}

void ZuviAPIClient::fetchCurrentUserProfileWithCompletion(UserProfileCompletion completion)
{
    send(requestWithURLString(apiURL(QStringLiteral("/x/web-interface/nav")), siteRoot()),
         [this, completion](const ZuviHTTPResponse &response, const ZuviError &error) {
             if (error.hasError()) {
                 finishWithUserProfile(std::nullopt, error, completion);
                 return;
             }
             ZuviError parseError;
             const auto profile =
                 ZuviAccountParser::parseUserProfileFromData(response.body, &parseError);
             // A signed-in member's card also shows the relation counts.
             if (profile && profile->isLogin && profile->mid > 0)
                 fetchRelationStatForProfile(*profile, completion);
             else
                 finishWithUserProfile(profile, parseError, completion);
         });
}

void ZuviAPIClient::fetchRelationStatForProfile(const ZuviUserProfile &profile,
                                                UserProfileCompletion completion)
{
    const QString url = apiURL(QStringLiteral("/x/relation/stat?vmid=%1").arg(profile.mid));
    send(requestWithURLString(url, originOf(m_endpoints.space) + "/"),
         [this, profile, completion](const ZuviHTTPResponse &response, const ZuviError &error) {
             // A failed count request only leaves the two counts empty.
             ZuviUserProfile updated = profile;
             ZuviError parseError;
             if (!error.hasError()) {
                 if (const auto stat =
                         ZuviAccountParser::parseRelationStatFromData(response.body, &parseError))
                     updated.updateWithRelationStatDictionary(*stat);
             }
             finishWithUserProfile(updated, ZuviError(), completion);
         });
}
