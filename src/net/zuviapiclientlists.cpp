// Video list operations (popular, recommended, rankings with their fallback,
// search with its delayed retry, history, watch later, favourites) and the
// following feed.
#include "zuviapiclient.h"

#include "platform/zuvischeduler.h"
#include "zuvifollowingfeedparser.h"
#include "zuvivideolistparser.h"

#include <QPointer>

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
