#pragma once

#include <QByteArrayView>
#include <QStringView>

// Reads the leading number of a text the way the service's values are read
// everywhere: leading blanks are skipped, an optional sign is taken, and
// reading stops at the first character that cannot continue the number
// ("12abc" is 12, "abc" is 0). Integers saturate instead of wrapping, and a
// decimal that is not a finite double reads as 0, so no caller ever sees a
// NaN or an overflowed value.
//
// The byte forms are the danmaku parser's hot path: plain digit loops with a
// correctly rounded fast path for short decimals, no allocation, no locale.
// Their pointer forms also report where reading stopped, so a caller walking
// a comma-separated list need not search for the next comma again.
class ZuviNumberText
{
public:
    static qint64 longLongValue(QStringView text);
    static qint64 longLongValue(QByteArrayView text);
    static qint32 intValue(QStringView text);
    static qint32 intValue(QByteArrayView text);
    static double doubleValue(QStringView text);
    static double doubleValue(QByteArrayView text);
    // Base 10, unsigned: a minus sign negates in unsigned arithmetic (so "-1"
    // is the largest value), and a value past 64 bits saturates.
    static quint64 unsignedValue(QByteArrayView text);

    static qint32 intValue(const char *begin, const char *end, const char **stop);
    static double doubleValue(const char *begin, const char *end, const char **stop);
    static quint64 unsignedValue(const char *begin, const char *end, const char **stop);
};
