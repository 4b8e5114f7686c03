#pragma once

#include <QString>

// One part of a multi-part video.
struct ZuviVideoPage {
    qint64 cid = 0;
    int pageNumber = 0;
    QString partTitle;
};
