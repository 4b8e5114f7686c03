#include "account/zuviprofileviewcontroller.h"
#include "app/zuviappdelegate.h"
#include "app/zuviappearance.h"
#include "app/zuvidebuglog.h"
#include "app/zuvidebuglogviewcontroller.h"
#include "app/zuvinavigationcontroller.h"
#include "app/zuvitabbarcontroller.h"
#include "app/zuviviewcontroller.h"
#include "browse/zuvifollowingviewcontroller.h"
#include "browse/zuvihotviewcontroller.h"
#include "browse/zuvivideogridviewcontroller.h"
#include "config/zuviremoteconfig.h"
#include "config/zuviremoteconfigoptions.h"
#include "net/zuviapiclient.h"
#include "platform/zuvinotificationcenter.h"
#include "platform/zuvivirtualscheduler.h"
#include "zuvitesthttpserver.h"
#include "zuvitestsupport.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

namespace {
// A root screen that counts how often its tab was tapped again.
class CountingScreen : public ZuviViewController
{
    Q_OBJECT
public:
    explicit CountingScreen(const QString &title) : ZuviViewController(title) {}
    QUrl pageUrl() const override { return {}; }
    Q_INVOKABLE void tabBarItemReselected() { ++reselections; }
    int reselections = 0;
};

class PlainScreen : public ZuviViewController
{
public:
    PlainScreen() : ZuviViewController("plain") {}
    QUrl pageUrl() const override { return {}; }
};
} // namespace

class TestAppDelegate : public QObject
{
    Q_OBJECT

private:
    ZuviTestHttpServer server;
    ZuviScratchDefaults defaults;
    ZuviNotificationCenter center;
    ZuviVirtualScheduler scheduler;
    std::unique_ptr<ZuviDebugLog> log;
    std::unique_ptr<ZuviAPIClient> client;
    std::unique_ptr<ZuviRemoteConfig> config;

    ZuviAppDelegate::Services services(const QVariantMap &info = {})
    {
        ZuviAppDelegate::Services made;
        made.client = client.get();
        made.defaults = defaults.get();
        made.center = &center;
        made.scheduler = &scheduler;
        made.log = log.get();
        made.remoteConfig = config.get();
        made.endpoints = ZuviEndpoints::allOn(server.baseUrl());
        made.endpoints.remoteConfigSource = server.urlString("/config.json");
        made.endpoints.remoteConfigDeveloperSource = server.urlString("/dev-config.json");
        made.infoDictionary = info;
        made.cachesDirectory = defaults.dir.filePath("caches");
        return made;
    }

private slots:
    void initTestCase()
    {
        QVERIFY(server.start());
        log.reset(new ZuviDebugLog(defaults.get(), &center));
        client.reset(new ZuviAPIClient(defaults.get(), log.get(), &center,
                                       ZuviEndpoints::allOn(server.baseUrl())));
    }
    void init()
    {
        defaults.get()->setBool(false, ZuviAppDelegate::kDeveloperModeKey);
        config.reset(new ZuviRemoteConfig(defaults.get(), &center, &scheduler));
    }
    void cleanup() { config.reset(); }

