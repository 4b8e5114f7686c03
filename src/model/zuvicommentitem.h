#pragma once

#include <QMetaType>
#include <QString>

// One reply under a video.
struct ZuviCommentItem {
    QString authorName;
    QString avatarURLString;
    QString message;
    QString timeText;
    QString likeCountText;
};

Q_DECLARE_METATYPE(ZuviCommentItem)
