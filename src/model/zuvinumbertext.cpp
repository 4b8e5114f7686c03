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

template <typename Char> unsigned digitValue(Char c)
{
    // Wraps for characters below '0', so one comparison tests both ends.
    return unsigned(c) - unsigned('0');
}

// Skips leading blanks and one sign; returns true for a minus sign.
template <typename Char>
inline __attribute__((always_inline)) bool skipBlanksAndSign(const Char *&p, const Char *end)
{
    while (p < end && isBlank(*p))
        ++p;
    if (p < end && (*p == '+' || *p == '-'))
        return *p++ == '-';
    return false;
}

// The magnitude of the leading digits, saturated at `limit`. Nineteen
// digits always fit 64 bits, so only longer runs pay for overflow checks.
template <typename Char> quint64 readDigits(const Char *&cursor, const Char *end, quint64 limit)
{
    const Char *const start = cursor;
    const Char *p = start;
    quint64 value = 0;
    unsigned digit;
    for (; p < end && (digit = digitValue(*p)) <= 9; ++p)
        value = value * 10 + digit;
    cursor = p;
    if (p - start > 19) {
        value = 0;
        for (const Char *q = start; q < p; ++q) {
            if (__builtin_mul_overflow(value, 10u, &value) ||
                __builtin_add_overflow(value, digitValue(*q), &value))
                return limit;
        }
    }
    return value > limit ? limit : value;
}

template <typename Char> qint64 readLongLong(const Char *&p, const Char *end)
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
template <typename Char> Q_NEVER_INLINE double readDecimalSlowly(const Char *begin, const Char *end)
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

template <typename Char> double readDouble(const Char *&cursor, const Char *end)
{
    // A local cursor: writing through the reference on every digit would
    // store to memory each time round the loop.
    const Char *p = cursor;
    const bool negative = skipBlanksAndSign(p, end);
    const Char *const start = p;
    // The digits accumulate into one integer mantissa; past 19 digits it
    // wraps, and the text goes to the slow path instead (rare in practice).
    quint64 mantissa = 0;
    unsigned digit;
    for (; p < end && (digit = digitValue(*p)) <= 9; ++p)
        mantissa = mantissa * 10 + digit;
    qsizetype digits = p - start;
    qsizetype fractionDigits = 0;
    if (p < end && *p == '.') {
        const Char *const fraction = ++p;
        for (; p < end && (digit = digitValue(*p)) <= 9; ++p)
            mantissa = mantissa * 10 + digit;
        fractionDigits = p - fraction;
        digits += fractionDigits;
    }
    cursor = p;
    if (digits == 0)
        return 0;
    qsizetype exponent = -fractionDigits;
    // An exponent counts only when digits follow it ("5e" is 5).
    if (p < end && (*p == 'e' || *p == 'E')) {
        const Char *q = p + 1;
        bool negativeExponent = false;
        if (q < end && (*q == '+' || *q == '-'))
            negativeExponent = *q++ == '-';
        if (q < end && digitValue(*q) <= 9) {
            const qint64 written = qint64(readDigits(q, end, 100000));
            exponent += negativeExponent ? -written : written;
            p = cursor = q;
        }
    }
    double value;
    if (digits <= 19 && mantissa < (quint64(1) << 53) && exponent >= -22 && exponent <= 22) {
        value = exponent < 0 ? double(mantissa) / kExactPowersOfTen[-exponent]
                             : double(mantissa) * kExactPowersOfTen[exponent];
    } else if (digits <= 19 && mantissa == 0) {
        value = 0;
    } else {
        value = readDecimalSlowly(start, p);
    }
    return negative ? -value : value;
}

template <typename Char> quint64 readUnsigned(const Char *&p, const Char *end)
{
    const bool negative = skipBlanksAndSign(p, end);
    const quint64 magnitude = readDigits(p, end, std::numeric_limits<quint64>::max());
    return negative ? quint64(0) - magnitude : magnitude;
}

template <typename Char> struct Span {
    const Char *begin;
    const Char *end;
};

Span<char16_t> span(QStringView text)
{
    return {text.utf16(), text.utf16() + text.size()};
}

Span<char> span(QByteArrayView text)
{
    return {text.data(), text.data() + text.size()};
}

} // namespace

qint64 ZuviNumberText::longLongValue(QStringView text)
{
    auto [p, end] = span(text);
    return readLongLong(p, end);
}

qint64 ZuviNumberText::longLongValue(QByteArrayView text)
{
    auto [p, end] = span(text);
    return readLongLong(p, end);
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
    auto [p, end] = span(text);
    return readDouble(p, end);
}

double ZuviNumberText::doubleValue(QByteArrayView text)
{
    auto [p, end] = span(text);
    return readDouble(p, end);
}

quint64 ZuviNumberText::unsignedValue(QByteArrayView text)
{
    auto [p, end] = span(text);
    return readUnsigned(p, end);
}

qint32 ZuviNumberText::intValue(const char *begin, const char *end, const char **stop)
{
    const qint32 value = saturateToInt(readLongLong(begin, end));
    *stop = begin;
    return value;
}

double ZuviNumberText::doubleValue(const char *begin, const char *end, const char **stop)
{
    const double value = readDouble(begin, end);
    *stop = begin;
    return value;
}

quint64 ZuviNumberText::unsignedValue(const char *begin, const char *end, const char **stop)
{
    const quint64 value = readUnsigned(begin, end);
    *stop = begin;
    return value;
}
