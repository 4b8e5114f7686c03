// The demo service's account endpoints (QR login, the signed-in user, the
// device identity) and the signed-in writes with their effects.
#include "zuvidemoservice.h"

#include "platform/zuvischeduler.h"
#include "zuvidemoservicesupport.h"

using namespace ZuviDemoServiceSupport;

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
