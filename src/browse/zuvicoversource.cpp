#include "zuvicoversource.h"

#include "images/zuviimageprovider.h"

ZuviCoverSource::ZuviCoverSource(QObject *parent) : QObject(parent) {}

QUrl ZuviCoverSource::sourceForURL(const QString &urlString)
{
    if (urlString.isEmpty())
        return {};
    // The card's cover is the loader's normal load: thumbnail address,
    // memory cache and the full-size fallback.
    return QUrl(ZuviImageProvider::sourceURL(QStringLiteral("normal"), urlString));
}

QUrl ZuviCoverSource::lowQualitySourceForURL(const QString &urlString)
{
    if (urlString.isEmpty())
        return {};
    return QUrl(ZuviImageProvider::sourceURL(QStringLiteral("low"), urlString));
}
