#include "zuviviewcontroller.h"

#include "zuvinavigationcontroller.h"

ZuviViewController::ZuviViewController(const QString &title, QObject *parent)
    : QObject(parent), m_title(title)
{
}

void ZuviViewController::setTitle(const QString &title)
{
    if (m_title == title)
        return;
    m_title = title;
    emit titleChanged();
}

ZuviNavigationController *ZuviViewController::navigationController() const
{
    return m_navigationController.data();
}

void ZuviViewController::setNavigationController(ZuviNavigationController *controller)
{
    if (m_navigationController == controller)
        return;
    m_navigationController = controller;
    emit navigationControllerChanged();
}

ZuviTabBarController *ZuviViewController::tabBarController() const
{
    return m_navigationController ? m_navigationController->tabBarController() : nullptr;
}

void ZuviViewController::loadViewIfNeeded()
{
    if (m_viewLoaded)
        return;
    m_viewLoaded = true;
    viewDidLoad();
}

QUrl ZuviViewController::modulePageUrl(const QString &fileName)
{
    // Every page of the module is compiled into its resources under the
    // module's name, whatever folder its source sits in.
    return QUrl(QStringLiteral("qrc:/Zuvi/") + fileName);
}
