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

bool ZuviScreenLifetimeCheck::spinUntil(const std::function<bool()> &condition, const QString &what)
{
    QDeadlineTimer deadline(10000);
    while (!condition()) {
        if (deadline.hasExpired()) {
            m_failure = QStringLiteral("timed out waiting for %1").arg(what);
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }
    return true;
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
    int sentinels = 0;
    // Until the answers start nothing more: every request sent is answered,
    // however slowly the script answers it, and then one more request, sent
    // after every answer was written, whose completion runs on the main
    // thread behind theirs. An answer may start the next step of the
    // client's own (a signed-in check asks for the counts); that request is
    // drained too before the clocks move, or its timeout would fire and
    // count a retry on a slow machine.
    for (int round = 0; round < 5; ++round) {
        const int before = m_server->requestCount();
        if (!spinUntil([&] { return m_server->inFlight() == 0; }, QStringLiteral("the answers")))
            return false;
        if (!sendSentinel())
            return false;
        ++sentinels;
        if (m_server->requestCount() - before <= 1)
            break;
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    for (ZuviVirtualScheduler *clock : m_clocks)
        clock->advance(60);
    // And one behind anything a timer of the gone screen might have sent.
    if (!sendSentinel())
        return false;
    ++sentinels;
    m_requestsAfter = m_server->requestCount() - requestsAtDeletion - sentinels;
    return true;
}

bool ZuviScreenLifetimeCheck::sendSentinel()
{
    bool done = false;
    m_client->fetchPopularPage(
        1, 1, [&done](const QList<ZuviVideoItem> &, const ZuviError &) { done = true; });
    if (!spinUntil([&] { return done; }, QStringLiteral("the last answer")))
        return false;
    m_client->networkQueue()->waitForDone();
    QCoreApplication::processEvents();
    return true;
}
