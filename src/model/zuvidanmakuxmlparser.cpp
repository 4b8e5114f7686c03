#include "zuvidanmakuxmlparser.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <expat.h>
#include <limits>
#include <utility>

namespace {

bool isDanmakuElement(const char *name)
{
    return name[0] == 'd' && name[1] == '\0';
}

bool isContinuation(unsigned char byte)
{
    return (byte & 0xC0) == 0x80;
}

// Decodes UTF-8 into UTF-16 in one pass and returns the units written (never
// more than the bytes read). The reader reports well-formed text in whole
// characters, but the callbacks are public: a malformed byte becomes U+FFFD,
// as Qt's own decoder would make it.
qsizetype decodeUtf8(const unsigned char *p, const unsigned char *const end, char16_t *out)
{
    char16_t *const start = out;
    while (p < end) {
        const unsigned char lead = *p;
        if (lead < 0x80) {
            *out++ = lead;
            ++p;
            continue;
        }
        // CJK text is runs of three-byte sequences: those go first, in a
        // loop of their own, with both continuation bytes checked at once.
        if ((lead & 0xF0) == 0xE0 && end - p >= 3) {
            const unsigned char *const runStart = p;
            do {
                const unsigned second = p[1] ^ 0x80u;
                const unsigned third = p[2] ^ 0x80u;
                const char32_t code = ((*p & 0x0Fu) << 12) | (second << 6) | third;
                if ((second | third) >= 0x40 || code < 0x800 || (code & 0xF800) == 0xD800)
                    break;
                *out++ = char16_t(code);
                p += 3;
            } while (end - p >= 3 && (*p & 0xF0) == 0xE0);
            if (p != runStart)
                continue;
        }
        const qsizetype left = end - p;
        if (lead >= 0xC2 && lead < 0xE0 && left >= 2 && isContinuation(p[1])) {
            *out++ = char16_t(((lead & 0x1F) << 6) | (p[1] & 0x3F));
            p += 2;
            continue;
        }
        if (lead >= 0xF0 && lead < 0xF5 && left >= 4 && isContinuation(p[1]) &&
            isContinuation(p[2]) && isContinuation(p[3])) {
            const char32_t code = ((lead & 0x07) << 18) | ((p[1] & 0x3F) << 12) |
                                  ((p[2] & 0x3F) << 6) | (p[3] & 0x3F);
            if (code >= 0x10000 && code <= 0x10FFFF) {
                *out++ = char16_t(0xD800 + ((code - 0x10000) >> 10));
                *out++ = char16_t(0xDC00 + ((code - 0x10000) & 0x3FF));
                p += 4;
                continue;
            }
        }
        *out++ = 0xFFFD;
        ++p;
    }
    return out - start;
}

// The sort key of an item: the bits of its time as an unsigned number that
// orders like the time itself (negative times flipped, positive ones above
// them). NaN sorts last and -0 equals 0, as "<" on the times would have it.
quint64 orderedKey(double time)
{
    if (std::isnan(time))
        time = std::numeric_limits<double>::infinity();
    if (time == 0)
        time = 0;
    quint64 bits;
    std::memcpy(&bits, &time, sizeof bits);
    constexpr quint64 signBit = quint64(1) << 63;
    return (bits & signBit) ? ~bits : bits | signBit;
}

struct SortEntry {
    quint64 key;
    quint32 index;
};

// Least significant digit first, 16 bits at a time: each pass is stable, so
// items with equal times keep their document order. A pass whose digit is
// the same for every key is skipped.
void radixSort(std::vector<SortEntry> &entries)
{
    constexpr int kDigitBits = 16;
    constexpr int kBuckets = 1 << kDigitBits;
    constexpr int kPasses = (64 + kDigitBits - 1) / kDigitBits;
    std::vector<std::array<quint32, kBuckets>> counts(kPasses);
    for (auto &histogram : counts)
        histogram.fill(0);
    for (const SortEntry &entry : entries) {
        for (int pass = 0; pass < kPasses; ++pass)
            ++counts[size_t(pass)][(entry.key >> (pass * kDigitBits)) & (kBuckets - 1)];
    }
    std::vector<SortEntry> buffer(entries.size());
    const quint32 total = quint32(entries.size());
    for (int pass = 0; pass < kPasses; ++pass) {
        auto &histogram = counts[size_t(pass)];
        const int shift = pass * kDigitBits;
        if (histogram[(entries.front().key >> shift) & (kBuckets - 1)] == total)
            continue;
        quint32 offset = 0;
        for (quint32 &count : histogram)
            offset += std::exchange(count, offset);
        for (const SortEntry &entry : entries)
            buffer[histogram[(entry.key >> shift) & (kBuckets - 1)]++] = entry;
        entries.swap(buffer);
    }
}

// Below this many items a comparison sort is cheaper than clearing and
// summing the radix histograms (four of 65536 buckets).
constexpr qsizetype kRadixThreshold = 32768;

} // namespace

ZuviDanmakuXMLParser::ZuviDanmakuXMLParser() = default;

ZuviDanmakuXMLParser::~ZuviDanmakuXMLParser()
{
    if (m_reader)
        XML_ParserFree(m_reader);
}

