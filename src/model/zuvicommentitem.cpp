#include "zuvicommentitem.h"

#include "zuvinumbertext.h"
#include "zuvivideoitem.h"

#include <QDateTime>
#include <QJsonObject>

#include <cmath>

namespace {

QString field(const QJsonObject &object, const char *key)
{
    return ZuviVideoItem::stringFromObject(object.value(QLatin1String(key)));
}

// Unix seconds up to the last second of year 9999; later "dates" are noise.
constexpr double kLatestFormattableSeconds = 253402300799.0;

} // namespace

std::optional<ZuviCommentItem>
ZuviCommentItem::itemWithReplyDictionary(const QJsonValue &dictionary)
{
    if (!dictionary.isObject())
        return std::nullopt;
    const QJsonObject object = dictionary.toObject();
    const QJsonValue content = object.value(QLatin1String("content"));
    ZuviCommentItem item;
    if (content.isObject())
        item.message = cleanMessageFromObject(content.toObject().value(QLatin1String("message")));
    if (item.message.isEmpty())
        return std::nullopt;

    item.authorName = QStringLiteral("未知用户");
    const QJsonValue member = object.value(QLatin1String("member"));
    if (member.isObject()) {
        const QJsonObject memberObject = member.toObject();
        QString name = field(memberObject, "uname");
        if (name.isEmpty())
            name = field(memberObject, "name");
        if (!name.isEmpty())
            item.authorName = name;
        item.avatarURLString = ZuviVideoItem::normalizedURLString(field(memberObject, "avatar"));
    }
    item.timeText = timeTextFromObject(object.value(QLatin1String("ctime")));
    item.likeCountText = countTextFromObject(object.value(QLatin1String("like")));
    return item;
}

QString ZuviCommentItem::cleanMessageFromObject(const QJsonValue &value)
{
    return ZuviVideoItem::cleanTitleFromObject(value);
}

QString ZuviCommentItem::countTextFromObject(const QJsonValue &value)
{
    const QString text = ZuviVideoItem::stringFromObject(value);
    return ZuviVideoItem::countTextFromCount(ZuviNumberText::longLongValue(text), false);
}

QString ZuviCommentItem::timeTextFromObject(const QJsonValue &value)
{
    const double seconds = ZuviNumberText::doubleValue(ZuviVideoItem::stringFromObject(value));
    if (!(seconds > 0) || seconds > kLatestFormattableSeconds)
        return QString();
    const auto milliseconds = qint64(std::floor(seconds * 1000.0));
    return QDateTime::fromMSecsSinceEpoch(milliseconds).toString(QStringLiteral("MM-dd HH:mm"));
}
