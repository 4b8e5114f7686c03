#include "desktop/zuvimprisplayeradaptor.h"
#include "desktop/zuvimprisservice.h"
#include "desktop/zuvinowplaying.h"
#include "zuviprivatesessionbus.h"

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

namespace {
const QString kPlayer = QStringLiteral("org.mpris.MediaPlayer2.Player");
const QString kRoot = QStringLiteral("org.mpris.MediaPlayer2");
const QString kProperties = QStringLiteral("org.freedesktop.DBus.Properties");

ZuviNowPlaying::Track sampleTrack()
{
    ZuviNowPlaying::Track track;
    track.trackId = QStringLiteral("BV1xx411c7mD-p2");
    track.title = QStringLiteral("深夜的城市漫步");
    track.artist = QStringLiteral("夜行者");
    track.artUrl = QUrl(QStringLiteral("http://127.0.0.1:8479/cover/1.jpg"));
    track.length = 125.5;
    return track;
}
} // namespace

// Records the property announcements the service sends.
class PropertiesChangedRecorder : public QObject
{
    Q_OBJECT

public:
    QList<QPair<QString, QVariantMap>> announcements;
    QList<qlonglong> seeks;

public slots:
    void seeked(qlonglong position) { seeks.append(position); }

    void record(const QString &interface, const QVariantMap &changed, const QStringList &)
    {
        announcements.append({interface, changed});
    }
};

class TestMprisService : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<ZuviPrivateSessionBus> bus;
    QDBusConnection app{QString()};
    QDBusConnection desktop{QString()};

    // A call from the desktop's side. The service answers on this thread,
    // so the call keeps the event loop running while it waits.
    QDBusMessage call(const QString &interface, const QString &method,
                      const QVariantList &arguments = {})
    {
        QDBusMessage message = QDBusMessage::createMethodCall(
            QString::fromLatin1(ZuviMprisService::kServiceName),
            QString::fromLatin1(ZuviMprisService::kObjectPath), interface, method);
        message.setArguments(arguments);
        return desktop.call(message, QDBus::BlockWithGui, 5000);
    }

    QVariant property(const QString &interface, const QString &name)
    {
        const QDBusMessage reply = call(kProperties, QStringLiteral("Get"), {interface, name});
        if (reply.type() != QDBusMessage::ReplyMessage)
            return {};
        const QVariant value = reply.arguments().value(0).value<QDBusVariant>().variant();
        if (value.canConvert<QDBusArgument>())
            return qdbus_cast<QVariantMap>(value.value<QDBusArgument>());
        return value;
    }

    bool nameOnBus()
    {
        return desktop.interface()->isServiceRegistered(
            QString::fromLatin1(ZuviMprisService::kServiceName));
    }

