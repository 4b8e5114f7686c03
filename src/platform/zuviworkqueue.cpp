#include "zuviworkqueue.h"

#include "zuvimainqueue.h"

#include <QRunnable>
#include <QThread>

ZuviWorkQueue::ZuviWorkQueue(int width, const QString &name) : m_name(name)
{
    m_pool.setMaxThreadCount(std::max(1, width));
    // Idle workers are kept for a while so bursts of answers do not pay for
    // thread creation each time.
    m_pool.setExpiryTimeout(30000);
}

ZuviWorkQueue::~ZuviWorkQueue()
{
    m_pool.waitForDone();
}

int ZuviWorkQueue::width() const
{
    return m_pool.maxThreadCount();
}

void ZuviWorkQueue::run(std::function<void()> work, std::function<void()> thenOnMain)
{
    m_pool.start([work = std::move(work), thenOnMain = std::move(thenOnMain)] {
        if (work)
            work();
        if (thenOnMain)
            ZuviMainQueue::post(thenOnMain);
    });
}

bool ZuviWorkQueue::waitForDone(int msecs)
{
    return m_pool.waitForDone(msecs);
}
