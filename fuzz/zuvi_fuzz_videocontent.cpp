// One video's answers: detail, play address and comments over the same bytes.
#include "net/zuvivideocontentparser.h"
#include "zuvifuzzcheck.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size)
{
    using Parser = ZuviVideoContentParser;
    const QByteArray body(reinterpret_cast<const char *>(bytes), qsizetype(size));
    ZuviError error;
    const auto detail = Parser::parseVideoDetailFromData(body, &error);
    ZUVI_FUZZ_CHECK(bool(detail) == error.isNull());
    if (detail)
        ZUVI_FUZZ_CHECK(!detail->bvid.isEmpty());

    error = {};
    int actualQuality = -1;
    const QString address =
        Parser::parsePlayURLFromData(body, 64, &actualQuality, QStringLiteral("cdn.test"), &error);
    ZUVI_FUZZ_CHECK(address.isEmpty() != error.isNull());

    error = {};
    const auto comments = Parser::parseCommentsFromData(body, QStringLiteral("评论"), &error);
    if (!error.isNull())
        ZUVI_FUZZ_CHECK(comments.isEmpty());
    return 0;
}
