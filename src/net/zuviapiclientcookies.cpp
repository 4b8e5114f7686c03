// Cookies: the cookie-header dictionary, the credential cookie kept in the
// defaults store, the session taken from a login answer's Set-Cookie
// headers, and the device identity that signed-in actions need.
#include "zuviapiclient.h"

#include "platform/zuvidefaults.h"

#include <QDateTime>
#include <QNetworkCookie>
#include <QSet>

namespace {

// The login cookies first, then the device identity cookies, whatever else was merged in.
const char *const kCookieHeadOrder[] = {
    "DedeUserID", "DedeUserID__ckMd5", "SESSDATA", "zuvi_jct", "buvid3",
    "buvid4",     "buvid_fp",          "b_nut"};
const char *const kLoginCookieNames[] = {"DedeUserID", "DedeUserID__ckMd5", "SESSDATA", "zuvi_jct"};

} // namespace

// --- Cookies and the stored credential

ZuviCookieDictionary ZuviAPIClient::mutableCookieDictionaryFromString(const QString &cookie)
{
    ZuviCookieDictionary dictionary;
    const QStringList pieces = cookie.split(';');
    for (const QString &rawPiece : pieces) {
        const QString piece = rawPiece.trimmed();
        const int equals = piece.indexOf('=');
        if (equals <= 0)
            continue;
        const QString name = piece.left(equals);
        const QString value = piece.mid(equals + 1);
        if (name.isEmpty() || value.isEmpty())
            continue;
        dictionary.insert(name, value);
    }
    return dictionary;
}

QString ZuviAPIClient::cookieStringFromDictionary(const ZuviCookieDictionary &dictionary)
{
    QStringList pairs;
    QSet<QString> written;
    for (const char *name : kCookieHeadOrder) {
        const QString value = dictionary.value(name);
        if (!value.isEmpty()) {
            pairs.append(QString::fromLatin1(name) + "=" + value);
            written.insert(name);
        }
    }
    for (auto it = dictionary.constBegin(); it != dictionary.constEnd(); ++it) {
        if (!written.contains(it.key()) && !it.value().isEmpty())
            pairs.append(it.key() + "=" + it.value());
    }
    return pairs.join("; ");
}

QString ZuviAPIClient::credentialCookie() const
{
    return m_defaults->stringForKey(kCredentialCookieKey);
}

void ZuviAPIClient::updateCredentialCookie(const QString &cookie)
{
    const QString trimmed = cookie.trimmed();
    if (trimmed.isEmpty())
        m_defaults->removeObjectForKey(kCredentialCookieKey);
    else
        m_defaults->setString(trimmed, kCredentialCookieKey);
    m_defaults->synchronize();
}

void ZuviAPIClient::clearCredentialCookie()
{
    m_defaults->removeObjectForKey(kCredentialCookieKey);
    m_defaults->synchronize();
}

QString ZuviAPIClient::cookieValueForName(const QString &name) const
{
    return mutableCookieDictionaryFromString(credentialCookie()).value(name);
}

QString ZuviAPIClient::csrfTokenFromCredentialCookie() const
{
    return cookieValueForName("zuvi_jct");
}

qint64 ZuviAPIClient::currentMIDFromCredentialCookie() const
{
    bool ok = false;
    const qint64 mid = cookieValueForName("DedeUserID").toLongLong(&ok);
    return ok ? mid : 0;
}

std::optional<QString>
ZuviAPIClient::credentialCookieFromHTTPResponse(const ZuviHTTPResponse &response)
{
    if (!response.isHTTP)
        return std::nullopt;
    QList<QNetworkCookie> cookies;
    for (const auto &header : response.headers) {
        if (header.first.compare("Set-Cookie", Qt::CaseInsensitive) == 0)
            cookies += QNetworkCookie::parseCookies(header.second);
    }
    if (cookies.isEmpty())
        return std::nullopt;
    ZuviCookieDictionary kept;
    for (const QNetworkCookie &cookie : cookies) {
        const QString name = QString::fromUtf8(cookie.name());
        const QString value = QString::fromUtf8(cookie.value());
        for (const char *loginName : kLoginCookieNames) {
            if (name == QLatin1String(loginName) && !value.isEmpty())
                kept.insert(name, value);
        }
    }
    QStringList pairs;
    for (const char *loginName : kLoginCookieNames) {
        if (kept.contains(loginName))
            pairs.append(QString::fromLatin1(loginName) + "=" + kept.value(loginName));
    }
    return pairs.join("; ");
}

// --- Device identity

bool ZuviAPIClient::cookieHasDeviceIdentity(const QString &cookie)
{
    const ZuviCookieDictionary dictionary = mutableCookieDictionaryFromString(cookie);
    return !dictionary.value("buvid3").isEmpty() && !dictionary.value("buvid4").isEmpty() &&
           !dictionary.value("buvid_fp").isEmpty();
}

void ZuviAPIClient::ensureDeviceCookieWithCompletion(CookieCompletion completion)
{
    const QString cookie = credentialCookie();
    if (cookieHasDeviceIdentity(cookie)) {
        completion(cookie, ZuviError());
        return;
    }
    send(browserRequestWithURLString(apiURL(QStringLiteral("/x/frontend/finger/spi")), siteRoot(),
                                     cookie),
         [this, cookie, completion](const ZuviHTTPResponse &response, const ZuviError &error) {
             if (error.hasError()) {
                 completion(QString(), error);
                 return;
             }
             ZuviError saveError;
             const QString saved = saveDeviceCookieFromData(response.body, cookie, &saveError);
             completion(saved, saveError);
         });
}

QString ZuviAPIClient::saveDeviceCookieFromData(const QByteArray &data, const QString &baseCookie,
                                                ZuviError *error)
{
    const auto root = jsonRootDictionaryFromData(data, error);
    if (!root)
        return QString();
    const qint64 code = integerFromObject(root->value("code"));
    if (code != 0) {
        QString message = stringFromObject(root->value("message"));
        if (message.isEmpty())
            message = stringFromObject(root->value("msg"));
        *error = errorWithCode(int(code),
                               message.isEmpty() ? QStringLiteral("补设备 Cookie 失败") : message);
        return QString();
    }
    if (!root->value("data").isObject()) {
        *error =
            errorWithCode(750, QStringLiteral("补设备 Cookie 失败：finger/spi 缺少 data 字段"));
        return QString();
    }
    const QJsonObject answer = root->value("data").toObject();
    QString b3 = stringFromObject(answer.value("b_3"));
    if (b3.isEmpty())
        b3 = stringFromObject(answer.value("buvid3"));
    QString b4 = stringFromObject(answer.value("b_4"));
    if (b4.isEmpty())
        b4 = stringFromObject(answer.value("buvid4"));
    if (b3.isEmpty() && b4.isEmpty()) {
        *error = errorWithCode(
            751, QStringLiteral("补设备 Cookie 失败：finger/spi 没有返回 buvid3/buvid4"));
        return QString();
    }
    // Merged into the cookie this step started from; with only one of the
    // two ids the identity stays incomplete and the next action asks again.
    ZuviCookieDictionary dictionary = mutableCookieDictionaryFromString(baseCookie);
    if (!b3.isEmpty()) {
        dictionary.insert("buvid3", b3);
        dictionary.insert("buvid_fp", b3);
    }
    if (!b4.isEmpty())
        dictionary.insert("buvid4", b4);
    dictionary.insert("b_nut", QString::number(QDateTime::currentSecsSinceEpoch()));
    const QString cookie = cookieStringFromDictionary(dictionary);
    updateCredentialCookie(cookie);
    return cookie;
}
