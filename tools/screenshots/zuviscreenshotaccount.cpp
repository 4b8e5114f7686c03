// Screenshot scenarios of the account screens: the QR login, the profile
// (signed in or not, as the shot's settings say) and the history list.
#include "account/zuviaccountvideolistviewcontroller.h"
#include "account/zuviloginviewcontroller.h"
#include "account/zuviprofileviewcontroller.h"
#include "app/zuviappdelegate.h"
#include "app/zuvinavigationcontroller.h"
#include "app/zuvitabbarcontroller.h"
#include "zuviscreenshotscenario.h"

namespace {
constexpr int kTimeoutMs = 20000;

// Opens the "我的" tab and hands its screen on once the login check is done.
void withProfile(const ZuviScreenshotScenario::Context &context,
                 std::function<void(ZuviProfileViewController *)> then)
{
    ZuviTabBarController *tabs = context.delegate->rootTabBarController();
    tabs->selectTab(3);
    auto *profile =
        qobject_cast<ZuviProfileViewController *>(tabs->viewControllerAt(3)->rootViewController());
    context.whenReady([profile] { return profile && !profile->isLoadingProfile(); },
                      [profile, then] { then(profile); }, kTimeoutMs);
}

const ZuviScreenshotScenario::Registrar
    profileShot(QStringLiteral("account-profile"),
                [](const ZuviScreenshotScenario::Context &context) {
                    withProfile(context, [context](ZuviProfileViewController *profile) {
                        // Signed in on a tablet, the shot waits for the recent panel too.
                        context.whenReady(
                            [profile] {
                                return !profile->isLoggedIn() || !profile->showsRecentPanel() ||
                                       !profile->isLoadingRecent();
                            },
                            context.save, kTimeoutMs);
                    });
                });

const ZuviScreenshotScenario::Registrar
    loginShot(QStringLiteral("account-login"), [](const ZuviScreenshotScenario::Context &context) {
        withProfile(context, [context](ZuviProfileViewController *profile) {
            profile->loginButtonTapped();
            auto *login = qobject_cast<ZuviLoginViewController *>(
                profile->navigationController()->topViewController());
            context.whenReady([login] { return login && login->isPolling(); }, context.save,
                              kTimeoutMs);
        });
    });

const ZuviScreenshotScenario::Registrar
    historyShot(QStringLiteral("account-history"),
                [](const ZuviScreenshotScenario::Context &context) {
                    withProfile(context, [context](ZuviProfileViewController *profile) {
                        profile->openEntryAtIndex(0);
                        auto *list = qobject_cast<ZuviAccountVideoListViewController *>(
                            profile->navigationController()->topViewController());
                        context.whenReady([list] { return list && !list->isLoading(); },
                                          context.save, kTimeoutMs);
                    });
                });
} // namespace
