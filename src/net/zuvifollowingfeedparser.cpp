#include "zuvifollowingfeedparser.h"

#include "model/zuvijsoncoercion.h"
#include "model/zuvivideoitem.h"
#include "zuviapiclient.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>

namespace {
QString text(const QJsonObject &object, const char *key)
{
    return ZuviJSONCoercion::stringFromObject(object.value(QLatin1String(key)));
}

QJsonObject object(const QJsonObject &parent, const char *key)
{
    return parent.value(QLatin1String(key)).toObject();
}

QJsonValue firstElement(const QJsonValue &array)
{
    const QJsonArray elements = array.toArray();
    return elements.isEmpty() ? QJsonValue() : elements.at(0);
}

// The first non-empty of two texts.
QString either(const QString &first, const QString &second)
{
    return first.isEmpty() ? second : first;
}

void insertIfNotEmpty(QVariantMap *map, const char *key, const QString &value)
{
    if (!value.isEmpty())
        map->insert(QLatin1String(key), value);
}

QString joinedParts(const QStringList &parts)
{
    QStringList kept;
    for (const QString &part : parts) {
        if (!part.isEmpty())
            kept.append(part);
    }
    return kept.join(QStringLiteral(" · "));
}

// The live room's play information: inside "content" (an object or a JSON
// text), else directly under live_rcmd.
QJsonObject livePlayInfo(const QJsonObject &liveRecommendation)
{
    const QJsonValue content = liveRecommendation.value("content");
    const QJsonObject contentObject =
        content.isObject() ? content.toObject()
                           : ZuviFollowingFeedParser::dictionaryFromJSONString(content.toString());
    const QJsonValue fromContent = contentObject.value("live_play_info");
    if (fromContent.isObject())
        return fromContent.toObject();
    return object(liveRecommendation, "live_play_info");
}

struct RowParts {
    QString authorName;
    QString avatar;
    QString action;
    QString dynamicText;
    QStringList images;
    std::optional<QVariantMap> live;
    std::optional<QVariantMap> article;
    std::optional<QVariantMap> draw;
};

// Picks the row's kind and fills the kind-specific entries; returns the title.
QString applyKind(const std::optional<ZuviVideoItem> &video, RowParts *parts, ZuviFollowingRow *row)
{
    if (video) {
        row->insert("rowType", "video");
        row->insert("video", QVariant::fromValue(*video));
        return video->title;
    }
    if (parts->live) {
        row->insert("rowType", "live");
        row->insert("liveInfo", *parts->live);
        const QString cover = parts->live->value("coverURLString").toString();
        if (!cover.isEmpty())
            parts->images = QStringList{cover};
        parts->dynamicText = QStringLiteral("正在直播");
        return either(parts->live->value("title").toString(), QStringLiteral("直播间"));
    }
    if (parts->article) {
        row->insert("rowType", "article");
        row->insert("articleInfo", *parts->article);
        const QString cover = parts->article->value("coverURLString").toString();
        if (!cover.isEmpty())
            parts->images = QStringList{cover};
        parts->dynamicText = parts->article->value("desc").toString();
        return either(parts->article->value("title").toString(), QStringLiteral("专栏文章"));
    }
    if (parts->draw) {
        row->insert("rowType", "draw");
        row->insert("drawInfo", *parts->draw);
        parts->images = parts->draw->value("imageURLStrings").toStringList();
        parts->dynamicText = parts->draw->value("text").toString();
        return either(parts->draw->value("title").toString(), QStringLiteral("图文动态"));
    }
    row->insert("rowType", "dynamic");
    return either(parts->dynamicText, QStringLiteral("动态更新"));
}

QString subtitleFor(const std::optional<ZuviVideoItem> &video, const RowParts &parts)
{
    using Parser = ZuviFollowingFeedParser;
    if (parts.live)
        return Parser::followingLiveSubtitleFromInfo(*parts.live, parts.authorName, parts.action);
    if (parts.article)
        return Parser::followingArticleSubtitleFromInfo(*parts.article, parts.authorName,
                                                        parts.action);
    if (parts.draw)
        return Parser::followingDrawSubtitleFromInfo(*parts.draw, parts.authorName, parts.action);
    return Parser::followingFallbackSubtitleWithAuthorName(
        parts.authorName, parts.action, video ? video->metadataText() : QStringLiteral("普通动态"));
}
} // namespace

