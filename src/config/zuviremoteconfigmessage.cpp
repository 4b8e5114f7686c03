#include "zuviremoteconfigmessage.h"

#include <QJsonObject>
#include <QVariant>

#include <cmath>
#include <limits>

namespace {
// Leading white space, an optional sign and the digits that follow; no digits give 0.
qint64 leadingInteger(const QString &text)
{
    int i = 0;
    while (i < text.size() && text.at(i).isSpace())
        ++i;
    bool negative = false;
    if (i < text.size() && (text.at(i) == '-' || text.at(i) == '+')) {
        negative = text.at(i) == '-';
        ++i;
    }
    qint64 value = 0;
    for (; i < text.size() && text.at(i).isDigit() && text.at(i).unicode() < 128; ++i) {
        if (value > (std::numeric_limits<qint64>::max() - 9) / 10)
            return negative ? std::numeric_limits<qint64>::min()
                            : std::numeric_limits<qint64>::max();
        value = value * 10 + (text.at(i).unicode() - '0');
    }
    return negative ? -value : value;
}
} // namespace

std::optional<qint64> ZuviRemoteConfigMessage::integerValueFromObject(const QJsonValue &value)
{
    switch (value.type()) {
    case QJsonValue::Double: {
        // An integer in the document (or in a message written back by us)
        // is kept exactly: a version beyond 2^53 would lose digits as a
        // double and no longer match the one remembered.
        const QVariant exact = value.toVariant();
        if (exact.typeId() == QMetaType::LongLong)
            return exact.toLongLong();
        const double number = std::trunc(value.toDouble());
        if (!std::isfinite(number))
            return std::nullopt;
        // A number beyond the 64-bit range saturates, as a long digit
        // string does; converting it directly would be undefined.
        constexpr double limit = 9223372036854775808.0; // 2^63
        if (number >= limit)
            return std::numeric_limits<qint64>::max();
        if (number < -limit)
            return std::numeric_limits<qint64>::min();
        return static_cast<qint64>(number);
    }
    case QJsonValue::String:
        return leadingInteger(value.toString());
    case QJsonValue::Bool:
        return value.toBool() ? 1 : 0;
    default:
        return std::nullopt;
    }
}

QString ZuviRemoteConfigMessage::stringValueFromObject(const QJsonValue &value)
{
    switch (value.type()) {
    case QJsonValue::String:
        return value.toString().trimmed();
    case QJsonValue::Double: {
        const double number = value.toDouble();
        if (number == std::trunc(number) && std::fabs(number) < 1e15)
            return QString::number(static_cast<qint64>(number));
        return QString::number(number, 'g', 17);
    }
    case QJsonValue::Bool:
        return value.toBool() ? QStringLiteral("1") : QStringLiteral("0");
    default:
        return QString();
    }
}

std::optional<ZuviRemoteConfigMessage>
ZuviRemoteConfigMessage::messageWithDictionary(const QJsonValue &value)
{
    if (!value.isObject())
        return std::nullopt;
    const QJsonObject dictionary = value.toObject();
    const std::optional<qint64> version = integerValueFromObject(dictionary.value("version"));
    if (!version || *version < 1)
        return std::nullopt;
    ZuviRemoteConfigMessage message;
    message.version = *version;
    message.imageURLString = stringValueFromObject(dictionary.value("image"));
    message.text = stringValueFromObject(dictionary.value("text"));
    return message;
}

std::optional<ZuviRemoteConfigMessage>
ZuviRemoteConfigMessage::messageWithDictionary(const QVariant &value)
{
    return messageWithDictionary(QJsonValue::fromVariant(value));
}

QVariantMap ZuviRemoteConfigMessage::dictionaryRepresentation() const
{
    return {{"version", version}, {"image", imageURLString}, {"text", text}};
}
