// oldzuvi-screenshots: runs the application in-process, brings it to one
// state (the first grid page, a search result page, a loading or an error
// state) and saves the window as a PNG, for reviewing the look under Xvfb.
//
//   oldzuvi-screenshots --endpoints FILE [--idiom pad|phone] --out FILE.png
//                       [--size WxH] [--search KEYWORD] [--wait grid|search|loading|error]
//                       [--settle MS] [--scenario NAME [--argument TEXT]]
//
// --scenario runs one of the scenarios the screens register (see
// zuviscreenshotscenario.h) instead of the grid and search states above.
#include "app/zuviappdelegate.h"
#include "app/zuvidebuglog.h"
#include "app/zuvinavigationcontroller.h"
#include "app/zuvitabbarcontroller.h"
#include "browse/zuvisearchresultsviewcontroller.h"
#include "browse/zuvivideogridviewcontroller.h"
#include "config/zuviremoteconfig.h"
#include "images/zuviimageloader.h"
#include "net/zuviapiclient.h"
#include "platform/zuvidefaults.h"
#include "platform/zuvilaunchoptions.h"
#include "platform/zuvinotificationcenter.h"
#include "platform/zuvischeduler.h"
#include "views/zuvistateview.h"
#include "zuviscreenshotscenario.h"

#include <QCommandLineParser>
#include <QGuiApplication>
#include <QImage>
#include <QQmlEngine>
#include <QQmlExtensionPlugin>
#include <QQuickWindow>
#include <QTextStream>
#include <QTimer>

#include <functional>

Q_IMPORT_QML_PLUGIN(ZuviPlugin)

namespace {
int fail(const QString &message)
{
    QTextStream(stderr) << "oldzuvi-screenshots: " << message << Qt::endl;
    return 1;
}

// Polls a condition on the main loop until it holds or the time runs out.
void whenReady(std::function<bool()> ready, std::function<void()> then, int remainingMs)
{
    if (ready()) {
        then();
        return;
    }
    if (remainingMs <= 0) {
        QTextStream(stderr) << "oldzuvi-screenshots: the state never came" << Qt::endl;
        QCoreApplication::exit(1);
        return;
    }
    QTimer::singleShot(50, [=] { whenReady(ready, then, remainingMs - 50); });
}
} // namespace

int main(int argc, char *argv[])
{
    QGuiApplication app(argc, argv);
    QGuiApplication::setApplicationName(QStringLiteral("oldzuvi"));
    ZuviLaunchOptions options;
    ZuviError error;
    if (!ZuviLaunchOptions::parse(QGuiApplication::arguments(),
                                  QProcessEnvironment::systemEnvironment(), &options, &error))
        return fail(error.message);
    options.apply();

    QCommandLineParser parser;
    parser.addOptions({{"out", "PNG file to write", "file"},
                       {"size", "window size WxH", "size"},
                       {"search", "search for this keyword first", "keyword"},
                       {"wait", "grid, search, loading or error", "state", "grid"},
                       {"settle", "milliseconds to let pictures arrive", "ms", "1500"},
                       {"scenario", "a registered scenario", "name"},
                       {"argument", "the scenario's argument", "text"}});
    parser.process(QStringList{QGuiApplication::arguments().first()} + options.remaining);
    if (!parser.isSet("out"))
        return fail(QStringLiteral("--out is required"));

    // The application's services, without the configuration service, which
    // would only add traffic to the pictures.
    ZuviAppDelegate::Services services = ZuviAppDelegate::sharedServices();
    services.remoteConfig = nullptr;
    services.infoDictionary.clear();

    QQmlEngine engine;
    ZuviAppDelegate delegate(services);
    if (!delegate.applicationDidFinishLaunching(&engine))
        return fail(QStringLiteral("the window could not be made"));
    auto *window = qobject_cast<QQuickWindow *>(delegate.window());
    const QStringList size = parser.value("size").split('x');
    if (size.size() == 2)
        window->resize(size[0].toInt(), size[1].toInt());

    ZuviNavigationController *stack = delegate.rootTabBarController()->viewControllerAt(0);
    auto *grid = qobject_cast<ZuviVideoGridViewController *>(stack->rootViewController());
    const QString wait = parser.value("wait");
    const int settle = parser.value("settle").toInt();
    auto save = [window, &parser, settle] {
        QTimer::singleShot(settle, [window, &parser] {
            const bool saved = window->grabWindow().save(parser.value("out"));
            QCoreApplication::exit(saved ? 0 : 1);
        });
    };
    auto gridReady = [grid] { return !grid->isLoading() && grid->videos().size() > 0; };

    if (parser.isSet("scenario")) {
        const auto scenario = ZuviScreenshotScenario::scenarios().value(parser.value("scenario"));
        if (!scenario)
            return fail(QStringLiteral("no scenario named %1").arg(parser.value("scenario")));
        ZuviScreenshotScenario::Context context;
        context.delegate = &delegate;
        context.window = window;
        context.parser = &parser;
        context.argument = parser.value("argument");
        context.save = save;
        context.whenReady = whenReady;
        scenario(context);
    } else if (parser.isSet("search")) {
        const QString keyword = parser.value("search");
        whenReady(
            gridReady,
            [=] {
                grid->searchButtonClicked(keyword);
                auto *search =
                    qobject_cast<ZuviSearchResultsViewController *>(stack->topViewController());
                whenReady([search] { return search && !search->isLoading(); }, save, 20000);
            },
            20000);
    } else if (wait == "loading") {
        whenReady([grid] { return grid->isLoading(); }, save, 20000);
    } else if (wait == "error") {
        whenReady(
            [grid] {
                return grid->stateView() && grid->stateView()->mode() == ZuviStateView::Error;
            },
            save, 20000);
    } else {
        whenReady(gridReady, save, 20000);
    }
    return app.exec();
}
