#include "desktop/zuvinowplaying.h"
#include "desktop/zuviscreensaverinhibitor.h"
#include "zuviprivatesessionbus.h"

#include <QDBusConnectionInterface>
#include <QtTest>

#include <memory>

// The desktop's screen saver as far as inhibition goes: hands out cookies
// and records every call.
class FakeScreenSaver : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.ScreenSaver")

public:
    QStringList calls;

public slots:
    uint Inhibit(const QString &application, const QString &reason)
    {
        calls.append(
            QStringLiteral("Inhibit %1 %2 -> %3").arg(application, reason).arg(m_nextCookie));
        return m_nextCookie++;
    }
    void UnInhibit(uint cookie) { calls.append(QStringLiteral("UnInhibit %1").arg(cookie)); }

private:
    uint m_nextCookie = 7;
};

class TestScreenSaverInhibitor : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<ZuviPrivateSessionBus> bus;
    QDBusConnection app{QString()};
    QDBusConnection desktop{QString()};
    std::unique_ptr<FakeScreenSaver> screenSaver;
    const QString inhibitCall =
        QStringLiteral("Inhibit oldZuvi ") + QString::fromUtf8(ZuviScreenSaverInhibitor::kReason);

    void startScreenSaver()
    {
        screenSaver = std::make_unique<FakeScreenSaver>();
        QVERIFY(desktop.registerObject(QStringLiteral("/org/freedesktop/ScreenSaver"),
                                       screenSaver.get(), QDBusConnection::ExportAllSlots));
        QVERIFY(desktop.registerService(QStringLiteral("org.freedesktop.ScreenSaver")));
    }

    void stopScreenSaver()
    {
        desktop.unregisterService(QStringLiteral("org.freedesktop.ScreenSaver"));
        desktop.unregisterObject(QStringLiteral("/org/freedesktop/ScreenSaver"));
        screenSaver.reset();
    }

private slots:
    void initTestCase()
    {
        bus = std::make_unique<ZuviPrivateSessionBus>();
        QVERIFY2(bus->isRunning(), "the private session bus did not start");
        app = bus->connection(QStringLiteral("app"));
        desktop = bus->connection(QStringLiteral("desktop"));
    }

    void init() { startScreenSaver(); }
    void cleanup() { stopScreenSaver(); }
    void cleanupTestCase() { bus.reset(); }

    // Held while the video screen plays; lifted on pause, when the screen
    // goes away, and when the inhibitor itself is destroyed.
    void followsPlayback()
    {
        ZuviNowPlaying nowPlaying;
        auto inhibitor = std::make_unique<ZuviScreenSaverInhibitor>(app);
        inhibitor->followNowPlaying(&nowPlaying);
        auto player = std::make_unique<QObject>();
        nowPlaying.begin(player.get());
        nowPlaying.setPlaybackStatus(ZuviNowPlaying::Playing);
        QTRY_VERIFY(inhibitor->isInhibited());
        QCOMPARE(screenSaver->calls, QStringList{inhibitCall + " -> 7"});

        nowPlaying.setPlaybackStatus(ZuviNowPlaying::Paused);
        QVERIFY(!inhibitor->isInhibited());
        QTRY_COMPARE(screenSaver->calls.size(), 2);
        QCOMPARE(screenSaver->calls.at(1), QStringLiteral("UnInhibit 7"));

        nowPlaying.setPlaybackStatus(ZuviNowPlaying::Playing);
        QTRY_VERIFY(inhibitor->isInhibited());
        player.reset();
        QTRY_COMPARE(screenSaver->calls.size(), 4);
        QCOMPARE(screenSaver->calls.at(3), QStringLiteral("UnInhibit 8"));

        QObject next;
        nowPlaying.begin(&next);
        nowPlaying.setPlaybackStatus(ZuviNowPlaying::Playing);
        QTRY_VERIFY(inhibitor->isInhibited());
        inhibitor.reset();
        QTRY_COMPARE(screenSaver->calls.size(), 6);
        QCOMPARE(screenSaver->calls.at(5), QStringLiteral("UnInhibit 9"));
    }

    // A pause that comes before the cookie lifts the inhibition as soon as
    // the cookie arrives, and a quick pause-play keeps one inhibition.
    void pauseBeforeTheCookieArrives()
    {
        ZuviScreenSaverInhibitor inhibitor(app);
        inhibitor.setPlaying(true);
        inhibitor.setPlaying(false);
        QTRY_COMPARE(screenSaver->calls.size(), 2);
        QCOMPARE(screenSaver->calls.at(1), QStringLiteral("UnInhibit 7"));
        QVERIFY(!inhibitor.isInhibited());

        inhibitor.setPlaying(true);
        inhibitor.setPlaying(false);
        inhibitor.setPlaying(true);
        QTRY_VERIFY(inhibitor.isInhibited());
        QCOMPARE(screenSaver->calls.size(), 3);
    }

    // Gone before the cookie came: the cookie is handed back on arrival.
    void destroyedWhileWaitingForTheCookie()
    {
        auto inhibitor = std::make_unique<ZuviScreenSaverInhibitor>(app);
        inhibitor->setPlaying(true);
        QVERIFY(inhibitor->isWaitingForCookie());
        inhibitor.reset();
        QTRY_COMPARE(screenSaver->calls.size(), 2);
        QCOMPARE(screenSaver->calls,
                 (QStringList{inhibitCall + " -> 7", QStringLiteral("UnInhibit 7")}));
    }

    // No screen saver on the bus, or no bus at all: nothing is held and
    // nothing fails; a screen saver that appears later is used.
    void missingServiceIsHarmless()
    {
        stopScreenSaver();
        ZuviScreenSaverInhibitor inhibitor(app);
        inhibitor.setPlaying(true);
        QTRY_VERIFY(!inhibitor.isWaitingForCookie());
        QVERIFY(!inhibitor.isInhibited());

        startScreenSaver();
        inhibitor.setPlaying(true);
        QTRY_VERIFY(inhibitor.isInhibited());

        QDBusConnection none = QDBusConnection::connectToBus(
            QStringLiteral("unix:path=/nonexistent/zuvi-bus"), QStringLiteral("none"));
        ZuviScreenSaverInhibitor offline(none);
        offline.setPlaying(true);
        QVERIFY(!offline.isWaitingForCookie());
        QVERIFY(!offline.isInhibited());
        QDBusConnection::disconnectFromBus(QStringLiteral("none"));
    }
};

QTEST_MAIN(TestScreenSaverInhibitor)
#include "tst_zuviscreensaverinhibitor.moc"
