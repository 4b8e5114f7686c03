#include "zuvicoversource.h"

ZuviCoverSource::ZuviCoverSource(QObject *parent) : QObject(parent) {}

QUrl ZuviCoverSource::sourceForURL(const QString &urlString)
{
    if (urlString.isEmpty())
        return {};
    return QUrl(urlString);
}
