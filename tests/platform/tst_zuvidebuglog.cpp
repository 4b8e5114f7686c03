#include "platform/zuvidebuglog.h"
#include "platform/zuvinotificationcenter.h"
#include "zuvitestsupport.h"

#include <QSet>
#include <QSignalSpy>
#include <QTest>
#include <QThread>

namespace {
const QDateTime kFixedTime(QDate(2026, 11, 22), QTime(9, 5, 7));
}

class TestZuviDebugLog : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void entryLayoutWithAndWithoutCategory();
    void emptyTextChangesNothingAndPostsNothing();
    void appendPastTheLimitTrimsToWholeLines();
    void trimmingKeepsTheTailWhenItsOnlyBreakIsLast();
    void clearPostsEvenWhenAlreadyEmpty();
    void lineCountCountsAnUnfinishedLastLine();
    void concurrentAppendsLoseNothing();

private:
    std::unique_ptr<ZuviScratchDefaults> m_store;
    std::unique_ptr<ZuviNotificationCenter> m_center;
    std::unique_ptr<ZuviDebugLog> m_log;
};

void TestZuviDebugLog::init()
{
    m_store = std::make_unique<ZuviScratchDefaults>();
    m_center = std::make_unique<ZuviNotificationCenter>();
    m_log = std::make_unique<ZuviDebugLog>(m_store->get(), m_center.get());
    m_log->setClock([] { return kFixedTime; });
}

void TestZuviDebugLog::cleanup()
{
    m_log.reset();
    m_center.reset();
    m_store.reset();
}

void TestZuviDebugLog::entryLayoutWithAndWithoutCategory()
{
    QSignalSpy spy(m_center.get(), &ZuviNotificationCenter::notificationPosted);
    m_log->appendText("第一行\n第二行", "请求错误");
    m_log->appendText("plain");
    QCOMPARE(m_log->logText(), QStringLiteral("[2026-11-22 09:05:07] [请求错误]\n第一行\n第二行\n"
                                              "[2026-11-22 09:05:07]\nplain\n"));
    // The text lives in the defaults store, so a new log over it sees it too.
    ZuviDebugLog reopened(m_store->get(), m_center.get());
    QCOMPARE(reopened.logText(), m_log->logText());
    QTRY_COMPARE(spy.count(), 2);
    QCOMPARE(spy.at(0).at(0).toString(), QStringLiteral("ZuviDebugLogDidChangeNotification"));
}

void TestZuviDebugLog::emptyTextChangesNothingAndPostsNothing()
{
    QSignalSpy spy(m_center.get(), &ZuviNotificationCenter::notificationPosted);
    m_log->appendText(QString(), "请求错误");
    QCoreApplication::processEvents();
    QCOMPARE(spy.count(), 0);
    QVERIFY(!m_store->get()->containsKey("ZuviDebugLogText"));
}

void TestZuviDebugLog::appendPastTheLimitTrimsToWholeLines()
{
    // Exactly at the limit: lines of 99 characters plus their breaks.
    QString full;
    for (int i = 0; full.size() < ZuviDebugLog::kMaximumLength; ++i)
        full += QString("%1").arg(i, 99, 10, QChar('x')) + '\n';
    full.truncate(ZuviDebugLog::kMaximumLength - 1);
    full += '\n';
    QCOMPARE(full.size(), ZuviDebugLog::kMaximumLength);
    m_store->get()->setString(full, "ZuviDebugLogText");

    m_log->appendText("tail entry", "分类");
    const QString text = m_log->logText();
    const QString marker = QStringLiteral("... 前面的调试日志已截断 ...\n");
    QVERIFY(text.startsWith(marker));
    QVERIFY(text.endsWith("[2026-11-22 09:05:07] [分类]\ntail entry\n"));
    // What follows the marker starts at a line boundary of the old text.
    const QString kept = text.mid(marker.size());
    QVERIFY(kept.size() <= ZuviDebugLog::kMaximumLength);
    const QString firstKeptLine = kept.left(kept.indexOf('\n'));
    QCOMPARE(firstKeptLine.size(), 99);
    QVERIFY(full.contains('\n' + firstKeptLine + '\n'));
}

void TestZuviDebugLog::trimmingKeepsTheTailWhenItsOnlyBreakIsLast()
{
    const QString longLine = QString(ZuviDebugLog::kMaximumLength + 10, QChar('a')) + '\n';
    const QString trimmed = ZuviDebugLog::trimmedLogText(longLine);
    QCOMPARE(trimmed, QStringLiteral("... 前面的调试日志已截断 ...\n") + longLine.right(200000));
    QCOMPARE(ZuviDebugLog::trimmedLogText("short\n"), QStringLiteral("short\n"));
}

void TestZuviDebugLog::clearPostsEvenWhenAlreadyEmpty()
{
    QSignalSpy spy(m_center.get(), &ZuviNotificationCenter::notificationPosted);
    m_log->clearLog();
    QTRY_COMPARE(spy.count(), 1);
    m_log->appendText("x");
    m_log->clearLog();
    QCOMPARE(m_log->logText(), QString());
    QTRY_COMPARE(spy.count(), 3);
}

void TestZuviDebugLog::lineCountCountsAnUnfinishedLastLine()
{
    QCOMPARE(m_log->lineCount(), 0);
    m_log->appendText("a\nb");
    QCOMPARE(m_log->lineCount(), 3);
    m_store->get()->setString("one\ntwo", "ZuviDebugLogText");
    QCOMPARE(m_log->lineCount(), 2);
}

void TestZuviDebugLog::concurrentAppendsLoseNothing()
{
    constexpr int kThreads = 4;
    constexpr int kPerThread = 50;
    QList<QThread *> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads << QThread::create([this, t] {
            for (int i = 0; i < kPerThread; ++i)
                m_log->appendText(QStringLiteral("thread=%1 entry=%2 end").arg(t).arg(i), "并发");
        });
    }
    for (QThread *thread : threads)
        thread->start();
    for (QThread *thread : threads) {
        QVERIFY(thread->wait(30000));
        delete thread;
    }
    const QStringList lines = m_log->logText().split('\n', Qt::SkipEmptyParts);
    QCOMPARE(lines.size(), kThreads * kPerThread * 2);
    QSet<QString> bodies;
    for (int i = 0; i < lines.size(); i += 2) {
        // Every entry is a whole header followed by its whole body line.
        QCOMPARE(lines[i], QStringLiteral("[2026-11-22 09:05:07] [并发]"));
        QVERIFY2(lines[i + 1].startsWith("thread=") && lines[i + 1].endsWith(" end"),
                 qPrintable(lines[i + 1]));
        bodies.insert(lines[i + 1]);
    }
    QCOMPARE(bodies.size(), kThreads * kPerThread);
}

QTEST_GUILESS_MAIN(TestZuviDebugLog)
#include "tst_zuvidebuglog.moc"
