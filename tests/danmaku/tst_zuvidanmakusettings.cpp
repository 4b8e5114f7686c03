// The viewer's danmaku settings: what the filter keeps, how repeats merge,
// how each look setting changes the engine's launches (and nothing else),
// the density counts, and the settings' round trip through the defaults.
// Engines run on the engine suite's virtual clocks (ZuviDanmakuEngineRig).
#include "danmaku/zuvidanmakudensity.h"
#include "danmaku/zuvidanmakufilter.h"
#include "zuvidanmakuenginerig.h"
#include "zuvitestsupport.h"

#include <QtTest>

namespace {

ZuviDanmakuItem item(double time, const QString &text = QStringLiteral("abcd"), int mode = 1,
                     quint32 rgb = 0xFFFFFF)
{
    ZuviDanmakuItem made;
    made.text = text;
    made.time = time;
    made.mode = mode;
    made.colorRGB = rgb;
    return made;
}

QStringList textsOf(const QList<ZuviDanmakuItem> &items)
{
    QStringList texts;
    for (const ZuviDanmakuItem &each : items)
        texts.append(each.text);
    return texts;
}

// A mixed document: every kind, colours, repeats, some never drawn.
QList<ZuviDanmakuItem> mixedDocument()
{
    QList<ZuviDanmakuItem> items;
    const int modes[] = {1, 1, 5, 4, 1, 7, 1, 5, 1, 4};
    for (int i = 0; i < 400; ++i)
        items.append(item(i * 0.1, QStringLiteral("t%1").arg(i % 13), modes[i % 10],
                          i % 3 ? 0xFFFFFF : 0xFF8000));
    return items;
}

using Rig = ZuviDanmakuEngineRig;

} // namespace

class TestZuviDanmakuSettings : public QObject
{
    Q_OBJECT

private slots:
    void blockRules_data();
    void blockRules();
    void invalidExpressionsReportedAndIgnored();
    void kinds_data();
    void kinds();
    void mergeWindow();
    void defaultsLaunchAsToday();
    void areaSharesLanes_data();
    void areaSharesLanes();
    void lookReachesLabels();
    void filteredItemsNeverLaunch();
    void reducedMotionStandsStill();
    void densityCounts();
    void persistenceRoundTrip();
};

void TestZuviDanmakuSettings::blockRules_data()
{
    QTest::addColumn<QString>("rules");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("blocked");

    QTest::newRow("word inside a text") << "剧透"
                                        << "前方剧透预警" << true;
    QTest::newRow("word in any case") << "AWSL"
                                      << "awsl!!" << true;
    QTest::newRow("one of several lines") << "a1\n  \nzz  \nb2"
                                          << "xxzzxx" << true;
    QTest::newRow("expression as written") << "/^[0-9]+$/"
                                           << "2333" << true;
    QTest::newRow("expression not found") << "/^[0-9]+$/"
                                          << "2333a" << false;
    QTest::newRow("expression keeps its case") << "/ABC/"
                                               << "abc" << false;
    QTest::newRow("a lone slash is a word") << "/"
                                            << "a/b" << true;
    // Expressions share one pass unless they refer to their own groups.
    QTest::newRow("back reference beside a group") << "/(哈){2}/\n/(.)\\1{3}/"
                                                   << "xxxx" << true;
    QTest::newRow("back reference not fooled") << "/(哈){2}/\n/(.)\\1{3}/"
                                               << "哈x哈x" << false;
    QTest::newRow("groups named alike") << "/(?<a>x)y/\n/(?<a>z)w/"
                                        << "zw" << true;
    QTest::newRow("broken expression ignored, others work") << "/(/\nfoo"
                                                            << "foo" << true;
}

