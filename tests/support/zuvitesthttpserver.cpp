#include "zuvitesthttpserver.h"

#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

#include <memory>

namespace {
QString handlerKey(const QByteArray &method, const QString &path)
{
    return QString::fromLatin1(method.toUpper()) + ' ' + path;
}

QByteArray reasonPhrase(int status)
{
    switch (status) {
    case 200:
        return "OK";
    case 206:
        return "Partial Content";
    case 304:
        return "Not Modified";
    case 404:
        return "Not Found";
    case 500:
        return "Internal Server Error";
    default:
        return "Status";
    }
}

// Parses one complete request from the front of buffer, removing it; false
// when the buffer does not yet hold a whole request.
bool takeRequest(QByteArray *buffer, ZuviRecordedRequest *request)
{
    const int headerEnd = buffer->indexOf("\r\n\r\n");
    if (headerEnd < 0)
        return false;
    const QList<QByteArray> lines = buffer->left(headerEnd).split('\n');
    const QList<QByteArray> requestLine = lines.value(0).trimmed().split(' ');
    ZuviHeaderList headers;
    qint64 contentLength = 0;
    for (int i = 1; i < lines.size(); ++i) {
        const QByteArray line = lines.at(i).trimmed();
        const int colon = line.indexOf(':');
        if (colon <= 0)
            continue;
        const QByteArray name = line.left(colon).trimmed();
        const QByteArray value = line.mid(colon + 1).trimmed();
        headers.append({name, value});
        if (name.compare("Content-Length", Qt::CaseInsensitive) == 0)
            contentLength = value.toLongLong();
    }
    const qint64 total = headerEnd + 4 + contentLength;
    if (buffer->size() < total)
        return false;
    const QByteArray target = requestLine.value(1);
    const int questionMark = target.indexOf('?');
    request->method = requestLine.value(0);
    request->path = QString::fromUtf8(questionMark < 0 ? target : target.left(questionMark));
    request->query = questionMark < 0 ? QString() : QString::fromUtf8(target.mid(questionMark + 1));
    request->headers = headers;
    request->body = buffer->mid(headerEnd + 4, contentLength);
    buffer->remove(0, total);
    return true;
}

QByteArray serialise(const ZuviScriptedAnswer &answer)
{
    QByteArray out = "HTTP/1.1 " + QByteArray::number(answer.status) + ' ' +
                     reasonPhrase(answer.status) + "\r\n";
    bool hasLength = false;
    for (const auto &header : answer.headers) {
        out += header.first + ": " + header.second + "\r\n";
        hasLength |= header.first.compare("Content-Length", Qt::CaseInsensitive) == 0;
    }
    if (!hasLength)
        out += "Content-Length: " + QByteArray::number(answer.body.size()) + "\r\n";
    out += "\r\n" + answer.body;
    return out;
}
} // namespace

// Lives on the server's thread and owns the listening socket and connections.
class ZuviTestHttpServerWorker : public QObject
{
public:
    explicit ZuviTestHttpServerWorker(ZuviTestHttpServer *owner) : m_owner(owner) {}

    quint16 listen()
    {
        m_server = new QTcpServer(this);
        if (!m_server->listen(QHostAddress::LocalHost, 0))
            return 0;
        connect(m_server, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket *socket = m_server->nextPendingConnection())
                accept(socket);
        });
        return m_server->serverPort();
    }

private:
    void accept(QTcpSocket *socket)
    {
        auto buffer = std::make_shared<QByteArray>();
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QTcpSocket::readyRead, this, [this, socket, buffer] {
            buffer->append(socket->readAll());
            ZuviRecordedRequest request;
            while (takeRequest(buffer.get(), &request)) {
                m_owner->noteArrival(request);
                respond(socket, m_owner->answerFor(request));
            }
        });
    }

    void respond(QTcpSocket *socket, const ZuviScriptedAnswer &answer)
    {
        if (answer.neverAnswer)
            return;
        QPointer<QTcpSocket> guarded(socket);
        // The answer counts as given once it is on the socket, so a test that
        // waits for it knows the bytes have left.
        auto send = [this, guarded, answer] {
            if (guarded && answer.dropConnection) {
                guarded->abort();
            } else if (guarded) {
                guarded->write(serialise(answer));
                guarded->flush();
            }
            m_owner->noteAnswered();
        };
        if (answer.delayMs > 0)
            QTimer::singleShot(answer.delayMs, this, send);
        else
            send();
    }

    ZuviTestHttpServer *m_owner;
    QTcpServer *m_server = nullptr;
};

QByteArray ZuviRecordedRequest::header(const QByteArray &name) const
{
    for (const auto &pair : headers) {
        if (pair.first.compare(name, Qt::CaseInsensitive) == 0)
            return pair.second;
    }
    return {};
}

