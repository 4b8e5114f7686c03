#include "zuviphonechromecontroller.h"

#include "platform/zuviidiom.h"
#include "zuvinavigationcontroller.h"
#include "zuvitabbarcontroller.h"
#include "zuviviewcontroller.h"

bool ZuviPhoneChromeController::isPhone()
{
    return !ZuviIdiom::isPad();
}

void ZuviPhoneChromeController::updateChromeForScrollView(const ZuviScrollMetrics &scrollView,
                                                          ZuviViewController *viewController,
                                                          double *lastContentOffsetY,
                                                          bool *chromeHidden, bool hidesTabBar)
{
    if (!isPhone() || !viewController || !lastContentOffsetY || !chromeHidden)
        return;
    const double visible = scrollView.boundsHeight;
    if (visible <= 0 || scrollView.contentHeight <= visible + kMinimumOverflow) {
        // A list that hardly scrolls keeps its bars.
        *chromeHidden = false;
        setChromeHidden(false, viewController, hidesTabBar, true);
        *lastContentOffsetY = scrollView.offsetY + scrollView.topInset;
        return;
    }
    const double y = scrollView.offsetY + scrollView.topInset;
    const double delta = y - *lastContentOffsetY;
    *lastContentOffsetY = y;
    if (y <= kTopOffset) {
        *chromeHidden = false;
        setChromeHidden(false, viewController, hidesTabBar, true);
    } else if (delta > kScrollDelta && y > kHideOffset) {
        if (*chromeHidden)
            return;
        *chromeHidden = true;
        setChromeHidden(true, viewController, hidesTabBar, true);
    } else if (delta < -kScrollDelta && *chromeHidden) {
        *chromeHidden = false;
        setChromeHidden(false, viewController, hidesTabBar, true);
    }
}

void ZuviPhoneChromeController::setChromeHidden(bool hidden, ZuviViewController *viewController,
                                                bool hidesTabBar, bool animated)
{
    Q_UNUSED(hidesTabBar) // the tab bar stays up whatever the screen asks
    if (!isPhone() || !viewController)
        return;
    if (ZuviTabBarController *tabs = viewController->tabBarController())
        tabs->showTabBarFully();
    ZuviNavigationController *navigation = viewController->navigationController();
    if (navigation && navigation->isNavigationBarHidden() != hidden)
        navigation->setNavigationBarHidden(hidden, animated);
}
