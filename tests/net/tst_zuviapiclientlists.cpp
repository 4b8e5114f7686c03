// The video list operations against a loopback server: what goes on the
// wire, what comes back, and the fallbacks and retry.
#include "zuviclienttestfixture.h"

#include <QtTest>

namespace {
using Videos = QList<ZuviVideoItem>;
const QString kSearchPath = QStringLiteral("/x/web-interface/search/type");

// One list answer: two good entries around entries every factory must skip.
QByteArray listAnswer(const char *listKey = "list")
{
    const QJsonArray list{zuviVideoEntry("BV1aa", "第一个"), QJsonObject{{"title", "没有 BV 号"}},
                          7, zuviVideoEntry("BV1bb", "第二个")};
    return zuviJson({{"code", 0}, {"data", QJsonObject{{listKey, list}}}});
}

QByteArray searchAnswer()
{
    const QJsonArray result{QJsonObject{{"bvid", "BV1se"},
                                        {"title", "<em class=\"keyword\">猫</em>和狗"},
                                        {"author", "作者"},
                                        {"play", 20000},
                                        {"video_review", 9},
                                        {"duration", "3:05"}}};
    return zuviJson({{"code", 0}, {"data", QJsonObject{{"result", result}}}});
}
} // namespace

class TestZuviAPIClientLists : public QObject
{
    Q_OBJECT

private:
    // A list operation's completion: how often it came, and what it last brought.
    struct Outcome : ZuviCompletionSpy<const Videos &, const ZuviError &> {
        const Videos &videos() const { return std::get<0>(arguments); }
        const ZuviError &error() const { return std::get<1>(arguments); }
    };

private slots:
    void requestShapes_data();
    void requestShapes();
    void regionRankingFallback_data();
    void regionRankingFallback();
    void legacyRankingFactories();
    void searchRetriesOnceAfterDelay_data();
    void searchRetriesOnceAfterDelay();
    void blankSearchSendsNothing();
    void favorites_data();
    void favorites();
};

void TestZuviAPIClientLists::requestShapes_data()
{
    QTest::addColumn<QString>("operation");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("query");
    QTest::addColumn<QString>("referer");

    QTest::newRow("popular clamps") << "popular 0 0"
                                    << "/x/web-interface/popular"
                                    << "pn=1&ps=100"
                                    << "http://web.test/";
    QTest::newRow("recommended page 3") << "recommended 3 0"
                                        << "/x/web-interface/index/top/feed/rcmd"
                                        << "ps=100&fresh_idx=3&fresh_idx_1h=3&fresh_type=3"
                                        << "http://web.test/";
    QTest::newRow("recommended page 0") << "recommended 0 12"
                                        << "/x/web-interface/index/top/feed/rcmd"
                                        << "ps=12&fresh_idx=1&fresh_idx_1h=1&fresh_type=3"
                                        << "http://web.test/";
    QTest::newRow("web ranking clamps") << "ranking -5 - 0"
                                        << "/x/web-interface/ranking/v2"
                                        << "rid=0&type=all&web_location=333.934&ps=100"
                                        << "http://web.test/v/popular/rank/all";
    QTest::newRow("region ranking") << "region -1"
                                    << "/x/web-interface/ranking/v2"
                                    << "rid=0&type=all"
                                    << "http://web.test/";
    QTest::newRow("history") << "history"
                             << "/x/web-interface/history/cursor"
                             << "max=0&view_at=0&business=archive&ps=20"
                             << "http://web.test/account/history";
    QTest::newRow("watch later") << "watchLater"
                                 << "/x/v2/history/toview/web"
                                 << ""
                                 << "http://web.test/watchlater/";
    QTest::newRow("related") << "related BV1x y"
                             << "/x/web-interface/archive/related"
                             << "bvid=BV1x%20y"
                             << "http://web.test/video/BV1x%20y/";
    QTest::newRow("favourite folder") << "mediaID 77"
                                      << "/x/v3/fav/resource/list"
                                      << "media_id=77&pn=1&ps=20&platform=web"
                                      << "http://space.test/";
}

