#include "zuvidanmakulabelpainter.h"

#include "zuvidanmakulabel.h"

#include <QFontMetricsF>
#include <QPainter>

#include <array>
#include <cmath>
#include <memory>

namespace {

// Danmaku sizes are clamped to 13…20 points and scaled by the viewer's text
// size (50…200 %), so font metrics for every whole size are built once and
// kept; building them per label would cost more than the measurement itself.
constexpr int smallestCachedSize = 6;
constexpr int largestCachedSize = 40;

const QFontMetricsF &metricsForSize(int pixelSize)
{
    static std::array<std::unique_ptr<QFontMetricsF>, largestCachedSize + 1> cache;
    std::unique_ptr<QFontMetricsF> &slot = cache[size_t(pixelSize)];
    if (!slot)
        slot = std::make_unique<QFontMetricsF>(ZuviDanmakuLabelPainter::fontForSize(pixelSize));
    return *slot;
}

int pixelSizeFor(qreal fontSize)
{
    return std::clamp(int(std::lround(fontSize)), smallestCachedSize, largestCachedSize);
}

} // namespace

QFont ZuviDanmakuLabelPainter::fontForSize(qreal fontSize)
{
    QFont font;
    font.setPixelSize(pixelSizeFor(fontSize));
    font.setBold(true);
    return font;
}

QSizeF ZuviDanmakuLabelPainter::measureText(const QString &text, qreal fontSize)
{
    if (text.isEmpty())
        return {};
    const QFontMetricsF &metrics = metricsForSize(pixelSizeFor(fontSize));
    return QSizeF(metrics.horizontalAdvance(text), metrics.height());
}

QString ZuviDanmakuLabelPainter::displayedText(const ZuviDanmakuLabel &label)
{
    const QFontMetricsF &metrics = metricsForSize(pixelSizeFor(label.fontSize));
    // The text gets the label's width less the shadow's offset; longer text
    // ends in an ellipsis instead of running off the label.
    const qreal textWidth = std::max<qreal>(0, label.size.width() - 1);
    if (metrics.horizontalAdvance(label.text) <= textWidth)
        return label.text;
    return metrics.elidedText(label.text, Qt::ElideRight, textWidth);
}

QImage ZuviDanmakuLabelPainter::rasterise(const ZuviDanmakuLabel &label, qreal devicePixelRatio)
{
    const QSizeF size = label.size;
    if (size.isEmpty() || label.text.isEmpty())
        return {};
    const qreal ratio = devicePixelRatio > 0 ? devicePixelRatio : 1;
    QImage image(int(std::ceil(size.width() * ratio)), int(std::ceil(size.height() * ratio)),
                 QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::transparent);

    const QFontMetricsF &metrics = metricsForSize(pixelSizeFor(label.fontSize));
    const QString shown = displayedText(label);
    const qreal baseline = std::floor((size.height() - metrics.height()) * 0.5 + metrics.ascent());

    QPainter painter(&image);
    painter.setRenderHint(QPainter::TextAntialiasing);
    painter.setFont(fontForSize(label.fontSize));
    painter.setPen(QColor(0, 0, 0, qRound(0.88 * 255)));
    painter.drawText(QPointF(1, baseline + 1), shown);
    painter.setPen(QColor::fromRgba(label.color));
    painter.drawText(QPointF(0, baseline), shown);
    return image;
}
