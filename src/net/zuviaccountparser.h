#pragma once

#include "model/zuviuserprofile.h"
#include "platform/zuvierror.h"

#include <QByteArray>
#include <QJsonObject>

#include <optional>

// The parsers of the account endpoints: signed-in action answers, QR login
// (generate and poll), the current user and the relation counts. Kept apart
// from the client so that the client's file holds requests and delivery.
class ZuviAccountParser
{
public:
    // The service's message on success ("操作成功" when it gives none);
    // an empty text and an error with the service's code on failure.
    static QString parseActionMessageFromData(const QByteArray &data, ZuviError *error);

    struct LoginQRCode {
        QString loginURL;
        QString qrcodeKey;
    };
    static std::optional<LoginQRCode> parseLoginQRCodeFromData(const QByteArray &data,
                                                               ZuviError *error);

    struct LoginPoll {
        int code = 0;
        QString message;
    };
    static std::optional<LoginPoll> parseLoginQRCodePollFromData(const QByteArray &data,
                                                                 ZuviError *error);
    static QString loginPollMessageForCode(int code, const QString &fallback);

    static std::optional<ZuviUserProfile> parseUserProfileFromData(const QByteArray &data,
                                                                   ZuviError *error);
    static std::optional<QJsonObject> parseRelationStatFromData(const QByteArray &data,
                                                                ZuviError *error);
};
