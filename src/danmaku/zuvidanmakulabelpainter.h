#pragma once

#include <QFont>
#include <QImage>
#include <QSizeF>
#include <QString>

struct ZuviDanmakuLabel;

// Text measurement and rasterisation of danmaku labels: bold, one line, the
// label's colour over a black shadow (alpha 0.88, offset 1, 1), cut at the
// tail with an ellipsis when the label is narrower than its text.
// The label is drawn once when it is configured and only moved afterwards.
class ZuviDanmakuLabelPainter
{
public:
    static QFont fontForSize(qreal fontSize);
    // The size of the text on one line in the bold font of that size.
    static QSizeF measureText(const QString &text, qreal fontSize);
    // The text as drawn: whole when it fits the label, else cut at the tail with "…".
    static QString displayedText(const ZuviDanmakuLabel &label);
    // The label's text drawn into an image of label.size × devicePixelRatio.
    static QImage rasterise(const ZuviDanmakuLabel &label, qreal devicePixelRatio);
};
