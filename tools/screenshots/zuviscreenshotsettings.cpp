// Scenarios of the settings, the operator messages and the developer screens:
//   settings            the settings screen, pushed on the "我的" tab
//   settings-developer  the same with developer mode on
//   message-card        the configuration's message as a card over the grid
//   notification-history  settings → "历史通知" after the messages arrived
//   remote-config-debug   settings → "远程配置" with the fetched document
//   debug-log           settings → "调试日志" in developer mode
#include "app/zuviappdelegate.h"
#include "app/zuvinavigationcontroller.h"
#include "app/zuvisettingsviewcontroller.h"
#include "app/zuvitabbarcontroller.h"
#include "browse/zuvivideogridviewcontroller.h"
#include "config/zuviremoteconfig.h"
#include "notifications/zuviremotemessageoverlayview.h"
#include "notifications/zuviremotenotificationpresenter.h"
#include "platform/zuvidebuglog.h"
#include "platform/zuvidefaults.h"
#include "platform/zuviendpoints.h"
#include "zuviscreenshotscenario.h"

#include <QDir>
#include <QFileInfo>
#include <QTimer>

namespace {
using Context = ZuviScreenshotScenario::Context;

// Settings as the profile tab opens it, on the process-wide services: the
// shell here runs without the configuration service, and the settings'
// developer screens need it.
ZuviSettingsViewController *pushSettings(const Context &context)
{
    ZuviTabBarController *tabs = context.delegate->rootTabBarController();
    tabs->selectTab(3);
    auto *settings = new ZuviSettingsViewController(ZuviSettingsViewController::sharedServices());
    settings->setHidesBottomBarWhenPushed(true);
    tabs->viewControllerAt(3)->pushViewController(settings, false);
    return settings;
}

// Starts the messages as the application does, against the demo's
// production document, with a configuration cache beside this shot's
// settings store (so runs that share a store share the cache too).
ZuviRemoteNotificationPresenter *startMessages()
{
    auto *presenter = ZuviRemoteNotificationPresenter::sharedPresenter();
    const QFileInfo store(ZuviDefaults::standardDefaults()->filePath());
    ZuviRemoteConfigOptions options = ZuviRemoteConfigOptions::optionsWithSources(
        QStringList{ZuviEndpoints::shared().remoteConfigSource});
    options.cacheDirectoryPath = store.dir().filePath(store.completeBaseName() + "-config");
    presenter->startWithOptions(options);
    return presenter;
}

// Waits until a refresh of its own has ended (by then the newest document
// is in force and its message announced), dismisses whatever card that
// brought, then goes on.
void afterMessagesSettle(const Context &context, std::function<void()> then)
{
    auto *presenter = startMessages();
    presenter->remoteConfig()->refreshWithCompletion(
        [presenter, then](const std::optional<QJsonObject> &, const ZuviError &) {
            QTimer::singleShot(300, [presenter, then] {
                presenter->dismissCurrentOverlayView();
                QTimer::singleShot(400, then);
            });
        });
}

const ZuviScreenshotScenario::Registrar settingsShot(QStringLiteral("settings"),
                                                     [](const Context &context) {
                                                         pushSettings(context);
                                                         context.save();
                                                     });

const ZuviScreenshotScenario::Registrar
    settingsDeveloperShot(QStringLiteral("settings-developer"), [](const Context &context) {
        ZuviDefaults::standardDefaults()->setBool(true, ZuviAppDelegate::kDeveloperModeKey);
        pushSettings(context);
        context.save();
    });

const ZuviScreenshotScenario::Registrar
    messageCardShot(QStringLiteral("message-card"), [](const Context &context) {
        auto *presenter = startMessages();
        context.whenReady(
            [presenter] {
                const auto *card = presenter->currentOverlayView();
                return card && card->isImageLoaded();
            },
            context.save, 20000);
    });

const ZuviScreenshotScenario::Registrar
    historyShot(QStringLiteral("notification-history"), [](const Context &context) {
        afterMessagesSettle(context, [context] {
            pushSettings(context)->openNotificationHistory();
            context.save();
        });
    });

const ZuviScreenshotScenario::Registrar
    remoteConfigShot(QStringLiteral("remote-config-debug"), [](const Context &context) {
        afterMessagesSettle(context, [context] {
            pushSettings(context)->openRemoteConfigDebug();
            context.save();
        });
    });

const ZuviScreenshotScenario::Registrar
    debugLogShot(QStringLiteral("debug-log"), [](const Context &context) {
        auto *grid = qobject_cast<ZuviVideoGridViewController *>(
            context.delegate->rootTabBarController()->viewControllerAt(0)->rootViewController());
        ZuviDebugLog *log = ZuviDebugLog::sharedLog();
        // Developer mode on, then a refresh of the (failing) feed: the
        // service client writes the failure to the log.
        context.whenReady([grid] { return !grid->isLoading(); },
                          [context, grid, log] {
                              ZuviDefaults::standardDefaults()->setBool(
                                  true, ZuviAppDelegate::kDeveloperModeKey);
                              grid->refreshButtonTapped();
                              context.whenReady([log] { return log->lineCount() > 0; },
                                                [context] {
                                                    pushSettings(context)->openDebugLog();
                                                    context.save();
                                                },
                                                20000);
                          },
                          20000);
    });
} // namespace
