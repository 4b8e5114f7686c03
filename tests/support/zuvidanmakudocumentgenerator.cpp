#include "zuvidanmakudocumentgenerator.h"

#include <QString>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>

namespace {

// A piece of comment text longer than one character: how the document
// spells it, and what it reads as.
struct Piece {
    const char *xml;
    const char16_t *text;
};

constexpr char kCJK[] = "哈的了是我不在人有这个上们来到时大地为子中你说生年着就那和要她出也得"
                        "里后自以会家可下而过天去能对小多然心学么之都好看起发当没成只如事把还用"
                        "第样道想作种开美从无情己面最女但现前些所同日手又行意动方期头经长儿回位"
                        "分爱老因很给名法间知世什两次使身者被高已亲其进此话常与活正感见明问力理";
constexpr Piece kPhrases[] = {
    {"哈哈哈哈", u"哈哈哈哈"},
    {"前方高能", u"前方高能"},
    {"awsl", u"awsl"},
    {"233333", u"233333"},
    {"泪目", u"泪目"},
    {"好耶", u"好耶"},
    {"来了来了", u"来了来了"},
    {"666", u"666"},
    {"hhh", u"hhh"},
    {"nice", u"nice"},
    {"第一", u"第一"},
    {"？？？", u"？？？"},
    {"www", u"www"},
    {"OP", u"OP"},
    {" ", u" "},
};
constexpr Piece kEmoji[] = {{"😂", u"😂"}, {"🤣", u"🤣"}, {"👍", u"👍"}, {"😭", u"😭"},
                            {"🔥", u"🔥"}, {"❤", u"❤"},       {"✨", u"✨"}, {"🐱", u"🐱"}};
constexpr Piece kEntities[] = {{"&amp;", u"&"},     {"&lt;", u"<"},       {"&gt;", u">"},
                               {"&quot;", u"\""},   {"&apos;", u"'"},     {"&#x1F602;", u"😂"},
                               {"&#12354;", u"あ"}, {"&amp;lt;", u"&lt;"}};
constexpr char kASCII[] = "abcdefghijklmnopqrstuvwxyz0123456789!?~ ";
constexpr quint32 kPalette[] = {16711680, 16776960, 65280,   52479,    16744319,
                                10027263, 16737792, 4351678, 15138834, 9487136};

// The CJK pool is UTF-8: every character there is three bytes.
constexpr int kCJKCount = int(sizeof(kCJK) - 1) / 3;

} // namespace

ZuviDanmakuDocumentGenerator::ZuviDanmakuDocumentGenerator(quint64 seed) : m_state(seed) {}

QByteArray ZuviDanmakuDocumentGenerator::document(int count, QList<ZuviDanmakuItem> *expected)
{
    return generate(count, -1, expected);
}

QByteArray ZuviDanmakuDocumentGenerator::documentOfSize(qsizetype bytes,
                                                        QList<ZuviDanmakuItem> *expected)
{
    // About 130 bytes per comment; the count only sizes the video and bursts.
    return generate(int(bytes / 130) + 1, bytes, expected);
}

QByteArray ZuviDanmakuDocumentGenerator::generate(int count, qsizetype bytes,
                                                  QList<ZuviDanmakuItem> *expected)
{
    QByteArray xml;
    xml.reserve(bytes > 0 ? bytes + 4096 : qsizetype(count) * 140 + 256);
    if (expected) {
        expected->clear();
        expected->reserve(count);
    }
    beginDocument(xml, count);
    if (bytes > 0) {
        while (xml.size() < bytes)
            appendComment(xml, expected);
    } else {
        for (int i = 0; i < count; ++i)
            appendComment(xml, expected);
    }
    xml += "</i>\n";
    return xml;
}

void ZuviDanmakuDocumentGenerator::beginDocument(QByteArray &xml, int plannedCount)
{
    // Longer videos gather more comments; comments cluster around moments
    // (a joke, a goal), about one burst per 400 comments.
    m_duration = 240.0 + plannedCount / 25.0;
    m_burstCentres.clear();
    const int bursts = std::max(8, plannedCount / 400);
    for (int i = 0; i < bursts; ++i)
        m_burstCentres.append(uniform() * m_duration);
    xml += "<?xml version=\"1.0\" encoding=\"UTF-8\"?><i><oid>10086</oid><count>";
    xml += QByteArray::number(plannedCount);
    xml += "</count><state>0</state>";
}

