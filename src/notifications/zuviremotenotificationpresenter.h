#pragma once

#include "config/zuviremoteconfigmessage.h"
#include "config/zuviremoteconfigoptions.h"
#include "notifications/zuviremotemessageoverlayview.h"

#include <QDateTime>
#include <QObject>
#include <QPointer>
#include <QVariantList>
#include <QVariantMap>

#include <functional>
#include <optional>

class QQuickItem;
class ZuviDebugLog;
class ZuviDefaults;
class ZuviImageLoader;
class ZuviNotificationCenter;
class ZuviRemoteConfig;
class ZuviScheduler;

// Shows each new operator message once, as a modal card over whatever is on
// screen, and keeps the last 100 messages as the notification history. It
// owns the start and stop of the configuration service, whose message
// announcements it follows.
class ZuviRemoteNotificationPresenter : public QObject
{
    Q_OBJECT
public:
    struct Services {
        ZuviRemoteConfig *config = nullptr;
        ZuviDefaults *defaults = nullptr;
        ZuviNotificationCenter *center = nullptr;
        ZuviScheduler *scheduler = nullptr;
        ZuviImageLoader *imageLoader = nullptr;
        ZuviDebugLog *log = nullptr;
    };
    // The item a card covers, or nothing while there is none yet.
    using ContainerProvider = std::function<QQuickItem *()>;

    static const char *const kHistoryKey;
    static const char *const kHistoryDidChangeNotification;
    static constexpr int kHistoryLimit = 100;
    // How often a message waits for a screen to show on.
    static constexpr double kPresentRetryDelay = 0.3;

    explicit ZuviRemoteNotificationPresenter(const Services &services, QObject *parent = nullptr);
    ~ZuviRemoteNotificationPresenter() override;

    static ZuviRemoteNotificationPresenter *sharedPresenter();

    void setContainerProvider(ContainerProvider provider);
    ZuviRemoteConfig *remoteConfig() const { return m_services.config; }

    void startWithOptions(const ZuviRemoteConfigOptions &options);
    void stop();
    bool isObserving() const { return m_observing; }

    // Shows the card for a message with something to show; waits for a
    // container first when there is none.
    void presentMessage(const ZuviRemoteConfigMessage &message);
    // The configuration's message, else the newest history entry's; false
    // when neither has anything to show.
    bool presentLatestNotificationForTesting();
    void dismissCurrentOverlayView();
    void layoutCurrentOverlayView();
    ZuviRemoteMessageOverlayView *currentOverlayView() const { return m_currentOverlayView; }

    // --- History, newest first
    QVariantList notificationHistoryEntries() const;
    void saveMessageToHistory(const ZuviRemoteConfigMessage &message);
    void clearNotificationHistory();
    static std::optional<ZuviRemoteConfigMessage> messageFromHistoryEntry(const QVariant &entry);
    // "yyyy-MM-dd HH:mm:ss" for a date, a string as it is, else "未知时间".
    static QString timeTextForHistoryEntry(const QVariantMap &entry);

    // The clock of history entries (tests fix it).
    void setClock(std::function<QDateTime()> clock) { m_clock = std::move(clock); }

private:
    void remoteConfigMessageDidUpdate(const QVariantMap &userInfo);
    QQuickItem *presentationContainerView() const;
    ZuviRemoteMessageOverlayView *makeOverlay(QQuickItem *container,
                                              const ZuviRemoteConfigMessage &message);
    void loadImageForOverlay(ZuviRemoteMessageOverlayView *overlay,
                             const ZuviRemoteConfigMessage &message);

    Services m_services;
    ContainerProvider m_containerProvider;
    std::function<QDateTime()> m_clock;
    bool m_observing = false;
    QPointer<ZuviRemoteMessageOverlayView> m_currentOverlayView;
};
