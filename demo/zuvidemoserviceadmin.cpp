// The demo service's pages and commands for the person running it: the QR
// confirmation page, announcing a message, confirming a login, the failure
// switches and the state summary.
#include "zuvidemoservice.h"

#include "platform/zuvischeduler.h"
#include "zuvidemoservicesupport.h"

#include <QJsonArray>

using namespace ZuviDemoServiceSupport;

ZuviDemoResponse ZuviDemoService::qrPage(const ZuviDemoRequest &request)
{
    const QString key = request.queryValue("qrcode_key");
    // Opening the page is scanning the code.
    if (!m_state.scanQRLogin(key, m_scheduler->now()))
        return htmlResponse(
            QStringLiteral("二维码已失效"),
            QStringLiteral("<p>这个登录二维码已过期或已使用，请在客户端重新生成。</p>"));
    return htmlResponse(QStringLiteral("确认登录 oldZuvi"),
                        QStringLiteral("<p>客户端正在以<b>演示用户</b>的身份登录。</p>"
                                       "<form method=\"post\" action=\"/qr/confirm\">"
                                       "<input type=\"hidden\" name=\"qrcode_key\" value=\"%1\">"
                                       "<button type=\"submit\">确认登录</button></form>")
                            .arg(key.toHtmlEscaped()));
}

ZuviDemoResponse ZuviDemoService::qrConfirm(const ZuviDemoRequest &request)
{
    const QString key = request.form().value("qrcode_key", request.queryValue("qrcode_key"));
    if (key.isEmpty() || m_state.confirmQRLogin(key, m_scheduler->now()).isEmpty())
        return htmlResponse(
            QStringLiteral("二维码已失效"),
            QStringLiteral("<p>这个登录二维码已过期或已使用，请在客户端重新生成。</p>"));
    emit notice(QStringLiteral("已确认登录，客户端下次轮询时完成登录"));
    return htmlResponse(QStringLiteral("已确认"),
                        QStringLiteral("<p>已确认登录，客户端会在下一次查询时完成登录。</p>"));
}

ZuviDemoResponse ZuviDemoService::adminAnnounce(const ZuviDemoRequest &request)
{
    const QMap<QString, QString> form = request.form();
    const QString text = form.value("text").trimmed();
    if (text.isEmpty() && form.value("image").isEmpty())
        return fail(kBadRequest, QStringLiteral("消息内容不能为空"));
    const bool developer = form.value("dev") == QLatin1String("1");
    const int version =
        m_state.announce(developer, text, form.value("image").trimmed(), nowSeconds());
    emit notice(QStringLiteral("已发布%1消息 version %2：%3")
                    .arg(developer ? QStringLiteral("开发者") : QString())
                    .arg(version)
                    .arg(text));
    return ok(QJsonObject{{"version", version}});
}

ZuviDemoResponse ZuviDemoService::adminConfirm(const ZuviDemoRequest &request)
{
    const QString key =
        m_state.confirmQRLogin(request.form().value("qrcode_key"), m_scheduler->now());
    if (key.isEmpty())
        return fail(1, QStringLiteral("没有等待确认的登录二维码"));
    emit notice(QStringLiteral("已确认登录，客户端下次轮询时完成登录"));
    return ok(QJsonObject{{"qrcode_key", key}});
}

ZuviDemoResponse ZuviDemoService::adminFail(const ZuviDemoRequest &request)
{
    const QMap<QString, QString> form = request.form();
    const QString path = form.value("path").trimmed();
    const QString mode = form.value("mode").trimmed();
    if (path.isEmpty() && mode == QLatin1String("off")) {
        m_failures.clearAll();
        return ok(m_failures.describe());
    }
    std::optional<ZuviDemoFailure> failure;
    QString errorText;
    if (!path.startsWith('/') || !ZuviDemoFailureSwitches::parseMode(mode, &failure, &errorText))
        return fail(kBadRequest,
                    errorText.isEmpty() ? QStringLiteral("路径必须以 / 开头") : errorText);
    if (!failure) {
        m_failures.clear(path);
    } else {
        const int times = form.value("times").toInt();
        failure->remaining = times > 0 ? times : -1;
        m_failures.set(path, *failure);
    }
    return ok(m_failures.describe());
}

ZuviDemoResponse ZuviDemoService::adminState(const ZuviDemoRequest &)
{
    QJsonArray folders;
    for (const ZuviDemoFolder &folder : m_state.folders())
        folders.append(QJsonObject{
            {"id", folder.id}, {"title", folder.title}, {"count", int(folder.entries.size())}});
    return ok(QJsonObject{{"seed", QString::number(m_content.seed())},
                          {"origin", origin()},
                          {"videos", int(m_content.videos().size())},
                          {"history", int(m_state.history().size())},
                          {"watchLater", int(m_state.watchLater().size())},
                          {"folders", folders},
                          {"messageVersion", m_state.configMessage(false).version},
                          {"failures", m_failures.describe()}});
}
