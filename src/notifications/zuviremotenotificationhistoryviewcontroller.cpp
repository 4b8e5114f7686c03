#include "zuviremotenotificationhistoryviewcontroller.h"

#include "app/zuvinavigationcontroller.h"
#include "platform/zuvinotificationcenter.h"
#include "zuvinotificationhistorydetailviewcontroller.h"
#include "zuviremotenotificationpresenter.h"

ZuviRemoteNotificationHistoryViewController::ZuviRemoteNotificationHistoryViewController(
    const Services &services, QObject *parent)
    : ZuviViewController(QStringLiteral("历史通知"), parent), m_services(services)
{
    m_services.center->addObserver(
        QString::fromLatin1(ZuviRemoteNotificationPresenter::kHistoryDidChangeNotification), this,
        [this](const ZuviNotification &) { reloadEntries(); });
    reloadEntries();
}

ZuviRemoteNotificationHistoryViewController::~ZuviRemoteNotificationHistoryViewController()
{
    m_services.center->removeObserver(this);
}

QUrl ZuviRemoteNotificationHistoryViewController::pageUrl() const
{
    return modulePageUrl(QStringLiteral("NotificationHistoryPage.qml"));
}

QString ZuviRemoteNotificationHistoryViewController::titleForEntry(const QVariantMap &entry)
{
    const QString time = ZuviRemoteNotificationPresenter::timeTextForHistoryEntry(entry);
    const QVariant version = entry.value(QStringLiteral("version"));
    if (!version.isValid() || version.isNull())
        return time;
    return QStringLiteral("%1  v%2").arg(time, version.toString());
}

QString ZuviRemoteNotificationHistoryViewController::detailForEntry(const QVariantMap &entry)
{
    const QString text = entry.value(QStringLiteral("text")).toString();
    const QString image = entry.value(QStringLiteral("imageURL")).toString();
    if (!text.isEmpty() && !image.isEmpty())
        return QStringLiteral("%1\n图片: %2").arg(text, image);
    if (!text.isEmpty())
        return text;
    if (!image.isEmpty())
        return QStringLiteral("图片: %1").arg(image);
    return QStringLiteral("无内容");
}

void ZuviRemoteNotificationHistoryViewController::reloadEntries()
{
    m_entries = m_services.presenter->notificationHistoryEntries();
    m_rows.clear();
    for (const QVariant &entry : std::as_const(m_entries)) {
        const QVariantMap map = entry.toMap();
        m_rows.append(QVariantMap{{"title", titleForEntry(map)}, {"detail", detailForEntry(map)}});
    }
    emit rowsChanged();
}

void ZuviRemoteNotificationHistoryViewController::confirmClear()
{
    m_services.presenter->clearNotificationHistory();
}

void ZuviRemoteNotificationHistoryViewController::selectRow(int index)
{
    if (index < 0 || index >= m_entries.size() || !navigationController())
        return;
    auto *detail = new ZuviNotificationHistoryDetailViewController(m_entries.at(index).toMap(),
                                                                   m_services.imageLoader);
    detail->setHidesBottomBarWhenPushed(true);
    navigationController()->pushViewController(detail, true);
}
