#pragma once

#include <QJsonValue>
#include <QMetaType>
#include <QString>

#include <optional>

// One reply under a video.
struct ZuviCommentItem {
    QString authorName;
    QString avatarURLString;
    QString message;
    QString timeText;
    QString likeCountText;

    // From one reply object; nothing when its message is empty.
    static std::optional<ZuviCommentItem> itemWithReplyDictionary(const QJsonValue &dictionary);

    // Tags removed and entities decoded, as video titles are.
    static QString cleanMessageFromObject(const QJsonValue &value);
    // Like counts: "9999", "1.0万", and no 亿 tier (150000000 reads 15000.0万).
    static QString countTextFromObject(const QJsonValue &value);
    // "MM-dd HH:mm" in local time of Unix seconds; "" for a missing or non-positive time.
    static QString timeTextFromObject(const QJsonValue &value);
};

Q_DECLARE_METATYPE(ZuviCommentItem)
