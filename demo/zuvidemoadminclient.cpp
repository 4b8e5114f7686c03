#include "zuvidemoadminclient.h"

#include "platform/zuvihttptransport.h"

#include <QEventLoop>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPointer>
#include <QUrlQuery>

bool ZuviDemoAdminClient::call(const QString &path, const QVariantMap &form, QJsonValue *answer,
                               QString *errorText) const
{
    ZuviURLRequest request;
    request.url = QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(m_port).arg(path));
    request.timeoutMs = 10000;
    if (!form.isEmpty()) {
        request.method = "POST";
        QUrlQuery body;
        for (auto it = form.constBegin(); it != form.constEnd(); ++it)
            body.addQueryItem(it.key(),
                              QString::fromUtf8(QUrl::toPercentEncoding(it.value().toString())));
        request.body = body.query(QUrl::FullyEncoded).toUtf8();
        request.setHeader("Content-Type", "application/x-www-form-urlencoded; charset=UTF-8");
    }
    ZuviHTTPTransport transport;
    QEventLoop loop;
    ZuviHTTPResponse response;
    ZuviError error;
    // The transport answers on its own thread; the loop waits here for it.
    transport.send(request, [&](const ZuviHTTPResponse &r, const ZuviError &e) {
        response = r;
        error = e;
        QMetaObject::invokeMethod(&loop, "quit", Qt::QueuedConnection);
    });
    loop.exec();
    if (!error.isNull()) {
        *errorText =
            QStringLiteral("连接 127.0.0.1:%1 上的演示服务失败：%2").arg(m_port).arg(error.message);
        return false;
    }
    const QJsonObject root = QJsonDocument::fromJson(response.body).object();
    if (root.value("code").toInt(-1) != 0) {
        *errorText =
            QStringLiteral("演示服务拒绝了请求（HTTP %1）：%2")
                .arg(response.statusCode)
                .arg(root.value("message").toString(QString::fromUtf8(response.body.left(200))));
        return false;
    }
    if (answer)
        *answer = root.value("data");
    return true;
}
