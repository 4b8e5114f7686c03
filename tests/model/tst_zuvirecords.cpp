#include "model/zuvicommentitem.h"
#include "model/zuvidanmakuitem.h"
#include "model/zuvijsoncoercion.h"
#include "model/zuvinumbertext.h"
#include "model/zuvivideodetail.h"
#include "model/zuvivideoitem.h"
#include "net/zuviapiclient.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTest>

// The content records' texts and factories, fed the shapes the service
// really sends: numbers and strings alike, nulls, missing keys, wrong types.
class TestZuviRecords : public QObject
{
    Q_OBJECT
private slots:
    void numberText_data();
    void numberText();
    void jsonCoercion_data();
    void jsonCoercion();
    void countText_data();
    void countText();
    void durationText_data();
    void durationText();
    void cleanTitle_data();
    void cleanTitle();
    void tagRemovalMatchesRepeatedSearch();
    void normalizedURLAndBVID_data();
    void normalizedURLAndBVID();
    void commentTimeText_data();
    void commentTimeText();
    void lookupHelpers_data();
    void lookupHelpers();
    void ownerName_data();
    void ownerName();
    void popularAndSearchItems_data();
    void popularAndSearchItems();
    void flexibleItems_data();
    void flexibleItems();
    void pagesAndDetail_data();
    void pagesAndDetail();
    void commentItems_data();
    void commentItems();
    void danmakuParameters_data();
    void danmakuParameters();
    void hostileJSONNeverBuildsGarbage_data();
    void hostileJSONNeverBuildsGarbage();
};

namespace {

// A JSON value from a literal; the literal is wrapped so that scalars parse too.
QJsonValue json(const QByteArray &text)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson("[" + text + "]", &error);
    if (error.error != QJsonParseError::NoError)
        qFatal("bad test JSON %s: %s", text.constData(), qPrintable(error.errorString()));
    return document.array().at(0);
}

// Fields of a video item as one comparable line.
QString describe(const std::optional<ZuviVideoItem> &item)
{
    if (!item)
        return QStringLiteral("nil");
    return QStringList{item->bvid,
                       item->title,
                       item->ownerName,
                       item->playCountText,
                       item->commentCountText,
                       item->durationText,
                       item->coverURLString,
                       QString::number(item->aid),
                       QString::number(item->cid)}
        .join(QLatin1Char('|'));
}

} // namespace

void TestZuviRecords::numberText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<qint64>("longLong");
    QTest::addColumn<int>("integer");
    QTest::addColumn<double>("decimal");
    QTest::newRow("blanks and sign") << "  -17x" << qint64(-17) << -17 << -17.0;
    QTest::newRow("plus") << "+8" << qint64(8) << 8 << 8.0;
    QTest::newRow("decimal truncates as integer") << "12.75" << qint64(12) << 12 << 12.75;
    QTest::newRow("not a number") << "abc" << qint64(0) << 0 << 0.0;
    QTest::newRow("leading fraction") << ".5" << qint64(0) << 0 << 0.5;
    QTest::newRow("exponent") << "1.5e3" << qint64(1) << 1 << 1500.0;
    QTest::newRow("dangling exponent") << "5e" << qint64(5) << 5 << 5.0;
    QTest::newRow("saturates") << "99999999999999999999" << std::numeric_limits<qint64>::max()
                               << std::numeric_limits<int>::max() << 1e20;
    QTest::newRow("saturates negative")
        << "-99999999999999999999" << std::numeric_limits<qint64>::min()
        << std::numeric_limits<int>::min() << -1e20;
    QTest::newRow("overflowing decimal reads 0") << "1e400" << qint64(1) << 1 << 0.0;
    QTest::newRow("infinity is not a number") << "inf" << qint64(0) << 0 << 0.0;
    QTest::newRow("full-width digits are not digits") << "１２" << qint64(0) << 0 << 0.0;
}

