#include "zuviremoteconfig.h"

#include "platform/zuvidefaults.h"
#include "platform/zuvihttptransport.h"
#include "platform/zuvimainqueue.h"
#include "platform/zuvinotificationcenter.h"
#include "platform/zuvischeduler.h"
#include "platform/zuviworkqueue.h"
#include "zuvipropertylist.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QLoggingCategory>
#include <QSaveFile>
#include <QStandardPaths>

#include <cmath>

Q_LOGGING_CATEGORY(lcRemoteConfig, "zuvi.config")

const char *const ZuviRemoteConfig::kErrorDomain = "ZuviRemoteConfigErrorDomain";
const char *const ZuviRemoteConfig::kDidUpdateNotification =
    "ZuviRemoteConfigDidUpdateNotification";
const char *const ZuviRemoteConfig::kDidFailNotification = "ZuviRemoteConfigDidFailNotification";
const char *const ZuviRemoteConfig::kMessageDidUpdateNotification =
    "ZuviRemoteConfigMessageDidUpdateNotification";
const char *const ZuviRemoteConfig::kMessageVersionKey = "ZuviRemoteConfigMessageVersion";
const char *const ZuviRemoteConfig::kCacheDataFileName = "remote_config.json";
const char *const ZuviRemoteConfig::kCacheMetadataFileName = "remote_config_meta.plist";
const char *const ZuviRemoteConfig::kPollTimerName = "ZuviRemoteConfigPollTimer";

namespace {
bool writeFileAtomically(const QString &path, const QByteArray &data)
{
    // QSaveFile writes a temporary file beside the target and renames it
    // over the target only once everything is on disk.
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    if (file.write(data) != data.size()) {
        file.cancelWriting();
        return false;
    }
    return file.commit();
}

QString metadataString(const QVariantMap &metadata, const char *key)
{
    const QVariant value = metadata.value(QString::fromLatin1(key));
    return value.typeId() == QMetaType::QString ? value.toString() : QString();
}
} // namespace

ZuviRemoteConfig::ZuviRemoteConfig(ZuviDefaults *defaults, ZuviNotificationCenter *center,
                                   ZuviScheduler *scheduler, QObject *parent)
    : QObject(parent), m_defaults(defaults), m_center(center), m_scheduler(scheduler),
      m_networkQueue(std::make_unique<ZuviWorkQueue>(1, "zuvi.config")),
      m_transport(std::make_unique<ZuviHTTPTransport>())
{
    m_options = ZuviRemoteConfigOptions().copy();
}

ZuviRemoteConfig::~ZuviRemoteConfig()
{
    m_scheduler->cancelAll(this);
    // Answers still being handled may want to ask the next source; once
    // closing, nothing new is sent, so the transport can go and the queue drain.
    m_closing.storeRelease(1);
    m_networkQueue->waitForDone();
    m_transport.reset();
    m_networkQueue->waitForDone();
}

ZuviRemoteConfig *ZuviRemoteConfig::sharedConfig()
{
    static ZuviRemoteConfig *config = new ZuviRemoteConfig(ZuviDefaults::standardDefaults(),
                                                           ZuviNotificationCenter::defaultCenter(),
                                                           ZuviScheduler::sharedScheduler());
    return config;
}

// --- Life cycle

void ZuviRemoteConfig::startWithOptions(const ZuviRemoteConfigOptions &options)
{
    {
        QMutexLocker lock(&m_mutex);
        m_options = options.copy();
        m_currentConfig.reset();
        m_currentMessage.reset();
        m_currentData.clear();
        m_sourceURLString.clear();
        m_etag.clear();
        m_lastModified.clear();
        ++m_generation;
        m_running = true;
    }
    loadCache();
    refreshWithCompletion();
    schedulePollTimer();
}

void ZuviRemoteConfig::stop()
{
    {
        QMutexLocker lock(&m_mutex);
        m_running = false;
    }
    m_scheduler->cancel(this, kPollTimerName);
}

void ZuviRemoteConfig::schedulePollTimer()
{
    m_scheduler->cancel(this, kPollTimerName);
    const double interval = options().pollInterval;
    const double seconds = interval > 0 ? interval : ZuviRemoteConfigOptions::kDefaultPollInterval;
    // Timers belong to the main thread.
    auto schedule = [this, seconds] {
        m_scheduler->cancel(this, kPollTimerName);
        m_scheduler->repeat(this, kPollTimerName, seconds, [this] { pollTimerFired(); });
    };
    if (ZuviMainQueue::isMainThread())
        schedule();
    else
        QMetaObject::invokeMethod(this, schedule, Qt::QueuedConnection);
}

