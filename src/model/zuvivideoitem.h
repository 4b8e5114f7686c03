#pragma once

#include <QMetaType>
#include <QString>

// A video in any list: display-ready texts plus the ids needed to open it.
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
};

Q_DECLARE_METATYPE(ZuviVideoItem)
