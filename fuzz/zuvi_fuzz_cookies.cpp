// Cookies: a Cookie header to a dictionary and back, and the credential taken
// from a response's Set-Cookie headers. The first byte splits the input
// between the stored cookie and the response header.
#include "net/zuviapiclient.h"
#include "zuvifuzzcheck.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size)
{
    if (size < 1)
        return 0;
    const size_t split = 1 + (size_t(bytes[0]) * (size - 1)) / 255;
    const QByteArray stored(reinterpret_cast<const char *>(bytes + 1), qsizetype(split - 1));
    const QByteArray setCookie(reinterpret_cast<const char *>(bytes + split),
                               qsizetype(size - split));

    // Written once, a dictionary reads back the same.
    const ZuviCookieDictionary dictionary =
        ZuviAPIClient::mutableCookieDictionaryFromString(QString::fromUtf8(stored));
    const QString written = ZuviAPIClient::cookieStringFromDictionary(dictionary);
    const ZuviCookieDictionary reread = ZuviAPIClient::mutableCookieDictionaryFromString(written);
    ZUVI_FUZZ_CHECK(ZuviAPIClient::cookieStringFromDictionary(reread) == written);

    ZuviHTTPResponse response;
    response.isHTTP = true;
    response.statusCode = 200;
    response.url = QUrl(QStringLiteral("http://127.0.0.1/x/passport-login/web/qrcode/poll"));
    response.headers.append({"Set-Cookie", setCookie});
    const auto credential = ZuviAPIClient::credentialCookieFromHTTPResponse(response);
    if (credential)
        ZuviAPIClient::mutableCookieDictionaryFromString(*credential);
    return 0;
}
