// oldzuvi-danmaku-preview FILE.xml: plays a danmaku document over a moving
// test picture in real time, the overlay's manual test bench. The viewer's
// danmaku settings are options (see ZuviDanmakuPreviewOptions), and the
// density graph of what they keep runs along the bottom.
#include "danmaku/zuvidanmakuoverlayview.h"
#include "danmaku/zuvidanmakusettingscontroller.h"
#include "model/zuvidanmakuxmlparser.h"
#include "platform/zuvidefaults.h"
#include "platform/zuvinotificationcenter.h"
#include "zuvidanmakupreviewoptions.h"
#include "zuvidanmakupreviewplayer.h"

#include <QCommandLineParser>
#include <QFile>
#include <QGuiApplication>
#include <QQmlEngine>
#include <QQmlExtensionPlugin>
#include <QQuickItem>
#include <QQuickView>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdio>
#include <memory>

Q_IMPORT_QML_PLUGIN(ZuviPlugin)

namespace {

bool readDocument(const QString &path, QList<ZuviDanmakuItem> *items)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "cannot open %s\n", qPrintable(path));
        return false;
    }
    ZuviDanmakuXMLParser parser;
    if (!parser.parse(file.readAll()))
        std::fprintf(stderr, "%s is not a complete danmaku document; showing what was read\n",
                     qPrintable(path));
    *items = parser.items();
    ZuviDanmakuXMLParser::sortByTime(*items);
    return true;
}

} // namespace

int main(int argc, char *argv[])
{
    QGuiApplication app(argc, argv);
    QCommandLineParser options;
    options.setApplicationDescription("Plays a danmaku document over a moving test picture.");
    options.addHelpOption();
    options.addPositionalArgument("FILE.xml", "The danmaku document.");
    const QCommandLineOption startOption("start", "Start at SECONDS.", "SECONDS", "0");
    const QCommandLineOption idiomOption("idiom", "pad (1024×768) or phone (320×568).", "IDIOM",
                                         "pad");
    const QCommandLineOption shotAtOption("screenshot-at",
                                          "Grab the window after SECONDS and exit.", "SECONDS");
    const QCommandLineOption shotOption("screenshot", "Where the grab goes (PNG).", "OUT.png",
                                        "danmaku-preview.png");
    const QCommandLineOption panelOption(
        "panel", "Show the settings panel, which changes the running preview (the settings "
                 "start from the options and are kept in a scratch store, not the app's).");
    options.addOptions({startOption, idiomOption, shotAtOption, shotOption, panelOption});
    options.addOptions(ZuviDanmakuPreviewOptions::options());
    options.process(app);
    if (options.positionalArguments().size() != 1)
        options.showHelp(2);
    ZuviDanmakuSettings settings;
    QString problem;
    if (!ZuviDanmakuPreviewOptions::settingsFromParser(options, &settings, &problem)) {
        std::fprintf(stderr, "%s\n", qPrintable(problem));
        return 2;
    }

    QList<ZuviDanmakuItem> items;
    if (!readDocument(options.positionalArguments().first(), &items))
        return 1;
    ZuviIdiom::Kind idiom = ZuviIdiom::Pad;
    if (!ZuviIdiom::fromString(options.value(idiomOption), &idiom))
        options.showHelp(2);

    QQuickView view;
    view.setTitle(QStringLiteral("oldZuvi danmaku preview"));
    view.setResizeMode(QQuickView::SizeRootObjectToView);
    // Qt 6.4 keeps the module's qmldir under :/Zuvi/, where QML files of the
    // module (the settings panel) are found only with this import path.
    view.engine()->addImportPath(QStringLiteral("qrc:/"));
    view.setSource(QUrl(QStringLiteral("qrc:/danmaku-preview/DanmakuPreview.qml")));
    if (view.status() != QQuickView::Ready)
        return 1;
    auto *overlay = view.rootObject()->findChild<ZuviDanmakuOverlayView *>("overlay");
    QObject *counters = view.rootObject()->findChild<QObject *>("counters");
    overlay->setPadIdiom(idiom == ZuviIdiom::Pad);
    overlay->setDanmakuSettings(settings);
    QTemporaryDir scratchFolder;
    std::unique_ptr<ZuviDefaults> scratch;
    if (options.isSet(panelOption)) {
        // The panel writes the store and the overlay follows it, as in the app.
        scratch = std::make_unique<ZuviDefaults>(scratchFolder.filePath("defaults.ini"));
        settings.saveToDefaults(*scratch);
        ZuviNotificationCenter *center = ZuviNotificationCenter::defaultCenter();
        overlay->followStoredSettings(scratch.get(), center);
        view.rootObject()->setProperty(
            "settingsController",
            QVariant::fromValue(new ZuviDanmakuSettingsController(scratch.get(), center, &view)));
    }
    const QString blockProblems = overlay->engine()->blockList().problemText();
    if (!blockProblems.isEmpty())
        std::fprintf(stderr, "%s\n", qPrintable(blockProblems));
    overlay->setDanmakuItems(items);
    view.resize(ZuviIdiom::defaultWindowSize(idiom));
    view.show();

    ZuviDanmakuPreviewPlayer player(&view, overlay, counters);
    player.start(options.value(startOption).toDouble());

    if (options.isSet(shotAtOption)) {
        const QString out = options.value(shotOption);
        const int delay = int(options.value(shotAtOption).toDouble() * 1000);
        QTimer::singleShot(delay, &view, [&view, &app, out, overlay, &player] {
            const bool saved = view.grabWindow().save(out);
            std::printf("%s at %.1f s: visible %d launched %lld dropped %lld\n",
                        saved ? qPrintable(out) : "grab failed", player.position(),
                        overlay->visibleCount(), overlay->launchedCount(), overlay->droppedCount());
            app.exit(saved ? 0 : 1);
        });
    }
    return app.exec();
}
