#pragma once

#include "platform/zuviendpoints.h"
#include "platform/zuvierror.h"
#include "platform/zuviurlrequest.h"

#include <QAtomicInt>
#include <QCache>
#include <QImage>
#include <QMutex>
#include <QObject>
#include <QString>
#include <QVariant>

#include <deque>
#include <functional>
#include <memory>
#include <optional>

class QAbstractNetworkCache;
class ZuviDebugLog;
class ZuviHTTPTransport;
class ZuviWorkQueue;

// The one way the application fetches remote pictures. It normalises the
// address a record carries, asks the CDN for a small thumbnail, keeps decoded
// images in a memory cache of 80 entries, runs at most two transfers at a
// time, falls back to the full picture when the thumbnail cannot be had,
// writes every failure to the debug log and always delivers on the main
// thread, later than the call (a memory-cache hit too).
class ZuviImageLoader : public QObject
{
    Q_OBJECT
public:
    // Receives the decoded image, or a null image on any failure.
    using Completion = std::function<void(const QImage &)>;

    static constexpr int kCacheCountLimit = 80;
    static constexpr int kMaximumConcurrentTransfers = 2;
    static constexpr int kRequestTimeoutMs = 25000;
    static constexpr qint64 kURLCacheMaximumBytes = 64 * 1024 * 1024;
    static const char *const kFailureCategory;
    static const char *const kUserAgent;

    // urlCache, when given, becomes the on-disk store that answers repeated
    // picture requests (the loader's transport takes ownership).
    ZuviImageLoader(ZuviDebugLog *log, const ZuviEndpoints &endpoints,
                    QAbstractNetworkCache *urlCache, QObject *parent = nullptr);
    ~ZuviImageLoader() override;

    // The process-wide loader, with its URL cache under the cache location.
    static ZuviImageLoader *sharedLoader();
    // The folder of the shared loader's URL cache.
    static QString defaultURLCacheDirectory();

    // --- Loads; call on the main thread. A null completion still fills the cache.
    void loadImageWithURLString(const QVariant &urlString, Completion completion);
    void loadLowQualityImageWithURLString(const QVariant &urlString, Completion completion);
    // The worker behind both: fetch urlString, store under cacheKey, try
    // fallbackURLString (when not empty and different) if the first fails.
    void loadImageWithURLString(const QString &urlString, const QString &cacheKey,
                                const QString &fallbackURLString, Completion completion);

    // --- Caches
    void clearMemoryCache();
    // Empties the on-disk URL cache, the only stored copy of pictures.
    void clearURLCache();
    // The settings screen's clear-cache action: both caches.
    void clearAllCaches();
    // The application's memory-warning entry point: empties the memory cache only.
    void didReceiveMemoryWarning();
    // Number of decoded images held, and whether a key is held (for tests and the settings screen).
    int memoryCacheCount() const;
    bool hasCachedImage(const QString &cacheKey) const;

    // --- Address rules
    static QString normalizedURLString(const QVariant &value);
    static QString thumbnailURLStringForURLString(const QString &urlString);
    static QString thumbnailURLStringForURLString(const QString &urlString, int width, int height,
                                                  int quality);

    // --- Delivery and diagnostics
    static void finishWithImage(const QImage &image, const Completion &completion);
    void recordImageLoadFailureForURLString(const QString &urlString,
                                            const ZuviHTTPResponse &response,
                                            const QByteArray &data, const ZuviError &error);
    static int statusCodeFromResponse(const ZuviHTTPResponse &response);
    static QString mimeTypeFromResponse(const ZuviHTTPResponse &response);

    ZuviWorkQueue *imageQueue() const { return m_imageQueue.get(); }

private:
    using TransferHandler = std::function<void(const ZuviHTTPResponse &, const ZuviError &)>;
    struct PendingTransfer {
        ZuviURLRequest request;
        TransferHandler handler;
    };

    void loadNormalized(const QVariant &rawValue, const QString &invalidText, int width, int height,
                        int quality, const QString &keySuffix, Completion completion);
    ZuviURLRequest imageRequest(const QUrl &url) const;
    void handleResponse(const QString &urlString, const QString &cacheKey,
                        const QString &fallbackURLString, const ZuviHTTPResponse &response,
                        const ZuviError &error, const Completion &completion);
    void appendFailure(const QString &text);
    std::optional<QImage> cachedImage(const QString &cacheKey) const;
    void storeImage(const QString &cacheKey, const QImage &image);

    // At most two transfers are on the wire; the rest wait their turn here.
    void startTransfer(const ZuviURLRequest &request, TransferHandler handler);
    void transferFinished();
    void sendNow(const PendingTransfer &transfer);

    ZuviDebugLog *m_log;
    ZuviEndpoints m_endpoints;

    mutable QMutex m_cacheMutex;
    QCache<QString, QImage> m_cache;

    QMutex m_transferMutex;
    int m_activeTransfers = 0;
    std::deque<PendingTransfer> m_waitingTransfers;

    QAtomicInt m_closing;
    std::unique_ptr<ZuviWorkQueue> m_imageQueue;
    std::unique_ptr<ZuviHTTPTransport> m_transport;
};
