// Video lists: popular, ranking, legacy ranking, search and the flexible
// lists (history, watch later, favourites, related) over the same bytes.
// Whatever the body, each list holds only records a cell can show.
#include "net/zuvivideolistparser.h"
#include "zuvifuzzcheck.h"

#include <cstddef>
#include <cstdint>

namespace {
void checkVideos(const QList<ZuviVideoItem> &videos, const ZuviError &error)
{
    if (!error.isNull())
        ZUVI_FUZZ_CHECK(videos.isEmpty());
    for (const ZuviVideoItem &video : videos) {
        ZUVI_FUZZ_CHECK(!video.bvid.isEmpty());
        ZUVI_FUZZ_CHECK(!video.title.isEmpty());
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size)
{
    using Parser = ZuviVideoListParser;
    const QByteArray body(reinterpret_cast<const char *>(bytes), qsizetype(size));
    ZuviError error;
    checkVideos(Parser::parsePopularVideosFromData(body, &error), error);
    error = {};
    checkVideos(Parser::parseRankingVideosFromData(body, &error), error);
    error = {};
    checkVideos(Parser::parseLegacyRankingVideosFromData(body, &error), error);
    error = {};
    checkVideos(Parser::parseSearchVideosFromData(body, &error), error);
    error = {};
    checkVideos(Parser::parseFlexibleVideosFromData(body, QStringLiteral("历史记录"), &error),
                error);
    // A limit below 1 keeps the whole list.
    error = {};
    const int limit = int(size % 7) - 1;
    const auto searched = Parser::parseSearchVideosFromData(body, &error);
    const auto limited = Parser::videosByLimitingVideos(searched, limit);
    ZUVI_FUZZ_CHECK(limited.size() ==
                    (limit < 1 ? searched.size() : qMin(searched.size(), qsizetype(limit))));
    return 0;
}
