#include "zuvimainqueue.h"

#include <QCoreApplication>
#include <QThread>

void ZuviMainQueue::post(std::function<void()> block)
{
    QCoreApplication *app = QCoreApplication::instance();
    if (!app || !block)
        return;
    QMetaObject::invokeMethod(app, std::move(block), Qt::QueuedConnection);
}

bool ZuviMainQueue::isMainThread()
{
    QCoreApplication *app = QCoreApplication::instance();
    return app && QThread::currentThread() == app->thread();
}
