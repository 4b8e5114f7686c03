// Drives the application against a running demo service, in a real window:
// taps the first video of the recommended grid, lets it play with danmaku,
// seeks back with the arrow key, enters fullscreen with F and leaves with Esc,
// speeds up with ] and switches to 480P from the player's quality menu
// (printing how long the new quality took to play, from the same moment),
// saving a screenshot after each step and printing what the screen reported.
// With --measure SECONDS --bvid ID --cid N it only plays that video (one with
// a dense danmaku document, chosen by player-e2e.sh)
// (replaying at the end) for that long, for whole-process CPU and memory
// figures; --no-danmaku starts with the switch off; --controls-shown keeps
// the player's controls up instead of letting them hide; --bare URL plays the same
// file in a plain QML MediaPlayer + VideoOutput window, without danmaku or UI;
// with --trimmed that window's pipeline is bounded as the app bounds its own,
// to tell the app's pipeline savings from what its screens cost.
//
// Usage: zuvi-player-e2e --endpoints FILE --out DIR
//        zuvi-player-e2e --endpoints FILE --out DIR --measure SECONDS --bvid ID --cid N
//                        [--no-danmaku] [--controls-shown]
//        zuvi-player-e2e --bare URL --measure SECONDS [--trimmed]

#include "browse/zuvivideogridviewcontroller.h"
#include "browse/zuvivideoscreenopener.h"
#include "danmaku/zuvidanmakuoverlayview.h"
#include "notifications/zuviremotemessageoverlayview.h"
#include "notifications/zuviremotenotificationpresenter.h"
#include "player/zuvigstreamertuning.h"
#include "zuvie2edriver.h"

#include <QCommandLineParser>
#include <QDir>
#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQmlExtensionPlugin>
#include <QQuickItem>
#include <QTest>

#include <algorithm>

Q_IMPORT_QML_PLUGIN(ZuviPlugin)

namespace {
using ZuviE2E::say;

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
    // The app's own process settings, unless this run is the bare player.
    if (!std::any_of(argv, argv + argc, [](const char *a) { return qstrcmp(a, "--bare") == 0; }))
        ZuviAppDelegate::prepareProcess();
    QGuiApplication app(argc, argv);
    QCommandLineParser parser;
    parser.addOption({"endpoints", "endpoints file", "file"});
    parser.addOption({"out", "screenshot directory", "dir"});
    parser.addOption({"measure", "only play for this many seconds", "seconds"});
    parser.addOption({"bare", "play this address without the app", "url"});
    parser.addOption({"trimmed", "bound the bare player's pipeline as the app does"});
    parser.addOption({"no-danmaku", "start with the danmaku switched off"});
    parser.addOption({"controls-shown", "keep the player's controls up while measuring"});
    parser.addOption({"bvid", "the video to measure", "id"});
    parser.addOption({"cid", "its part", "cid"});
    parser.process(app);
    const double measure = parser.value("measure").toDouble();
    if (parser.isSet("bare")) {
        if (parser.isSet("trimmed"))
            ZuviGStreamerTuning::install();
        return runBare(app, parser.value("bare"), measure > 0 ? measure : 60);
    }

    const QString outDir = parser.value("out").isEmpty() ? QDir::tempPath() : parser.value("out");
    QDir().mkpath(outDir);
    ZuviE2E::App shell;
    const bool danmaku = !parser.isSet("no-danmaku");
    if (!shell.launch(parser.value("endpoints"), outDir + "/defaults.ini",
                      [danmaku](ZuviAppDelegate::Services &services) {
                          services.defaults->setBool(danmaku, "ZuviDanmakuEnabled");
                      }))
        return 4;
    QQuickWindow *window = shell.window();
    ZuviNavigationController *navigation = shell.tab(0);
    auto *grid = shell.root<ZuviVideoGridViewController>(0);
    if (!grid)
        return 4;
    ZuviVideoPlayerViewController *c = nullptr;
    ZuviE2E::Steps script;
    QElapsedTimer switchClock;
    double switchFrom = -1;

