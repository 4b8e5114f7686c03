#include "zuviappdelegate.h"

#include "account/zuviprofileviewcontroller.h"
#include "app/zuvidebuglog.h"
#include "app/zuvisettingsviewcontroller.h"
#include "browse/zuvifollowingviewcontroller.h"
#include "browse/zuvihotviewcontroller.h"
#include "browse/zuvivideogridviewcontroller.h"
#include "config/zuviremoteconfig.h"
#include "config/zuviremoteconfigoptions.h"
#include "desktop/zuvimprisservice.h"
#include "desktop/zuvinowplaying.h"
#include "desktop/zuviscreensaverinhibitor.h"
#include "images/zuviimageloader.h"
#include "images/zuviimageprovider.h"
#include "net/zuviapiclient.h"
#include "notifications/zuviremotenotificationpresenter.h"
#include "platform/zuvidefaults.h"
#include "platform/zuviidiom.h"
#include "platform/zuvinotificationcenter.h"
#include "platform/zuvischeduler.h"
#include "zuviappearance.h"
#include "zuviglobalshortcuts.h"
#include "zuviimageassets.h"
#include "zuvikeyboardshortcuts.h"
#include "zuvinavigationcontroller.h"
#include "zuvitabbarcontroller.h"
#include "zuviwindowgeometry.h"

#include <QDBusConnection>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLoggingCategory>
#include <QMetaMethod>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QScreen>
#include <QStandardPaths>

#ifdef __GLIBC__
#include <malloc.h>
#endif

Q_LOGGING_CATEGORY(lcApp, "zuvi.app")

const char *const ZuviAppDelegate::kDeveloperModeDidChangeNotification =
    "ZuviDeveloperModeDidChangeNotification";
const char *const ZuviAppDelegate::kDeveloperModeKey = "ZuviDeveloperModeEnabled";
const char *const ZuviAppDelegate::kReselectOperation = "tabBarItemReselected()";

namespace {
const char *const kTabImageNames[] = {"tab_recommend", "tab_hot", "tab_following", "tab_profile"};
} // namespace

ZuviAppDelegate::ZuviAppDelegate(const Services &services, QObject *parent)
    : QObject(parent), m_services(services)
{
}

ZuviAppDelegate::~ZuviAppDelegate()
{
    if (m_services.center)
        m_services.center->removeObserver(this);
    if (m_services.presenter)
        m_services.presenter->setContainerProvider(nullptr);
    delete m_window;
}

bool ZuviAppDelegate::applicationDidFinishLaunching(QQmlEngine *engine)
{
    applyIOS6PrototypeAppearance();
    buildRootTabBarController();
    if (engine && !createWindow(engine))
        return false;
    m_services.center->addObserver(QString::fromLatin1(kDeveloperModeDidChangeNotification), this,
                                   [this](const ZuviNotification &) { developerModeDidChange(); });
    startRemoteConfigNotifications();
    return true;
}

void ZuviAppDelegate::applyIOS6PrototypeAppearance()
{
    ZuviAppearance::shared()->applyIOS6PrototypeAppearance();
}

ZuviTabBarController *ZuviAppDelegate::buildRootTabBarController()
{
    if (m_root)
        return m_root;
    m_root = new ZuviTabBarController(this);
    navigationControllerWithRootViewController(
        ZuviVideoGridViewController::createWithRecommendedTitle(
            QStringLiteral("推荐"), QStringLiteral("暂无推荐内容。"), m_services.client,
            m_services.scheduler),
        QStringLiteral("推荐"), 0);
    navigationControllerWithRootViewController(
        new ZuviHotViewController(m_services.client, m_services.defaults), QStringLiteral("热门"),
        1);
    navigationControllerWithRootViewController(
        new ZuviFollowingViewController(m_services.client, m_services.scheduler),
        QStringLiteral("关注"), 2);
    auto *profile = new ZuviProfileViewController(m_services.client, m_services.scheduler);
    // The settings screen works on this application's services, so a shell
    // made with its own (a test, a review tool) edits its own store.
    profile->setSettingsScreenFactory([this] {
        ZuviSettingsViewController::Services services;
        services.defaults = m_services.defaults;
        services.center = m_services.center;
        services.scheduler = m_services.scheduler;
        services.log = m_services.log;
        services.imageLoader = m_services.imageLoader;
        services.remoteConfig = m_services.remoteConfig;
        services.presenter = m_services.presenter;
        return new ZuviSettingsViewController(services);
    });
    navigationControllerWithRootViewController(profile, QStringLiteral("我的"), 3);
    m_root->setTintColor(Qt::black);
    m_root->setShouldSelectHandler([this](ZuviNavigationController *controller) {
        return tabBarControllerShouldSelectViewController(controller);
    });
    return m_root;
}