bool ZuviDanmakuXMLParser::parse(const QByteArray &data)
{
    // No reservation: items are relocatable, so the list grows in place.
    m_items.clear();
    m_errorString.clear();
    m_readingDanmaku = false;
    m_current = ZuviDanmakuItem();
    m_textLength = 0;

    if (m_reader)
        XML_ParserReset(m_reader, nullptr);
    else
        m_reader = XML_ParserCreate(nullptr);
    XML_SetUserData(m_reader, this);
    XML_SetElementHandler(m_reader, startElementHandler, endElementHandler);
    XML_SetCharacterDataHandler(m_reader, characterDataHandler);

    const char *p = data.constData();
    qsizetype remaining = data.size();
    bool finished = false;
    while (!finished) {
        const int length = int(std::min<qsizetype>(remaining, m_chunkSize));
        finished = length == remaining;
        if (XML_Parse(m_reader, p, length, finished) == XML_STATUS_ERROR) {
            m_errorString = QStringLiteral("%1 (line %2, column %3)")
                                .arg(QString::fromUtf8(XML_ErrorString(XML_GetErrorCode(m_reader))))
                                .arg(XML_GetCurrentLineNumber(m_reader))
                                .arg(XML_GetCurrentColumnNumber(m_reader));
            m_readingDanmaku = false;
            m_textLength = 0;
            return false;
        }
        p += length;
        remaining -= length;
    }
    return true;
}

void ZuviDanmakuXMLParser::didStartElement(const char *name, const char **attributes)
{
    if (!isDanmakuElement(name))
        return;
    m_readingDanmaku = true;
    m_textLength = 0;
    // The previous item's strings were moved out, unless its text was empty
    // and it was dropped with its id; the numbers need their defaults back.
    m_current.time = 0;
    m_current.mode = 1;
    m_current.fontSize = 16;
    m_current.colorRGB = 16777215;
    m_current.danmakuID.clear();
    for (const char **attribute = attributes; attribute && attribute[0]; attribute += 2) {
        if (attribute[0][0] == 'p' && attribute[0][1] == '\0' && attribute[1]) {
            ZuviDanmakuItem::readParameterBytes(m_current, QByteArrayView(attribute[1]));
            break;
        }
    }
}

void ZuviDanmakuXMLParser::foundCharacters(const char *text, int length)
{
    if (!m_readingDanmaku || !text || length <= 0)
        return;
    // Decoded as it comes into a reused buffer: UTF-8 never needs more
    // UTF-16 units than it has bytes, so one size check covers the chunk.
    const size_t needed = size_t(m_textLength) + size_t(length);
    if (m_text.size() < needed)
        m_text.resize(std::max(needed, m_text.size() * 2));
    const auto *bytes = reinterpret_cast<const unsigned char *>(text);
    m_textLength += decodeUtf8(bytes, bytes + length, m_text.data() + m_textLength);
}

void ZuviDanmakuXMLParser::didEndElement(const char *name)
{
    if (!isDanmakuElement(name))
        return;
    appendCurrentItem();
    // The parameters are read afresh at the next start tag.
    m_readingDanmaku = false;
    m_textLength = 0;
}

void ZuviDanmakuXMLParser::appendCurrentItem()
{
    if (m_textLength == 0)
        return;
    // Copying out of the buffer gives a string of exactly the right size with
    // one allocation, where decoding straight into a string would reserve a
    // unit per byte (three times the need for CJK text).
    m_current.text = QString(reinterpret_cast<const QChar *>(m_text.data()), m_textLength);
    m_items.append(std::move(m_current));
}

void ZuviDanmakuXMLParser::sortByTime(QList<ZuviDanmakuItem> &items)
{
    const qsizetype count = items.size();
    std::vector<SortEntry> entries(static_cast<size_t>(count));
    const ZuviDanmakuItem *const data = items.constData();
    bool sorted = true;
    for (qsizetype i = 0; i < count; ++i) {
        entries[size_t(i)] = {orderedKey(data[i].time), quint32(i)};
        sorted = sorted && (i == 0 || entries[size_t(i - 1)].key <= entries[size_t(i)].key);
    }
    if (sorted)
        return;

    // Sorting small (key, position) entries and then moving each item once
    // is faster and lighter than sorting the items themselves. Ties keep
    // their document order either way.
    if (count >= kRadixThreshold) {
        radixSort(entries);
    } else {
        std::sort(entries.begin(), entries.end(), [](const SortEntry &a, const SortEntry &b) {
            return a.key < b.key || (a.key == b.key && a.index < b.index);
        });
    }

    // Follow each cycle of the permutation: slot j receives the item from
    // entries[j].index; a finished slot is marked by pointing at itself.
    // Items are relocatable (see the record's type info), so they move as
    // plain bytes, the way the list itself moves them when it grows.
    static_assert(QTypeInfo<ZuviDanmakuItem>::isRelocatable);
    auto *const bytes = reinterpret_cast<unsigned char *>(items.data());
    constexpr size_t itemSize = sizeof(ZuviDanmakuItem);
    alignas(ZuviDanmakuItem) unsigned char held[itemSize];
    for (qsizetype start = 0; start < count; ++start) {
        if (entries[size_t(start)].index == quint32(start))
            continue;
        std::memcpy(held, bytes + size_t(start) * itemSize, itemSize);
        qsizetype j = start;
        for (;;) {
            const qsizetype from = entries[size_t(j)].index;
            entries[size_t(j)].index = quint32(j);
            if (from == start) {
                std::memcpy(bytes + size_t(j) * itemSize, held, itemSize);
                break;
            }
            std::memcpy(bytes + size_t(j) * itemSize, bytes + size_t(from) * itemSize, itemSize);
            j = from;
        }
    }
}

void ZuviDanmakuXMLParser::startElementHandler(void *userData, const char *name,
                                               const char **attributes)
{
    static_cast<ZuviDanmakuXMLParser *>(userData)->didStartElement(name, attributes);
}

void ZuviDanmakuXMLParser::endElementHandler(void *userData, const char *name)
{
    static_cast<ZuviDanmakuXMLParser *>(userData)->didEndElement(name);
}

void ZuviDanmakuXMLParser::characterDataHandler(void *userData, const char *text, int length)
{
    static_cast<ZuviDanmakuXMLParser *>(userData)->foundCharacters(text, length);
}
