#pragma once

#include <QHash>
#include <QJsonArray>
#include <QString>

#include <optional>

// How one endpoint is told to misbehave.
struct ZuviDemoFailure {
    enum Mode { Slow, ServiceError, BrokenBody, HtmlError, Drop };
    Mode mode = ServiceError;
    int delayMs = 3000; // Slow
    int code = -500;    // ServiceError
    QString message;    // ServiceError; a default text when empty
    int remaining = -1; // requests still affected; -1 for all of them

    static QString modeName(Mode mode);
};

// The per-endpoint failure switches of the demo service, for tests and
// demonstrations. An endpoint is named by its path; a path ending in "*"
// names every path that begins with the rest, and "/{cid}.xml" names the
// older danmaku source whatever the cid.
class ZuviDemoFailureSwitches
{
public:
    // Parses "PATH=MODE[:ARG][@TIMES]", the form of the --fail option:
    // slow:MS, code:N[:MESSAGE], broken, html, drop; "off" clears the path.
    static bool parse(const QString &text, QString *path, std::optional<ZuviDemoFailure> *failure,
                      QString *errorText);
    // Parses MODE[:ARG] alone, as the admin endpoint receives it.
    static bool parseMode(const QString &text, std::optional<ZuviDemoFailure> *failure,
                          QString *errorText);

    void set(const QString &path, const ZuviDemoFailure &failure);
    void clear(const QString &path);
    void clearAll() { m_switches.clear(); }
    bool isEmpty() const { return m_switches.isEmpty(); }

    // The failure for a request path, counting it against a limited switch.
    std::optional<ZuviDemoFailure> take(const QString &requestPath);
    QJsonArray describe() const;

private:
    QString keyFor(const QString &requestPath) const;

    QHash<QString, ZuviDemoFailure> m_switches;
};
