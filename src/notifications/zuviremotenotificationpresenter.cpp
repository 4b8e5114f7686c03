#include "zuviremotenotificationpresenter.h"

#include "app/zuviviewcontroller.h"
#include "config/zuviremoteconfig.h"
#include "images/zuviimageloader.h"
#include "images/zuviimageprovider.h"
#include "platform/zuvidebuglog.h"
#include "platform/zuvidefaults.h"
#include "platform/zuvilifetime.h"
#include "platform/zuvinotificationcenter.h"
#include "platform/zuvischeduler.h"
#include "zuviremotemessageoverlayview.h"

#include <QImage>
#include <QLoggingCategory>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>

Q_LOGGING_CATEGORY(lcNotifications, "zuvi.notifications")

const char *const ZuviRemoteNotificationPresenter::kHistoryKey =
    "ZuviRemoteNotificationHistoryEntries";
const char *const ZuviRemoteNotificationPresenter::kHistoryDidChangeNotification =
    "ZuviRemoteNotificationHistoryDidChangeNotification";

namespace {
const char *const kPresentRetryName = "presentMessage";
const char *const kRemoveOverlayName = "removeOverlay";
} // namespace

ZuviRemoteNotificationPresenter::ZuviRemoteNotificationPresenter(const Services &services,
                                                                 QObject *parent)
    : QObject(parent), m_services(services), m_clock([] { return QDateTime::currentDateTime(); })
{
}

ZuviRemoteNotificationPresenter::~ZuviRemoteNotificationPresenter()
{
    if (m_services.center)
        m_services.center->removeObserver(this);
    if (m_services.scheduler)
        m_services.scheduler->cancelAll(this);
    delete m_currentOverlayView;
}

ZuviRemoteNotificationPresenter *ZuviRemoteNotificationPresenter::sharedPresenter()
{
    static ZuviRemoteNotificationPresenter *presenter = [] {
        Services services;
        services.config = ZuviRemoteConfig::sharedConfig();
        services.defaults = ZuviDefaults::standardDefaults();
        services.center = ZuviNotificationCenter::defaultCenter();
        services.scheduler = ZuviScheduler::sharedScheduler();
        services.imageLoader = ZuviImageLoader::sharedLoader();
        services.log = ZuviDebugLog::sharedLog();
        return new ZuviRemoteNotificationPresenter(services);
    }();
    return presenter;
}

void ZuviRemoteNotificationPresenter::setContainerProvider(ContainerProvider provider)
{
    m_containerProvider = std::move(provider);
}

void ZuviRemoteNotificationPresenter::startWithOptions(const ZuviRemoteConfigOptions &options)
{
    if (!m_observing) {
        m_services.center->addObserver(
            QString::fromLatin1(ZuviRemoteConfig::kMessageDidUpdateNotification), this,
            [this](const ZuviNotification &notification) {
                remoteConfigMessageDidUpdate(notification.userInfo);
            });
        m_observing = true;
    }
    if (m_services.config)
        m_services.config->startWithOptions(options);
}

void ZuviRemoteNotificationPresenter::stop()
{
    if (m_services.config)
        m_services.config->stop();
    if (m_observing) {
        m_services.center->removeObserver(this);
        m_observing = false;
    }
    dismissCurrentOverlayView();
}

void ZuviRemoteNotificationPresenter::remoteConfigMessageDidUpdate(const QVariantMap &userInfo)
{
    std::optional<ZuviRemoteConfigMessage> message;
    const QVariant record = userInfo.value(QStringLiteral("message"));
    if (record.metaType() == QMetaType::fromType<ZuviRemoteConfigMessage>())
        message = record.value<ZuviRemoteConfigMessage>();
    else
        message = ZuviRemoteConfigMessage::messageWithDictionary(
            QVariant(QVariantMap{{"version", userInfo.value("version")},
                                 {"image", userInfo.value("image")},
                                 {"text", userInfo.value("text")}}));
    if (!message || !message->hasDisplayContent())
        return;
    saveMessageToHistory(*message);
    presentMessage(*message);
}

