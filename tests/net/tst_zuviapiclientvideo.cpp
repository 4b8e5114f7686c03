// One video's operations against a loopback server: detail, the play-address
// walk, danmaku with its fallback, comments with theirs.
#include "net/zuvivideocontentparser.h"
#include "zuviclienttestfixture.h"

#include <QtTest>

namespace {
QByteArray playAnswer(int quality, const QJsonValue &durl, bool dash = false)
{
    QJsonObject data{{"quality", quality},
                     {"format", "mp4720"},
                     {"accept_quality", QJsonArray{80, 64, "32", 16}}};
    if (!durl.isUndefined())
        data.insert("durl", durl);
    if (dash)
        data.insert("dash", QJsonObject{{"video", QJsonArray()}});
    return zuviJson({{"code", 0}, {"data", data}});
}

QByteArray danmakuDocument()
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?><i><chatserver>x</chatserver>"
           "<d p=\"9.5,1,25,16777215,0,0,0,id2\">后</d>"
           "<d p=\"1.25,5,18,16711680,0,0,0,id1\">先 &amp; 好</d>"
           "<d p=\"3,4,36,0\">中</d></i>";
}

using DanmakuSpy = ZuviCompletionSpy<const QList<ZuviDanmakuItem> &, const ZuviError &>;
} // namespace

class TestZuviAPIClientVideo : public QObject
{
    Q_OBJECT
private slots:
    void detail_data();
    void detail();
    void playURLWalk_data();
    void playURLWalk();
    void playURLMessages_data();
    void playURLMessages();
    void danmakuSources_data();
    void danmakuSources();
    void comments_data();
    void comments();
};

void TestZuviAPIClientVideo::detail_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("title");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("message");

    const QJsonObject data{{"bvid", "BV1d"},
                           {"title", "<b>标题</b>"},
                           {"aid", "5"},
                           {"cid", 6},
                           {"pages", QJsonArray{QJsonObject{{"cid", 6}, {"page", 1}}}}};
    QTest::newRow("ok") << zuviJson({{"code", 0}, {"data", data}}) << "<b>标题</b>" << 0 << "";
    QTest::newRow("service code bare")
        << zuviJson({{"code", 62002}}) << "" << 62002 << "视频详情接口返回错误";
}

void TestZuviAPIClientVideo::detail()
{
    QFETCH(QByteArray, answer);
    QFETCH(QString, title);
    QFETCH(int, code);
    QFETCH(QString, message);

    ZuviClientTestFixture f;
    f.answerJson("/x/web-interface/view", answer);
    ZuviCompletionSpy<const std::optional<ZuviVideoDetail> &, const ZuviError &> spy;
    f.client->fetchVideoDetailWithBVID("BV1d", spy.completion());
    ZUVI_WAIT(spy.calls == 1);
    const auto &[detail, error] = spy.arguments;
    const ZuviRecordedRequest request = f.server.requests().first();
    QCOMPARE(request.query, QString("bvid=BV1d"));
    QCOMPARE(request.header("Referer"), QByteArray("http://web.test/video/BV1d/"));
    QCOMPARE(error.code, code);
    QCOMPARE(error.message, message);
    QCOMPARE(bool(detail), code == 0);
    if (detail) {
        QCOMPARE(detail->title, title);
        QCOMPARE(detail->aid, qint64(5));
        QCOMPARE(detail->pages.size(), 1);
    }
}

