// Drives the video screen against a running demo service, in a real window:
// opens the first recommended video, lets it play with danmaku, seeks with
// the arrow key, enters fullscreen with F and leaves with Esc, saving a
// screenshot after each step and printing what the screen reported.
// With --measure SECONDS it only plays (replaying at the end) for that long,
// for whole-process CPU and memory figures; --bare URL plays the same file
// in a plain QML MediaPlayer + VideoOutput window, without danmaku or UI.
//
// Usage: zuvi-player-e2e --endpoints FILE --out DIR [--measure SECONDS]
//        zuvi-player-e2e --bare URL --measure SECONDS

#include "danmaku/zuvidanmakuoverlayview.h"
#include "net/zuviapiclient.h"
#include "platform/zuvidefaults.h"
#include "platform/zuviendpoints.h"
#include "player/zuvivideoplayerviewcontroller.h"

#include <QCommandLineParser>
#include <QDir>
#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQmlExtensionPlugin>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>
#include <QTimer>

#include <functional>

Q_IMPORT_QML_PLUGIN(ZuviPlugin)

namespace {
QTextStream out(stdout);

void say(const QString &line)
{
    out << line << Qt::endl;
}

// Runs the steps one after another, each after its own delay in seconds.
struct Script {
    QList<QPair<double, std::function<void()>>> steps;
    void add(double delay, std::function<void()> step) { steps.append({delay, std::move(step)}); }
    void run(int index = 0)
    {
        if (index >= steps.size())
            return;
        QTimer::singleShot(int(steps[index].first * 1000), [this, index] {
            steps[index].second();
            run(index + 1);
        });
    }
};

int runBare(QGuiApplication &app, const QString &url, double seconds)
{
    QQmlApplicationEngine engine;
    engine.setInitialProperties({{"source", url}});
    engine.loadData(R"(
        import QtQuick
        import QtQuick.Window
        import QtMultimedia
        Window {
            id: window
            property string source
            width: 1024; height: 768; visible: true; color: "black"
            MediaPlayer {
                id: player
                source: window.source
                loops: MediaPlayer.Infinite
                videoOutput: output
                audioOutput: AudioOutput {}
                Component.onCompleted: play()
            }
            VideoOutput { id: output; anchors.fill: parent }
        })");
    if (engine.rootObjects().isEmpty())
        return 2;
    QTimer::singleShot(int(seconds * 1000), &app, &QCoreApplication::quit);
    return app.exec();
}
} // namespace

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    QCommandLineParser parser;
    parser.addOption({"endpoints", "endpoints file", "file"});
    parser.addOption({"out", "screenshot directory", "dir"});
    parser.addOption({"measure", "only play for this many seconds", "seconds"});
    parser.addOption({"bare", "play this address without the app", "url"});
    parser.process(app);
    const double measure = parser.value("measure").toDouble();
    if (parser.isSet("bare"))
        return runBare(app, parser.value("bare"), measure > 0 ? measure : 60);

    const QString outDir = parser.value("out").isEmpty() ? QDir::tempPath() : parser.value("out");
    QDir().mkpath(outDir);
    ZuviDefaults::setStandardFilePath(outDir + "/defaults.ini");
    ZuviEndpoints endpoints = ZuviEndpoints::defaults();
    ZuviError error;
    if (!ZuviEndpoints::loadFile(parser.value("endpoints"), &endpoints, &error)) {
        say("endpoints: " + error.message);
        return 2;
    }
    ZuviEndpoints::setShared(endpoints);

    QQmlApplicationEngine engine;
    engine.addImportPath(QStringLiteral("qrc:/"));
    QQuickWindow *window = nullptr;
    ZuviVideoPlayerViewController *c = nullptr;
    Script script;

    const auto shot = [&](const QString &name) {
        const QString path = outDir + "/" + name + ".png";
        window->grabWindow().save(path);
        ZuviMoviePlayer *p = c->moviePlayer();
        ZuviDanmakuOverlayView *o = c->danmakuOverlay();
        say(QString("%1: t=%2 playing=%3 fullscreen=%4 state='%5' overlay %6x%7 in %8 "
                    "visible=%9 flying=%10 launched=%11 items=%12")
                .arg(path)
                .arg(p ? p->currentPlaybackTime() : -1, 0, 'f', 2)
                .arg(p && p->isPlaying())
                .arg(c->isMoviePlayerFullscreen())
                .arg(c->isStateVisible() ? c->stateText() : QString())
                .arg(o->width())
                .arg(o->height())
                .arg(o->parentItem() ? o->parentItem()->objectName() : QString("-"))
                .arg(o->isVisible())
                .arg(o->visibleCount())
                .arg(o->launchedCount())
                .arg(o->itemCount()));
    };
    const auto key = [&](Qt::Key k) { QTest::keyClick(window, k); };

    std::function<void(const ZuviVideoItem &)> open = [&](const ZuviVideoItem &v) {
        say(QString("opening %1 %2 cid %3").arg(v.bvid, v.title).arg(v.cid));
        c = ZuviVideoPlayerViewController::createWithVideoItem(v, QStringLiteral("推荐"));
        c->setParent(&app);
        engine.setInitialProperties({{"screen", QVariant::fromValue(c)}});
        engine.loadData(R"(
            import QtQuick
            import QtQuick.Controls
            import Zuvi
            ApplicationWindow {
                required property ZuviVideoPlayerViewController screen
                width: 1024; height: 768; visible: true
                VideoPlayerPage {
                    objectName: "page"
                    anchors.fill: parent
                    controller: screen
                }
            })");
        window = qobject_cast<QQuickWindow *>(engine.rootObjects().value(0));
        auto *page = window ? window->findChild<QQuickItem *>("page") : nullptr;
        if (!page) {
            QCoreApplication::exit(4);
            return;
        }
        // As the navigation stack does on a push.
        c->loadViewIfNeeded();
        c->viewWillAppear();
        QObject::connect(c, &ZuviVideoPlayerViewController::moviePlayerChanged, c, [c] {
            if (c->moviePlayer())
                say("playing " + c->pendingPlayURL().toString());
        });
        QObject::connect(c, &ZuviVideoPlayerViewController::danmakuChanged, c, [c] {
            if (!c->danmakuItems().isEmpty())
                say(QString("danmaku %1 items").arg(c->danmakuItems().size()));
        });
        window->requestActivate();
        page->forceActiveFocus();
        if (measure > 0) {
            // Replays whenever the clip ends, until the time is up.
            QObject::connect(c, &ZuviVideoPlayerViewController::playbackEndChanged, c, [c] {
                if (c->isPlaybackEndVisible())
                    c->playbackEndReplayTapped();
            });
            QTimer::singleShot(int(measure * 1000), &app, [&] {
                shot("measure-end");
                QCoreApplication::quit();
            });
            return;
        }
        script.add(6, [&] { shot("1-playing"); });
        script.add(0, [&] { key(Qt::Key_Right), key(Qt::Key_Right); });
        script.add(2.5, [&] { shot("2-after-seek"); });
        script.add(0, [&] { key(Qt::Key_F); });
        script.add(3, [&] { shot("3-fullscreen"); });
        script.add(0, [&] { key(Qt::Key_Escape); });
        script.add(2.5, [&] { shot("4-back-inline"); });
        script.add(0, [&] { QCoreApplication::quit(); });
        script.run();
    };

    // For measuring, the first recommended video whose danmaku document is
    // dense (thousands of items); otherwise simply the first one.
    QList<ZuviVideoItem> candidates;
    std::function<void()> tryNext = [&] {
        if (candidates.isEmpty()) {
            say("no video with a dense danmaku document");
            QCoreApplication::exit(5);
            return;
        }
        const ZuviVideoItem v = candidates.takeFirst();
        ZuviAPIClient::sharedClient()->fetchDanmakuWithCID(
            v.cid, [&, v](const QList<ZuviDanmakuItem> &items, const ZuviError &) {
                items.size() >= 5000 ? open(v) : tryNext();
            });
    };
    ZuviAPIClient::sharedClient()->fetchRecommendedPage(
        1, 60, [&](const QList<ZuviVideoItem> &videos, const ZuviError &error) {
            if (videos.isEmpty()) {
                say("recommended: " + error.message);
                QCoreApplication::exit(3);
                return;
            }
            if (measure <= 0) {
                open(videos.constFirst());
                return;
            }
            candidates = videos;
            tryNext();
        });
    return app.exec();
}
