#pragma once

#include "model/zuvicommentitem.h"
#include "model/zuvidanmakuitem.h"
#include "model/zuvifollowingrow.h"
#include "model/zuviuserprofile.h"
#include "model/zuvivideodetail.h"
#include "model/zuvivideoitem.h"
#include "platform/zuviendpoints.h"
#include "platform/zuvierror.h"
#include "platform/zuvimainqueue.h"
#include "zuviurlrequest.h"

#include <QJsonObject>
#include <QJsonValue>
#include <QMap>
#include <QObject>
#include <QVariantMap>

#include <functional>
#include <memory>
#include <optional>

class ZuviDebugLog;
class ZuviDefaults;
class ZuviHTTPTransport;
class ZuviNotificationCenter;
class ZuviWorkQueue;

using ZuviCookieDictionary = QMap<QString, QString>;

// The one client through which every screen talks to the video service.
// Every operation builds a request, sends it, parses the answer on the
// network queue (three at a time) and hands the result to its completion on
// the main thread, exactly once.
class ZuviAPIClient : public QObject
{
    Q_OBJECT
public:
    using VideosCompletion = std::function<void(const QList<ZuviVideoItem> &, const ZuviError &)>;
    using FollowingRowsCompletion =
        std::function<void(const QList<ZuviFollowingRow> &, const ZuviError &)>;
    using FollowingPageCompletion =
        std::function<void(const QList<ZuviFollowingRow> &, bool hasMore, const QString &nextOffset,
                           const ZuviError &)>;
    using UserProfileCompletion =
        std::function<void(const std::optional<ZuviUserProfile> &, const ZuviError &)>;
    using LoginURLCompletion =
        std::function<void(const QString &loginURL, const QString &qrcodeKey, const ZuviError &)>;
    using LoginPollCompletion =
        std::function<void(int code, const QString &message, const ZuviError &)>;
    using DetailCompletion =
        std::function<void(const std::optional<ZuviVideoDetail> &, const ZuviError &)>;
    using PlayURLCompletion =
        std::function<void(const QString &urlString, int quality, const ZuviError &)>;
    using DanmakuCompletion =
        std::function<void(const QList<ZuviDanmakuItem> &, const ZuviError &)>;
    using CommentsCompletion =
        std::function<void(const QList<ZuviCommentItem> &, const ZuviError &)>;
    using ActionCompletion =
        std::function<void(bool success, const QString &message, const ZuviError &)>;
    // Runs on the network queue with the answer or the connection error.
    using ResponseHandler = std::function<void(const ZuviHTTPResponse &, const ZuviError &)>;

    static const char *const kErrorDomain;
    static const char *const kCredentialCookieKey;
    static const char *const kDeveloperModeKey;
    static const char *const kRequestErrorLogUpdatedNotification;
    static const char *const kAPIUserAgent;
    static const char *const kBrowserUserAgent;

    ZuviAPIClient(ZuviDefaults *defaults, ZuviDebugLog *log, ZuviNotificationCenter *center,
                  const ZuviEndpoints &endpoints, QObject *parent = nullptr);
    ~ZuviAPIClient() override;

    static ZuviAPIClient *sharedClient();

    ZuviWorkQueue *networkQueue() const { return m_networkQueue.get(); }
    const ZuviEndpoints &endpoints() const { return m_endpoints; }
    ZuviDefaults *defaults() const { return m_defaults; }
    // Every request's timeout; 20 s unless a test shortens it.
    void setRequestTimeoutMs(int timeoutMs) { m_timeoutMs = timeoutMs; }
    int requestTimeoutMs() const { return m_timeoutMs; }

    // --- Request builders
    ZuviURLRequest requestWithURLString(const QString &urlString, const QString &referer) const;
    ZuviURLRequest browserRequestWithURLString(const QString &urlString, const QString &referer,
                                               const QString &cookie) const;
    ZuviURLRequest POSTRequestWithURLString(const QString &urlString, const QString &referer,
                                            const QVariantMap &parameters,
                                            const QString &cookie) const;

    // Sends on the network thread; the handler runs on the network queue.
    void send(const ZuviURLRequest &request, ResponseHandler handler);

