// Account answers: the current user, relation counts, QR login (generate and
// poll), signed-in action messages and the favourite folders.
#include "net/zuviaccountparser.h"
#include "net/zuvivideolistparser.h"
#include "zuvifuzzcheck.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size)
{
    using Parser = ZuviAccountParser;
    const QByteArray body(reinterpret_cast<const char *>(bytes), qsizetype(size));
    ZuviError error;
    const auto profile = Parser::parseUserProfileFromData(body, &error);
    ZUVI_FUZZ_CHECK(bool(profile) == error.isNull());

    error = {};
    const auto relation = Parser::parseRelationStatFromData(body, &error);
    ZUVI_FUZZ_CHECK(bool(relation) == error.isNull());

    error = {};
    const auto qrcode = Parser::parseLoginQRCodeFromData(body, &error);
    if (qrcode)
        ZUVI_FUZZ_CHECK(!qrcode->loginURL.isEmpty() && !qrcode->qrcodeKey.isEmpty());

    error = {};
    const auto poll = Parser::parseLoginQRCodePollFromData(body, &error);
    if (poll)
        Parser::loginPollMessageForCode(poll->code, poll->message);

    error = {};
    const QString message = Parser::parseActionMessageFromData(body, &error);
    ZUVI_FUZZ_CHECK(message.isEmpty() != error.isNull());

    error = {};
    const qint64 mediaID = ZuviVideoListParser::parseFirstFavoriteMediaIDFromData(body, &error);
    ZUVI_FUZZ_CHECK(mediaID >= 0);
    return 0;
}