void TestZuviAPIClientLists::requestShapes()
{
    QFETCH(QString, operation);
    QFETCH(QString, path);
    QFETCH(QString, query);
    QFETCH(QString, referer);

    ZuviClientTestFixture f;
    f.answerJson(path, listAnswer());
    f.client->updateCredentialCookie("SESSDATA=s; zuvi_jct=t");
    Outcome outcome;
    const QStringList words = operation.split(' ');
    const QString name = words.at(0);
    if (name == "popular")
        f.client->fetchPopularPage(words[1].toInt(), words[2].toInt(), outcome.completion());
    else if (name == "recommended")
        f.client->fetchRecommendedPage(words[1].toInt(), words[2].toInt(), outcome.completion());
    else if (name == "ranking")
        f.client->fetchWebRankingWithRID(words[1].toInt(), words[2] == "-" ? QString() : words[2],
                                         words[3].toInt(), outcome.completion());
    else if (name == "region")
        f.client->fetchRegionRankingWithRID(words[1].toInt(), outcome.completion());
    else if (name == "history")
        f.client->fetchHistoryVideosWithCompletion(outcome.completion());
    else if (name == "watchLater")
        f.client->fetchWatchLaterVideosWithCompletion(outcome.completion());
    else if (name == "related")
        f.client->fetchRelatedVideosWithBVID(words.mid(1).join(' '), outcome.completion());
    else if (name == "mediaID")
        f.client->fetchFavoriteVideosWithMediaID(words[1].toLongLong(), outcome.completion());
    ZUVI_WAIT(outcome.calls == 1);

    QCOMPARE(f.server.requestCount(), 1);
    const ZuviRecordedRequest request = f.server.requests().first();
    QCOMPARE(request.method, QByteArray("GET"));
    QCOMPARE(request.path, path);
    QCOMPARE(request.query, query);
    QCOMPARE(request.header("Referer"), referer.toUtf8());
    // The API request kind: the mobile identity and the stored cookie.
    QCOMPARE(request.header("User-Agent"), QByteArray(ZuviAPIClient::kAPIUserAgent));
    QCOMPARE(request.header("Accept"), QByteArray("application/json,text/plain,*/*"));
    QCOMPARE(request.header("Cookie"), QByteArray("SESSDATA=s; zuvi_jct=t"));
    QVERIFY(!request.hasHeader("Origin"));

    QVERIFY2(outcome.error().isNull(), qPrintable(outcome.error().message));
    QCOMPARE(outcome.videos().size(), 2);
    QCOMPARE(outcome.videos().at(0).bvid, QString("BV1aa"));
    QCOMPARE(outcome.videos().at(1).bvid, QString("BV1bb"));
    QCOMPARE(outcome.videos().at(0).playCountText, QString("1.2万"));
}

void TestZuviAPIClientLists::regionRankingFallback_data()
{
    QTest::addColumn<ZuviScriptedAnswer>("current");
    QTest::addColumn<ZuviScriptedAnswer>("legacy");
    QTest::addColumn<int>("legacyRequests");
    QTest::addColumn<int>("expectedCount");
    QTest::addColumn<int>("expectedCode");

    const auto legacyOk = ZuviScriptedAnswer::json(
        zuviJson({{"code", 0}, {"data", QJsonArray{zuviVideoEntry("BV1old", "旧榜")}}}));
    const auto serviceError =
        ZuviScriptedAnswer::json(zuviJson({{"code", -400}, {"message", "请求错误"}}));
    const auto legacyError = ZuviScriptedAnswer::json(zuviJson({{"code", -404}}));
    // A request that is never answered fails on the (shortened) timeout: a
    // connection error that is not the service's.
    ZuviScriptedAnswer silent;
    silent.neverAnswer = true;

    QTest::newRow("current empty list is kept")
        << ZuviScriptedAnswer::json(
               zuviJson({{"code", 0}, {"data", QJsonObject{{"list", QJsonArray()}}}}))
        << legacyOk << 0 << 0 << 0;
    QTest::newRow("service code falls back") << serviceError << legacyOk << 1 << 1 << 0;
    QTest::newRow("connection failure falls back") << silent << legacyOk << 1 << 1 << 0;
    QTest::newRow("only the legacy error is reported")
        << serviceError << legacyError << 1 << 0 << -404;
    QTest::newRow("legacy without list")
        << serviceError << ZuviScriptedAnswer::json(zuviJson({{"code", 0}})) << 1 << 0 << 502;
}