ZuviNavigationController *
ZuviAppDelegate::navigationControllerWithRootViewController(ZuviViewController *root,
                                                            const QString &tabTitle, int tabIndex)
{
    auto *navigation = new ZuviNavigationController(root, m_services.scheduler);
    ZuviTabBarController::TabItem item;
    item.title = tabTitle;
    item.image = tabBarImageNamed(tabImageNameForIndex(tabIndex, false));
    item.selectedImage = tabBarImageNamed(tabImageNameForIndex(tabIndex, true));
    item.tag = tabIndex;
    if (m_root)
        m_root->addTab(navigation, item);
    return navigation;
}

QString ZuviAppDelegate::tabImageNameForIndex(int index, bool selected)
{
    if (index < 0 || index > 3)
        return QString();
    const QString name = QString::fromLatin1(kTabImageNames[index]);
    return selected ? name + QStringLiteral("_selected") : name;
}

QUrl ZuviAppDelegate::tabBarImageNamed(const QString &name)
{
    // Tab icons are drawn in their own colours, never tinted by the bar.
    return ZuviImageAssets::urlForImageNamed(name);
}

bool ZuviAppDelegate::tabBarControllerShouldSelectViewController(
    ZuviNavigationController *controller)
{
    if (m_root && controller && controller == m_root->selectedViewController())
        notifyTabReselectedForViewController(controller);
    return true;
}

void ZuviAppDelegate::notifyTabReselectedForViewController(QObject *controller)
{
    QObject *screen = controller;
    if (auto *navigation = qobject_cast<ZuviNavigationController *>(controller)) {
        if (navigation->depth() == 0)
            return;
        // A pushed screen is showing: the tap only belongs to the tab bar.
        if (navigation->rootViewController() != navigation->topViewController())
            return;
        screen = navigation->rootViewController();
    }
    if (!screen)
        return;
    const QMetaObject *meta = screen->metaObject();
    const int index = meta->indexOfMethod(kReselectOperation);
    if (index >= 0)
        meta->method(index).invoke(screen, Qt::DirectConnection);
}

bool ZuviAppDelegate::developerModeEnabled() const
{
    return m_services.defaults && m_services.defaults->boolForKey(kDeveloperModeKey);
}

QString ZuviAppDelegate::remoteConfigSourceURLString() const
{
    const bool developer = developerModeEnabled();
    const QString key = developer ? QStringLiteral("ZuviRemoteConfigDeveloperSourceURL")
                                  : QStringLiteral("ZuviRemoteConfigSourceURL");
    const QVariant value = m_services.infoDictionary.value(key);
    if (value.typeId() == QMetaType::QString) {
        const QString trimmed = value.toString().trimmed();
        if (!trimmed.isEmpty())
            return trimmed;
    }
    // The deployment's own configuration documents.
    return developer ? m_services.endpoints.remoteConfigDeveloperSource
                     : m_services.endpoints.remoteConfigSource;
}

QStringList ZuviAppDelegate::remoteConfigSourcesFromInfoDictionary() const
{
    const QString source = remoteConfigSourceURLString();
    return source.isEmpty() ? QStringList() : QStringList{source};
}

QString ZuviAppDelegate::remoteConfigCacheDirectoryPath() const
{
    QString base = m_services.cachesDirectory;
    if (base.isEmpty())
        base = QStandardPaths::writableLocation(QStandardPaths::CacheLocation);
    if (base.isEmpty())
        base = QDir::tempPath();
    // The two modes never share a cached document.
    return QDir(base).filePath(developerModeEnabled()
                                   ? QStringLiteral("ZuviRemoteConfigDeveloper")
                                   : QStringLiteral("ZuviRemoteConfigProduction"));
}

std::optional<double> ZuviAppDelegate::positiveInfoNumber(const QString &key) const
{
    const QVariant value = m_services.infoDictionary.value(key);
    if (!value.isValid())
        return std::nullopt;
    bool ok = false;
    const double number = value.toDouble(&ok);
    if (!ok || number <= 0)
        return std::nullopt;
    return number;
}