void TestZuviDanmakuSettings::blockRules()
{
    QFETCH(QString, rules);
    QFETCH(QString, text);
    QFETCH(bool, blocked);

    QCOMPARE(ZuviDanmakuBlockList(rules).blocks(text), blocked);
    // The filter agrees, and lets everything else through.
    ZuviDanmakuSettings settings;
    settings.blockListText = rules;
    const QList<ZuviDanmakuItem> shown =
        ZuviDanmakuFilter(settings).apply({item(1, text), item(2, QStringLiteral("fine"))});
    const QStringList expected = blocked ? QStringList{"fine"} : QStringList{text, "fine"};
    QCOMPARE(textsOf(shown), expected);
}

void TestZuviDanmakuSettings::invalidExpressionsReportedAndIgnored()
{
    const ZuviDanmakuBlockList list(QStringLiteral("ok\n/[abc/\n/good/\n//\n/[abc/"));
    QCOMPARE(list.keywordCount(), 1);
    QCOMPARE(list.expressionCount(), 1);
    QCOMPARE(list.problems().size(), 2); // the repeat of line 2 is not reported twice
    QCOMPARE(list.problems().at(0).line, 2);
    QCOMPARE(list.problems().at(1).line, 4);
    const QString text = list.problemText();
    QVERIFY2(text.contains(QStringLiteral("第 2 行")) && text.contains(QStringLiteral("[abc")) &&
                 text.contains(QStringLiteral("不是有效的正则表达式")),
             qPrintable(text));
    QVERIFY(text.contains(QStringLiteral("第 4 行")) && text.contains(QStringLiteral("空")));
    QVERIFY(ZuviDanmakuBlockList::problemWithRule(QStringLiteral("/a(b/")).contains("第 4 个字符"));
    QVERIFY(ZuviDanmakuBlockList::problemWithRule(QStringLiteral("plain [")).isEmpty());
}

void TestZuviDanmakuSettings::kinds_data()
{
    QTest::addColumn<QString>("hidden");
    QTest::addColumn<QStringList>("shown");

    // Items: s scrolling white, c scrolling orange, t top, b bottom, n never drawn.
    QTest::newRow("no scrolling") << "scrolling" << QStringList{"t", "b", "n"};
    QTest::newRow("no top") << "top" << QStringList{"s", "c", "b", "n"};
    QTest::newRow("no colours") << "colored" << QStringList{"s", "t", "b", "n"};
}

void TestZuviDanmakuSettings::kinds()
{
    QFETCH(QString, hidden);
    QFETCH(QStringList, shown);

    ZuviDanmakuSettings settings;
    settings.showsScrolling = hidden != "scrolling";
    settings.showsTop = hidden != "top";
    settings.showsBottom = hidden != "bottom";
    settings.showsColored = hidden != "colored";
    const QList<ZuviDanmakuItem> items = {item(1, "s"), item(2, "c", 1, 0xFF8000), item(3, "t", 5),
                                          item(4, "b", 4), item(5, "n", 7)};
    QCOMPARE(textsOf(ZuviDanmakuFilter(settings).apply(items)), shown);
}

void TestZuviDanmakuSettings::mergeWindow()
{
    ZuviDanmakuSettings settings;
    settings.mergesRepeats = true; // window 5 s
    settings.blockListText = QStringLiteral("blocked");
    const QList<ZuviDanmakuItem> items = {
        item(10.0, "233"),     item(11.0, "other"),   item(12.0, " 233 "),
        item(14.0, "blocked"), item(14.5, "blocked"), item(15.0, "233"), // 5 s after: merges
        item(15.01, "233"),                                              // starts a new run
        item(16.0, "other"),   item(30.0, "single"),
    };
    const QList<ZuviDanmakuItem> shown = ZuviDanmakuFilter(settings).apply(items);
    QCOMPARE(textsOf(shown), (QStringList{"233 ×3", "other ×2", "233", "single"}));
    QCOMPARE(shown.at(0).time, 10.0); // a run shows at its first item
    QCOMPARE(shown.at(2).time, 15.01);

    settings.mergeWindow = 20;
    QCOMPARE(textsOf(ZuviDanmakuFilter(settings).apply(items)),
             (QStringList{"233 ×4", "other ×2", "single"}));
    settings.mergesRepeats = false;
    QCOMPARE(ZuviDanmakuFilter(settings).apply(items).size(), 7);
}

