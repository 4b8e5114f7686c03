#include "zuvinumbertext.h"

#include <QVarLengthArray>

#include <charconv>
#include <cmath>
#include <limits>

namespace {

template <typename Char> bool isBlank(Char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}

template <typename Char> bool isDigit(Char c)
{
    return c >= '0' && c <= '9';
}

// Skips leading blanks and one sign; returns true for a minus sign.
template <typename Char> bool skipBlanksAndSign(const Char *&p, const Char *end)
{
    while (p < end && isBlank(*p))
        ++p;
    if (p < end && (*p == '+' || *p == '-'))
        return *p++ == '-';
    return false;
}

// The magnitude of the leading digits, saturated at `limit`.
template <typename Char> quint64 readDigits(const Char *&p, const Char *end, quint64 limit)
{
    quint64 value = 0;
    for (; p < end && isDigit(*p); ++p) {
        const unsigned digit = unsigned(*p - '0');
        if (value > (limit - digit) / 10)
            value = limit;
        else
            value = value * 10 + digit;
    }
    return value;
}

template <typename Char> qint64 readLongLong(const Char *p, const Char *end)
{
    const bool negative = skipBlanksAndSign(p, end);
    constexpr quint64 maxPositive = quint64(std::numeric_limits<qint64>::max());
    const quint64 magnitude = readDigits(p, end, negative ? maxPositive + 1 : maxPositive);
    if (negative)
        return magnitude > maxPositive ? std::numeric_limits<qint64>::min() : -qint64(magnitude);
    return qint64(magnitude);
}

qint32 saturateToInt(qint64 value)
{
    if (value > std::numeric_limits<qint32>::max())
        return std::numeric_limits<qint32>::max();
    if (value < std::numeric_limits<qint32>::min())
        return std::numeric_limits<qint32>::min();
    return qint32(value);
}

// Exact powers of ten: every one of them is representable in a double, so a
// mantissa below 2^53 multiplied or divided by one is correctly rounded.
constexpr double kExactPowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                        1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                        1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

// The slow path for long or extreme decimals: the standard locale-free reader
// over the span the grammar accepted (ASCII only, so a narrow copy is exact).
template <typename Char> double readDecimalSlowly(const Char *begin, const Char *end)
{
    QVarLengthArray<char, 64> narrow;
    for (const Char *p = begin; p < end; ++p)
        narrow.append(char(*p));
    double value = 0;
    const auto result = std::from_chars(narrow.data(), narrow.data() + narrow.size(), value);
    if (result.ec != std::errc() || !std::isfinite(value))
        return 0;
    return value;
}

template <typename Char> double readDouble(const Char *p, const Char *end)
{
    const bool negative = skipBlanksAndSign(p, end);
    const Char *start = p;
    quint64 mantissa = 0;
    int significantDigits = 0;
    int exponent = 0;
    bool sawDigit = false;
    for (; p < end && isDigit(*p); ++p, sawDigit = true) {
        if (mantissa == 0 && *p == '0')
            continue;
        if (++significantDigits <= 19)
            mantissa = mantissa * 10 + unsigned(*p - '0');
        else
            ++exponent;
    }
    if (p < end && *p == '.') {
        for (++p; p < end && isDigit(*p); ++p, sawDigit = true) {
            if (mantissa == 0 && *p == '0') {
                --exponent;
                continue;
            }
            if (++significantDigits <= 19) {
                mantissa = mantissa * 10 + unsigned(*p - '0');
                --exponent;
            }
        }
    }
    if (!sawDigit)
        return 0;
    // An exponent counts only when digits follow it ("5e" is 5).
    if (p < end && (*p == 'e' || *p == 'E')) {
        const Char *q = p + 1;
        bool negativeExponent = false;
        if (q < end && (*q == '+' || *q == '-'))
            negativeExponent = *q++ == '-';
        if (q < end && isDigit(*q)) {
            const qint64 written = qint64(readDigits(q, end, 100000));
            exponent += int(negativeExponent ? -written : written);
            p = q;
        }
    }
    double value;
    if (mantissa == 0) {
        value = 0;
    } else if (significantDigits <= 19 && mantissa < (quint64(1) << 53) && exponent >= -22 &&
               exponent <= 22) {
        value = double(mantissa);
        value = exponent < 0 ? value / kExactPowersOfTen[-exponent]
                             : value * kExactPowersOfTen[exponent];
    } else {
        value = readDecimalSlowly(start, p);
    }
    return negative ? -value : value;
}

const char *bytesBegin(QByteArrayView text)
{
    return text.data();
}

const char16_t *charsBegin(QStringView text)
{
    return text.utf16();
}

} // namespace

qint64 ZuviNumberText::longLongValue(QStringView text)
{
    return readLongLong(charsBegin(text), charsBegin(text) + text.size());
}

qint64 ZuviNumberText::longLongValue(QByteArrayView text)
{
    return readLongLong(bytesBegin(text), bytesBegin(text) + text.size());
}

qint32 ZuviNumberText::intValue(QStringView text)
{
    return saturateToInt(longLongValue(text));
}

qint32 ZuviNumberText::intValue(QByteArrayView text)
{
    return saturateToInt(longLongValue(text));
}

double ZuviNumberText::doubleValue(QStringView text)
{
    return readDouble(charsBegin(text), charsBegin(text) + text.size());
}

double ZuviNumberText::doubleValue(QByteArrayView text)
{
    return readDouble(bytesBegin(text), bytesBegin(text) + text.size());
}

quint64 ZuviNumberText::unsignedValue(QByteArrayView text)
{
    const char *p = text.data();
    const char *end = p + text.size();
    const bool negative = skipBlanksAndSign(p, end);
    const quint64 magnitude = readDigits(p, end, std::numeric_limits<quint64>::max());
    return negative ? quint64(0) - magnitude : magnitude;
}
