#pragma once

#include <QObject>
#include <QPointer>

class ZuviKeyboardShortcuts;
class ZuviNavigationController;
class ZuviTabBarController;

// The keys that mean the same on every screen: back one screen, refresh the
// list on show, and go to the search field. They act on the selected tab's
// navigation stack.
class ZuviGlobalShortcuts : public QObject
{
    Q_OBJECT

public:
    // Binds the keys for as long as this object lives.
    ZuviGlobalShortcuts(ZuviKeyboardShortcuts *shortcuts, ZuviTabBarController *tabs,
                        QObject *parent = nullptr);

    // Pops the top screen; nothing at the root of a stack.
    bool goBack();
    // Refreshes the list screen on top, when it is one and may refresh now.
    bool refreshCurrentList();
    // Puts the focus into a search field: the one on show if there is one,
    // else the one at the root of this tab, else the recommended tab's.
    bool focusSearch();

private:
    ZuviNavigationController *selectedStack() const;
    static bool focusSearchIn(ZuviNavigationController *stack);

    QPointer<ZuviTabBarController> m_tabs;
};
