// The following tab's shots: the feed on its first page (or, with
// --argument 2, on the "动态" segment once it has rows), signed in
// beforehand by the script through the demo's QR confirmation.
#include "app/zuviappdelegate.h"
#include "app/zuvinavigationcontroller.h"
#include "app/zuvitabbarcontroller.h"
#include "browse/zuvifollowingviewcontroller.h"
#include "zuviscreenshotscenario.h"

namespace {
constexpr int kFollowingTab = 2;
constexpr int kTimeoutMs = 20000;

ZuviFollowingViewController *followingScreen(const ZuviScreenshotScenario::Context &context)
{
    ZuviTabBarController *tabs = context.delegate->rootTabBarController();
    return qobject_cast<ZuviFollowingViewController *>(
        tabs->viewControllerAt(kFollowingTab)->rootViewController());
}

bool settled(ZuviFollowingViewController *screen)
{
    return !screen->isLoading() && !screen->isLoadingMore() && !screen->rows().isEmpty();
}

const ZuviScreenshotScenario::Registrar
    following(QStringLiteral("following"), [](const ZuviScreenshotScenario::Context &context) {
        ZuviFollowingViewController *screen = followingScreen(context);
        context.delegate->rootTabBarController()->selectTab(kFollowingTab);
        const int segment = context.argument.toInt();
        context.whenReady([screen] { return settled(screen); },
                          [=] {
                              if (segment == 0) {
                                  context.save();
                                  return;
                              }
                              screen->segmentChanged(segment);
                              context.whenReady([screen] { return settled(screen); }, context.save,
                                                kTimeoutMs);
                          },
                          kTimeoutMs);
    });
} // namespace
