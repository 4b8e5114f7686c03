#include "zuvidemohttpserver.h"

#include <QDateTime>
#include <QHostAddress>
#include <QLocale>
#include <QRegularExpression>
#include <QTcpServer>
#include <QTcpSocket>

namespace {
// Requests bigger than these are refused: the client never sends anything
// near them, so a bigger one is a mistake or abuse.
constexpr int kMaxHeaderBytes = 64 * 1024;
constexpr int kMaxBodyBytes = 4 * 1024 * 1024;

QMap<QString, QString> parsePairs(const QString &text, QChar separator, bool formDecoding)
{
    QMap<QString, QString> pairs;
    for (const QString &piece : text.split(separator, Qt::SkipEmptyParts)) {
        const QString trimmed = piece.trimmed();
        const int equals = trimmed.indexOf('=');
        if (equals <= 0)
            continue;
        QString name = trimmed.left(equals);
        QString value = trimmed.mid(equals + 1);
        if (formDecoding) {
            // Form bodies escape blanks as %20 or, from other clients, as "+".
            name = QUrl::fromPercentEncoding(name.replace('+', ' ').toUtf8());
            value = QUrl::fromPercentEncoding(value.replace('+', ' ').toUtf8());
        }
        pairs.insert(name, value);
    }
    return pairs;
}

QByteArray httpDate()
{
    return QLocale::c()
               .toString(QDateTime::currentDateTimeUtc(),
                         QStringLiteral("ddd, dd MMM yyyy hh:mm:ss"))
               .toLatin1() +
           " GMT";
}
} // namespace

QByteArray ZuviDemoRequest::header(const QByteArray &name) const
{
    for (const auto &pair : headers) {
        if (pair.first.compare(name, Qt::CaseInsensitive) == 0)
            return pair.second;
    }
    return {};
}

QString ZuviDemoRequest::queryValue(const QString &key) const
{
    return QUrlQuery(rawQuery).queryItemValue(key, QUrl::FullyDecoded);
}

QMap<QString, QString> ZuviDemoRequest::cookies() const
{
    return parsePairs(QString::fromUtf8(header("Cookie")), ';', false);
}

QMap<QString, QString> ZuviDemoRequest::form() const
{
    return parsePairs(QString::fromUtf8(body), '&', true);
}

ZuviDemoResponse ZuviDemoResponse::json(const QJsonDocument &document, int status)
{
    return content(document.toJson(QJsonDocument::Compact), "application/json; charset=utf-8",
                   status);
}

ZuviDemoResponse ZuviDemoResponse::content(const QByteArray &body, const QByteArray &contentType,
                                           int status)
{
    ZuviDemoResponse response;
    response.status = status;
    response.contentType = contentType;
    response.body = body;
    return response;
}

ZuviDemoResponse ZuviDemoResponse::dropped()
{
    ZuviDemoResponse response;
    response.drop = true;
    return response;
}

ZuviDemoHttpServer::ZuviDemoHttpServer(QObject *parent)
    : QObject(parent), m_server(new QTcpServer(this))
{
    connect(m_server, &QTcpServer::newConnection, this, &ZuviDemoHttpServer::acceptConnections);
}

ZuviDemoHttpServer::~ZuviDemoHttpServer() = default;

bool ZuviDemoHttpServer::listen(quint16 port, QString *errorText)
{
    if (m_server->listen(QHostAddress::LocalHost, port))
        return true;
    if (errorText)
        *errorText = m_server->errorString();
    return false;
}

quint16 ZuviDemoHttpServer::port() const
{
    return m_server->serverPort();
}

void ZuviDemoHttpServer::acceptConnections()
{
    while (QTcpSocket *socket = m_server->nextPendingConnection()) {
        m_connections.insert(socket, Connection());
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] { readFrom(socket); });
        connect(socket, &QTcpSocket::disconnected, this, [this, socket] {
            m_connections.remove(socket);
            socket->deleteLater();
        });
    }
}

void ZuviDemoHttpServer::readFrom(QTcpSocket *socket)
{
    auto it = m_connections.find(socket);
    if (it == m_connections.end())
        return;
    it->buffer.append(socket->readAll());
    if (it->busy)
        return;
    ZuviDemoRequest request;
    bool malformed = false;
    if (!takeRequest(*it, &request, &malformed)) {
        if (malformed) {
            ZuviDemoResponse bad = ZuviDemoResponse::content("bad request\n", "text/plain", 400);
            bad.addHeader("Connection", "close");
            answer(socket, request, bad);
        }
        return;
    }
    it->busy = true;
    if (!m_handler) {
        answer(socket, request, ZuviDemoResponse::content("no handler\n", "text/plain", 500));
        return;
    }
    QPointer<QTcpSocket> guarded(socket);
    m_handler(request, [this, guarded, request](const ZuviDemoResponse &response) {
        answer(guarded, request, response);
    });
}

