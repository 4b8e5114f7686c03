#include "zuviglobalshortcuts.h"

#include "zuvikeyboardshortcuts.h"
#include "zuvinavigationcontroller.h"
#include "zuvitabbarcontroller.h"
#include "zuviviewcontroller.h"

#include <QMetaMethod>

namespace {
// The list screens offer their refresh by this name (the bar's ↻ button).
const char kRefreshOperation[] = "refreshButtonTapped()";
} // namespace

ZuviGlobalShortcuts::ZuviGlobalShortcuts(ZuviKeyboardShortcuts *shortcuts,
                                         ZuviTabBarController *tabs, QObject *parent)
    : QObject(parent), m_tabs(tabs)
{
    shortcuts->bind(ZuviKeyboardShortcuts::Back, this, [this] { goBack(); });
    shortcuts->bind(ZuviKeyboardShortcuts::Refresh, this, [this] { refreshCurrentList(); });
    shortcuts->bind(ZuviKeyboardShortcuts::Search, this, [this] { focusSearch(); });
}

ZuviNavigationController *ZuviGlobalShortcuts::selectedStack() const
{
    return m_tabs ? m_tabs->selectedViewController() : nullptr;
}

bool ZuviGlobalShortcuts::goBack()
{
    ZuviNavigationController *stack = selectedStack();
    if (!stack || stack->depth() < 2)
        return false;
    return stack->popViewController(true);
}

bool ZuviGlobalShortcuts::refreshCurrentList()
{
    ZuviNavigationController *stack = selectedStack();
    ZuviViewController *screen = stack ? stack->topViewController() : nullptr;
    if (!screen)
        return false;
    // A list that is loading (or signed out) has its refresh switched off,
    // as its button is.
    const QVariant enabled = screen->property("refreshEnabled");
    if (enabled.isValid() && !enabled.toBool())
        return false;
    const QMetaObject *meta = screen->metaObject();
    const int index = meta->indexOfMethod(kRefreshOperation);
    return index >= 0 && meta->method(index).invoke(screen, Qt::DirectConnection);
}

bool ZuviGlobalShortcuts::focusSearch()
{
    if (focusSearchIn(selectedStack()))
        return true;
    if (!m_tabs || m_tabs->count() == 0)
        return false;
    m_tabs->selectTab(0);
    return focusSearchIn(m_tabs->viewControllerAt(0));
}

bool ZuviGlobalShortcuts::focusSearchIn(ZuviNavigationController *stack)
{
    if (!stack || !stack->topViewController())
        return false;
    if (!stack->topViewController()->offersSearch()) {
        if (!stack->rootViewController() || !stack->rootViewController()->offersSearch())
            return false;
        while (stack->depth() > 1)
            stack->popViewController(false);
    }
    emit stack->topViewController()->searchFocusRequested();
    return true;
}
