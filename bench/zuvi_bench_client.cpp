// Costs of the client's hot text helpers: every request builds a form body
// or reads the credential cookie, every list entry goes through the count
// formatting.
#include "net/zuviapiclient.h"
#include "net/zuvifollowingfeedparser.h"
#include "net/zuvivideolistparser.h"

#include <benchmark/benchmark.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>

static void BM_FormBody(benchmark::State &state)
{
    const QVariantMap parameters{{"aid", 170001},
                                 {"csrf", "0123456789abcdef0123456789abcdef"},
                                 {"message", QStringLiteral("好看！a b&c=d/é")},
                                 {"type", 1},
                                 {"plat", 1}};
    for (auto _ : state)
        benchmark::DoNotOptimize(ZuviAPIClient::formBodyStringWithParameters(parameters));
}
BENCHMARK(BM_FormBody);

static void BM_CookieRoundTrip(benchmark::State &state)
{
    const QString cookie = "DedeUserID=42; DedeUserID__ckMd5=abc; SESSDATA=s%2Cx; zuvi_jct=t; "
                           "buvid3=b3; buvid4=b4; buvid_fp=fp; b_nut=1700000000; extra=1";
    for (auto _ : state) {
        const auto dictionary = ZuviAPIClient::mutableCookieDictionaryFromString(cookie);
        benchmark::DoNotOptimize(ZuviAPIClient::cookieStringFromDictionary(dictionary));
    }
}
BENCHMARK(BM_CookieRoundTrip);

static void BM_CompactCount(benchmark::State &state)
{
    const QJsonValue values[] = {QJsonValue(9999), QJsonValue(123456789), QJsonValue("15000")};
    for (auto _ : state) {
        for (const QJsonValue &value : values)
            benchmark::DoNotOptimize(ZuviAPIClient::compactCountStringFromObject(value));
    }
}
BENCHMARK(BM_CompactCount);

// A popular-list body of n entries in the service's shape.
static QByteArray popularBody(int n)
{
    QJsonArray list;
    for (int i = 0; i < n; ++i)
        list.append(
            QJsonObject{{"bvid", QString("BV1%1xyz").arg(i)},
                        {"title", QString("<em class=\"keyword\">视频</em> 第 %1 个").arg(i)},
                        {"owner", QJsonObject{{"name", "UP主"}}},
                        {"stat", QJsonObject{{"view", 12345 * i}, {"reply", i}}},
                        {"pic", "//img.test/cover.jpg"},
                        {"duration", 61 + i},
                        {"aid", 1000 + i},
                        {"cid", 2000 + i}});
    return QJsonDocument(QJsonObject{{"code", 0}, {"data", QJsonObject{{"list", list}}}}).toJson();
}

// Parsing one page of a video list, per entry.
static void BM_ParsePopularList(benchmark::State &state)
{
    const QByteArray body = popularBody(int(state.range(0)));
    for (auto _ : state) {
        ZuviError error;
        benchmark::DoNotOptimize(ZuviVideoListParser::parsePopularVideosFromData(body, &error));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_ParsePopularList)->Arg(20)->Arg(100);

// A following-feed body mixing the five row kinds.
static QByteArray followingBody(int n)
{
    QJsonArray items;
    for (int i = 0; i < n; ++i) {
        QJsonObject major;
        switch (i % 5) {
        case 0:
            major = {{"archive",
                      QJsonObject{{"bvid", "BV1feed"}, {"title", "视频"}, {"cover", "//i/c.jpg"}}}};
            break;
        case 1:
            major = {{"live_rcmd",
                      QJsonObject{{"content",
                                   "{\"live_play_info\":{\"title\":\"直播\",\"online\":23456}}"}}}};
            break;
        case 2:
            major = {
                {"article", QJsonObject{{"id", i}, {"title", "专栏"}, {"desc", "一[图片]二"}}}};
            break;
        case 3: {
            QJsonArray pictures;
            for (int p = 0; p < 6; ++p)
                pictures.append(QJsonObject{{"src", QString("//i/%1.jpg").arg(p)}});
            major = {{"draw", QJsonObject{{"id", i}, {"items", pictures}}}};
            break;
        }
        default:
            break;
        }
        items.append(QJsonObject{
            {"id_str", QString::number(i)},
            {"modules",
             QJsonObject{
                 {"module_author",
                  QJsonObject{{"name", "作者"}, {"face", "//i/f.jpg"}, {"pub_time", "刚刚"}}},
                 {"module_dynamic",
                  QJsonObject{{"major", major}, {"desc", QJsonObject{{"text", "说点什么"}}}}}}}});
    }
    return QJsonDocument(QJsonObject{{"code", 0}, {"data", QJsonObject{{"items", items}}}})
        .toJson();
}

// Turning one feed page into rows, per item.
static void BM_FollowingFeedRows(benchmark::State &state)
{
    const QByteArray body = followingBody(int(state.range(0)));
    for (auto _ : state) {
        ZuviError error;
        benchmark::DoNotOptimize(ZuviFollowingFeedParser::parseFollowingFeedFromData(body, &error));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_FollowingFeedRows)->Arg(60);

BENCHMARK_MAIN();