QQuickItem *ZuviRemoteNotificationPresenter::presentationContainerView() const
{
    return m_containerProvider ? m_containerProvider() : nullptr;
}

void ZuviRemoteNotificationPresenter::presentMessage(const ZuviRemoteConfigMessage &message)
{
    if (!message.hasDisplayContent())
        return;
    QQuickItem *container = presentationContainerView();
    if (!container) {
        // Early in start-up there is nothing to show on yet.
        m_services.scheduler->callAfter(this, QString::fromLatin1(kPresentRetryName),
                                        kPresentRetryDelay,
                                        [this, message] { presentMessage(message); });
        return;
    }
    dismissCurrentOverlayView();
    ZuviRemoteMessageOverlayView *overlay = makeOverlay(container, message);
    overlay->dismissBlock = [this] { dismissCurrentOverlayView(); };
    m_currentOverlayView = overlay;
    layoutCurrentOverlayView();
    overlay->fadeTo(1, ZuviRemoteMessageOverlayView::kFadeInDuration);
    if (!message.imageURLString.isEmpty())
        loadImageForOverlay(overlay, message);
}

ZuviRemoteMessageOverlayView *
ZuviRemoteNotificationPresenter::makeOverlay(QQuickItem *container,
                                             const ZuviRemoteConfigMessage &message)
{
    ZuviRemoteMessageOverlayView *overlay = nullptr;
    // The card's look lives in its page; a container outside any QML
    // engine (a test's bare item) gets the card's logic alone.
    if (QQmlEngine *engine = qmlEngine(container)) {
        QQmlComponent component(
            engine, ZuviViewController::modulePageUrl(QStringLiteral("RemoteMessageOverlay.qml")));
        overlay = qobject_cast<ZuviRemoteMessageOverlayView *>(component.create());
        if (!overlay)
            qCWarning(lcNotifications).noquote() << component.errorString();
    }
    if (!overlay)
        overlay = new ZuviRemoteMessageOverlayView;
    overlay->initWithMessage(message);
    overlay->fadeTo(0, 0);
    // The card belongs to its container: it goes with the window.
    overlay->setParent(container);
    overlay->setParentItem(container);
    overlay->setZ(1000);
    // The card follows its container through rotations and resizes.
    connect(container, &QQuickItem::widthChanged, overlay, [this] { layoutCurrentOverlayView(); });
    connect(container, &QQuickItem::heightChanged, overlay, [this] { layoutCurrentOverlayView(); });
    return overlay;
}

void ZuviRemoteNotificationPresenter::loadImageForOverlay(ZuviRemoteMessageOverlayView *overlay,
                                                          const ZuviRemoteConfigMessage &message)
{
    if (!m_services.imageLoader)
        return;
    QPointer<ZuviRemoteMessageOverlayView> card(overlay);
    m_services.imageLoader->loadImageWithURLString(
        QVariant(message.imageURLString),
        ZuviLifetime::bound(this, [this, card, message](const QImage &image) {
            if (image.isNull() && m_services.log)
                m_services.log->appendText(QStringLiteral("通知图片加载失败\nversion=%1\nurl=%2")
                                               .arg(message.version)
                                               .arg(message.imageURLString),
                                           QStringLiteral("通知"));
            // A newer card, or none, has taken this one's place.
            if (!card || card != m_currentOverlayView)
                return;
            card->updateImage(
                image.isNull() ? QSizeF() : QSizeF(image.size()),
                ZuviImageProvider::sourceURL(QStringLiteral("normal"), message.imageURLString));
        }));
}

