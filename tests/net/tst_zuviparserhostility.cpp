// Every endpoint parser against malformed and hostile bodies: each reads
// leniently, never crashes, and reports the error its table names.
#include "net/zuviaccountparser.h"
#include "net/zuviapiclient.h"
#include "net/zuvifollowingfeedparser.h"
#include "net/zuvivideocontentparser.h"
#include "net/zuvivideolistparser.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

#include <functional>

namespace {
// Runs a parser; returns how many records (or 1 for a single record) it built.
using ParserRun = std::function<int(const QByteArray &, ZuviError *)>;

QHash<QString, ParserRun> parsers()
{
    using L = ZuviVideoListParser;
    using C = ZuviVideoContentParser;
    using A = ZuviAccountParser;
    return {
        {"popular", [](const QByteArray &d,
                       ZuviError *e) { return int(L::parsePopularVideosFromData(d, e).size()); }},
        {"ranking", [](const QByteArray &d,
                       ZuviError *e) { return int(L::parseRankingVideosFromData(d, e).size()); }},
        {"legacy",
         [](const QByteArray &d, ZuviError *e) {
             return int(L::parseLegacyRankingVideosFromData(d, e).size());
         }},
        {"search", [](const QByteArray &d,
                      ZuviError *e) { return int(L::parseSearchVideosFromData(d, e).size()); }},
        {"flexible",
         [](const QByteArray &d, ZuviError *e) {
             return int(L::parseFlexibleVideosFromData(d, "历史记录", e).size());
         }},
        {"folders",
         [](const QByteArray &d, ZuviError *e) {
             return int(L::parseFirstFavoriteMediaIDFromData(d, e) > 0);
         }},
        {"detail", [](const QByteArray &d,
                      ZuviError *e) { return int(bool(C::parseVideoDetailFromData(d, e))); }},
        {"playurl",
         [](const QByteArray &d, ZuviError *e) {
             int q = 0;
             return int(!C::parsePlayURLFromData(d, 64, &q, "cdn.test", e).isEmpty());
         }},
        {"comments",
         [](const QByteArray &d, ZuviError *e) {
             return int(C::parseCommentsFromData(d, "评论", e).size());
         }},
        {"following",
         [](const QByteArray &d, ZuviError *e) {
             return int(ZuviFollowingFeedParser::parseFollowingRowsFromData(d, e).size());
         }},
        {"action",
         [](const QByteArray &d, ZuviError *e) {
             return int(!A::parseActionMessageFromData(d, e).isEmpty());
         }},
        {"qrcode", [](const QByteArray &d,
                      ZuviError *e) { return int(bool(A::parseLoginQRCodeFromData(d, e))); }},
        {"poll", [](const QByteArray &d,
                    ZuviError *e) { return int(bool(A::parseLoginQRCodePollFromData(d, e))); }},
        {"nav", [](const QByteArray &d,
                   ZuviError *e) { return int(bool(A::parseUserProfileFromData(d, e))); }},
        {"relation", [](const QByteArray &d,
                        ZuviError *e) { return int(bool(A::parseRelationStatFromData(d, e))); }},
    };
}

// Every field of every parser with a wrong type.
QByteArray wrongTypes()
{
    return QJsonDocument(QJsonObject{{"code", QJsonArray{1}},
                                     {"message", QJsonObject{{"a", 1}}},
                                     {"data", QJsonObject{{"list", QJsonObject{{"vlist", "x"}}},
                                                          {"result", "s"},
                                                          {"items", 7},
                                                          {"replies", 5},
                                                          {"top_replies", "x"},
                                                          {"url", QJsonArray()},
                                                          {"qrcode_key", QJsonObject()},
                                                          {"durl", "x"},
                                                          {"bvid", QJsonArray()},
                                                          {"isLogin", QJsonObject()}}}})
        .toJson();
}

QByteArray nested(int depth)
{
    return QByteArray(depth, '[') + QByteArray(depth, ']');
}
} // namespace

class TestZuviParserHostility : public QObject
{
    Q_OBJECT
private slots:
    void hostileBodies_data();
    void hostileBodies();
    void hugeList();
};

