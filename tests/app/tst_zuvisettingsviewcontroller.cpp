#include "app/zuviappdelegate.h"
#include "app/zuvidebuglogviewcontroller.h"
#include "app/zuvinavigationcontroller.h"
#include "app/zuvisettingsviewcontroller.h"
#include "app/zuviunavailableviewcontroller.h"
#include "browse/zuvihotregionsettingsviewcontroller.h"
#include "config/zuviremoteconfig.h"
#include "net/zuviapiclient.h"
#include "notifications/zuviremotenotificationhistoryviewcontroller.h"
#include "notifications/zuviremotenotificationpresenter.h"
#include "platform/zuvidebuglog.h"
#include "platform/zuvinotificationcenter.h"
#include "platform/zuvivirtualscheduler.h"
#include "zuvitesthttpserver.h"
#include "zuvitestsupport.h"

#include <QtTest>

#include <memory>

class TestSettingsViewController : public QObject
{
    Q_OBJECT

private:
    ZuviTestHttpServer server;
    std::unique_ptr<ZuviScratchDefaults> defaults;
    std::unique_ptr<ZuviNotificationCenter> center;
    std::unique_ptr<ZuviVirtualScheduler> scheduler;
    std::unique_ptr<ZuviDebugLog> log;
    std::unique_ptr<ZuviRemoteConfig> config;
    std::unique_ptr<ZuviRemoteNotificationPresenter> presenter;
    QTemporaryDir caches;

    ZuviSettingsViewController::Services services() const
    {
        ZuviSettingsViewController::Services result;
        result.defaults = defaults->get();
        result.center = center.get();
        result.scheduler = scheduler.get();
        result.log = log.get();
        result.remoteConfig = config.get();
        result.presenter = presenter.get();
        return result;
    }

private slots:
    void initTestCase()
    {
        QVERIFY(server.start());
        server.setAnswer("GET", "/config.json", ZuviScriptedAnswer::json(R"({"service":"main"})"));
        server.setAnswer("GET", "/dev-config.json",
                         ZuviScriptedAnswer::json(R"({"service":"dev"})"));
    }

    void init()
    {
        defaults.reset(new ZuviScratchDefaults);
        center.reset(new ZuviNotificationCenter);
        scheduler.reset(new ZuviVirtualScheduler);
        log.reset(new ZuviDebugLog(defaults->get(), center.get()));
        config.reset(new ZuviRemoteConfig(defaults->get(), center.get(), scheduler.get()));
        ZuviRemoteNotificationPresenter::Services presenterServices;
        presenterServices.config = config.get();
        presenterServices.defaults = defaults->get();
        presenterServices.center = center.get();
        presenterServices.scheduler = scheduler.get();
        presenterServices.log = log.get();
        presenter.reset(new ZuviRemoteNotificationPresenter(presenterServices));
    }
    void cleanup()
    {
        presenter.reset();
        config.reset();
    }

    void qualityMigratesOnce_data()
    {
        QTest::addColumn<QVariant>("stored");
        QTest::addColumn<int>("firstRead");
        QTest::newRow("old 2 becomes 480P") << QVariant(2) << 1;
        QTest::newRow("old 7 becomes 360P") << QVariant(7) << 2;
        QTest::newRow("old 1 becomes 720P") << QVariant(1) << 0;
        QTest::newRow("nothing stored") << QVariant() << 0;
    }
    void qualityMigratesOnce()
    {
        QFETCH(QVariant, stored);
        QFETCH(int, firstRead);
        ZuviDefaults *store = defaults->get();
        if (stored.isValid())
            store->setObject(stored, ZuviSettingsViewController::kQualityModeKey);
        ZuviSettingsViewController settings(services());
        QCOMPARE(settings.preferredQualityModeIndex(), firstRead);
        QVERIFY(store->boolForKey(ZuviSettingsViewController::kQualityMigratedKey));
        // The converted value is read as it is from now on, not converted again.
        QCOMPARE(settings.preferredQualityModeIndex(), firstRead);
        QCOMPARE(ZuviSettingsViewController::titleForQualityModeIndex(firstRead),
                 settings.qualityModeTitles().at(firstRead));
    }

    void preferencesReadWithTheirDefaults()
    {
        ZuviDefaults *store = defaults->get();
        ZuviSettingsViewController settings(services());
        QVERIFY(settings.defaultDanmakuEnabled());
        QVERIFY(settings.fullscreenDirectionGuideEnabled());
        QCOMPARE(settings.directionGuideDetailText(), QStringLiteral("开启"));
        store->setInteger(5, ZuviSettingsViewController::kHotSortModeKey);
        QCOMPARE(settings.preferredHotSortModeIndex(), 0);

        QSignalSpy changed(&settings, &ZuviSettingsViewController::preferencesChanged);
        settings.hotSortControlChanged(2);
        settings.qualityControlChanged(1);
        settings.danmakuSwitchChanged(false);
        settings.directionGuideSwitchChanged(false);
        QCOMPARE(changed.size(), 4);
        QCOMPARE(store->integerForKey(ZuviSettingsViewController::kHotSortModeKey), 2);
        QCOMPARE(settings.preferredQualityModeIndex(), 1);
        QVERIFY(!store->boolForKey(ZuviSettingsViewController::kDanmakuEnabledKey));
        QVERIFY(store->containsKey(ZuviSettingsViewController::kDanmakuEnabledKey));
        QCOMPARE(settings.directionGuideDetailText(), QStringLiteral("关闭"));
    }

