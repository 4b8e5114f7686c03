#include "model/zuvidanmakuxmlparser.h"
#include "zuvidanmakudocumentgenerator.h"

#include <QTest>

#include <algorithm>
#include <cmath>

// The danmaku document reader: which text and parameters make a comment,
// chunked input, malformed and hostile documents, and the time sort.
class TestZuviDanmakuXMLParser : public QObject
{
    Q_OBJECT
private slots:
    void readingRules_data();
    void readingRules();
    void malformedDocumentsKeepEarlierItems_data();
    void malformedDocumentsKeepEarlierItems();
    void generatedDocumentsReadExactly();
    void parserIsReusable();
    void sortPutsNaNLast();
    void sortMatchesReferenceOnGeneratedItems_data();
    void sortMatchesReferenceOnGeneratedItems();
    void fiftyMegabyteDocument();
};

namespace {

QByteArray wrap(const QByteArray &body)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?><i>" + body + "</i>";
}

// Each item as "text|time|mode|size|colour|id", joined with newlines.
QString describe(const QList<ZuviDanmakuItem> &items)
{
    QStringList lines;
    for (const ZuviDanmakuItem &item : items)
        lines << QStringList{item.text,
                             QString::number(item.time),
                             QString::number(item.mode),
                             QString::number(item.fontSize),
                             QString::number(item.colorRGB),
                             item.danmakuID}
                     .join(QLatin1Char('|'));
    return lines.join(QLatin1Char('\n'));
}

ZuviDanmakuItem itemAt(double time, const QString &text)
{
    ZuviDanmakuItem item;
    item.time = time;
    item.text = text;
    return item;
}

} // namespace

void TestZuviDanmakuXMLParser::readingRules_data()
{
    QTest::addColumn<QByteArray>("document");
    QTest::addColumn<QString>("expected");
    QTest::newRow("one comment") << wrap("<d p=\"5.5,1,25,16711680,1,0,h,77\">好</d>")
                                 << "好|5.5|1|20|16711680|77";
    QTest::newRow("text not trimmed")
        << wrap("<d p=\"1\">  两边  </d>") << "  两边  |1|1|16|16777215|";
    QTest::newRow("entities joined")
        << wrap("<d p=\"1\">a&amp;b&lt;c&#x1F602;&#12354;</d>") << "a&b<c😂あ|1|1|16|16777215|";
    QTest::newRow("no double decoding")
        << wrap("<d p=\"1\">&amp;lt;</d>") << "&lt;|1|1|16|16777215|";
    QTest::newRow("entity in the attribute")
        << wrap("<d p=\"2&#44;5\">x</d>") << "x|2|5|16|16777215|";
    QTest::newRow("CDATA") << wrap("<d p=\"1\"><![CDATA[<b>&]]></d>") << "<b>&|1|1|16|16777215|";
    QTest::newRow("no p attribute") << wrap("<d>默认</d>") << "默认|0|1|16|16777215|";
    QTest::newRow("other attributes")
        << wrap("<d q=\"9\" p=\"3,4\" pp=\"1\">x</d>") << "x|3|4|16|16777215|";
    QTest::newRow("empty comment dropped")
        << wrap("<d p=\"1\"></d><d p=\"2\"/><d p=\"3\">y</d>") << "y|3|1|16|16777215|";
    QTest::newRow("dropped comment leaves no id behind")
        << wrap("<d p=\"1,1,25,0,0,0,h,77\"></d><d p=\"2\">y</d>") << "y|2|1|16|16777215|";
    QTest::newRow("text outside comments ignored")
        << wrap("外<x>内</x><d p=\"1\">a</d>尾<chatid>1</chatid>") << "a|1|1|16|16777215|";
    QTest::newRow("inner elements keep their text")
        << wrap("<d p=\"1\">a<b>b</b>c</d>") << "abc|1|1|16|16777215|";
    QTest::newRow("nested comment wins")
        << wrap("<d p=\"1\">a<d p=\"2\">b</d>c</d>") << "b|2|1|16|16777215|";
    QTest::newRow("line breaks kept") << wrap("<d p=\"1\">a\r\nb</d>") << "a\nb|1|1|16|16777215|";
    QTest::newRow("leading BOM character is text")
        << wrap("<d p=\"1\">&#xFEFF;x</d>") << QString(QChar(0xFEFF)) + "x|1|1|16|16777215|";
    QTest::newRow("document order kept") << wrap("<d p=\"9\">late</d><d p=\"1\">early</d>")
                                         << "late|9|1|16|16777215|\nearly|1|1|16|16777215|";
    QTest::newRow("no comments") << wrap("<chatid>1</chatid>") << "";
    QTest::newRow("other encoding") << QByteArray("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>"
                                                  "<i><d p=\"1\">caf\xe9</d></i>")
                                    << "café|1|1|16|16777215|";
}

