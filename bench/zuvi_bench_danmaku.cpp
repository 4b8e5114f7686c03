// Cost of the danmaku path: parsing a whole document and sorting it by time,
// against the floor of a bare expat pass over the same bytes that only counts
// the "d" elements. Documents come from the deterministic generator, so every
// run reads the same bytes.
//
// Besides the benchmarks, the program runs one pass over a file for whole
// process measurements (callgrind instruction counts, peak memory):
//   zuvi_bench_danmaku --write-document COUNT FILE
//   zuvi_bench_danmaku --parse-file FILE      parse + sort, print the count
//   zuvi_bench_danmaku --floor-file FILE      bare expat pass
//   zuvi_bench_danmaku --read-file FILE       only read the file (the baseline)
#include "model/zuvidanmakuxmlparser.h"
#include "zuvidanmakudocumentgenerator.h"

#include <benchmark/benchmark.h>

#include <QFile>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <expat.h>
#include <map>

namespace {

constexpr int kChunkSize = 64 * 1024;

const QByteArray &documentWithCount(int count)
{
    static std::map<int, QByteArray> documents;
    auto found = documents.find(count);
    if (found == documents.end())
        found = documents.emplace(count, ZuviDanmakuDocumentGenerator().document(count)).first;
    return found->second;
}

// The floor: expat tokenizes everything, one handler counts start tags.
Q_NEVER_INLINE qsizetype countElementsWithBareExpat(const QByteArray &data)
{
    qsizetype count = 0;
    XML_Parser parser = XML_ParserCreate(nullptr);
    XML_SetUserData(parser, &count);
    XML_SetStartElementHandler(parser, [](void *userData, const char *name, const char **) {
        if (name[0] == 'd' && name[1] == '\0')
            ++*static_cast<qsizetype *>(userData);
    });
    const char *p = data.constData();
    qsizetype remaining = data.size();
    bool finished = false;
    while (!finished) {
        const int length = int(std::min<qsizetype>(remaining, kChunkSize));
        finished = length == remaining;
        if (XML_Parse(parser, p, length, finished) == XML_STATUS_ERROR)
            break;
        p += length;
        remaining -= length;
    }
    XML_ParserFree(parser);
    return count;
}

Q_NEVER_INLINE QList<ZuviDanmakuItem> parseAndSort(const QByteArray &data)
{
    ZuviDanmakuXMLParser parser;
    parser.parse(data);
    QList<ZuviDanmakuItem> items = parser.takeItems();
    ZuviDanmakuXMLParser::sortByTime(items);
    return items;
}

void setCounters(benchmark::State &state, const QByteArray &document)
{
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.SetBytesProcessed(state.iterations() * document.size());
}

} // namespace

static void BM_DanmakuParseAndSort(benchmark::State &state)
{
    const QByteArray &document = documentWithCount(int(state.range(0)));
    for (auto _ : state) {
        QList<ZuviDanmakuItem> items = parseAndSort(document);
        benchmark::DoNotOptimize(items.constData());
        // Freeing the result is the overlay's business, long after parsing.
        state.PauseTiming();
        items = {};
        state.ResumeTiming();
    }
    setCounters(state, document);
}
BENCHMARK(BM_DanmakuParseAndSort)
    ->Arg(1000)
    ->Arg(10000)
    ->Arg(100000)
    ->Unit(benchmark::kMicrosecond);

static void BM_DanmakuBareExpatFloor(benchmark::State &state)
{
    const QByteArray &document = documentWithCount(int(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(countElementsWithBareExpat(document));
    setCounters(state, document);
}
BENCHMARK(BM_DanmakuBareExpatFloor)
    ->Arg(1000)
    ->Arg(10000)
    ->Arg(100000)
    ->Unit(benchmark::kMicrosecond);

// The two halves of the path on their own, to see where time goes.
static void BM_DanmakuParseOnly(benchmark::State &state)
{
    const QByteArray &document = documentWithCount(int(state.range(0)));
    for (auto _ : state) {
        ZuviDanmakuXMLParser parser;
        parser.parse(document);
        benchmark::DoNotOptimize(parser.items().constData());
        state.PauseTiming();
        parser.takeItems();
        state.ResumeTiming();
    }
    setCounters(state, document);
}
BENCHMARK(BM_DanmakuParseOnly)->Arg(100000)->Unit(benchmark::kMicrosecond);

static void BM_DanmakuSortOnly(benchmark::State &state)
{
    const QByteArray &document = documentWithCount(int(state.range(0)));
    ZuviDanmakuXMLParser parser;
    parser.parse(document);
    for (auto _ : state) {
        state.PauseTiming();
        QList<ZuviDanmakuItem> items = parser.items();
        items.detach();
        state.ResumeTiming();
        ZuviDanmakuXMLParser::sortByTime(items);
        benchmark::DoNotOptimize(items.constData());
    }
    setCounters(state, document);
}
BENCHMARK(BM_DanmakuSortOnly)->Arg(100000)->Unit(benchmark::kMicrosecond);

namespace {

QByteArray readFile(const char *path)
{
    QFile file(QString::fromLocal8Bit(path));
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "cannot read %s\n", path);
        std::exit(2);
    }
    // One exact read, so that the document's own buffer is its size.
    QByteArray data(file.size(), Qt::Uninitialized);
    data.resize(qMax<qint64>(0, file.read(data.data(), data.size())));
    return data;
}

// One pass over a file for whole-process measurements; -1 when not asked.
int runFileMode(int argc, char **argv)
{
    if (argc == 4 && std::strcmp(argv[1], "--write-document") == 0) {
        QFile file(QString::fromLocal8Bit(argv[3]));
        if (!file.open(QIODevice::WriteOnly))
            return 2;
        file.write(ZuviDanmakuDocumentGenerator().document(std::atoi(argv[2])));
        return 0;
    }
    if (argc != 3)
        return -1;
    if (std::strcmp(argv[1], "--read-file") == 0) {
        std::printf("%lld bytes\n", static_cast<long long>(readFile(argv[2]).size()));
        return 0;
    }
    if (std::strcmp(argv[1], "--floor-file") == 0) {
        std::printf("%lld elements\n",
                    static_cast<long long>(countElementsWithBareExpat(readFile(argv[2]))));
        return 0;
    }
    if (std::strcmp(argv[1], "--parse-file") == 0) {
        const QList<ZuviDanmakuItem> items = parseAndSort(readFile(argv[2]));
        std::printf("%lld items\n", static_cast<long long>(items.size()));
        return 0;
    }
    return -1;
}

} // namespace

int main(int argc, char **argv)
{
    if (const int status = runFileMode(argc, argv); status >= 0)
        return status;
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