double ZuviDanmakuDocumentGenerator::nextTime()
{
    double time;
    if (uniform() < 0.6) {
        // A burst: a few seconds around its centre, denser near it.
        const double centre = m_burstCentres.at(below(int(m_burstCentres.size())));
        const double spread = (uniform() + uniform() + uniform() - 1.5) * 8.0;
        time = centre + spread;
    } else {
        time = uniform() * m_duration;
    }
    return std::clamp(time, 0.0, m_duration);
}

void ZuviDanmakuDocumentGenerator::appendComment(QByteArray &xml, QList<ZuviDanmakuItem> *expected)
{
    const double roll = uniform();
    const int mode = roll < 0.89 ? 1 : roll < 0.94 ? 5 : roll < 0.99 ? 4 : 6 + below(3);
    const double sizeRoll = uniform();
    const int size = sizeRoll < 0.88 ? 25 : sizeRoll < 0.97 ? 18 : 36;
    const double colourRoll = uniform();
    const quint32 colour = colourRoll < 0.78   ? 16777215u
                           : colourRoll < 0.99 ? kPalette[below(int(std::size(kPalette)))]
                                               : 0u;
    m_sendTime += below(90);
    m_nextID += 1 + below(100000);
    const QByteArray timeText = QByteArray::number(nextTime(), 'f', 5);
    const QByteArray id = QByteArray::number(m_nextID);

    xml += "<d p=\"";
    xml += timeText;
    xml += ',';
    xml += QByteArray::number(mode);
    xml += ',';
    xml += QByteArray::number(size);
    xml += ',';
    xml += QByteArray::number(colour);
    xml += ',';
    xml += QByteArray::number(m_sendTime);
    xml += ",0,";
    xml += QByteArray::number(quint32(next()), 16);
    xml += ',';
    xml += id;
    xml += ',';
    xml += QByteArray::number(1 + below(11));
    xml += "\">";
    QString decoded;
    appendText(xml, expected ? &decoded : nullptr);
    xml += "</d>";

    if (expected) {
        ZuviDanmakuItem item;
        item.text = decoded;
        item.time = timeText.toDouble();
        item.mode = mode;
        item.fontSize = float(std::clamp(size, 13, 20));
        item.colorRGB = colour;
        item.danmakuID = QString::fromLatin1(id);
        expected->append(item);
    }
}

void ZuviDanmakuDocumentGenerator::appendText(QByteArray &xml, QString *decoded)
{
    static const QString cjkText = QString::fromUtf8(kCJK);
    // Mostly short: 2–40 characters with the weight on a handful.
    const double u = uniform();
    const int length = 2 + int(38.0 * u * u * u);
    const double style = uniform(); // CJK-heavy, ASCII-heavy or mixed with emoji
    int written = 0;
    while (written < length) {
        const double pick = uniform();
        const Piece *piece = nullptr;
        if (pick < 0.03) {
            piece = &kEntities[below(int(std::size(kEntities)))];
        } else if (pick < 0.10) {
            piece = &kPhrases[below(int(std::size(kPhrases)))];
        } else if (style > 0.85 && pick < 0.25) {
            piece = &kEmoji[below(int(std::size(kEmoji)))];
        } else if (style < 0.55 || (style > 0.85 && pick < 0.7)) {
            const int index = below(kCJKCount);
            xml.append(kCJK + 3 * index, 3);
            if (decoded)
                decoded->append(cjkText.at(index));
            ++written;
            continue;
        } else {
            const char c = kASCII[below(int(sizeof(kASCII) - 1))];
            xml.append(c);
            if (decoded)
                decoded->append(QLatin1Char(c));
            ++written;
            continue;
        }
        xml += piece->xml;
        const QStringView text(piece->text);
        if (decoded)
            decoded->append(text);
        written += int(text.size());
    }
}

quint64 ZuviDanmakuDocumentGenerator::next()
{
    // splitmix64: tiny, fast and the same everywhere.
    quint64 z = (m_state += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
}

double ZuviDanmakuDocumentGenerator::uniform()
{
    return double(next() >> 11) * 0x1.0p-53;
}

int ZuviDanmakuDocumentGenerator::below(int bound)
{
    return int(next() % quint64(bound));
}
