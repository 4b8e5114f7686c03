#include "zuvivideocontentparser.h"

#include "model/zuvidanmakuxmlparser.h"
#include "model/zuvijsoncoercion.h"
#include "zuviapiclient.h"

#include <QJsonArray>

const char *const ZuviVideoContentParser::kXMLErrorDomain = "ZuviDanmakuXMLErrorDomain";

namespace {
// The first dictionary of "durl": its "url", else the first backup address.
QString firstDurlAddress(const QJsonObject &data)
{
    const QJsonValue durl = data.value("durl");
    if (!durl.isArray() || durl.toArray().isEmpty() || !durl.toArray().first().isObject())
        return QString();
    const QJsonObject first = durl.toArray().first().toObject();
    QString address = ZuviJSONCoercion::stringFromObject(first.value("url"));
    const QJsonValue backups = first.value("backup_url");
    if (address.isEmpty() && backups.isArray() && !backups.toArray().isEmpty())
        address = ZuviJSONCoercion::stringFromObject(backups.toArray().first());
    return address;
}
} // namespace

std::optional<ZuviVideoDetail>
ZuviVideoContentParser::parseVideoDetailFromData(const QByteArray &data, ZuviError *error)
{
    const auto root = ZuviAPIClient::serviceRootDictionaryFromData(
        data, QStringLiteral("视频详情接口返回错误"), error);
    if (!root)
        return std::nullopt;
    std::optional<ZuviVideoDetail> detail =
        ZuviVideoDetail::detailWithViewDictionary(root->value("data"));
    if (!detail)
        *error = ZuviAPIClient::errorWithCode(201, QStringLiteral("视频详情字段不完整"));
    return detail;
}

QString ZuviVideoContentParser::parsePlayURLFromData(const QByteArray &data, int requestedQuality,
                                                     int *actualQuality,
                                                     const QString &videoCDNDomainSuffix,
                                                     ZuviError *error)
{
    const auto root = ZuviAPIClient::jsonRootDictionaryFromData(data, error);
    if (!root)
        return QString();
    const qint64 code = ZuviJSONCoercion::integerFromObject(root->value("code"));
    if (code != 0) {
        QString message = ZuviJSONCoercion::stringFromObject(root->value("message"));
        if (message.isEmpty())
            message = QStringLiteral("播放地址接口返回错误");
        *error = ZuviAPIClient::errorWithCode(
            int(code), QStringLiteral("qn=%1 接口错误：%2").arg(requestedQuality).arg(message));
        return QString();
    }
    if (!root->value("data").isObject()) {
        *error = ZuviAPIClient::errorWithCode(
            301, QStringLiteral("qn=%1 播放地址缺少 data 字段").arg(requestedQuality));
        return QString();
    }
    const QJsonObject dataObject = root->value("data").toObject();
    *actualQuality = int(ZuviJSONCoercion::integerFromObject(dataObject.value("quality")));
    const QString address = firstDurlAddress(dataObject);
    if (address.isEmpty()) {
        *error = ZuviAPIClient::errorWithCode(
            302, playURLUnavailableMessageWithRequestedQuality(requestedQuality, dataObject));
        return QString();
    }
    return legacyPlayableURLStringFromURLString(address, videoCDNDomainSuffix);
}

QString
ZuviVideoContentParser::playURLUnavailableMessageWithRequestedQuality(int requestedQuality,
                                                                      const QJsonObject &data)
{
    QStringList parts{QStringLiteral("请求qn=%1").arg(requestedQuality)};
    const qint64 quality = ZuviJSONCoercion::integerFromObject(data.value("quality"));
    if (quality >= 1)
        parts.append(QStringLiteral("接口quality=%1").arg(quality));
    const QString accept = joinedIntegerTextFromArray(data.value("accept_quality"));
    parts.append(QStringLiteral("accept=%1").arg(accept.isEmpty() ? QStringLiteral("--") : accept));
    const QJsonValue format = data.value("format");
    if (format.isString() && !format.toString().isEmpty())
        parts.append(QStringLiteral("format=%1").arg(format.toString()));
    if (data.value("dash").isObject())
        parts.append(QStringLiteral("返回了DASH"));
    const QJsonValue durl = data.value("durl");
    if (!durl.isArray() || durl.toArray().isEmpty())
        parts.append(QStringLiteral("没有传统durl"));
    return parts.join(QStringLiteral("，"));
}

QString ZuviVideoContentParser::joinedIntegerTextFromArray(const QJsonValue &array)
{
    QStringList texts;
    for (const QJsonValue &element : array.toArray()) {
        // Numbers and numeric strings answer integerValue; other values do not.
        if (element.isDouble() || element.isString() || element.isBool())
            texts.append(QString::number(ZuviJSONCoercion::integerFromObject(element)));
    }
    return texts.join(',');
}

QString
ZuviVideoContentParser::legacyPlayableURLStringFromURLString(const QString &urlString,
                                                             const QString &videoCDNDomainSuffix)
{
    // Old devices cannot verify the CDN's certificates, so its addresses are
    // fetched over plain http.
    const QString secure = QStringLiteral("https://");
    if (!videoCDNDomainSuffix.isEmpty() && urlString.startsWith(secure) &&
        urlString.contains(videoCDNDomainSuffix))
        return QStringLiteral("http://") + urlString.mid(secure.size());
    return urlString;
}

std::optional<QList<ZuviDanmakuItem>>
ZuviVideoContentParser::parseDanmakuItemsFromData(const QByteArray &data, ZuviError *error)
{
    if (data.isEmpty()) {
        *error = ZuviAPIClient::errorWithCode(401, QStringLiteral("弹幕接口没有返回数据"));
        return std::nullopt;
    }
    ZuviDanmakuXMLParser parser;
    if (!parser.parse(data)) {
        *error = ZuviError(kXMLErrorDomain, 1,
                           QStringLiteral("弹幕 XML 解析失败：%1").arg(parser.errorString()));
        return std::nullopt;
    }
    QList<ZuviDanmakuItem> items = parser.takeItems();
    ZuviDanmakuXMLParser::sortByTime(items);
    return items;
}

QList<ZuviCommentItem> ZuviVideoContentParser::parseCommentsFromData(const QByteArray &data,
                                                                     const QString &listName,
                                                                     ZuviError *error)
{
    const auto root = ZuviAPIClient::serviceRootDictionaryFromData(
        data, QStringLiteral("%1接口返回错误").arg(listName), error);
    if (!root)
        return {};
    std::optional<QJsonArray> replies;
    const QJsonValue dataValue = root->value("data");
    if (dataValue.isObject()) {
        // JSON null counts as an empty list; pinned replies only stand in
        // when the ordinary list is missing altogether.
        const QJsonObject dataObject = dataValue.toObject();
        for (const char *key : {"replies", "top_replies"}) {
            const QJsonValue value = dataObject.value(QLatin1String(key));
            if (value.isNull() || value.isArray()) {
                replies = value.toArray();
                break;
            }
        }
    }
    if (!replies) {
        *error =
            ZuviAPIClient::errorWithCode(731, QStringLiteral("%1接口缺少评论列表").arg(listName));
        return {};
    }
    QList<ZuviCommentItem> comments;
    for (const QJsonValue &reply : *replies) {
        if (std::optional<ZuviCommentItem> comment =
                ZuviCommentItem::itemWithReplyDictionary(reply))
            comments.append(*comment);
    }
    return comments;
}