void ZuviAppDelegate::developerModeDidChange()
{
    startRemoteConfigNotifications();
}

void ZuviAppDelegate::prepareProcess()
{
#ifdef __GLIBC__
    // The allocator gives each thread an arena of its own, up to eight per
    // core, and memory freed in one arena serves no other. Playing a video
    // runs some thirty threads (streaming, decoding, network, pictures,
    // software rendering); two arenas keep about 5 MB less resident while
    // playing, at no measurable cost in CPU.
    mallopt(M_ARENA_MAX, 2);
    // Fixed thresholds. Left to itself the allocator raises its mmap
    // threshold each time a large block is freed, up to 32 MB, and from
    // then on serves large blocks (danmaku documents, decoded covers,
    // network buffers) from the arenas, where a short-lived burst at the
    // opening of a video stays resident for the rest of it. With the
    // thresholds fixed, large blocks are mapped and given back when freed.
    mallopt(M_MMAP_THRESHOLD, 128 * 1024);
    mallopt(M_TRIM_THRESHOLD, 128 * 1024);
#endif
    // The window is drawn on the main thread, not on a render thread of its
    // own. A text item loads its fonts again on the thread that draws it, so
    // a render thread holds a second copy of every font face in use, with
    // its glyph caches (the Chinese fallback face alone keeps some 3 MB of
    // its file resident per copy). Our frames are light: the picture comes
    // decoded, and the rest is lists, labels and the flying danmaku. While a
    // video plays, the single thread keeps about 7 MB less resident and takes
    // less CPU on a two-core machine with software rendering, where the
    // render thread competed with decoding. Whoever sets the variable keeps
    // their own choice.
    if (!qEnvironmentVariableIsSet("QSG_RENDER_LOOP"))
        qputenv("QSG_RENDER_LOOP", "basic");
}

ZuviAppDelegate::Services ZuviAppDelegate::sharedServices()
{
    Services services;
    services.client = ZuviAPIClient::sharedClient();
    services.defaults = ZuviDefaults::standardDefaults();
    services.center = ZuviNotificationCenter::defaultCenter();
    services.scheduler = ZuviScheduler::sharedScheduler();
    services.log = ZuviDebugLog::sharedLog();
    services.imageLoader = ZuviImageLoader::sharedLoader();
    services.remoteConfig = ZuviRemoteConfig::sharedConfig();
    services.presenter = ZuviRemoteNotificationPresenter::sharedPresenter();
    services.endpoints = ZuviEndpoints::shared();
    services.infoDictionary = bundledInfoDictionary();
    services.shortcuts = ZuviKeyboardShortcuts::sharedShortcuts();
    services.nowPlaying = ZuviNowPlaying::sharedNowPlaying();
    return services;
}

QVariantMap ZuviAppDelegate::bundledInfoDictionary()
{
    QFile file(QStringLiteral(":/zuvi/Info.json"));
    if (!file.open(QIODevice::ReadOnly)) {
        qCWarning(lcApp) << "the bundled Info.json is missing";
        return {};
    }
    QVariantMap info = QJsonDocument::fromJson(file.readAll()).object().toVariantMap();
    const QString overridePath = qEnvironmentVariable("OLDZUVI_INFO");
    if (!overridePath.isEmpty()) {
        QFile overrides(overridePath);
        if (!overrides.open(QIODevice::ReadOnly))
            qCWarning(lcApp) << "cannot read the information keys in" << overridePath;
        const QVariantMap extra =
            QJsonDocument::fromJson(overrides.readAll()).object().toVariantMap();
        for (auto it = extra.cbegin(); it != extra.cend(); ++it)
            info.insert(it.key(), it.value());
    }
    return info;
}

