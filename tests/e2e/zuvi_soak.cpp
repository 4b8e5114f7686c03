// Soak run of the application in one process against a running demo service:
// opens a video, lets it play a few seconds with danmaku, goes back, and does
// that again and again, alternating a video from the recommended grid and one
// from search results (searched for a word of a grid video's title). After
// every cycle, once the popped screens are released, it samples the resident
// memory of the process and prints it; last the line
//   soak: C cycles, rss10 A MB, rss<C> B MB, growth G MB
// where growth is how much the process grew from cycle 10 to the last one.
//
// Usage: zuvi-soak --endpoints FILE --out DIR [--cycles N] [--play SECONDS]

#include "browse/zuvisearchresultsviewcontroller.h"
#include "browse/zuvivideogridviewcontroller.h"
#include "danmaku/zuvidanmakuoverlayview.h"
#include "player/zuvimovieplayer.h"
#include "zuvie2edriver.h"

#include <QCommandLineParser>
#include <QDeadlineTimer>
#include <QDir>
#include <QGuiApplication>
#include <QPointer>
#include <QQmlExtensionPlugin>

Q_IMPORT_QML_PLUGIN(ZuviPlugin)

namespace {
using ZuviE2E::say;

double residentMegabytes()
{
    return ZuviE2E::processStatusKiB("VmRSS") / 1024.0;
}

// Waits on the event loop, checking every 100 ms, until the condition holds
// or the time is up; then calls next with whether it held.
void whenReady(std::function<bool()> condition, double seconds, std::function<void(bool)> next)
{
    auto *timer = new QTimer;
    const QDeadlineTimer deadline(qint64(seconds * 1000));
    QObject::connect(timer, &QTimer::timeout, [timer, condition, deadline, next] {
        const bool ready = condition();
        if (!ready && !deadline.hasExpired())
            return;
        timer->deleteLater();
        next(ready);
    });
    timer->start(100);
}

void after(double seconds, std::function<void()> step)
{
    QTimer::singleShot(int(seconds * 1000), std::move(step));
}

struct Soak {
    ZuviNavigationController *navigation = nullptr;
    ZuviVideoGridViewController *grid = nullptr;
    int cycles = 100;
    double playSeconds = 3;
    int cycle = 0;
    QList<double> rss;

    void fail(const QString &why)
    {
        say(QStringLiteral("soak: failed at cycle %1: %2").arg(cycle).arg(why));
        QCoreApplication::exit(3);
    }

    void next()
    {
        if (cycle == cycles) {
            finish();
            return;
        }
        ++cycle;
        const int row = (cycle / 2) % int(grid->videos().size());
        if (cycle % 2 == 1) {
            grid->selectItem(row);
            play(QStringLiteral("grid row %1").arg(row));
            return;
        }
        // A word of a grid video's title finds at least that video.
        const QString keyword = grid->videos().at(row).title.left(2);
        grid->searchButtonClicked(keyword);
        auto *search =
            qobject_cast<ZuviSearchResultsViewController *>(navigation->topViewController());
        if (!search)
            return fail(QStringLiteral("no search screen"));
        whenReady([search] { return !search->isLoading(); }, 20,
                  [this, search, keyword](bool) {
                      if (search->videos().isEmpty())
                          return fail(QStringLiteral("no results for ") + keyword);
                      search->selectItem(cycle % int(search->videos().size()));
                      play(QStringLiteral("search '%1'").arg(keyword));
                  });
    }

    void play(const QString &source)
    {
        auto *video =
            qobject_cast<ZuviVideoPlayerViewController *>(navigation->topViewController());
        if (!video)
            return fail(QStringLiteral("no video screen from ") + source);
        QPointer<ZuviVideoPlayerViewController> guarded(video);
        whenReady(
            [guarded] {
                return guarded && guarded->moviePlayer() && guarded->moviePlayer()->isPlaying();
            },
            20,
            [this, guarded, source](bool playing) {
                if (!guarded)
                    return fail(QStringLiteral("the video screen went away"));
                if (!playing)
                    say(QStringLiteral("cycle %1: not playing: %2")
                            .arg(cycle)
                            .arg(guarded->stateText()));
                after(playSeconds, [this, guarded, source] { leave(guarded, source); });
            });
    }

    void leave(QPointer<ZuviVideoPlayerViewController> video, const QString &source)
    {
        const int launched = video ? int(video->danmakuOverlay()->launchedCount()) : -1;
        const double at =
            video && video->moviePlayer() ? video->moviePlayer()->currentPlaybackTime() : -1;
        // Back to the grid: the video screen, and the search screen under it.
        while (navigation->topViewController() != grid && navigation->popViewController(false)) {
        }
        // The navigation releases popped screens a moment later; sample after.
        after(2, [this, source, launched, at] {
            rss.append(residentMegabytes());
            say(QStringLiteral("cycle %1: %2, played to %3 s, %4 danmaku launched, rss %5 MB")
                    .arg(cycle)
                    .arg(source)
                    .arg(at, 0, 'f', 1)
                    .arg(launched)
                    .arg(rss.last(), 0, 'f', 1));
            next();
        });
    }

    void finish()
    {
        const double first = rss.value(qMin(9, int(rss.size()) - 1));
        const double last = rss.last();
        say(QStringLiteral("soak: %1 cycles, rss10 %2 MB, rss%1 %3 MB, growth %4 MB")
                .arg(cycles)
                .arg(first, 0, 'f', 1)
                .arg(last, 0, 'f', 1)
                .arg(last - first, 0, 'f', 1));
        QCoreApplication::quit();
    }
};
} // namespace

int main(int argc, char **argv)
{
    ZuviAppDelegate::prepareProcess();
    QGuiApplication app(argc, argv);
    QCommandLineParser parser;
    parser.addOption({"endpoints", "endpoints file", "file"});
    parser.addOption({"out", "settings directory", "dir"});
    parser.addOption({"cycles", "how many videos to open", "n", "100"});
    parser.addOption({"play", "seconds each video plays", "seconds", "3"});
    parser.process(app);

    const QString outDir = parser.value("out").isEmpty() ? QDir::tempPath() : parser.value("out");
    QDir().mkpath(outDir);
    ZuviE2E::App shell;
    if (!shell.launch(parser.value("endpoints"), outDir + "/defaults.ini",
                      [](ZuviAppDelegate::Services &services) {
                          services.defaults->setBool(true, "ZuviDanmakuEnabled");
                      }))
        return 4;
    Soak soak;
    soak.navigation = shell.tab(0);
    soak.grid = shell.root<ZuviVideoGridViewController>(0);
    soak.cycles = qMax(1, parser.value("cycles").toInt());
    soak.playSeconds = parser.value("play").toDouble();
    if (!soak.grid)
        return 4;
    whenReady([&] { return !soak.grid->videos().isEmpty(); }, 30,
              [&](bool ready) {
                  if (!ready)
                      return soak.fail(QStringLiteral("the grid never loaded"));
                  soak.next();
              });
    return app.exec();
}
