#pragma once

#include <QJsonValue>
#include <QString>

#include <optional>

// One part of a multi-part video.
struct ZuviVideoPage {
    qint64 cid = 0;
    int pageNumber = 0;
    QString partTitle;

    // Nothing unless the dictionary carries a positive "cid"; a part without
    // a title is called "P<number>".
    static std::optional<ZuviVideoPage> pageWithDictionary(const QJsonValue &dictionary);
};
