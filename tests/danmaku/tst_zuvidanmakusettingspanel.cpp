// The settings panel's controller, an overlay that follows the stored
// settings live, the density graph in a real (offscreen) window, and the
// panel's QML loading against a scratch store.
#include "danmaku/zuvidanmakudensitygraph.h"
#include "danmaku/zuvidanmakuoverlayview.h"
#include "danmaku/zuvidanmakusettingscontroller.h"
#include "platform/zuvinotificationcenter.h"
#include "zuvitestsupport.h"

#include <QQmlComponent>
#include <QQmlEngine>
#include <QQmlExtensionPlugin>
#include <QQuickWindow>
#include <QSignalSpy>
#include <QtTest>

Q_IMPORT_QML_PLUGIN(ZuviPlugin)

namespace {

ZuviDanmakuItem item(double time, int mode = 1, const QString &text = QStringLiteral("弹幕"))
{
    ZuviDanmakuItem made;
    made.text = text;
    made.time = time;
    made.mode = mode;
    return made;
}

QList<ZuviDanmakuItem> document()
{
    QList<ZuviDanmakuItem> items;
    for (int i = 0; i < 100; ++i)
        items.append(item(i * 0.5, i % 2 ? 5 : 1));
    return items;
}

int postsOf(const QSignalSpy &spy)
{
    int posts = 0;
    for (const QList<QVariant> &call : spy)
        posts += call.at(0).toString() == ZuviDanmakuSettings::didChangeNotification;
    return posts;
}

} // namespace

class TestZuviDanmakuSettingsPanel : public QObject
{
    Q_OBJECT

private slots:
    void controllerClampsStoresAndAnnounces();
    void blockListImportAndExport();
    void overlayFollowsStoredSettings();
    void densityGraphDrawsOnlyOnChange();
    void panelLoads();
};

void TestZuviDanmakuSettingsPanel::controllerClampsStoresAndAnnounces()
{
    ZuviScratchDefaults scratch;
    ZuviNotificationCenter center;
    QSignalSpy posted(&center, &ZuviNotificationCenter::notificationPosted);
    ZuviDanmakuSettingsController controller(scratch.get(), &center);
    QSignalSpy changed(&controller, &ZuviDanmakuSettingsController::settingsChanged);

    controller.setOpacityPercent(5);
    controller.setSpeed(3);
    controller.setDisplayArea(ZuviDanmakuSettings::HalfArea);
    controller.setShowsColored(false);
    QCOMPARE(controller.opacityPercent(), 20);
    QCOMPARE(controller.speed(), 2.0);
    QCOMPARE(changed.count(), 4);
    QCOMPARE(postsOf(posted), 4);
    controller.setOpacityPercent(20); // unchanged: stored and announced once only
    QCOMPARE(postsOf(posted), 4);

    const ZuviDanmakuSettings stored = ZuviDanmakuSettings::fromDefaults(*scratch.get());
    QCOMPARE(stored, controller.settings());
    QCOMPARE(stored.displayArea, int(ZuviDanmakuSettings::HalfArea));

    // A second panel sees the first one's changes through the notification.
    ZuviDanmakuSettingsController other(scratch.get(), &center);
    controller.setTextScalePercent(150);
    QCOMPARE(other.textScalePercent(), 150);

    controller.setBlockListText(QStringLiteral("词\n/(/\n/^a/"));
    QCOMPARE(controller.blockListSummary(), QStringLiteral("1 个关键词，1 个正则表达式"));
    QVERIFY(controller.blockListProblems().startsWith(QStringLiteral("第 2 行")));
    controller.resetToDefaults();
    QCOMPARE(ZuviDanmakuSettings::fromDefaults(*scratch.get()), ZuviDanmakuSettings());
    QVERIFY(controller.blockListProblems().isEmpty());
}

void TestZuviDanmakuSettingsPanel::blockListImportAndExport()
{
    ZuviScratchDefaults scratch;
    ZuviNotificationCenter center;
    ZuviDanmakuSettingsController controller(scratch.get(), &center);
    controller.setBlockListText(QStringLiteral("旧词"));

    const QString path = scratch.dir.filePath("rules.txt");
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("剧透\r\n旧词\n\n/[/\n/^2+$/\n  awsl  \n");
    file.close();
    QVERIFY(controller.importBlockList(QUrl::fromLocalFile(path)));
    QCOMPARE(controller.blockListText(), QStringLiteral("旧词\n剧透\n/^2+$/\nawsl"));
    QVERIFY2(controller.statusText().startsWith(QStringLiteral("已导入 3 条规则，拒绝 1 条")) &&
                 controller.statusText().contains(QStringLiteral("“/[/”")),
             qPrintable(controller.statusText()));
    QCOMPARE(ZuviDanmakuSettings::fromDefaults(*scratch.get()).blockListText,
             controller.blockListText());

    const QString out = scratch.dir.filePath("out/exported.txt");
    QVERIFY(!controller.exportBlockList(QUrl::fromLocalFile(out))); // no such folder
    QVERIFY(controller.statusText().startsWith(QStringLiteral("无法写入")));
    QVERIFY(QDir().mkpath(scratch.dir.filePath("out")));
    QVERIFY(controller.exportBlockList(QUrl::fromLocalFile(out)));
    QFile exported(out);
    QVERIFY(exported.open(QIODevice::ReadOnly));
    QCOMPARE(QString::fromUtf8(exported.readAll()), controller.blockListText() + "\n");

    QVERIFY(!controller.importBlockList(QUrl::fromLocalFile(scratch.dir.filePath("none.txt"))));
    QVERIFY(controller.statusText().startsWith(QStringLiteral("无法读取")));
}

