#include "zuviqrcodeview.h"

#include <QPainter>

ZuviQRCodeView::ZuviQRCodeView(QQuickItem *parent) : QQuickPaintedItem(parent)
{
    setAntialiasing(false);
}

void ZuviQRCodeView::setImage(const QImage &image)
{
    m_image = image;
    emit imageChanged();
    update();
}

void ZuviQRCodeView::paint(QPainter *painter)
{
    if (m_image.isNull())
        return;
    const int x = qMax(0, int((width() - m_image.width()) / 2));
    const int y = qMax(0, int((height() - m_image.height()) / 2));
    painter->drawImage(QPoint(x, y), m_image);
}
