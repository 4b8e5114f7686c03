#include "zuviimageloader.h"

#include "platform/zuvidebuglog.h"
#include "platform/zuvihttptransport.h"
#include "platform/zuvimainqueue.h"
#include "platform/zuviworkqueue.h"
#include "zuviimageurl.h"

#include <QDir>
#include <QNetworkDiskCache>
#include <QStandardPaths>

const char *const ZuviImageLoader::kFailureCategory = "图片加载失败";
const char *const ZuviImageLoader::kUserAgent =
    "Mozilla/5.0 (iPad; CPU OS 6_1 like Mac OS X) AppleWebKit/536.26 (KHTML, like Gecko) "
    "oldZuvi/1.0";

ZuviImageLoader::ZuviImageLoader(ZuviDebugLog *log, const ZuviEndpoints &endpoints,
                                 QAbstractNetworkCache *urlCache, QObject *parent)
    : QObject(parent), m_log(log), m_endpoints(endpoints),
      m_imageQueue(std::make_unique<ZuviWorkQueue>(kMaximumConcurrentTransfers, "zuvi.images")),
      m_transport(std::make_unique<ZuviHTTPTransport>())
{
    // Every image counts one, whatever its size: the count is the only bound.
    m_cache.setMaxCost(kCacheCountLimit);
    if (urlCache)
        m_transport->setCache(urlCache);
}

ZuviImageLoader::~ZuviImageLoader()
{
    // Work still queued may want to start a fallback transfer; once closing,
    // nothing new is sent, so the transport can go and the queue drain.
    m_closing.storeRelease(1);
    m_imageQueue->waitForDone();
    m_transport.reset();
    m_imageQueue->waitForDone();
}

ZuviImageLoader *ZuviImageLoader::sharedLoader()
{
    // A function-local static is initialised exactly once, even when the
    // first uses race between threads.
    static ZuviImageLoader *loader = [] {
        auto *diskCache = new QNetworkDiskCache;
        diskCache->setCacheDirectory(defaultURLCacheDirectory());
        diskCache->setMaximumCacheSize(kURLCacheMaximumBytes);
        return new ZuviImageLoader(ZuviDebugLog::sharedLog(), ZuviEndpoints::shared(), diskCache);
    }();
    return loader;
}

QString ZuviImageLoader::defaultURLCacheDirectory()
{
    QString base = QStandardPaths::writableLocation(QStandardPaths::CacheLocation);
    if (base.isEmpty())
        base = QDir::tempPath();
    return QDir(base).filePath(QStringLiteral("ZuviURLCache"));
}

// --- Loads

void ZuviImageLoader::loadImageWithURLString(const QVariant &urlString, Completion completion)
{
    loadNormalized(urlString, QStringLiteral("图片 URL 无效\nurl=%1"), 320, 180, 80, QString(),
                   std::move(completion));
}

void ZuviImageLoader::loadLowQualityImageWithURLString(const QVariant &urlString,
                                                       Completion completion)
{
    loadNormalized(urlString, QStringLiteral("低清图片 URL 无效\nurl=%1"), 160, 90, 60,
                   QStringLiteral("#low"), std::move(completion));
}

void ZuviImageLoader::loadNormalized(const QVariant &rawValue, const QString &invalidText,
                                     int width, int height, int quality, const QString &keySuffix,
                                     Completion completion)
{
    const QString normalized = normalizedURLString(rawValue);
    if (normalized.isEmpty()) {
        const QString raw = rawValue.isNull() ? QString() : rawValue.toString();
        appendFailure(invalidText.arg(raw));
        finishWithImage(QImage(), completion);
        return;
    }
    const QString thumbnail = thumbnailURLStringForURLString(normalized, width, height, quality);
    // The full picture is the fallback; its image is stored under the
    // thumbnail's key, so a later load of that key needs no request.
    loadImageWithURLString(thumbnail, normalized + keySuffix, normalized, std::move(completion));
}

void ZuviImageLoader::loadImageWithURLString(const QString &urlString, const QString &cacheKey,
                                             const QString &fallbackURLString,
                                             Completion completion)
{
    if (const std::optional<QImage> cached = cachedImage(cacheKey)) {
        finishWithImage(*cached, completion);
        return;
    }
    const QUrl url(urlString, QUrl::StrictMode);
    if (urlString.isEmpty() || !url.isValid()) {
        appendFailure(QStringLiteral("图片 URL 解析失败\nurl=%1").arg(urlString));
        finishWithImage(QImage(), completion);
        return;
    }
    startTransfer(imageRequest(url), [this, urlString, cacheKey, fallbackURLString, completion](
                                         const ZuviHTTPResponse &response, const ZuviError &error) {
        handleResponse(urlString, cacheKey, fallbackURLString, response, error, completion);
    });
}

ZuviURLRequest ZuviImageLoader::imageRequest(const QUrl &url) const
{
    ZuviURLRequest request;
    request.url = url;
    request.timeoutMs = kRequestTimeoutMs;
    request.allowsCache = true;
    request.setHeader("User-Agent", kUserAgent);
    request.setHeader("Referer", m_endpoints.siteRoot().toUtf8());
    return request;
}

