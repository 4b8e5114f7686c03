// Danmaku documents: the streaming reader over any bytes, fed in pieces of a
// size the input chooses. The pieces must not change what is read: a comment
// whose text, entity or multi-byte character straddles two pieces reads the
// same as in one piece.
#include "model/zuvidanmakuxmlparser.h"
#include "net/zuvivideocontentparser.h"
#include "zuvifuzzcheck.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size)
{
    if (size < 1)
        return 0;
    const int chunkSize = 1 + bytes[0] % 64;
    const QByteArray document(reinterpret_cast<const char *>(bytes + 1), qsizetype(size - 1));

    ZuviDanmakuXMLParser whole;
    const bool wholeRead = whole.parse(document);
    ZuviDanmakuXMLParser pieces;
    pieces.setChunkSize(chunkSize);
    const bool piecesRead = pieces.parse(document);

    ZUVI_FUZZ_CHECK(wholeRead == piecesRead);
    if (wholeRead) {
        ZUVI_FUZZ_CHECK(whole.items().size() == pieces.items().size());
        for (qsizetype i = 0; i < whole.items().size(); ++i) {
            ZUVI_FUZZ_CHECK(whole.items()[i].text == pieces.items()[i].text);
            ZUVI_FUZZ_CHECK(whole.items()[i].danmakuID == pieces.items()[i].danmakuID);
        }
    }

    ZuviError error;
    const auto sorted = ZuviVideoContentParser::parseDanmakuItemsFromData(document, &error);
    if (sorted) {
        for (qsizetype i = 1; i < sorted->size(); ++i)
            ZUVI_FUZZ_CHECK(!((*sorted)[i].time < (*sorted)[i - 1].time));
        for (const ZuviDanmakuItem &item : *sorted) {
            ZUVI_FUZZ_CHECK(!item.text.isEmpty());
            ZUVI_FUZZ_CHECK(item.fontSize >= 13 && item.fontSize <= 20);
        }
    }
    return 0;
}