void TestZuviAPIClientLists::regionRankingFallback()
{
    QFETCH(ZuviScriptedAnswer, current);
    QFETCH(ZuviScriptedAnswer, legacy);
    QFETCH(int, legacyRequests);
    QFETCH(int, expectedCount);
    QFETCH(int, expectedCode);

    ZuviClientTestFixture f;
    f.client->setRequestTimeoutMs(300);
    f.server.setAnswer("GET", "/x/web-interface/ranking/v2", current);
    f.server.setAnswer("GET", "/x/web-interface/ranking/region", legacy);
    Outcome outcome;
    f.client->fetchRegionRankingWithRID(-3, outcome.completion());
    ZUVI_WAIT(outcome.calls == 1);

    QCOMPARE(f.server.requestCount("/x/web-interface/ranking/v2"), 1);
    QCOMPARE(f.server.requestCount("/x/web-interface/ranking/region"), legacyRequests);
    if (legacyRequests > 0)
        QCOMPARE(f.server.requests("/x/web-interface/ranking/region").first().query,
                 QString("rid=0&day=3"));
    QCOMPARE(outcome.videos().size(), expectedCount);
    QCOMPARE(outcome.error().code, expectedCode);
    if (expectedCode == -404)
        QCOMPARE(outcome.error().message, QString("旧分区榜单接口返回错误"));
}

void TestZuviAPIClientLists::legacyRankingFactories()
{
    // An entry without owner and stat is built by the popular factory with
    // the defaults; an entry neither factory accepts is skipped.
    ZuviClientTestFixture f;
    const QJsonArray list{QJsonObject{{"bvid", "BV1plain"}, {"title", "无作者"}},
                          QJsonObject{{"title", "没有 BV"}, {"author", "x"}}};
    f.answerJson("/x/web-interface/ranking/region",
                 zuviJson({{"code", 0}, {"data", QJsonObject{{"list", list}}}}));
    Outcome outcome;
    f.client->fetchLegacyRegionRankingWithRID(4, ZuviError(), outcome.completion());
    ZUVI_WAIT(outcome.calls == 1);
    QCOMPARE(outcome.videos().size(), 1);
    QCOMPARE(outcome.videos().at(0).ownerName, QString("未知 UP"));
    QCOMPARE(outcome.videos().at(0).playCountText, QString("0"));
    QCOMPARE(outcome.videos().at(0).commentCountText, QString("0"));
}

void TestZuviAPIClientLists::searchRetriesOnceAfterDelay_data()
{
    QTest::addColumn<bool>("secondSucceeds");
    QTest::addColumn<bool>("silentFirst");
    QTest::newRow("second succeeds") << true << false;
    QTest::newRow("connection failure then failure") << false << true;
}

void TestZuviAPIClientLists::searchRetriesOnceAfterDelay()
{
    QFETCH(bool, secondSucceeds);
    QFETCH(bool, silentFirst);

    ZuviClientTestFixture f;
    f.client->setRequestTimeoutMs(300);
    ZuviScriptedAnswer first =
        ZuviScriptedAnswer::json(zuviJson({{"code", -412}, {"message", "请求被拦截"}}));
    first.neverAnswer = silentFirst;
    const ZuviScriptedAnswer second =
        secondSucceeds
            ? ZuviScriptedAnswer::json(searchAnswer())
            : ZuviScriptedAnswer::json(zuviJson({{"code", -412}, {"message", "还是拦截"}}));
    f.server.setAnswerSequence("GET", kSearchPath, {first, second});

    Outcome outcome;
    f.client->fetchSearchVideosWithKeyword("  猫 狗\n", 0, outcome.completion());
    // The first failure schedules the retry on the virtual clock.
    ZUVI_WAIT(f.scheduler.pendingCount() == 1);
    QCOMPARE(f.server.requestCount(), 1);
    QCOMPARE(f.scheduler.nextDueIn(), 0.6);
    f.scheduler.advance(0.59);
    QCOMPARE(f.scheduler.pendingCount(), 1);
    f.settle();
    QCOMPARE(f.server.requestCount(kSearchPath), 1);
    QCOMPARE(outcome.calls, 0);
    f.scheduler.advance(0.01);
    ZUVI_WAIT(outcome.calls == 1);

    QCOMPARE(f.server.requestCount(kSearchPath), 2);
    for (const ZuviRecordedRequest &request : f.server.requests(kSearchPath)) {
        QCOMPARE(request.query, QString("search_type=video&keyword=%E7%8C%AB%20%E7%8B%97&page=1"));
        QCOMPARE(request.header("Referer"), QByteArray("http://search.test/"));
    }
    if (secondSucceeds) {
        QVERIFY(outcome.error().isNull());
        QCOMPARE(outcome.videos().size(), 1);
        QCOMPARE(outcome.videos().at(0).title, QString("猫和狗"));
    } else {
        QCOMPARE(outcome.error().code, -412);
        QCOMPARE(outcome.error().message, QString("还是拦截"));
    }
    // No third attempt, however long we wait.
    f.scheduler.advance(10);
    QCOMPARE(f.scheduler.pendingCount(), 0);
    f.settle();
    QCOMPARE(f.server.requestCount(kSearchPath), 2);
    QCOMPARE(outcome.calls, 1);
}

