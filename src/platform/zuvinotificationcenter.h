#pragma once

#include <QHash>
#include <QMutex>
#include <QObject>
#include <QPointer>
#include <QVariantMap>

#include <functional>

// One posted notification: its name, the object that sent it and its user info.
struct ZuviNotification {
    QString name;
    QPointer<QObject> object;
    QVariantMap userInfo;
};

// Named notifications with a user-info map. They may be posted from any
// thread and are always delivered on the main thread.
class ZuviNotificationCenter : public QObject
{
    Q_OBJECT
public:
    using Handler = std::function<void(const ZuviNotification &)>;

    explicit ZuviNotificationCenter(QObject *parent = nullptr);

    static ZuviNotificationCenter *defaultCenter();

    // Observes one name (an empty name observes every notification). The
    // observation ends by removeObserver() or when the observer is destroyed.
    int addObserver(const QString &name, QObject *observer, Handler handler);
    void removeObserver(int token);
    void removeObserver(QObject *observer);

    // Delivers at once when called on the main thread, otherwise queues the
    // delivery to the main thread.
    void post(const QString &name, QObject *object = nullptr, const QVariantMap &userInfo = {});
    // Always queues the delivery to the main thread, even from the main thread.
    void postOnMainQueue(const QString &name, QObject *object = nullptr,
                         const QVariantMap &userInfo = {});

signals:
    // Emitted on the main thread for every delivered notification, for QML
    // and for tests that spy on the traffic.
    void notificationPosted(const QString &name, QObject *object, const QVariantMap &userInfo);

private:
    struct Observation {
        QString name;
        QPointer<QObject> observer;
        Handler handler;
    };

    void deliver(const ZuviNotification &notification);
    void queueDelivery(const ZuviNotification &notification);

    QMutex m_mutex;
    QHash<int, Observation> m_observations;
    int m_nextToken = 1;
};
