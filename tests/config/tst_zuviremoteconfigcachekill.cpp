#include "config/zuvipropertylist.h"
#include "config/zuviremoteconfig.h"
#include "platform/zuvidefaults.h"
#include "platform/zuvinotificationcenter.h"
#include "platform/zuvivirtualscheduler.h"

#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

QByteArray cacheWriterDocument(char fill)
{
    return "{\"message\":{\"version\":1,\"text\":\"t\"},\"pad\":\"" +
           QByteArray(4 * 1024 * 1024, fill) + "\"}";
}

// A process killed while it rewrites the cache leaves either the old
// document or the new one on disk, never a part of one.
class TestZuviRemoteConfigCacheKill : public QObject
{
    Q_OBJECT
private slots:
    void killedWriterLeavesWholeDocuments();
};

void TestZuviRemoteConfigCacheKill::killedWriterLeavesWholeDocuments()
{
    QTemporaryDir dir;
    const QByteArray documentA = cacheWriterDocument('a');
    const QByteArray documentB = cacheWriterDocument('b');
    const QString dataPath = dir.filePath("cache/remote_config.json");
    const QString metadataPath = dir.filePath("cache/remote_config_meta.plist");

    for (int round = 0; round < 12; ++round) {
        QProcess writer;
        writer.start(QStringLiteral(ZUVI_CACHE_WRITER_PATH), {dir.path()});
        QVERIFY(writer.waitForStarted());
        // Let it finish a few saves, then kill it at a varying point of the next.
        const int savesBeforeKill = 1 + round % 3;
        int saves = 0;
        while (saves < savesBeforeKill) {
            QVERIFY(writer.waitForReadyRead(30000));
            saves += writer.readAll().count('\n');
        }
        QThread::usleep(QRandomGenerator::global()->bounded(20000));
        writer.kill();
        QVERIFY(writer.waitForFinished(30000));

        QFile data(dataPath);
        QVERIFY(data.open(QIODevice::ReadOnly));
        const QByteArray bytes = data.readAll();
        QVERIFY2(bytes == documentA || bytes == documentB,
                 qPrintable(QString("round %1: %2 bytes on disk").arg(round).arg(bytes.size())));
        QFile metadata(metadataPath);
        QVERIFY(metadata.open(QIODevice::ReadOnly));
        const auto dictionary = ZuviPropertyList::dictionaryFromXmlData(metadata.readAll());
        QVERIFY(dictionary.has_value());
        QVERIFY(dictionary->value("etag").toString().startsWith("etag-"));
    }

    // And the next run installs the surviving document.
    ZuviDefaults defaults(dir.filePath("check.ini"));
    ZuviNotificationCenter center;
    ZuviVirtualScheduler scheduler;
    ZuviRemoteConfig config(&defaults, &center, &scheduler);
    ZuviRemoteConfigOptions options;
    options.cacheDirectoryPath = dir.filePath("cache");
    config.startWithOptions(options);
    QVERIFY(config.currentData() == documentA || config.currentData() == documentB);
    QCOMPARE(config.currentSourceURLString(), QStringLiteral("http://127.0.0.1/config.json"));
}

QTEST_GUILESS_MAIN(TestZuviRemoteConfigCacheKill)
#include "tst_zuviremoteconfigcachekill.moc"
