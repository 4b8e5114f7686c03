#pragma once

#include <QByteArrayView>
#include <QMetaType>
#include <QString>

#include <optional>

// One flying comment: its text, when it is shown and how it is drawn.
struct ZuviDanmakuItem {
    QString text;
    double time = 0;             // seconds from the start of the video
    qint32 mode = 1;             // 1–3 scroll, 4 bottom, 5 top, 7 and 8 never drawn
    float fontSize = 16;         // points, 13…20
    quint32 colorRGB = 16777215; // 0xRRGGBB
    QString danmakuID;           // may be empty

    // The drawing colour as 0xAARRGGBB with alpha 0.92.
    quint32 textColorARGB() const
    {
        constexpr quint32 alpha = 235; // round(0.92 × 255)
        return (alpha << 24) | (colorRGB & 0xFFFFFFu);
    }

    // One comment from its text and the comma-separated "p" attribute
    // (time, mode, font size, colour, then the id at position 7). Nothing
    // for an empty text; a null or short parameter string keeps the defaults.
    static std::optional<ZuviDanmakuItem> itemWithText(const QString &text,
                                                       const QString &parameterString = QString());
    // Reads a "p" attribute given as UTF-8 bytes into an item's time, mode,
    // font size (clamped to 13…20), colour and id. The XML parser calls this
    // straight on the attribute's bytes, so both paths share one rule.
    static void readParameterBytes(ZuviDanmakuItem &item, QByteArrayView parameterBytes);
};

// Moving an item in memory is a plain copy of its bytes, which lets a growing
// list reallocate in place instead of moving every item.
Q_DECLARE_TYPEINFO(ZuviDanmakuItem, Q_RELOCATABLE_TYPE);
Q_DECLARE_METATYPE(ZuviDanmakuItem)
