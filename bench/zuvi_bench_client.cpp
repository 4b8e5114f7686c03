// Costs of the client's hot text helpers: every request builds a form body
// or reads the credential cookie, every list entry goes through the count
// formatting.
#include "net/zuviapiclient.h"

#include <benchmark/benchmark.h>

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

BENCHMARK_MAIN();