// Runs on the image queue: decoding and cache insertion stay off the main thread.
void ZuviImageLoader::handleResponse(const QString &urlString, const QString &cacheKey,
                                     const QString &fallbackURLString,
                                     const ZuviHTTPResponse &response, const ZuviError &error,
                                     const Completion &completion)
{
    // The status is not examined: any body that decodes is a picture.
    if (!error.hasError() && !response.body.isEmpty()) {
        const QImage image = QImage::fromData(response.body);
        if (!image.isNull()) {
            storeImage(cacheKey, image);
            finishWithImage(image, completion);
            return;
        }
    }
    if (!fallbackURLString.isEmpty() && fallbackURLString != urlString) {
        // Only the last attempt's failure is worth a log entry.
        loadImageWithURLString(fallbackURLString, cacheKey, QString(), completion);
        return;
    }
    recordImageLoadFailureForURLString(urlString, response, response.body, error);
    finishWithImage(QImage(), completion);
}

// --- Transfers

void ZuviImageLoader::startTransfer(const ZuviURLRequest &request, TransferHandler handler)
{
    PendingTransfer transfer{request, std::move(handler)};
    {
        QMutexLocker lock(&m_transferMutex);
        if (m_activeTransfers >= kMaximumConcurrentTransfers) {
            m_waitingTransfers.push_back(std::move(transfer));
            return;
        }
        ++m_activeTransfers;
    }
    sendNow(transfer);
}

void ZuviImageLoader::sendNow(const PendingTransfer &transfer)
{
    if (m_closing.loadAcquire())
        return;
    ZuviWorkQueue *queue = m_imageQueue.get();
    const TransferHandler handler = transfer.handler;
    m_transport->send(transfer.request, [this, queue, handler](const ZuviHTTPResponse &response,
                                                               const ZuviError &error) {
        // The transfer is over once its answer is here; the next one may go
        // while this one is decoded.
        transferFinished();
        queue->run([handler, response, error] { handler(response, error); });
    });
}

void ZuviImageLoader::transferFinished()
{
    PendingTransfer next;
    {
        QMutexLocker lock(&m_transferMutex);
        if (m_waitingTransfers.empty()) {
            --m_activeTransfers;
            return;
        }
        // The slot passes straight to the next waiting transfer.
        next = std::move(m_waitingTransfers.front());
        m_waitingTransfers.pop_front();
    }
    sendNow(next);
}

// --- Caches

std::optional<QImage> ZuviImageLoader::cachedImage(const QString &cacheKey) const
{
    QMutexLocker lock(&m_cacheMutex);
    if (const QImage *image = m_cache.object(cacheKey))
        return *image;
    return std::nullopt;
}

void ZuviImageLoader::storeImage(const QString &cacheKey, const QImage &image)
{
    QMutexLocker lock(&m_cacheMutex);
    m_cache.insert(cacheKey, new QImage(image), 1);
}

void ZuviImageLoader::clearMemoryCache()
{
    QMutexLocker lock(&m_cacheMutex);
    m_cache.clear();
}

void ZuviImageLoader::clearURLCache()
{
    m_transport->clearCache();
}

void ZuviImageLoader::clearAllCaches()
{
    clearMemoryCache();
    clearURLCache();
}

void ZuviImageLoader::didReceiveMemoryWarning()
{
    // Only the decoded images go: they are what costs memory, while the
    // stored answers on disk keep the next load off the network.
    clearMemoryCache();
}

int ZuviImageLoader::memoryCacheCount() const
{
    QMutexLocker lock(&m_cacheMutex);
    return static_cast<int>(m_cache.count());
}

bool ZuviImageLoader::hasCachedImage(const QString &cacheKey) const
{
    QMutexLocker lock(&m_cacheMutex);
    return m_cache.contains(cacheKey);
}

// --- Address rules

QString ZuviImageLoader::normalizedURLString(const QVariant &value)
{
    return ZuviImageURL::normalizedURLString(value);
}

QString ZuviImageLoader::thumbnailURLStringForURLString(const QString &urlString)
{
    return thumbnailURLStringForURLString(urlString, 320, 180, 80);
}

QString ZuviImageLoader::thumbnailURLStringForURLString(const QString &urlString, int width,
                                                        int height, int quality)
{
    return ZuviImageURL::thumbnailURLStringForURLString(urlString, width, height, quality);
}

// --- Delivery and diagnostics

void ZuviImageLoader::finishWithImage(const QImage &image, const Completion &completion)
{
    // Always queued, so the caller never sees its completion run inside its own call.
    if (completion)
        ZuviMainQueue::post([completion, image] { completion(image); });
}

void ZuviImageLoader::recordImageLoadFailureForURLString(const QString &urlString,
                                                         const ZuviHTTPResponse &response,
                                                         const QByteArray &data,
                                                         const ZuviError &error)
{
    QString errorText = error.localizedDescription();
    if (errorText.isEmpty())
        errorText = QStringLiteral("无 NSError，可能是返回数据无法解码成 UIImage");
    const QString text =
        QStringLiteral("url=%1\nhttp=%2\nmime=%3\nbytes=%4\nerror=%5")
            .arg(urlString, QString::number(statusCodeFromResponse(response)),
                 mimeTypeFromResponse(response), QString::number(data.size()), errorText);
    appendFailure(text);
}

int ZuviImageLoader::statusCodeFromResponse(const ZuviHTTPResponse &response)
{
    return response.isHTTP ? response.statusCode : 0;
}

QString ZuviImageLoader::mimeTypeFromResponse(const ZuviHTTPResponse &response)
{
    // The MIME type is the content type without its parameters ("; charset=...").
    const QByteArray contentType = response.header("Content-Type");
    const int parameters = contentType.indexOf(';');
    const QByteArray type = parameters >= 0 ? contentType.left(parameters) : contentType;
    return QString::fromLatin1(type.trimmed());
}

void ZuviImageLoader::appendFailure(const QString &text)
{
    if (m_log)
        m_log->appendText(text, QString::fromUtf8(kFailureCategory));
}
