#include "zuviscreenlifetimecheck.h"

#include "net/zuviapiclient.h"
#include "platform/zuvivirtualscheduler.h"
#include "platform/zuviworkqueue.h"
#include "zuvitesthttpserver.h"

#include <QCoreApplication>
#include <QDeadlineTimer>

ZuviScreenLifetimeCheck::ZuviScreenLifetimeCheck(ZuviTestHttpServer *server, ZuviAPIClient *client,
                                                 QList<ZuviVirtualScheduler *> clocks)
    : m_server(server), m_client(client), m_clocks(std::move(clocks)),
      m_requestsBefore(server->requestCount())
{
}

namespace {
bool spin(const std::function<bool()> &condition, const QString &what, QString *failure)
{
    QDeadlineTimer deadline(10000);
    while (!condition()) {
        if (deadline.hasExpired()) {
            if (failure)
                *failure = QStringLiteral("timed out waiting for %1").arg(what);
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }
    return true;
}

// Read in this order: a block still on the queue may send a request, which
// counts before the block ends; an answer's handler queues its block before
// its request stops counting.
bool isQuiet(ZuviAPIClient *client)
{
    return client->requestsInFlight() == 0 && client->networkQueue()->waitForDone(0) &&
           client->requestsInFlight() == 0;
}
} // namespace

bool ZuviScreenLifetimeCheck::spinUntil(const std::function<bool()> &condition, const QString &what)
{
    return spin(condition, what, &m_failure);
}

bool ZuviScreenLifetimeCheck::drainClient(ZuviAPIClient *client, QString *failure)
{
    // Quiet both before and after the main thread has run what the answers
    // posted, since that may send the next request.
    return spin(
        [client] {
            if (!isQuiet(client))
                return false;
            QCoreApplication::processEvents();
            return isQuiet(client);
        },
        QStringLiteral("the client's answers"), failure);
}

bool ZuviScreenLifetimeCheck::waitForRequests(int count)
{
    return spinUntil([&] { return m_server->requestCount() - m_requestsBefore >= count; },
                     QStringLiteral("%1 requests").arg(count));
}

bool ZuviScreenLifetimeCheck::destroyAndDrain(QObject *screen)
{
    delete screen;
    const int requestsAtDeletion = m_server->requestCount();
    // The clocks move only once every answer is in: a request still out
    // when they jump could meet a timer meant for its answer and count a
    // retry.
    if (!drainClient(m_client, &m_failure))
        return false;
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    for (ZuviVirtualScheduler *clock : m_clocks)
        clock->advance(60);
    // And anything a timer of the gone screen might have sent.
    if (!drainClient(m_client, &m_failure))
        return false;
    m_requestsAfter = m_server->requestCount() - requestsAtDeletion;
    return true;
}
