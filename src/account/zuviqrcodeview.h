#pragma once

#include <QImage>
#include <QQuickPaintedItem>
#include <QtQml/qqmlregistration.h>

// Shows a QR image pixel for pixel, centred in the item: a code scaled by a
// fraction gets blurred module edges, which cameras read badly.
class ZuviQRCodeView : public QQuickPaintedItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QImage image READ image WRITE setImage NOTIFY imageChanged)

public:
    explicit ZuviQRCodeView(QQuickItem *parent = nullptr);

    QImage image() const { return m_image; }
    void setImage(const QImage &image);
    void paint(QPainter *painter) override;

signals:
    void imageChanged();

private:
    QImage m_image;
};
