#pragma once

#include <QDateTime>
#include <QMutex>
#include <QObject>
#include <QString>

#include <functional>

class ZuviDefaults;
class ZuviNotificationCenter;

// The process-wide text log that request failures, danmaku source steps and
// image failures are written to. The whole log is one text in user defaults
// ("ZuviDebugLogText"), trimmed to its last 200000 characters, and every
// change is announced on the main thread with
// "ZuviDebugLogDidChangeNotification". Appends may come from any thread.
class ZuviDebugLog : public QObject
{
    Q_OBJECT
public:
    static constexpr int kMaximumLength = 200000;
    static const char *const kStorageKey;
    static const char *const kDidChangeNotification;

    ZuviDebugLog(ZuviDefaults *defaults, ZuviNotificationCenter *center, QObject *parent = nullptr);

    static ZuviDebugLog *sharedLog();

    void appendText(const QString &text);
    void appendText(const QString &text, const QString &category);

    QString logText() const;
    // Lines of the stored text; a last line without a line break still counts.
    int lineCount() const;
    void clearLog();

    // The entry header's clock, replaceable so tests see fixed times.
    void setClock(std::function<QDateTime()> clock);

    // Trims a text that has grown past the limit, as appends do.
    static QString trimmedLogText(const QString &text);

private:
    void postDidChange();

    ZuviDefaults *m_defaults;
    ZuviNotificationCenter *m_center;
    mutable QMutex m_mutex;
    std::function<QDateTime()> m_clock;
};