void TestZuviRecords::numberText()
{
    QFETCH(QString, text);
    QFETCH(qint64, longLong);
    QFETCH(int, integer);
    QFETCH(double, decimal);
    QCOMPARE(ZuviNumberText::longLongValue(text), longLong);
    QCOMPARE(ZuviNumberText::intValue(text), integer);
    QCOMPARE(ZuviNumberText::doubleValue(text), decimal);
    // The byte forms read exactly as the text forms do.
    const QByteArray bytes = text.toUtf8();
    QCOMPARE(ZuviNumberText::longLongValue(QByteArrayView(bytes)), longLong);
    QCOMPARE(ZuviNumberText::doubleValue(QByteArrayView(bytes)), decimal);
}

void TestZuviRecords::jsonCoercion_data()
{
    // Every reading of one value: as text, as a display count, as an integer
    // and as a flag.
    QTest::addColumn<QJsonValue>("value");
    QTest::addColumn<QString>("string");
    QTest::addColumn<QString>("compact");
    QTest::addColumn<qint64>("integer");
    QTest::addColumn<bool>("flag");
    QTest::newRow("string") << json("\"abc\"") << "abc"
                            << "" << qint64(0) << false;
    QTest::newRow("text 9999") << json("\"9999\"") << "9999"
                               << "9999" << qint64(9999) << true;
    QTest::newRow("zero") << json("0") << "0"
                          << "" << qint64(0) << false;
    QTest::newRow("10000") << json("10000") << "10000"
                           << "1.0万" << qint64(10000) << true;
    QTest::newRow("decimal") << json("1.5") << "1.5"
                             << "1" << qint64(1) << true;
    QTest::newRow("true") << json("true") << "1"
                          << "1" << qint64(1) << true;
    QTest::newRow("yes text") << json("\" yes\"") << " yes"
                              << "" << qint64(0) << true;
    QTest::newRow("signed zeros then digit") << json("\"-007\"") << "-007"
                                             << "" << qint64(-7) << true;
    QTest::newRow("zeros only") << json("\"000\"") << "000"
                                << "" << qint64(0) << false;
    QTest::newRow("null") << json("null") << ""
                          << "" << qint64(0) << false;
}

void TestZuviRecords::jsonCoercion()
{
    QFETCH(QJsonValue, value);
    QFETCH(QString, string);
    QFETCH(QString, compact);
    QFETCH(qint64, integer);
    QFETCH(bool, flag);
    QCOMPARE(ZuviJSONCoercion::stringFromObject(value), string);
    QCOMPARE(ZuviJSONCoercion::compactCountStringFromObject(value), compact);
    QCOMPARE(ZuviJSONCoercion::integerFromObject(value), integer);
    QCOMPARE(ZuviJSONCoercion::boolFromObject(value), flag);
    // The records and the service client read fields by the same rules.
    QCOMPARE(ZuviVideoItem::stringFromObject(value), string);
    QCOMPARE(ZuviAPIClient::integerFromObject(value), integer);
}

void TestZuviRecords::countText_data()
{
    QTest::addColumn<QJsonValue>("value");
    QTest::addColumn<QString>("video");
    QTest::addColumn<QString>("comment");
    QTest::newRow("zero") << json("0") << "0"
                          << "0";
    QTest::newRow("9999") << json("9999") << "9999"
                          << "9999";
    QTest::newRow("10000") << json("10000") << "1.0万"
                           << "1.0万";
    QTest::newRow("decimal string") << json("\"15000.9\"") << "1.5万"
                                    << "1.5万";
    QTest::newRow("below a hundred million") << json("99999999") << "10000.0万"
                                             << "10000.0万";
    QTest::newRow("123456789") << json("123456789") << "1.2亿"
                               << "12345.7万";
    // Single precision shows: 16777217 is not a float, it reads as 16777216.
    QTest::newRow("float rounding") << json("16777217") << "1677.7万"
                                    << "1677.7万";
    QTest::newRow("huge") << json("\"9223372036854775807\"") << "92233719808.0亿"
                          << "922337180385280.0万";
}

void TestZuviRecords::countText()
{
    QFETCH(QJsonValue, value);
    QFETCH(QString, video);
    QFETCH(QString, comment);
    QCOMPARE(ZuviVideoItem::countTextFromObject(value), video);
    QCOMPARE(ZuviCommentItem::countTextFromObject(value), comment);
}

