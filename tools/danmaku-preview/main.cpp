// oldzuvi-danmaku-preview FILE.xml: plays a danmaku document over a moving
// test picture in real time, the overlay's manual test bench. The viewer's
// danmaku settings are options (see ZuviDanmakuPreviewOptions), and the
// density graph of what they keep runs along the bottom.
#include "danmaku/zuvidanmakuoverlayview.h"
#include "model/zuvidanmakuxmlparser.h"
#include "zuvidanmakupreviewoptions.h"
#include "zuvidanmakupreviewplayer.h"

#include <QCommandLineParser>
#include <QFile>
#include <QGuiApplication>
#include <QQmlExtensionPlugin>
#include <QQuickItem>
#include <QQuickView>
#include <QTimer>

#include <cstdio>

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
    options.addOptions({startOption, idiomOption, shotAtOption, shotOption});
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
    view.setSource(QUrl(QStringLiteral("qrc:/danmaku-preview/DanmakuPreview.qml")));
    if (view.status() != QQuickView::Ready)
        return 1;
    auto *overlay = view.rootObject()->findChild<ZuviDanmakuOverlayView *>("overlay");
    QObject *counters = view.rootObject()->findChild<QObject *>("counters");
    overlay->setPadIdiom(idiom == ZuviIdiom::Pad);
    overlay->setDanmakuSettings(settings);
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
