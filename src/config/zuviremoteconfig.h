#pragma once

#include "platform/zuvierror.h"
#include "zuviremoteconfigmessage.h"
#include "zuviremoteconfigoptions.h"

#include <QAtomicInt>
#include <QByteArray>
#include <QJsonObject>
#include <QMutex>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

class ZuviDefaults;
class ZuviHTTPTransport;
class ZuviNotificationCenter;
class ZuviScheduler;
class ZuviWorkQueue;
struct ZuviHTTPResponse;

// The remote configuration: a small JSON document fetched from an ordered
// list of sources (one at a time, the first good answer wins), revalidated
// with If-None-Match / If-Modified-Since, kept on disk as the last good copy,
// polled on a timer, and read for its operator "message", which is announced
// once per new version and per source.
//
// Responses are handled on a queue of one; the fields below are guarded by
// one lock that is never held across a request or a notification. Every
// notification and callback arrives on the main thread.
class ZuviRemoteConfig : public QObject
{
    Q_OBJECT
public:
    // Receives the configuration in force (or nothing) and the error of this refresh.
    using Completion = std::function<void(const std::optional<QJsonObject> &, const ZuviError &)>;

    static const char *const kErrorDomain;
    static const char *const kDidUpdateNotification;
    static const char *const kDidFailNotification;
    static const char *const kMessageDidUpdateNotification;
    static const char *const kMessageVersionKey;
    static const char *const kCacheDataFileName;
    static const char *const kCacheMetadataFileName;
    static const char *const kPollTimerName;

    ZuviRemoteConfig(ZuviDefaults *defaults, ZuviNotificationCenter *center,
                     ZuviScheduler *scheduler, QObject *parent = nullptr);
    ~ZuviRemoteConfig() override;

    static ZuviRemoteConfig *sharedConfig();

    // --- Life cycle (main thread)
    // Installs the cached document, refreshes once and starts polling. May be
    // called while running: the new generation drops every older answer.
    void startWithOptions(const ZuviRemoteConfigOptions &options = ZuviRemoteConfigOptions());
    // Ends polling. A request already in flight still completes.
    void stop();
    void refreshWithCompletion(Completion completion = Completion());

    // --- State
    QString currentSourceURLString() const;
    std::optional<QJsonObject> currentConfig() const;
    QByteArray currentData() const;
    std::optional<ZuviRemoteConfigMessage> currentMessage() const;
    ZuviRemoteConfigOptions options() const;
    bool isRunning() const;
    quint64 generation() const;
    bool isCurrentGeneration(quint64 generation) const;

    // --- Announced message version, one counter per first source
    qint64 storedMessageVersion() const;
    void resetStoredMessageVersion();
    QString messageVersionDefaultsKey() const;

    // --- Disk cache
    void loadCache();
    // Writes the document, then its metadata, each atomically (a crash
    // leaves the old file or the new one, never a part).
    void saveCacheWithData(const QByteArray &data, const QString &sourceURLString,
                           const QString &etag, const QString &lastModified);
    QString cacheDirectoryPath() const;
    QString cacheDataPath() const;
    QString cacheMetadataPath() const;

    // --- Documents and errors
    static std::optional<QJsonObject> parseConfigFromData(const QByteArray &data, ZuviError *error);
    static ZuviError errorWithCode(int code, const QString &description);

private:
    // Where a fetch over the sources ended.
    struct FetchResult {
        ZuviError error;
        QByteArray data;
        bool modified = false;
        QString sourceURLString;
        QString etag;
        QString lastModified;
    };
    using FetchCompletion = std::function<void(const FetchResult &)>;

    void schedulePollTimer();
    void pollTimerFired();
    void fetchFromSources(const QStringList &sources, int index, const ZuviError &lastError,
                          FetchCompletion completion);
    void handleSourceResponse(const QStringList &sources, int index,
                              const ZuviHTTPResponse &response, const ZuviError &error,
                              const FetchCompletion &completion);
    void handleFetchedData(const FetchResult &result, quint64 generation,
                           const Completion &completion);
    void updateConfig(const QJsonObject &config, const QByteArray &data,
                      const QString &sourceURLString, const QString &etag,
                      const QString &lastModified, bool notify);
    void evaluateMessageFromConfig(const QJsonObject &config);
    void postConfigUpdateNotificationWithConfig(const QJsonObject &config,
                                                const QString &sourceURLString);
    void postMessageNotificationWithMessage(const ZuviRemoteConfigMessage &message);
    void postErrorNotification(const ZuviError &error);
    void callBack(const Completion &completion, const ZuviError &error = ZuviError()) const;
    static QString messageVersionKeyForSources(const QStringList &sources);

    ZuviDefaults *m_defaults;
    ZuviNotificationCenter *m_center;
    ZuviScheduler *m_scheduler;

    mutable QMutex m_mutex;
    ZuviRemoteConfigOptions m_options;
    std::optional<QJsonObject> m_currentConfig;
    QByteArray m_currentData;
    std::optional<ZuviRemoteConfigMessage> m_currentMessage;
    QString m_sourceURLString;
    QString m_etag;
    QString m_lastModified;
    quint64 m_generation = 0;
    bool m_running = false;

    QAtomicInt m_closing;
    std::unique_ptr<ZuviWorkQueue> m_networkQueue;
    std::unique_ptr<ZuviHTTPTransport> m_transport;
};
