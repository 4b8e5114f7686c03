#include "platform/zuvilifetime.h"

#include <QTest>

#include <functional>
#include <memory>

class TestZuviLifetime : public QObject
{
    Q_OBJECT
private slots:
    void callsThroughWhileTheOwnerLivesAndNeverAfter();
    void deleteLaterOwnerStillAnswersUntilItIsGone();
};

// A completion as the service client stores it: a std::function that is
// called later, possibly after its screen was deleted.
void TestZuviLifetime::callsThroughWhileTheOwnerLivesAndNeverAfter()
{
    auto owner = std::make_unique<QObject>();
    QStringList seen;
    std::function<void(const QString &, int)> completion =
        ZuviLifetime::bound(owner.get(), [&seen](const QString &text, int code) {
            seen << QStringLiteral("%1:%2").arg(text).arg(code);
        });

    completion(QStringLiteral("first"), 1);
    owner.reset();
    completion(QStringLiteral("late"), 2);

    QCOMPARE(seen, QStringList{QStringLiteral("first:1")});
}

void TestZuviLifetime::deleteLaterOwnerStillAnswersUntilItIsGone()
{
    auto *owner = new QObject;
    int calls = 0;
    auto completion = ZuviLifetime::bound(owner, [&calls] { ++calls; });
    QPointer<QObject> watched = ZuviLifetime::watch(owner);
    owner->deleteLater();

    completion();
    QCOMPARE(calls, 1);
    QVERIFY(watched);

    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    completion();
    QCOMPARE(calls, 1);
    QVERIFY(!watched);
}

QTEST_GUILESS_MAIN(TestZuviLifetime)
#include "tst_zuvilifetime.moc"
