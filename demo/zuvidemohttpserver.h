#pragma once

#include <QByteArray>
#include <QHash>
#include <QJsonDocument>
#include <QList>
#include <QMap>
#include <QObject>
#include <QPair>
#include <QPointer>
#include <QUrlQuery>

#include <functional>

class QTcpServer;
class QTcpSocket;

using ZuviDemoHeaders = QList<QPair<QByteArray, QByteArray>>;

// One request as it came off the wire.
struct ZuviDemoRequest {
    QByteArray method;
    QByteArray version; // "HTTP/1.1"
    QString path;       // decoded, without the query
    QString rawQuery;
    ZuviDemoHeaders headers;
    QByteArray body;

    QByteArray header(const QByteArray &name) const;
    QString queryValue(const QString &key) const;
    // The "Cookie" header as name → value.
    QMap<QString, QString> cookies() const;
    // A form body (application/x-www-form-urlencoded) as name → value.
    QMap<QString, QString> form() const;
};

// What to send back. A response marked drop closes the connection without a
// byte; one marked acceptsRanges answers "Range" requests from its body.
struct ZuviDemoResponse {
    int status = 200;
    QByteArray contentType = "application/json; charset=utf-8";
    ZuviDemoHeaders headers;
    QByteArray body;
    bool drop = false;
    bool acceptsRanges = false;

    static ZuviDemoResponse json(const QJsonDocument &document, int status = 200);
    static ZuviDemoResponse content(const QByteArray &body, const QByteArray &contentType,
                                    int status = 200);
    static ZuviDemoResponse dropped();

    void addHeader(const QByteArray &name, const QByteArray &value)
    {
        headers.append(qMakePair(name, value));
    }
};

// A small HTTP/1.1 server on 127.0.0.1 for the demo service, running on the
// main thread's event loop. Connections are kept alive; requests on one
// connection are answered strictly in order, and a handler may answer later
// (the failure switches delay answers) through the responder it is given.
class ZuviDemoHttpServer : public QObject
{
    Q_OBJECT
public:
    using Responder = std::function<void(const ZuviDemoResponse &)>;
    using Handler = std::function<void(const ZuviDemoRequest &, const Responder &)>;

    explicit ZuviDemoHttpServer(QObject *parent = nullptr);
    ~ZuviDemoHttpServer() override;

    void setHandler(Handler handler) { m_handler = std::move(handler); }
    // Port 0 lets the system choose a free one.
    bool listen(quint16 port, QString *errorText);
    quint16 port() const;

    // The part of a full response that a "Range" header asks for: 206 with
    // Content-Range, 416 for a range outside the body, the response itself
    // when there is no usable single range.
    static ZuviDemoResponse applyRange(const QByteArray &rangeHeader, const ZuviDemoResponse &full);
    static QByteArray reasonPhrase(int status);

private:
    struct Connection {
        QByteArray buffer;
        bool busy = false;
    };

    void acceptConnections();
    void readFrom(QTcpSocket *socket);
    // Takes one complete request off the buffer; false while it is incomplete.
    bool takeRequest(Connection &connection, ZuviDemoRequest *request, bool *malformed);
    void answer(QPointer<QTcpSocket> socket, const ZuviDemoRequest &request,
                const ZuviDemoResponse &response);

    QTcpServer *m_server = nullptr;
    QHash<QTcpSocket *, Connection> m_connections;
    Handler m_handler;
};
