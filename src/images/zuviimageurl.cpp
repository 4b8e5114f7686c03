#include "zuviimageurl.h"

namespace {
bool isURLCharacter(char c)
{
    if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'))
        return true;
    // Marks and reserved characters stand in URLs as they are; "#" is kept
    // too so that a fragment survives.
    static const char allowed[] = "-_.!~*'();/?:@&=+$,#";
    for (const char *p = allowed; *p; ++p) {
        if (*p == c)
            return true;
    }
    return false;
}
} // namespace

QString ZuviImageURL::percentEscapedString(const QString &text)
{
    static const char hex[] = "0123456789ABCDEF";
    const QByteArray utf8 = text.toUtf8();
    QByteArray escaped;
    escaped.reserve(utf8.size());
    for (const char c : utf8) {
        if (isURLCharacter(c)) {
            escaped.append(c);
            continue;
        }
        const auto byte = static_cast<unsigned char>(c);
        escaped.append('%');
        escaped.append(hex[byte >> 4]);
        escaped.append(hex[byte & 0xF]);
    }
    return QString::fromLatin1(escaped);
}

QString ZuviImageURL::normalizedURLString(const QVariant &value)
{
    if (value.typeId() != QMetaType::QString)
        return QString();
    QString text = value.toString().trimmed();
    if (text.isEmpty())
        return QString();
    // The service's JSON often gives addresses without a scheme.
    if (text.startsWith(QLatin1String("//")))
        text = QStringLiteral("https:") + text;
    return percentEscapedString(text);
}

QString ZuviImageURL::thumbnailURLStringForURLString(const QString &urlString, int width,
                                                     int height, int quality)
{
    if (urlString.isEmpty())
        return urlString;
    // Only the part before the query decides; the query is copied unchanged.
    const int queryStart = urlString.indexOf('?');
    const QString base = queryStart >= 0 ? urlString.left(queryStart) : urlString;
    const QString query = queryStart >= 0 ? urlString.mid(queryStart) : QString();

    const int lastSlash = base.lastIndexOf('/');
    const int lastAt = base.lastIndexOf('@');
    // An "@" after the last "/" is a size suffix already; an "@" before it
    // belongs to the authority and does not count.
    if (lastAt >= 0 && (lastSlash < 0 || lastAt > lastSlash))
        return urlString;
    // Plain concatenation: an escaped address holds "%" sequences that a
    // placeholder substitution would take for its own.
    return base + QLatin1Char('@') + QString::number(width) + QLatin1String("w_") +
           QString::number(height) + QLatin1String("h_1c_") + QString::number(quality) +
           QLatin1String("q.jpg") + query;
}
