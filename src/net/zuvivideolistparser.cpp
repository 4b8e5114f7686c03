#include "zuvivideolistparser.h"

#include "model/zuvijsoncoercion.h"
#include "zuviapiclient.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <functional>

namespace {
using Factory = std::function<std::optional<ZuviVideoItem>(const QJsonValue &)>;

// Every element that is a dictionary and yields an item, in the service's order.
QList<ZuviVideoItem> itemsFromArray(const QJsonArray &array, const Factory &factory)
{
    QList<ZuviVideoItem> items;
    items.reserve(array.size());
    for (const QJsonValue &element : array) {
        if (!element.isObject())
            continue;
        if (std::optional<ZuviVideoItem> item = factory(element))
            items.append(*item);
    }
    return items;
}

// "data" → "list" parsed with the popular factory: popular and ranking share it.
QList<ZuviVideoItem> dataListVideos(const QJsonObject &root, int missingCode,
                                    const QString &missingMessage, ZuviError *error)
{
    const QJsonValue list = root.value("data").toObject().value("list");
    if (!list.isArray()) {
        *error = ZuviAPIClient::errorWithCode(missingCode, missingMessage);
        return {};
    }
    return itemsFromArray(list.toArray(), &ZuviVideoItem::itemWithPopularDictionary);
}
} // namespace

QList<ZuviVideoItem> ZuviVideoListParser::parsePopularVideosFromData(const QByteArray &data,
                                                                     ZuviError *error)
{
    // This parser reads the JSON itself: a root that is not an object is no
    // list and no error.
    if (data.isEmpty()) {
        *error = ZuviAPIClient::errorWithCode(100, QStringLiteral("接口没有返回数据"));
        return {};
    }
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(data, &parseError);
    if (parseError.error != QJsonParseError::NoError) {
        ZuviAPIClient::jsonRootDictionaryFromData(data, error);
        return {};
    }
    if (!document.isObject())
        return {};
    const QJsonObject root = document.object();
    const ZuviError serviceError =
        ZuviAPIClient::serviceErrorFromRootDictionary(root, QStringLiteral("热门接口返回错误"));
    if (serviceError.hasError()) {
        *error = serviceError;
        return {};
    }
    return dataListVideos(root, 101, QStringLiteral("热门接口缺少列表字段"), error);
}

QList<ZuviVideoItem> ZuviVideoListParser::parseRankingVideosFromData(const QByteArray &data,
                                                                     ZuviError *error)
{
    const auto root = ZuviAPIClient::serviceRootDictionaryFromData(
        data, QStringLiteral("分区榜单接口返回错误"), error);
    if (!root)
        return {};
    return dataListVideos(*root, 501, QStringLiteral("分区榜单缺少列表字段"), error);
}

QList<ZuviVideoItem> ZuviVideoListParser::parseLegacyRankingVideosFromData(const QByteArray &data,
                                                                           ZuviError *error)
{
    const auto root = ZuviAPIClient::serviceRootDictionaryFromData(
        data, QStringLiteral("旧分区榜单接口返回错误"), error);
    if (!root)
        return {};
    const QJsonValue dataValue = root->value("data");
    const QJsonValue list = dataValue.isArray() ? dataValue : dataValue.toObject().value("list");
    if (!list.isArray()) {
        *error = ZuviAPIClient::errorWithCode(502, QStringLiteral("旧分区榜单缺少列表字段"));
        return {};
    }
    // Old ranking entries come in either shape; the search shape is tried
    // only when the popular one builds nothing.
    return itemsFromArray(list.toArray(), [](const QJsonValue &entry) {
        std::optional<ZuviVideoItem> item = ZuviVideoItem::itemWithPopularDictionary(entry);
        return item ? item : ZuviVideoItem::itemWithSearchDictionary(entry);
    });
}

QList<ZuviVideoItem> ZuviVideoListParser::parseSearchVideosFromData(const QByteArray &data,
                                                                    ZuviError *error)
{
    const auto root = ZuviAPIClient::serviceRootDictionaryFromData(
        data, QStringLiteral("搜索接口返回错误"), error);
    if (!root)
        return {};
    const QJsonValue result = root->value("data").toObject().value("result");
    if (!result.isArray()) {
        *error = ZuviAPIClient::errorWithCode(601, QStringLiteral("搜索接口缺少结果列表"));
        return {};
    }
    return itemsFromArray(result.toArray(), &ZuviVideoItem::itemWithSearchDictionary);
}

QList<ZuviVideoItem> ZuviVideoListParser::parseFlexibleVideosFromData(const QByteArray &data,
                                                                      const QString &listName,
                                                                      ZuviError *error)
{
    const auto root = ZuviAPIClient::serviceRootDictionaryFromData(
        data, QStringLiteral("%1接口返回错误").arg(listName), error);
    if (!root)
        return {};
    const std::optional<QJsonArray> list = firstVideoArrayFromDataDictionary(root->value("data"));
    if (!list) {
        *error =
            ZuviAPIClient::errorWithCode(722, QStringLiteral("%1接口缺少列表字段").arg(listName));
        return {};
    }
    return itemsFromArray(*list, &ZuviVideoItem::itemWithFlexibleDictionary);
}

qint64 ZuviVideoListParser::parseFirstFavoriteMediaIDFromData(const QByteArray &data,
                                                              ZuviError *error)
{
    const auto root = ZuviAPIClient::serviceRootDictionaryFromData(
        data, QStringLiteral("收藏夹列表接口返回错误"), error);
    if (!root)
        return 0;
    const QJsonValue list = root->value("data").toObject().value("list");
    if (!list.isArray()) {
        *error = ZuviAPIClient::errorWithCode(723, QStringLiteral("收藏夹列表接口缺少 list 字段"));
        return 0;
    }
    for (const QJsonValue &folder : list.toArray()) {
        if (!folder.isObject())
            continue;
        const QJsonObject dictionary = folder.toObject();
        qint64 mediaID = ZuviJSONCoercion::integerFromObject(dictionary.value("media_id"));
        if (mediaID == 0)
            mediaID = ZuviJSONCoercion::integerFromObject(dictionary.value("id"));
        if (mediaID > 0)
            return mediaID;
    }
    return 0;
}

std::optional<QJsonArray>
ZuviVideoListParser::firstVideoArrayFromDataDictionary(const QJsonValue &data)
{
    if (data.isArray())
        return data.toArray();
    if (!data.isObject())
        return std::nullopt;
    const QJsonObject dictionary = data.toObject();
    for (const char *key : {"list", "item", "items", "archives", "medias", "result"}) {
        const QJsonValue value = dictionary.value(QLatin1String(key));
        if (value.isArray())
            return value.toArray();
    }
    // An uploader's video list nests its array one level deeper.
    const QJsonValue vlist = dictionary.value("list").toObject().value("vlist");
    if (vlist.isArray())
        return vlist.toArray();
    return std::nullopt;
}

QList<ZuviVideoItem> ZuviVideoListParser::videosByLimitingVideos(const QList<ZuviVideoItem> &videos,
                                                                 int limit)
{
    if (limit >= 1 && videos.size() > limit)
        return videos.mid(0, limit);
    return videos;
}
