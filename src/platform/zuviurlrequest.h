#pragma once

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QUrl>

using ZuviHeaderPairs = QList<QPair<QByteArray, QByteArray>>;

// A request as the client builds it: method, URL, headers in the order they
// were set, body and timeout. The transport sends exactly these headers.
struct ZuviURLRequest {
    QByteArray method = "GET";
    QUrl url;
    ZuviHeaderPairs headers;
    QByteArray body;
    int timeoutMs = 20000;
    // Pictures may be answered from the transport's URL cache (whatever the
    // age of the stored answer) and are stored there; everything else always
    // goes to the network and is never stored.
    bool allowsCache = false;

    // Replaces the value of an existing header in place, or appends it.
    void setHeader(const QByteArray &name, const QByteArray &value);
    QByteArray header(const QByteArray &name) const;
    bool hasHeader(const QByteArray &name) const;
};

// What came back: the status and headers of an HTTP answer and its body.
struct ZuviHTTPResponse {
    bool isHTTP = false; // false when no HTTP answer was received at all
    int statusCode = 0;
    QUrl url;
    ZuviHeaderPairs headers; // repeated headers such as Set-Cookie are joined by "\n"
    QByteArray body;

    QByteArray header(const QByteArray &name) const;
};
