#pragma once

#include <QVariantMap>

// The card grid's geometry for a given width: how many columns, how big a
// card is and how far apart. A tablet lays cards out in 3 or 4 columns; a
// phone (or a device that cannot tell) shows a one-column compact list.
struct ZuviVideoGridLayout {
    int columns = 1;
    double insetTop = 0, insetLeft = 0, insetBottom = 0, insetRight = 0;
    double lineSpacing = 0;
    double itemSpacing = 0;
    double itemWidth = 0;
    double itemHeight = 0;
    double headerHeight = 0;
    bool compact = true;

    // Tablets show 4 columns from this width on, 3 below it.
    static constexpr double kWideWidth = 900;

    static int columnCountForWidth(double width);
    static double compactListHeightForWidth(double itemWidth);
    // The layout of the recommended and popular grids.
    static ZuviVideoGridLayout gridLayoutForWidth(double width);
    // The ranking tab's grid: no header, a little more room at the top,
    // below its strip of region buttons.
    static ZuviVideoGridLayout hotLayoutForWidth(double width);
    // The search results grid spaces its cards more loosely.
    static ZuviVideoGridLayout searchLayoutForWidth(double width);
    // Width of the search bar in the navigation bar, from the shorter side
    // of the screen.
    static double searchBarWidth(double shorterScreenSide);

    QVariantMap toVariantMap() const;

private:
    void fitItemsToWidth(double width);
};
