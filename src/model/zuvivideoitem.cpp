#include "zuvivideoitem.h"

#include "zuvijsoncoercion.h"
#include "zuvinumbertext.h"

#include <QRegularExpression>

namespace {

const QString kUnknownOwner = QStringLiteral("未知 UP");

QJsonObject objectOrEmpty(const QJsonValue &value)
{
    return value.isObject() ? value.toObject() : QJsonObject();
}

qint64 longLongFromObject(const QJsonValue &value)
{
    return ZuviNumberText::longLongValue(ZuviVideoItem::stringFromObject(value));
}

// The first non-empty string among the keys of an object (missing and null give "").
QString firstNonEmptyString(const QJsonObject &object, std::initializer_list<const char *> keys)
{
    for (const char *key : keys) {
        const QString text = ZuviVideoItem::stringFromObject(object.value(QLatin1String(key)));
        if (!text.isEmpty())
            return text;
    }
    return QString();
}

QString ownerOrUnknown(const QString &name)
{
    return name.isEmpty() ? kUnknownOwner : name;
}

// The shape shared by the popular and search factories, which differ only in
// where the owner and the two counts are found.
std::optional<ZuviVideoItem> itemWithCommonFields(const QJsonObject &object,
                                                  const QString &ownerName,
                                                  const QString &playCountText,
                                                  const QString &commentCountText)
{
    ZuviVideoItem item;
    item.bvid = ZuviVideoItem::stringFromObject(object.value(QLatin1String("bvid")));
    item.title = ZuviVideoItem::cleanTitleFromObject(object.value(QLatin1String("title")));
    if (item.bvid.isEmpty() || item.title.isEmpty())
        return std::nullopt;
    item.ownerName = ownerOrUnknown(ownerName);
    item.playCountText = playCountText;
    item.commentCountText = commentCountText;
    item.coverURLString = ZuviVideoItem::normalizedURLString(
        ZuviVideoItem::stringFromObject(object.value(QLatin1String("pic"))));
    item.durationText =
        ZuviVideoItem::durationTextFromObject(object.value(QLatin1String("duration")));
    item.aid = longLongFromObject(object.value(QLatin1String("aid")));
    item.cid = longLongFromObject(object.value(QLatin1String("cid")));
    return item;
}

} // namespace

ZuviVideoItem ZuviVideoItem::itemWithTitle(const QString &title, const QString &coverURLString,
                                           const QString &ownerName, const QString &playCountText,
                                           const QString &commentCountText,
                                           const QString &durationText, const QString &bvid)
{
    ZuviVideoItem item;
    item.title = title;
    item.coverURLString = coverURLString;
    item.ownerName = ownerName;
    item.playCountText = playCountText;
    item.commentCountText = commentCountText;
    item.durationText = durationText;
    item.bvid = bvid;
    return item;
}

std::optional<ZuviVideoItem> ZuviVideoItem::itemWithPopularDictionary(const QJsonValue &dictionary)
{
    if (!dictionary.isObject())
        return std::nullopt;
    const QJsonObject object = dictionary.toObject();
    const QJsonValue owner = object.value(QLatin1String("owner"));
    const QString ownerName = stringFromObject(objectOrEmpty(owner).value(QLatin1String("name")));
    QString play = QStringLiteral("0");
    QString comment = QStringLiteral("0");
    const QJsonValue stat = object.value(QLatin1String("stat"));
    if (stat.isObject()) {
        play = countTextFromObject(stat.toObject().value(QLatin1String("view")));
        comment = countTextFromObject(stat.toObject().value(QLatin1String("reply")));
    }
    return itemWithCommonFields(object, ownerName, play, comment);
}

std::optional<ZuviVideoItem> ZuviVideoItem::itemWithSearchDictionary(const QJsonValue &dictionary)
{
    if (!dictionary.isObject())
        return std::nullopt;
    const QJsonObject object = dictionary.toObject();
    return itemWithCommonFields(object, stringFromObject(object.value(QLatin1String("author"))),
                                countTextFromObject(object.value(QLatin1String("play"))),
                                countTextFromObject(object.value(QLatin1String("video_review"))));
}

