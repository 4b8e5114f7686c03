#pragma once

#include "model/zuvifollowingrow.h"

#include <QVariantMap>

// What one card of the following feed shows, worked out from a feed row so
// the QML card only lays it out. Five looks, chosen by the row's kind:
// "video" (cover, duration, title, counts), "live" (cover, on-air badge,
// area, online count), "article" (cover, title, cleaned description, label),
// "draw" (up to four pictures, or the empty-post note) and "dynamic" (the
// post's text). Every look has the author's avatar, name and action line.
class ZuviFollowingCollectionViewCell
{
public:
    static constexpr const char *kReuseIdentifier = "ZuviFollowingCollectionViewCell";

    // Keys of the map: "kind", "title", "subtitle", "authorName",
    // "authorInitial", "avatarURL", "actionText", "bodyText", "coverURL",
    // "imageURLs" (list), "badgeText", "badgeLive" (bool), "areaText",
    // "onlineText", "labelText", "durationText", "playText", "commentText",
    // "emptyPictures" (bool), "placeholderColor", "opensVideo" (bool).
    static QVariantMap configurationForRow(const ZuviFollowingRow &row);
};
