#include "zuvidemoimagerenderer.h"

#include "zuvidemorandom.h"

#include <QBuffer>
#include <QImage>
#include <QImageWriter>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>

namespace {
// Each cover draws its two colours from this palette of the service's tones.
const QList<QColor> kPalette = {
    QColor(238, 112, 155), QColor(92, 148, 209),  QColor(107, 173, 133), QColor(189, 140, 87),
    QColor(153, 102, 204), QColor(240, 180, 60),  QColor(70, 190, 200),  QColor(220, 90, 80),
    QColor(60, 60, 90),    QColor(250, 240, 230),
};

quint64 keyHash(const QString &key)
{
    // FNV-1a: stable across runs and platforms, unlike qHash with its seed.
    quint64 hash = 1469598103934665603ULL;
    for (const QChar c : key) {
        hash ^= c.unicode();
        hash *= 1099511628211ULL;
    }
    return hash;
}
} // namespace

ZuviDemoImageRenderer::ZuviDemoImageRenderer(quint64 seed) : m_seed(seed)
{
    m_cache.setMaxCost(48 * 1024 * 1024);
}

QSize ZuviDemoImageRenderer::naturalSize(Kind kind)
{
    switch (kind) {
    case Cover:
        return QSize(960, 540);
    case Face:
        return QSize(240, 240);
    case Picture:
        return QSize(800, 600);
    }
    return QSize(640, 360);
}

QByteArray ZuviDemoImageRenderer::jpeg(Kind kind, const QString &key, QSize size, int quality)
{
    size = size.boundedTo(QSize(kMaxSide, kMaxSide)).expandedTo(QSize(1, 1));
    quality = qBound(1, quality, 100);
    const QString cacheKey = QStringLiteral("%1/%2/%3x%4/%5")
                                 .arg(int(kind))
                                 .arg(key)
                                 .arg(size.width())
                                 .arg(size.height())
                                 .arg(quality);
    if (const QByteArray *cached = m_cache.object(cacheKey))
        return *cached;
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "jpeg");
    writer.setQuality(quality);
    if (!writer.write(draw(kind, key, size)))
        return QByteArray();
    m_cache.insert(cacheKey, new QByteArray(bytes), int(bytes.size()));
    return bytes;
}

QImage ZuviDemoImageRenderer::draw(Kind kind, const QString &key, QSize size) const
{
    ZuviDemoRandom random(m_seed, 100 + int(kind), keyHash(key));
    QImage image(size, QImage::Format_RGB32);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor first = random.pick(kPalette);
    const QColor second = random.pick(kPalette);
    const qreal w = size.width();
    const qreal h = size.height();
    QLinearGradient background(0, 0, w, h);
    background.setColorAt(0, first);
    background.setColorAt(1, second.darker(130));
    painter.fillRect(image.rect(), background);
    if (kind == Face) {
        // An avatar: a head and shoulders on the background.
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(255, 255, 255, 210));
        painter.drawEllipse(QPointF(w / 2, h * 0.4), w * 0.2, h * 0.2);
        painter.drawEllipse(QPointF(w / 2, h * 1.02), w * 0.38, h * 0.4);
        return image;
    }
    // A cover or picture: a few translucent shapes and a play mark.
    painter.setPen(Qt::NoPen);
    const int shapes = 3 + random.below(5);
    for (int i = 0; i < shapes; ++i) {
        QColor colour = random.pick(kPalette);
        colour.setAlpha(90 + random.below(120));
        painter.setBrush(colour);
        const QPointF centre(random.unit() * w, random.unit() * h);
        const qreal radius = (0.1 + random.unit() * 0.35) * qMin(w, h);
        if (random.chance(0.5))
            painter.drawEllipse(centre, radius, radius);
        else
            painter.drawRoundedRect(
                QRectF(centre.x() - radius, centre.y() - radius * 0.6, radius * 2, radius * 1.2),
                radius * 0.15, radius * 0.15);
    }
    if (kind == Cover) {
        QPainterPath triangle;
        const qreal side = qMin(w, h) * 0.18;
        triangle.moveTo(w / 2 - side * 0.4, h / 2 - side * 0.5);
        triangle.lineTo(w / 2 + side * 0.55, h / 2);
        triangle.lineTo(w / 2 - side * 0.4, h / 2 + side * 0.5);
        triangle.closeSubpath();
        painter.setBrush(QColor(255, 255, 255, 200));
        painter.drawPath(triangle);
    }
    return image;
}
