#pragma once

#include <QMetaType>
#include <QString>

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
};

Q_DECLARE_METATYPE(ZuviDanmakuItem)