void TestZuviRecords::durationText_data()
{
    QTest::addColumn<QJsonValue>("value");
    QTest::addColumn<QString>("expected");
    QTest::newRow("59") << json("59") << "0:59";
    QTest::newRow("60") << json("60") << "1:00";
    QTest::newRow("3599") << json("3599") << "59:59";
    QTest::newRow("3600") << json("3600") << "1:00:00";
    QTest::newRow("negative") << json("-5") << "0:00";
    QTest::newRow("already formatted") << json("\"12:34\"") << "12:34";
    QTest::newRow("decimal seconds") << json("125.9") << "2:05";
    QTest::newRow("wrong type") << json("[125]") << "0:00";
}

void TestZuviRecords::durationText()
{
    QFETCH(QJsonValue, value);
    QFETCH(QString, expected);
    QCOMPARE(ZuviVideoItem::durationTextFromObject(value), expected);
}

void TestZuviRecords::cleanTitle_data()
{
    QTest::addColumn<QJsonValue>("value");
    QTest::addColumn<QString>("expected");
    QTest::newRow("highlight tags")
        << json(R"("<em class=\"keyword\">猫</em>和<em class=\"keyword\">狗</em>")") << "猫和狗";
    QTest::newRow("decoded brackets survive") << json("\"&lt;b&gt;x\"") << "<b>x";
    QTest::newRow("double decoding is intended") << json("\"a &amp;lt; b\"") << "a < b";
    QTest::newRow("quote") << json("\"&quot;hi&quot;\"") << "\"hi\"";
    QTest::newRow("other entities stay") << json("\"&apos;&#39;&nbsp;\"") << "&apos;&#39;&nbsp;";
    QTest::newRow("only a tag") << json("\"<br/>\"") << "";
    QTest::newRow("number") << json("2024") << "2024";
    QTest::newRow("null") << json("null") << "";
}

void TestZuviRecords::cleanTitle()
{
    QFETCH(QJsonValue, value);
    QFETCH(QString, expected);
    QCOMPARE(ZuviVideoItem::cleanTitleFromObject(value), expected);
    QCOMPARE(ZuviCommentItem::cleanMessageFromObject(value), expected);
}

void TestZuviRecords::tagRemovalMatchesRepeatedSearch()
{
    // The linear scan must give what deleting the first "<[^>]+>" match
    // again and again gives, on texts dense in brackets.
    const QRegularExpression tag(QStringLiteral("<[^>]+>"));
    const QString alphabet = QStringLiteral("<>ab\n字");
    quint32 state = 12345;
    for (int round = 0; round < 3000; ++round) {
        QString text;
        const int length = int(state % 14);
        for (int i = 0; i < length; ++i) {
            state = state * 1103515245u + 12345u;
            text.append(alphabet.at(int((state >> 16) % quint32(alphabet.size()))));
        }
        QString expected = text;
        for (QRegularExpressionMatch match = tag.match(expected); match.hasMatch();
             match = tag.match(expected))
            expected.remove(match.capturedStart(), match.capturedLength());
        QCOMPARE(ZuviVideoItem::stringByRemovingTags(text), expected);
        state = state * 1103515245u + 12345u;
    }
}

void TestZuviRecords::normalizedURLAndBVID_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("normalized");
    QTest::addColumn<QString>("bvid");
    QTest::newRow("single slash") << "/a.jpg"
                                  << "/a.jpg"
                                  << "";
    QTest::newRow("link with id") << "https://www.example/video/BV1xK4y1a7Zz/?p=2"
                                  << "https://www.example/video/BV1xK4y1a7Zz/?p=2"
                                  << "BV1xK4y1a7Zz";
    QTest::newRow("scheme-relative link") << "//www.example/video/BV17x411w7KC"
                                          << "https://www.example/video/BV17x411w7KC"
                                          << "BV17x411w7KC";
    QTest::newRow("bare id") << "BV1ab"
                             << "BV1ab"
                             << "BV1ab";
    QTest::newRow("first of two") << "BVa1 BVb2"
                                  << "BVa1 BVb2"
                                  << "BVa1";
    QTest::newRow("prefix alone") << "BV-x"
                                  << "BV-x"
                                  << "";
    QTest::newRow("lower case prefix") << "bv1ab"
                                       << "bv1ab"
                                       << "";
}

