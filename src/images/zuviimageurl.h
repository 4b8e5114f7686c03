#pragma once

#include <QString>
#include <QVariant>

// The text rules for picture addresses that the image loader applies. Pure
// functions on strings, kept in the core library so that code without any UI
// (parsers, the command-line client, benchmarks) can apply the same rules.
class ZuviImageURL
{
public:
    // Trims the value, puts "https:" in front of a scheme-relative address and
    // percent-escapes every character that may not stand in a URL. A value
    // that is not a string, or is blank, gives a null string.
    static QString normalizedURLString(const QVariant &value);

    // Asks the image CDN for a resized copy: "@<w>w_<h>h_1c_<q>q.jpg" after
    // the path, before any query. An address whose last path segment already
    // carries an "@" suffix is returned as it is.
    static QString thumbnailURLStringForURLString(const QString &urlString, int width, int height,
                                                  int quality);

    // Escapes with UTF-8 every character outside the URL character set
    // (letters, digits and -_.!~*'();/?:@&=+$,#). Nothing is un-escaped first,
    // so an existing "%" becomes "%25".
    static QString percentEscapedString(const QString &text);
};
