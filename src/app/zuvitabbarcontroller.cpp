#include "zuvitabbarcontroller.h"

#include "zuvinavigationcontroller.h"
#include "zuviviewcontroller.h"

ZuviTabBarController::ZuviTabBarController(QObject *parent) : QObject(parent) {}

void ZuviTabBarController::addTab(ZuviNavigationController *controller, const TabItem &item)
{
    controller->setParent(this);
    controller->setTabBarController(this);
    m_tabs.append({controller, item});
}

void ZuviTabBarController::setShouldSelectHandler(ShouldSelectHandler handler)
{
    m_shouldSelect = std::move(handler);
}

ZuviNavigationController *ZuviTabBarController::selectedViewController() const
{
    return viewControllerAt(m_selectedIndex);
}

ZuviNavigationController *ZuviTabBarController::viewControllerAt(int index) const
{
    if (index < 0 || index >= m_tabs.size())
        return nullptr;
    return m_tabs.at(index).controller;
}

QString ZuviTabBarController::titleAt(int index) const
{
    return index >= 0 && index < m_tabs.size() ? m_tabs.at(index).item.title : QString();
}

QUrl ZuviTabBarController::imageAt(int index, bool selected) const
{
    if (index < 0 || index >= m_tabs.size())
        return {};
    const TabItem &item = m_tabs.at(index).item;
    return selected ? item.selectedImage : item.image;
}

int ZuviTabBarController::tagAt(int index) const
{
    return index >= 0 && index < m_tabs.size() ? m_tabs.at(index).item.tag : -1;
}

void ZuviTabBarController::selectTab(int index)
{
    ZuviNavigationController *controller = viewControllerAt(index);
    if (!controller)
        return;
    if (m_shouldSelect && !m_shouldSelect(controller))
        return;
    if (index == m_selectedIndex)
        return;
    // A tab's screen learns that it goes away or comes back, as it does when
    // a stack pushes or pops: a screen re-reads its settings on appearing.
    ZuviNavigationController *leaving = selectedViewController();
    if (leaving && leaving->topViewController())
        leaving->topViewController()->viewWillDisappear();
    m_selectedIndex = index;
    if (controller->topViewController())
        controller->topViewController()->viewWillAppear();
    emit selectedIndexChanged();
}

void ZuviTabBarController::setTintColor(const QColor &color)
{
    if (m_tintColor == color)
        return;
    m_tintColor = color;
    emit lookChanged();
}

void ZuviTabBarController::showTabBarFully()
{
    if (m_tabBarVisible && m_tabBarOpacity == 1.0 && m_tabBarTouchable)
        return;
    m_tabBarVisible = true;
    m_tabBarOpacity = 1.0;
    m_tabBarTouchable = true;
    emit lookChanged();
}
