#include "zuvidanmakuitem.h"

#include "zuvinumbertext.h"

#include <QByteArray>

#include <cstring>

namespace {

constexpr quint64 kWhite = 16777215;
constexpr float kSmallestFontSize = 13;
constexpr float kLargestFontSize = 20;
// Fields 4–6 (send time, pool, sender hash) sit between the colour and the id.
constexpr int kFieldsBeforeID = 3;

// The end of the field that starts at `p`: its comma, or the end.
const char *fieldEnd(const char *p, const char *end)
{
    const void *comma = p < end ? std::memchr(p, ',', size_t(end - p)) : nullptr;
    return comma ? static_cast<const char *>(comma) : end;
}

// The start of the field after the one `p` is in, or null after the last.
// Numbers stop at their comma, so the common case is one comparison.
const char *nextField(const char *p, const char *end)
{
    if (p < end && *p == ',')
        return p + 1;
    p = fieldEnd(p, end);
    return p < end ? p + 1 : nullptr;
}

// Ids are digits: widening ASCII straight into an exactly sized string is
// one allocation and no decoding; anything else goes through UTF-8.
QString stringFromField(const char *begin, const char *end)
{
    const qsizetype length = end - begin;
    if (length == 0)
        return QString();
    QString text(length, Qt::Uninitialized);
    char16_t *out = reinterpret_cast<char16_t *>(text.data());
    unsigned char seen = 0;
    for (const char *p = begin; p < end; ++p) {
        const auto byte = static_cast<unsigned char>(*p);
        seen |= byte;
        *out++ = byte;
    }
    return seen < 0x80 ? text : QString::fromUtf8(begin, length);
}

void clampFontSize(ZuviDanmakuItem &item)
{
    if (item.fontSize < kSmallestFontSize)
        item.fontSize = kSmallestFontSize;
    else if (item.fontSize > kLargestFontSize)
        item.fontSize = kLargestFontSize;
}

} // namespace

std::optional<ZuviDanmakuItem> ZuviDanmakuItem::itemWithText(const QString &text,
                                                             const QString &parameterString)
{
    if (text.isEmpty())
        return std::nullopt;
    ZuviDanmakuItem item;
    item.text = text;
    if (!parameterString.isNull())
        readParameterBytes(item, parameterString.toUtf8());
    return item;
}

void ZuviDanmakuItem::readParameterBytes(ZuviDanmakuItem &item, QByteArrayView parameterBytes)
{
    // Each field is read only when the list reaches its position; an empty
    // attribute is one empty field, which reads as time 0. The number readers
    // stop at the comma (or earlier), so each field is scanned once.
    const char *p = parameterBytes.data();
    const char *const end = p + parameterBytes.size();
    const char *stop = p;
    item.time = ZuviNumberText::doubleValue(p, end, &stop);
    if ((p = nextField(stop, end))) {
        item.mode = ZuviNumberText::intValue(p, end, &stop);
        p = nextField(stop, end);
    }
    if (p) {
        item.fontSize = float(ZuviNumberText::doubleValue(p, end, &stop));
        p = nextField(stop, end);
    }
    if (p) {
        // Only a colour that fits 0xRRGGBB replaces the default white.
        if (const quint64 color = ZuviNumberText::unsignedValue(p, end, &stop); color <= kWhite)
            item.colorRGB = quint32(color);
        p = nextField(stop, end);
    }
    for (int skipped = 0; p && skipped < kFieldsBeforeID; ++skipped)
        p = nextField(p, end);
    if (p)
        item.danmakuID = stringFromField(p, fieldEnd(p, end));
    clampFontSize(item);
}
