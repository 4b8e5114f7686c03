#pragma once

class ZuviViewController;

// What a list screen knows about its scroll view at one moment.
struct ZuviScrollMetrics {
    double boundsHeight = 0;  // visible height
    double contentHeight = 0; // height of everything in the list
    double offsetY = 0;       // vertical content offset
    double topInset = 0;      // top content inset
};

// Hides the navigation bar on phones while the user scrolls a list down and
// shows it again when they scroll up or reach the top. It keeps no state:
// each list screen owns its last offset and hidden flag and passes them in.
class ZuviPhoneChromeController
{
public:
    // Scrolling less than this between two callbacks changes nothing.
    static constexpr double kScrollDelta = 8;
    // The bar only hides once the list is this far from the top...
    static constexpr double kHideOffset = 24;
    // ...and always shows this close to it.
    static constexpr double kTopOffset = 4;
    // Content no taller than the view plus this never hides the bar.
    static constexpr double kMinimumOverflow = 8;

    static bool isPhone();

    static void updateChromeForScrollView(const ZuviScrollMetrics &scrollView,
                                          ZuviViewController *viewController,
                                          double *lastContentOffsetY, bool *chromeHidden,
                                          bool hidesTabBar);
    static void setChromeHidden(bool hidden, ZuviViewController *viewController, bool hidesTabBar,
                                bool animated);
};