void ZuviRemoteConfig::pollTimerFired()
{
    if (isRunning())
        refreshWithCompletion();
}

// --- Refresh

void ZuviRemoteConfig::refreshWithCompletion(Completion completion)
{
    QStringList sources;
    quint64 generation = 0;
    {
        QMutexLocker lock(&m_mutex);
        sources = m_options.sanitizedSources();
        generation = m_generation;
    }
    if (sources.isEmpty()) {
        // Nothing to ask: the caller gets what is in force, right away.
        if (completion)
            completion(currentConfig(), ZuviError());
        return;
    }
    fetchFromSources(sources, 0, ZuviError(),
                     [this, generation, completion](const FetchResult &result) {
                         if (!isCurrentGeneration(generation)) {
                             callBack(completion);
                             return;
                         }
                         if (result.error.hasError()) {
                             postErrorNotification(result.error);
                             callBack(completion, result.error);
                             return;
                         }
                         handleFetchedData(result, generation, completion);
                     });
}

void ZuviRemoteConfig::fetchFromSources(const QStringList &sources, int index,
                                        const ZuviError &lastError, FetchCompletion completion)
{
    if (index >= sources.size()) {
        FetchResult result;
        result.error = lastError.hasError()
                           ? lastError
                           : errorWithCode(1, QStringLiteral("remote config sources are empty"));
        completion(result);
        return;
    }
    const QUrl url(sources.at(index), QUrl::StrictMode);
    if (!url.isValid() || url.isEmpty()) {
        fetchFromSources(sources, index + 1,
                         errorWithCode(2, QStringLiteral("remote config source URL is invalid")),
                         std::move(completion));
        return;
    }

    ZuviURLRequest request;
    request.url = url;
    request.allowsCache = false;
    request.setHeader("Accept", "application/json,text/plain,*/*");
    request.setHeader("User-Agent", "oldZuvi/1.0 remote-config");
    {
        QMutexLocker lock(&m_mutex);
        const double timeout = m_options.requestTimeout > 0
                                   ? m_options.requestTimeout
                                   : ZuviRemoteConfigOptions::kDefaultRequestTimeout;
        request.timeoutMs = static_cast<int>(std::lround(timeout * 1000));
        // The validators of the document in force go to whichever source is asked.
        if (!m_etag.isEmpty())
            request.setHeader("If-None-Match", m_etag.toUtf8());
        if (!m_lastModified.isEmpty())
            request.setHeader("If-Modified-Since", m_lastModified.toUtf8());
    }

    if (m_closing.loadAcquire())
        return;
    ZuviWorkQueue *queue = m_networkQueue.get();
    m_transport->send(request, [this, queue, sources, index, completion](
                                   const ZuviHTTPResponse &response, const ZuviError &error) {
        queue->run([this, sources, index, completion, response, error] {
            handleSourceResponse(sources, index, response, error, completion);
        });
    });
}

// Runs on the network queue.
void ZuviRemoteConfig::handleSourceResponse(const QStringList &sources, int index,
                                            const ZuviHTTPResponse &response,
                                            const ZuviError &error,
                                            const FetchCompletion &completion)
{
    if (error.hasError()) {
        fetchFromSources(sources, index + 1, error, completion);
        return;
    }
    const int status = response.isHTTP ? response.statusCode : 0;
    if (status == 200 && !response.body.isEmpty()) {
        FetchResult result;
        result.data = response.body;
        result.modified = true;
        result.sourceURLString = sources.at(index);
        result.etag = QString::fromUtf8(response.header("ETag"));
        result.lastModified = QString::fromUtf8(response.header("Last-Modified"));
        completion(result);
        return;
    }
    if (status == 200) {
        fetchFromSources(sources, index + 1,
                         errorWithCode(4, QStringLiteral("remote config response is empty")),
                         completion);
        return;
    }
    if (status == 304) {
        // Unchanged, whichever source said so.
        FetchResult result;
        result.sourceURLString = sources.at(index);
        completion(result);
        return;
    }
    fetchFromSources(
        sources, index + 1,
        errorWithCode(3, QStringLiteral("remote config request failed with status %1").arg(status)),
        completion);
}

