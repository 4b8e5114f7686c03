#include "zuvivideodetail.h"

#include "zuvinumbertext.h"
#include "zuvivideoitem.h"

#include <QJsonArray>
#include <QJsonObject>

namespace {

QString field(const QJsonObject &object, const char *key)
{
    return ZuviVideoItem::stringFromObject(object.value(QLatin1String(key)));
}

QList<ZuviVideoPage> pagesFromValue(const QJsonValue &value)
{
    QList<ZuviVideoPage> pages;
    if (!value.isArray())
        return pages;
    const QJsonArray array = value.toArray();
    pages.reserve(array.size());
    for (const QJsonValue &element : array) {
        if (auto page = ZuviVideoPage::pageWithDictionary(element))
            pages.append(*page);
    }
    return pages;
}

} // namespace

std::optional<ZuviVideoDetail>
ZuviVideoDetail::detailWithViewDictionary(const QJsonValue &dictionary)
{
    if (!dictionary.isObject())
        return std::nullopt;
    const QJsonObject object = dictionary.toObject();
    ZuviVideoDetail detail;
    detail.bvid = field(object, "bvid");
    detail.title = field(object, "title");
    if (detail.bvid.isEmpty() || detail.title.isEmpty())
        return std::nullopt;
    detail.aid = ZuviNumberText::longLongValue(field(object, "aid"));
    detail.cid = ZuviNumberText::longLongValue(field(object, "cid"));
    detail.desc = field(object, "desc");
    detail.coverURLString = field(object, "pic");

    const QJsonValue owner = object.value(QLatin1String("owner"));
    if (owner.isObject()) {
        detail.ownerName = field(owner.toObject(), "name");
        detail.ownerAvatarURLString =
            ZuviVideoItem::normalizedURLString(field(owner.toObject(), "face"));
    }
    if (detail.ownerName.isEmpty())
        detail.ownerName = QStringLiteral("未知 UP");

    detail.playCountText = detail.commentCountText = detail.danmakuCountText = QStringLiteral("0");
    const QJsonValue stat = object.value(QLatin1String("stat"));
    if (stat.isObject()) {
        const QJsonObject statObject = stat.toObject();
        detail.playCountText = ZuviVideoItem::countTextFromObject(statObject.value("view"));
        detail.commentCountText = ZuviVideoItem::countTextFromObject(statObject.value("reply"));
        detail.danmakuCountText = ZuviVideoItem::countTextFromObject(statObject.value("danmaku"));
    }
    detail.pages = pagesFromValue(object.value(QLatin1String("pages")));
    return detail;
}