void TestZuviParserHostility::hostileBodies_data()
{
    QTest::addColumn<QString>("parser");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("code"); // -1: an error of the JSON reader
    QTest::addColumn<int>("built");

    const QStringList all = parsers().keys();
    for (const QString &name : all) {
        const QByteArray tag = name.toUtf8();
        QTest::newRow(tag + " empty") << name << QByteArray() << 100 << 0;
        QTest::newRow(tag + " truncated")
            << name << QByteArray("{\"code\":0,\"data\":{\"li") << -1 << 0;
        QTest::newRow(tag + " garbage") << name << QByteArray("\xff\xfe\x00<html>", 10) << -1 << 0;
        QTest::newRow(tag + " deeply nested") << name << nested(200000) << -1 << 0;
        // The popular parser alone treats a root that is not an object as no list, no error.
        const int notObject = name == "popular" ? 0 : 102;
        // A bare scalar is not a JSON document to the reader.
        QTest::newRow(tag + " null root") << name << QByteArray("null") << -1 << 0;
        QTest::newRow(tag + " array root") << name << QByteArray("[1,{}]") << notObject << 0;
        QTest::newRow(tag + " nested object")
            << name << QByteArray("{\"data\":" + nested(500) + "}") << -2 << -2;
    }
    const QHash<QString, QPair<int, int>> wrong{
        {"popular", {101, 0}},   {"ranking", {501, 0}},  {"legacy", {502, 0}},
        {"search", {601, 0}},    {"flexible", {722, 0}}, {"folders", {723, 0}},
        {"detail", {201, 0}},    {"playurl", {302, 0}},  {"comments", {731, 0}},
        {"following", {721, 0}}, {"action", {0, 1}},     {"qrcode", {711, 0}},
        {"poll", {0, 1}},        {"nav", {0, 1}},        {"relation", {0, 1}},
    };
    for (auto it = wrong.constBegin(); it != wrong.constEnd(); ++it)
        QTest::newRow(it.key().toUtf8() + " wrong types")
            << it.key() << wrongTypes() << it.value().first << it.value().second;
    // A service code given as text still fails the envelope.
    for (const QString &name :
         {"popular", "search", "flexible", "comments", "following", "relation"})
        QTest::newRow(name.toUtf8() + " text code")
            << name << QByteArray("{\"code\":\" -352abc\",\"data\":{}}") << -352 << 0;
}

void TestZuviParserHostility::hostileBodies()
{
    QFETCH(QString, parser);
    QFETCH(QByteArray, body);
    QFETCH(int, code);
    QFETCH(int, built);

    ZuviError error;
    const int count = parsers().value(parser)(body, &error);
    if (code == -2) {
        // Whatever the parser makes of a deep value, it stays an answer.
        QVERIFY(count >= 0);
        return;
    }
    QCOMPARE(count, built);
    if (code == -1) {
        QVERIFY(error.hasError());
        QVERIFY(error.domain != QLatin1String(ZuviAPIClient::kErrorDomain));
    } else {
        QCOMPARE(error.code, code);
        if (code != 0)
            QCOMPARE(error.domain, QString(ZuviAPIClient::kErrorDomain));
    }
}

void TestZuviParserHostility::hugeList()
{
    // 200 000 entries, a third of them unusable, in a body of tens of megabytes.
    QByteArray body = "{\"code\":0,\"data\":{\"list\":[";
    for (int i = 0; i < 200000; ++i) {
        if (i)
            body += ',';
        if (i % 3 == 2)
            body += "{\"bvid\":[],\"title\":{}}";
        else
            body += "{\"bvid\":\"BV" + QByteArray::number(i) +
                    "\",\"title\":\"t\",\"stat\":{\"view\":\"" + QByteArray::number(i * 1000) +
                    "\"}}";
    }
    body += "]}}";
    ZuviError error;
    const QList<ZuviVideoItem> videos =
        ZuviVideoListParser::parsePopularVideosFromData(body, &error);
    QVERIFY(error.isNull());
    QCOMPARE(videos.size(), 133334);
    QCOMPARE(videos.last().bvid, QString("BV199999"));
}

QTEST_MAIN(TestZuviParserHostility)
#include "tst_zuviparserhostility.moc"