std::optional<ZuviFollowingFeedParser::Page>
ZuviFollowingFeedParser::parseFollowingFeedFromData(const QByteArray &data, ZuviError *error)
{
    const auto root = ZuviAPIClient::serviceRootDictionaryFromData(
        data, QStringLiteral("关注动态接口返回错误"), error);
    if (!root)
        return std::nullopt;
    const QJsonObject dataObject = object(*root, "data");
    if (!root->value("data").isObject() || !dataObject.value("items").isArray()) {
        *error = ZuviAPIClient::errorWithCode(721, QStringLiteral("关注动态接口缺少 items 字段"));
        return std::nullopt;
    }
    Page page;
    for (const QJsonValue &item : dataObject.value("items").toArray()) {
        if (item.isObject())
            page.rows.append(rowFromItem(item.toObject()));
    }
    page.hasMore = ZuviJSONCoercion::boolFromObject(dataObject.value("has_more"));
    page.nextOffset = text(dataObject, "offset");
    return page;
}

QList<ZuviFollowingRow> ZuviFollowingFeedParser::parseFollowingRowsFromData(const QByteArray &data,
                                                                            ZuviError *error)
{
    const std::optional<Page> page = parseFollowingFeedFromData(data, error);
    return page ? page->rows : QList<ZuviFollowingRow>();
}

ZuviFollowingRow ZuviFollowingFeedParser::rowFromItem(const QJsonObject &item)
{
    const std::optional<ZuviVideoItem> video = ZuviVideoItem::itemWithFlexibleDictionary(item);
    RowParts parts;
    parts.authorName = followingAuthorNameFromItem(item);
    parts.avatar = followingAuthorAvatarURLStringFromItem(item);
    parts.action = followingActionTextFromItem(item);
    parts.dynamicText = followingDynamicTextFromItem(item);
    parts.images = followingImageURLStringsFromItem(item);
    parts.live = followingLiveInfoFromItem(item);
    parts.article = followingArticleInfoFromItem(item);
    parts.draw = followingDrawInfoFromItem(item, parts.dynamicText);

    ZuviFollowingRow row;
    insertIfNotEmpty(&row, "rowID", either(text(item, "id_str"), text(item, "id")));
    row.insert("title", applyKind(video, &parts, &row));
    row.insert("subtitle", subtitleFor(video, parts));
    insertIfNotEmpty(&row, "authorName", parts.authorName);
    insertIfNotEmpty(&row, "avatarURLString", parts.avatar);
    insertIfNotEmpty(&row, "actionText", parts.action);
    insertIfNotEmpty(&row, "dynamicText", parts.dynamicText);
    if (!parts.images.isEmpty())
        row.insert("imageURLStrings", parts.images);
    return row;
}

// --- Item paths

QJsonObject ZuviFollowingFeedParser::followingAuthorDictionaryFromItem(const QJsonObject &item)
{
    const QJsonValue author = object(item, "modules").value("module_author");
    return author.isObject() ? author.toObject() : object(item, "module_author");
}

QJsonObject ZuviFollowingFeedParser::followingDynamicDictionaryFromItem(const QJsonObject &item)
{
    const QJsonValue dynamic = object(item, "modules").value("module_dynamic");
    if (dynamic.isObject())
        return dynamic.toObject();
    // Older items carry the same parts at their top level.
    QJsonObject built;
    for (const char *key : {"desc", "major", "additional"}) {
        const QJsonValue value = item.value(QLatin1String(key));
        if (value.isObject())
            built.insert(QLatin1String(key), value);
    }
    return built;
}

QJsonObject ZuviFollowingFeedParser::followingMajorDictionaryFromItem(const QJsonObject &item)
{
    return object(followingDynamicDictionaryFromItem(item), "major");
}

