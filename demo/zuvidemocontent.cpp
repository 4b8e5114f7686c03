#include "zuvidemocontent.h"

#include "zuvidemorandom.h"

#include <QDateTime>
#include <QJsonDocument>
#include <QSet>

#include <algorithm>
#include <cmath>

namespace {
// Streams of the generator: each kind of thing draws from its own stream so
// that adding one kind never shifts the numbers of another.
enum Stream : quint64 {
    OwnerStream = 1,
    VideoStream,
    BVIDStream,
    DanmakuStream,
    CommentStream,
    FeedStream,
    OrderStream,
};

// Content published before this moment (2026-01-01 00:00 UTC), so that the
// same seed gives the same dates whatever day the service runs.
constexpr qint64 kEpoch = 1767225600;
const char kBVAlphabet[] = "fZodR9XQDSUm21yCkr6zBqiveYah8bt4xsWpHnJE7jL5VG3guMTKNPAwcF";

const QStringList kOwnerFirst = {"小",   "阿",   "老",   "大",     "橙子", "青柠",
                                 "木木", "星野", "白熊", "纸飞机", "晚风", "豆包"};
const QStringList kOwnerSecond = {"的动画屋", "游戏频道", "音乐日记", "爱跳舞",  "说电影",
                                  "科技笔记", "画画中",   "吃遍全城", "玩车记",  "穿搭研究所",
                                  "运动日常", "和猫猫",   "讲知识",   "AI实验室"};

// Title pieces for each region, in the order of ZuviDemoContent::regions().
const QList<QStringList> kRegionTopics = {
    {"原创动画短片", "新番一周速览", "手书", "逐帧动画", "动画制作幕后"},
    {"通关实况", "速通挑战", "独立游戏推荐", "像素游戏", "全成就攻略"},
    {"魔性剪辑", "循环到停不下来", "名场面混剪", "鬼畜调教", "万恶之源"},
    {"翻唱", "原创单曲", "钢琴改编", "吉他弹唱", "乐队现场"},
    {"宅舞", "街舞 Battle", "古典舞", "翻跳", "舞蹈教学"},
    {"电影解说", "影视混剪", "冷门佳片", "幕后花絮", "一口气看完"},
    {"综艺名场面", "明星访谈", "追星日常", "节目花絮", "年度盘点"},
    {"科普", "历史冷知识", "数学之美", "物理实验", "经济学入门"},
    {"开箱", "手机评测", "装机", "Qt 编程", "Linux 小技巧"},
    {"AI 绘画", "大模型实测", "AI 配音", "智能体", "神经网络"},
    {"板绘过程", "水彩", "速写", "角色设计", "临摹大师"},
    {"家常菜", "深夜食堂", "烘焙", "街头小吃", "一人食"},
    {"试驾", "改装", "自驾游", "新能源车", "老爷车修复"},
    {"穿搭", "仿妆", "护肤", "发型改造", "平价好物"},
    {"足球集锦", "篮球教学", "健身打卡", "骑行", "马拉松"},
    {"猫猫", "狗狗", "野生动物", "萌宠日常", "水族箱"},
};
const QStringList kTitlePrefix = {"【4K】", "【合集】", "【新人UP】", "【高能】", "", "", "", ""};
const QStringList kTitleHooks = {"新手也能看懂", "这次真的不一样", "挑战一百天",   "全程高能",
                                 "从零开始",     "幕后全记录",     "一镜到底",     "周末特别篇",
                                 "花了三个月",   "终极对比",       "十分钟讲清楚", "和粉丝一起",
                                 "年度总结",     "第一视角",       "慢动作回放",   "冷知识合集"};
const QStringList kTitleSuffix = {"，第一次做这种视频",
                                  "（完整版）",
                                  "！看到最后",
                                  " & 幕后",
                                  "，你一定没见过",
                                  "",
                                  "",
                                  "",
                                  " #2",
                                  " 终于来了"};
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

// A count spread over many orders of magnitude, as real counts are.
qint64 spreadCount(ZuviDemoRandom &random, double maxPower)
{
    const double power = random.unit() * maxPower;
    return qint64(std::pow(10.0, power)) - 1 + random.below(10);
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

ZuviDemoContent::ZuviDemoContent(quint64 seed) : m_seed(seed)
{
    makeOwners();
    makeVideos();
    makeOrders();
    makeFeed();
}

const QList<ZuviDemoRegion> &ZuviDemoContent::regions()
{
    static const QList<ZuviDemoRegion> table = {
        {1005, "动画", "douga"},  {1008, "游戏", "game"},        {1007, "鬼畜", "kichiku"},
        {1003, "音乐", "music"},  {1004, "舞蹈", "dance"},       {1001, "影视", "cinephile"},
        {1002, "娱乐", "ent"},    {1010, "知识", "knowledge"},   {1012, "科技数码", "tech"},
        {1011, "AI", "ai"},       {1006, "绘画", "painting"},    {1020, "美食", "food"},
        {1013, "汽车", "car"},    {1014, "时尚美妆", "fashion"}, {1018, "体育运动", "sports"},
        {1024, "动物", "animal"},
    };
    return table;
}

const QList<ZuviDemoClip> &ZuviDemoContent::clips()
{
    // Must match demo/make-media.sh.
    static const QList<ZuviDemoClip> table = {{"demo-a", 30}, {"demo-b", 12}};
    return table;
}

QString ZuviDemoContent::regionName(int rid)
{
    for (const ZuviDemoRegion &region : regions()) {
        if (region.rid == rid)
            return region.name;
    }
    return QStringLiteral("全站");
}

void ZuviDemoContent::makeOwners()
{
    for (int i = 0; i < kOwnerCount; ++i) {
        ZuviDemoRandom random(m_seed, OwnerStream, i);
        ZuviDemoOwner owner;
        owner.mid = 3000000 + i * 7919 + random.below(7000);
        owner.name = kOwnerFirst.at(i % kOwnerFirst.size()) +
                     kOwnerSecond.at((i / kOwnerFirst.size() * 5 + i) % kOwnerSecond.size());
        owner.sign = QStringLiteral("每周更新，欢迎关注 No.%1").arg(i + 1);
        owner.level = 1 + random.below(6);
        owner.follower = spreadCount(random, 7.5);
        m_owners.append(owner);
    }
}

QString ZuviDemoContent::makeBVID(int index)
{
    ZuviDemoRandom random(m_seed, BVIDStream, index);
    for (;;) {
        QString bvid = QStringLiteral("BV1");
        for (int i = 0; i < 9; ++i)
            bvid += QLatin1Char(kBVAlphabet[random.below(int(sizeof(kBVAlphabet)) - 1)]);
        if (!m_byBVID.contains(bvid))
            return bvid;
    }
}

ZuviDemoVideo ZuviDemoContent::makeVideo(int index)
{
    ZuviDemoRandom random(m_seed, VideoStream, index);
    ZuviDemoVideo video;
    video.index = index;
    video.aid = 100000000 + qint64(index) * 104729 + random.below(100000);
    video.bvid = makeBVID(index);
    const int regionIndex = index % regions().size();
    video.rid = regions().at(regionIndex).rid;
    video.ownerIndex = random.below(kOwnerCount);
    const QStringList &topics = kRegionTopics.at(regionIndex);
    video.title = random.pick(kTitlePrefix) + random.pick(topics) + QStringLiteral("：") +
                  random.pick(kTitleHooks) + random.pick(kTitleSuffix);
    video.desc = QStringLiteral("%1 · %2\n简介：这是演示服务生成的第 %3 个视频。")
                     .arg(regions().at(regionIndex).name, random.pick(topics))
                     .arg(index + 1);
    // Every tier of the count texts shows up: nothing, plain numbers, 万 and 亿.
    if (index == 7)
        video.view = 0;
    else if (index % 97 == 3)
        video.view = 100000000 + random.between(0, 250000000);
    else
        video.view = spreadCount(random, 7.9);
    video.danmaku = video.view / (20 + random.below(60));
    video.reply = video.view / (50 + random.below(200));
    video.like = video.view / (8 + random.below(20));
    video.coin = video.like / (2 + random.below(6));
    video.favorite = video.like / (2 + random.below(4));
    video.share = video.like / (5 + random.below(20));
    video.duration =
        random.chance(0.08) ? int(random.between(3600, 7200)) : int(random.between(15, 1500));
    video.pubdate = kEpoch - random.between(3600, 400LL * 86400);
    const int partCount = random.chance(0.12) ? int(random.between(2, 6)) : 1;
    for (int p = 1; p <= partCount; ++p) {
        ZuviDemoPage page;
        page.cid = video.aid * 10 + p;
        page.page = p;
        page.part = partCount == 1 ? video.title.left(20) : QStringLiteral("第%1集").arg(p);
        if (partCount > 1 && p == 2)
            page.part.clear(); // the client names a part without a title itself
        page.duration = qMax(10, video.duration / partCount);
        video.pages.append(page);
    }
    const int playRoll = random.below(100);
    video.playKind = playRoll < 8    ? ZuviDemoPlayKind::SegmentedOnly
                     : playRoll < 20 ? ZuviDemoPlayKind::DashAtBest
                                     : ZuviDemoPlayKind::Progressive;
    video.clip = random.below(clips().size());
    if (video.view == 0 || random.chance(0.04))
        video.danmakuDocumentSize = 0;
    else if (index % 50 == 1)
        video.danmakuDocumentSize = 7000 + random.below(1000);
    else
        video.danmakuDocumentSize = int(qMin<qint64>(3000, 40 + video.danmaku % 1500));
    video.commentTotal = video.reply == 0 ? 0 : int(qMin<qint64>(180, 3 + video.reply % 180));
    return video;
}

void ZuviDemoContent::makeVideos()
{
    for (int i = 0; i < kVideoCount; ++i) {
        ZuviDemoVideo video = makeVideo(i);
        m_byBVID.insert(video.bvid, i);
        m_byAID.insert(video.aid, i);
        for (const ZuviDemoPage &page : video.pages)
            m_byCID.insert(page.cid, i);
        m_videos.append(video);
    }
}

void ZuviDemoContent::makeOrders()
{
    for (int i = 0; i < m_videos.size(); ++i)
        m_popularOrder.append(i);
    // Popular: most played first, ties by index so the order is total.
    std::sort(m_popularOrder.begin(), m_popularOrder.end(), [this](int a, int b) {
        const qint64 va = m_videos.at(a).view + m_videos.at(a).like * 3;
        const qint64 vb = m_videos.at(b).view + m_videos.at(b).like * 3;
        return va != vb ? va > vb : a < b;
    });
    // Recommended: a seeded shuffle.
    m_recommendedOrder = m_popularOrder;
    ZuviDemoRandom random(m_seed, OrderStream);
    for (int i = m_recommendedOrder.size() - 1; i > 0; --i)
        std::swap(m_recommendedOrder[i], m_recommendedOrder[random.below(i + 1)]);
}

const ZuviDemoVideo *ZuviDemoContent::videoForBVID(const QString &bvid) const
{
    const auto it = m_byBVID.constFind(bvid);
    return it == m_byBVID.constEnd() ? nullptr : &m_videos.at(*it);
}

const ZuviDemoVideo *ZuviDemoContent::videoForAID(qint64 aid) const
{
    const auto it = m_byAID.constFind(aid);
    return it == m_byAID.constEnd() ? nullptr : &m_videos.at(*it);
}

const ZuviDemoVideo *ZuviDemoContent::videoForCID(qint64 cid) const
{
    const auto it = m_byCID.constFind(cid);
    return it == m_byCID.constEnd() ? nullptr : &m_videos.at(*it);
}

const ZuviDemoOwner *ZuviDemoContent::ownerForMID(qint64 mid) const
{
    for (const ZuviDemoOwner &owner : m_owners) {
        if (owner.mid == mid)
            return &owner;
    }
    return nullptr;
}

QString ZuviDemoContent::coverURL(const ZuviDemoVideo &video) const
{
    return m_origin + QStringLiteral("/img/cover/%1.jpg").arg(video.bvid);
}

QString ZuviDemoContent::faceURL(qint64 mid) const
{
    return m_origin + QStringLiteral("/img/face/%1.jpg").arg(mid);
}

QString ZuviDemoContent::pictureURL(const QString &key) const
{
    return m_origin + QStringLiteral("/img/pic/%1.jpg").arg(key);
}

QString ZuviDemoContent::mediaURL(const ZuviDemoVideo &video, int quality) const
{
    const int height = quality >= 64 ? 720 : quality >= 32 ? 480 : 360;
    return m_origin +
           QStringLiteral("/media/%1-%2.mp4").arg(clips().at(video.clip).name).arg(height);
}

QList<int> ZuviDemoContent::recommendedPage(int page, int pageSize) const
{
    // The feed never runs dry: later pages wrap around the shuffled order,
    // shifted so that a page does not repeat the one a round before it.
    QList<int> result;
    const int count = m_recommendedOrder.size();
    const int start = (qMax(1, page) - 1) * pageSize;
    for (int i = 0; i < pageSize; ++i) {
        const int position = start + i;
        result.append(m_recommendedOrder.at((position + position / count * 7) % count));
    }
    return result;
}

QList<int> ZuviDemoContent::ranking(int rid, int limit) const
{
    QList<int> result;
    for (int index : m_popularOrder) {
        if (result.size() >= limit)
            break;
        if (rid == 0 || m_videos.at(index).rid == rid)
            result.append(index);
    }
    return result;
}

QList<int> ZuviDemoContent::related(const ZuviDemoVideo &video) const
{
    QList<int> result;
    for (int index : m_popularOrder) {
        if (result.size() >= 20)
            break;
        const ZuviDemoVideo &other = m_videos.at(index);
        if (other.index != video.index &&
            (other.rid == video.rid || other.ownerIndex == video.ownerIndex))
            result.append(index);
    }
    return result;
}

QList<int> ZuviDemoContent::search(const QString &keyword) const
{
    QList<int> result;
    const QString needle = keyword.trimmed();
    if (needle.isEmpty())
        return result;
    for (int index : m_popularOrder) {
        const ZuviDemoVideo &video = m_videos.at(index);
        if (video.title.contains(needle, Qt::CaseInsensitive) ||
            m_owners.at(video.ownerIndex).name.contains(needle, Qt::CaseInsensitive) ||
            regionName(video.rid).contains(needle, Qt::CaseInsensitive))
            result.append(index);
    }
    return result;
}

QString ZuviDemoContent::formatDuration(int seconds)
{
    if (seconds >= 3600)
        return QStringLiteral("%1:%2:%3")
            .arg(seconds / 3600)
            .arg(seconds / 60 % 60, 2, 10, QLatin1Char('0'))
            .arg(seconds % 60, 2, 10, QLatin1Char('0'));
    return QStringLiteral("%1:%2").arg(seconds / 60).arg(seconds % 60, 2, 10, QLatin1Char('0'));
}

QString ZuviDemoContent::highlighted(const QString &title, const QString &keyword)
{
    // The matched words are wrapped in highlight tags, and the rest of the
    // title is escaped the way the search site escapes its titles.
    QString result;
    const QString needle = keyword.trimmed();
    int from = 0;
    while (!needle.isEmpty()) {
        const int at = title.indexOf(needle, from, Qt::CaseInsensitive);
        if (at < 0)
            break;
        result += title.mid(from, at - from).toHtmlEscaped();
        result += QStringLiteral("<em class=\"keyword\">") + title.mid(at, needle.size()) +
                  QStringLiteral("</em>");
        from = at + needle.size();
    }
    result += title.mid(from).toHtmlEscaped();
    return result;
}

QJsonObject ZuviDemoContent::ownerDictionary(int ownerIndex) const
{
    const ZuviDemoOwner &owner = m_owners.at(ownerIndex);
    return QJsonObject{{"mid", owner.mid}, {"name", owner.name}, {"face", faceURL(owner.mid)}};
}

QJsonObject ZuviDemoContent::statDictionary(const ZuviDemoVideo &video) const
{
    return QJsonObject{{"view", video.view},   {"danmaku", video.danmaku},
                       {"reply", video.reply}, {"favorite", video.favorite},
                       {"coin", video.coin},   {"share", video.share},
                       {"like", video.like}};
}

QJsonObject ZuviDemoContent::popularDictionary(const ZuviDemoVideo &video) const
{
    return QJsonObject{
        {"aid", video.aid},
        {"bvid", video.bvid},
        {"cid", video.pages.first().cid},
        {"region", video.rid},
        {"region_name", regionName(video.rid)},
        {"pic", coverURL(video)},
        {"title", video.title},
        {"pubdate", video.pubdate},
        {"desc", video.desc},
        {"duration", video.duration},
        {"owner", ownerDictionary(video.ownerIndex)},
        {"stat", statDictionary(video)},
    };
}

QJsonObject ZuviDemoContent::recommendedDictionary(const ZuviDemoVideo &video) const
{
    // The recommendation feed's own shape: "id" is the aid and the stat has
    // no reply count, so the client's flexible reader takes the danmaku one.
    return QJsonObject{
        {"id", video.aid},
        {"bvid", video.bvid},
        {"cid", video.pages.first().cid},
        {"uri", m_origin + "/video/" + video.bvid},
        {"pic", coverURL(video)},
        {"title", video.title},
        {"duration", video.duration},
        {"pubdate", video.pubdate},
        {"owner", ownerDictionary(video.ownerIndex)},
        {"stat",
         QJsonObject{{"view", video.view}, {"like", video.like}, {"danmaku", video.danmaku}}},
    };
}

QJsonObject ZuviDemoContent::legacyRankingDictionary(const ZuviDemoVideo &video) const
{
    // The older ranking's flat shape: no "owner" and no "stat" objects.
    return QJsonObject{
        {"aid", QString::number(video.aid)},
        {"bvid", video.bvid},
        {"title", video.title},
        {"author", m_owners.at(video.ownerIndex).name},
        {"description", video.desc},
        {"pic", coverURL(video)},
        {"play", video.view},
        {"video_review", video.reply},
        {"duration", formatDuration(video.duration)},
    };
}

QJsonObject ZuviDemoContent::searchDictionary(const ZuviDemoVideo &video,
                                              const QString &keyword) const
{
    return QJsonObject{
        {"aid", video.aid},
        {"bvid", video.bvid},
        {"author", m_owners.at(video.ownerIndex).name},
        {"title", highlighted(video.title, keyword)},
        {"description", video.desc},
        {"pic", coverURL(video)},
        {"play", video.view},
        {"video_review", video.reply},
        {"pubdate", video.pubdate},
        {"duration", formatDuration(video.duration)},
    };
}

QJsonObject ZuviDemoContent::viewDictionary(const ZuviDemoVideo &video) const
{
    QJsonArray pages;
    for (const ZuviDemoPage &page : video.pages)
        pages.append(QJsonObject{{"cid", page.cid},
                                 {"page", page.page},
                                 {"part", page.part},
                                 {"duration", page.duration}});
    QJsonObject view = popularDictionary(video);
    view.insert("pages", pages);
    return view;
}

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

QJsonObject ZuviDemoContent::feedAuthor(int ownerIndex, const QString &action, qint64 time) const
{
    const ZuviDemoOwner &owner = m_owners.at(ownerIndex);
    return QJsonObject{
        {"mid", owner.mid},
        {"name", owner.name},
        {"face", faceURL(owner.mid)},
        {"pub_action", action},
        {"pub_time", QDateTime::fromSecsSinceEpoch(time, Qt::UTC).toString("MM-dd hh:mm")},
    };
}

QJsonObject ZuviDemoContent::feedVideoItem(int index, const ZuviDemoVideo &video, qint64 time) const
{
    const QJsonObject archive{
        {"aid", QString::number(video.aid)},
        {"bvid", video.bvid},
        {"title", video.title},
        {"cover", coverURL(video)},
        {"desc", video.desc},
        {"duration_text", formatDuration(video.duration)},
        {"jump_url", m_origin + "/video/" + video.bvid + "/"},
        {"stat", QJsonObject{{"play", QString::number(video.view)},
                             {"danmaku", QString::number(video.danmaku)}}},
    };
    return QJsonObject{
        {"id_str", QString::number(900000000000LL + index)},
        {"basic", QJsonObject{{"comment_id_str", QString::number(video.aid)},
                              {"comment_type", 1},
                              {"rid_str", QString::number(video.aid)}}},
        {"modules",
         QJsonObject{
             {"module_author", feedAuthor(video.ownerIndex, "投稿了视频", time)},
             {"module_dynamic",
              QJsonObject{{"desc", index % 3 == 0
                                       ? QJsonValue(QJsonObject{{"text", "新视频来啦，求三连！"}})
                                       : QJsonValue()},
                          {"major", QJsonObject{{"archive", archive}}}}},
         }},
    };
}

QJsonObject ZuviDemoContent::feedLiveItem(int index, int ownerIndex, qint64 time) const
{
    ZuviDemoRandom random(m_seed, FeedStream, 10000 + index);
    const ZuviDemoOwner &owner = m_owners.at(ownerIndex);
    const bool live = index % 2 == 0;
    const QJsonObject playInfo{
        {"title", owner.name + "的直播间：" + (live ? "今晚一起玩" : "明天见")},
        {"room_id", 21000000 + index},
        {"uid", owner.mid},
        {"cover", pictureURL(QStringLiteral("live-%1").arg(index))},
        {"online", random.between(0, 300000)},
        {"parent_area_name", "虚拟主播"},
        {"area_name", "聊天"},
        {"watched_show",
         QJsonObject{{"text_large", QStringLiteral("%1人看过").arg(random.between(10, 99999))},
                     {"text_small", "看过"}}},
        {"live_status", live ? 1 : 0},
        {"link", m_origin + QStringLiteral("/live/%1").arg(21000000 + index)},
        {"live_id", QString::number(7700000 + index)},
    };
    // The live card's content travels as a JSON text inside the JSON.
    const QString content = QString::fromUtf8(
        QJsonDocument(QJsonObject{{"live_play_info", playInfo}}).toJson(QJsonDocument::Compact));
    return QJsonObject{
        {"id_str", QString::number(900000000000LL + index)},
        {"basic", QJsonObject{{"rid_str", QString::number(7700000 + index)}, {"comment_type", 0}}},
        {"modules",
         QJsonObject{
             {"module_author", feedAuthor(ownerIndex, "直播了", time)},
             {"module_dynamic",
              QJsonObject{
                  {"major", QJsonObject{{"live_rcmd", QJsonObject{{"content", content}}}}}}},
         }},
    };
}

QJsonObject ZuviDemoContent::feedArticleItem(int index, int ownerIndex, qint64 time) const
{
    const qint64 articleID = 30000000 + index;
    const QJsonObject article{
        {"id", articleID},
        {"title",
         QStringLiteral("专栏：%1的第 %2 篇笔记").arg(m_owners.at(ownerIndex).name).arg(index)},
        {"desc", "今天聊聊创作心得。[图片]\n第一点，坚持；\n\n第二点，  多看多练。"},
        {"label", QStringLiteral("%1阅读").arg(1000 + index * 37)},
        {"jump_url", m_origin + QStringLiteral("/read/cv%1").arg(articleID)},
        {"covers", QJsonArray{pictureURL(QStringLiteral("article-%1").arg(index))}},
    };
    return QJsonObject{
        {"id_str", QString::number(900000000000LL + index)},
        {"basic", QJsonObject{{"rid_str", QString::number(articleID)},
                              {"comment_type", 12},
                              {"comment_id_str", QString::number(articleID)}}},
        {"modules",
         QJsonObject{
             {"module_author", feedAuthor(ownerIndex, "投稿了文章", time)},
             {"module_dynamic", QJsonObject{{"major", QJsonObject{{"article", article}}}}},
         }},
    };
}

QJsonObject ZuviDemoContent::feedDrawItem(int index, int ownerIndex, qint64 time) const
{
    // Picture posts with no picture, one, several and more than the four a
    // card shows (one of them twice).
    const int pictureCount = index % 5 == 0 ? 0 : index % 5 == 1 ? 1 : index % 5 == 2 ? 3 : 7;
    QJsonArray pictures;
    for (int i = 0; i < pictureCount; ++i) {
        const QString key = QStringLiteral("draw-%1-%2").arg(index).arg(i == 6 ? 0 : i);
        pictures.append(QJsonObject{{"src", pictureURL(key)}, {"width", 800}, {"height", 600}});
    }
    const bool silent = pictureCount == 0 && index % 2 == 0;
    const QJsonObject desc{
        {"text", silent ? QString() : QStringLiteral("分享图片 %1 张").arg(pictureCount)},
        {"rich_text_nodes", QJsonArray()}};
    const qint64 drawID = 40000000 + index;
    return QJsonObject{
        {"id_str", QString::number(900000000000LL + index)},
        {"basic", QJsonObject{{"rid_str", QString::number(drawID)},
                              {"comment_type", 11},
                              {"comment_id_str", QString::number(drawID)}}},
        {"modules",
         QJsonObject{
             {"module_author", feedAuthor(ownerIndex, "", time)},
             {"module_dynamic",
              QJsonObject{{"desc", desc},
                          {"major", QJsonObject{{"draw", QJsonObject{{"id", drawID},
                                                                     {"items", pictures}}}}}}},
         }},
    };
}

QJsonObject ZuviDemoContent::feedTextItem(int index, int ownerIndex, qint64 time,
                                          bool forward) const
{
    QJsonObject item{
        {"id_str", QString::number(900000000000LL + index)},
        {"basic",
         QJsonObject{{"rid_str", QString::number(50000000 + index)}, {"comment_type", 17}}},
    };
    // Text made of rich-text nodes, the way the feed sends mentions and emoji.
    const QJsonObject desc{
        {"text", ""},
        {"rich_text_nodes",
         QJsonArray{
             QJsonObject{{"text", "今天也要加油呀 "}},
             QJsonObject{{"text", ""}, {"orig_text", "[打call]"}},
             QJsonObject{{"text", "@" + m_owners.at((ownerIndex + 1) % kOwnerCount).name}}}}};
    QJsonObject dynamic;
    if (!forward)
        dynamic.insert("desc", desc);
    item.insert("modules", QJsonObject{{"module_author",
                                        feedAuthor(ownerIndex, forward ? "转发了动态" : "", time)},
                                       {"module_dynamic", dynamic}});
    if (forward)
        item.insert("orig",
                    feedTextItem(index + 500, (ownerIndex + 3) % kOwnerCount, time - 3600, false));
    return item;
}

void ZuviDemoContent::makeFeed()
{
    // The demo account follows the first twenty uploaders.
    qint64 time = kEpoch - 600;
    for (int i = 0; i < kFeedItemCount; ++i) {
        ZuviDemoRandom random(m_seed, FeedStream, i);
        const int ownerIndex = random.below(20);
        time -= random.between(300, 4 * 3600);
        const int kind = i % 10;
        QJsonObject item;
        if (kind < 5) {
            // A video of that uploader, or any video when they have none.
            int found = random.below(kVideoCount);
            for (int v = 0; v < kVideoCount; ++v) {
                if (m_videos.at((found + v) % kVideoCount).ownerIndex == ownerIndex) {
                    found = (found + v) % kVideoCount;
                    break;
                }
            }
            item = feedVideoItem(i, m_videos.at(found), time);
        } else if (kind == 5) {
            item = feedLiveItem(i, ownerIndex, time);
        } else if (kind == 6) {
            item = feedArticleItem(i, ownerIndex, time);
        } else if (kind == 7 || kind == 8) {
            item = feedDrawItem(i, ownerIndex, time);
        } else {
            item = feedTextItem(i, ownerIndex, time, i % 20 == 9);
        }
        m_feed.append(item);
    }
}