private slots:
    void initTestCase()
    {
        bus = std::make_unique<ZuviPrivateSessionBus>();
        QVERIFY2(bus->isRunning(), "the private session bus did not start");
        app = bus->connection(QStringLiteral("app"));
        desktop = bus->connection(QStringLiteral("desktop"));
        QVERIFY(app.isConnected() && desktop.isConnected());
    }

    void cleanupTestCase() { bus.reset(); }

    // On the bus exactly while a video screen holds the controls; a covered
    // screen hears no commands, and the name stays until the last one goes.
    void servesWhileAVideoScreenExists()
    {
        ZuviNowPlaying nowPlaying;
        ZuviMprisService service(&nowPlaying, app);
        QVERIFY(!nameOnBus());

        auto first = std::make_unique<QObject>();
        nowPlaying.begin(first.get());
        QVERIFY(nameOnBus());
        QCOMPARE(property(kRoot, QStringLiteral("Identity")).toString(), QStringLiteral("oldZuvi"));

        int firstPlays = 0;
        connect(&nowPlaying, &ZuviNowPlaying::playRequested, first.get(), [&] { ++firstPlays; });
        QObject second;
        nowPlaying.begin(&second);
        QSignalSpy plays(&nowPlaying, &ZuviNowPlaying::playRequested);
        call(kPlayer, QStringLiteral("Play"));
        QCOMPARE(plays.count(), 1);
        QCOMPARE(firstPlays, 0);

        // The covered screen going away takes nothing from the top one.
        first.reset();
        QVERIFY(nameOnBus());
        nowPlaying.end(&second);
        QVERIFY(!nameOnBus());
        QVERIFY(!service.isServing());
    }

    void callsReachThePlayer()
    {
        ZuviNowPlaying nowPlaying;
        ZuviMprisService service(&nowPlaying, app);
        QObject player;
        nowPlaying.begin(&player);
        nowPlaying.setTrack(sampleTrack());
        nowPlaying.setPlaybackStatus(ZuviNowPlaying::Paused);
        nowPlaying.setPosition(100);
        QSignalSpy plays(&nowPlaying, &ZuviNowPlaying::playRequested);
        QSignalSpy pauses(&nowPlaying, &ZuviNowPlaying::pauseRequested);
        QSignalSpy positions(&nowPlaying, &ZuviNowPlaying::positionRequested);
        QSignalSpy volumes(&nowPlaying, &ZuviNowPlaying::volumeRequested);
        QSignalSpy rates(&nowPlaying, &ZuviNowPlaying::rateRequested);

        call(kPlayer, QStringLiteral("PlayPause"));
        QCOMPARE(plays.count(), 1);
        nowPlaying.setPlaybackStatus(ZuviNowPlaying::Playing);
        call(kPlayer, QStringLiteral("PlayPause"));
        QCOMPARE(pauses.count(), 1);

        const QVariant track =
            QVariant::fromValue(ZuviMprisPlayerAdaptor::trackPath(sampleTrack().trackId));
        call(kPlayer, QStringLiteral("SetPosition"), {track, qlonglong(42'500'000)});
        // A position for another track is stale and ignored.
        call(kPlayer, QStringLiteral("SetPosition"),
             {QVariant::fromValue(ZuviMprisPlayerAdaptor::trackPath(QStringLiteral("other"))),
              qlonglong(1'000'000)});
        // Relative seeks stay inside the video.
        call(kPlayer, QStringLiteral("Seek"), {qlonglong(60'000'000)});
        call(kPlayer, QStringLiteral("Seek"), {qlonglong(-500'000'000)});
        QCOMPARE(positions.count(), 3);
        QCOMPARE(positions.at(0).at(0).toDouble(), 42.5);
        QCOMPARE(positions.at(1).at(0).toDouble(), 125.5);
        QCOMPARE(positions.at(2).at(0).toDouble(), 0.0);

        call(kProperties, QStringLiteral("Set"),
             {kPlayer, QStringLiteral("Volume"), QVariant::fromValue(QDBusVariant(1.7))});
        call(kProperties, QStringLiteral("Set"),
             {kPlayer, QStringLiteral("Rate"), QVariant::fromValue(QDBusVariant(3.0))});
        QCOMPARE(volumes.count(), 1);
        QCOMPARE(volumes.at(0).at(0).toDouble(), 1.0);
        QCOMPARE(rates.count(), 1);
        QCOMPARE(rates.at(0).at(0).toDouble(), ZuviNowPlaying::kMaximumRate);
    }

    void propertiesDescribeTheVideo()
    {
        ZuviNowPlaying nowPlaying;
        ZuviMprisService service(&nowPlaying, app);
        QObject player;
        nowPlaying.begin(&player);
        nowPlaying.setTrack(sampleTrack());
        nowPlaying.setPlaybackStatus(ZuviNowPlaying::Playing);
        nowPlaying.setPosition(12.25);

        const QVariantMap metadata = property(kPlayer, QStringLiteral("Metadata")).toMap();
        QCOMPARE(metadata.value(QStringLiteral("xesam:title")).toString(), sampleTrack().title);
        QCOMPARE(metadata.value(QStringLiteral("xesam:artist")).toStringList(),
                 QStringList{sampleTrack().artist});
        QCOMPARE(metadata.value(QStringLiteral("mpris:artUrl")).toString(),
                 sampleTrack().artUrl.toString());
        QCOMPARE(metadata.value(QStringLiteral("mpris:length")).toLongLong(), 125'500'000LL);
        QCOMPARE(metadata.value(QStringLiteral("mpris:trackid")).value<QDBusObjectPath>().path(),
                 QStringLiteral("/org/oldzuvi/track/BV1xx411c7mD_p2"));
        QCOMPARE(property(kPlayer, QStringLiteral("Position")).toLongLong(), 12'250'000LL);
        QCOMPARE(property(kPlayer, QStringLiteral("PlaybackStatus")).toString(),
                 QStringLiteral("Playing"));
        QCOMPARE(property(kPlayer, QStringLiteral("CanSeek")).toBool(), true);
    }

    void announcesChanges()
    {
        ZuviNowPlaying nowPlaying;
        ZuviMprisService service(&nowPlaying, app);
        QObject player;
        nowPlaying.begin(&player);
        nowPlaying.setPlaybackStatus(ZuviNowPlaying::Playing);
        PropertiesChangedRecorder recorder;
        QVERIFY(desktop.connect(QString(), QString::fromLatin1(ZuviMprisService::kObjectPath),
                                kProperties, QStringLiteral("PropertiesChanged"), &recorder,
                                SLOT(record(QString, QVariantMap, QStringList))));
        QVERIFY(desktop.connect(QString(), QString::fromLatin1(ZuviMprisService::kObjectPath),
                                kPlayer, QStringLiteral("Seeked"), &recorder,
                                SLOT(seeked(qlonglong))));
        // A round trip to the bus after the subscriptions: they are in place
        // before anything is announced.
        QVERIFY(nameOnBus());

        nowPlaying.setPlaybackStatus(ZuviNowPlaying::Paused);
        QTRY_COMPARE(recorder.announcements.size(), 1);
        QCOMPARE(recorder.announcements.at(0).first, kPlayer);
        QCOMPARE(recorder.announcements.at(0).second,
                 (QVariantMap{{QStringLiteral("PlaybackStatus"), QStringLiteral("Paused")}}));

        nowPlaying.setTrack(sampleTrack());
        QTRY_COMPARE(recorder.announcements.size(), 2);
        const QVariantMap changed = recorder.announcements.at(1).second;
        QVERIFY(changed.contains(QStringLiteral("Metadata")));
        QCOMPARE(changed.value(QStringLiteral("CanSeek")).toBool(), true);

        nowPlaying.notifySeeked(30);
        QTRY_COMPARE(recorder.seeks, QList<qlonglong>{30'000'000});
    }

    // Without a session bus the service stays away and the player is
    // unaffected.
    void absentWithoutABus()
    {
        QDBusConnection none = QDBusConnection::connectToBus(
            QStringLiteral("unix:path=/nonexistent/zuvi-bus"), QStringLiteral("none"));
        QVERIFY(!none.isConnected());
        ZuviNowPlaying nowPlaying;
        ZuviMprisService service(&nowPlaying, none);
        QObject player;
        nowPlaying.begin(&player);
        nowPlaying.setPlaybackStatus(ZuviNowPlaying::Playing);
        QVERIFY(!service.isServing());
        QVERIFY(nowPlaying.isActive());
        QDBusConnection::disconnectFromBus(QStringLiteral("none"));
    }
};

QTEST_MAIN(TestMprisService)
#include "tst_zuvimprisservice.moc"