    void detailsFollowTheirSources()
    {
        ZuviSettingsViewController settings(services());
        QCOMPARE(settings.regionDetailText(), QStringLiteral("已选18个"));
        QCOMPARE(settings.historyDetailText(), QStringLiteral("0 条"));
        QCOMPARE(settings.debugLogDetailText(), QStringLiteral("空"));
        QCOMPARE(settings.remoteConfigDetailText(), QStringLiteral("本地 v0"));

        // Unknown and repeated region keys do not count; none left means "popular" alone.
        defaults->get()->setObject(QVariantList{"1005", "nope", "1005", "all"},
                                   ZuviSettingsViewController::kVisibleHotRegionKeysKey);
        QCOMPARE(settings.regionDetailText(), QStringLiteral("已选2个"));
        defaults->get()->setObject(QVariantList{"nope"},
                                   ZuviSettingsViewController::kVisibleHotRegionKeysKey);
        QCOMPARE(settings.regionDetailText(), QStringLiteral("已选1个"));

        QSignalSpy refreshed(&settings, &ZuviSettingsViewController::detailsChanged);
        ZuviRemoteConfigMessage message;
        message.text = QStringLiteral("新通知");
        presenter->saveMessageToHistory(message);
        log->appendText(QStringLiteral("第一行\n第二行"), QStringLiteral("接口"));
        QTRY_COMPARE(refreshed.size(), 2);
        QCOMPARE(settings.historyDetailText(), QStringLiteral("1 条"));
        QCOMPARE(settings.debugLogDetailText(), QStringLiteral("%1 行").arg(log->lineCount()));
        QVERIFY(log->lineCount() >= 3);
    }

    void clearingCachesConfirms()
    {
        ZuviSettingsViewController settings(services());
        QSignalSpy alert(&settings, &ZuviSettingsViewController::alertRequested);
        QCOMPARE(settings.clearCacheDetailText(), QString());
        settings.clearCaches();
        QCOMPARE(settings.clearCacheDetailText(), QStringLiteral("已删除"));
        QCOMPARE(alert.size(), 1);
        QCOMPARE(alert.first().at(0).toString(), QStringLiteral("缓存已删除"));
        QCOMPARE(alert.first().at(2).toString(), QStringLiteral("好"));
    }

    void rowsOpenTheirScreens()
    {
        auto *settings = new ZuviSettingsViewController(services());
        ZuviNavigationController stack(new ZuviUnavailableViewController("我的"), scheduler.get());
        stack.pushViewController(settings, false);

        settings->openRegionSettings();
        QVERIFY(qobject_cast<ZuviHotRegionSettingsViewController *>(stack.topViewController()));
        QCOMPARE(stack.topViewController()->title(), QStringLiteral("分区配置"));
        QVERIFY(stack.topViewController()->hidesBottomBarWhenPushed());
        stack.popViewController(false);

        settings->openNotificationHistory();
        QVERIFY(
            qobject_cast<ZuviRemoteNotificationHistoryViewController *>(stack.topViewController()));
        stack.popViewController(false);
        settings->openDebugLog();
        QVERIFY(qobject_cast<ZuviDebugLogViewController *>(stack.topViewController()));
    }

    void developerModeOffRestartsWithTheProductionSource()
    {
        defaults->get()->setBool(true, ZuviAppDelegate::kDeveloperModeKey);
        ZuviScratchDefaults clientDefaults;
        ZuviAPIClient client(clientDefaults.get(), log.get(), center.get(),
                             ZuviEndpoints::allOn(server.baseUrl()));
        ZuviAppDelegate::Services shell;
        shell.client = &client;
        shell.defaults = defaults->get();
        shell.center = center.get();
        shell.scheduler = scheduler.get();
        shell.log = log.get();
        shell.remoteConfig = config.get();
        shell.presenter = presenter.get();
        shell.cachesDirectory = caches.path();
        shell.infoDictionary = {
            {"ZuviRemoteConfigSourceURL", server.urlString("/config.json")},
            {"ZuviRemoteConfigDeveloperSourceURL", server.urlString("/dev-config.json")}};
        ZuviAppDelegate delegate(shell);
        QVERIFY(delegate.applicationDidFinishLaunching(nullptr));
        QVERIFY(presenter->isObserving());
        QCOMPARE(config->options().sanitizedSources(),
                 QStringList{server.urlString("/dev-config.json")});

        ZuviSettingsViewController settings(services());
        QCOMPARE(settings.developerSectionRowCount(), 4);
        QSignalSpy posted(center.get(), &ZuviNotificationCenter::notificationPosted);
        settings.developerSwitchChanged(false);
        QCOMPARE(settings.developerSectionRowCount(), 1);
        QCOMPARE(posted.first().at(0).toString(),
                 QString::fromLatin1(ZuviAppDelegate::kDeveloperModeDidChangeNotification));
        QCOMPARE(posted.first().at(1).value<QObject *>(), &settings);

        QCOMPARE(config->options().sanitizedSources(),
                 QStringList{server.urlString("/config.json")});
        QCOMPARE(config->options().cacheDirectoryPath,
                 QDir(caches.path()).filePath("ZuviRemoteConfigProduction"));
        QTRY_VERIFY(config->currentConfig().has_value());
        QCOMPARE(config->currentConfig()->value("service").toString(), QStringLiteral("main"));
        QVERIFY(QFile::exists(
            QDir(caches.path()).filePath("ZuviRemoteConfigProduction/remote_config.json")));
    }
};

QTEST_MAIN(TestSettingsViewController)
#include "tst_zuvisettingsviewcontroller.moc"
