#include "zuviapiclient.h"

#include "app/zuvidebuglog.h"
#include "platform/zuvidefaults.h"
#include "platform/zuvinotificationcenter.h"
#include "platform/zuviworkqueue.h"
#include "zuvihttptransport.h"

#include <QJsonDocument>
#include <QNetworkCookie>

#include <cmath>
#include <cstdlib>

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

namespace {
const char *const kAcceptLanguage = "zh-CN,zh;q=0.9,en;q=0.8";

// The login cookies first, then the device identity cookies, whatever else was merged in.
const char *const kCookieHeadOrder[] = {
    "DedeUserID", "DedeUserID__ckMd5", "SESSDATA", "zuvi_jct", "buvid3",
    "buvid4",     "buvid_fp",          "b_nut"};
const char *const kLoginCookieNames[] = {"DedeUserID", "DedeUserID__ckMd5", "SESSDATA", "zuvi_jct"};

// The leading decimal number of a text, as a number's "doubleValue" reads
// it: "12abc" is 12, "abc" is 0.
double leadingDouble(const QString &text)
{
    const QByteArray bytes = text.trimmed().toUtf8();
    return std::strtod(bytes.constData(), nullptr);
}
} // namespace

ZuviAPIClient::ZuviAPIClient(ZuviDefaults *defaults, ZuviDebugLog *log,
                             ZuviNotificationCenter *center, const ZuviEndpoints &endpoints,
                             QObject *parent)
    : QObject(parent), m_defaults(defaults), m_log(log), m_center(center), m_endpoints(endpoints),
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
                          ZuviNotificationCenter::defaultCenter(), ZuviEndpoints::shared());
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
    switch (value.type()) {
    case QJsonValue::String:
        return value.toString();
    case QJsonValue::Bool:
        return value.toBool() ? QStringLiteral("1") : QStringLiteral("0");
    case QJsonValue::Double: {
        const double number = value.toDouble();
        // Whole numbers print without a fraction, as a number's stringValue does.
        if (std::isfinite(number) && number == std::floor(number) && std::fabs(number) < 1e18)
            return QString::number(static_cast<qint64>(number));
        return QString::number(number, 'g', 17 - 2);
    }
    default:
        return QString();
    }
}

QString ZuviAPIClient::compactCountStringFromObject(const QJsonValue &value)
{
    const double count = leadingDouble(stringFromObject(value));
    if (count >= 10000)
        return QString::asprintf("%.1f", count / 10000.0) + QStringLiteral("万");
    if (count > 0)
        return QString::number(static_cast<qint64>(count));
    return QString();
}

bool ZuviAPIClient::developerModeEnabled() const
{
    return m_defaults->boolForKey(kDeveloperModeKey);
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