// Today's overlay and the overlay at default settings launch the same items
// in the same places, also after every control was moved and moved back.
void TestZuviDanmakuSettings::defaultsLaunchAsToday()
{
    const QList<ZuviDanmakuItem> items = mixedDocument();
    Rig today;
    today.engine.setDanmakuItems(items);
    const QStringList expected = today.play(0, 30);
    QVERIFY(expected.size() > 50);

    Rig moved;
    moved.engine.setDanmakuItems(items);
    ZuviDanmakuSettings everything;
    everything.opacityPercent = 30;
    everything.textScalePercent = 150;
    everything.speed = 2;
    everything.displayArea = ZuviDanmakuSettings::QuarterArea;
    everything.showsTop = false;
    everything.mergesRepeats = true;
    everything.reducedMotion = true;
    everything.blockListText = QStringLiteral("t1");
    QVERIFY(moved.engine.setDanmakuSettings(everything));
    QVERIFY(moved.engine.danmakuItems().size() < items.size());
    QVERIFY(moved.engine.setDanmakuSettings(ZuviDanmakuSettings()));
    QCOMPARE(moved.play(0, 30), expected);
    // At the defaults the shown list is the loaded one, not a copy.
    QVERIFY(moved.engine.danmakuItems().isSharedWith(items));
}

void TestZuviDanmakuSettings::areaSharesLanes_data()
{
    QTest::addColumn<qreal>("height");
    QTest::addColumn<int>("area");
    QTest::addColumn<int>("scroll");
    QTest::addColumn<int>("fixed");

    QTest::newRow("pad full") << 768.0 << 4 << 14 << 3;
    QTest::newRow("pad quarter") << 768.0 << 1 << 3 << 1;
    QTest::newRow("200 half") << 200.0 << 2 << 3 << 1;
    QTest::newRow("100 quarter keeps one") << 100.0 << 1 << 1 << 1;
}

void TestZuviDanmakuSettings::areaSharesLanes()
{
    QFETCH(qreal, height);
    QFETCH(int, area);
    QFETCH(int, scroll);
    QFETCH(int, fixed);

    Rig rig(QSizeF(1024, height));
    ZuviDanmakuSettings settings;
    settings.displayArea = area;
    rig.engine.setDanmakuSettings(settings);
    QCOMPARE(rig.engine.scrollLaneCount(), scroll);
    QCOMPARE(rig.engine.fixedLaneCount(), fixed);

    // Every label, bottom ones included, stays inside the lanes of the area.
    QList<ZuviDanmakuItem> items;
    for (int i = 0; i < 60; ++i)
        items.append(item(i * 0.05, QStringLiteral("x"), i % 3 == 0 ? 4 : i % 3 == 1 ? 5 : 1));
    rig.engine.setDanmakuItems(items);
    rig.play(0, 3);
    const qreal bandBottom = 8 + scroll * 23.0;
    QVERIFY(rig.engine.visibleLabelCount() > 0);
    for (int i = 0; i < rig.engine.visibleLabelCount(); ++i) {
        const ZuviDanmakuLabel &label = rig.engine.visibleLabel(i);
        if (area < 4)
            QVERIFY2(label.origin.y() + label.size.height() <= bandBottom, qPrintable(label.text));
    }
}

