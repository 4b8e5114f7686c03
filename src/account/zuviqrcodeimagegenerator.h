#pragma once

#include <QImage>
#include <QString>

// Draws a text as a QR code: medium error correction, the smallest version
// that holds it, a quiet zone of four modules on every side, and whole
// pixels per module, so the picture is never scaled by fractions and may come
// out a little smaller than the side asked for.
class ZuviQRCodeImageGenerator
{
public:
    static constexpr int kQuietZoneModules = 4;

    // A null image for an empty text, a side of 0 or less, or a text too long
    // for any QR version.
    static QImage imageWithString(const QString &string, double sideLength);
};