void TestZuviAPIClientLists::blankSearchSendsNothing()
{
    ZuviClientTestFixture f;
    Outcome outcome;
    f.client->fetchSearchVideosWithKeyword(" \n\t ", 1, outcome.completion());
    ZUVI_WAIT(outcome.calls == 1);
    QVERIFY(outcome.error().isNull());
    QVERIFY(outcome.videos().isEmpty());
    QCOMPARE(f.server.requestCount(), 0);
    QCOMPARE(f.scheduler.pendingCount(), 0);
}

void TestZuviAPIClientLists::favorites_data()
{
    QTest::addColumn<qint64>("mid");
    QTest::addColumn<QByteArray>("folders");
    QTest::addColumn<int>("requests");
    QTest::addColumn<QString>("contentsQuery");
    QTest::addColumn<int>("expectedCount");
    QTest::addColumn<int>("expectedCode");

    QTest::newRow("no folders") << qint64(42)
                                << zuviJson(
                                       {{"code", 0}, {"data", QJsonObject{{"list", QJsonArray()}}}})
                                << 1 << QString() << 0 << 0;
    QTest::newRow("first positive id")
        << qint64(42)
        << zuviJson({{"code", 0},
                     {"data",
                      QJsonObject{{"list", QJsonArray{QJsonObject{{"media_id", 0}, {"id", 0}}, "x",
                                                      QJsonObject{{"media_id", "0"}, {"id", "77"}},
                                                      QJsonObject{{"media_id", 88}}}}}}})
        << 2 << QString("media_id=77&pn=1&ps=20&platform=web") << 2 << 0;
    QTest::newRow("service error")
        << qint64(42) << zuviJson({{"code", -101}}) << 1 << QString() << 0 << -101;
    QTest::newRow("missing list") << qint64(42) << zuviJson({{"code", 0}, {"data", 3}}) << 1
                                  << QString() << 0 << 723;
}

void TestZuviAPIClientLists::favorites()
{
    QFETCH(qint64, mid);
    QFETCH(QByteArray, folders);
    QFETCH(int, requests);
    QFETCH(QString, contentsQuery);
    QFETCH(int, expectedCount);
    QFETCH(int, expectedCode);

    ZuviClientTestFixture f;
    f.answerJson("/x/v3/fav/folder/created/list-all", folders);
    f.answerJson("/x/v3/fav/resource/list", listAnswer("medias"));
    Outcome outcome;
    f.client->fetchFavoriteVideosForMID(mid, outcome.completion());
    ZUVI_WAIT(outcome.calls == 1);

    QCOMPARE(f.server.requestCount(), requests);
    if (requests > 0) {
        const ZuviRecordedRequest list = f.server.requests().first();
        QCOMPARE(list.query, QString("up_mid=42"));
        QCOMPARE(list.header("Referer"), QByteArray("http://space.test/"));
    }
    if (!contentsQuery.isEmpty())
        QCOMPARE(f.server.requests("/x/v3/fav/resource/list").first().query, contentsQuery);
    QCOMPARE(outcome.videos().size(), expectedCount);
    QCOMPARE(outcome.error().code, expectedCode);
    if (expectedCode == 723)
        QCOMPARE(outcome.error().message, QString("收藏夹列表接口缺少 list 字段"));
    if (expectedCode == -101)
        QCOMPARE(outcome.error().message, QString("收藏夹列表接口返回错误"));
}

QTEST_MAIN(TestZuviAPIClientLists)
#include "tst_zuviapiclientlists.moc"