    // What the screen reports, after the given label.
    const auto report = [&](const QString &label) {
        if (!c) {
            say(label);
            return;
        }
        ZuviMoviePlayer *p = c->moviePlayer();
        ZuviDanmakuOverlayView *o = c->danmakuOverlay();
        say(QString("%1: t=%2 playing=%3 fullscreen=%4 state='%5' overlay %6x%7 in %8 "
                    "visible=%9 flying=%10 launched=%11 items=%12")
                .arg(label)
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
    const auto shot = [&](const QString &name) {
        const QString path = outDir + "/" + name + ".png";
        window->grabWindow().save(path);
        report(path);
    };
    const auto key = [&](Qt::Key k) { QTest::keyClick(window, k); };

    // Closes the operator's card if one is up, as the viewer's tap on its
    // button would; the presenter is asked, not the window's items, so the
    // check costs the measured process nothing.
    const auto closeMessageCard = [presenter = shell.services.presenter] {
        ZuviRemoteMessageOverlayView *card = presenter ? presenter->currentOverlayView() : nullptr;
        if (card)
            card->dismissButtonTapped();
        return card != nullptr;
    };
    // Taps the grid's cell at row, as the user would (row −1: pushes the
    // given video the same way), and follows the screen.
    const auto openRow = [&](int row, const ZuviVideoItem &other) {
        const ZuviVideoItem v = row >= 0 ? grid->videos().at(row) : other;
        say(QString("opening row %1: %2 %3 cid %4").arg(row).arg(v.bvid, v.title).arg(v.cid));
        if (row >= 0)
            grid->selectItem(row);
        else
            ZuviVideoScreenOpener::open(navigation, v, grid->title());
        c = qobject_cast<ZuviVideoPlayerViewController *>(navigation->topViewController());
        if (!c) {
            QCoreApplication::exit(4);
            return;
        }
        QObject::connect(c, &ZuviVideoPlayerViewController::moviePlayerChanged, c, [c] {
            if (c->moviePlayer())
                say("playing " + c->pendingPlayURL().toString());
        });
        if (measure > 0) {
            // A card that comes later (a polled configuration) is closed too:
            // a dimmed cover left over the playing picture would be measured
            // as the screen's cost.
            auto *closer = new QTimer(c);
            QObject::connect(closer, &QTimer::timeout, c, closeMessageCard);
            closer->start(250);
            // As if the viewer kept a menu open: what the controls cost when
            // they never hide.
            if (parser.isSet("controls-shown"))
                c->playbackOptions()->setControlsInUse(true);
            // Replays whenever the clip ends, until the time is up.
            QObject::connect(c, &ZuviVideoPlayerViewController::playbackEndChanged, c, [c] {
                if (c->isPlaybackEndVisible())
                    c->playbackEndReplayTapped();
            });
            // The state line only: a grabbed window would add its own
            // buffers to the memory being measured.
            QTimer::singleShot(int(measure * 1000), &app, [&] {
                report(QStringLiteral("measure-end"));
                QCoreApplication::quit();
            });
            return;
        }
        script.after(6, [&] { shot("1-playing"); });
        // Back 5 s: the first video may be a 12-second clip, which a skip
        // forward would end before the fullscreen steps.
        script.after(0, [&] { key(Qt::Key_Left); });
        script.after(2.5, [&] { shot("2-after-seek"); });
        script.after(0, [&] { key(Qt::Key_F); });
        script.after(3, [&] { shot("3-fullscreen"); });
        script.after(0, [&] { key(Qt::Key_Escape); });
        script.after(2.5, [&] { shot("4-back-inline"); });
        // Back 5 s again, so that the last steps end well before the clip.
        script.after(0, [&] { key(Qt::Key_Left); });
        // Faster with the key, then 480P from the player's menu: the same
        // moment of the movie in the other quality, at the chosen speed.
        script.after(1, [&] {
            key(Qt::Key_BracketRight);
            switchClock.start();
            switchFrom = c->moviePlayer() ? c->moviePlayer()->currentPlaybackTime() : -1;
            // The first picture of the new quality at the moment the old
            // one left off: what the viewer waits for.
            QObject::connect(c->moviePlayer(), &ZuviMoviePlayer::videoFrameDidChange, c, [&] {
                ZuviMoviePlayer *p = c->moviePlayer();
                if (!switchClock.isValid() || c->activeQuality() != 32 || !p ||
                    p->currentPlaybackTime() < switchFrom - 0.25)
                    return;
                say(QString("quality switch to 480P: first picture after %1 ms, at t=%2 "
                            "(left at t=%3)")
                        .arg(switchClock.elapsed())
                        .arg(p->currentPlaybackTime(), 0, 'f', 2)
                        .arg(switchFrom, 0, 'f', 2));
                switchClock.invalidate();
            });
            c->playbackOptions()->chooseQuality(1);
        });
        script.after(3, [&] {
            say(QString("speed %1, quality %2")
                    .arg(c->playbackOptions()->speedButtonTitle(),
                         c->playbackOptions()->qualityButtonTitle()));
            shot("5-faster-480p");
        });
        script.run();
    };

    // The grid loads its first page on its own; wait for it. When measuring,
    // the viewer first closes the operator's welcome card, which comes with
    // the first configuration: it dims the whole window and takes every tap,
    // so nobody can open a video before it is gone (a settings store that has
    // seen the message shows none; three seconds tell).
    QTimer poll;
    QElapsedTimer sinceLaunch;
    sinceLaunch.start();
    bool welcomeClosed = false;
    QObject::connect(&poll, &QTimer::timeout, &app, [&] {
        if (measure > 0) {
            if (closeMessageCard()) {
                welcomeClosed = true;
                return;
            }
            if (!welcomeClosed && sinceLaunch.elapsed() < 3000)
                return;
        }
        if (grid->videos().isEmpty())
            return;
        poll.stop();
        if (measure > 0) {
            ZuviVideoItem chosen;
            chosen.bvid = parser.value("bvid");
            chosen.cid = parser.value("cid").toLongLong();
            chosen.title = chosen.bvid;
            openRow(-1, chosen);
        } else {
            shot("0-grid");
            openRow(0, {});
        }
    });
    poll.start(200);
    return app.exec();
}
