#pragma once

#include <QJsonValue>
#include <QString>

// How the client reads a field of the service's JSON, whatever its type:
// numbers and strings are interchangeable, as they are in the service's own
// answers (a count may come as 12 or "12", a flag as true, 1 or "1"). Records,
// parsers and the service client all read fields through these rules, so one
// answer reads the same wherever it is taken apart.
class ZuviJSONCoercion
{
public:
    // A string as it is, a whole number without a fraction, a boolean as "1"
    // or "0"; null, arrays and objects read as the empty string.
    static QString stringFromObject(const QJsonValue &value);
    // A count for display: "1.2万" from ten thousand on, the plain number
    // above zero, nothing for zero, negatives and non-numbers.
    static QString compactCountStringFromObject(const QJsonValue &value);
    // A value read as a number's longLongValue: "12abc" is 12, "abc", null and objects are 0.
    static qint64 integerFromObject(const QJsonValue &value);
    // A value read as a boolValue: true, non-zero numbers, and texts that
    // start with Y, T or a digit 1–9 after blanks, a sign and zeros.
    static bool boolFromObject(const QJsonValue &value);
};