QJsonObject ZuviFollowingFeedParser::followingBasicDictionaryFromItem(const QJsonObject &item)
{
    return object(item, "basic");
}

std::optional<QVariantMap>
ZuviFollowingFeedParser::followingLiveInfoFromItem(const QJsonObject &item)
{
    const QJsonValue recommendation = followingMajorDictionaryFromItem(item).value("live_rcmd");
    if (!recommendation.isObject())
        return std::nullopt;
    const QJsonObject play = livePlayInfo(recommendation.toObject());
    QVariantMap info;
    insertIfNotEmpty(&info, "title", text(play, "title"));
    insertIfNotEmpty(&info, "roomID", text(play, "room_id"));
    insertIfNotEmpty(&info, "uid", text(play, "uid"));
    insertIfNotEmpty(&info, "coverURLString", normalizedImageURLString(text(play, "cover")));
    insertIfNotEmpty(&info, "online",
                     ZuviJSONCoercion::compactCountStringFromObject(play.value("online")));
    const QString parentArea = text(play, "parent_area_name");
    const QString area = text(play, "area_name");
    insertIfNotEmpty(&info, "area",
                     !parentArea.isEmpty() && !area.isEmpty()
                         ? QStringLiteral("%1 / %2").arg(parentArea, area)
                         : either(parentArea, area));
    const QJsonObject watched = object(play, "watched_show");
    insertIfNotEmpty(&info, "watched",
                     either(text(watched, "text_large"), text(watched, "text_small")));
    insertIfNotEmpty(
        &info, "liveID",
        either(text(followingBasicDictionaryFromItem(item), "rid_str"), text(play, "live_id")));
    insertIfNotEmpty(&info, "link", text(play, "link"));
    info.insert("status", text(play, "live_status") == QLatin1String("1")
                              ? QStringLiteral("直播中")
                              : QStringLiteral("未开播"));
    return info;
}

std::optional<QVariantMap>
ZuviFollowingFeedParser::followingArticleInfoFromItem(const QJsonObject &item)
{
    const QJsonValue articleValue = followingMajorDictionaryFromItem(item).value("article");
    if (!articleValue.isObject())
        return std::nullopt;
    const QJsonObject article = articleValue.toObject();
    const QJsonObject basic = followingBasicDictionaryFromItem(item);
    QVariantMap info;
    insertIfNotEmpty(&info, "articleID", either(text(article, "id"), text(basic, "rid_str")));
    insertIfNotEmpty(&info, "title", text(article, "title"));
    insertIfNotEmpty(&info, "desc", cleanedArticleDescription(text(article, "desc")));
    insertIfNotEmpty(&info, "label", text(article, "label"));
    insertIfNotEmpty(&info, "URLString", normalizedImageURLString(text(article, "jump_url")));
    insertIfNotEmpty(&info, "coverURLString",
                     normalizedImageURLString(ZuviJSONCoercion::stringFromObject(
                         firstElement(article.value("covers")))));
    insertIfNotEmpty(&info, "commentType", text(basic, "comment_type"));
    insertIfNotEmpty(&info, "commentID", text(basic, "comment_id_str"));
    return info;
}

std::optional<QVariantMap>
ZuviFollowingFeedParser::followingDrawInfoFromItem(const QJsonObject &item,
                                                   const QString &dynamicText)
{
    const QJsonValue drawValue = followingMajorDictionaryFromItem(item).value("draw");
    if (!drawValue.isObject())
        return std::nullopt;
    const QJsonObject draw = drawValue.toObject();
    const QJsonObject basic = followingBasicDictionaryFromItem(item);
    QStringList images;
    appendImageURLStringsFromImageDictionaries(draw.value("items"), &images);
    QVariantMap info;
    insertIfNotEmpty(&info, "drawID", either(text(draw, "id"), text(basic, "rid_str")));
    info.insert("imageURLStrings", images);
    const QString placeholder = QStringLiteral("这条图文动态暂时没有可展示内容。");
    insertIfNotEmpty(&info, "text",
                     dynamicText.isEmpty() && images.isEmpty() ? placeholder : dynamicText);
    info.insert("empty", images.isEmpty());
    insertIfNotEmpty(&info, "commentType", text(basic, "comment_type"));
    insertIfNotEmpty(&info, "commentID", text(basic, "comment_id_str"));
    return info;
}

