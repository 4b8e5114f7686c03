#include "zuviuserprofile.h"

#include "zuvijsoncoercion.h"
#include "zuvivideoitem.h"

namespace {
QString text(const QJsonObject &object, const char *key)
{
    return ZuviJSONCoercion::stringFromObject(object.value(QLatin1String(key)));
}
} // namespace

std::optional<ZuviUserProfile> ZuviUserProfile::profileWithNavDataDictionary(const QJsonValue &data)
{
    if (!data.isObject())
        return std::nullopt;
    const QJsonObject nav = data.toObject();
    ZuviUserProfile profile;
    profile.isLogin = ZuviJSONCoercion::boolFromObject(nav.value("isLogin"));
    profile.mid = ZuviJSONCoercion::integerFromObject(nav.value("mid"));
    profile.userName = text(nav, "uname");
    if (profile.isLogin && profile.userName.isEmpty())
        profile.userName = QStringLiteral("已登录用户");
    profile.faceURLString = ZuviVideoItem::normalizedURLString(text(nav, "face"));
    const qint64 level = ZuviJSONCoercion::integerFromObject(
        nav.value("level_info").toObject().value("current_level"));
    if (level > 0)
        profile.levelText = QStringLiteral("LV%1").arg(level);
    const bool vip = ZuviJSONCoercion::integerFromObject(nav.value("vipStatus")) == 1;
    profile.vipText = vip ? QStringLiteral("大会员") : QStringLiteral("普通会员");
    const QString money = text(nav, "money");
    if (!money.isEmpty())
        profile.coinText = QStringLiteral("硬币 %1").arg(money);
    return profile;
}

void ZuviUserProfile::updateWithRelationStatDictionary(const QJsonObject &stat)
{
    followingText = QStringLiteral("关注 %1").arg(countTextFromObject(stat.value("following")));
    followerText = QStringLiteral("粉丝 %1").arg(countTextFromObject(stat.value("follower")));
}

QString ZuviUserProfile::summaryText() const
{
    if (!isLogin)
        return QStringLiteral("登录后可查看历史记录、稍后再看、收藏等个人内容。");
    QStringList parts;
    for (const QString &part : {levelText, vipText, coinText, followingText, followerText}) {
        if (!part.isEmpty())
            parts.append(part);
    }
    return parts.isEmpty() ? QStringLiteral("MID %1").arg(mid) : parts.join(QStringLiteral("  "));
}

QString ZuviUserProfile::countTextFromObject(const QJsonValue &value)
{
    const qint64 count = ZuviJSONCoercion::integerFromObject(value);
    if (count < 10000)
        return QString::number(count);
    return QString::asprintf("%.1f", double(count) / 10000.0) + QStringLiteral("万");
}
