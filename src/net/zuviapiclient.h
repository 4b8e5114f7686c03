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
#include "platform/zuviurlrequest.h"

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
class ZuviScheduler;
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
    // The device-complete cookie, or the error that kept it from being made.
    using CookieCompletion = std::function<void(const QString &cookie, const ZuviError &)>;
    using MediaIDCompletion = std::function<void(qint64 mediaID, const ZuviError &)>;
    // Builds and sends an action's request with the device-complete cookie.
    using CookiePerform = std::function<void(const QString &cookie)>;

    static const char *const kErrorDomain;
    static const char *const kCredentialCookieKey;
    static const char *const kDeveloperModeKey;
    static const char *const kRequestErrorLogUpdatedNotification;
    static const char *const kAPIUserAgent;
    static const char *const kBrowserUserAgent;
    static const char *const kDanmakuLogNotification;
    static const char *const kSearchRetryCallName;

    // A null scheduler means the shared real-time one.
    ZuviAPIClient(ZuviDefaults *defaults, ZuviDebugLog *log, ZuviNotificationCenter *center,
                  const ZuviEndpoints &endpoints, ZuviScheduler *scheduler = nullptr,
                  QObject *parent = nullptr);
    ~ZuviAPIClient() override;

    static ZuviAPIClient *sharedClient();

    ZuviWorkQueue *networkQueue() const { return m_networkQueue.get(); }
    const ZuviEndpoints &endpoints() const { return m_endpoints; }
    ZuviDefaults *defaults() const { return m_defaults; }
    ZuviScheduler *scheduler() const { return m_scheduler; }
    // Every request's timeout; 20 s unless a test shortens it.
    void setRequestTimeoutMs(int timeoutMs) { m_timeoutMs = timeoutMs; }
    int requestTimeoutMs() const { return m_timeoutMs; }
    // Requests sent and not yet answered to their handler; the answers'
    // completions may still be queued behind it on the network queue.
    int requestsInFlight() const;

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
    // Field reading, as every record reads it (see ZuviJSONCoercion).
    static QString stringFromObject(const QJsonValue &value);
    static QString compactCountStringFromObject(const QJsonValue &value);
    static qint64 integerFromObject(const QJsonValue &value);
    static bool boolFromObject(const QJsonValue &value);
    // The service envelope: a non-zero "code" is an error with that code and
    // the root's "message", or the fallback when the message is empty.
    // Returns the null error for code 0.
    static ZuviError serviceErrorFromRootDictionary(const QJsonObject &root,
                                                    const QString &fallbackMessage);
    // The root dictionary of a body whose envelope says success; nothing,
    // with the error set, when the body is no JSON object or "code" is not 0.
    static std::optional<QJsonObject> serviceRootDictionaryFromData(const QByteArray &data,
                                                                    const QString &fallbackMessage,
                                                                    ZuviError *error);
    bool developerModeEnabled() const;
    // Turns developer mode on for this process without touching the stored
    // preference (the command-line client's --developer-mode).
    void setDeveloperModeForced(bool forced) { m_developerModeForced = forced; }

    // --- Video lists
    void fetchPopularPage(int page, int pageSize, VideosCompletion completion);
    void fetchRecommendedPage(int page, int pageSize, VideosCompletion completion);
    void fetchWebRankingWithRID(int rid, const QString &route, int pageSize,
                                VideosCompletion completion);
    void fetchRegionRankingWithRID(int rid, VideosCompletion completion);
    void fetchLegacyRegionRankingWithRID(int rid, const ZuviError &lastError,
                                         VideosCompletion completion);
    void fetchSearchVideosWithKeyword(const QString &keyword, int page,
                                      VideosCompletion completion);
    void fetchSearchVideosWithKeyword(const QString &keyword, int page, int retryCount,
                                      VideosCompletion completion);
    void retrySearchVideosWithKeyword(const QString &keyword, int page, int retryCount,
                                      VideosCompletion completion);
    void fetchHistoryVideosWithCompletion(VideosCompletion completion);
    void fetchWatchLaterVideosWithCompletion(VideosCompletion completion);
    void fetchFavoriteVideosForMID(qint64 mid, VideosCompletion completion);
    void fetchFavoriteVideosWithMediaID(qint64 mediaID, VideosCompletion completion);

    // --- One video: detail, play address, danmaku, related, comments
    void fetchVideoDetailWithBVID(const QString &bvid, DetailCompletion completion);
    void fetchBestPlayURLWithBVID(const QString &bvid, qint64 cid, PlayURLCompletion completion);
    void fetchPlayURLWithBVID(const QString &bvid, qint64 cid, const QList<int> &qualities,
                              PlayURLCompletion completion);
    void fetchPlayURLWithBVID(const QString &bvid, qint64 cid, const QList<int> &qualities,
                              int index, const ZuviError &lastError, PlayURLCompletion completion);
    void fetchDanmakuWithCID(qint64 cid, DanmakuCompletion completion);
    void fetchLegacyDanmakuWithCID(qint64 cid, const ZuviError &lastError,
                                   DanmakuCompletion completion);
    void fetchRelatedVideosWithBVID(const QString &bvid, VideosCompletion completion);
    void fetchCommentsForAID(qint64 aid, const QString &bvid, CommentsCompletion completion);
    void fetchCommentsForAID(qint64 aid, const QString &bvid, int page, int pageSize,
                             CommentsCompletion completion);
    void fetchMainCommentsForAID(qint64 aid, const QString &bvid, const ZuviError &lastError,
                                 CommentsCompletion completion);
    // One step of the danmaku source trace: the debug log in developer mode,
    // and "ZuviDanmakuAPILogNotification" always.
    void postDanmakuAPILogMessage(const QString &message);

    // --- Following feed
    void fetchFollowingRowsWithType(const QString &type, int page, const QString &offset,
                                    FollowingPageCompletion completion);
    void fetchFollowingRowsWithType(const QString &type, FollowingRowsCompletion completion);

    // --- Device identity and signed-in actions
    static bool cookieHasDeviceIdentity(const QString &cookie);
    void ensureDeviceCookieWithCompletion(CookieCompletion completion);
    QString saveDeviceCookieFromData(const QByteArray &data, const QString &baseCookie,
                                     ZuviError *error);
    void ensureDeviceCookieForCategory(const QString &category, ActionCompletion actionCompletion,
                                       CookiePerform perform);
    void performActionRequest(const ZuviURLRequest &request, const QString &category,
                              ActionCompletion completion);
    void fetchDefaultFavoriteMediaIDForMID(qint64 mid, const QString &cookie,
                                           MediaIDCompletion completion);
    void likeVideoWithAID(qint64 aid, const QString &bvid, ActionCompletion completion);
    void addFavoriteWithAID(qint64 aid, const QString &bvid, ActionCompletion completion);
    void addWatchLaterWithAID(qint64 aid, const QString &bvid, ActionCompletion completion);
    void sendCommentForAID(qint64 aid, const QString &bvid, const QString &message,
                           ActionCompletion completion);
    void sendDanmakuWithAID(qint64 aid, qint64 cid, const QString &bvid, const QString &message,
                            int progress, ActionCompletion completion);

    // --- QR login and the current user
    void generateLoginQRCodeWithCompletion(LoginURLCompletion completion);
    void pollLoginQRCodeWithKey(const QString &key, LoginPollCompletion completion);
    void fetchCurrentUserProfileWithCompletion(UserProfileCompletion completion);
    void fetchRelationStatForProfile(const ZuviUserProfile &profile,
                                     UserProfileCompletion completion);

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
    // Sends a request and hands a connection error or the parsed videos to
    // finishWithVideos.
    void
    sendVideoListRequest(const ZuviURLRequest &request,
                         std::function<QList<ZuviVideoItem>(const QByteArray &, ZuviError *)> parse,
                         VideosCompletion completion);
    QString apiURL(const QString &pathAndQuery) const;
    QString hostURL(const QUrl &base, const QString &pathAndQuery) const;
    // The primary danmaku source: the API host over plain http.
    QString plainAPIURL(const QString &pathAndQuery) const;
    void sendSearchRequest(const QString &keyword, int page, int retryCount,
                           VideosCompletion completion);
    void handleSearchFailure(const QString &keyword, int page, int retryCount,
                             const QList<ZuviVideoItem> &items, const ZuviError &error,
                             const VideosCompletion &completion);
    ZuviURLRequest followingFeedRequest(const QString &type, int page, const QString &offset) const;
    void handleDanmakuAnswer(bool legacy, qint64 cid, const ZuviHTTPResponse &response,
                             const ZuviError &connectionError, const DanmakuCompletion &completion);
    // The CSRF token check every action makes after its own; false (and the
    // action finished with error 741) when there is no token.
    bool requireCSRFToken(const QString &category, const ActionCompletion &completion,
                          QString *csrf);
    // The token check, then the device identity; perform gets the
    // device-complete cookie and the token.
    void runAction(const QString &category, ActionCompletion completion,
                   std::function<void(const QString &cookie, const QString &csrf)> perform);
    void failAction(int code, const QString &message, const QString &category,
                    const ActionCompletion &completion);
    void postAction(const QString &path, const QString &bvid, const QVariantMap &form,
                    const QString &cookie, const QString &category, ActionCompletion completion);
    void addFavoriteToFolder(qint64 aid, const QString &bvid, qint64 mid, const QString &cookie,
                             const QString &csrf, ActionCompletion completion);

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
    ZuviScheduler *m_scheduler;
    int m_timeoutMs = 20000;
    bool m_developerModeForced = false;
    std::unique_ptr<ZuviWorkQueue> m_networkQueue;
    std::unique_ptr<ZuviHTTPTransport> m_transport;
};