    void startUpBuildsTheFourTabs()
    {
        ZuviAppDelegate delegate(services(ZuviAppDelegate::bundledInfoDictionary()));
        QVERIFY(delegate.applicationDidFinishLaunching(nullptr));
        QVERIFY(ZuviAppearance::shared()->isApplied());
        ZuviTabBarController *tabs = delegate.rootTabBarController();
        QCOMPARE(tabs->count(), 4);
        QCOMPARE(tabs->tintColor(), QColor(Qt::black));
        const QStringList titles{"推荐", "热门", "关注", "我的"};
        for (int i = 0; i < 4; ++i) {
            QCOMPARE(tabs->titleAt(i), titles[i]);
            QCOMPARE(tabs->tagAt(i), i);
            QVERIFY(!tabs->imageAt(i, false).isEmpty());
            QVERIFY(!tabs->imageAt(i, true).isEmpty());
            QVERIFY(tabs->imageAt(i, false) != tabs->imageAt(i, true));
            QCOMPARE(tabs->viewControllerAt(i)->depth(), 1);
        }
        auto *grid = qobject_cast<ZuviVideoGridViewController *>(
            tabs->viewControllerAt(0)->rootViewController());
        QVERIFY(grid);
        QCOMPARE(grid->title(), QStringLiteral("推荐"));
        QCOMPARE(grid->emptyMessage(), QStringLiteral("暂无推荐内容。"));
        QCOMPARE(grid->mode(), ZuviVideoGridViewController::Mode::Recommended);
        auto *hot =
            qobject_cast<ZuviHotViewController *>(tabs->viewControllerAt(1)->rootViewController());
        QVERIFY(hot);
        QCOMPARE(hot->title(), QStringLiteral("热门"));
        auto *following = qobject_cast<ZuviFollowingViewController *>(
            tabs->viewControllerAt(2)->rootViewController());
        QVERIFY(following);
        QCOMPARE(following->title(), QStringLiteral("关注"));
        // The profile opens the shell's settings.
        auto *profile = qobject_cast<ZuviProfileViewController *>(
            tabs->viewControllerAt(3)->rootViewController());
        QVERIFY(profile);
        QCOMPARE(profile->title(), QStringLiteral("我的"));
        QVERIFY(profile->hasSettings());
    }

    // A tap on the selected tab reaches its screen only at the stack's root.
    void reselection()
    {
        ZuviAppDelegate delegate(services());
        ZuviTabBarController *tabs = delegate.buildRootTabBarController();
        auto *first = new CountingScreen("first");
        auto *second = new CountingScreen("second");
        ZuviNavigationController *one =
            delegate.navigationControllerWithRootViewController(first, "一", 4);
        delegate.navigationControllerWithRootViewController(second, "二", 5);
        const int firstIndex = 4, secondIndex = 5;
        tabs->selectTab(firstIndex);
        QCOMPARE(tabs->selectedIndex(), firstIndex);
        QCOMPARE(first->reselections, 0); // selecting a different tab never tells
        tabs->selectTab(firstIndex);
        QCOMPARE(first->reselections, 1);
        one->pushViewController(new PlainScreen);
        tabs->selectTab(firstIndex);
        QCOMPARE(first->reselections, 1); // a pushed screen shows
        one->popViewController(false);
        tabs->selectTab(firstIndex);
        QCOMPARE(first->reselections, 2);
        tabs->selectTab(secondIndex);
        QCOMPARE(second->reselections, 0);
        QCOMPARE(first->reselections, 2);
        // A screen without the operation is simply left alone.
        PlainScreen plain;
        delegate.notifyTabReselectedForViewController(&plain);
    }

    void remoteConfigSource_data()
    {
        QTest::addColumn<bool>("developer");
        QTest::addColumn<QVariantMap>("info");
        QTest::addColumn<QString>("expected");
        const QString production = "http://127.0.0.1:%1/config.json";
        const QString developer = "http://127.0.0.1:%1/dev-config.json";
        QTest::newRow("production from the keys")
            << false << QVariantMap{{"ZuviRemoteConfigSourceURL", " https://a.example/c.json\n"}}
            << "https://a.example/c.json";
        QTest::newRow("developer from the keys")
            << true
            << QVariantMap{{"ZuviRemoteConfigSourceURL", "https://a.example/c.json"},
                           {"ZuviRemoteConfigDeveloperSourceURL", "https://a.example/d.json"}}
            << "https://a.example/d.json";
        QTest::newRow("blank production falls back")
            << false << QVariantMap{{"ZuviRemoteConfigSourceURL", "  \n "}} << production;
        QTest::newRow("not a string falls back")
            << false << QVariantMap{{"ZuviRemoteConfigSourceURL", 42}} << production;
        QTest::newRow("developer without its key") << true << QVariantMap{} << developer;
    }
    void remoteConfigSource()
    {
        QFETCH(bool, developer);
        QFETCH(QVariantMap, info);
        QFETCH(QString, expected);
        expected = expected.arg(server.port());
        defaults.get()->setBool(developer, ZuviAppDelegate::kDeveloperModeKey);
        ZuviAppDelegate delegate(services(info));
        QCOMPARE(delegate.remoteConfigSourceURLString(), expected);
        QCOMPARE(delegate.remoteConfigSourcesFromInfoDictionary(), QStringList{expected});
        QVERIFY(delegate.remoteConfigCacheDirectoryPath().endsWith(
            developer ? "/ZuviRemoteConfigDeveloper" : "/ZuviRemoteConfigProduction"));
    }

