#include "zuviterminalqrcode.h"

#include <qrcodegen.h>

#include <vector>

namespace {
constexpr int kQuietZone = 4;

// Light outside the symbol, so the quiet zone draws as blocks too.
bool isLight(const uint8_t *qrcode, int size, int x, int y)
{
    if (x < 0 || y < 0 || x >= size || y >= size)
        return true;
    return !qrcodegen_getModule(qrcode, x, y);
}
} // namespace

QString ZuviTerminalQRCode::textForString(const QString &string)
{
    if (string.isEmpty())
        return QString();
    std::vector<uint8_t> qrcode(qrcodegen_BUFFER_LEN_MAX);
    std::vector<uint8_t> temp(qrcodegen_BUFFER_LEN_MAX);
    const QByteArray utf8 = string.toUtf8();
    if (!qrcodegen_encodeText(utf8.constData(), temp.data(), qrcode.data(), qrcodegen_Ecc_MEDIUM,
                              qrcodegen_VERSION_MIN, qrcodegen_VERSION_MAX, qrcodegen_Mask_AUTO,
                              true))
        return QString();
    const int size = qrcodegen_getSize(qrcode.data());
    QString text;
    for (int y = -kQuietZone; y < size + kQuietZone; y += 2) {
        for (int x = -kQuietZone; x < size + kQuietZone; ++x) {
            const bool top = isLight(qrcode.data(), size, x, y);
            const bool bottom = isLight(qrcode.data(), size, x, y + 1);
            text += top && bottom ? QChar(0x2588)
                    : top         ? QChar(0x2580)
                    : bottom      ? QChar(0x2584)
                                  : QChar(' ');
        }
        text += '\n';
    }
    return text;
}
