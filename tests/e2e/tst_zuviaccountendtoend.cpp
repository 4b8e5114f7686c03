// The account screens in the application's own window against the demo
// service as a separate process: the profile tab signs in through the QR
// code on screen (read back with zbarimg, confirmed with the service's
// confirm command), shows the demo member, opens the history, plays a video
// from it, comes back and signs out. Then the service's failure switch on
// the relation counts. The screens' timers run on a virtual clock moved by
// the test.
#include "account/zuviaccountvideolistviewcontroller.h"
#include "account/zuviloginviewcontroller.h"
#include "account/zuviprofileviewcontroller.h"
#include "app/zuviappdelegate.h"
#include "app/zuvidebuglog.h"
#include "app/zuvinavigationcontroller.h"
#include "app/zuvitabbarcontroller.h"
#include "images/zuviimageloader.h"
#include "net/zuviapiclient.h"
#include "platform/zuvinotificationcenter.h"
#include "platform/zuvivirtualscheduler.h"
#include "platform/zuviworkqueue.h"
#include "player/zuvimovieplayer.h"
#include "player/zuvivideoplayerviewcontroller.h"
#include "zuvitestsupport.h"

#include <QDir>
#include <QGuiApplication>
#include <QProcess>
#include <QQmlEngine>
#include <QQmlExtensionPlugin>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTemporaryDir>
#include <QtTest>

Q_IMPORT_QML_PLUGIN(ZuviPlugin)

namespace {
QString binary(const char *name)
{
    return QDir(QStringLiteral(ZUVI_BIN_DIR)).filePath(QString::fromLatin1(name));
}

// The first visible item of that name anywhere in the window's item tree.
QQuickItem *visibleItem(QQuickItem *root, const QString &name)
{
    if (!root || !root->isVisible())
        return nullptr;
    if (root->objectName() == name)
        return root;
    for (QQuickItem *child : root->childItems()) {
        if (QQuickItem *found = visibleItem(child, name))
            return found;
    }
    return nullptr;
}
// True while a page stack in the tree is still sliding a page in or out. The
// slide runs on animators, which move the picture before the items, so an
// item's position alone says nothing about what is on screen.
bool stackBusy(QQuickItem *root)
{
    if (root->property("busy").toBool() &&
        QByteArray(root->metaObject()->className()).contains("StackView"))
        return true;
    const QList<QQuickItem *> children = root->childItems();
    return std::any_of(children.begin(), children.end(), stackBusy);
}
} // namespace

class TestAccountEndToEnd : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir work;
    QProcess service;
    quint16 port = 0;
    ZuviScratchDefaults defaults;
    ZuviNotificationCenter center;
    ZuviVirtualScheduler clock;
    std::unique_ptr<ZuviDebugLog> log;
    std::unique_ptr<ZuviAPIClient> client;
    std::unique_ptr<ZuviImageLoader> images;
    std::unique_ptr<QQmlEngine> engine;
    std::unique_ptr<ZuviAppDelegate> delegate;
    QQuickWindow *window = nullptr;
    ZuviNavigationController *tab = nullptr;
    ZuviProfileViewController *profile = nullptr;

    int demoCommand(const QStringList &arguments)
    {
        QProcess process;
        process.start(binary("oldzuvi-demo-service"),
                      arguments + QStringList{"--port", QString::number(port)});
        if (!process.waitForFinished(20000))
            return -1;
        return process.exitCode();
    }
    void setFailure(const QString &path, const QString &mode)
    {
        QCOMPARE(demoCommand({"fail", path, mode}), 0);
    }

    // The named item once it is on screen and has stopped moving (a pushed
    // page slides in).
    QQuickItem *settled(const QString &name)
    {
        QQuickItem *item = nullptr;
        QPointF last(-1, -1);
        const auto inPlace = [&] {
            item = visibleItem(window->contentItem(), name);
            if (!item)
                return false;
            const QPointF now = item->mapToScene(QPointF(0, 0));
            const bool still = now == last;
            last = now;
            return still && now.x() >= 0 && now.x() < window->width();
        };
        if (!QTest::qWaitFor([&] { return !stackBusy(window->contentItem()) && inPlace(); }, 10000))
            return nullptr;
        return item;
    }
    void tap(const QString &name)
    {
        QQuickItem *item = settled(name);
        QVERIFY2(item, qPrintable(name + " never came to rest on screen"));
        const QPointF centre = item->mapToScene(QPointF(item->width() / 2, item->height() / 2));
        QTest::mouseClick(window, Qt::LeftButton, {}, centre.toPoint());
    }
    // The stack lets popped screens go after a moment of its clock; their
    // pages have left the window by then, as they have in the app.
    void releasePopped()
    {
        QTRY_VERIFY(!stackBusy(window->contentItem()));
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        clock.advance(2);
    }
    void back()
    {
        QVERIFY(tab->popViewController(false));
        releasePopped();
    }
    // The service reports a confirmed code as scanned once before it lets
    // the login through, so the screen polls until the profile is in.
    void pollUntilSignedIn(QPointer<ZuviLoginViewController> login)
    {
        for (int poll = 0; poll < 4 && !profile->isLoggedIn(); ++poll) {
            QTRY_VERIFY_WITH_TIMEOUT(login.isNull() || !login->isPollingInFlight(), 15000);
            if (login && login->isPolling())
                clock.advance(ZuviLoginViewController::kPollInterval);
            QTRY_VERIFY_WITH_TIMEOUT(profile->isLoggedIn() ||
                                         (login && login->isPollingInFlight()) ||
                                         (login && !login->isPolling()),
                                     15000);
        }
        QTRY_VERIFY_WITH_TIMEOUT(profile->isLoggedIn(), 15000);
    }
    // Signs in as a user would: the login screen, the service's confirm
    // command as the phone, and the next poll.
    void signIn()
    {
        QTRY_VERIFY(!profile->isLoadingProfile());
        QVERIFY(!profile->isLoggedIn());
        tap("loginButton");
        ZuviLoginViewController *login = nullptr;
        QTRY_VERIFY_WITH_TIMEOUT(
            (login = qobject_cast<ZuviLoginViewController *>(tab->topViewController())) &&
                login->isPolling() && !login->isPollingInFlight(),
            15000);
        QCOMPARE(demoCommand({"confirm"}), 0);
        pollUntilSignedIn(login);
        QCOMPARE(tab->topViewController(), profile);
        releasePopped();
    }