void TestZuviAPIClientVideo::playURLWalk_data()
{
    QTest::addColumn<QList<int>>("qualities");
    QTest::addColumn<QList<ZuviScriptedAnswer>>("answers");
    QTest::addColumn<QList<int>>("requested");
    QTest::addColumn<QString>("url");
    QTest::addColumn<int>("quality");
    QTest::addColumn<int>("code");

    const QJsonArray durl{QJsonObject{{"url", "https://v1.cdn.test/a.mp4?x=1"}}};
    const auto dashOnly = ZuviScriptedAnswer::json(playAnswer(64, QJsonValue(), true));
    QTest::newRow("first answers, service quality 0 keeps requested")
        << QList<int>{32, 16}
        << QList<ZuviScriptedAnswer>{ZuviScriptedAnswer::json(playAnswer(0, durl))}
        << QList<int>{32} << "http://v1.cdn.test/a.mp4?x=1" << 32 << 0;
    QTest::newRow("backup address, other host unchanged")
        << QList<int>{64}
        << QList<ZuviScriptedAnswer>{ZuviScriptedAnswer::json(playAnswer(
               64, QJsonArray{QJsonObject{
                       {"url", ""}, {"backup_url", QJsonArray{"https://other.test/b.mp4"}}}}))}
        << QList<int>{64} << "https://other.test/b.mp4" << 64 << 0;
    QTest::newRow("empty list asks 64 only")
        << QList<int>() << QList<ZuviScriptedAnswer>{dashOnly} << QList<int>{64} << "" << 0 << 302;
    QTest::newRow("all fail keeps the last error")
        << QList<int>{64, 32, 16}
        << QList<ZuviScriptedAnswer>{ZuviScriptedAnswer::json(zuviJson({{"code", -404}})),
                                     ZuviScriptedAnswer::json("not json"), dashOnly}
        << QList<int>{64, 32, 16} << "" << 0 << 302;
    QTest::newRow("service error last")
        << QList<int>{64, 16}
        << QList<ZuviScriptedAnswer>{dashOnly, ZuviScriptedAnswer::json(zuviJson(
                                                   {{"code", -10403}, {"message", "地区限制"}}))}
        << QList<int>{64, 16} << "" << 0 << -10403;
}

void TestZuviAPIClientVideo::playURLWalk()
{
    QFETCH(QList<int>, qualities);
    QFETCH(QList<ZuviScriptedAnswer>, answers);
    QFETCH(QList<int>, requested);
    QFETCH(QString, url);
    QFETCH(int, quality);
    QFETCH(int, code);

    ZuviClientTestFixture f;
    f.server.setAnswerSequence("GET", "/x/player/playurl", answers);
    ZuviCompletionSpy<const QString &, int, const ZuviError &> spy;
    f.client->fetchPlayURLWithBVID("BV1p", 99, qualities, spy.completion());
    ZUVI_WAIT(spy.calls == 1);
    const auto &[gotURL, gotQuality, error] = spy.arguments;
    QCOMPARE(f.server.requestCount(), requested.size());
    for (int i = 0; i < requested.size(); ++i) {
        const ZuviRecordedRequest request = f.server.requests().at(i);
        QCOMPARE(request.query, QString("bvid=BV1p&cid=99&qn=%1&fnval=0&fnver=0&fourk=0"
                                        "&platform=html5&otype=json")
                                    .arg(requested.at(i)));
        QCOMPARE(request.header("Referer"), QByteArray("http://web.test/video/BV1p/"));
    }
    QCOMPARE(gotURL, url);
    QCOMPARE(gotQuality, quality);
    QCOMPARE(error.code, code);
    if (code == -10403)
        QCOMPARE(error.message, QString("qn=16 接口错误：地区限制"));
}

void TestZuviAPIClientVideo::playURLMessages_data()
{
    QTest::addColumn<QJsonObject>("data");
    QTest::addColumn<QString>("message");
    QTest::newRow("wrong types") << QJsonObject{{"accept_quality", "80,64"},
                                                {"format", 5},
                                                {"dash", QJsonArray()},
                                                {"durl", QJsonArray()},
                                                {"quality", -3}}
                                 << "请求qn=16，accept=--，没有传统durl";
}

void TestZuviAPIClientVideo::playURLMessages()
{
    QFETCH(QJsonObject, data);
    QFETCH(QString, message);
    QCOMPARE(ZuviVideoContentParser::playURLUnavailableMessageWithRequestedQuality(16, data),
             message);
    ZuviError error;
    int actual = 0;
    QCOMPARE(ZuviVideoContentParser::parsePlayURLFromData(zuviJson({{"code", 0}, {"data", data}}),
                                                          16, &actual, "cdn.test", &error),
             QString());
    QCOMPARE(error.code, 302);
    QCOMPARE(error.message, message);
    QCOMPARE(ZuviVideoContentParser::parsePlayURLFromData(zuviJson({{"code", 0}}), 32, &actual,
                                                          "cdn.test", &error),
             QString());
    QCOMPARE(error.message, QString("qn=32 播放地址缺少 data 字段"));
}

