// Picture addresses: normalising any text and asking the CDN for a thumbnail
// of it. What comes out is always plain ASCII a request can carry.
#include "images/zuviimageurl.h"
#include "zuvifuzzcheck.h"

#include <cstddef>
#include <cstdint>

namespace {
bool isPlainASCII(const QString &text)
{
    for (const QChar c : text) {
        if (c.unicode() < 0x21 || c.unicode() > 0x7e)
            return false;
    }
    return true;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size)
{
    if (size < 3)
        return 0;
    const int width = bytes[0] * 4;
    const int height = bytes[1] * 4;
    const int quality = bytes[2] % 101;
    const QString text =
        QString::fromUtf8(reinterpret_cast<const char *>(bytes + 3), qsizetype(size - 3));

    const QString escaped = ZuviImageURL::percentEscapedString(text);
    ZUVI_FUZZ_CHECK(isPlainASCII(escaped));
    const QString normalized = ZuviImageURL::normalizedURLString(QVariant(text));
    if (!normalized.isNull())
        ZUVI_FUZZ_CHECK(isPlainASCII(normalized));
    const QString thumbnail =
        ZuviImageURL::thumbnailURLStringForURLString(normalized, width, height, quality);
    if (!normalized.isEmpty())
        ZUVI_FUZZ_CHECK(isPlainASCII(thumbnail));
    return 0;
}
