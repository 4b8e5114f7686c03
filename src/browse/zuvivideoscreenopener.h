#pragma once

#include "model/zuvivideoitem.h"

#include <QString>

#include <functional>

class ZuviNavigationController;
class ZuviViewController;

// Opens the video screen for a list entry. The video screen is built by its
// own subsystem, which registers how to make one; the list screens only ask
// for it here, so they do not depend on the player.
class ZuviVideoScreenOpener
{
public:
    using Factory =
        std::function<ZuviViewController *(const ZuviVideoItem &item, const QString &sourceTitle)>;

    static void setFactory(Factory factory);
    static bool hasFactory();

    // Pushes the video screen with the bottom bar hidden; false when no
    // video screen is available in this build or there is no stack.
    static bool open(ZuviNavigationController *navigation, const ZuviVideoItem &item,
                     const QString &sourceTitle);
};