void TestZuviAPIClientVideo::danmakuSources_data()
{
    QTest::addColumn<ZuviScriptedAnswer>("primary");
    QTest::addColumn<ZuviScriptedAnswer>("legacy");
    QTest::addColumn<int>("legacyRequests");
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("code");

    const auto xml = ZuviScriptedAnswer::text(danmakuDocument(), "text/xml");
    const auto notXml = ZuviScriptedAnswer::text("{\"code\":-1}", "application/json");
    const auto empty = ZuviScriptedAnswer::text("", "text/xml");
    ZuviScriptedAnswer silent;
    silent.neverAnswer = true;

    QTest::newRow("primary answers") << xml << xml << 0 << 3 << 0;
    QTest::newRow("no d elements")
        << ZuviScriptedAnswer::text("<i><chatid>1</chatid></i>", "text/xml") << xml << 0 << 0 << 0;
    QTest::newRow("primary not XML, fallback answers") << notXml << xml << 1 << 3 << 0;
    QTest::newRow("primary empty, fallback fails to parse") << empty << notXml << 1 << 0 << 1;
    QTest::newRow("primary unreachable, fallback empty") << silent << empty << 1 << 0 << 401;
}

void TestZuviAPIClientVideo::danmakuSources()
{
    QFETCH(ZuviScriptedAnswer, primary);
    QFETCH(ZuviScriptedAnswer, legacy);
    QFETCH(int, legacyRequests);
    QFETCH(int, count);
    QFETCH(int, code);

    ZuviClientTestFixture f;
    // Even with the API role on https, the primary list is asked over http.
    f.endpoints.api.setScheme("https");
    f.rebuild();
    f.client->setRequestTimeoutMs(300);
    f.server.setAnswer("GET", "/x/v1/dm/list.so", primary);
    f.otherServer.setAnswer("GET", "/77.xml", legacy);
    DanmakuSpy spy;
    f.client->fetchDanmakuWithCID(77, spy.completion());
    ZUVI_WAIT(spy.calls == 1);
    const auto &[items, error] = spy.arguments;

    QCOMPARE(f.server.requestCount("/x/v1/dm/list.so"), 1);
    const ZuviRecordedRequest request = f.server.requests().first();
    QCOMPARE(request.query, QString("oid=77"));
    QCOMPARE(request.header("Accept"), QByteArray("text/xml,*/*"));
    QCOMPARE(request.header("Referer"), QByteArray("http://web.test/"));
    QCOMPARE(f.otherServer.requestCount("/77.xml"), legacyRequests);
    if (legacyRequests > 0)
        QCOMPARE(f.otherServer.requests().first().header("Accept"), QByteArray("text/xml,*/*"));
    QCOMPARE(items.size(), count);
    if (code == 1)
        QCOMPARE(error.domain, QString(ZuviVideoContentParser::kXMLErrorDomain));
    else
        QCOMPARE(error.code, code);
    if (count == 3) {
        // Sorted by time, with the texts decoded.
        QCOMPARE(items.at(0).text, QString("先 & 好"));
        QCOMPARE(items.at(0).time, 1.25);
        QCOMPARE(items.at(1).mode, 4);
        QCOMPARE(items.at(2).danmakuID, QString("id2"));
    }
}

