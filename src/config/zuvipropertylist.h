#pragma once

#include <QByteArray>
#include <QVariantMap>

#include <optional>

// XML property lists, the small key-value files the configuration cache keeps
// its metadata in. Dictionaries of strings, dates, integers, reals and
// booleans (and nested dictionaries and arrays) are written the way the
// platform's own writer does: XML 1.0 header, the property-list doctype, keys
// in sorted order, tab indentation, dates in UTC as "yyyy-MM-ddTHH:mm:ssZ".
class ZuviPropertyList
{
public:
    static QByteArray xmlDataFromDictionary(const QVariantMap &dictionary);
    // The root dictionary of an XML property list; nothing when the data is
    // not one.
    static std::optional<QVariantMap> dictionaryFromXmlData(const QByteArray &data);
};
