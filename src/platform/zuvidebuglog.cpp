#include "zuvidebuglog.h"

#include "platform/zuvidefaults.h"
#include "platform/zuvinotificationcenter.h"

#include <QDateTime>

const char *const ZuviDebugLog::kStorageKey = "ZuviDebugLogText";
const char *const ZuviDebugLog::kDidChangeNotification = "ZuviDebugLogDidChangeNotification";

ZuviDebugLog::ZuviDebugLog(ZuviDefaults *defaults, ZuviNotificationCenter *center, QObject *parent)
    : QObject(parent), m_defaults(defaults), m_center(center),
      m_clock([] { return QDateTime::currentDateTime(); })
{
}

ZuviDebugLog *ZuviDebugLog::sharedLog()
{
    static ZuviDebugLog *log =
        new ZuviDebugLog(ZuviDefaults::standardDefaults(), ZuviNotificationCenter::defaultCenter());
    return log;
}

void ZuviDebugLog::setClock(std::function<QDateTime()> clock)
{
    QMutexLocker lock(&m_mutex);
    m_clock = std::move(clock);
}

void ZuviDebugLog::appendText(const QString &text)
{
    appendText(text, QString());
}

void ZuviDebugLog::appendText(const QString &text, const QString &category)
{
    if (text.isEmpty())
        return;
    {
        QMutexLocker lock(&m_mutex);
        const QString time = m_clock().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
        const QString header = category.isEmpty()
                                   ? QStringLiteral("[%1]\n").arg(time)
                                   : QStringLiteral("[%1] [%2]\n").arg(time, category);
        QString stored = m_defaults->stringForKey(kStorageKey);
        if (!stored.isEmpty() && !stored.endsWith('\n'))
            stored += '\n';
        stored += header + text + '\n';
        m_defaults->setString(trimmedLogText(stored), kStorageKey);
        m_defaults->synchronize();
    }
    postDidChange();
}

QString ZuviDebugLog::trimmedLogText(const QString &text)
{
    if (text.size() <= kMaximumLength)
        return text;
    QString tail = text.right(kMaximumLength);
    // Drop the partial first line, unless the only line break is the last character.
    const int firstBreak = tail.indexOf('\n');
    if (firstBreak >= 0 && firstBreak < tail.size() - 1)
        tail = tail.mid(firstBreak + 1);
    return QStringLiteral("... 前面的调试日志已截断 ...\n") + tail;
}

QString ZuviDebugLog::logText() const
{
    return m_defaults->stringForKey(kStorageKey);
}

int ZuviDebugLog::lineCount() const
{
    const QString text = logText();
    if (text.isEmpty())
        return 0;
    const int breaks = text.count('\n');
    return text.endsWith('\n') ? breaks : breaks + 1;
}

void ZuviDebugLog::clearLog()
{
    {
        QMutexLocker lock(&m_mutex);
        m_defaults->removeObjectForKey(kStorageKey);
        m_defaults->synchronize();
    }
    postDidChange();
}

void ZuviDebugLog::postDidChange()
{
    m_center->postOnMainQueue(kDidChangeNotification, this);
}