bool ZuviDemoHttpServer::takeRequest(Connection &connection, ZuviDemoRequest *request,
                                     bool *malformed)
{
    const int headerEnd = connection.buffer.indexOf("\r\n\r\n");
    if (headerEnd < 0) {
        *malformed = connection.buffer.size() > kMaxHeaderBytes;
        return false;
    }
    const QList<QByteArray> lines = connection.buffer.left(headerEnd).split('\n');
    const QList<QByteArray> requestLine = lines.value(0).trimmed().split(' ');
    if (requestLine.size() != 3) {
        *malformed = true;
        return false;
    }
    request->method = requestLine[0];
    request->version = requestLine[2];
    const QByteArray target = requestLine[1];
    const int question = target.indexOf('?');
    request->path = QUrl::fromPercentEncoding(question < 0 ? target : target.left(question));
    request->rawQuery = question < 0 ? QString() : QString::fromUtf8(target.mid(question + 1));
    for (int i = 1; i < lines.size(); ++i) {
        const QByteArray line = lines[i].trimmed();
        const int colon = line.indexOf(':');
        if (colon > 0)
            request->headers.append({line.left(colon).trimmed(), line.mid(colon + 1).trimmed()});
    }
    bool lengthOk = true;
    const QByteArray lengthText = request->header("Content-Length");
    const int length = lengthText.isEmpty() ? 0 : lengthText.toInt(&lengthOk);
    if (!lengthOk || length < 0 || length > kMaxBodyBytes) {
        *malformed = true;
        return false;
    }
    const int total = headerEnd + 4 + length;
    if (connection.buffer.size() < total)
        return false;
    request->body = connection.buffer.mid(headerEnd + 4, length);
    connection.buffer.remove(0, total);
    return true;
}

void ZuviDemoHttpServer::answer(QPointer<QTcpSocket> socket, const ZuviDemoRequest &request,
                                const ZuviDemoResponse &response)
{
    if (!socket)
        return;
    if (response.drop) {
        socket->abort();
        return;
    }
    const ZuviDemoResponse sent =
        response.acceptsRanges && request.method != "HEAD" && !request.header("Range").isEmpty()
            ? applyRange(request.header("Range"), response)
            : response;
    // HTTP/1.0 closes after each answer unless it asks to keep the connection.
    const QByteArray connection = request.header("Connection").toLower();
    const bool close =
        connection == "close" || (request.version == "HTTP/1.0" && connection != "keep-alive") ||
        response.headers.contains(qMakePair(QByteArray("Connection"), QByteArray("close")));
    QByteArray head =
        "HTTP/1.1 " + QByteArray::number(sent.status) + ' ' + reasonPhrase(sent.status) + "\r\n";
    head += "Date: " + httpDate() + "\r\nServer: oldzuvi-demo-service\r\n";
    if (!sent.contentType.isEmpty())
        head += "Content-Type: " + sent.contentType + "\r\n";
    head += "Content-Length: " + QByteArray::number(sent.body.size()) + "\r\n";
    if (response.acceptsRanges)
        head += "Accept-Ranges: bytes\r\n";
    for (const auto &pair : sent.headers) {
        if (pair.first.compare("Connection", Qt::CaseInsensitive) != 0)
            head += pair.first + ": " + pair.second + "\r\n";
    }
    head += close ? "Connection: close\r\n\r\n" : "Connection: keep-alive\r\n\r\n";
    socket->write(head);
    if (request.method != "HEAD")
        socket->write(sent.body);
    if (close) {
        socket->disconnectFromHost();
        return;
    }
    auto it = m_connections.find(socket.data());
    if (it == m_connections.end())
        return;
    it->busy = false;
    // A pipelined request may already wait in the buffer.
    if (!it->buffer.isEmpty())
        QMetaObject::invokeMethod(
            this,
            [this, socket] {
                if (socket)
                    readFrom(socket.data());
            },
            Qt::QueuedConnection);
}

ZuviDemoResponse ZuviDemoHttpServer::applyRange(const QByteArray &rangeHeader,
                                                const ZuviDemoResponse &full)
{
    static const QRegularExpression single(QStringLiteral("^bytes=(\\d*)-(\\d*)$"));
    const QRegularExpressionMatch match = single.match(QString::fromLatin1(rangeHeader.trimmed()));
    const qint64 size = full.body.size();
    if (!match.hasMatch() || full.status != 200 ||
        (match.captured(1).isEmpty() && match.captured(2).isEmpty()))
        return full; // several ranges or nonsense: the whole body is a correct answer
    qint64 first = 0;
    qint64 last = size - 1;
    if (match.captured(1).isEmpty()) {
        // "bytes=-N": the last N bytes.
        first = qMax<qint64>(0, size - match.captured(2).toLongLong());
    } else {
        first = match.captured(1).toLongLong();
        if (!match.captured(2).isEmpty())
            last = qMin(last, match.captured(2).toLongLong());
    }
    ZuviDemoResponse partial = full;
    if (first >= size || first > last) {
        partial.status = 416;
        partial.body.clear();
        partial.addHeader("Content-Range", "bytes */" + QByteArray::number(size));
        return partial;
    }
    partial.status = 206;
    partial.body = full.body.mid(first, last - first + 1);
    partial.addHeader("Content-Range", "bytes " + QByteArray::number(first) + '-' +
                                           QByteArray::number(last) + '/' +
                                           QByteArray::number(size));
    return partial;
}

QByteArray ZuviDemoHttpServer::reasonPhrase(int status)
{
    switch (status) {
    case 200:
        return "OK";
    case 206:
        return "Partial Content";
    case 302:
        return "Found";
    case 304:
        return "Not Modified";
    case 400:
        return "Bad Request";
    case 404:
        return "Not Found";
    case 405:
        return "Method Not Allowed";
    case 416:
        return "Range Not Satisfiable";
    case 500:
        return "Internal Server Error";
    case 502:
        return "Bad Gateway";
    case 503:
        return "Service Unavailable";
    default:
        return "Status";
    }
}
