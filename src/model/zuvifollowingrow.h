#pragma once

#include <QVariantMap>

// One row of the following feed: a string-keyed record whose "rowType" is
// "video", "live", "article", "draw" or "dynamic", with display fields.
using ZuviFollowingRow = QVariantMap;
