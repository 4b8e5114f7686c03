#pragma once

#include "zuvierror.h"

#include <QString>
#include <QUrl>

// Where the service lives. Every host role is a deployment value: compiled-in
// defaults (the embedded demo service on loopback) that a JSON file given
// with --endpoints (or OLDZUVI_ENDPOINTS) overrides key by key.
struct ZuviEndpoints {
    // Base URLs, scheme and host (and port), no path: "http://127.0.0.1:8470".
    QUrl api;
    QUrl web;
    QUrl passport;
    QUrl comment;
    QUrl search;
    QUrl space;
    QUrl dynamic;
    // Addresses on hosts ending in this suffix are video CDN addresses.
    QString videoCDNDomainSuffix;
    QString remoteConfigSource;
    QString remoteConfigDeveloperSource;

    static constexpr int kDemoPort = 8470;

    // The compiled-in defaults: every role on the demo service.
    static ZuviEndpoints defaults();
    // Every role on one loopback base, as the demo service and the tests use.
    static ZuviEndpoints allOn(const QUrl &base);

    // Reads a file over the given base values. A missing key keeps the base
    // value; an unreadable file, bad JSON, an unknown key or a malformed URL
    // fails with a message naming the file and the key.
    static bool loadFile(const QString &path, ZuviEndpoints *endpoints, ZuviError *error);
    static bool loadJson(const QByteArray &json, const QString &sourceName,
                         ZuviEndpoints *endpoints, ZuviError *error);

    // The process-wide values, set once at start-up.
    static const ZuviEndpoints &shared();
    static void setShared(const ZuviEndpoints &endpoints);

    // "scheme://host[:port]" of a base URL, without a trailing slash.
    static QString origin(const QUrl &base);
    // The web host's root page, used as the standard Referer.
    QString siteRoot() const { return origin(web) + "/"; }

    QByteArray toJson() const;
};
