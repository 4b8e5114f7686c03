#include "zuvivideoscreenopener.h"

#include "app/zuvinavigationcontroller.h"
#include "app/zuviviewcontroller.h"

namespace {
ZuviVideoScreenOpener::Factory &factoryStorage()
{
    static ZuviVideoScreenOpener::Factory factory;
    return factory;
}
} // namespace

void ZuviVideoScreenOpener::setFactory(Factory factory)
{
    factoryStorage() = std::move(factory);
}

bool ZuviVideoScreenOpener::hasFactory()
{
    return static_cast<bool>(factoryStorage());
}

bool ZuviVideoScreenOpener::open(ZuviNavigationController *navigation, const ZuviVideoItem &item,
                                 const QString &sourceTitle)
{
    if (!navigation || !factoryStorage())
        return false;
    ZuviViewController *screen = factoryStorage()(item, sourceTitle);
    if (!screen)
        return false;
    screen->setHidesBottomBarWhenPushed(true);
    navigation->pushViewController(screen, true);
    return true;
}
