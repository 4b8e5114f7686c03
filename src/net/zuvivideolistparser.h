#pragma once

#include "model/zuvivideoitem.h"
#include "platform/zuvierror.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonValue>
#include <QList>

#include <optional>

// The parsers of the video list endpoints (popular, ranking, search,
// history, watch later, favourites, related). They live apart from the
// client so that the client's file keeps to requests and delivery; each is a
// pure function of the body and can be tested without a server.
class ZuviVideoListParser
{
public:
    static QList<ZuviVideoItem> parsePopularVideosFromData(const QByteArray &data,
                                                           ZuviError *error);
    static QList<ZuviVideoItem> parseRankingVideosFromData(const QByteArray &data,
                                                           ZuviError *error);
    static QList<ZuviVideoItem> parseLegacyRankingVideosFromData(const QByteArray &data,
                                                                 ZuviError *error);
    static QList<ZuviVideoItem> parseSearchVideosFromData(const QByteArray &data, ZuviError *error);
    static QList<ZuviVideoItem>
    parseFlexibleVideosFromData(const QByteArray &data, const QString &listName, ZuviError *error);
    // The first positive "media_id" (or "id") of the member's folders; 0 when none.
    static qint64 parseFirstFavoriteMediaIDFromData(const QByteArray &data, ZuviError *error);

    // The list inside a "data" value of unknown shape, or nothing.
    static std::optional<QJsonArray> firstVideoArrayFromDataDictionary(const QJsonValue &data);
    static QList<ZuviVideoItem> videosByLimitingVideos(const QList<ZuviVideoItem> &videos,
                                                       int limit);
};
