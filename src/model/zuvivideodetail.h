#pragma once

#include "zuvivideopage.h"

#include <QJsonValue>
#include <QList>
#include <QMetaType>
#include <QString>

#include <optional>

// The full view of one video, as the video screen shows it.
struct ZuviVideoDetail {
    qint64 aid = 0;
    qint64 cid = 0;
    QString bvid;
    QString title;
    QString desc;
    QString coverURLString;
    QString ownerName;
    QString ownerAvatarURLString;
    QString playCountText;
    QString commentCountText;
    QString danmakuCountText;
    QList<ZuviVideoPage> pages;

    QString metadataText() const
    {
        return QStringLiteral("UP %1  播放 %2  评论 %3  弹幕 %4")
            .arg(ownerName, playCountText, commentCountText, danmakuCountText);
    }

    // From the "data" object of the video view answer; nothing without a BV id
    // and a title. The title, description and cover are kept as given.
    static std::optional<ZuviVideoDetail> detailWithViewDictionary(const QJsonValue &dictionary);
};

Q_DECLARE_METATYPE(ZuviVideoDetail)