// Runs on the network queue.
void ZuviRemoteConfig::handleFetchedData(const FetchResult &result, quint64 generation,
                                         const Completion &completion)
{
    if (!isCurrentGeneration(generation) || !result.modified) {
        callBack(completion);
        return;
    }
    bool sameBytes = false;
    {
        QMutexLocker lock(&m_mutex);
        sameBytes = m_currentConfig.has_value() && m_currentData == result.data;
        if (sameBytes) {
            m_etag = result.etag;
            m_lastModified = result.lastModified;
            m_sourceURLString = result.sourceURLString;
        }
    }
    if (sameBytes) {
        // Nothing new to announce; only the validators and the source moved.
        saveCacheWithData(result.data, result.sourceURLString, result.etag, result.lastModified);
        callBack(completion);
        return;
    }

    ZuviError error;
    const std::optional<QJsonObject> config = parseConfigFromData(result.data, &error);
    if (!config) {
        // The previous document stays in force and in the cache.
        postErrorNotification(error);
        callBack(completion, error);
        return;
    }
    if (!isCurrentGeneration(generation)) {
        callBack(completion);
        return;
    }
    updateConfig(*config, result.data, result.sourceURLString, result.etag, result.lastModified,
                 true);
    saveCacheWithData(result.data, result.sourceURLString, result.etag, result.lastModified);
    evaluateMessageFromConfig(*config);
    callBack(completion);
}

std::optional<QJsonObject> ZuviRemoteConfig::parseConfigFromData(const QByteArray &data,
                                                                 ZuviError *error)
{
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(data, &parseError);
    if (parseError.error != QJsonParseError::NoError || !document.isObject()) {
        if (parseError.error != QJsonParseError::NoError)
            qCDebug(lcRemoteConfig) << "configuration is not JSON:" << parseError.errorString();
        if (error)
            *error = errorWithCode(5, QStringLiteral("remote config root must be a JSON object"));
        return std::nullopt;
    }
    return document.object();
}

void ZuviRemoteConfig::updateConfig(const QJsonObject &config, const QByteArray &data,
                                    const QString &sourceURLString, const QString &etag,
                                    const QString &lastModified, bool notify)
{
    {
        QMutexLocker lock(&m_mutex);
        m_currentConfig = config;
        m_currentData = data;
        m_sourceURLString = sourceURLString;
        m_etag = etag;
        m_lastModified = lastModified;
        m_currentMessage = ZuviRemoteConfigMessage::messageWithDictionary(config.value("message"));
    }
    if (notify)
        postConfigUpdateNotificationWithConfig(config, sourceURLString);
}

void ZuviRemoteConfig::evaluateMessageFromConfig(const QJsonObject &config)
{
    const std::optional<ZuviRemoteConfigMessage> message =
        ZuviRemoteConfigMessage::messageWithDictionary(config.value("message"));
    if (!message)
        return;
    // An equal or lower version is never announced again, even after a
    // restart; a version without anything to show still counts as seen.
    if (storedMessageVersion() >= message->version)
        return;
    m_defaults->setInteger(message->version, messageVersionDefaultsKey());
    m_defaults->synchronize();
    {
        QMutexLocker lock(&m_mutex);
        m_currentMessage = message;
    }
    if (message->hasDisplayContent())
        postMessageNotificationWithMessage(*message);
}

// --- Notifications and callbacks

void ZuviRemoteConfig::postConfigUpdateNotificationWithConfig(const QJsonObject &config,
                                                              const QString &sourceURLString)
{
    QVariantMap userInfo{{"config", config.toVariantMap()}};
    if (!sourceURLString.isEmpty())
        userInfo.insert("sourceURL", sourceURLString);
    m_center->postOnMainQueue(kDidUpdateNotification, this, userInfo);
}

void ZuviRemoteConfig::postMessageNotificationWithMessage(const ZuviRemoteConfigMessage &message)
{
    QVariantMap userInfo = message.dictionaryRepresentation();
    userInfo.insert("message", QVariant::fromValue(message));
    m_center->postOnMainQueue(kMessageDidUpdateNotification, this, userInfo);
}

void ZuviRemoteConfig::postErrorNotification(const ZuviError &error)
{
    m_center->postOnMainQueue(kDidFailNotification, this, {{"error", QVariant::fromValue(error)}});
}

void ZuviRemoteConfig::callBack(const Completion &completion, const ZuviError &error) const
{
    if (!completion)
        return;
    // The configuration in force when the step ends, delivered on the main thread.
    const std::optional<QJsonObject> config = currentConfig();
    ZuviMainQueue::post([completion, config, error] { completion(config, error); });
}

ZuviError ZuviRemoteConfig::errorWithCode(int code, const QString &description)
{
    return ZuviError(QString::fromLatin1(kErrorDomain), code, description);
}

// --- State

