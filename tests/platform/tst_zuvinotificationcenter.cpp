#include "platform/zuvinotificationcenter.h"

#include <QSignalSpy>
#include <QTest>
#include <QThread>

class TestZuviNotificationCenter : public QObject
{
    Q_OBJECT
private slots:
    void deliversByNameWithUserInfo();
    void postFromWorkerThreadArrivesOnMainThread();
    void postOnMainQueueIsNeverSynchronous();
    void destroyedObserverIsForgotten();
    void observerMayRemoveAnotherWhileDelivering();
};

void TestZuviNotificationCenter::deliversByNameWithUserInfo()
{
    ZuviNotificationCenter center;
    QObject observer;
    QList<ZuviNotification> seen;
    int everything = 0;
    center.addObserver("ZuviDanmakuAPILogNotification", &observer,
                       [&](const ZuviNotification &n) { seen.append(n); });
    center.addObserver(QString(), &observer, [&](const ZuviNotification &) { ++everything; });

    center.post("ZuviDanmakuAPILogNotification", &observer, {{"message", "主接口返回 12 条弹幕"}});
    center.post("ZuviDebugLogDidChangeNotification");

    QCOMPARE(seen.size(), 1);
    QCOMPARE(seen[0].object.data(), &observer);
    QCOMPARE(seen[0].userInfo.value("message").toString(), QStringLiteral("主接口返回 12 条弹幕"));
    QCOMPARE(everything, 2);
}

void TestZuviNotificationCenter::postFromWorkerThreadArrivesOnMainThread()
{
    ZuviNotificationCenter center;
    QObject observer;
    QThread *deliveredOn = nullptr;
    int count = 0;
    center.addObserver("Ping", &observer, [&](const ZuviNotification &) {
        deliveredOn = QThread::currentThread();
        ++count;
    });
    QThread *worker = QThread::create([&] {
        for (int i = 0; i < 5; ++i)
            center.post("Ping");
    });
    worker->start();
    QVERIFY(worker->wait(5000));
    delete worker;
    QTRY_COMPARE(count, 5);
    QCOMPARE(deliveredOn, QThread::currentThread());
}

void TestZuviNotificationCenter::postOnMainQueueIsNeverSynchronous()
{
    ZuviNotificationCenter center;
    QObject observer;
    int count = 0;
    center.addObserver("Later", &observer, [&](const ZuviNotification &) { ++count; });
    center.postOnMainQueue("Later");
    QCOMPARE(count, 0);
    QTRY_COMPARE(count, 1);
}

void TestZuviNotificationCenter::destroyedObserverIsForgotten()
{
    ZuviNotificationCenter center;
    int count = 0;
    {
        QObject observer;
        center.addObserver("Gone", &observer, [&](const ZuviNotification &) { ++count; });
        center.post("Gone");
    }
    center.post("Gone");
    QCOMPARE(count, 1);
}

void TestZuviNotificationCenter::observerMayRemoveAnotherWhileDelivering()
{
    ZuviNotificationCenter center;
    QObject observer;
    int second = 0;
    int secondToken = 0;
    center.addObserver("X", &observer,
                       [&](const ZuviNotification &) { center.removeObserver(secondToken); });
    secondToken = center.addObserver("X", &observer, [&](const ZuviNotification &) { ++second; });
    QSignalSpy spy(&center, &ZuviNotificationCenter::notificationPosted);
    center.post("X");
    QCOMPARE(second, 0);
    QCOMPARE(spy.count(), 1);
}

QTEST_GUILESS_MAIN(TestZuviNotificationCenter)
#include "tst_zuvinotificationcenter.moc"