void TestZuviDanmakuSettings::lookReachesLabels()
{
    Rig plain(QSizeF(600, 300));
    Rig styled(QSizeF(600, 300));
    ZuviDanmakuSettings settings;
    settings.opacityPercent = 40;
    settings.textScalePercent = 150;
    settings.speed = 2;
    styled.engine.setDanmakuSettings(settings);
    for (Rig *rig : {&plain, &styled}) {
        rig->engine.setDanmakuItems({item(1.0, QStringLiteral("abcdefghij")), item(1.0, "top", 5)});
        rig->engine.tickAtPlaybackTime(1.0, true);
        QCOMPARE(rig->engine.visibleLabelCount(), 2);
    }
    const ZuviDanmakuLabel &before = plain.engine.visibleLabel(0);
    const ZuviDanmakuLabel &after = styled.engine.visibleLabel(0);
    QCOMPARE(after.fontSize, before.fontSize * 1.5);
    QCOMPARE(after.size.height(), before.size.height() + 8); // measured 16 → 24 points high
    QCOMPARE(styled.engine.lanePitch(), 34.5);
    // Twice as fast takes half as long; the clamps still bound today's duration.
    QCOMPARE(before.duration, 708.0 / 88);
    QCOMPARE(after.duration, 708.0 / 88 / 2);
    QCOMPARE(styled.engine.currentOpacity(after), 0.4 * plain.engine.currentOpacity(before));
    QCOMPARE(styled.engine.currentOpacity(styled.engine.visibleLabel(1)), 0.0); // still fading in
    styled.clock.advance(1);
    QCOMPARE(styled.engine.currentOpacity(styled.engine.visibleLabel(1)), 0.4);

    // Opacity reaches labels already flying; nothing restarts for it.
    settings.opacityPercent = 100;
    QVERIFY(!styled.engine.setDanmakuSettings(settings));
    QCOMPARE(styled.engine.visibleLabelCount(), 2);
    QCOMPARE(styled.engine.currentOpacity(styled.engine.visibleLabel(1)), 1.0);
}

void TestZuviDanmakuSettings::filteredItemsNeverLaunch()
{
    Rig rig;
    rig.engine.setDanmakuItems(mixedDocument());
    ZuviDanmakuSettings settings;
    settings.showsBottom = false;
    settings.blockListText = QStringLiteral("/^t1[0-2]$/\n/(/");
    settings.mergesRepeats = true;
    rig.engine.setDanmakuSettings(settings);
    QCOMPARE(rig.engine.blockList().problems().size(), 1);
    QCOMPARE(rig.engine.sourceDanmakuItems().size(), 400);
    const QStringList launches = rig.play(0, 30);
    QVERIFY(launches.size() > 20);
    for (const QString &launch : launches) {
        const QString text = launch.section('@', 0, 0);
        QVERIFY2(!QRegularExpression("^t1[0-2]").match(text).hasMatch(), qPrintable(launch));
        QVERIFY2(text.contains(QStringLiteral(" ×")), qPrintable(launch)); // every t-text repeats
    }
    for (const ZuviDanmakuItem &shown : rig.engine.danmakuItems())
        QVERIFY(shown.mode != 4);
    // A merged item launches once: no text appears twice within the window.
    QVERIFY(launches.filter(QRegularExpression("^t3 ×")).size() <= 30 / 5 + 1);
}

