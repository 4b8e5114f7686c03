// oldzuvi: parses the launch options and hands over to the application
// delegate, which builds everything else.
#include "app/zuviappdelegate.h"
#include "app/zuvifirstpageprobe.h"
#include "platform/zuvilaunchoptions.h"
#include "player/zuvivideoplayerviewcontroller.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQmlExtensionPlugin>
#include <QTextStream>

Q_IMPORT_QML_PLUGIN(ZuviPlugin)

namespace {
// Resident memory of this process in kB, from the kernel's status file.
qint64 residentKilobytes()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').first().toLongLong();
    }
    return -1;
}

// With OLDZUVI_STARTUP_REPORT set, prints when the first page is on the
// screen and how much memory is resident then; "exit" also quits, so a
// script can time whole launches.
void reportFirstPageIfAsked(ZuviAppDelegate *delegate, const QElapsedTimer &sinceMain)
{
    const QByteArray mode = qgetenv("OLDZUVI_STARTUP_REPORT");
    if (mode.isEmpty())
        return;
    new ZuviFirstPageProbe(
        delegate,
        [mode, sinceMain] {
            QTextStream(stdout) << "oldzuvi first-page-shown epoch_ms="
                                << QDateTime::currentMSecsSinceEpoch()
                                << " since_main_ms=" << sinceMain.elapsed()
                                << " rss_kb=" << residentKilobytes() << Qt::endl;
            if (mode == "exit")
                QCoreApplication::quit();
        },
        delegate);
}
} // namespace

int main(int argc, char *argv[])
{
    QElapsedTimer sinceMain;
    sinceMain.start();
    ZuviAppDelegate::prepareProcess();
    // Options are read before any window system is touched, so a bad
    // endpoints file is reported even where no display is available.
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    ZuviLaunchOptions options;
    ZuviError error;
    if (!ZuviLaunchOptions::parse(arguments, QProcessEnvironment::systemEnvironment(), &options,
                                  &error)) {
        QTextStream(stderr) << "oldzuvi: " << error.message << "\n"
                            << "usage: oldzuvi [--endpoints FILE] [--idiom pad|phone] "
                               "[--settings FILE]\n";
        return 2;
    }
    QGuiApplication app(argc, argv);
    QGuiApplication::setApplicationName(QStringLiteral("oldzuvi"));
    QGuiApplication::setOrganizationName(QStringLiteral("oldzuvi"));
    // The installed desktop entry's name: window managers group the window
    // under its icon, and media widgets find the entry through it.
    QGuiApplication::setDesktopFileName(QStringLiteral("org.oldzuvi.oldzuvi"));
    options.apply();

    const ZuviAppDelegate::Services services = ZuviAppDelegate::sharedServices();
    // Opening a video from any list pushes the video screen.
    ZuviVideoPlayerViewController::openVideosFromLists(services.client, services.scheduler,
                                                       services.defaults);

    QQmlEngine engine;
    ZuviAppDelegate delegate(services);
    if (!delegate.applicationDidFinishLaunching(&engine))
        return 1;
    reportFirstPageIfAsked(&delegate, sinceMain);
    return app.exec();
}