std::optional<ZuviVideoItem> ZuviVideoItem::itemWithFlexibleDictionary(const QJsonValue &dictionary)
{
    if (!dictionary.isObject())
        return std::nullopt;
    const QJsonObject d = dictionary.toObject();
    const QJsonObject a = archiveDictionaryFromDictionary(dictionary);
    const QJsonValue history = d.value(QLatin1String("history"));
    static const QStringList bvidKeys{QStringLiteral("bvid"), QStringLiteral("bv_id")};
    static const QStringList linkKeys{QStringLiteral("jump_url"), QStringLiteral("uri"),
                                      QStringLiteral("url")};

    ZuviVideoItem item;
    item.bvid = firstStringFromDictionary(a, bvidKeys);
    if (item.bvid.isEmpty())
        item.bvid = firstStringFromDictionary(d, bvidKeys);
    if (item.bvid.isEmpty() && history.isObject())
        item.bvid = firstStringFromDictionary(history, bvidKeys);
    if (item.bvid.isEmpty())
        item.bvid = firstBVIDFromDictionary(a, linkKeys);
    if (item.bvid.isEmpty())
        item.bvid = firstBVIDFromDictionary(d, linkKeys);

    static const QStringList titleKeys{QStringLiteral("title"), QStringLiteral("name"),
                                       QStringLiteral("desc"), QStringLiteral("intro")};
    item.title = cleanTitleFromObject(firstStringFromDictionary(a, titleKeys));
    if (item.title.isEmpty())
        item.title = cleanTitleFromObject(firstStringFromDictionary(d, titleKeys));
    if (item.bvid.isEmpty() || item.title.isEmpty())
        return std::nullopt;

    item.ownerName = ownerNameFromDictionary(a, d);

    static const QStringList archiveCoverKeys{QStringLiteral("cover"), QStringLiteral("cover_url"),
                                              QStringLiteral("pic"), QStringLiteral("image")};
    static const QStringList wrapperCoverKeys = archiveCoverKeys + QStringList{"first_frame"};
    item.coverURLString = normalizedURLString(firstStringFromDictionary(a, archiveCoverKeys));
    if (item.coverURLString.isEmpty())
        item.coverURLString = normalizedURLString(firstStringFromDictionary(d, wrapperCoverKeys));

    static const QStringList playKeys{QStringLiteral("view"), QStringLiteral("play")};
    static const QStringList commentKeys{QStringLiteral("reply"), QStringLiteral("review"),
                                         QStringLiteral("danmaku"), QStringLiteral("video_review")};
    QJsonValue play = statObjectFromDictionary(a, playKeys);
    if (play.isUndefined())
        play = statObjectFromDictionary(d, playKeys);
    QJsonValue comment = statObjectFromDictionary(a, commentKeys);
    if (comment.isUndefined())
        comment = statObjectFromDictionary(d, commentKeys);
    item.playCountText = countTextFromObject(play);
    item.commentCountText = countTextFromObject(comment);

    static const QStringList durationKeys{QStringLiteral("duration"),
                                          QStringLiteral("duration_text")};
    item.durationText = durationTextFromObject(firstObjectFromDictionary(a, durationKeys));

    static const QStringList aidKeys{QStringLiteral("aid"), QStringLiteral("id")};
    item.aid = ZuviNumberText::longLongValue(firstStringFromDictionary(a, aidKeys));
    if (item.aid == 0)
        item.aid = ZuviNumberText::longLongValue(firstStringFromDictionary(d, aidKeys));
    item.cid = longLongFromObject(a.value(QLatin1String("cid")));
    if (item.cid == 0 && history.isObject()) {
        const QJsonObject historyObject = history.toObject();
        item.cid = longLongFromObject(historyObject.value(QLatin1String("cid")));
        if (item.aid == 0)
            item.aid = longLongFromObject(historyObject.value(QLatin1String("oid")));
    }
    return item;
}