    // Positive numbers under the information keys replace the defaults.
    void infoNumbers_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<double>("interval");
        QTest::addColumn<double>("timeout");
        QTest::newRow("number") << QVariant(600) << 600.0 << 600.0;
        QTest::newRow("numeric text") << QVariant("90") << 90.0 << 90.0;
        QTest::newRow("zero") << QVariant(0) << 14400.0 << 30.0;
        QTest::newRow("missing") << QVariant() << 14400.0 << 30.0;
    }
    void infoNumbers()
    {
        QFETCH(QVariant, value);
        QFETCH(double, interval);
        QFETCH(double, timeout);
        QVariantMap info;
        if (value.isValid()) {
            info.insert("ZuviRemoteConfigPollInterval", value);
            info.insert("ZuviRemoteConfigRequestTimeout", value);
        }
        ZuviAppDelegate delegate(services(info));
        const ZuviRemoteConfigOptions options = delegate.remoteConfigOptions();
        QCOMPARE(options.pollInterval, interval);
        QCOMPARE(options.requestTimeout, timeout);
        delegate.startRemoteConfigNotifications();
        QCOMPARE(config->options().pollInterval, interval);
    }

    void developerModeChangeRestartsTheConfiguration()
    {
        ZuviAppDelegate delegate(services());
        QVERIFY(!config->isRunning());
        QVERIFY(delegate.applicationDidFinishLaunching(nullptr));
        QVERIFY(config->isRunning());
        QCOMPARE(config->generation(), quint64(1));
        QCOMPARE(config->options().sanitizedSources(),
                 QStringList{server.urlString("/config.json")});
        QVERIFY(config->options().cacheDirectoryPath.endsWith("/ZuviRemoteConfigProduction"));
        defaults.get()->setBool(true, ZuviAppDelegate::kDeveloperModeKey);
        center.post(ZuviAppDelegate::kDeveloperModeDidChangeNotification);
        QCOMPARE(config->generation(), quint64(2));
        QCOMPARE(config->options().sanitizedSources(),
                 QStringList{server.urlString("/dev-config.json")});
        QVERIFY(config->options().cacheDirectoryPath.endsWith("/ZuviRemoteConfigDeveloper"));
    }

    void withoutAnySourceNothingStarts()
    {
        ZuviAppDelegate::Services none = services();
        none.endpoints.remoteConfigSource.clear();
        ZuviAppDelegate delegate(none);
        QVERIFY(delegate.remoteConfigSourcesFromInfoDictionary().isEmpty());
        QVERIFY(delegate.applicationDidFinishLaunching(nullptr));
        QVERIFY(!config->isRunning());
        QCOMPARE(config->generation(), quint64(0));
    }

    // The developer's log screen copies and clears; what it shows in the
    // app is messages-e2e.sh's last step.
    void debugLogScreen()
    {
        ZuviDebugLogViewController screen(log.get(), &center);
        log->clearLog();
        QVERIFY(screen.isLogEmpty());
        QSignalSpy changed(&screen, &ZuviDebugLogViewController::logChanged);
        log->appendText("图片加载失败", "图片");
        QTRY_VERIFY(!changed.isEmpty());
        QVERIFY(screen.displayText().contains("[图片]\n图片加载失败\n"));
        QSignalSpy alerts(&screen, &ZuviDebugLogViewController::alertRequested);
        screen.chooseAction(0);
        QCOMPARE(QGuiApplication::clipboard()->text(), log->logText());
        QCOMPARE(alerts.size(), 1);
        screen.chooseAction(2); // cancel
        QVERIFY(!screen.isLogEmpty());
        changed.clear();
        screen.chooseAction(1);
        QTRY_VERIFY(!changed.isEmpty());
        QVERIFY(screen.isLogEmpty());
    }
};

QTEST_MAIN(TestAppDelegate)
#include "tst_zuviappdelegate.moc"
