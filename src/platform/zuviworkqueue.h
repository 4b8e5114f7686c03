#pragma once

#include <QString>
#include <QThreadPool>

#include <functional>

// A queue that runs blocks on a fixed number of worker threads, the way the
// service client (3), the image loader (2) and the configuration service (1)
// each process their answers off the main thread.
class ZuviWorkQueue
{
public:
    ZuviWorkQueue(int width, const QString &name);
    ~ZuviWorkQueue();

    ZuviWorkQueue(const ZuviWorkQueue &) = delete;
    ZuviWorkQueue &operator=(const ZuviWorkQueue &) = delete;

    int width() const;
    QString name() const { return m_name; }

    // Runs work on a worker; when it returns, thenOnMain (if any) is queued
    // to the main thread.
    void run(std::function<void()> work, std::function<void()> thenOnMain = {});

    // Blocks until every queued block has run (for shutdown and tests).
    bool waitForDone(int msecs = -1);

private:
    QString m_name;
    QThreadPool m_pool;
};
