#pragma once

#include <QQuickAsyncImageProvider>
#include <QString>

class ZuviImageLoader;

// Lets QML load every picture through the image loader, so an Image gets the
// thumbnail rewrite, the memory cache, the fallback and the failure log:
//
//   image://zuvi/normal?url=<address>      the normal load (320 x 180, quality 80)
//   image://zuvi/low?url=<address>         the low-quality load (160 x 90, quality 60)
//   image://zuvi/thumb?url=<address>&w=<width>&h=<height>&q=<quality>[&fallback=<address>]
//
// Every value is percent-encoded (encodeURIComponent in QML, sourceURL() in
// C++). A thumb load falls back to the normalised address unless "fallback"
// names another one, or is present and empty, which means no fallback; its
// size and quality default to 320, 180 and 80. Its cache key is the normal or
// low key when the size matches those loads, else "<address>#<w>x<h>q<q>".
// The application registers one provider under kProviderId.
class ZuviImageProvider : public QQuickAsyncImageProvider
{
public:
    static const char *const kProviderId;

    explicit ZuviImageProvider(ZuviImageLoader *loader);

    QQuickImageResponse *requestImageResponse(const QString &id,
                                              const QSize &requestedSize) override;

    // The source of a normal ("normal") or low-quality ("low") load.
    static QString sourceURL(const QString &kind, const QString &urlString);
    // The source of a thumbnail of a chosen size and fallback.
    static QString thumbnailSourceURL(const QString &urlString, int width, int height, int quality,
                                      const QString &fallbackURLString);

private:
    ZuviImageLoader *m_loader;
};