// --- Texts

QString ZuviVideoItem::stringFromObject(const QJsonValue &value)
{
    // One rule for the whole client: the records read fields exactly as the
    // service client reads its envelopes.
    return ZuviJSONCoercion::stringFromObject(value);
}

QString ZuviVideoItem::cleanTitleFromObject(const QJsonValue &value)
{
    QString text = stringByRemovingTags(stringFromObject(value));
    if (text.isEmpty())
        return text;
    // One pass per entity, in this order: "&amp;lt;" first becomes "&lt;" and
    // then "<". Titles arrive escaped twice often enough that decoding twice
    // is what reads right.
    text.replace(QLatin1String("&amp;"), QLatin1String("&"));
    text.replace(QLatin1String("&lt;"), QLatin1String("<"));
    text.replace(QLatin1String("&gt;"), QLatin1String(">"));
    text.replace(QLatin1String("&quot;"), QLatin1String("\""));
    return text;
}

QString ZuviVideoItem::stringByRemovingTags(const QString &text)
{
    // Deleting the leftmost "<[^>]+>" match until none is left is the same as
    // one left-to-right scan: a "<" that starts no match is followed directly
    // by ">", and removing a later tag cannot change that, so nothing to the
    // left of a deletion ever becomes a match. The scan is linear where the
    // repeated search would be quadratic on hostile input.
    const qsizetype length = text.size();
    qsizetype nextClose = text.indexOf(QLatin1Char('>'));
    if (nextClose < 0 || !text.contains(QLatin1Char('<')))
        return text;
    QString result;
    result.reserve(length);
    for (qsizetype i = 0; i < length; ++i) {
        const QChar c = text.at(i);
        if (c == QLatin1Char('<') && nextClose >= 0 && i + 1 < length &&
            text.at(i + 1) != QLatin1Char('>')) {
            if (nextClose <= i + 1)
                nextClose = text.indexOf(QLatin1Char('>'), i + 2);
            if (nextClose >= 0) {
                i = nextClose;
                nextClose = text.indexOf(QLatin1Char('>'), i + 1);
                continue;
            }
        }
        result.append(c);
    }
    return result;
}

QString ZuviVideoItem::normalizedURLString(const QString &urlString)
{
    if (urlString.startsWith(QLatin1String("//")))
        return QStringLiteral("https:") + urlString;
    return urlString;
}

QString ZuviVideoItem::countTextFromObject(const QJsonValue &value)
{
    return countTextFromCount(longLongFromObject(value), true);
}

QString ZuviVideoItem::countTextFromCount(qint64 count, bool hundredMillionTier)
{
    if (count < 10000)
        return QString::number(count);
    // Single precision on purpose: the texts shown for large counts are those
    // of a float division, e.g. 123456789 reads 1.2亿 and 12345.7万.
    const float n = float(count);
    if (hundredMillionTier && count >= 100000000)
        return QString::asprintf("%.1f", double(n / 100000000.0f)) + QStringLiteral("亿");
    return QString::asprintf("%.1f", double(n / 10000.0f)) + QStringLiteral("万");
}

QString ZuviVideoItem::durationTextFromObject(const QJsonValue &value)
{
    const QString text = stringFromObject(value);
    if (text.contains(QLatin1Char(':')))
        return text;
    const qint64 seconds = std::max<qint64>(0, ZuviNumberText::longLongValue(text));
    if (seconds < 3600)
        return QString::asprintf("%lld:%02lld", seconds / 60, seconds % 60);
    return QString::asprintf("%lld:%02lld:%02lld", seconds / 3600, seconds / 60 % 60, seconds % 60);
}

QString ZuviVideoItem::bvidFromString(const QString &text)
{
    static const QRegularExpression pattern(QStringLiteral("BV[0-9A-Za-z]+"));
    if (!text.contains(QLatin1String("BV")))
        return QString();
    return pattern.match(text).captured(0);
}

