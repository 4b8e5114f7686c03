#pragma once

#include <QJsonObject>
#include <QJsonValue>
#include <QMetaType>
#include <QString>

#include <optional>

// The signed-in user as the profile screen shows them.
struct ZuviUserProfile {
    bool isLogin = false;
    qint64 mid = 0;
    QString userName;
    QString faceURLString;
    QString levelText;
    QString vipText;
    QString coinText;
    QString followingText;
    QString followerText;

    // From the nav endpoint's "data" object; nothing when it is not an object.
    static std::optional<ZuviUserProfile> profileWithNavDataDictionary(const QJsonValue &data);
    // Fills the following and follower texts from a relation-stat "data" object.
    void updateWithRelationStatDictionary(const QJsonObject &stat);
    // One line under the name: the non-empty texts, or the login hint.
    QString summaryText() const;

    // Below 10000 the plain number, else "%.1f万" (12345 is 1.2万).
    static QString countTextFromObject(const QJsonValue &value);
};

Q_DECLARE_METATYPE(ZuviUserProfile)