void TestZuviRecords::normalizedURLAndBVID()
{
    QFETCH(QString, text);
    QFETCH(QString, normalized);
    QFETCH(QString, bvid);
    QCOMPARE(ZuviVideoItem::normalizedURLString(text), normalized);
    QCOMPARE(ZuviVideoItem::bvidFromString(text), bvid);
}

void TestZuviRecords::commentTimeText_data()
{
    QTest::addColumn<QJsonValue>("value");
    QTest::addColumn<qint64>("expectedSeconds"); // -1: the empty text
    QTest::newRow("number") << json("1700000000") << qint64(1700000000);
    QTest::newRow("fraction") << json("1700000059.9") << qint64(1700000059);
    QTest::newRow("zero") << json("0") << qint64(-1);
    QTest::newRow("beyond any calendar") << json("1e300") << qint64(-1);
}

void TestZuviRecords::commentTimeText()
{
    QFETCH(QJsonValue, value);
    QFETCH(qint64, expectedSeconds);
    const QString expected =
        expectedSeconds < 0
            ? QString()
            : QDateTime::fromSecsSinceEpoch(expectedSeconds).toString("MM-dd HH:mm");
    QCOMPARE(ZuviCommentItem::timeTextFromObject(value), expected);
}

void TestZuviRecords::lookupHelpers_data()
{
    QTest::addColumn<QJsonValue>("dictionary");
    QTest::addColumn<QString>("keys");
    QTest::addColumn<QJsonValue>("firstObject");
    QTest::addColumn<QString>("firstBVID");
    QTest::addColumn<QJsonValue>("statObject");
    const QJsonValue nil(QJsonValue::Undefined);
    QTest::newRow("not a dictionary") << json("[1,2]") << "a" << nil << "" << nil;
    QTest::newRow("null, empty and missing skipped")
        << json(R"({"a":null,"b":"","c":"BV1c"})") << "a,b,x,c" << json("\"BV1c\"") << "BV1c"
        << json("\"BV1c\"");
    QTest::newRow("zero counts") << json(R"({"a":0,"b":7})") << "a,b" << json("0") << ""
                                 << json("0");
    QTest::newRow("false and objects count") << json(R"({"a":false,"b":{"c":1}})") << "b,a"
                                             << json(R"({"c":1})") << "" << json(R"({"c":1})");
    QTest::newRow("stat object first") << json(R"({"view":1,"stat":{"view":2},"stats":{"view":3}})")
                                       << "view" << json("1") << "" << json("2");
    QTest::newRow("stats when stat is not an object")
        << json(R"({"stat":[],"stats":{"play":"3"}})") << "view,play" << nil << "" << json("\"3\"");
    QTest::newRow("empty stat falls back to the dictionary, not to stats")
        << json(R"({"stat":{},"stats":{"view":3},"view":5})") << "view" << json("5") << ""
        << json("5");
}

void TestZuviRecords::lookupHelpers()
{
    QFETCH(QJsonValue, dictionary);
    QFETCH(QString, keys);
    QFETCH(QJsonValue, firstObject);
    QFETCH(QString, firstBVID);
    QFETCH(QJsonValue, statObject);
    const QStringList keyList = keys.split(QLatin1Char(','));
    QCOMPARE(ZuviVideoItem::firstObjectFromDictionary(dictionary, keyList), firstObject);
    QCOMPARE(ZuviVideoItem::firstStringFromDictionary(dictionary, keyList),
             ZuviVideoItem::stringFromObject(firstObject));
    QCOMPARE(ZuviVideoItem::firstBVIDFromDictionary(dictionary, keyList), firstBVID);
    QCOMPARE(ZuviVideoItem::statObjectFromDictionary(dictionary, keyList), statObject);
}

void TestZuviRecords::ownerName_data()
{
    QTest::addColumn<QJsonValue>("item");
    QTest::addColumn<QJsonValue>("fallback");
    QTest::addColumn<QString>("expected");
    QTest::newRow("owner name") << json(R"({"owner":{"name":"甲","uname":"乙"}})") << json("{}")
                                << "甲";
    QTest::newRow("owner uname") << json(R"({"owner":{"name":"","uname":"乙"}})") << json("{}")
                                 << "乙";
    QTest::newRow("fallback keys in order")
        << json("{}") << json(R"({"author":null,"up_name":"","author_name":"己","uname":"庚"})")
        << "己";
    QTest::newRow("nothing") << json("[]") << json("null") << "未知 UP";
}

