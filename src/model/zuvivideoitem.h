#pragma once

#include <QJsonObject>
#include <QJsonValue>
#include <QMetaType>
#include <QString>
#include <QStringList>

#include <optional>

// A video in any list: display-ready texts plus the ids needed to open it.
//
// The factories read every JSON field leniently (a number or a string, null
// and missing alike give the default) and yield nothing for an entry without
// a BV id or a title. The static helpers are shared by the other records and
// by the following feed's row building.
struct ZuviVideoItem {
    QString title;
    QString coverURLString;
    QString ownerName;
    QString playCountText;
    QString commentCountText;
    QString durationText;
    QString bvid;
    qint64 aid = 0;
    qint64 cid = 0;

    QString metadataText() const
    {
        return QStringLiteral("UP %1  播放 %2  评论 %3")
            .arg(ownerName, playCountText, commentCountText);
    }

    // --- Factories
    static ZuviVideoItem itemWithTitle(const QString &title, const QString &coverURLString,
                                       const QString &ownerName, const QString &playCountText,
                                       const QString &commentCountText, const QString &durationText,
                                       const QString &bvid);
    // Popular, recommended and ranking lists.
    static std::optional<ZuviVideoItem> itemWithPopularDictionary(const QJsonValue &dictionary);
    // Search results.
    static std::optional<ZuviVideoItem> itemWithSearchDictionary(const QJsonValue &dictionary);
    // History, watch later, favourites, related videos and feed items of many shapes.
    static std::optional<ZuviVideoItem> itemWithFlexibleDictionary(const QJsonValue &dictionary);

    // --- Texts
    // Strings as they are, numbers as their plain decimal text, anything else "".
    static QString stringFromObject(const QJsonValue &value);
    // Highlight tags removed, then the four common entities decoded once each.
    static QString cleanTitleFromObject(const QJsonValue &value);
    // Removes every "<...>" tag from a text; the rest is kept as it is.
    static QString stringByRemovingTags(const QString &text);
    // A scheme-relative "//host/..." URL made https; anything else unchanged.
    static QString normalizedURLString(const QString &urlString);
    // "9999", "1.0万", "1.2亿": the division is done in single precision.
    static QString countTextFromObject(const QJsonValue &value);
    // The shared count rule; without the 亿 tier every large count stays in 万.
    static QString countTextFromCount(qint64 count, bool hundredMillionTier);
    // "m:ss" or "h:mm:ss" of whole seconds; a text with a colon is kept as it is.
    static QString durationTextFromObject(const QJsonValue &value);
    // The first "BV..." id anywhere in a text (e.g. inside a link), or "".
    static QString bvidFromString(const QString &text);

    // --- Lookups over dictionaries of many shapes ("nil" is an undefined value)
    // The first value under the keys that is present, not null and not "".
    static QJsonValue firstObjectFromDictionary(const QJsonValue &dictionary,
                                                const QStringList &keys);
    static QString firstStringFromDictionary(const QJsonValue &dictionary, const QStringList &keys);
    static QString firstBVIDFromDictionary(const QJsonValue &dictionary, const QStringList &keys);
    // From the "stat", "stats" or "cnt_info" object, else from the dictionary itself.
    static QJsonValue statObjectFromDictionary(const QJsonValue &dictionary,
                                               const QStringList &keys);
    // The object describing the video inside a feed or history wrapper.
    static QJsonObject archiveDictionaryFromDictionary(const QJsonValue &dictionary);
    // Never empty: "未知 UP" when no name is found.
    static QString ownerNameFromDictionary(const QJsonValue &dictionary,
                                           const QJsonValue &fallbackDictionary);
};

Q_DECLARE_METATYPE(ZuviVideoItem)