void TestZuviDanmakuSettings::reducedMotionStandsStill()
{
    Rig rig(QSizeF(400, 200)); // 6 scroll lanes, 3 fixed lanes each side
    ZuviDanmakuSettings settings;
    settings.reducedMotion = true;
    rig.engine.setDanmakuSettings(settings);
    QList<ZuviDanmakuItem> items;
    for (int i = 0; i < 8; ++i)
        items.append(item(1.0, QStringLiteral("m%1").arg(i)));
    rig.engine.setDanmakuItems(items);
    rig.engine.tickAtPlaybackTime(1.0, true);

    // Three top lanes fill first, then the three bottom ones; the rest wait for nobody.
    QCOMPARE(rig.engine.visibleLabelCount(), 6);
    QCOMPARE(rig.engine.counters().droppedNoLane, quint64(2));
    QList<QPointF> origins;
    for (int i = 0; i < 6; ++i) {
        const ZuviDanmakuLabel &label = rig.engine.visibleLabel(i);
        QCOMPARE(label.flight, ZuviDanmakuLabel::Fixed);
        // Top lanes end at 8 + 3 × 23 = 77; bottom ones start at 200 - 46 - 69 = 85.
        QVERIFY2((i < 3) == (label.origin.y() < 80), qPrintable(label.text));
        origins.append(rig.engine.currentPosition(label));
    }
    rig.clock.advance(2);
    for (int i = 0; i < 6; ++i) {
        QCOMPARE(rig.engine.currentPosition(rig.engine.visibleLabel(i)), origins.at(i));
        QCOMPARE(rig.engine.currentOpacity(rig.engine.visibleLabel(i)), 1.0);
    }
    QCOMPARE(rig.engine.scrollLaneAvailableTimes(), std::vector<double>(6, 0.0));

    // On a larger screen the still lanes take the scrolling lanes' room.
    Rig pad;
    QCOMPARE(pad.engine.fixedLaneCount(), 3);
    pad.engine.setDanmakuSettings(settings);
    QCOMPARE(pad.engine.fixedLaneCount(), 7);
}

void TestZuviDanmakuSettings::densityCounts()
{
    QList<ZuviDanmakuItem> items = {
        item(0), item(9.9), item(10), item(35), item(99.9), item(150), item(50, "hidden", 7)};
    QCOMPARE(ZuviDanmakuDensity::countsPerSlice(items, 100, 10),
             (QVector<int>{2, 1, 0, 1, 0, 0, 0, 0, 0, 2}));
    // Unknown duration: the last item ends the graph.
    QCOMPARE(ZuviDanmakuDensity::countsPerSlice(items, 0, 3), (QVector<int>{3, 0, 3}));
    QVERIFY(ZuviDanmakuDensity::countsPerSlice({}, 100, 10).isEmpty());
    QVERIFY(ZuviDanmakuDensity::countsPerSlice({item(5, "x", 8)}, 100, 10).isEmpty());
}

void TestZuviDanmakuSettings::persistenceRoundTrip()
{
    ZuviScratchDefaults scratch;
    QCOMPARE(ZuviDanmakuSettings::fromDefaults(*scratch.get()), ZuviDanmakuSettings());

    ZuviDanmakuSettings settings;
    settings.opacityPercent = 55;
    settings.textScalePercent = 175;
    settings.speed = 1.25;
    settings.displayArea = ZuviDanmakuSettings::ThreeQuartersArea;
    settings.showsScrolling = false;
    settings.showsColored = false;
    settings.blockListText = QStringLiteral("剧透\n/^2{3,}$/");
    settings.mergesRepeats = true;
    settings.mergeWindow = 8;
    settings.reducedMotion = true;
    settings.saveToDefaults(*scratch.get());
    ZuviDefaults reopened(scratch.get()->filePath());
    QCOMPARE(ZuviDanmakuSettings::fromDefaults(reopened), settings);

    // Values from elsewhere (an older build, a hand edit) come back in range.
    reopened.setObject(5, ZuviDanmakuSettings::opacityKey);
    reopened.setObject(900, ZuviDanmakuSettings::textScaleKey);
    reopened.setObject("fast", ZuviDanmakuSettings::speedKey);
    reopened.setObject(9, ZuviDanmakuSettings::displayAreaKey);
    const ZuviDanmakuSettings clamped = ZuviDanmakuSettings::fromDefaults(reopened);
    QCOMPARE(clamped.opacityPercent, 20);
    QCOMPARE(clamped.textScalePercent, 200);
    QCOMPARE(clamped.speed, 0.5);
    QCOMPARE(clamped.displayArea, int(ZuviDanmakuSettings::FullArea));
}

QTEST_GUILESS_MAIN(TestZuviDanmakuSettings)
#include "tst_zuvidanmakusettings.moc"
