#include "zuvinotificationhistorydetailviewcontroller.h"

#include "images/zuviimageloader.h"
#include "images/zuviimageprovider.h"
#include "platform/zuvilifetime.h"
#include "zuviremotenotificationpresenter.h"

#include <QImage>

ZuviNotificationHistoryDetailViewController::ZuviNotificationHistoryDetailViewController(
    const QVariantMap &entry, ZuviImageLoader *imageLoader, QObject *parent)
    : ZuviViewController(QStringLiteral("通知详情"), parent), m_entry(entry),
      m_imageLoader(imageLoader)
{
}

QUrl ZuviNotificationHistoryDetailViewController::pageUrl() const
{
    return modulePageUrl(QStringLiteral("NotificationHistoryDetailPage.qml"));
}

QString ZuviNotificationHistoryDetailViewController::imageURLString() const
{
    return m_entry.value(QStringLiteral("imageURL")).toString();
}

QString ZuviNotificationHistoryDetailViewController::infoText() const
{
    const QVariant version = m_entry.value(QStringLiteral("version"));
    const QString versionText = version.isValid() ? version.toString() : QStringLiteral("1");
    const QString image = imageURLString();
    return QStringList{
        QStringLiteral("时间: %1")
            .arg(ZuviRemoteNotificationPresenter::timeTextForHistoryEntry(m_entry)),
        QStringLiteral("版本: %1").arg(versionText),
        QStringLiteral("图片: %1").arg(image.isEmpty() ? QStringLiteral("无") : image)}
        .join('\n');
}

QString ZuviNotificationHistoryDetailViewController::messageText() const
{
    const QString text = m_entry.value(QStringLiteral("text")).toString();
    return text.isEmpty() ? QStringLiteral("无文字内容") : text;
}

void ZuviNotificationHistoryDetailViewController::viewDidLoad()
{
    if (!hasImage() || !m_imageLoader)
        return;
    m_imageStatusText = QStringLiteral("图片加载中...");
    emit imageChanged();
    const QString url = imageURLString();
    m_imageLoader->loadImageWithURLString(
        QVariant(url), ZuviLifetime::bound(this, [this, url](const QImage &image) {
            if (image.isNull()) {
                m_imageStatusText = QStringLiteral("图片加载失败");
            } else {
                m_imageStatusText.clear();
                m_imageSource = ZuviImageProvider::sourceURL(QStringLiteral("normal"), url);
                m_imageAspectRatio = double(image.height()) / image.width();
            }
            emit imageChanged();
        }));
}
