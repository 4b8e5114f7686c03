// Building requests as the service expects them (the API and browser
// header sets, form posts), form and URL escaping, and reading the service's
// JSON envelope and its errors.
#include "zuviapiclient.h"

#include "model/zuvijsoncoercion.h"

#include <QJsonDocument>

namespace {
const char *const kAcceptLanguage = "zh-CN,zh;q=0.9,en;q=0.8";
} // namespace

// --- Request builders

ZuviURLRequest ZuviAPIClient::requestWithURLString(const QString &urlString,
                                                   const QString &referer) const
{
    ZuviURLRequest request;
    request.url = QUrl(urlString);
    request.timeoutMs = m_timeoutMs;
    request.setHeader("User-Agent", kAPIUserAgent);
    request.setHeader("Referer", referer.toUtf8());
    request.setHeader("Accept", "application/json,text/plain,*/*");
    request.setHeader("Accept-Language", kAcceptLanguage);
    const QString cookie = credentialCookie();
    if (!cookie.isEmpty())
        request.setHeader("Cookie", cookie.toUtf8());
    return request;
}

ZuviURLRequest ZuviAPIClient::browserRequestWithURLString(const QString &urlString,
                                                          const QString &referer,
                                                          const QString &cookie) const
{
    ZuviURLRequest request;
    request.url = QUrl(urlString);
    request.timeoutMs = m_timeoutMs;
    request.setHeader("User-Agent", kBrowserUserAgent);
    request.setHeader("Referer", referer.toUtf8());
    request.setHeader("Accept", "*/*");
    request.setHeader("Accept-Language", kAcceptLanguage);
    request.setHeader("Origin", originOf(m_endpoints.web).toUtf8());
    if (!cookie.isEmpty())
        request.setHeader("Cookie", cookie.toUtf8());
    return request;
}

ZuviURLRequest ZuviAPIClient::POSTRequestWithURLString(const QString &urlString,
                                                       const QString &referer,
                                                       const QVariantMap &parameters,
                                                       const QString &cookie) const
{
    ZuviURLRequest request = browserRequestWithURLString(urlString, referer, cookie);
    request.method = "POST";
    request.body = formBodyStringWithParameters(parameters).toUtf8();
    request.setHeader("Content-Type", "application/x-www-form-urlencoded; charset=UTF-8");
    request.setHeader("Content-Length", QByteArray::number(request.body.size()));
    return request;
}

QString ZuviAPIClient::videoRefererForBVID(const QString &bvid) const
{
    const QString escaped = urlEscapedString(bvid);
    if (escaped.isEmpty())
        return siteRoot();
    return originOf(m_endpoints.web) + "/video/" + escaped + "/";
}

// --- Form and URL encoding

QString ZuviAPIClient::formBodyStringWithParameters(const QVariantMap &parameters)
{
    // QVariantMap keeps its keys in plain code-unit order: upper case before
    // lower case, "aid" before "csrf" before "message".
    QStringList pairs;
    for (auto it = parameters.constBegin(); it != parameters.constEnd(); ++it) {
        const QString value = stringFromObject(QJsonValue::fromVariant(it.value()));
        pairs.append(formEscapedString(it.key()) + "=" + formEscapedString(value));
    }
    return pairs.join("&");
}

QString ZuviAPIClient::formEscapedString(const QString &text)
{
    if (text.isEmpty())
        return QString();
    // Only the unreserved characters (letters, digits, "-._~") stay as they are.
    return QString::fromLatin1(QUrl::toPercentEncoding(text));
}

QString ZuviAPIClient::urlEscapedString(const QString &text)
{
    if (text.isEmpty())
        return QString();
    // Reserved characters are legal in a URL and stay untouched; a lone "%"
    // is escaped so that the text reads back as it was written.
    return QString::fromLatin1(QUrl::toPercentEncoding(text, "!#$&'()*+,/:;=?@[]"));
}

// --- JSON, errors and small texts

std::optional<QJsonObject> ZuviAPIClient::jsonRootDictionaryFromData(const QByteArray &data,
                                                                     ZuviError *error)
{
    if (data.isEmpty()) {
        *error = errorWithCode(100, QStringLiteral("接口没有返回数据"));
        return std::nullopt;
    }
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(data, &parseError);
    if (parseError.error != QJsonParseError::NoError) {
        *error = ZuviError(QStringLiteral("ZuviJSONErrorDomain"), parseError.error,
                           QStringLiteral("接口返回的数据不是有效的 JSON：%1（第 %2 字节）")
                               .arg(parseError.errorString())
                               .arg(parseError.offset));
        return std::nullopt;
    }
    if (!document.isObject()) {
        if (error->isNull())
            *error = errorWithCode(102, QStringLiteral("接口返回格式不是 JSON 对象"));
        return std::nullopt;
    }
    return document.object();
}

ZuviError ZuviAPIClient::errorWithCode(int code, const QString &message)
{
    return ZuviError(kErrorDomain, code, message);
}

int ZuviAPIClient::statusCodeFromResponse(const ZuviHTTPResponse &response)
{
    return response.isHTTP ? response.statusCode : 0;
}

QString ZuviAPIClient::shortErrorText(const ZuviError &error)
{
    const QString text = error.localizedDescription();
    if (text.isEmpty())
        return QStringLiteral("未知错误");
    if (text.size() >= 43)
        return text.left(42) + "...";
    return text;
}

QString ZuviAPIClient::stringFromObject(const QJsonValue &value)
{
    return ZuviJSONCoercion::stringFromObject(value);
}

QString ZuviAPIClient::compactCountStringFromObject(const QJsonValue &value)
{
    return ZuviJSONCoercion::compactCountStringFromObject(value);
}

qint64 ZuviAPIClient::integerFromObject(const QJsonValue &value)
{
    return ZuviJSONCoercion::integerFromObject(value);
}

bool ZuviAPIClient::boolFromObject(const QJsonValue &value)
{
    return ZuviJSONCoercion::boolFromObject(value);
}

ZuviError ZuviAPIClient::serviceErrorFromRootDictionary(const QJsonObject &root,
                                                        const QString &fallbackMessage)
{
    const qint64 code = integerFromObject(root.value("code"));
    if (code == 0)
        return ZuviError();
    const QString message = stringFromObject(root.value("message"));
    return errorWithCode(int(code), message.isEmpty() ? fallbackMessage : message);
}

std::optional<QJsonObject>
ZuviAPIClient::serviceRootDictionaryFromData(const QByteArray &data, const QString &fallbackMessage,
                                             ZuviError *error)
{
    std::optional<QJsonObject> root = jsonRootDictionaryFromData(data, error);
    if (!root)
        return std::nullopt;
    const ZuviError serviceError = serviceErrorFromRootDictionary(*root, fallbackMessage);
    if (serviceError.hasError()) {
        *error = serviceError;
        return std::nullopt;
    }
    return root;
}