void TestZuviRecords::ownerName()
{
    QFETCH(QJsonValue, item);
    QFETCH(QJsonValue, fallback);
    QFETCH(QString, expected);
    QCOMPARE(ZuviVideoItem::ownerNameFromDictionary(item, fallback), expected);
}

void TestZuviRecords::popularAndSearchItems_data()
{
    QTest::addColumn<bool>("search");
    QTest::addColumn<QJsonValue>("dictionary");
    QTest::addColumn<QString>("expected");
    QTest::newRow("popular full")
        << false << json(R"({"bvid":"BV1a","title":"<b>标题</b>","owner":{"name":"UP主"},
                    "stat":{"view":123456,"reply":"88"},"pic":"//i0.example/c.jpg",
                    "duration":61,"aid":"170001","cid":99})")
        << "BV1a|标题|UP主|12.3万|88|1:01|https://i0.example/c.jpg|170001|99";
    QTest::newRow("popular without stat or owner")
        << false << json(R"({"bvid":"BV1a","title":"t","stat":5,"owner":"x"})")
        << "BV1a|t|未知 UP|0|0|0:00||0|0";
    QTest::newRow("popular missing bvid") << false << json(R"({"title":"t"})") << "nil";
    QTest::newRow("popular not an object") << false << json("\"BV1a\"") << "nil";
    QTest::newRow("search full")
        << true << json(R"({"bvid":"BV1s","title":"<em class=\"keyword\">猫</em>咪","author":"作者",
                    "play":"10000","video_review":3,"pic":"http://i0.example/s.jpg",
                    "duration":"4:05","aid":5,"cid":"6"})")
        << "BV1s|猫咪|作者|1.0万|3|4:05|http://i0.example/s.jpg|5|6";
    QTest::newRow("search empty author")
        << true << json(R"({"bvid":"BV1s","title":"x","author":"","duration":3600})")
        << "BV1s|x|未知 UP|0|0|1:00:00||0|0";
    QTest::newRow("search ignores owner")
        << true << json(R"({"bvid":"BV1s","title":"x","owner":{"name":"o"}})")
        << "BV1s|x|未知 UP|0|0|0:00||0|0";
    QTest::newRow("search null title") << true << json(R"({"bvid":"BV1s","title":null})") << "nil";
}

void TestZuviRecords::popularAndSearchItems()
{
    QFETCH(bool, search);
    QFETCH(QJsonValue, dictionary);
    QFETCH(QString, expected);
    const auto item = search ? ZuviVideoItem::itemWithSearchDictionary(dictionary)
                             : ZuviVideoItem::itemWithPopularDictionary(dictionary);
    QCOMPARE(describe(item), expected);
    if (item)
        QCOMPARE(item->metadataText(),
                 QStringLiteral("UP %1  播放 %2  评论 %3")
                     .arg(item->ownerName, item->playCountText, item->commentCountText));
}

