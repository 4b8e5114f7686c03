#include "zuvivideogridlayout.h"

#include "platform/zuviidiom.h"

#include <QtMath>

#include <algorithm>

int ZuviVideoGridLayout::columnCountForWidth(double width)
{
    if (!ZuviIdiom::isPad())
        return 1;
    return width >= kWideWidth ? 4 : 3;
}

double ZuviVideoGridLayout::compactListHeightForWidth(double itemWidth)
{
    return itemWidth >= 340 ? 96 : 92;
}

ZuviVideoGridLayout ZuviVideoGridLayout::gridLayoutForWidth(double width)
{
    ZuviVideoGridLayout layout;
    layout.columns = columnCountForWidth(width);
    if (ZuviIdiom::isPad()) {
        layout.compact = false;
        layout.insetTop = 4, layout.insetLeft = 12, layout.insetBottom = 24, layout.insetRight = 12;
        layout.lineSpacing = layout.itemSpacing = 12;
        layout.headerHeight = 62;
    } else {
        layout.insetTop = 4, layout.insetLeft = 4, layout.insetBottom = 16, layout.insetRight = 6;
        layout.headerHeight = 54;
    }
    layout.fitItemsToWidth(width);
    return layout;
}

ZuviVideoGridLayout ZuviVideoGridLayout::hotLayoutForWidth(double width)
{
    ZuviVideoGridLayout layout = gridLayoutForWidth(width);
    layout.headerHeight = 0;
    if (ZuviIdiom::isPad())
        layout.insetTop = 10;
    else
        layout.insetTop = 10, layout.insetLeft = 10, layout.insetBottom = 16,
        layout.insetRight = 10;
    layout.fitItemsToWidth(width);
    return layout;
}

ZuviVideoGridLayout ZuviVideoGridLayout::searchLayoutForWidth(double width)
{
    ZuviVideoGridLayout layout;
    layout.columns = columnCountForWidth(width);
    if (ZuviIdiom::isPad()) {
        layout.compact = false;
        layout.insetTop = 18, layout.insetLeft = 18, layout.insetBottom = 24,
        layout.insetRight = 18;
        layout.lineSpacing = layout.itemSpacing = 18;
    } else {
        layout.insetTop = 12, layout.insetLeft = 10, layout.insetBottom = 16,
        layout.insetRight = 10;
        layout.lineSpacing = 14;
        layout.itemSpacing = 10;
    }
    layout.fitItemsToWidth(width);
    return layout;
}

void ZuviVideoGridLayout::fitItemsToWidth(double width)
{
    if (compact) {
        itemWidth = std::max(0.0, width - insetLeft - insetRight);
        itemHeight = compactListHeightForWidth(itemWidth);
        return;
    }
    const double available = width - insetLeft - insetRight - itemSpacing * (columns - 1);
    itemWidth = std::max(0.0, std::floor(available / columns));
    // A 16:9 cover inside 4-point margins, then the title and the two
    // small labels below it.
    itemHeight = std::floor(std::max(1.0, itemWidth - 8) * 9 / 16) + 76;
}

double ZuviVideoGridLayout::searchBarWidth(double shorterScreenSide)
{
    const double cap = ZuviIdiom::isPad() ? 300 : 190;
    return std::floor(std::max(160.0, std::min(shorterScreenSide - 132, cap)));
}

QVariantMap ZuviVideoGridLayout::toVariantMap() const
{
    return {
        {"columns", columns},           {"insetTop", insetTop},     {"insetLeft", insetLeft},
        {"insetBottom", insetBottom},   {"insetRight", insetRight}, {"lineSpacing", lineSpacing},
        {"itemSpacing", itemSpacing},   {"itemWidth", itemWidth},   {"itemHeight", itemHeight},
        {"headerHeight", headerHeight}, {"compact", compact},
    };
}
