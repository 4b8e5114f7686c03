#include "zuviqrcodeimagegenerator.h"

#include <qrcodegen.h>

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <vector>

QImage ZuviQRCodeImageGenerator::imageWithString(const QString &string, double sideLength)
{
    if (string.isEmpty() || !(sideLength > 0))
        return QImage();

    const QByteArray utf8 = string.toUtf8();
    std::vector<uint8_t> qrcode(qrcodegen_BUFFER_LEN_MAX);
    std::vector<uint8_t> scratch(qrcodegen_BUFFER_LEN_MAX);
    const bool encoded = qrcodegen_encodeText(utf8.constData(), scratch.data(), qrcode.data(),
                                              qrcodegen_Ecc_MEDIUM, qrcodegen_VERSION_MIN,
                                              qrcodegen_VERSION_MAX, qrcodegen_Mask_AUTO, true);
    if (!encoded)
        return QImage();

    const int symbolSize = qrcodegen_getSize(qrcode.data());
    const int modules = symbolSize + 2 * kQuietZoneModules;
    const int moduleSide = std::max(1, static_cast<int>(std::floor(sideLength / modules)));
    const int imageSide = modules * moduleSide;

    QImage image(imageSide, imageSide, QImage::Format_RGB32);
    image.setDevicePixelRatio(1);
    image.fill(Qt::white);
    QPainter painter(&image);
    for (int y = 0; y < symbolSize; ++y) {
        for (int x = 0; x < symbolSize; ++x) {
            if (qrcodegen_getModule(qrcode.data(), x, y)) {
                painter.fillRect((x + kQuietZoneModules) * moduleSide,
                                 (y + kQuietZoneModules) * moduleSide, moduleSide, moduleSide,
                                 Qt::black);
            }
        }
    }
    return image;
}