void TestZuviRecords::flexibleItems_data()
{
    QTest::addColumn<QJsonValue>("dictionary");
    QTest::addColumn<QString>("expected");
    QTest::newRow("history entry")
        << json(R"({"title":"历史","cover":"//i0.example/h.jpg","author_name":"甲",
                    "history":{"bvid":"BV1h","cid":77,"oid":66},"duration":90,
                    "stat":{"view":5}})")
        << "BV1h|历史|甲|5|0|1:30|https://i0.example/h.jpg|66|77";
    QTest::newRow("favourite entry")
        << json(R"({"bv_id":"BV1f","title":"收藏","upper":{"name":"乙"},
                    "cnt_info":{"play":20000,"danmaku":7},"cover":"http://c/f.jpg","id":123,
                    "duration":"1:02:03"})")
        << "BV1f|收藏|乙|2.0万|7|1:02:03|http://c/f.jpg|123|0";
    QTest::newRow("feed item with archive module")
        << json(R"({"id_str":"9","modules":{"module_author":{"name":"丙"},
                    "module_dynamic":{"major":{"archive":{"bvid":"BV1d","title":"动态",
                    "cover":"//c/d.jpg","stat":{"play":"3","danmaku":"4"},
                    "duration_text":"02:03","aid":"55"}}}}})")
        << "BV1d|动态|丙|3|4|02:03|https://c/d.jpg|55|0";
    QTest::newRow("feed item with additional ugc")
        << json(R"({"modules":{"module_dynamic":{"major":{"draw":{}},
                    "additional":{"ugc":{"jump_url":"//www.example/video/BV1u?x","title":"附加"}}}}})")
        << "BV1u|附加|未知 UP|0|0|0:00||0|0";
    QTest::newRow("id only in a link of the wrapper")
        << json(R"({"archive":{"title":"包装"},"jump_url":"https://v/BV1j/"})")
        << "BV1j|包装|未知 UP|0|0|0:00||0|0";
    QTest::newRow("title from the wrapper, cover first_frame, counts from the wrapper")
        << json(R"({"archive":{"bvid":"BV1w","stat":{}},"desc":"说明","first_frame":"//f",
                    "view":8,"video_review":9,"aid":3})")
        << "BV1w|说明|未知 UP|8|9|0:00|https://f|3|0";
    QTest::newRow("duration only from the archive")
        << json(R"({"archive":{"bvid":"BV1x","title":"t"},"duration":100})")
        << "BV1x|t|未知 UP|0|0|0:00||0|0";
    QTest::newRow("history cid keeps a known aid")
        << json(R"({"bvid":"BV1y","title":"t","aid":4,"history":{"cid":"8","oid":"9"}})")
        << "BV1y|t|未知 UP|0|0|0:00||4|8";
    QTest::newRow("no bvid anywhere") << json(R"({"title":"t","url":"https://v/av1"})") << "nil";
    QTest::newRow("no title anywhere") << json(R"({"bvid":"BV1z","title":""})") << "nil";
    QTest::newRow("not an object") << json("[{\"bvid\":\"BV1\",\"title\":\"t\"}]") << "nil";
}

void TestZuviRecords::flexibleItems()
{
    QFETCH(QJsonValue, dictionary);
    QFETCH(QString, expected);
    QCOMPARE(describe(ZuviVideoItem::itemWithFlexibleDictionary(dictionary)), expected);
}

void TestZuviRecords::pagesAndDetail_data()
{
    QTest::addColumn<QJsonValue>("dictionary");
    QTest::addColumn<QString>("expected");
    QTest::newRow("full")
        << json(R"({"bvid":"BV1v","title":"<b>原样</b>","aid":1,"cid":"2","desc":"d&amp;",
                    "pic":"//c/v.jpg","owner":{"name":"甲","face":"//f/a.jpg"},
                    "stat":{"view":9999,"reply":10000,"danmaku":"123456789"},
                    "pages":[{"cid":11,"page":1,"part":"开头"},{"cid":0,"page":2},
                             {"cid":-3,"page":3},{"cid":"12","page":"4"},"x",{"cid":13}]})")
        << "BV1v|<b>原样</b>|1|2|d&amp;|//c/v.jpg|甲|https://f/a.jpg|9999|1.0万|1.2亿|"
           "11:1:开头,12:4:P4,13:0:P0|UP 甲  播放 9999  评论 1.0万  弹幕 1.2亿";
    QTest::newRow("bare")
        << json(R"({"bvid":"BV1v","title":"t","owner":{"name":""},"stat":null,"pages":{}})")
        << "BV1v|t|0|0|||未知 UP||0|0|0||UP 未知 UP  播放 0  评论 0  弹幕 0";
    QTest::newRow("missing title") << json(R"({"bvid":"BV1v"})") << "nil";
    QTest::newRow("not an object") << json("null") << "nil";
}

