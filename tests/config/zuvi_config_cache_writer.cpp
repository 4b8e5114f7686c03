// Rewrites the configuration cache in a loop with two large documents in
// turn, saying "saved" after each one, until it is killed.
#include "config/zuviremoteconfig.h"
#include "platform/zuvidefaults.h"
#include "platform/zuvinotificationcenter.h"
#include "platform/zuvivirtualscheduler.h"

#include <QCoreApplication>
#include <QDir>

#include <cstdio>

QByteArray cacheWriterDocument(char fill)
{
    return "{\"message\":{\"version\":1,\"text\":\"t\"},\"pad\":\"" +
           QByteArray(4 * 1024 * 1024, fill) + "\"}";
}

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    if (argc < 2)
        return 2;
    const QString directory = QString::fromLocal8Bit(argv[1]);
    ZuviDefaults defaults(QDir(directory).filePath("defaults.ini"));
    ZuviNotificationCenter center;
    ZuviVirtualScheduler scheduler;
    ZuviRemoteConfig config(&defaults, &center, &scheduler);
    ZuviRemoteConfigOptions options;
    options.cacheDirectoryPath = QDir(directory).filePath("cache");
    config.startWithOptions(options);

    const QByteArray documents[] = {cacheWriterDocument('a'), cacheWriterDocument('b')};
    for (unsigned long round = 0;; ++round) {
        const QByteArray &document = documents[round % 2];
        config.saveCacheWithData(document, "http://127.0.0.1/config.json",
                                 QString("etag-%1").arg(round % 2), QString());
        std::fputs("saved\n", stdout);
        std::fflush(stdout);
    }
}
