#include "zuviendpoints.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMutex>

namespace {
const char *const kErrorDomain = "ZuviEndpointsErrorDomain";

struct UrlRole {
    const char *key;
    QUrl ZuviEndpoints::*member;
};

const UrlRole kUrlRoles[] = {
    {"api", &ZuviEndpoints::api},           {"web", &ZuviEndpoints::web},
    {"passport", &ZuviEndpoints::passport}, {"comment", &ZuviEndpoints::comment},
    {"search", &ZuviEndpoints::search},     {"space", &ZuviEndpoints::space},
    {"dynamic", &ZuviEndpoints::dynamic},
};

QMutex sharedMutex;
ZuviEndpoints &sharedStorage()
{
    static ZuviEndpoints endpoints = ZuviEndpoints::defaults();
    return endpoints;
}

ZuviError endpointsError(int code, const QString &message)
{
    return ZuviError(kErrorDomain, code, message);
}

// A base URL must be absolute http(s) with a host and nothing after the port.
bool parseBaseUrl(const QString &text, QUrl *url, QString *problem)
{
    const QUrl parsed(text.trimmed(), QUrl::StrictMode);
    if (!parsed.isValid() || parsed.host().isEmpty()) {
        *problem = QStringLiteral("不是有效的网址");
        return false;
    }
    if (parsed.scheme() != "http" && parsed.scheme() != "https") {
        *problem = QStringLiteral("只支持 http 或 https");
        return false;
    }
    if (!parsed.path().isEmpty() && parsed.path() != "/") {
        *problem = QStringLiteral("只能写协议、主机和端口，不能带路径");
        return false;
    }
    *url = parsed.adjusted(QUrl::RemovePath);
    return true;
}

bool parseSourceUrl(const QString &text, QString *value, QString *problem)
{
    const QString trimmed = text.trimmed();
    const QUrl parsed(trimmed, QUrl::StrictMode);
    if (!trimmed.isEmpty() && (!parsed.isValid() || parsed.host().isEmpty() ||
                               (parsed.scheme() != "http" && parsed.scheme() != "https"))) {
        *problem = QStringLiteral("不是有效的 http(s) 网址");
        return false;
    }
    *value = trimmed;
    return true;
}
} // namespace

ZuviEndpoints ZuviEndpoints::defaults()
{
    return allOn(QUrl(QStringLiteral("http://127.0.0.1:%1").arg(kDemoPort)));
}

ZuviEndpoints ZuviEndpoints::allOn(const QUrl &base)
{
    ZuviEndpoints endpoints;
    for (const UrlRole &role : kUrlRoles)
        endpoints.*(role.member) = base;
    endpoints.videoCDNDomainSuffix = base.host();
    endpoints.remoteConfigSource = origin(base) + "/config/remote_config.json";
    endpoints.remoteConfigDeveloperSource = origin(base) + "/config/remote_config_dev.json";
    return endpoints;
}

bool ZuviEndpoints::loadFile(const QString &path, ZuviEndpoints *endpoints, ZuviError *error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = endpointsError(
            1, QStringLiteral("无法读取端点文件 %1：%2").arg(path, file.errorString()));
        return false;
    }
    return loadJson(file.readAll(), path, endpoints, error);
}

bool ZuviEndpoints::loadJson(const QByteArray &json, const QString &sourceName,
                             ZuviEndpoints *endpoints, ZuviError *error)
{
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(json, &parseError);
    if (parseError.error != QJsonParseError::NoError || !document.isObject()) {
        const QString reason = parseError.error != QJsonParseError::NoError
                                   ? parseError.errorString()
                                   : QStringLiteral("顶层不是 JSON 对象");
        *error =
            endpointsError(2, QStringLiteral("端点文件 %1 格式错误：%2").arg(sourceName, reason));
        return false;
    }
    // Work on a copy so that a failure leaves the caller's values untouched.
    ZuviEndpoints result = *endpoints;
    const QJsonObject object = document.object();
    for (auto it = object.constBegin(); it != object.constEnd(); ++it) {
        const QString key = it.key();
        QString problem;
        bool known = false;
        if (!it.value().isString()) {
            problem = QStringLiteral("必须是字符串");
        } else {
            const QString text = it.value().toString();
            for (const UrlRole &role : kUrlRoles) {
                if (key == role.key) {
                    known = true;
                    parseBaseUrl(text, &(result.*(role.member)), &problem);
                }
            }
            if (key == "videoCDNDomainSuffix") {
                known = true;
                result.videoCDNDomainSuffix = text.trimmed();
            } else if (key == "remoteConfigSource") {
                known = true;
                parseSourceUrl(text, &result.remoteConfigSource, &problem);
            } else if (key == "remoteConfigDeveloperSource") {
                known = true;
                parseSourceUrl(text, &result.remoteConfigDeveloperSource, &problem);
            }
            if (!known)
                problem = QStringLiteral("不是已知的键");
        }
        if (!problem.isEmpty()) {
            *error = endpointsError(
                3, QStringLiteral("端点文件 %1 中的 \"%2\" %3").arg(sourceName, key, problem));
            return false;
        }
    }
    *endpoints = result;
    return true;
}

const ZuviEndpoints &ZuviEndpoints::shared()
{
    QMutexLocker lock(&sharedMutex);
    return sharedStorage();
}

void ZuviEndpoints::setShared(const ZuviEndpoints &endpoints)
{
    QMutexLocker lock(&sharedMutex);
    sharedStorage() = endpoints;
}

QString ZuviEndpoints::origin(const QUrl &base)
{
    return base
        .adjusted(QUrl::RemovePath | QUrl::RemoveQuery | QUrl::RemoveFragment |
                  QUrl::RemoveUserInfo)
        .toString(QUrl::StripTrailingSlash);
}

QByteArray ZuviEndpoints::toJson() const
{
    QJsonObject object;
    for (const UrlRole &role : kUrlRoles)
        object.insert(role.key, origin(this->*(role.member)));
    object.insert("videoCDNDomainSuffix", videoCDNDomainSuffix);
    object.insert("remoteConfigSource", remoteConfigSource);
    object.insert("remoteConfigDeveloperSource", remoteConfigDeveloperSource);
    return QJsonDocument(object).toJson(QJsonDocument::Indented);
}