void ZuviRemoteNotificationPresenter::layoutCurrentOverlayView()
{
    if (!m_currentOverlayView)
        return;
    QQuickItem *container = presentationContainerView();
    if (container && m_currentOverlayView->parentItem() != container)
        m_currentOverlayView->setParentItem(container);
    if (QQuickItem *parent = m_currentOverlayView->parentItem()) {
        m_currentOverlayView->setPosition(QPointF(0, 0));
        m_currentOverlayView->setSize(parent->size());
    }
    m_currentOverlayView->layoutSubviews();
}

void ZuviRemoteNotificationPresenter::dismissCurrentOverlayView()
{
    QPointer<ZuviRemoteMessageOverlayView> overlay = m_currentOverlayView;
    m_currentOverlayView = nullptr;
    if (!overlay)
        return;
    overlay->dismissBlock = nullptr;
    overlay->setEnabled(false);
    overlay->fadeTo(0, ZuviRemoteMessageOverlayView::kFadeOutDuration);
    m_services.scheduler->callAfter(this, QString::fromLatin1(kRemoveOverlayName),
                                    ZuviRemoteMessageOverlayView::kFadeOutDuration, [overlay] {
                                        if (overlay) {
                                            overlay->setParentItem(nullptr);
                                            overlay->deleteLater();
                                        }
                                    });
}

bool ZuviRemoteNotificationPresenter::presentLatestNotificationForTesting()
{
    if (m_services.config) {
        const auto current = m_services.config->currentMessage();
        if (current && current->hasDisplayContent()) {
            presentMessage(*current);
            return true;
        }
    }
    const QVariantList entries = notificationHistoryEntries();
    if (entries.isEmpty())
        return false;
    const auto newest = messageFromHistoryEntry(entries.first());
    if (!newest || !newest->hasDisplayContent())
        return false;
    presentMessage(*newest);
    return true;
}

QVariantList ZuviRemoteNotificationPresenter::notificationHistoryEntries() const
{
    const QVariant stored = m_services.defaults->objectForKey(QString::fromLatin1(kHistoryKey));
    if (stored.typeId() != QMetaType::QVariantList && stored.typeId() != QMetaType::QStringList)
        return {};
    return stored.toList();
}

void ZuviRemoteNotificationPresenter::saveMessageToHistory(const ZuviRemoteConfigMessage &message)
{
    if (!message.hasDisplayContent())
        return;
    QVariantList entries = notificationHistoryEntries();
    entries.prepend(QVariantMap{{"time", m_clock()},
                                {"version", message.version},
                                {"text", message.text},
                                {"imageURL", message.imageURLString}});
    while (entries.size() > kHistoryLimit)
        entries.removeLast();
    m_services.defaults->setObject(entries, QString::fromLatin1(kHistoryKey));
    m_services.defaults->synchronize();
    m_services.center->post(QString::fromLatin1(kHistoryDidChangeNotification), this);
}

void ZuviRemoteNotificationPresenter::clearNotificationHistory()
{
    m_services.defaults->removeObjectForKey(QString::fromLatin1(kHistoryKey));
    m_services.defaults->synchronize();
    m_services.center->post(QString::fromLatin1(kHistoryDidChangeNotification), this);
}

std::optional<ZuviRemoteConfigMessage>
ZuviRemoteNotificationPresenter::messageFromHistoryEntry(const QVariant &entry)
{
    if (entry.typeId() != QMetaType::QVariantMap)
        return std::nullopt;
    const QVariantMap map = entry.toMap();
    // Entries written before versions were kept count as the first one.
    const QVariant version = map.contains("version") ? map.value("version") : QVariant(1);
    return ZuviRemoteConfigMessage::messageWithDictionary(QVariant(QVariantMap{
        {"version", version}, {"image", map.value("imageURL")}, {"text", map.value("text")}}));
}

QString ZuviRemoteNotificationPresenter::timeTextForHistoryEntry(const QVariantMap &entry)
{
    const QVariant time = entry.value(QStringLiteral("time"));
    if (time.typeId() == QMetaType::QDateTime)
        return time.toDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    if (time.typeId() == QMetaType::QString)
        return time.toString();
    return QStringLiteral("未知时间");
}