QString ZuviFollowingFeedParser::followingAuthorNameFromItem(const QJsonObject &item)
{
    return text(followingAuthorDictionaryFromItem(item), "name");
}

QString ZuviFollowingFeedParser::followingAuthorAvatarURLStringFromItem(const QJsonObject &item)
{
    const QJsonObject author = followingAuthorDictionaryFromItem(item);
    return normalizedImageURLString(either(text(author, "face"), text(author, "avatar")));
}

QString ZuviFollowingFeedParser::followingActionTextFromItem(const QJsonObject &item)
{
    const QJsonObject author = followingAuthorDictionaryFromItem(item);
    const QString action = text(author, "pub_action");
    const QString time = text(author, "pub_time");
    if (!action.isEmpty() && !time.isEmpty())
        return QStringLiteral("%1  %2").arg(action, time);
    return either(action, time);
}

QString ZuviFollowingFeedParser::followingDynamicTextFromItem(const QJsonObject &item, int depth)
{
    QString dynamicText = textFromDynamicDescriptionDictionary(
        followingDynamicDictionaryFromItem(item).value("desc"));
    if (dynamicText.isEmpty())
        dynamicText = textFromDynamicDescriptionDictionary(item.value("desc"));
    // A forward without words of its own shows the forwarded post's, one level deep.
    if (dynamicText.isEmpty() && depth < 1 && item.value("orig").isObject())
        dynamicText = followingDynamicTextFromItem(object(item, "orig"), depth + 1);
    return dynamicText;
}

QStringList ZuviFollowingFeedParser::followingImageURLStringsFromItem(const QJsonObject &item)
{
    QStringList list;
    appendFollowingImageURLStringsFromItem(item, &list, 0);
    return list;
}

// --- Texts and values

QJsonObject ZuviFollowingFeedParser::dictionaryFromJSONString(const QString &json)
{
    if (json.isEmpty())
        return {};
    return QJsonDocument::fromJson(json.toUtf8()).object();
}

QString ZuviFollowingFeedParser::cleanedArticleDescription(const QString &text)
{
    static const QRegularExpression whiteSpace(QStringLiteral("\\s+"));
    QString cleaned = text;
    cleaned.replace(QStringLiteral("[图片]"), QStringLiteral(" "));
    return cleaned.split(whiteSpace, Qt::SkipEmptyParts).join(' ');
}

QString ZuviFollowingFeedParser::textFromDynamicDescriptionDictionary(const QJsonValue &description)
{
    const QJsonObject dictionary = description.toObject();
    const QString own = text(dictionary, "text");
    if (!own.isEmpty())
        return own;
    QString joined;
    for (const QJsonValue &node : dictionary.value("rich_text_nodes").toArray()) {
        if (node.isObject())
            joined += either(text(node.toObject(), "text"), text(node.toObject(), "orig_text"));
    }
    return joined;
}

QString ZuviFollowingFeedParser::followingLiveSubtitleFromInfo(const QVariantMap &info,
                                                               const QString &fallbackAuthorName,
                                                               const QString &actionText)
{
    const QString online = info.value("online").toString();
    const QString joined =
        joinedParts({info.value("status").toString(), info.value("area").toString(),
                     online.isEmpty() ? QString() : online + QStringLiteral("在线"),
                     info.value("watched").toString()});
    return joined.isEmpty() ? followingFallbackSubtitleWithAuthorName(
                                  fallbackAuthorName, actionText, QStringLiteral("直播动态"))
                            : joined;
}

QString ZuviFollowingFeedParser::followingArticleSubtitleFromInfo(const QVariantMap &info,
                                                                  const QString &fallbackAuthorName,
                                                                  const QString &actionText)
{
    const QString articleID = info.value("articleID").toString();
    const QString joined =
        joinedParts({info.value("label").toString(),
                     articleID.isEmpty() ? QString() : QStringLiteral("cv%1").arg(articleID)});
    return joined.isEmpty() ? followingFallbackSubtitleWithAuthorName(
                                  fallbackAuthorName, actionText, QStringLiteral("专栏文章"))
                            : joined;
}