bool ZuviRecordedRequest::hasHeader(const QByteArray &name) const
{
    for (const auto &pair : headers) {
        if (pair.first.compare(name, Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}

ZuviScriptedAnswer ZuviScriptedAnswer::json(const QByteArray &body, int status)
{
    return text(body, "application/json; charset=utf-8", status);
}

ZuviScriptedAnswer ZuviScriptedAnswer::text(const QByteArray &body, const QByteArray &contentType,
                                            int status)
{
    ZuviScriptedAnswer answer;
    answer.status = status;
    answer.body = body;
    answer.headers.append({"Content-Type", contentType});
    return answer;
}

ZuviTestHttpServer::ZuviTestHttpServer()
{
    m_thread.setObjectName("zuvi-test-http");
}

ZuviTestHttpServer::~ZuviTestHttpServer()
{
    if (m_worker) {
        QMetaObject::invokeMethod(
            m_worker, [worker = m_worker] { delete worker; }, Qt::BlockingQueuedConnection);
    }
    m_thread.quit();
    m_thread.wait();
}

bool ZuviTestHttpServer::start()
{
    m_thread.start();
    m_worker = new ZuviTestHttpServerWorker(this);
    m_worker->moveToThread(&m_thread);
    quint16 port = 0;
    QMetaObject::invokeMethod(
        m_worker, [this, &port] { port = m_worker->listen(); }, Qt::BlockingQueuedConnection);
    m_port = port;
    return port != 0;
}

QUrl ZuviTestHttpServer::baseUrl() const
{
    return QUrl(QStringLiteral("http://127.0.0.1:%1").arg(m_port));
}

QString ZuviTestHttpServer::urlString(const QString &pathAndQuery) const
{
    return baseUrl().toString() + pathAndQuery;
}

void ZuviTestHttpServer::setAnswer(const QByteArray &method, const QString &path,
                                   const ZuviScriptedAnswer &answer)
{
    setHandler(method, path, [answer](const ZuviRecordedRequest &) { return answer; });
}

void ZuviTestHttpServer::setAnswerSequence(const QByteArray &method, const QString &path,
                                           const QList<ZuviScriptedAnswer> &answers)
{
    auto next = std::make_shared<int>(0);
    setHandler(method, path, [answers, next](const ZuviRecordedRequest &) {
        const int index = std::min(*next, static_cast<int>(answers.size()) - 1);
        ++*next;
        return index < 0 ? ZuviScriptedAnswer() : answers.at(index);
    });
}

void ZuviTestHttpServer::setHandler(const QByteArray &method, const QString &path, Handler handler)
{
    QMutexLocker lock(&m_mutex);
    m_handlers.insert(handlerKey(method, path), std::move(handler));
}

void ZuviTestHttpServer::setFallbackHandler(Handler handler)
{
    QMutexLocker lock(&m_mutex);
    m_fallback = std::move(handler);
}

ZuviScriptedAnswer ZuviTestHttpServer::answerFor(const ZuviRecordedRequest &request)
{
    Handler handler;
    {
        QMutexLocker lock(&m_mutex);
        handler = m_handlers.value(handlerKey(request.method, request.path));
        if (!handler)
            handler = m_handlers.value(handlerKey("*", request.path));
        if (!handler)
            handler = m_fallback;
    }
    if (handler)
        return handler(request);
    return ZuviScriptedAnswer::text("not found", "text/plain", 404);
}

void ZuviTestHttpServer::noteArrival(const ZuviRecordedRequest &request)
{
    QMutexLocker lock(&m_mutex);
    m_requests.append(request);
    ++m_inFlight;
    m_maxInFlight = std::max(m_maxInFlight, m_inFlight);
}

void ZuviTestHttpServer::noteAnswered()
{
    QMutexLocker lock(&m_mutex);
    --m_inFlight;
}

QList<ZuviRecordedRequest> ZuviTestHttpServer::requests() const
{
    QMutexLocker lock(&m_mutex);
    return m_requests;
}

QList<ZuviRecordedRequest> ZuviTestHttpServer::requests(const QString &path) const
{
    QList<ZuviRecordedRequest> matching;
    for (const ZuviRecordedRequest &request : requests()) {
        if (request.path == path)
            matching.append(request);
    }
    return matching;
}

int ZuviTestHttpServer::requestCount() const
{
    QMutexLocker lock(&m_mutex);
    return m_requests.size();
}

int ZuviTestHttpServer::requestCount(const QString &path) const
{
    return requests(path).size();
}

void ZuviTestHttpServer::clearRequests()
{
    QMutexLocker lock(&m_mutex);
    m_requests.clear();
    m_maxInFlight = m_inFlight;
}

int ZuviTestHttpServer::maxInFlight() const
{
    QMutexLocker lock(&m_mutex);
    return m_maxInFlight;
}

int ZuviTestHttpServer::inFlight() const
{
    QMutexLocker lock(&m_mutex);
    return m_inFlight;
}
