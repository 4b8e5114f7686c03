// oldzuvi: parses the launch options and hands over to the application
// delegate, which builds everything else.
#include "app/zuviappdelegate.h"
#include "app/zuvidebuglog.h"
#include "browse/zuvivideoscreenopener.h"
#include "net/zuviapiclient.h"
#include "platform/zuvidefaults.h"
#include "platform/zuvilaunchoptions.h"
#include "platform/zuvinotificationcenter.h"
#include "platform/zuvischeduler.h"
#include "player/zuvivideoplayerviewcontroller.h"

#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQmlExtensionPlugin>
#include <QTextStream>

Q_IMPORT_QML_PLUGIN(ZuviPlugin)

int main(int argc, char *argv[])
{
    QGuiApplication app(argc, argv);
    QGuiApplication::setApplicationName(QStringLiteral("oldzuvi"));
    QGuiApplication::setOrganizationName(QStringLiteral("oldzuvi"));

    ZuviLaunchOptions options;
    ZuviError error;
    if (!ZuviLaunchOptions::parse(QGuiApplication::arguments(),
                                  QProcessEnvironment::systemEnvironment(), &options, &error)) {
        QTextStream(stderr) << "oldzuvi: " << error.message << "\n"
                            << "usage: oldzuvi [--endpoints FILE] [--idiom pad|phone] "
                               "[--settings FILE]\n";
        return 2;
    }
    options.apply();

    ZuviAppDelegate::Services services;
    services.client = ZuviAPIClient::sharedClient();
    services.defaults = ZuviDefaults::standardDefaults();
    services.center = ZuviNotificationCenter::defaultCenter();
    services.scheduler = ZuviScheduler::sharedScheduler();
    services.log = ZuviDebugLog::sharedLog();
    services.endpoints = ZuviEndpoints::shared();
    services.infoDictionary = ZuviAppDelegate::bundledInfoDictionary();

    // Opening a video from any list pushes the video screen.
    ZuviVideoScreenOpener::setFactory(
        [services](const ZuviVideoItem &item, const QString &sourceTitle) -> ZuviViewController * {
            return new ZuviVideoPlayerViewController(
                item, sourceTitle, services.client, services.scheduler, services.defaults,
                ZuviVideoPlayerViewController::mediaPlayerFactory());
        });

    QQmlEngine engine;
    ZuviAppDelegate delegate(services);
    if (!delegate.applicationDidFinishLaunching(&engine))
        return 1;
    return app.exec();
}
