// The ranking tab's shots: a region's list in a chosen order, the login card
// of a signed-out user, and the region settings screen.
#include "app/zuviappdelegate.h"
#include "app/zuvinavigationcontroller.h"
#include "app/zuvitabbarcontroller.h"
#include "browse/zuvihotregionsettingsviewcontroller.h"
#include "browse/zuvihotviewcontroller.h"
#include "platform/zuvidefaults.h"
#include "zuviscreenshotscenario.h"

namespace {
constexpr int kHotTab = 1;
constexpr int kTimeoutMs = 20000;

ZuviHotViewController *hotScreen(const ZuviScreenshotScenario::Context &context)
{
    ZuviNavigationController *stack =
        context.delegate->rootTabBarController()->viewControllerAt(kHotTab);
    return qobject_cast<ZuviHotViewController *>(stack->rootViewController());
}

bool showsList(ZuviHotViewController *hot)
{
    return !hot->isCheckingLoginState() && hot->isRefreshEnabled() && !hot->videos().isEmpty();
}

// --argument REGION[,SORT]: the region key to show (signed in) and the sort
// order the settings chose (0 service order, 1 plays, 2 comments).
const ZuviScreenshotScenario::Registrar
    hot(QStringLiteral("hot"), [](const ZuviScreenshotScenario::Context &context) {
        const QStringList parts = context.argument.split(',');
        const QString region = parts.value(0, QStringLiteral("popular"));
        ZuviDefaults::standardDefaults()->setInteger(
            parts.value(1).toInt(),
            QString::fromLatin1(ZuviHotViewController::kPreferredHotSortModeKey));
        ZuviHotViewController *screen = hotScreen(context);
        context.delegate->rootTabBarController()->selectTab(kHotTab);
        context.whenReady([screen] { return showsList(screen); },
                          [context, screen, region] {
                              screen->regionControlTapped(screen->indexForRegionKey(region));
                              context.whenReady(
                                  [screen, region] {
                                      return screen->selectedRegionCacheKey() == region &&
                                             showsList(screen);
                                  },
                                  context.save, kTimeoutMs);
                          },
                          kTimeoutMs);
    });

const ZuviScreenshotScenario::Registrar
    loginRequired(QStringLiteral("hot-login-required"),
                  [](const ZuviScreenshotScenario::Context &context) {
                      ZuviHotViewController *screen = hotScreen(context);
                      context.delegate->rootTabBarController()->selectTab(kHotTab);
                      context.whenReady([screen] { return screen->isShowingLoginRequiredState(); },
                                        context.save, kTimeoutMs);
                  });

// The settings screen as the settings tab pushes it, with some regions hidden
// so both sections show.
const ZuviScreenshotScenario::Registrar
    regionSettings(QStringLiteral("hot-region-settings"),
                   [](const ZuviScreenshotScenario::Context &context) {
                       ZuviDefaults *defaults = ZuviDefaults::standardDefaults();
                       ZuviHotViewController::setVisibleHotRegionKeys(
                           {"popular", "1005", "1008", "1003", "all", "1010", "1012"}, defaults);
                       ZuviTabBarController *tabs = context.delegate->rootTabBarController();
                       tabs->selectTab(3);
                       auto *settings = new ZuviHotRegionSettingsViewController(defaults);
                       settings->setHidesBottomBarWhenPushed(true);
                       tabs->viewControllerAt(3)->pushViewController(settings, false);
                       context.whenReady([] { return true; }, context.save, kTimeoutMs);
                   });
} // namespace
