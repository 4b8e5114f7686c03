#pragma once

#include <QJsonValue>
#include <QMetaType>
#include <QString>
#include <QVariantMap>

#include <optional>

// The operator message a configuration document may carry under "message".
// A message is only announced when its version is higher than the last one
// announced for the same source.
struct ZuviRemoteConfigMessage {
    qint64 version = 1; // always at least 1
    QString imageURLString;
    QString text;

    // A message from a dictionary whose "version" reads as an integer of at
    // least 1 (a number or a numeric string); nothing otherwise.
    static std::optional<ZuviRemoteConfigMessage> messageWithDictionary(const QJsonValue &value);
    static std::optional<ZuviRemoteConfigMessage> messageWithDictionary(const QVariant &value);

    // A string trimmed of white space; a number as its text; anything else "".
    static QString stringValueFromObject(const QJsonValue &value);
    // The integer a value reads as, the lenient way: numbers are truncated,
    // strings give their leading integer ("3", " 7x"), anything else nothing.
    static std::optional<qint64> integerValueFromObject(const QJsonValue &value);

    bool hasDisplayContent() const { return !imageURLString.isEmpty() || !text.isEmpty(); }
    // "version" (number), "image" and "text" (strings).
    QVariantMap dictionaryRepresentation() const;

    bool operator==(const ZuviRemoteConfigMessage &other) const
    {
        return version == other.version && imageURLString == other.imageURLString &&
               text == other.text;
    }
    bool operator!=(const ZuviRemoteConfigMessage &other) const { return !(*this == other); }
};

Q_DECLARE_METATYPE(ZuviRemoteConfigMessage)
