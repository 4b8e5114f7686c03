#pragma once

#include "net/zuviapiclient.h"
#include "platform/zuvihttptransport.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMutex>
#include <QVariantMap>

#include <memory>

// Talks HTTP to a demo service running in the same process on 127.0.0.1.
// The service answers on the main thread, so a request is sent through the
// transport's own thread while this thread keeps its event loop turning.
class ZuviDemoTestClient
{
public:
    struct Result {
        ZuviHTTPResponse response;
        ZuviError error;
        bool done = false;
        QJsonObject json() const { return QJsonDocument::fromJson(response.body).object(); }
        int code() const { return json().value("code").toInt(-99999); }
        QJsonObject data() const { return json().value("data").toObject(); }
    };

    explicit ZuviDemoTestClient(quint16 port) : m_port(port) {}

    QString url(const QString &pathAndQuery) const
    {
        return QStringLiteral("http://127.0.0.1:%1%2").arg(m_port).arg(pathAndQuery);
    }

    // Starts a request; the result fills in when the answer arrives.
    std::shared_ptr<Result> start(const QString &pathAndQuery, const ZuviHeaderPairs &headers = {},
                                  const QVariantMap &form = {})
    {
        ZuviURLRequest request;
        request.url = QUrl(url(pathAndQuery));
        request.headers = headers;
        request.timeoutMs = 10000;
        if (!form.isEmpty()) {
            request.method = "POST";
            request.body = ZuviAPIClient::formBodyStringWithParameters(form).toUtf8();
            request.setHeader("Content-Type", "application/x-www-form-urlencoded; charset=UTF-8");
        }
        if (!m_cookie.isEmpty() && !request.hasHeader("Cookie"))
            request.setHeader("Cookie", m_cookie.toUtf8());
        auto result = std::make_shared<Result>();
        m_transport.send(
            request, [result](const ZuviHTTPResponse &response, const ZuviError &error) {
                QMetaObject::invokeMethod(QCoreApplication::instance(), [result, response, error] {
                    result->response = response;
                    result->error = error;
                    result->done = true;
                });
            });
        return result;
    }

    // Waits for a started request (at most ten seconds).
    static bool wait(const std::shared_ptr<Result> &result)
    {
        QElapsedTimer clock;
        clock.start();
        while (!result->done && clock.elapsed() < 10000)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        return result->done;
    }

    Result get(const QString &pathAndQuery, const ZuviHeaderPairs &headers = {})
    {
        const auto result = start(pathAndQuery, headers);
        wait(result);
        return *result;
    }

    Result post(const QString &path, const QVariantMap &form)
    {
        const auto result = start(path, {}, form);
        wait(result);
        return *result;
    }

    // The cookie header sent with every request from now on ("" for none).
    void setCookie(const QString &cookie) { m_cookie = cookie; }
    QString cookie() const { return m_cookie; }

private:
    quint16 m_port;
    QString m_cookie;
    ZuviHTTPTransport m_transport;
};
