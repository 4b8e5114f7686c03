// The ranking tab's region table, the stored region and sort choices (which
// the region settings screen and the settings screen share), and the count
// sorting of a shown list.
#include "zuvihotviewcontroller.h"

#include "platform/zuvidefaults.h"

#include <QSet>

#include <algorithm>

const char *const ZuviHotViewController::kVisibleHotRegionKeysKey = "ZuviVisibleHotRegionKeys";
const char *const ZuviHotViewController::kPreferredHotSortModeKey = "ZuviPreferredHotSortMode";
const char *const ZuviHotViewController::kPopularRegionKey = "popular";
const char *const ZuviHotViewController::kAllRegionKey = "all";

const QList<ZuviHotViewController::HotRegionItem> &ZuviHotViewController::hotRegionItems()
{
    // The popular list first, then the whole-site ranking, then the content
    // regions with the rid and page route the web ranking is asked with.
    static const QList<HotRegionItem> table = {
        {"popular", "综合", -1, {}},          {"all", "全站热门", 0, "all"},
        {"1005", "动画", 1005, "douga"},      {"1008", "游戏", 1008, "game"},
        {"1007", "鬼畜", 1007, "kichiku"},    {"1003", "音乐", 1003, "music"},
        {"1004", "舞蹈", 1004, "dance"},      {"1001", "影视", 1001, "cinephile"},
        {"1002", "娱乐", 1002, "ent"},        {"1010", "知识", 1010, "knowledge"},
        {"1012", "科技数码", 1012, "tech"},   {"1011", "AI", 1011, "ai"},
        {"1006", "绘画", 1006, "painting"},   {"1020", "美食", 1020, "food"},
        {"1013", "汽车", 1013, "car"},        {"1014", "时尚美妆", 1014, "fashion"},
        {"1018", "体育运动", 1018, "sports"}, {"1024", "动物", 1024, "animal"},
    };
    return table;
}

QStringList ZuviHotViewController::defaultHotRegionKeys()
{
    QStringList keys;
    for (const HotRegionItem &item : hotRegionItems()) {
        if (!item.key.isEmpty())
            keys.append(item.key);
    }
    return keys;
}

QStringList ZuviHotViewController::sanitizedHotRegionKeysFromKeys(const QVariant &keys,
                                                                  bool allowDefault)
{
    QVariantList given;
    // The settings file keeps a one-element list as a bare string.
    if (keys.typeId() == QMetaType::QString)
        given = {keys};
    else if (keys.canConvert<QVariantList>())
        given = keys.toList();
    if (given.isEmpty() && allowDefault) {
        for (const QString &key : defaultHotRegionKeys())
            given.append(key);
    }
    QStringList kept;
    for (const QVariant &value : std::as_const(given)) {
        // Only real strings count: a number that happens to spell a rid is
        // something else that found its way into the store.
        if (value.typeId() != QMetaType::QString)
            continue;
        const QString key = value.toString();
        if (hotRegionItemForKey(key) && !kept.contains(key))
            kept.append(key);
    }
    if (kept.isEmpty())
        kept.append(QString::fromLatin1(kPopularRegionKey));
    return kept;
}

QStringList ZuviHotViewController::visibleHotRegionKeys(ZuviDefaults *defaults)
{
    const QVariant stored =
        defaults ? defaults->objectForKey(QString::fromLatin1(kVisibleHotRegionKeysKey))
                 : QVariant();
    return sanitizedHotRegionKeysFromKeys(stored, true);
}

void ZuviHotViewController::setVisibleHotRegionKeys(const QStringList &keys, ZuviDefaults *defaults)
{
    if (!defaults)
        return;
    defaults->setObject(sanitizedHotRegionKeysFromKeys(keys, false),
                        QString::fromLatin1(kVisibleHotRegionKeysKey));
    defaults->synchronize();
}

QList<ZuviHotViewController::HotRegionItem>
ZuviHotViewController::visibleHotRegionItems(ZuviDefaults *defaults)
{
    QList<HotRegionItem> items;
    for (const QString &key : visibleHotRegionKeys(defaults)) {
        if (const HotRegionItem *item = hotRegionItemForKey(key))
            items.append(*item);
    }
    return items;
}

QString ZuviHotViewController::preferredHotRegionKey(ZuviDefaults *defaults)
{
    const QStringList keys = visibleHotRegionKeys(defaults);
    return keys.isEmpty() ? QString::fromLatin1(kPopularRegionKey) : keys.first();
}

QString ZuviHotViewController::titleForHotRegionKey(const QString &key)
{
    const HotRegionItem *item = hotRegionItemForKey(key);
    return item && !item->title.isEmpty() ? item->title : QStringLiteral("综合");
}

const ZuviHotViewController::HotRegionItem *
ZuviHotViewController::hotRegionItemForKey(const QString &key)
{
    for (const HotRegionItem &item : hotRegionItems()) {
        if (item.key == key)
            return &item;
    }
    return nullptr;
}

int ZuviHotViewController::preferredHotSortMode(ZuviDefaults *defaults)
{
    if (!defaults)
        return SortDefault;
    const qint64 mode = defaults->integerForKey(QString::fromLatin1(kPreferredHotSortModeKey));
    return mode < SortDefault || mode > SortByCommentCount ? SortDefault : int(mode);
}

double ZuviHotViewController::countValueFromText(const QString &text)
{
    const QString trimmed = text.trimmed();
    double multiplier = 1;
    if (trimmed.contains(QStringLiteral("亿")))
        multiplier = 100000000;
    else if (trimmed.contains(QStringLiteral("万")))
        multiplier = 10000;
    QString digits;
    for (const QChar c : trimmed) {
        if ((c >= QLatin1Char('0') && c <= QLatin1Char('9')) || c == QLatin1Char('.'))
            digits.append(c);
    }
    // A second point ends the number, as a decimal reader stops there;
    // nothing readable counts as nothing.
    const qsizetype secondPoint = digits.indexOf(QLatin1Char('.'), digits.indexOf('.') + 1);
    if (digits.contains(QLatin1Char('.')) && secondPoint > 0)
        digits.truncate(secondPoint);
    bool ok = false;
    const double value = digits.toDouble(&ok);
    return ok ? value * multiplier : 0;
}

QList<ZuviVideoItem>
ZuviHotViewController::sortedVideosFromVideos(const QList<ZuviVideoItem> &videos, int sortMode)
{
    if (sortMode == SortDefault || videos.size() < 2)
        return videos;
    // Each count text is read once, not at every comparison.
    QList<QPair<double, qsizetype>> keyed;
    keyed.reserve(videos.size());
    for (qsizetype i = 0; i < videos.size(); ++i) {
        const ZuviVideoItem &item = videos.at(i);
        keyed.append({countValueFromText(sortMode == SortByPlayCount ? item.playCountText
                                                                     : item.commentCountText),
                      i});
    }
    // Equal counts keep the service's order between them.
    std::stable_sort(keyed.begin(), keyed.end(),
                     [](const auto &a, const auto &b) { return a.first > b.first; });
    QList<ZuviVideoItem> sorted;
    sorted.reserve(videos.size());
    for (const auto &entry : std::as_const(keyed))
        sorted.append(videos.at(entry.second));
    return sorted;
}
