#include "zuvihttptransport.h"

#include <QAbstractNetworkCache>
#include <QBuffer>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>

const char *const ZuviHTTPTransport::kErrorDomain = "ZuviNetworkErrorDomain";

namespace {
QNetworkRequest networkRequestFrom(const ZuviURLRequest &request)
{
    QNetworkRequest networkRequest(request.url);
    for (const auto &header : request.headers)
        networkRequest.setRawHeader(header.first, header.second);
    networkRequest.setAttribute(QNetworkRequest::CacheLoadControlAttribute,
                                QNetworkRequest::AlwaysNetwork);
    networkRequest.setAttribute(QNetworkRequest::CacheSaveControlAttribute, request.allowsCache);
    networkRequest.setAttribute(QNetworkRequest::CookieLoadControlAttribute,
                                QNetworkRequest::Manual);
    networkRequest.setAttribute(QNetworkRequest::CookieSaveControlAttribute,
                                QNetworkRequest::Manual);
    networkRequest.setTransferTimeout(request.timeoutMs);
    return networkRequest;
}

// Errors below 200 (connection, timeout, proxy) and the protocol errors in
// the 300s mean the answer did not arrive whole. The 200s and 400s are HTTP
// statuses of a complete answer, which the parsers judge by its body.
bool isTransportFailure(QNetworkReply::NetworkError error)
{
    const int code = static_cast<int>(error);
    return (code > 0 && code < 200) || (code >= 300 && code < 400);
}

ZuviError connectionError(QNetworkReply *reply, int timeoutMs)
{
    if (reply->error() == QNetworkReply::OperationCanceledError) {
        // The only cancellation is the transfer timeout.
        return ZuviError(ZuviHTTPTransport::kErrorDomain, QNetworkReply::TimeoutError,
                         QStringLiteral("请求超时（%1 秒没有响应）").arg(timeoutMs / 1000.0));
    }
    return ZuviError(ZuviHTTPTransport::kErrorDomain, reply->error(), reply->errorString());
}
} // namespace

ZuviHTTPTransport::ZuviHTTPTransport()
{
    m_thread.setObjectName("zuvi-network");
    m_thread.start();
    moveToThread(&m_thread);
    QMetaObject::invokeMethod(
        this, [this] { m_manager = new QNetworkAccessManager(this); },
        Qt::BlockingQueuedConnection);
}

ZuviHTTPTransport::~ZuviHTTPTransport()
{
    QMetaObject::invokeMethod(
        this,
        [this] {
            delete m_manager;
            m_manager = nullptr;
        },
        Qt::BlockingQueuedConnection);
    m_thread.quit();
    m_thread.wait();
}

void ZuviHTTPTransport::send(const ZuviURLRequest &request, Handler handler)
{
    ++m_requestsInFlight;
    Handler counted = [this, handler](const ZuviHTTPResponse &response, const ZuviError &error) {
        handler(response, error);
        --m_requestsInFlight;
    };
    QMetaObject::invokeMethod(
        this, [this, request, counted] { sendOnNetworkThread(request, counted); },
        Qt::QueuedConnection);
}

void ZuviHTTPTransport::setCache(QAbstractNetworkCache *cache)
{
    // The cache is used by the manager on the network thread, so it must live there.
    if (cache) {
        cache->setParent(nullptr);
        cache->moveToThread(&m_thread);
    }
    QMetaObject::invokeMethod(
        this, [this, cache] { m_manager->setCache(cache); }, Qt::BlockingQueuedConnection);
}

void ZuviHTTPTransport::clearCache()
{
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (QAbstractNetworkCache *cache = m_manager->cache())
                cache->clear();
        },
        Qt::BlockingQueuedConnection);
}

void ZuviHTTPTransport::sendOnNetworkThread(const ZuviURLRequest &request, const Handler &handler)
{
    QNetworkRequest networkRequest = networkRequestFrom(request);
    if (request.allowsCache) {
        // A stored answer is used whatever its age; only when there is none
        // does the request go out (and its answer gets stored). Qt's own
        // freshness rules would revalidate instead.
        QAbstractNetworkCache *cache = m_manager->cache();
        const bool stored = cache && cache->metaData(request.url).isValid();
        networkRequest.setAttribute(QNetworkRequest::CacheLoadControlAttribute,
                                    stored ? QNetworkRequest::AlwaysCache
                                           : QNetworkRequest::PreferNetwork);
    }
    QNetworkReply *reply = nullptr;
    if (request.method == "GET")
        reply = m_manager->get(networkRequest);
    else if (request.method == "POST")
        reply = m_manager->post(networkRequest, request.body);
    else
        reply = m_manager->sendCustomRequest(networkRequest, request.method, request.body);

    const int timeoutMs = request.timeoutMs;
    connect(reply, &QNetworkReply::finished, this, [reply, handler, timeoutMs] {
        reply->deleteLater();
        ZuviHTTPResponse response;
        response.url = reply->url();
        const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
        if (!status.isValid() && reply->error() == QNetworkReply::NoError) {
            // A complete answer of another scheme: a response, but not an HTTP one.
            response.body = reply->readAll();
            handler(response, ZuviError());
            return;
        }
        if (!status.isValid() || isTransportFailure(reply->error())) {
            handler(response, connectionError(reply, timeoutMs));
            return;
        }
        response.isHTTP = true;
        response.statusCode = status.toInt();
        response.headers = reply->rawHeaderPairs();
        response.body = reply->readAll();
        handler(response, ZuviError());
    });
}