void TestZuviAPIClientVideo::comments_data()
{
    QTest::addColumn<qint64>("aid");
    QTest::addColumn<int>("page");
    QTest::addColumn<int>("pageSize");
    QTest::addColumn<ZuviScriptedAnswer>("first");
    QTest::addColumn<QString>("query");
    QTest::addColumn<int>("mainRequests");
    QTest::addColumn<QStringList>("messages");
    QTest::addColumn<int>("code");

    const QJsonObject reply{{"content", QJsonObject{{"message", "<a>好</a>看"}}},
                            {"member", QJsonObject{{"uname", "甲"}}}};
    const auto replies = ZuviScriptedAnswer::json(zuviJson(
        {{"code", 0}, {"data", QJsonObject{{"replies", QJsonArray{reply, 3, QJsonObject()}}}}}));
    const auto failing = ZuviScriptedAnswer::json(zuviJson({{"code", 12002}}));
    QTest::newRow("first page") << qint64(5) << 0 << 0 << replies
                                << "type=1&oid=5&pn=1&ps=20&sort=2" << 0 << QStringList{"好看"}
                                << 0;
    QTest::newRow("null replies")
        << qint64(5) << 2 << 10
        << ZuviScriptedAnswer::json("{\"code\":0,\"data\":{\"replies\":null,\"top_replies\":[{}]}}")
        << "type=1&oid=5&pn=2&ps=10&sort=2" << 0 << QStringList() << 0;
    QTest::newRow("pinned when replies missing")
        << qint64(5) << 1 << 20
        << ZuviScriptedAnswer::json(
               zuviJson({{"code", 0}, {"data", QJsonObject{{"top_replies", QJsonArray{reply}}}}}))
        << "type=1&oid=5&pn=1&ps=20&sort=2" << 0 << QStringList{"好看"} << 0;
    QTest::newRow("page 1 failure tries main comments")
        << qint64(5) << 1 << 20 << failing << "type=1&oid=5&pn=1&ps=20&sort=2" << 1
        << QStringList{"主评论"} << 0;
    QTest::newRow("page 2 failure is reported")
        << qint64(5) << 2 << 20 << failing << "type=1&oid=5&pn=2&ps=20&sort=2" << 0 << QStringList()
        << 12002;
    QTest::newRow("no aid") << qint64(0) << 1 << 20 << replies << "" << 0 << QStringList() << 730;
}

void TestZuviAPIClientVideo::comments()
{
    QFETCH(qint64, aid);
    QFETCH(int, page);
    QFETCH(int, pageSize);
    QFETCH(ZuviScriptedAnswer, first);
    QFETCH(QString, query);
    QFETCH(int, mainRequests);
    QFETCH(QStringList, messages);
    QFETCH(int, code);

    ZuviClientTestFixture f;
    f.server.setAnswer("GET", "/x/v2/reply", first);
    const QJsonObject mainReply{{"content", QJsonObject{{"message", "主评论"}}}};
    f.answerJson(
        "/x/v2/reply/main",
        zuviJson({{"code", 0}, {"data", QJsonObject{{"replies", QJsonArray{mainReply}}}}}));
    ZuviCompletionSpy<const QList<ZuviCommentItem> &, const ZuviError &> spy;
    f.client->fetchCommentsForAID(aid, "BV1c", page, pageSize, spy.completion());
    ZUVI_WAIT(spy.calls == 1);
    const auto &[comments, error] = spy.arguments;
    QCOMPARE(f.server.requestCount("/x/v2/reply"), query.isEmpty() ? 0 : 1);
    if (!query.isEmpty()) {
        const ZuviRecordedRequest request = f.server.requests("/x/v2/reply").first();
        QCOMPARE(request.query, query);
        QCOMPARE(request.header("Referer"), QByteArray("http://web.test/video/BV1c/"));
    }
    QCOMPARE(f.server.requestCount("/x/v2/reply/main"), mainRequests);
    if (mainRequests > 0)
        QCOMPARE(f.server.requests("/x/v2/reply/main").first().query,
                 QString("type=1&oid=5&mode=3&ps=20&next=0"));
    QStringList got;
    for (const ZuviCommentItem &comment : comments)
        got.append(comment.message);
    QCOMPARE(got, messages);
    QCOMPARE(error.code, code);
    if (code == 12002)
        QCOMPARE(error.message, QString("评论接口返回错误"));
    if (code == 730)
        QCOMPARE(error.message, QString("当前视频缺少 aid，无法加载评论"));
}

QTEST_MAIN(TestZuviAPIClientVideo)
#include "tst_zuviapiclientvideo.moc"
