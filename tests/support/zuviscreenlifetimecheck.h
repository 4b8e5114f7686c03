#pragma once

#include <QList>
#include <QObject>
#include <QString>

#include <functional>

class ZuviAPIClient;
class ZuviTestHttpServer;
class ZuviVirtualScheduler;

// Leaves a screen the way a user does who taps back before anything came:
// the screen is deleted while its requests are out and its timers pending,
// then every answer arrives and every clock runs far ahead. A completion or
// timer that still reached the screen would run on freed memory, which the
// sanitizer build reports as a failure of the suite.
//
// Each screen's suite uses it the same way:
//
//     ZuviScreenLifetimeCheck check(&server, client, {&screenClock, &clientClock});
//     ... open the screen and start its work ...
//     QVERIFY2(check.waitForRequests(2), qPrintable(check.failure()));
//     QVERIFY2(check.destroyAndDrain(screen), qPrintable(check.failure()));
//     QCOMPARE(check.requestsAfterDestruction(), 0);
class ZuviScreenLifetimeCheck
{
public:
    ZuviScreenLifetimeCheck(ZuviTestHttpServer *server, ZuviAPIClient *client,
                            QList<ZuviVirtualScheduler *> clocks);

    // Spins the event loop until the server has received at least count
    // requests since the check was made.
    bool waitForRequests(int count);

    // Deletes the screen at once, then drains the client, runs every clock
    // a minute ahead, and drains it again.
    bool destroyAndDrain(QObject *screen);

    // Requests sent after the screen was deleted: a retry or poll of a gone
    // screen shows up here.
    int requestsAfterDestruction() const { return m_requestsAfter; }
    QString failure() const { return m_failure; }

    // Spins the event loop until the client is quiet: every request it sent
    // has its answer, no answer waits on the network queue, and whatever the
    // answers posted to the main thread has run. A completion that sends the
    // next request (a signed-in check asks for the counts) keeps it busy
    // until that one is answered too. Suites use it between cases, so that
    // no case's late answer lands in the next one.
    static bool drainClient(ZuviAPIClient *client, QString *failure = nullptr);

private:
    bool spinUntil(const std::function<bool()> &condition, const QString &what);

    ZuviTestHttpServer *m_server;
    ZuviAPIClient *m_client;
    QList<ZuviVirtualScheduler *> m_clocks;
    int m_requestsBefore = 0;
    int m_requestsAfter = 0;
    QString m_failure;
};
