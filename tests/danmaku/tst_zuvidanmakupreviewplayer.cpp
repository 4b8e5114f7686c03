// The preview tool's stand-in movie: its playback clock under pause, seeks
// and 2× rate, and the keys, on a hand-moved wall clock.
#include "../../tools/danmaku-preview/zuvidanmakupreviewoptions.h"
#include "../../tools/danmaku-preview/zuvidanmakupreviewplayer.h"
#include "danmaku/zuvidanmakuoverlayview.h"

#include <QKeyEvent>
#include <QQuickWindow>
#include <QtTest>

namespace {

struct Bench {
    Bench()
    {
        overlay.setParentItem(window.contentItem());
        overlay.setSize(QSizeF(1024, 768));
        overlay.engine()->setFlightClock([this] { return wall; });
        QList<ZuviDanmakuItem> items;
        for (int i = 0; i < 600; ++i) {
            ZuviDanmakuItem item;
            item.text = QStringLiteral("弹幕 %1").arg(i);
            item.time = i * 0.1;
            items.append(item);
        }
        overlay.setDanmakuItems(items);
    }

    void press(int key, bool autoRepeat = false, QEvent::Type type = QEvent::KeyPress)
    {
        QKeyEvent event(type, key, Qt::NoModifier, QString(), autoRepeat);
        QCoreApplication::sendEvent(&window, &event);
    }

    double wall = 100;
    QQuickWindow window;
    ZuviDanmakuOverlayView overlay;
    QObject counters;
    ZuviDanmakuPreviewPlayer player{&window, &overlay, &counters, [this] { return wall; }};
};

} // namespace

class TestZuviDanmakuPreviewPlayer : public QObject
{
    Q_OBJECT

private slots:
    void clockPausesSeeksAndSpeedsUp();
    void sizeKeySwitchesIdiomAndWindow();
    void settingsFromOptions_data();
    void settingsFromOptions();
};

void TestZuviDanmakuPreviewPlayer::clockPausesSeeksAndSpeedsUp()
{
    Bench bench;
    bench.player.start(20);
    QCOMPARE(bench.overlay.engine()->lastPlaybackTime(), 20.0);
    QVERIFY(bench.overlay.visibleCount() > 0);
    bench.wall += 1;
    QCOMPARE(bench.player.position(), 21.0);

    // Holding S plays twice as fast; key repeats change nothing.
    bench.press(Qt::Key_S);
    bench.press(Qt::Key_S, true);
    bench.wall += 1;
    QCOMPARE(bench.player.position(), 23.0);
    bench.press(Qt::Key_S, true, QEvent::KeyRelease);
    QCOMPARE(bench.player.rate(), 2.0);
    bench.press(Qt::Key_S, false, QEvent::KeyRelease);
    bench.wall += 1;
    QCOMPARE(bench.player.position(), 24.0);

    // Space pauses: the position stands and the overlay freezes.
    bench.press(Qt::Key_Space);
    QVERIFY(!bench.player.isPlaying());
    QVERIFY(bench.overlay.isDanmakuPaused());
    bench.wall += 30;
    QCOMPARE(bench.player.position(), 24.0);
    bench.press(Qt::Key_Space);
    QVERIFY(!bench.overlay.isDanmakuPaused());

    // Arrows seek by ten seconds, never before the start; the overlay re-seeks.
    bench.press(Qt::Key_Right);
    QCOMPARE(bench.player.position(), 34.0);
    QCOMPARE(bench.overlay.engine()->lastPlaybackTime(), 34.0);
    QCOMPARE(bench.overlay.engine()->visibleLabel(0).text, QStringLiteral("弹幕 338"));
    bench.press(Qt::Key_Left);
    bench.press(Qt::Key_Left);
    bench.press(Qt::Key_Left);
    bench.press(Qt::Key_Left);
    QCOMPARE(bench.player.position(), 0.0);

    QVERIFY(bench.counters.property("text").toString().startsWith(
        QStringLiteral("0.0 s  1×  playing  visible ")));
}

void TestZuviDanmakuPreviewPlayer::sizeKeySwitchesIdiomAndWindow()
{
    Bench bench;
    bench.player.start(0);
    QVERIFY(bench.overlay.isPadIdiom());
    bench.press(Qt::Key_P);
    QVERIFY(!bench.overlay.isPadIdiom());
    QCOMPARE(bench.window.size(), QSize(320, 568));
    QCOMPARE(bench.overlay.engine()->maximumVisibleCount(), 24);
    bench.press(Qt::Key_P, true); // a held key does not flip back and forth
    QVERIFY(!bench.overlay.isPadIdiom());
    bench.press(Qt::Key_P);
    QVERIFY(bench.overlay.isPadIdiom());
    QCOMPARE(bench.window.size(), QSize(1024, 768));
    QVERIFY(bench.counters.property("text").toString().contains(QStringLiteral(" pad ")));
}

void TestZuviDanmakuPreviewPlayer::settingsFromOptions_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("error");

    QTest::newRow("none") << QStringList{} << "";
    QTest::newRow("look") << QStringList{"--opacity", "40", "--text-size", "160",
                                         "--speed",   "2",  "--area",      "three-quarters"}
                          << "";
    QTest::newRow("choice") << QStringList{"--hide",  "top,colored",
                                           "--block", "剧透",
                                           "--block", "/^2+$/",
                                           "--merge", "--merge-window",
                                           "8",       "--reduced-motion"}
                            << "";
    QTest::newRow("bad area") << QStringList{"--area", "most"} << "unknown area \"most\"";
    QTest::newRow("bad kind") << QStringList{"--hide", "top,side"} << "unknown kind \"side\"";
    QTest::newRow("no file") << QStringList{"--block-file", "/nonexistent/rules.txt"}
                             << "cannot read /nonexistent/rules.txt";
}

void TestZuviDanmakuPreviewPlayer::settingsFromOptions()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, error);

    QCommandLineParser parser;
    parser.addOptions(ZuviDanmakuPreviewOptions::options());
    QVERIFY(parser.parse(QStringList{"preview"} + arguments));
    ZuviDanmakuSettings settings;
    QString problem;
    QCOMPARE(ZuviDanmakuPreviewOptions::settingsFromParser(parser, &settings, &problem),
             error.isEmpty());
    QCOMPARE(problem, error);
    if (!error.isEmpty())
        return;
    // Each option lands in its own setting; the rest keep their defaults.
    ZuviDanmakuSettings expected;
    if (arguments.contains("--opacity")) {
        expected.opacityPercent = 40;
        expected.textScalePercent = 160;
        expected.speed = 2;
        expected.displayArea = ZuviDanmakuSettings::ThreeQuartersArea;
    }
    if (arguments.contains("--hide")) {
        expected.showsTop = false;
        expected.showsColored = false;
        expected.blockListText = QStringLiteral("剧透\n/^2+$/");
        expected.mergesRepeats = true;
        expected.mergeWindow = 8;
        expected.reducedMotion = true;
    }
    QCOMPARE(settings, expected);
}

QTEST_MAIN(TestZuviDanmakuPreviewPlayer)
#include "tst_zuvidanmakupreviewplayer.moc"