    // --- Standard referers and hosts
    QString siteRoot() const { return m_endpoints.siteRoot(); }
    QString videoRefererForBVID(const QString &bvid) const;
    // "scheme://host[:port]" of a role's base URL.
    static QString originOf(const QUrl &base) { return ZuviEndpoints::origin(base); }

    // --- Form and URL encoding
    static QString formBodyStringWithParameters(const QVariantMap &parameters);
    static QString formEscapedString(const QString &text);
    static QString urlEscapedString(const QString &text);

    // --- Cookies and the stored credential
    static ZuviCookieDictionary mutableCookieDictionaryFromString(const QString &cookie);
    static QString cookieStringFromDictionary(const ZuviCookieDictionary &dictionary);
    QString credentialCookie() const;
    void updateCredentialCookie(const QString &cookie);
    void clearCredentialCookie();
    QString cookieValueForName(const QString &name) const;
    QString csrfTokenFromCredentialCookie() const;
    qint64 currentMIDFromCredentialCookie() const;
    // nullopt when the response is not HTTP or carries no cookie at all; an
    // empty string when cookies came but none of the login ones.
    static std::optional<QString>
    credentialCookieFromHTTPResponse(const ZuviHTTPResponse &response);

    // --- JSON, errors and small texts
    static std::optional<QJsonObject> jsonRootDictionaryFromData(const QByteArray &data,
                                                                 ZuviError *error);
    static ZuviError errorWithCode(int code, const QString &message);
    static int statusCodeFromResponse(const ZuviHTTPResponse &response);
    static QString shortErrorText(const ZuviError &error);
    static QString stringFromObject(const QJsonValue &value);
    static QString compactCountStringFromObject(const QJsonValue &value);
    bool developerModeEnabled() const;

    // --- The finish family: record the error, then call the completion on the main thread
    void finishWithVideos(const QList<ZuviVideoItem> &videos, const ZuviError &error,
                          const VideosCompletion &completion);
    void finishWithFollowingRows(const QList<ZuviFollowingRow> &rows, const ZuviError &error,
                                 const FollowingRowsCompletion &completion);
    void finishWithFollowingRows(const QList<ZuviFollowingRow> &rows, bool hasMore,
                                 const QString &nextOffset, const ZuviError &error,
                                 const FollowingPageCompletion &completion);
    void finishWithUserProfile(const std::optional<ZuviUserProfile> &profile,
                               const ZuviError &error, const UserProfileCompletion &completion);
    void finishWithLoginURL(const QString &loginURL, const QString &qrcodeKey,
                            const ZuviError &error, const LoginURLCompletion &completion);
    void finishWithLoginPollCode(int code, const QString &message, const ZuviError &error,
                                 const LoginPollCompletion &completion);
    void finishWithDetail(const std::optional<ZuviVideoDetail> &detail, const ZuviError &error,
                          const DetailCompletion &completion);
    void finishWithPlayURL(const QString &urlString, int quality, const ZuviError &error,
                           const PlayURLCompletion &completion);
    void finishWithDanmaku(const QList<ZuviDanmakuItem> &items, const ZuviError &error,
                           const DanmakuCompletion &completion);
    void finishWithComments(const QList<ZuviCommentItem> &comments, const ZuviError &error,
                            const CommentsCompletion &completion);
    void finishWithActionSuccess(bool success, const QString &message, const ZuviError &error,
                                 const QString &category, const ActionCompletion &completion);

    // --- Request-error log
    void recordAPIRequestErrorWithCategory(const QString &category, const ZuviError &error);
    QStringList apiRequestErrorLogs() const;
    void clearAPIRequestErrorLogs();

    ZuviDebugLog *debugLog() const { return m_log; }
    ZuviNotificationCenter *notificationCenter() const { return m_center; }

private:
    template <typename Completion, typename... Args>
    void deliver(const QString &category, const ZuviError &error, const Completion &completion,
                 Args... args)
    {
        recordAPIRequestErrorWithCategory(category, error);
        if (completion)
            ZuviMainQueue::post([completion, args...] { completion(args...); });
    }

    ZuviDefaults *m_defaults;
    ZuviDebugLog *m_log;
    ZuviNotificationCenter *m_center;
    ZuviEndpoints m_endpoints;
    int m_timeoutMs = 20000;
    std::unique_ptr<ZuviWorkQueue> m_networkQueue;
    std::unique_ptr<ZuviHTTPTransport> m_transport;
};