void TestZuviRecords::pagesAndDetail()
{
    QFETCH(QJsonValue, dictionary);
    QFETCH(QString, expected);
    const auto detail = ZuviVideoDetail::detailWithViewDictionary(dictionary);
    QString actual = QStringLiteral("nil");
    if (detail) {
        QStringList pages;
        for (const ZuviVideoPage &page : detail->pages)
            pages << QStringLiteral("%1:%2:%3")
                         .arg(page.cid)
                         .arg(page.pageNumber)
                         .arg(page.partTitle);
        actual = QStringList{detail->bvid,
                             detail->title,
                             QString::number(detail->aid),
                             QString::number(detail->cid),
                             detail->desc,
                             detail->coverURLString,
                             detail->ownerName,
                             detail->ownerAvatarURLString,
                             detail->playCountText,
                             detail->commentCountText,
                             detail->danmakuCountText,
                             pages.join(QLatin1Char(',')),
                             detail->metadataText()}
                     .join(QLatin1Char('|'));
    }
    QCOMPARE(actual, expected);
}

void TestZuviRecords::commentItems_data()
{
    QTest::addColumn<QJsonValue>("dictionary");
    QTest::addColumn<QString>("expected");
    const QString time = QDateTime::fromSecsSinceEpoch(1700000000).toString("MM-dd HH:mm");
    QTest::newRow("full")
        << json(R"({"content":{"message":"好&amp;lt;看<br/>"},"member":{"uname":"甲","name":"乙",
                    "avatar":"//a/x.png"},"ctime":1700000000,"like":123456789})")
        << "好<看|甲|https://a/x.png|" + time + "|12345.7万";
    QTest::newRow("name when uname empty")
        << json(R"({"content":{"message":"m"},"member":{"uname":"","name":"乙"},"like":"3"})")
        << "m|乙|||3";
    QTest::newRow("no member") << json(R"({"content":{"message":5},"member":"甲","ctime":0})")
                               << "5|未知用户|||0";
    QTest::newRow("message only tags") << json(R"({"content":{"message":"<i></i>"}})") << "nil";
    QTest::newRow("content not an object") << json(R"({"content":"m"})") << "nil";
    QTest::newRow("not an object") << json("42") << "nil";
}

void TestZuviRecords::commentItems()
{
    QFETCH(QJsonValue, dictionary);
    QFETCH(QString, expected);
    const auto item = ZuviCommentItem::itemWithReplyDictionary(dictionary);
    const QString actual = item
                               ? QStringList{item->message, item->authorName, item->avatarURLString,
                                             item->timeText, item->likeCountText}
                                     .join(QLatin1Char('|'))
                               : QStringLiteral("nil");
    QCOMPARE(actual, expected);
}

void TestZuviRecords::danmakuParameters_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("parameters"); // "<null>" for no parameter string
    QTest::addColumn<QString>("expected");   // time|mode|size|colour|id, or nil
    const QString null = QStringLiteral("<null>");
    QTest::newRow("no parameters") << "弹幕" << null << "0|1|16|16777215|";
    QTest::newRow("empty parameters") << "x"
                                      << ""
                                      << "0|1|16|16777215|";
    QTest::newRow("clamped size, red") << "x"
                                       << "5.5,1,25,16711680"
                                       << "5.5|1|20|16711680|";
    QTest::newRow("full") << "x"
                          << "12.345,5,18,65280,1700000000,0,ab12cd,987654321098765432,10"
                          << "12.345|5|18|65280|987654321098765432";
    QTest::newRow("empty size field reads 0, clamped") << "x"
                                                       << "1,4,"
                                                       << "1|4|13|16777215|";
    QTest::newRow("colour too large keeps white") << "x"
                                                  << "0,1,25,99999999"
                                                  << "0|1|20|16777215|";
    QTest::newRow("colour at the limit") << "x"
                                         << "0,1,25,16777215"
                                         << "0|1|20|16777215|";
    QTest::newRow("id needs eight fields") << "x"
                                           << "1,1,25,0,1,0,h"
                                           << "1|1|20|0|";
    QTest::newRow("id as is") << "x"
                              << "1,1,25,0,1,0,h, id 7 ,9"
                              << "1|1|20|0| id 7 ";
    QTest::newRow("garbage numbers; the colour reads its leading digits") << "x"
                                                                          << "abc,xyz,nan,1e99"
                                                                          << "0|0|13|1|";
    QTest::newRow("huge mode saturates") << "x"
                                         << "-3.5,99999999999"
                                         << "-3.5|2147483647|16|16777215|";
    QTest::newRow("empty text") << ""
                                << "1,1,25,0"
                                << "nil";
    QTest::newRow("blank text is text") << " " << null << "0|1|16|16777215|";
}

