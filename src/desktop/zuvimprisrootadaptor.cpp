#include "zuvimprisrootadaptor.h"

#include "zuvimprisservice.h"

#include <QGuiApplication>

ZuviMprisRootAdaptor::ZuviMprisRootAdaptor(ZuviMprisService *service)
    : QDBusAbstractAdaptor(service), m_service(service)
{
}

QString ZuviMprisRootAdaptor::identity() const
{
    return QStringLiteral("oldZuvi");
}

QString ZuviMprisRootAdaptor::desktopEntry() const
{
    // The installed .desktop file's name, so the desktop shows our icon.
    return QGuiApplication::desktopFileName();
}

void ZuviMprisRootAdaptor::Raise()
{
    emit m_service->raiseRequested();
}

void ZuviMprisRootAdaptor::Quit()
{
    emit m_service->quitRequested();
}