void TestZuviDanmakuXMLParser::readingRules()
{
    QFETCH(QByteArray, document);
    QFETCH(QString, expected);
    // Whole, and one byte at a time, so every entity, tag and character
    // straddles two pieces: the result must not change.
    for (int chunkSize : {1 << 16, 1, 3}) {
        ZuviDanmakuXMLParser parser;
        parser.setChunkSize(chunkSize);
        QVERIFY2(parser.parse(document), qPrintable(parser.errorString()));
        QCOMPARE(describe(parser.items()), expected);
        QVERIFY(parser.errorString().isEmpty());
    }
}

void TestZuviDanmakuXMLParser::malformedDocumentsKeepEarlierItems_data()
{
    QTest::addColumn<QByteArray>("document");
    QTest::addColumn<int>("keptItems");
    const QByteArray two = "<d p=\"1\">a</d><d p=\"2\">b</d>";
    QTest::newRow("truncated in a tag") << "<i>" + two + "<d p=\"3" << 2;
    QTest::newRow("mismatched tag") << "<i>" + two + "<d p=\"3\">c</x></i>" << 2;
    QTest::newRow("undefined entity") << "<i>" + two + "<d p=\"3\">&nope;</d></i>" << 2;
    QTest::newRow("invalid UTF-8") << "<i>" + two + "<d p=\"3\">\xff\xfe</d></i>" << 2;
    QTest::newRow("junk after the root") << "<i>" + two + "</i><i/>" << 2;
    QTest::newRow("empty body") << QByteArray() << 0;
    QTest::newRow("JSON") << QByteArray("{\"code\":-404,\"message\":\"啥都木有\"}") << 0;
    QTest::newRow("entity expansion bomb")
        << QByteArray("<?xml version=\"1.0\"?><!DOCTYPE i [<!ENTITY a \"aaaaaaaaaa\">"
                      "<!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;\">"
                      "<!ENTITY c \"&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;\">"
                      "<!ENTITY e \"&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;\">"
                      "<!ENTITY f \"&e;&e;&e;&e;&e;&e;&e;&e;&e;&e;\">"
                      "<!ENTITY g \"&f;&f;&f;&f;&f;&f;&f;&f;&f;&f;\">"
                      "<!ENTITY h \"&g;&g;&g;&g;&g;&g;&g;&g;&g;&g;\">"
                      "<!ENTITY j \"&h;&h;&h;&h;&h;&h;&h;&h;&h;&h;\">]>"
                      "<i><d p=\"1\">x</d><d p=\"2\">&j;</d></i>")
        << 1;
}

void TestZuviDanmakuXMLParser::malformedDocumentsKeepEarlierItems()
{
    QFETCH(QByteArray, document);
    QFETCH(int, keptItems);
    for (int chunkSize : {1 << 16, 1}) {
        ZuviDanmakuXMLParser parser;
        parser.setChunkSize(chunkSize);
        QVERIFY(!parser.parse(document));
        QVERIFY(!parser.errorString().isEmpty());
        QCOMPARE(parser.items().size(), keptItems);
        QVERIFY(!parser.isReadingDanmaku());
    }
}

void TestZuviDanmakuXMLParser::generatedDocumentsReadExactly()
{
    // In 7-byte pieces; the fifty-megabyte test reads in the default ones.
    const int count = 1000;
    const int chunkSize = 7;
    ZuviDanmakuDocumentGenerator generator;
    QList<ZuviDanmakuItem> expected;
    const QByteArray document = generator.document(count, &expected);
    QCOMPARE(expected.size(), count);

    ZuviDanmakuXMLParser parser;
    parser.setChunkSize(chunkSize);
    QVERIFY2(parser.parse(document), qPrintable(parser.errorString()));
    QCOMPARE(parser.items().size(), count);
    for (int i = 0; i < count; ++i) {
        const ZuviDanmakuItem &item = parser.items().at(i);
        const ZuviDanmakuItem &want = expected.at(i);
        QCOMPARE(item.text, want.text);
        QCOMPARE(item.time, want.time);
        QCOMPARE(item.mode, want.mode);
        QCOMPARE(item.fontSize, want.fontSize);
        QCOMPARE(item.colorRGB, want.colorRGB);
        QCOMPARE(item.danmakuID, want.danmakuID);
        // The same comment through the text factory reads the same.
        if (i % 97 == 0) {
            const int start = document.indexOf("<d p=\"" + QByteArray::number(want.time, 'f', 5));
            const int end = document.indexOf('"', start + 6);
            const QString parameters = QString::fromUtf8(document.mid(start + 6, end - start - 6));
            const auto single = ZuviDanmakuItem::itemWithText(want.text, parameters);
            QVERIFY(single.has_value());
            QCOMPARE(describe({*single}), describe({item}));
        }
    }
    // Realistic mix: most comments scroll, and the document is not in time order.
    const auto scrolling = std::count_if(parser.items().cbegin(), parser.items().cend(),
                                         [](const ZuviDanmakuItem &i) { return i.mode == 1; });
    QVERIFY(scrolling > count * 85 / 100 && scrolling < count * 93 / 100);
    QVERIFY(!std::is_sorted(parser.items().cbegin(), parser.items().cend(),
                            [](const auto &a, const auto &b) { return a.time < b.time; }));
}

