// Remote configuration: the JSON document with its message, and the property
// lists the cache keeps its metadata in. A message read from a document, and a
// property list that reads, are written back and must read again.
#include "config/zuvipropertylist.h"
#include "config/zuviremoteconfig.h"
#include "config/zuviremoteconfigmessage.h"
#include "zuvifuzzcheck.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size)
{
    const QByteArray data(reinterpret_cast<const char *>(bytes), qsizetype(size));
    ZuviError error;
    const auto document = ZuviRemoteConfig::parseConfigFromData(data, &error);
    ZUVI_FUZZ_CHECK(bool(document) == error.isNull());
    if (document) {
        const auto message = ZuviRemoteConfigMessage::messageWithDictionary(
            document->value(QStringLiteral("message")));
        if (message) {
            ZUVI_FUZZ_CHECK(message->version >= 1);
            // The message is remembered in the defaults as a dictionary and
            // must read back the same.
            const auto reread =
                ZuviRemoteConfigMessage::messageWithDictionary(message->dictionaryRepresentation());
            ZUVI_FUZZ_CHECK(reread && *reread == *message);
        }
    }

    const auto dictionary = ZuviPropertyList::dictionaryFromXmlData(data);
    if (dictionary) {
        const QByteArray written = ZuviPropertyList::xmlDataFromDictionary(*dictionary);
        ZUVI_FUZZ_CHECK(ZuviPropertyList::dictionaryFromXmlData(written).has_value());
    }
    return 0;
}
