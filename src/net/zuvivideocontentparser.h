#pragma once

#include "model/zuvicommentitem.h"
#include "model/zuvidanmakuitem.h"
#include "model/zuvivideodetail.h"
#include "platform/zuvierror.h"

#include <QByteArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QList>

#include <optional>

// The parsers of one video's endpoints: detail, play address, danmaku and
// comments. Kept apart from the client so that each rule of the bodies can
// be tested on bytes alone.
class ZuviVideoContentParser
{
public:
    static const char *const kXMLErrorDomain;

    static std::optional<ZuviVideoDetail> parseVideoDetailFromData(const QByteArray &data,
                                                                   ZuviError *error);

    // The playable single-file address, already rewritten for the video CDN;
    // empty with an error when the answer holds none.
    static QString parsePlayURLFromData(const QByteArray &data, int requestedQuality,
                                        int *actualQuality, const QString &videoCDNDomainSuffix,
                                        ZuviError *error);
    static QString playURLUnavailableMessageWithRequestedQuality(int requestedQuality,
                                                                 const QJsonObject &data);
    static QString joinedIntegerTextFromArray(const QJsonValue &array);
    static QString legacyPlayableURLStringFromURLString(const QString &urlString,
                                                        const QString &videoCDNDomainSuffix);

    // The danmaku of an XML document, sorted by time; nothing with an error
    // when the body is empty or not a well-formed document.
    static std::optional<QList<ZuviDanmakuItem>> parseDanmakuItemsFromData(const QByteArray &data,
                                                                           ZuviError *error);

    static QList<ZuviCommentItem> parseCommentsFromData(const QByteArray &data,
                                                        const QString &listName, ZuviError *error);
};
