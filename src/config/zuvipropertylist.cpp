#include "zuvipropertylist.h"

#include <QDateTime>
#include <QXmlStreamReader>

namespace {
QByteArray indent(int depth)
{
    return QByteArray(depth, '\t');
}

QByteArray escaped(const QString &text)
{
    return text.toHtmlEscaped().toUtf8();
}

void writeValue(QByteArray *out, const QVariant &value, int depth);

void writeDictionary(QByteArray *out, const QVariantMap &dictionary, int depth)
{
    if (dictionary.isEmpty()) {
        *out += indent(depth) + "<dict/>\n";
        return;
    }
    *out += indent(depth) + "<dict>\n";
    // QVariantMap iterates in key order, which is the order the writer uses.
    for (auto it = dictionary.cbegin(); it != dictionary.cend(); ++it) {
        *out += indent(depth + 1) + "<key>" + escaped(it.key()) + "</key>\n";
        writeValue(out, it.value(), depth + 1);
    }
    *out += indent(depth) + "</dict>\n";
}

void writeValue(QByteArray *out, const QVariant &value, int depth)
{
    switch (value.typeId()) {
    case QMetaType::QVariantMap:
        writeDictionary(out, value.toMap(), depth);
        return;
    case QMetaType::QVariantList:
    case QMetaType::QStringList: {
        const QVariantList list = value.toList();
        if (list.isEmpty()) {
            *out += indent(depth) + "<array/>\n";
            return;
        }
        *out += indent(depth) + "<array>\n";
        for (const QVariant &item : list)
            writeValue(out, item, depth + 1);
        *out += indent(depth) + "</array>\n";
        return;
    }
    case QMetaType::QDateTime:
        *out += indent(depth) + "<date>" +
                value.toDateTime().toUTC().toString("yyyy-MM-ddTHH:mm:ssZ").toUtf8() + "</date>\n";
        return;
    case QMetaType::Bool:
        *out += indent(depth) + (value.toBool() ? "<true/>\n" : "<false/>\n");
        return;
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::UInt:
    case QMetaType::ULongLong:
        *out +=
            indent(depth) + "<integer>" + QByteArray::number(value.toLongLong()) + "</integer>\n";
        return;
    case QMetaType::Double:
    case QMetaType::Float:
        *out +=
            indent(depth) + "<real>" + QByteArray::number(value.toDouble(), 'g', 17) + "</real>\n";
        return;
    default:
        *out += indent(depth) + "<string>" + escaped(value.toString()) + "</string>\n";
        return;
    }
}

// The cache's metadata is flat; a document nested deeper than this is not
// ours, and reading it recursively could exhaust the stack.
constexpr int kMaximumDepth = 64;

std::optional<QVariant> readValue(QXmlStreamReader &reader, int depth);

std::optional<QVariant> readDictionary(QXmlStreamReader &reader, int depth)
{
    if (depth > kMaximumDepth)
        return std::nullopt;
    QVariantMap dictionary;
    while (reader.readNextStartElement()) {
        if (reader.name() != QLatin1String("key"))
            return std::nullopt;
        const QString key = reader.readElementText();
        if (!reader.readNextStartElement())
            return std::nullopt;
        const std::optional<QVariant> value = readValue(reader, depth);
        if (!value)
            return std::nullopt;
        dictionary.insert(key, *value);
    }
    return QVariant(dictionary);
}

// Reads the element the reader stands on, up to and including its end.
std::optional<QVariant> readValue(QXmlStreamReader &reader, int depth)
{
    const QStringView name = reader.name();
    if (name == QLatin1String("dict"))
        return readDictionary(reader, depth + 1);
    if (name == QLatin1String("array")) {
        if (depth + 1 > kMaximumDepth)
            return std::nullopt;
        QVariantList list;
        while (reader.readNextStartElement()) {
            const std::optional<QVariant> item = readValue(reader, depth + 1);
            if (!item)
                return std::nullopt;
            list.append(*item);
        }
        return QVariant(list);
    }
    if (name == QLatin1String("true") || name == QLatin1String("false")) {
        const bool flag = name == QLatin1String("true");
        reader.skipCurrentElement();
        return QVariant(flag);
    }
    const QString nameText = name.toString();
    const QString text = reader.readElementText();
    if (nameText == QLatin1String("string"))
        return QVariant(text);
    if (nameText == QLatin1String("integer"))
        return QVariant(text.trimmed().toLongLong());
    if (nameText == QLatin1String("real"))
        return QVariant(text.trimmed().toDouble());
    if (nameText == QLatin1String("date")) {
        QDateTime date = QDateTime::fromString(text.trimmed(), Qt::ISODate);
        return QVariant(date.toUTC());
    }
    if (nameText == QLatin1String("data"))
        return QVariant(QByteArray::fromBase64(text.toLatin1()));
    return std::nullopt;
}
} // namespace

QByteArray ZuviPropertyList::xmlDataFromDictionary(const QVariantMap &dictionary)
{
    QByteArray out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                     "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                     "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                     "<plist version=\"1.0\">\n";
    writeDictionary(&out, dictionary, 0);
    out += "</plist>\n";
    return out;
}

std::optional<QVariantMap> ZuviPropertyList::dictionaryFromXmlData(const QByteArray &data)
{
    QXmlStreamReader reader(data);
    if (!reader.readNextStartElement() || reader.name() != QLatin1String("plist"))
        return std::nullopt;
    if (!reader.readNextStartElement() || reader.name() != QLatin1String("dict"))
        return std::nullopt;
    const std::optional<QVariant> root = readDictionary(reader, 0);
    if (!root || reader.hasError())
        return std::nullopt;
    return root->toMap();
}
