#pragma once

#include "platform/zuvierror.h"
#include "zuviurlrequest.h"

#include <QObject>
#include <QThread>

#include <atomic>
#include <functional>

class QAbstractNetworkCache;
class QNetworkAccessManager;

// Sends requests from any thread on a network thread of its own. No
// automatic cookie jar: the only cookies sent are the request's own "Cookie"
// header. No local caching either, unless a URL cache was given and the
// request allows it. A request that sees no progress for its timeout fails
// with a timeout error; an HTTP answer of any status is a response, not an
// error, and so is a complete answer of another scheme (a file), which comes
// back as a response that is not HTTP.
class ZuviHTTPTransport : public QObject
{
    Q_OBJECT
public:
    using Handler = std::function<void(const ZuviHTTPResponse &, const ZuviError &)>;

    static const char *const kErrorDomain;

    ZuviHTTPTransport();
    ~ZuviHTTPTransport() override;

    // The handler runs on the network thread, exactly once.
    void send(const ZuviURLRequest &request, Handler handler);

    // Gives the transport a URL cache (it takes ownership; nullptr removes
    // it). Only requests with allowsCache use it. Call before sending.
    void setCache(QAbstractNetworkCache *cache);
    // Removes every stored answer from the URL cache, if there is one.
    void clearCache();

    // Requests sent whose handler has not yet returned. It rises in send(),
    // on the caller's thread, and falls only after the handler has run, so
    // whatever the handler queued is already queued when it reads zero.
    int requestsInFlight() const { return m_requestsInFlight.load(); }

private:
    void sendOnNetworkThread(const ZuviURLRequest &request, const Handler &handler);

    QThread m_thread;
    QNetworkAccessManager *m_manager = nullptr;
    std::atomic<int> m_requestsInFlight{0};
};
