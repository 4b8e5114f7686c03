#include "zuvinotificationcenter.h"

#include "zuvimainqueue.h"

#include <QCoreApplication>

#include <algorithm>

ZuviNotificationCenter::ZuviNotificationCenter(QObject *parent) : QObject(parent) {}

ZuviNotificationCenter *ZuviNotificationCenter::defaultCenter()
{
    static ZuviNotificationCenter *center = [] {
        auto *created = new ZuviNotificationCenter;
        if (QCoreApplication *app = QCoreApplication::instance())
            created->moveToThread(app->thread());
        return created;
    }();
    return center;
}

int ZuviNotificationCenter::addObserver(const QString &name, QObject *observer, Handler handler)
{
    int token = 0;
    {
        QMutexLocker lock(&m_mutex);
        token = m_nextToken++;
        m_observations.insert(token, Observation{name, observer, std::move(handler)});
    }
    if (observer) {
        connect(observer, &QObject::destroyed, this, [this, token] { removeObserver(token); });
    }
    return token;
}

void ZuviNotificationCenter::removeObserver(int token)
{
    QMutexLocker lock(&m_mutex);
    m_observations.remove(token);
}

void ZuviNotificationCenter::removeObserver(QObject *observer)
{
    QMutexLocker lock(&m_mutex);
    for (auto it = m_observations.begin(); it != m_observations.end();) {
        if (it->observer == observer)
            it = m_observations.erase(it);
        else
            ++it;
    }
}

void ZuviNotificationCenter::post(const QString &name, QObject *object, const QVariantMap &userInfo)
{
    ZuviNotification notification{name, object, userInfo};
    if (ZuviMainQueue::isMainThread()) {
        deliver(notification);
        return;
    }
    queueDelivery(notification);
}

void ZuviNotificationCenter::postOnMainQueue(const QString &name, QObject *object,
                                             const QVariantMap &userInfo)
{
    queueDelivery(ZuviNotification{name, object, userInfo});
}

void ZuviNotificationCenter::queueDelivery(const ZuviNotification &notification)
{
    // Queued on the centre itself, which lives on the main thread: a centre
    // destroyed before the event runs simply drops it.
    QMetaObject::invokeMethod(
        this, [this, notification] { deliver(notification); }, Qt::QueuedConnection);
}

void ZuviNotificationCenter::deliver(const ZuviNotification &notification)
{
    // Handlers may add or remove observations while they run, so the matching
    // tokens are collected first and each one is looked up again before use.
    QList<int> tokens;
    {
        QMutexLocker lock(&m_mutex);
        for (auto it = m_observations.cbegin(); it != m_observations.cend(); ++it) {
            if (it->name.isEmpty() || it->name == notification.name)
                tokens.append(it.key());
        }
    }
    std::sort(tokens.begin(), tokens.end());
    for (int token : tokens) {
        Handler handler;
        {
            QMutexLocker lock(&m_mutex);
            auto it = m_observations.constFind(token);
            if (it == m_observations.cend())
                continue;
            handler = it->handler;
        }
        if (handler)
            handler(notification);
    }
    emit notificationPosted(notification.name, notification.object, notification.userInfo);
}
