// The demo catalogue: uploaders, videos over the ranking regions and their
// parts, the orders of the lists, picture and media addresses, and the shapes
// the list and detail endpoints carry a video in. Danmaku and comments are
// generated in zuvidemocontentdanmaku.cpp, the following feed in
// zuvidemocontentfeed.cpp.
#include "zuvidemocontent.h"

#include "zuvidemorandom.h"

#include <algorithm>
#include <cmath>

namespace {
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

// A count spread over many orders of magnitude, as real counts are.
qint64 spreadCount(ZuviDemoRandom &random, double maxPower)
{
    const double power = random.unit() * maxPower;
    return qint64(std::pow(10.0, power)) - 1 + random.below(10);
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

QString ZuviDemoContent::regionRoute(int rid)
{
    for (const ZuviDemoRegion &region : regions()) {
        if (region.rid == rid)
            return region.route;
    }
    return QString();
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
