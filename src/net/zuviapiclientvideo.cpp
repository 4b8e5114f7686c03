// One video's content: detail, the play address walking the qualities, the
// danmaku list with its fallback source and trace, related videos and the
// comments with their second source.
#include "zuviapiclient.h"

#include "platform/zuvidebuglog.h"
#include "platform/zuvinotificationcenter.h"
#include "zuvivideocontentparser.h"
#include "zuvivideolistparser.h"

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
    sendVideoListRequest(
        requestWithURLString(url, referer),
        [](const QByteArray &data, ZuviError *error) {
            return ZuviVideoListParser::parseFlexibleVideosFromData(
                data, QStringLiteral("相关推荐"), error);
        },
        completion);
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