void TestZuviDanmakuSettingsPanel::overlayFollowsStoredSettings()
{
    ZuviScratchDefaults scratch;
    ZuviNotificationCenter center;
    ZuviDanmakuSettingsController controller(scratch.get(), &center);
    controller.setOpacityPercent(60); // stored before the overlay exists

    auto *overlay = new ZuviDanmakuOverlayView;
    overlay->setSize(QSizeF(480, 320));
    overlay->followStoredSettings(scratch.get(), &center);
    QCOMPARE(overlay->danmakuOpacity(), 0.6);
    overlay->setDanmakuItems(document());
    ZuviDanmakuDensityGraph graph;
    graph.setOverlay(overlay);
    graph.setSliceCount(10);
    QCOMPARE(graph.counts().value(0), 10);
    QSignalSpy listChanged(overlay, &ZuviDanmakuOverlayView::danmakuItemsChanged);

    controller.setShowsTop(false); // half the items are top ones
    QCOMPARE(listChanged.count(), 1);
    QCOMPARE(overlay->itemCount(), 50);
    QCOMPARE(graph.counts().value(0), 5);
    controller.setOpacityPercent(80); // the look alone keeps the list
    QCOMPARE(listChanged.count(), 1);
    QCOMPARE(overlay->danmakuOpacity(), 0.8);

    // The overlay goes (its screen was closed); later changes reach nobody.
    delete overlay;
    QVERIFY(!graph.hasData());
    QCOMPARE(graph.peakTime(), -1.0);
    controller.setShowsTop(true);
    controller.setOpacityPercent(30);
    QCOMPARE(controller.opacityPercent(), 30);
}

void TestZuviDanmakuSettingsPanel::densityGraphDrawsOnlyOnChange()
{
    QQuickWindow window;
    window.resize(400, 60);
    ZuviDanmakuDensityGraph graph(window.contentItem());
    graph.setSize(QSizeF(400, 40));
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QVERIFY(!graph.isVisible()); // nothing to show yet
    QCOMPARE(graph.peakTime(), -1.0);

    QList<ZuviDanmakuItem> items = document();
    for (int i = 0; i < 30; ++i)
        items.insert(60, item(30.1, 1)); // a burst at 30 s
    graph.setSliceCount(50);
    graph.setDanmakuItems(items);
    QVERIFY(graph.isVisible());
    // 50 slices of the 49.5 s up to the last item: the burst fills slice 30.
    QCOMPARE(graph.peakTime(), 30.5 * 49.5 / 50);
    window.grabWindow();
    QCOMPARE(graph.geometryBuildCount(), 1);
    // Frames without a change leave the geometry alone.
    for (int i = 0; i < 3; ++i) {
        window.update();
        window.grabWindow();
    }
    QCOMPARE(graph.geometryBuildCount(), 1);
    graph.setSize(QSizeF(300, 40));
    window.grabWindow();
    QCOMPARE(graph.geometryBuildCount(), 2);

    graph.setDanmakuItems({});
    QVERIFY(!graph.isVisible());
}

void TestZuviDanmakuSettingsPanel::panelLoads()
{
    ZuviScratchDefaults scratch;
    ZuviNotificationCenter center;
    ZuviDanmakuSettingsController controller(scratch.get(), &center);
    QQmlEngine engine;
    // Qt 6.4 keeps the module's qmldir under :/Zuvi/, outside the default paths.
    engine.addImportPath(QStringLiteral("qrc:/"));
    QQmlComponent component(&engine);
    component.setData("import QtQuick\nimport Zuvi\nDanmakuSettingsPanel {}", QUrl());
    QVERIFY2(component.isReady(), qPrintable(component.errorString()));
    std::unique_ptr<QObject> panel(
        component.createWithInitialProperties({{"controller", QVariant::fromValue(&controller)}}));
    QVERIFY2(panel, qPrintable(component.errorString()));
    QObject *editor = panel->findChild<QObject *>("blockEditor");
    QVERIFY(editor);
    controller.setBlockListText(QStringLiteral("剧透"));
    QCOMPARE(editor->property("text").toString(), QStringLiteral("剧透"));
}

QTEST_MAIN(TestZuviDanmakuSettingsPanel)
#include "tst_zuvidanmakusettingspanel.moc"