QString ZuviFollowingFeedParser::followingDrawSubtitleFromInfo(const QVariantMap &info,
                                                               const QString &fallbackAuthorName,
                                                               const QString &actionText)
{
    const int count = int(info.value("imageURLStrings").toStringList().size());
    const QString drawID = info.value("drawID").toString();
    const QString joined =
        joinedParts({count > 0 ? QStringLiteral("%1张图片").arg(count) : QString(),
                     info.value("empty").toBool() ? QStringLiteral("图片列表为空") : QString(),
                     drawID.isEmpty() ? QString() : QStringLiteral("draw %1").arg(drawID)});
    return joined.isEmpty() ? followingFallbackSubtitleWithAuthorName(
                                  fallbackAuthorName, actionText, QStringLiteral("图文动态"))
                            : joined;
}

QString ZuviFollowingFeedParser::followingFallbackSubtitleWithAuthorName(const QString &authorName,
                                                                         const QString &actionText,
                                                                         const QString &defaultText)
{
    if (!authorName.isEmpty() && !actionText.isEmpty())
        return QStringLiteral("%1  %2").arg(authorName, actionText);
    return either(either(authorName, actionText), defaultText);
}

// --- Images

void ZuviFollowingFeedParser::appendFollowingImageURLStringsFromItem(const QJsonObject &item,
                                                                     QStringList *list, int depth)
{
    const QJsonObject dynamic = followingDynamicDictionaryFromItem(item);
    const QJsonObject major = object(dynamic, "major");
    appendImageURLStringsFromImageDictionaries(object(major, "draw").value("items"), list);
    appendImageURLStringsFromImageDictionaries(object(major, "opus").value("pics"), list);
    for (const QJsonValue &node : object(dynamic, "desc").value("rich_text_nodes").toArray()) {
        if (list->size() >= kMaximumImages)
            return;
        appendImageURLStringsFromImageDictionaries(node.toObject().value("pics"), list);
        const QJsonValue video = node.toObject().value("video");
        if (video.isObject())
            appendImageURLString(firstImageURLStringFromDictionary(video), list);
    }
    appendImageURLString(firstImageURLStringFromDictionary(major.value("common")), list);
    appendImageURLString(firstImageURLStringFromDictionary(major.value("archive")), list);
    appendImageURLString(
        firstImageURLStringFromDictionary(object(dynamic, "additional").value("common")), list);
    if (depth == 0 && list->size() < kMaximumImages && item.value("orig").isObject())
        appendFollowingImageURLStringsFromItem(object(item, "orig"), list, depth + 1);
}

void ZuviFollowingFeedParser::appendImageURLStringsFromImageDictionaries(const QJsonValue &images,
                                                                         QStringList *list)
{
    for (const QJsonValue &image : images.toArray()) {
        if (list->size() >= kMaximumImages)
            return;
        if (image.isObject())
            appendImageURLString(firstImageURLStringFromDictionary(image), list);
    }
}

QString ZuviFollowingFeedParser::firstImageURLStringFromDictionary(const QJsonValue &dictionary)
{
    const QJsonObject object = dictionary.toObject();
    for (const char *key :
         {"src", "url", "img_src", "image", "image_url", "cover", "cover_url", "pic"}) {
        const QString value = text(object, key);
        if (!value.isEmpty())
            return value;
    }
    return QString();
}

void ZuviFollowingFeedParser::appendImageURLString(const QString &urlString, QStringList *list)
{
    const QString normalized = normalizedImageURLString(urlString);
    if (!normalized.isEmpty() && !list->contains(normalized) && list->size() < kMaximumImages)
        list->append(normalized);
}

QString ZuviFollowingFeedParser::normalizedImageURLString(const QString &urlString)
{
    return ZuviVideoItem::normalizedURLString(urlString);
}
