#pragma once

#include "app/zuviviewcontroller.h"

#include <QVariantMap>

class ZuviImageLoader;

// "通知详情": one stored message in full, with its picture loaded once.
class ZuviNotificationHistoryDetailViewController : public ZuviViewController
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Opened from the notification history")
    Q_PROPERTY(QString infoText READ infoText CONSTANT)
    Q_PROPERTY(QString messageText READ messageText CONSTANT)
    Q_PROPERTY(bool hasImage READ hasImage CONSTANT)
    Q_PROPERTY(QString imageStatusText READ imageStatusText NOTIFY imageChanged)
    Q_PROPERTY(QString imageSource READ imageSource NOTIFY imageChanged)
    Q_PROPERTY(double imageAspectRatio READ imageAspectRatio NOTIFY imageChanged)

public:
    ZuviNotificationHistoryDetailViewController(const QVariantMap &entry,
                                                ZuviImageLoader *imageLoader,
                                                QObject *parent = nullptr);

    QUrl pageUrl() const override;

    // "时间: …", "版本: …" and "图片: …", one per line.
    QString infoText() const;
    QString messageText() const;
    bool hasImage() const { return !imageURLString().isEmpty(); }
    QString imageStatusText() const { return m_imageStatusText; }
    QString imageSource() const { return m_imageSource; }
    // Height over width of the loaded picture, 0 before it comes.
    double imageAspectRatio() const { return m_imageAspectRatio; }

protected:
    void viewDidLoad() override;

signals:
    void imageChanged();

private:
    QString imageURLString() const;

    QVariantMap m_entry;
    ZuviImageLoader *m_imageLoader;
    QString m_imageStatusText;
    QString m_imageSource;
    double m_imageAspectRatio = 0;
};