bool ZuviAppDelegate::createWindow(QQmlEngine *engine)
{
    // Every picture of the pages goes through the image loader.
    if (m_services.imageLoader &&
        !engine->imageProvider(QString::fromLatin1(ZuviImageProvider::kProviderId)))
        engine->addImageProvider(QString::fromLatin1(ZuviImageProvider::kProviderId),
                                 new ZuviImageProvider(m_services.imageLoader));
    // Text drawn from the font's own glyph bitmaps: crisp at the small sizes
    // of a list, and far cheaper per frame than distance-field text under a
    // software renderer, where every text pixel of the window is shaded again
    // with each video frame.
    QQuickWindow::setTextRenderType(QQuickWindow::NativeTextRendering);
    QQmlComponent component(engine,
                            ZuviViewController::modulePageUrl(QStringLiteral("AppWindow.qml")));
    if (!component.isReady()) {
        qCCritical(lcApp).noquote() << component.errorString();
        return false;
    }
    // The window opens where the user left it, else at the idiom's size.
    QList<QRect> screens;
    for (const QScreen *screen : QGuiApplication::screens())
        screens.append(screen->availableGeometry());
    const QString geometryKey = ZuviWindowGeometry::defaultsKey();
    const ZuviWindowGeometry::Placement placement = ZuviWindowGeometry::placement(
        m_services.defaults ? m_services.defaults->stringForKey(geometryKey) : QString(),
        ZuviIdiom::defaultWindowSize(ZuviIdiom::current()), screens);
    QVariantMap properties{{"appDelegate", QVariant::fromValue(this)},
                           {"width", placement.geometry.width()},
                           {"height", placement.geometry.height()}};
    if (placement.hasPosition) {
        properties.insert("x", placement.geometry.x());
        properties.insert("y", placement.geometry.y());
    }
    QObject *window = component.createWithInitialProperties(properties);
    if (!window) {
        qCCritical(lcApp).noquote() << component.errorString();
        return false;
    }
    m_window = window;
    if (auto *shown = qobject_cast<QWindow *>(window); shown && m_services.defaults) {
        if (placement.maximized)
            shown->showMaximized();
        new ZuviWindowGeometry(shown, m_services.defaults, geometryKey, this);
    }
    startKeyboardAndDesktop();
    if (m_services.presenter) {
        // Messages cover the whole window, above every tab and screen.
        QPointer<QQuickWindow> quickWindow = qobject_cast<QQuickWindow *>(window);
        m_services.presenter->setContainerProvider([quickWindow]() -> QQuickItem * {
            return quickWindow ? quickWindow->contentItem() : nullptr;
        });
    }
    return true;
}

void ZuviAppDelegate::startKeyboardAndDesktop()
{
    auto *window = qobject_cast<QQuickWindow *>(m_window);
    if (m_services.shortcuts && window) {
        m_services.shortcuts->attachToWindow(window);
        new ZuviGlobalShortcuts(m_services.shortcuts, m_root, this);
    }
    if (!m_services.nowPlaying)
        return;
    const QDBusConnection bus = QDBusConnection::sessionBus();
    auto *mpris = new ZuviMprisService(m_services.nowPlaying, bus, this);
    connect(mpris, &ZuviMprisService::raiseRequested, this, [this] {
        if (auto *shown = qobject_cast<QWindow *>(m_window)) {
            shown->show();
            shown->raise();
            shown->requestActivate();
        }
    });
    connect(mpris, &ZuviMprisService::quitRequested, qApp, &QCoreApplication::quit,
            Qt::QueuedConnection);
    auto *inhibitor = new ZuviScreenSaverInhibitor(bus, this);
    inhibitor->followNowPlaying(m_services.nowPlaying);
}

void ZuviAppDelegate::startRemoteConfigNotifications()
{
    const QStringList sources = remoteConfigSourcesFromInfoDictionary();
    if (sources.isEmpty() || !m_services.remoteConfig)
        return;
    // Starting again replaces the running generation, so a developer-mode
    // change switches source and cache folder in one step.
    if (m_services.presenter)
        m_services.presenter->startWithOptions(remoteConfigOptions());
    else
        m_services.remoteConfig->startWithOptions(remoteConfigOptions());
}

ZuviRemoteConfigOptions ZuviAppDelegate::remoteConfigOptions() const
{
    ZuviRemoteConfigOptions options =
        ZuviRemoteConfigOptions::optionsWithSources(remoteConfigSourcesFromInfoDictionary());
    options.cacheDirectoryPath = remoteConfigCacheDirectoryPath();
    if (const auto interval = positiveInfoNumber(QStringLiteral("ZuviRemoteConfigPollInterval")))
        options.pollInterval = *interval;
    if (const auto timeout = positiveInfoNumber(QStringLiteral("ZuviRemoteConfigRequestTimeout")))
        options.requestTimeout = *timeout;
    return options;
}

void ZuviAppDelegate::applicationDidReceiveMemoryWarning()
{
    if (m_services.imageLoader)
        m_services.imageLoader->didReceiveMemoryWarning();
}
