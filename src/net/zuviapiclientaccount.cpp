// Signed-in actions (like, favourite, watch later, comment, danmaku) with
// their token and device-identity checks, the QR login and the current
// user's profile.
#include "zuviapiclient.h"

#include "zuviaccountparser.h"
#include "zuvivideolistparser.h"

#include <QDateTime>

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
