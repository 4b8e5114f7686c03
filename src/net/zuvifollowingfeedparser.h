#pragma once

#include "model/zuvifollowingrow.h"
#include "platform/zuvierror.h"

#include <QByteArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QStringList>
#include <QVariantMap>

#include <optional>

// Turns the following feed's nested items into flat rows of five kinds
// (video, live, article, draw, dynamic) that a list can show without knowing
// the service's item format. Apart from the client because the item walk is
// large and is tested on bodies alone.
class ZuviFollowingFeedParser
{
public:
    struct Page {
        QList<ZuviFollowingRow> rows;
        bool hasMore = false;
        QString nextOffset; // empty when the service gives none
    };

    static std::optional<Page> parseFollowingFeedFromData(const QByteArray &data, ZuviError *error);
    static QList<ZuviFollowingRow> parseFollowingRowsFromData(const QByteArray &data,
                                                              ZuviError *error);
    static ZuviFollowingRow rowFromItem(const QJsonObject &item);

    // --- Item paths
    static QJsonObject followingAuthorDictionaryFromItem(const QJsonObject &item);
    static QJsonObject followingDynamicDictionaryFromItem(const QJsonObject &item);
    static QJsonObject followingMajorDictionaryFromItem(const QJsonObject &item);
    static QJsonObject followingBasicDictionaryFromItem(const QJsonObject &item);
    // The three records, nothing when the item is not of that kind.
    static std::optional<QVariantMap> followingLiveInfoFromItem(const QJsonObject &item);
    static std::optional<QVariantMap> followingArticleInfoFromItem(const QJsonObject &item);
    static std::optional<QVariantMap> followingDrawInfoFromItem(const QJsonObject &item,
                                                                const QString &dynamicText);
    static QString followingAuthorNameFromItem(const QJsonObject &item);
    static QString followingAuthorAvatarURLStringFromItem(const QJsonObject &item);
    static QString followingActionTextFromItem(const QJsonObject &item);
    static QString followingDynamicTextFromItem(const QJsonObject &item, int depth = 0);
    static QStringList followingImageURLStringsFromItem(const QJsonObject &item);

    // --- Texts and values
    static QJsonObject dictionaryFromJSONString(const QString &json);
    static QString cleanedArticleDescription(const QString &text);
    static QString textFromDynamicDescriptionDictionary(const QJsonValue &description);
    static QString followingLiveSubtitleFromInfo(const QVariantMap &info,
                                                 const QString &fallbackAuthorName,
                                                 const QString &actionText);
    static QString followingArticleSubtitleFromInfo(const QVariantMap &info,
                                                    const QString &fallbackAuthorName,
                                                    const QString &actionText);
    static QString followingDrawSubtitleFromInfo(const QVariantMap &info,
                                                 const QString &fallbackAuthorName,
                                                 const QString &actionText);
    static QString followingFallbackSubtitleWithAuthorName(const QString &authorName,
                                                           const QString &actionText,
                                                           const QString &defaultText);

    // --- Images: at most four distinct URLs
    static constexpr int kMaximumImages = 4;
    static void appendFollowingImageURLStringsFromItem(const QJsonObject &item, QStringList *list,
                                                       int depth);
    static void appendImageURLStringsFromImageDictionaries(const QJsonValue &images,
                                                           QStringList *list);
    static QString firstImageURLStringFromDictionary(const QJsonValue &dictionary);
    static void appendImageURLString(const QString &urlString, QStringList *list);
    static QString normalizedImageURLString(const QString &urlString);
};
