#include "zuvidanmakuitem.h"

#include "zuvinumbertext.h"

#include <QByteArray>

#include <cstring>

namespace {

constexpr quint64 kWhite = 16777215;
constexpr float kSmallestFontSize = 13;
constexpr float kLargestFontSize = 20;

// The fields of "p" by position; 4–6 (send time, pool, sender hash) are not shown.
enum Position { TimePosition = 0, ModePosition, SizePosition, ColorPosition, IDPosition = 7 };

void readField(ZuviDanmakuItem &item, int position, QByteArrayView field)
{
    switch (position) {
    case TimePosition:
        item.time = ZuviNumberText::doubleValue(field);
        break;
    case ModePosition:
        item.mode = ZuviNumberText::intValue(field);
        break;
    case SizePosition:
        item.fontSize = float(ZuviNumberText::doubleValue(field));
        break;
    case ColorPosition:
        if (const quint64 color = ZuviNumberText::unsignedValue(field); color <= kWhite)
            item.colorRGB = quint32(color);
        break;
    case IDPosition:
        item.danmakuID = QString::fromUtf8(field);
        break;
    default:
        break;
    }
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
    // Splitting on "," by hand: a field is read only when the list reaches
    // its position, and an empty attribute is one empty field (time 0).
    const char *p = parameterBytes.data();
    const char *const end = p + parameterBytes.size();
    for (int position = 0; position <= IDPosition; ++position) {
        const char *comma =
            p < end ? static_cast<const char *>(memchr(p, ',', size_t(end - p))) : nullptr;
        const char *fieldEnd = comma ? comma : end;
        readField(item, position, QByteArrayView(p, fieldEnd - p));
        if (!comma)
            break;
        p = comma + 1;
    }
    if (item.fontSize < kSmallestFontSize)
        item.fontSize = kSmallestFontSize;
    else if (item.fontSize > kLargestFontSize)
        item.fontSize = kLargestFontSize;
}
