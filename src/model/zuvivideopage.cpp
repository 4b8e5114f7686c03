#include "zuvivideopage.h"

#include "zuvinumbertext.h"
#include "zuvivideoitem.h"

#include <QJsonObject>

std::optional<ZuviVideoPage> ZuviVideoPage::pageWithDictionary(const QJsonValue &dictionary)
{
    if (!dictionary.isObject())
        return std::nullopt;
    const QJsonObject object = dictionary.toObject();
    ZuviVideoPage page;
    page.cid = ZuviNumberText::longLongValue(
        ZuviVideoItem::stringFromObject(object.value(QLatin1String("cid"))));
    if (page.cid <= 0)
        return std::nullopt;
    page.pageNumber = ZuviNumberText::intValue(
        ZuviVideoItem::stringFromObject(object.value(QLatin1String("page"))));
    page.partTitle = ZuviVideoItem::stringFromObject(object.value(QLatin1String("part")));
    if (page.partTitle.isEmpty())
        page.partTitle = QStringLiteral("P%1").arg(page.pageNumber);
    return page;
}
