// The service client's core: its names, construction, sending on the
// network queue, the finish family that records a failure and hands every
// result to the main thread, the request-error log and endpoint addresses.
// The operations themselves live in the zuviapiclient*.cpp files by concern.
#include "zuviapiclient.h"

#include "platform/zuvidebuglog.h"
#include "platform/zuvidefaults.h"
#include "platform/zuvihttptransport.h"
#include "platform/zuvinotificationcenter.h"
#include "platform/zuvischeduler.h"
#include "platform/zuviworkqueue.h"

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

void ZuviAPIClient::send(const ZuviURLRequest &request, ResponseHandler handler)
{
    ZuviWorkQueue *queue = m_networkQueue.get();
    m_transport->send(request,
                      [queue, handler](const ZuviHTTPResponse &response, const ZuviError &error) {
                          queue->run([handler, response, error] { handler(response, error); });
                      });
}

int ZuviAPIClient::requestsInFlight() const
{
    return m_transport->requestsInFlight();
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
