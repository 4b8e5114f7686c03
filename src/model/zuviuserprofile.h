#pragma once

#include <QMetaType>
#include <QString>

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
};

Q_DECLARE_METATYPE(ZuviUserProfile)
