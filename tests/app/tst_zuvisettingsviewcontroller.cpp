#include "app/zuviappdelegate.h"
#include "app/zuvidebuglogviewcontroller.h"
#include "app/zuvinavigationcontroller.h"
#include "browse/zuvihotregionsettingsviewcontroller.h"
#include "notifications/zuviremotenotificationhistoryviewcontroller.h"
#include "zuvimessageservicesfixture.h"
#include "zuvistandinviewcontroller.h"
#include "zuvitesthttpserver.h"

#include <QtTest>

#include <memory>

class TestSettingsViewController : public QObject, private ZuviMessageServicesFixture
{
    Q_OBJECT

private:
    ZuviTestHttpServer server;

private slots:
    void initTestCase() { QVERIFY(server.start()); }

    void init() { makeServices(server.baseUrl()); }
    void cleanup() { releaseServices(); }

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
        ZuviSettingsViewController settings(settingsServices());
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
        ZuviSettingsViewController settings(settingsServices());
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
        ZuviSettingsViewController settings(settingsServices());
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
        ZuviSettingsViewController settings(settingsServices());
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
        auto *settings = new ZuviSettingsViewController(settingsServices());
        ZuviNavigationController stack(new ZuviStandInViewController("我的"), scheduler.get());
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

    // The switch stores the mode and tells the shell, which restarts the
    // configuration on the other source: tst_zuviappdelegate follows the
    // shell's part, tst_zuviremoteconfig the fetch and its cache.
    void developerSwitchTellsTheShell()
    {
        defaults->get()->setBool(true, ZuviAppDelegate::kDeveloperModeKey);
        ZuviSettingsViewController settings(settingsServices());
        QCOMPARE(settings.developerSectionRowCount(), 4);
        QSignalSpy posted(center.get(), &ZuviNotificationCenter::notificationPosted);
        settings.developerSwitchChanged(false);
        QVERIFY(!defaults->get()->boolForKey(ZuviAppDelegate::kDeveloperModeKey));
        QCOMPARE(settings.developerSectionRowCount(), 1);
        QCOMPARE(posted.first().at(0).toString(),
                 QString::fromLatin1(ZuviAppDelegate::kDeveloperModeDidChangeNotification));
        QCOMPARE(posted.first().at(1).value<QObject *>(), &settings);
    }
};

QTEST_MAIN(TestSettingsViewController)
#include "tst_zuvisettingsviewcontroller.moc"