// --- Lookups

QJsonValue ZuviVideoItem::firstObjectFromDictionary(const QJsonValue &dictionary,
                                                    const QStringList &keys)
{
    if (!dictionary.isObject())
        return QJsonValue(QJsonValue::Undefined);
    const QJsonObject object = dictionary.toObject();
    for (const QString &key : keys) {
        const QJsonValue value = object.value(key);
        if (value.isUndefined() || value.isNull())
            continue;
        if (value.isString() && value.toString().isEmpty())
            continue;
        return value;
    }
    return QJsonValue(QJsonValue::Undefined);
}

QString ZuviVideoItem::firstStringFromDictionary(const QJsonValue &dictionary,
                                                 const QStringList &keys)
{
    return stringFromObject(firstObjectFromDictionary(dictionary, keys));
}

QString ZuviVideoItem::firstBVIDFromDictionary(const QJsonValue &dictionary,
                                               const QStringList &keys)
{
    const QJsonObject object = objectOrEmpty(dictionary);
    for (const QString &key : keys) {
        const QString bvid = bvidFromString(stringFromObject(object.value(key)));
        if (!bvid.isEmpty())
            return bvid;
    }
    return QString();
}

QJsonValue ZuviVideoItem::statObjectFromDictionary(const QJsonValue &dictionary,
                                                   const QStringList &keys)
{
    const QJsonObject object = objectOrEmpty(dictionary);
    for (const char *name : {"stat", "stats", "cnt_info"}) {
        const QJsonValue stat = object.value(QLatin1String(name));
        if (!stat.isObject())
            continue;
        const QJsonValue found = firstObjectFromDictionary(stat, keys);
        if (!found.isUndefined())
            return found;
        break;
    }
    return firstObjectFromDictionary(dictionary, keys);
}

QJsonObject ZuviVideoItem::archiveDictionaryFromDictionary(const QJsonValue &dictionary)
{
    const QJsonObject object = objectOrEmpty(dictionary);
    const QJsonValue modules = object.value(QLatin1String("modules"));
    const QJsonValue dynamic = objectOrEmpty(modules).value(QLatin1String("module_dynamic"));
    if (dynamic.isObject()) {
        const QJsonObject dynamicObject = dynamic.toObject();
        const QJsonObject major = objectOrEmpty(dynamicObject.value(QLatin1String("major")));
        for (const char *key : {"archive", "common", "pgc"}) {
            const QJsonValue candidate = major.value(QLatin1String(key));
            if (candidate.isObject())
                return candidate.toObject();
        }
        const QJsonObject additional =
            objectOrEmpty(dynamicObject.value(QLatin1String("additional")));
        for (const char *key : {"ugc", "common"}) {
            const QJsonValue candidate = additional.value(QLatin1String(key));
            if (candidate.isObject())
                return candidate.toObject();
        }
    }
    const QJsonValue archive = object.value(QLatin1String("archive"));
    return archive.isObject() ? archive.toObject() : object;
}

QString ZuviVideoItem::ownerNameFromDictionary(const QJsonValue &dictionary,
                                               const QJsonValue &fallbackDictionary)
{
    const QJsonObject item = objectOrEmpty(dictionary);
    const QJsonObject fallback = objectOrEmpty(fallbackDictionary);
    QString name =
        firstNonEmptyString(objectOrEmpty(item.value(QLatin1String("owner"))), {"name", "uname"});
    if (name.isEmpty())
        name = firstNonEmptyString(objectOrEmpty(item.value(QLatin1String("upper"))),
                                   {"name", "uname"});
    if (name.isEmpty()) {
        const QJsonObject modules = objectOrEmpty(fallback.value(QLatin1String("modules")));
        name = firstNonEmptyString(objectOrEmpty(modules.value(QLatin1String("module_author"))),
                                   {"name"});
    }
    if (name.isEmpty())
        name = firstNonEmptyString(fallback, {"author", "up_name", "author_name", "uname"});
    return ownerOrUnknown(name);
}
