#pragma once

#include "platform/zuvierror.h"
#include "zuviurlrequest.h"

#include <QObject>
#include <QThread>

#include <functional>

class QNetworkAccessManager;

// Sends requests from any thread on a network thread of its own. No local
// caching and no automatic cookie jar: the only cookies sent are the
// request's own "Cookie" header. A request that sees no progress for its
// timeout fails with a timeout error; an HTTP answer of any status is a
// response, not an error.
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

private:
    void sendOnNetworkThread(const ZuviURLRequest &request, const Handler &handler);

    QThread m_thread;
    QNetworkAccessManager *m_manager = nullptr;
};
