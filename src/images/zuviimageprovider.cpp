#include "zuviimageprovider.h"

#include "zuviimageloader.h"
#include "zuviimageresponse.h"

#include <QUrl>
#include <QUrlQuery>

const char *const ZuviImageProvider::kProviderId = "zuvi";

namespace {
QString encoded(const QString &value)
{
    return QString::fromLatin1(QUrl::toPercentEncoding(value));
}

int intValue(const QUrlQuery &query, const QString &key, int defaultValue)
{
    bool ok = false;
    const int value = query.queryItemValue(key).toInt(&ok);
    return ok && value > 0 ? value : defaultValue;
}

// Splits "kind?query" as QML hands the part after "image://zuvi/".
void parseId(const QString &id, QString *kind, QUrlQuery *query)
{
    const int queryStart = id.indexOf('?');
    *kind = queryStart >= 0 ? id.left(queryStart) : id;
    *query = QUrlQuery(queryStart >= 0 ? id.mid(queryStart + 1) : QString());
}
} // namespace

ZuviImageProvider::ZuviImageProvider(ZuviImageLoader *loader) : m_loader(loader) {}

QQuickImageResponse *ZuviImageProvider::requestImageResponse(const QString &id,
                                                             const QSize &requestedSize)
{
    // The thumbnails are small already; the item scales what it shows.
    Q_UNUSED(requestedSize);
    QString kind;
    QUrlQuery query;
    parseId(id, &kind, &query);
    const QString url = query.queryItemValue(QStringLiteral("url"), QUrl::FullyDecoded);
    ZuviImageLoader *loader = m_loader;

    if (kind == QLatin1String("low")) {
        return new ZuviImageResponse([loader, url](ZuviImageLoader::Completion done) {
            loader->loadLowQualityImageWithURLString(url, std::move(done));
        });
    }
    if (kind != QLatin1String("thumb")) {
        return new ZuviImageResponse([loader, url](ZuviImageLoader::Completion done) {
            loader->loadImageWithURLString(url, std::move(done));
        });
    }

    const int width = intValue(query, QStringLiteral("w"), 320);
    const int height = intValue(query, QStringLiteral("h"), 180);
    const int quality = intValue(query, QStringLiteral("q"), 80);
    const bool hasFallback = query.hasQueryItem(QStringLiteral("fallback"));
    const QString fallback = query.queryItemValue(QStringLiteral("fallback"), QUrl::FullyDecoded);
    return new ZuviImageResponse([=](ZuviImageLoader::Completion done) {
        const QString normalized = ZuviImageLoader::normalizedURLString(url);
        if (normalized.isEmpty()) {
            // The normal load logs the invalid address and delivers nothing.
            loader->loadImageWithURLString(url, std::move(done));
            return;
        }
        QString key = normalized + QStringLiteral("#%1x%2q%3").arg(width).arg(height).arg(quality);
        if (width == 320 && height == 180 && quality == 80)
            key = normalized;
        else if (width == 160 && height == 90 && quality == 60)
            key = normalized + QStringLiteral("#low");
        const QString fallbackURL =
            hasFallback ? ZuviImageLoader::normalizedURLString(fallback) : normalized;
        loader->loadImageWithURLString(
            ZuviImageLoader::thumbnailURLStringForURLString(normalized, width, height, quality),
            key, fallbackURL, std::move(done));
    });
}

QString ZuviImageProvider::sourceURL(const QString &kind, const QString &urlString)
{
    return QStringLiteral("image://%1/%2?url=%3")
        .arg(QLatin1String(kProviderId), kind, encoded(urlString));
}

QString ZuviImageProvider::thumbnailSourceURL(const QString &urlString, int width, int height,
                                              int quality, const QString &fallbackURLString)
{
    return QStringLiteral("image://%1/thumb?url=%2&w=%3&h=%4&q=%5&fallback=%6")
        .arg(QLatin1String(kProviderId), encoded(urlString), QString::number(width),
             QString::number(height), QString::number(quality), encoded(fallbackURLString));
}