private slots:
    void initTestCase()
    {
        QVERIFY(work.isValid());
        QVERIFY2(QFile::exists(binary("oldzuvi-demo-service")), "build the demo service first");
        service.setProgram(binary("oldzuvi-demo-service"));
        service.setArguments({"--port", "0", "--media", QStringLiteral(ZUVI_MEDIA_DIR), "--data",
                              work.filePath("state"), "--qr-lifetime", "120"});
        service.start();
        QVERIFY(service.waitForStarted());
        QTRY_VERIFY_WITH_TIMEOUT(service.canReadLine(), 10000);
        const QString first = QString::fromUtf8(service.readLine()).trimmed();
        port = quint16(first.section(':', -1).toUInt());
        QVERIFY2(port > 0, qPrintable(first));
        const ZuviEndpoints endpoints =
            ZuviEndpoints::allOn(QUrl(QStringLiteral("http://127.0.0.1:%1").arg(port)));

        log.reset(new ZuviDebugLog(defaults.get(), &center));
        client.reset(new ZuviAPIClient(defaults.get(), log.get(), &center, endpoints, &clock));
        images.reset(new ZuviImageLoader(log.get(), endpoints, nullptr));
        ZuviVideoPlayerViewController::openVideosFromLists(client.get(), &clock, defaults.get());
        ZuviAppDelegate::Services services;
        services.client = client.get();
        services.defaults = defaults.get();
        services.center = &center;
        services.scheduler = &clock;
        services.log = log.get();
        services.imageLoader = images.get();
        services.endpoints = endpoints;
        services.cachesDirectory = work.filePath("caches");
        engine.reset(new QQmlEngine);
        delegate.reset(new ZuviAppDelegate(services));
        QVERIFY(delegate->applicationDidFinishLaunching(engine.get()));
        window = qobject_cast<QQuickWindow *>(delegate->window());
        QVERIFY(window);
        QVERIFY(QTest::qWaitForWindowExposed(window));
        delegate->rootTabBarController()->selectTab(3);
        tab = delegate->rootTabBarController()->viewControllerAt(3);
        profile = qobject_cast<ZuviProfileViewController *>(tab->rootViewController());
        QVERIFY(profile);
    }
    void cleanupTestCase()
    {
        delegate.reset();
        engine.reset();
        client->networkQueue()->waitForDone();
        service.terminate();
        service.waitForFinished(5000);
    }
    void init() { QCOMPARE(demoCommand({"fail", "off"}), 0); }

    void signInBrowseAndSignOut()
    {
        QTRY_VERIFY(!profile->isLoadingProfile());
        QCOMPARE(profile->statusLine(), QStringLiteral("未登录，请扫码登录。"));
        tap("loginButton");
        ZuviLoginViewController *login = nullptr;
        QTRY_VERIFY_WITH_TIMEOUT(
            (login = qobject_cast<ZuviLoginViewController *>(tab->topViewController())) &&
                login->isPolling(),
            15000);
        QTRY_COMPARE(visibleItem(window->contentItem(), "loginStatus")->property("text").toString(),
                     QStringLiteral("等待扫码"));

        // What a phone's camera sees on the screen.
        QVERIFY(settled("loginCode"));
        const QString shot = work.filePath("login.png");
        QVERIFY(window->grabWindow().save(shot));
        QProcess zbarimg;
        zbarimg.start(QStringLiteral(ZUVI_ZBARIMG_PATH), {"-q", "--raw", shot});
        QVERIFY(zbarimg.waitForFinished(20000));
        const QString decoded = QString::fromUtf8(zbarimg.readAllStandardOutput()).trimmed();
        QCOMPARE(decoded, login->loginURL());
        QVERIFY2(decoded.contains(QStringLiteral("127.0.0.1:%1/qr/login?qrcode_key=%2")
                                      .arg(port)
                                      .arg(login->qrcodeKey())),
                 qPrintable(decoded));

        QCOMPARE(demoCommand({"confirm"}), 0);
        pollUntilSignedIn(login);
        QCOMPARE(tab->topViewController(), profile);
        releasePopped();
        QCOMPARE(profile->displayName(), QStringLiteral("演示用户"));
        QCOMPARE(profile->levelTag(), QStringLiteral("LV5"));
        QCOMPARE(profile->membershipTag(), QStringLiteral("大会员"));
        const QStringList stats = profile->statValues();
        QCOMPARE(stats.first(), QStringLiteral("128.5"));
        QVERIFY2(!stats.contains("--"), qPrintable(stats.join(',')));
        QTRY_COMPARE(visibleItem(window->contentItem(), "profileName")->property("text").toString(),
                     QStringLiteral("演示用户"));
        QTRY_COMPARE(profile->recentVideos().size(), ZuviProfileViewController::kRecentVideoCount);

        tap("profileEntry0");
        ZuviAccountVideoListViewController *history = nullptr;
        QTRY_VERIFY_WITH_TIMEOUT((history = qobject_cast<ZuviAccountVideoListViewController *>(
                                      tab->topViewController())) &&
                                     !history->isLoading(),
                                 15000);
        QCOMPARE(history->title(), QStringLiteral("历史记录"));
        QVERIFY(!history->videos().isEmpty());

        tap("accountVideo0");
        ZuviVideoPlayerViewController *video = nullptr;
        QTRY_VERIFY_WITH_TIMEOUT(
            (video = qobject_cast<ZuviVideoPlayerViewController *>(tab->topViewController())) &&
                video->moviePlayer() && video->moviePlayer()->isPlaying(),
            30000);
        QCOMPARE(video->sourceTitle(), QStringLiteral("历史记录"));
        back();
        QCOMPARE(tab->topViewController(), history);
        back();
        QCOMPARE(tab->topViewController(), profile);

        tap("loginButton");
        QTRY_VERIFY(!profile->isLoggedIn());
        QCOMPARE(profile->statusLine(), QStringLiteral("已退出登录。"));
        QCOMPARE(client->credentialCookie(), QString());
        QTRY_COMPARE(
            visibleItem(window->contentItem(), "profileStatus")->property("text").toString(),
            QStringLiteral("已退出登录。"));
    }

    // A refused relation count leaves the member signed in, coins shown and
    // the two counts as "--". The other account switches (the login check,
    // the lists) are rows of tst_zuvifailureswitches.
    void relationCountsRefused()
    {
        if (!profile->isLoggedIn())
            signIn();
        setFailure("/x/relation/stat", "code:-500");
        profile->refreshButtonTapped();
        QTRY_VERIFY_WITH_TIMEOUT(!profile->isLoadingProfile(), 30000);
        QVERIFY(profile->isLoggedIn());
        QCOMPARE(profile->statValues().mid(1), QStringList({"--", "--"}));
        QCOMPARE(profile->statValues().first(), QStringLiteral("128.5"));
    }
};

int main(int argc, char *argv[])
{
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    QGuiApplication app(argc, argv);
    QGuiApplication::setApplicationName(QStringLiteral("oldzuvi-account-e2e"));
    TestAccountEndToEnd test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_zuviaccountendtoend.moc"
