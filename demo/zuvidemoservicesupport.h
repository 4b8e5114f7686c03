#pragma once

#include "zuvidemohttpserver.h"

#include <QDateTime>
#include <QLocale>
#include <QString>

// Codes and small helpers the demo service's endpoint families share: the
// envelope's error codes, the clock, HTTP dates, clamped query numbers and
// the plain HTML pages shown to the person running the service.
namespace ZuviDemoServiceSupport {
// Codes of the service's own envelope. Signed-out answers use -101; the
// others are this service's choice.
constexpr int kNotLoggedIn = -101;
constexpr int kCSRFFailed = -403;
constexpr int kDeviceUnknown = -412;
constexpr int kBadRequest = -400;
constexpr int kNotFound = -404;
constexpr int kWrongMethod = -405;

inline qint64 nowSeconds()
{
    return QDateTime::currentSecsSinceEpoch();
}

inline QByteArray httpDate(qint64 seconds)
{
    return QLocale::c()
               .toString(QDateTime::fromSecsSinceEpoch(seconds, Qt::UTC),
                         QStringLiteral("ddd, dd MMM yyyy hh:mm:ss"))
               .toLatin1() +
           " GMT";
}

inline qint64 parseHttpDate(const QByteArray &text)
{
    QString trimmed = QString::fromLatin1(text).trimmed();
    trimmed.chop(trimmed.endsWith(QLatin1String(" GMT")) ? 4 : 0);
    const QDateTime date =
        QLocale::c().toDateTime(trimmed, QStringLiteral("ddd, dd MMM yyyy hh:mm:ss"));
    if (!date.isValid())
        return -1;
    QDateTime utc = date;
    utc.setTimeSpec(Qt::UTC);
    return utc.toSecsSinceEpoch();
}

inline int clamped(const QString &text, int fallback, int low, int high)
{
    bool ok = false;
    const int value = text.toInt(&ok);
    return ok ? qBound(low, value, high) : fallback;
}

inline QString html(const QString &title, const QString &body)
{
    return QStringLiteral("<!DOCTYPE html><html lang=\"zh-CN\"><head><meta charset=\"utf-8\">"
                          "<meta name=\"viewport\" content=\"width=device-width\"><title>%1</title>"
                          "<style>body{font-family:sans-serif;max-width:34em;margin:3em auto;"
                          "padding:0 1em;color:#333}h1{color:#ee709c}button{font-size:1.2em;"
                          "padding:.5em 2em;background:#ee709c;color:#fff;border:0;"
                          "border-radius:6px}code{background:#f4f4f4;padding:0 .3em}</style>"
                          "</head><body><h1>%1</h1>%2</body></html>")
        .arg(title.toHtmlEscaped(), body);
}

inline ZuviDemoResponse htmlResponse(const QString &title, const QString &body, int status = 200)
{
    return ZuviDemoResponse::content(html(title, body).toUtf8(), "text/html; charset=utf-8",
                                     status);
}
} // namespace ZuviDemoServiceSupport
