// The following feed: nested items of every kind become flat rows.
#include "net/zuvifollowingfeedparser.h"
#include "zuvifuzzcheck.h"

#include <QSet>

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size)
{
    const QByteArray body(reinterpret_cast<const char *>(bytes), qsizetype(size));
    ZuviError error;
    const auto page = ZuviFollowingFeedParser::parseFollowingFeedFromData(body, &error);
    ZUVI_FUZZ_CHECK(bool(page) == error.isNull());
    if (page) {
        for (const ZuviFollowingRow &row : page->rows) {
            const QStringList images = row.value(QStringLiteral("imageURLStrings")).toStringList();
            ZUVI_FUZZ_CHECK(images.size() <= ZuviFollowingFeedParser::kMaximumImages);
            ZUVI_FUZZ_CHECK(images.size() == QSet<QString>(images.begin(), images.end()).size());
        }
    }
    error = {};
    ZuviFollowingFeedParser::parseFollowingRowsFromData(body, &error);
    return 0;
}
