#pragma once

#include "platform/zuviendpoints.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QVariantMap>
#include <QtQml/qqmlregistration.h>

#include <optional>
Q_MOC_INCLUDE("app/zuvitabbarcontroller.h")
Q_MOC_INCLUDE("app/zuvikeyboardshortcuts.h")

class QQmlEngine;
class ZuviAPIClient;
class ZuviDebugLog;
class ZuviDefaults;
class ZuviImageLoader;
class ZuviKeyboardShortcuts;
class ZuviNowPlaying;
class ZuviRemoteConfig;
class ZuviRemoteNotificationPresenter;
struct ZuviRemoteConfigOptions;
class ZuviNavigationController;
class ZuviNotificationCenter;
class ZuviScheduler;
class ZuviTabBarController;
class ZuviViewController;

// Starts the application: applies the bar colours, builds the four-tab root
// ("推荐", "热门", "关注", "我的", each in its own navigation stack), shows the
// window, and starts the remote configuration with the sources named by the
// bundled information keys, again whenever developer mode changes.
class ZuviAppDelegate : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The application has one delegate, made at start-up")
    Q_PROPERTY(ZuviTabBarController *rootTabBarController READ rootTabBarController CONSTANT)
    Q_PROPERTY(ZuviKeyboardShortcuts *keyboardShortcuts READ keyboardShortcuts CONSTANT)

public:
    struct Services {
        ZuviAPIClient *client = nullptr;
        ZuviDefaults *defaults = nullptr;
        ZuviNotificationCenter *center = nullptr;
        ZuviScheduler *scheduler = nullptr;
        ZuviDebugLog *log = nullptr;
        ZuviImageLoader *imageLoader = nullptr;
        // Started with the bundled sources; nothing is started without one.
        ZuviRemoteConfig *remoteConfig = nullptr;
        // Shows the configuration's messages over the window and starts the
        // service; without one the service is started directly.
        ZuviRemoteNotificationPresenter *presenter = nullptr;
        ZuviEndpoints endpoints;
        QVariantMap infoDictionary;
        // Where per-user caches go; empty means the platform's caches folder.
        QString cachesDirectory;
        // The window's keyboard layer; without one there are no shortcuts.
        ZuviKeyboardShortcuts *shortcuts = nullptr;
        // What the desktop's media keys and screen saver follow; without
        // one the application stays off the session bus.
        ZuviNowPlaying *nowPlaying = nullptr;
    };

    static const char *const kDeveloperModeDidChangeNotification;
    static const char *const kDeveloperModeKey;
    static const char *const kReselectOperation;

    explicit ZuviAppDelegate(const Services &services, QObject *parent = nullptr);
    ~ZuviAppDelegate() override;

    // Start-up in order. Without an engine no window is made (tests).
    bool applicationDidFinishLaunching(QQmlEngine *engine);

    void applyIOS6PrototypeAppearance();
    ZuviTabBarController *buildRootTabBarController();
    ZuviNavigationController *navigationControllerWithRootViewController(ZuviViewController *root,
                                                                         const QString &tabTitle,
                                                                         int tabIndex);
    // "tab_recommend" ... "tab_profile", with "_selected" for the selected
    // look; empty outside 0 to 3.
    static QString tabImageNameForIndex(int index, bool selected);
    static QUrl tabBarImageNamed(const QString &name);

    // Always true; tapping the selected tab again tells its screen first.
    bool tabBarControllerShouldSelectViewController(ZuviNavigationController *controller);
    // Calls "tabBarItemReselected" on the screen of the tab, but only when
    // that screen is at the root of its stack.
    void notifyTabReselectedForViewController(QObject *controller);

    void startRemoteConfigNotifications();
    // The options the configuration service is started with.
    ZuviRemoteConfigOptions remoteConfigOptions() const;
    QStringList remoteConfigSourcesFromInfoDictionary() const;
    QString remoteConfigSourceURLString() const;
    QString remoteConfigCacheDirectoryPath() const;
    // A positive number under that information key, if there is one.
    std::optional<double> positiveInfoNumber(const QString &key) const;
    void developerModeDidChange();
    // Pictures are the only thing worth giving back.
    void applicationDidReceiveMemoryWarning();

    // Settings of the process itself, made first thing in main(), before
    // any thread starts.
    static void prepareProcess();
    // The information keys bundled with the application (Info.json), with
    // the keys of the JSON file named by $OLDZUVI_INFO laid over them (the
    // demo polls its configuration far more often than a deployment).
    static QVariantMap bundledInfoDictionary();
    // The process-wide services, as the running application uses them.
    static Services sharedServices();

    ZuviTabBarController *rootTabBarController() const { return m_root; }
    ZuviKeyboardShortcuts *keyboardShortcuts() const { return m_services.shortcuts; }
    QObject *window() const { return m_window; }

private:
    bool developerModeEnabled() const;
    bool createWindow(QQmlEngine *engine);
    // The window's keys, and the media keys and screen saver on the desktop.
    void startKeyboardAndDesktop();

    Services m_services;
    ZuviTabBarController *m_root = nullptr;
    QPointer<QObject> m_window;
};