void TestZuviRecords::danmakuParameters()
{
    QFETCH(QString, text);
    QFETCH(QString, parameters);
    QFETCH(QString, expected);
    const auto item = parameters == QLatin1String("<null>")
                          ? ZuviDanmakuItem::itemWithText(text)
                          : ZuviDanmakuItem::itemWithText(text, parameters);
    if (!item) {
        QCOMPARE(QStringLiteral("nil"), expected);
        return;
    }
    QCOMPARE(item->text, text);
    const QString actual = QStringList{QString::number(item->time), QString::number(item->mode),
                                       QString::number(item->fontSize),
                                       QString::number(item->colorRGB), item->danmakuID}
                               .join(QLatin1Char('|'));
    QCOMPARE(actual, expected);
    QCOMPARE(item->textColorARGB(), (235u << 24) | item->colorRGB);
}

void TestZuviRecords::hostileJSONNeverBuildsGarbage_data()
{
    QTest::addColumn<QJsonValue>("dictionary");
    QTest::addColumn<bool>("built"); // whether a video item may come out
    // Every field of every factory given every wrong type at once.
    for (const char *wrong : {"null", "true", "[]", "{}", "-1", "1e308", "\"\""}) {
        QByteArray text = "{";
        for (const char *key : {"bvid", "title", "owner", "stat", "pic", "duration", "aid", "cid",
                                "author", "play", "video_review", "history", "modules", "archive",
                                "content", "member", "pages", "jump_url", "cover"})
            text += QByteArray("\"") + key + "\":" + wrong + ",";
        text.chop(1);
        text += "}";
        const bool numeric = QByteArray(wrong) == "-1" || QByteArray(wrong) == "1e308" ||
                             QByteArray(wrong) == "true";
        QTest::newRow(wrong) << json(text) << numeric;
    }
    // Deep nesting where the lookups descend, and a huge flat object.
    QByteArray deep = "{\"bvid\":\"BV1\",\"title\":\"t\",\"modules\":";
    for (int i = 0; i < 500; ++i)
        deep += "{\"module_dynamic\":{\"major\":";
    deep += "{}";
    for (int i = 0; i < 500; ++i)
        deep += "}}";
    deep += "}";
    QTest::newRow("deep") << json(deep) << true;
    QByteArray huge = "{";
    for (int i = 0; i < 200000; ++i)
        huge += "\"k" + QByteArray::number(i) + "\":[" + QByteArray::number(i) + "],";
    huge += "\"bvid\":\"BV1\",\"title\":\"t\"}";
    QTest::newRow("huge") << json(huge) << true;
}

void TestZuviRecords::hostileJSONNeverBuildsGarbage()
{
    QFETCH(QJsonValue, dictionary);
    QFETCH(bool, built);
    const std::optional<ZuviVideoItem> items[] = {
        ZuviVideoItem::itemWithPopularDictionary(dictionary),
        ZuviVideoItem::itemWithSearchDictionary(dictionary),
        ZuviVideoItem::itemWithFlexibleDictionary(dictionary)};
    for (const auto &item : items) {
        QCOMPARE(item.has_value(), built);
        if (item) {
            QVERIFY(!item->bvid.isEmpty());
            QVERIFY(!item->title.isEmpty());
            QVERIFY(!item->ownerName.isEmpty());
            QVERIFY(!item->playCountText.isEmpty());
            QVERIFY(!item->durationText.isEmpty());
        }
    }
    const auto detail = ZuviVideoDetail::detailWithViewDictionary(dictionary);
    QCOMPARE(detail.has_value(), built);
    if (detail)
        QVERIFY(!detail->ownerName.isEmpty());
    const auto comment = ZuviCommentItem::itemWithReplyDictionary(dictionary);
    QVERIFY(!comment.has_value()); // no row gives "content" as an object
}

QTEST_GUILESS_MAIN(TestZuviRecords)
#include "tst_zuvirecords.moc"
