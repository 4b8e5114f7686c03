#include "zuvicoversource.h"

#include "images/zuviimageprovider.h"

ZuviCoverSource::ZuviCoverSource(QObject *parent) : QObject(parent) {}

namespace {
// An empty address gives an empty source, whatever the quality.
QUrl sourceForQuality(const QString &quality, const QString &urlString)
{
    if (urlString.isEmpty())
        return {};
    return QUrl(ZuviImageProvider::sourceURL(quality, urlString));
}
} // namespace

QUrl ZuviCoverSource::sourceForURL(const QString &urlString)
{
    // The card's cover is the loader's normal load: thumbnail address,
    // memory cache and the full-size fallback.
    return sourceForQuality(QStringLiteral("normal"), urlString);
}

QUrl ZuviCoverSource::lowQualitySourceForURL(const QString &urlString)
{
    return sourceForQuality(QStringLiteral("low"), urlString);
}
