#pragma once

#include <QHash>
#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>

// One uploader.
struct ZuviDemoOwner {
    qint64 mid = 0;
    QString name;
    QString sign;
    int level = 0;
    qint64 follower = 0;
};

// One ranking region of the service.
struct ZuviDemoRegion {
    int rid = 0;
    QString name;
    QString route;
};

// One part of a video.
struct ZuviDemoPage {
    qint64 cid = 0;
    int page = 1;
    QString part;
    int duration = 0;
};

// How the play-address endpoint answers for a video.
enum class ZuviDemoPlayKind {
    Progressive,   // a single file at every quality
    DashAtBest,    // segmented only at 64; 32 and 16 are single files
    SegmentedOnly, // segmented only, at every quality
};

// A playable clip that demo/make-media.sh renders at 360p, 480p and 720p.
struct ZuviDemoClip {
    QString name;
    int seconds = 0;
};

struct ZuviDemoVideo {
    int index = 0;
    qint64 aid = 0;
    QString bvid;
    QString title;
    QString desc;
    int ownerIndex = 0;
    int rid = 0;
    qint64 view = 0;
    qint64 danmaku = 0;
    qint64 reply = 0;
    qint64 like = 0;
    qint64 coin = 0;
    qint64 favorite = 0;
    qint64 share = 0;
    int duration = 0;
    qint64 pubdate = 0;
    QList<ZuviDemoPage> pages;
    ZuviDemoPlayKind playKind = ZuviDemoPlayKind::Progressive;
    int clip = 0;
    int danmakuDocumentSize = 0; // items in the first part's document
    int commentTotal = 0;        // generated replies, before any posted ones
};

// One generated danmaku or comment, before it is written out.
struct ZuviDemoDanmaku {
    double time = 0;
    int mode = 1;
    int fontSize = 25;
    quint32 color = 0xFFFFFF;
    qint64 sentAt = 0;
    QString userHash;
    qint64 id = 0;
    QString text;
};

// The demo service's content: uploaders, videos over the ranking regions,
// their parts, danmaku documents, comments, the following feed and search,
// all generated from one seed so that the same seed gives the same content.
// Answers point their pictures and media at the service's own origin.
class ZuviDemoContent
{
public:
    static constexpr int kVideoCount = 300;
    static constexpr int kOwnerCount = 48;
    static constexpr int kFeedItemCount = 200;
    static constexpr int kFeedPageSize = 20;
    static constexpr int kSearchPageSize = 20;
    // The signed-in demo account.
    static constexpr qint64 kDemoMID = 20250001;

    explicit ZuviDemoContent(quint64 seed);

    quint64 seed() const { return m_seed; }
    // The feed is made again, because its items carry absolute addresses.
    void setOrigin(const QString &origin);
    QString origin() const { return m_origin; }

    static const QList<ZuviDemoRegion> &regions();
    static const QList<ZuviDemoClip> &clips();
    static QString regionName(int rid);
    // The region's page route on the web site; empty for an unknown rid.
    static QString regionRoute(int rid);

    const QList<ZuviDemoVideo> &videos() const { return m_videos; }
    const QList<ZuviDemoOwner> &owners() const { return m_owners; }
    const ZuviDemoVideo *videoForBVID(const QString &bvid) const;
    const ZuviDemoVideo *videoForAID(qint64 aid) const;
    const ZuviDemoVideo *videoForCID(qint64 cid) const;
    const ZuviDemoOwner *ownerForMID(qint64 mid) const;

    // Picture addresses; the picture endpoint draws them at any size.
    QString coverURL(const ZuviDemoVideo &video) const;
    QString faceURL(qint64 mid) const;
    QString pictureURL(const QString &key) const;
    QString mediaURL(const ZuviDemoVideo &video, int quality) const;

    // Orders of the lists, as indexes into videos().
    QList<int> popularOrder() const { return m_popularOrder; }
    QList<int> recommendedPage(int page, int pageSize) const;
    QList<int> ranking(int rid, int limit) const;
    QList<int> related(const ZuviDemoVideo &video) const;
    QList<int> search(const QString &keyword) const;

    // The shapes the lists carry a video in.
    QJsonObject popularDictionary(const ZuviDemoVideo &video) const;
    QJsonObject recommendedDictionary(const ZuviDemoVideo &video) const;
    QJsonObject legacyRankingDictionary(const ZuviDemoVideo &video) const;
    QJsonObject searchDictionary(const ZuviDemoVideo &video, const QString &keyword) const;
    QJsonObject viewDictionary(const ZuviDemoVideo &video) const;
    QJsonObject ownerDictionary(int ownerIndex) const;
    QJsonObject statDictionary(const ZuviDemoVideo &video) const;

    // Generated danmaku of one part, in the order of the document.
    QList<ZuviDemoDanmaku> danmaku(qint64 cid) const;
    static QByteArray danmakuDocument(qint64 cid, const QList<ZuviDemoDanmaku> &items);

    // Generated replies of a video, the hottest first; index is 0-based.
    QJsonObject reply(const ZuviDemoVideo &video, int index) const;

    // The following feed of the demo account, newest first.
    const QJsonArray &feedItems() const { return m_feed; }

    static QString formatDuration(int seconds);
    static QString highlighted(const QString &title, const QString &keyword);

private:
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
    static constexpr qint64 kEpoch = 1767225600;

    void makeOwners();
    void makeVideos();
    void makeOrders();
    void makeFeed();
    ZuviDemoVideo makeVideo(int index);
    QString makeBVID(int index);
    QJsonObject feedVideoItem(int index, const ZuviDemoVideo &video, qint64 time) const;
    QJsonObject feedLiveItem(int index, int ownerIndex, qint64 time) const;
    QJsonObject feedArticleItem(int index, int ownerIndex, qint64 time) const;
    QJsonObject feedDrawItem(int index, int ownerIndex, qint64 time) const;
    QJsonObject feedTextItem(int index, int ownerIndex, qint64 time, bool forward) const;
    QJsonObject feedAuthor(int ownerIndex, const QString &action, qint64 time) const;

    quint64 m_seed;
    QString m_origin = QStringLiteral("http://127.0.0.1:8470");
    QList<ZuviDemoOwner> m_owners;
    QList<ZuviDemoVideo> m_videos;
    QHash<QString, int> m_byBVID;
    QHash<qint64, int> m_byAID;
    QHash<qint64, int> m_byCID;
    QList<int> m_popularOrder;
    QList<int> m_recommendedOrder;
    QJsonArray m_feed;
};