QString ZuviRemoteConfig::currentSourceURLString() const
{
    QMutexLocker lock(&m_mutex);
    if (!m_sourceURLString.isEmpty())
        return m_sourceURLString;
    const QStringList sources = m_options.sanitizedSources();
    return sources.isEmpty() ? QString() : sources.first();
}

std::optional<QJsonObject> ZuviRemoteConfig::currentConfig() const
{
    QMutexLocker lock(&m_mutex);
    return m_currentConfig;
}

QByteArray ZuviRemoteConfig::currentData() const
{
    QMutexLocker lock(&m_mutex);
    return m_currentData;
}

std::optional<ZuviRemoteConfigMessage> ZuviRemoteConfig::currentMessage() const
{
    QMutexLocker lock(&m_mutex);
    return m_currentMessage;
}

ZuviRemoteConfigOptions ZuviRemoteConfig::options() const
{
    QMutexLocker lock(&m_mutex);
    return m_options;
}

bool ZuviRemoteConfig::isRunning() const
{
    QMutexLocker lock(&m_mutex);
    return m_running;
}

quint64 ZuviRemoteConfig::generation() const
{
    QMutexLocker lock(&m_mutex);
    return m_generation;
}

bool ZuviRemoteConfig::isCurrentGeneration(quint64 generation) const
{
    QMutexLocker lock(&m_mutex);
    return generation == m_generation;
}

// --- Message version

QString ZuviRemoteConfig::messageVersionKeyForSources(const QStringList &sources)
{
    const QString base = QString::fromLatin1(kMessageVersionKey);
    return sources.isEmpty() ? base : base + QLatin1Char(':') + sources.first();
}

QString ZuviRemoteConfig::messageVersionDefaultsKey() const
{
    return messageVersionKeyForSources(options().sanitizedSources());
}

qint64 ZuviRemoteConfig::storedMessageVersion() const
{
    return m_defaults->integerForKey(messageVersionDefaultsKey());
}

void ZuviRemoteConfig::resetStoredMessageVersion()
{
    m_defaults->removeObjectForKey(messageVersionDefaultsKey());
    m_defaults->synchronize();
}

// --- Disk cache

QString ZuviRemoteConfig::cacheDirectoryPath() const
{
    const QString configured = options().cacheDirectoryPath;
    if (!configured.isEmpty())
        return configured;
    QString base = QStandardPaths::writableLocation(QStandardPaths::CacheLocation);
    if (base.isEmpty())
        base = QDir::tempPath();
    return QDir(base).filePath(QStringLiteral("ZuviRemoteConfig"));
}

QString ZuviRemoteConfig::cacheDataPath() const
{
    return QDir(cacheDirectoryPath()).filePath(QString::fromLatin1(kCacheDataFileName));
}

QString ZuviRemoteConfig::cacheMetadataPath() const
{
    return QDir(cacheDirectoryPath()).filePath(QString::fromLatin1(kCacheMetadataFileName));
}

void ZuviRemoteConfig::loadCache()
{
    QFile dataFile(cacheDataPath());
    if (!dataFile.open(QIODevice::ReadOnly))
        return;
    const QByteArray data = dataFile.readAll();
    if (data.isEmpty())
        return;
    const std::optional<QJsonObject> config = parseConfigFromData(data, nullptr);
    if (!config)
        return; // a bad cache is ignored in silence
    QVariantMap metadata;
    QFile metadataFile(cacheMetadataPath());
    if (metadataFile.open(QIODevice::ReadOnly))
        metadata =
            ZuviPropertyList::dictionaryFromXmlData(metadataFile.readAll()).value_or(QVariantMap());
    updateConfig(*config, data, metadataString(metadata, "sourceURL"),
                 metadataString(metadata, "etag"), metadataString(metadata, "lastModified"), false);
    // A cached message that was never announced is announced now.
    evaluateMessageFromConfig(*config);
}

void ZuviRemoteConfig::saveCacheWithData(const QByteArray &data, const QString &sourceURLString,
                                         const QString &etag, const QString &lastModified)
{
    if (data.isEmpty())
        return;
    if (!QDir().mkpath(cacheDirectoryPath()))
        return;
    if (!writeFileAtomically(cacheDataPath(), data))
        return;
    QVariantMap metadata{{"cachedAt", QDateTime::currentDateTimeUtc()}};
    if (!sourceURLString.isEmpty())
        metadata.insert("sourceURL", sourceURLString);
    if (!etag.isEmpty())
        metadata.insert("etag", etag);
    if (!lastModified.isEmpty())
        metadata.insert("lastModified", lastModified);
    writeFileAtomically(cacheMetadataPath(), ZuviPropertyList::xmlDataFromDictionary(metadata));
}
