#include "zuvisettingsviewcontroller.h"

#include "browse/zuvihotregionsettingsviewcontroller.h"
#include "browse/zuvihotviewcontroller.h"
#include "config/zuviremoteconfig.h"
#include "images/zuviimageloader.h"
#include "notifications/zuviremoteconfigdebugviewcontroller.h"
#include "notifications/zuviremotenotificationhistoryviewcontroller.h"
#include "notifications/zuviremotenotificationpresenter.h"
#include "platform/zuvidebuglog.h"
#include "platform/zuvidefaults.h"
#include "platform/zuvinotificationcenter.h"
#include "platform/zuvischeduler.h"
#include "zuviappdelegate.h"
#include "zuvidebuglogviewcontroller.h"
#include "zuvinavigationcontroller.h"

const char *const ZuviSettingsViewController::kQualityModeKey = "ZuviPreferredQualityMode";
const char *const ZuviSettingsViewController::kQualityMigratedKey =
    "ZuviPreferredQualityModeLegacyMigrated";
const char *const ZuviSettingsViewController::kDanmakuEnabledKey = "ZuviDanmakuEnabled";
const char *const ZuviSettingsViewController::kHotSortModeKey = "ZuviPreferredHotSortMode";
const char *const ZuviSettingsViewController::kDirectionGuideKey =
    "ZuviFullscreenDirectionGuideEnabled";
const char *const ZuviSettingsViewController::kVisibleHotRegionKeysKey = "ZuviVisibleHotRegionKeys";

namespace {
// A switch whose key was never written is on.
bool boolDefaultingToTrue(ZuviDefaults *defaults, const char *key)
{
    const QString name = QString::fromLatin1(key);
    return !defaults->containsKey(name) || defaults->boolForKey(name);
}
} // namespace

ZuviSettingsViewController::ZuviSettingsViewController(const Services &services, QObject *parent)
    : ZuviViewController(QStringLiteral("设置"), parent), m_services(services)
{
    // Each of these may change a row's detail while the screen shows.
    const char *const watched[] = {ZuviRemoteNotificationPresenter::kHistoryDidChangeNotification,
                                   ZuviDebugLog::kDidChangeNotification,
                                   ZuviRemoteConfig::kDidUpdateNotification,
                                   ZuviRemoteConfig::kMessageDidUpdateNotification};
    for (const char *name : watched)
        m_services.center->addObserver(QString::fromLatin1(name), this,
                                       [this](const ZuviNotification &) { refreshDetails(); });
}

ZuviSettingsViewController::~ZuviSettingsViewController()
{
    m_services.center->removeObserver(this);
}

ZuviSettingsViewController::Services ZuviSettingsViewController::sharedServices()
{
    Services services;
    services.defaults = ZuviDefaults::standardDefaults();
    services.center = ZuviNotificationCenter::defaultCenter();
    services.scheduler = ZuviScheduler::sharedScheduler();
    services.log = ZuviDebugLog::sharedLog();
    services.imageLoader = ZuviImageLoader::sharedLoader();
    services.remoteConfig = ZuviRemoteConfig::sharedConfig();
    services.presenter = ZuviRemoteNotificationPresenter::sharedPresenter();
    return services;
}

QUrl ZuviSettingsViewController::pageUrl() const
{
    return modulePageUrl(QStringLiteral("SettingsPage.qml"));
}

void ZuviSettingsViewController::viewWillAppear()
{
    refreshDetails();
    emit preferencesChanged();
}

bool ZuviSettingsViewController::developerModeEnabled() const
{
    return m_services.defaults->boolForKey(QString::fromLatin1(ZuviAppDelegate::kDeveloperModeKey));
}

bool ZuviSettingsViewController::defaultDanmakuEnabled() const
{
    return boolDefaultingToTrue(m_services.defaults, kDanmakuEnabledKey);
}

bool ZuviSettingsViewController::fullscreenDirectionGuideEnabled() const
{
    return boolDefaultingToTrue(m_services.defaults, kDirectionGuideKey);
}

int ZuviSettingsViewController::preferredQualityModeIndex() const
{
    ZuviDefaults *defaults = m_services.defaults;
    const QString key = QString::fromLatin1(kQualityModeKey);
    const QString migratedKey = QString::fromLatin1(kQualityMigratedKey);
    if (!defaults->boolForKey(migratedKey)) {
        // Older builds stored one of four steps; 0 and 1 both meant the best.
        if (defaults->containsKey(key)) {
            const qint64 old = defaults->integerForKey(key);
            defaults->setInteger(old >= 3 ? 2 : (old == 2 ? 1 : 0), key);
        }
        defaults->setBool(true, migratedKey);
        defaults->synchronize();
    }
    if (!defaults->containsKey(key))
        return 0;
    const qint64 value = defaults->integerForKey(key);
    return value >= 0 && value <= 2 ? static_cast<int>(value) : 0;
}

int ZuviSettingsViewController::preferredHotSortModeIndex() const
{
    const qint64 value = m_services.defaults->integerForKey(QString::fromLatin1(kHotSortModeKey));
    return value >= 0 && value <= 2 ? static_cast<int>(value) : 0;
}

