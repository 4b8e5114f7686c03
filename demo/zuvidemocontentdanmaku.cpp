// Danmaku documents and comments of the demo videos: the texts, modes,
// sizes and colours a danmaku list carries, its XML document, and the
// generated replies of a video.
#include "zuvidemocontent.h"

#include "zuvidemorandom.h"

#include <cmath>

namespace {
const QStringList kDanmakuTexts = {
    "哈哈哈哈哈哈",
    "前方高能",
    "来了来了",
    "awsl",
    "2333333",
    "好耶",
    "泪目",
    "名场面",
    "打卡",
    "第一次看，好看",
    "这里好燃",
    "空降成功",
    "UP主辛苦了",
    "太强了吧",
    "下次一定",
    "弹幕护体",
    "正片开始",
    "这个画面绝了",
    "<3 <3",
    "Tom & Jerry",
    "awsl awsl awsl",
    "爷青回",
    "建议改成：\"好看\"",
    "全体起立",
    "hhhhhhhh",
    "？？？",
    "三连了",
    "这BGM叫什么",
    "已循环十遍",
    "笑死我了",
};
const QStringList kCommentTexts = {
    "讲得太清楚了，收藏了慢慢看",
    "UP主更新好快，已三连",
    "第 %1 次来看这个视频",
    "有没有人和我一样是从推荐点进来的",
    "这期的剪辑节奏真好 &amp; 配乐也很棒",
    "求BGM！",
    "前排 <em>围观</em>",
    "看完了，意犹未尽",
    "期待下一期 &gt;_&lt;",
    "细节拉满，良心UP",
};
const QList<quint32> kDanmakuColors = {0xFFFFFF, 0xFE0302, 0xFFFF00, 0x00CD00, 0x4266BE,
                                       0xCC0273, 0x89D5FF, 0xFFAA02, 0x9B9B9B, 0x00FFFF};
const QList<int> kDanmakuSizes = {25, 25, 25, 18, 36};

QString hex(quint64 value, int width)
{
    return QString::number(value, 16).rightJustified(width, QLatin1Char('0')).right(width);
}

int danmakuMode(ZuviDemoRandom &random)
{
    const int roll = random.below(100);
    if (roll < 72)
        return 1; // flying right to left
    if (roll < 82)
        return 5; // pinned at the top
    if (roll < 92)
        return 4; // pinned at the bottom
    if (roll < 96)
        return 6; // flying left to right
    if (roll < 99)
        return 7; // positioned
    return 8;
}
} // namespace

QList<ZuviDemoDanmaku> ZuviDemoContent::danmaku(qint64 cid) const
{
    QList<ZuviDemoDanmaku> items;
    const ZuviDemoVideo *video = videoForCID(cid);
    if (!video)
        return items;
    // Later parts carry fewer comments than the first, as they do in life.
    const int part = int(cid - video->aid * 10);
    const int count = video->danmakuDocumentSize / part;
    const double length = clips().at(video->clip).seconds;
    ZuviDemoRandom random(m_seed, DanmakuStream, quint64(cid));
    items.reserve(count);
    for (int i = 0; i < count; ++i) {
        ZuviDemoDanmaku item;
        // Denser near the start and around the middle, like a real audience.
        const double roll = random.unit();
        item.time = roll < 0.25   ? random.unit() * length * 0.15
                    : roll < 0.45 ? length * (0.45 + random.unit() * 0.1)
                                  : random.unit() * length;
        item.time = std::floor(item.time * 1000.0) / 1000.0;
        item.mode = danmakuMode(random);
        item.fontSize = random.pick(kDanmakuSizes);
        item.color = random.chance(0.7) ? 0xFFFFFF : random.pick(kDanmakuColors);
        item.sentAt = video->pubdate + random.between(60, 300LL * 86400);
        item.userHash = hex(random.next(), 8);
        item.id = cid * 100000 + i + 1;
        item.text = random.pick(kDanmakuTexts);
        if (random.chance(0.1))
            item.text += QString::number(random.below(1000));
        items.append(item);
    }
    return items;
}

QByteArray ZuviDemoContent::danmakuDocument(qint64 cid, const QList<ZuviDemoDanmaku> &items)
{
    QByteArray xml;
    xml.reserve(128 + items.size() * 96);
    xml.append("<?xml version=\"1.0\" encoding=\"UTF-8\"?><i><cid>")
        .append(QByteArray::number(cid))
        .append("</cid><count>")
        .append(QByteArray::number(items.size()))
        .append("</count>");
    // Texts repeat a lot in a dense document; each is escaped once. The
    // document is written piece by piece into one buffer, since a dense one
    // holds thousands of items.
    QHash<QString, QByteArray> escaped;
    for (const ZuviDemoDanmaku &item : items) {
        auto text = escaped.find(item.text);
        if (text == escaped.end())
            text = escaped.insert(item.text, item.text.toHtmlEscaped().toUtf8());
        const qint64 millis = qRound64(item.time * 1000.0);
        const QByteArray fraction = QByteArray::number(millis % 1000 + 1000);
        xml.append("<d p=\"")
            .append(QByteArray::number(millis / 1000))
            .append('.')
            .append(fraction.constData() + 1, 3)
            .append(',')
            .append(QByteArray::number(item.mode))
            .append(',')
            .append(QByteArray::number(item.fontSize))
            .append(',')
            .append(QByteArray::number(item.color))
            .append(',')
            .append(QByteArray::number(item.sentAt))
            .append(",0,")
            .append(item.userHash.toLatin1())
            .append(',')
            .append(QByteArray::number(item.id))
            .append("\">")
            .append(*text)
            .append("</d>");
    }
    xml.append("</i>");
    return xml;
}

QJsonObject ZuviDemoContent::reply(const ZuviDemoVideo &video, int index) const
{
    ZuviDemoRandom random(m_seed, CommentStream, quint64(video.aid) * 1000 + index);
    const int ownerIndex = random.below(kOwnerCount);
    const ZuviDemoOwner &author = m_owners.at(ownerIndex);
    QString text = random.pick(kCommentTexts);
    if (text.contains(QLatin1String("%1")))
        text = text.arg(index + 2);
    // The hottest first: likes fall with the position.
    const qint64 likes = qMax<qint64>(0, video.like / (10 + index * 7) - random.below(5));
    const qint64 rpid = video.aid * 1000 + index + 1;
    return QJsonObject{
        {"rpid", rpid},
        {"mid", author.mid},
        {"ctime", video.pubdate + 600 + index * 3571},
        {"like", likes},
        {"member", QJsonObject{{"mid", QString::number(author.mid)},
                               {"uname", author.name},
                               {"avatar", faceURL(author.mid)}}},
        {"content", QJsonObject{{"message", text}}},
    };
}