void TestZuviDanmakuXMLParser::parserIsReusable()
{
    ZuviDanmakuXMLParser parser;
    QVERIFY(!parser.parse(wrap("<d p=\"1\">a</d><d p=\"2\">")));
    QCOMPARE(parser.items().size(), 1);
    QVERIFY(parser.parse(wrap("<d p=\"3\">c</d>")));
    QCOMPARE(describe(parser.items()), QStringLiteral("c|3|1|16|16777215|"));
    QVERIFY(parser.errorString().isEmpty());
    const QList<ZuviDanmakuItem> taken = parser.takeItems();
    QCOMPARE(taken.size(), 1);
    QVERIFY(parser.items().isEmpty());
}

void TestZuviDanmakuXMLParser::sortPutsNaNLast()
{
    // Ties keeping document order is the reference comparison's below.
    QList<ZuviDanmakuItem> items{itemAt(qQNaN(), "0"), itemAt(1, "1"), itemAt(0, "2")};
    ZuviDanmakuXMLParser::sortByTime(items);
    QCOMPARE(items.at(0).text, QStringLiteral("2"));
    QCOMPARE(items.at(1).text, QStringLiteral("1"));
    QCOMPARE(items.at(2).text, QStringLiteral("0"));
}

void TestZuviDanmakuXMLParser::sortMatchesReferenceOnGeneratedItems_data()
{
    // Small lists take the comparison sort, large ones the radix sort.
    QTest::addColumn<int>("count");
    QTest::newRow("3000") << 3000;
    QTest::newRow("40000") << 40000;
}

void TestZuviDanmakuXMLParser::sortMatchesReferenceOnGeneratedItems()
{
    // Bursty generated times, a third of them cut to whole seconds, hold many
    // exact ties, and a few are negative: the result must equal a reference
    // stable sort item for item.
    QFETCH(int, count);
    ZuviDanmakuDocumentGenerator generator(7);
    QList<ZuviDanmakuItem> items;
    generator.document(count, &items);
    for (int i = 0; i < items.size(); i += 3)
        items[i].time = std::floor(items[i].time);
    for (int i = 0; i < items.size(); i += 101)
        items[i].time = -items[i].time;
    QList<ZuviDanmakuItem> reference = items;
    std::stable_sort(reference.begin(), reference.end(),
                     [](const auto &a, const auto &b) { return a.time < b.time; });
    ZuviDanmakuXMLParser::sortByTime(items);
    QCOMPARE(items.size(), reference.size());
    for (int i = 0; i < items.size(); ++i) {
        QCOMPARE(items.at(i).danmakuID, reference.at(i).danmakuID);
        QCOMPARE(items.at(i).text, reference.at(i).text);
    }
}

void TestZuviDanmakuXMLParser::fiftyMegabyteDocument()
{
    ZuviDanmakuDocumentGenerator generator(50);
    QList<ZuviDanmakuItem> expected;
    const QByteArray document = generator.documentOfSize(50 * 1024 * 1024, &expected);
    QVERIFY(document.size() >= 50 * 1024 * 1024);
    ZuviDanmakuXMLParser parser;
    QVERIFY2(parser.parse(document), qPrintable(parser.errorString()));
    QList<ZuviDanmakuItem> items = parser.takeItems();
    QCOMPARE(items.size(), expected.size());
    QCOMPARE(describe({items.first()}), describe({expected.first()}));
    QCOMPARE(describe({items.last()}), describe({expected.last()}));
    ZuviDanmakuXMLParser::sortByTime(items);
    QVERIFY(std::is_sorted(items.cbegin(), items.cend(),
                           [](const auto &a, const auto &b) { return a.time < b.time; }));

    // The same document cut short halfway: an error, and everything before the cut.
    const QByteArray half = document.left(document.size() / 2);
    QVERIFY(!parser.parse(half));
    QVERIFY(parser.items().size() > expected.size() / 2 - 1000);
    QVERIFY(parser.items().size() < expected.size() / 2 + 1000);
    QCOMPARE(parser.items().last().danmakuID, expected.at(parser.items().size() - 1).danmakuID);
}

QTEST_GUILESS_MAIN(TestZuviDanmakuXMLParser)
#include "tst_zuvidanmakuxmlparser.moc"
