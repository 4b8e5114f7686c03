#include "zuviaccountparser.h"

#include "model/zuvijsoncoercion.h"
#include "zuviapiclient.h"

QString ZuviAccountParser::parseActionMessageFromData(const QByteArray &data, ZuviError *error)
{
    const auto root = ZuviAPIClient::jsonRootDictionaryFromData(data, error);
    if (!root)
        return QString();
    QString message = ZuviJSONCoercion::stringFromObject(root->value("message"));
    if (message.isEmpty())
        message = ZuviJSONCoercion::stringFromObject(root->value("msg"));
    const qint64 code = ZuviJSONCoercion::integerFromObject(root->value("code"));
    if (code == 0)
        return message.isEmpty() ? QStringLiteral("操作成功") : message;
    *error = ZuviAPIClient::errorWithCode(
        int(code), message.isEmpty() ? QStringLiteral("接口返回错误") : message);
    return QString();
}

std::optional<ZuviAccountParser::LoginQRCode>
ZuviAccountParser::parseLoginQRCodeFromData(const QByteArray &data, ZuviError *error)
{
    const auto root = ZuviAPIClient::serviceRootDictionaryFromData(
        data, QStringLiteral("二维码生成接口返回错误"), error);
    if (!root)
        return std::nullopt;
    const QJsonObject dataObject = root->value("data").toObject();
    LoginQRCode result{ZuviJSONCoercion::stringFromObject(dataObject.value("url")),
                       ZuviJSONCoercion::stringFromObject(dataObject.value("qrcode_key"))};
    if (result.loginURL.isEmpty() || result.qrcodeKey.isEmpty()) {
        *error = ZuviAPIClient::errorWithCode(
            711, QStringLiteral("二维码生成接口缺少 url 或 qrcode_key"));
        return std::nullopt;
    }
    return result;
}

std::optional<ZuviAccountParser::LoginPoll>
ZuviAccountParser::parseLoginQRCodePollFromData(const QByteArray &data, ZuviError *error)
{
    const auto root = ZuviAPIClient::jsonRootDictionaryFromData(data, error);
    if (!root)
        return std::nullopt;
    // The poll's state is inside "data"; the outer code says nothing about it.
    if (!root->value("data").isObject()) {
        *error = ZuviAPIClient::errorWithCode(712, QStringLiteral("二维码轮询接口缺少 data 字段"));
        return std::nullopt;
    }
    const QJsonObject dataObject = root->value("data").toObject();
    LoginPoll poll;
    poll.code = int(ZuviJSONCoercion::integerFromObject(dataObject.value("code")));
    poll.message = loginPollMessageForCode(
        poll.code, ZuviJSONCoercion::stringFromObject(dataObject.value("message")));
    return poll;
}

QString ZuviAccountParser::loginPollMessageForCode(int code, const QString &fallback)
{
    switch (code) {
    case 0:
        return QStringLiteral("登录成功");
    case 86038:
        return QStringLiteral("二维码已过期");
    case 86090:
        return QStringLiteral("已扫码，请在手机上确认");
    case 86101:
        return QStringLiteral("等待扫码");
    default:
        return fallback.isEmpty() ? QStringLiteral("登录状态 %1").arg(code) : fallback;
    }
}

std::optional<ZuviUserProfile> ZuviAccountParser::parseUserProfileFromData(const QByteArray &data,
                                                                           ZuviError *error)
{
    const auto root = ZuviAPIClient::jsonRootDictionaryFromData(data, error);
    if (!root)
        return std::nullopt;
    // A logged-out answer carries a non-zero code and still a valid profile.
    if (std::optional<ZuviUserProfile> profile =
            ZuviUserProfile::profileWithNavDataDictionary(root->value("data")))
        return profile;
    const ZuviError serviceError = ZuviAPIClient::serviceErrorFromRootDictionary(
        *root, QStringLiteral("登录状态接口返回错误"));
    *error = serviceError.hasError()
                 ? serviceError
                 : ZuviAPIClient::errorWithCode(701, QStringLiteral("登录状态接口缺少用户字段"));
    return std::nullopt;
}

std::optional<QJsonObject> ZuviAccountParser::parseRelationStatFromData(const QByteArray &data,
                                                                        ZuviError *error)
{
    const auto root = ZuviAPIClient::serviceRootDictionaryFromData(
        data, QStringLiteral("关系统计接口返回错误"), error);
    if (!root)
        return std::nullopt;
    if (!root->value("data").isObject()) {
        *error = ZuviAPIClient::errorWithCode(702, QStringLiteral("关系统计接口缺少 data 字段"));
        return std::nullopt;
    }
    return root->value("data").toObject();
}