QString ZuviSettingsViewController::titleForQualityModeIndex(int index)
{
    switch (index) {
    case 1:
        return QStringLiteral("480P优先");
    case 2:
        return QStringLiteral("360P优先");
    default:
        return QStringLiteral("720P优先");
    }
}

QString ZuviSettingsViewController::titleForHotSortModeIndex(int index)
{
    switch (index) {
    case 1:
        return QStringLiteral("播放排序");
    case 2:
        return QStringLiteral("评论排序");
    default:
        return QStringLiteral("默认排序");
    }
}

QStringList ZuviSettingsViewController::qualityModeTitles() const
{
    return {titleForQualityModeIndex(0), titleForQualityModeIndex(1), titleForQualityModeIndex(2)};
}

QStringList ZuviSettingsViewController::hotSortModeTitles() const
{
    return {titleForHotSortModeIndex(0), titleForHotSortModeIndex(1), titleForHotSortModeIndex(2)};
}

int ZuviSettingsViewController::chosenHotRegionCount(ZuviDefaults *defaults)
{
    return static_cast<int>(ZuviHotViewController::visibleHotRegionKeys(defaults).size());
}

QString ZuviSettingsViewController::regionDetailText() const
{
    return QStringLiteral("已选%1个").arg(chosenHotRegionCount(m_services.defaults));
}

QString ZuviSettingsViewController::historyDetailText() const
{
    const qsizetype count =
        m_services.presenter ? m_services.presenter->notificationHistoryEntries().size() : 0;
    return QStringLiteral("%1 条").arg(count);
}

QString ZuviSettingsViewController::remoteConfigDetailText() const
{
    const qint64 version =
        m_services.remoteConfig ? m_services.remoteConfig->storedMessageVersion() : 0;
    return QStringLiteral("本地 v%1").arg(version);
}

QString ZuviSettingsViewController::directionGuideDetailText() const
{
    return fullscreenDirectionGuideEnabled() ? QStringLiteral("开启") : QStringLiteral("关闭");
}

QString ZuviSettingsViewController::debugLogDetailText() const
{
    if (!m_services.log || m_services.log->logText().isEmpty())
        return QStringLiteral("空");
    return QStringLiteral("%1 行").arg(m_services.log->lineCount());
}

void ZuviSettingsViewController::developerSwitchChanged(bool on)
{
    m_services.defaults->setBool(on, QString::fromLatin1(ZuviAppDelegate::kDeveloperModeKey));
    m_services.defaults->synchronize();
    emit preferencesChanged();
    // The shell restarts the configuration service with the other source.
    m_services.center->post(
        QString::fromLatin1(ZuviAppDelegate::kDeveloperModeDidChangeNotification), this);
    refreshDetails();
}

void ZuviSettingsViewController::directionGuideSwitchChanged(bool on)
{
    m_services.defaults->setBool(on, QString::fromLatin1(kDirectionGuideKey));
    m_services.defaults->synchronize();
    emit preferencesChanged();
}

void ZuviSettingsViewController::danmakuSwitchChanged(bool on)
{
    m_services.defaults->setBool(on, QString::fromLatin1(kDanmakuEnabledKey));
    m_services.defaults->synchronize();
    emit preferencesChanged();
}

void ZuviSettingsViewController::qualityControlChanged(int index)
{
    if (index < 0 || index > 2)
        return;
    m_services.defaults->setInteger(index, QString::fromLatin1(kQualityModeKey));
    m_services.defaults->setBool(true, QString::fromLatin1(kQualityMigratedKey));
    m_services.defaults->synchronize();
    emit preferencesChanged();
}

void ZuviSettingsViewController::hotSortControlChanged(int index)
{
    if (index < 0 || index > 2)
        return;
    m_services.defaults->setInteger(index, QString::fromLatin1(kHotSortModeKey));
    m_services.defaults->synchronize();
    emit preferencesChanged();
}

void ZuviSettingsViewController::clearCaches()
{
    if (m_services.imageLoader)
        m_services.imageLoader->clearAllCaches();
    m_cacheCleared = true;
    emit detailsChanged();
    emit alertRequested(QStringLiteral("缓存已删除"), QString(), QStringLiteral("好"));
}

void ZuviSettingsViewController::openRegionSettings()
{
    push(new ZuviHotRegionSettingsViewController(m_services.defaults));
}

void ZuviSettingsViewController::openNotificationHistory()
{
    push(new ZuviRemoteNotificationHistoryViewController(
        {m_services.presenter, m_services.center, m_services.imageLoader}));
}

void ZuviSettingsViewController::openRemoteConfigDebug()
{
    push(new ZuviRemoteConfigDebugViewController(
        {m_services.remoteConfig, m_services.presenter, m_services.center}));
}

void ZuviSettingsViewController::openDebugLog()
{
    push(new ZuviDebugLogViewController(m_services.log, m_services.center));
}

void ZuviSettingsViewController::refreshDetails()
{
    emit detailsChanged();
}

void ZuviSettingsViewController::push(ZuviViewController *controller)
{
    if (!controller)
        return;
    ZuviNavigationController *navigation = navigationController();
    if (!navigation) {
        delete controller;
        return;
    }
    controller->setHidesBottomBarWhenPushed(true);
    navigation->pushViewController(controller, true);
}
