#include "zuvijsoncoercion.h"

#include "zuvinumbertext.h"

#include <cmath>

QString ZuviJSONCoercion::stringFromObject(const QJsonValue &value)
{
    switch (value.type()) {
    case QJsonValue::String:
        return value.toString();
    case QJsonValue::Bool:
        return value.toBool() ? QStringLiteral("1") : QStringLiteral("0");
    case QJsonValue::Double: {
        const double number = value.toDouble();
        // Whole numbers print without a fraction, as a number's stringValue does.
        if (std::isfinite(number) && number == std::floor(number) && std::fabs(number) < 1e18)
            return QString::number(static_cast<qint64>(number));
        return QString::number(number, 'g', 17 - 2);
    }
    default:
        return QString();
    }
}

QString ZuviJSONCoercion::compactCountStringFromObject(const QJsonValue &value)
{
    // Read like a number's "doubleValue": "12abc" is 12, "abc" is 0, whatever the locale.
    const double count = ZuviNumberText::doubleValue(stringFromObject(value));
    if (count >= 10000)
        return QString::asprintf("%.1f", count / 10000.0) + QStringLiteral("万");
    if (count > 0)
        return QString::number(static_cast<qint64>(count));
    return QString();
}

qint64 ZuviJSONCoercion::integerFromObject(const QJsonValue &value)
{
    return ZuviNumberText::longLongValue(stringFromObject(value));
}

bool ZuviJSONCoercion::boolFromObject(const QJsonValue &value)
{
    if (value.isBool())
        return value.toBool();
    if (value.isDouble())
        return value.toDouble() != 0;
    const QString string = value.toString();
    int i = 0;
    while (i < string.size() && string.at(i).isSpace())
        ++i;
    if (i < string.size() && (string.at(i) == '+' || string.at(i) == '-'))
        ++i;
    while (i < string.size() && string.at(i) == '0')
        ++i;
    if (i >= string.size())
        return false;
    const QChar first = string.at(i).toUpper();
    return first == 'Y' || first == 'T' || (first >= '1' && first <= '9');
}
