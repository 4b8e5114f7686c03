// The overlay item in a real (offscreen) Qt Quick window: labels turn into
// textured nodes that show up in a grabbed frame, and the item asks for
// frames only while something moves.
#include "danmaku/zuvidanmakulabelpainter.h"
#include "danmaku/zuvidanmakuoverlayview.h"
#include "platform/zuvivirtualscheduler.h"

#include <QQmlComponent>
#include <QQmlEngine>
#include <QQmlExtensionPlugin>
#include <QQuickWindow>
#include <QtTest>

Q_IMPORT_QML_PLUGIN(ZuviPlugin)

namespace {

// Counts scene-graph syncs: one per frame in which the item was dirty.
class CountingOverlay : public ZuviDanmakuOverlayView
{
public:
    int syncs = 0;

protected:
    QSGNode *updatePaintNode(QSGNode *node, UpdatePaintNodeData *data) override
    {
        ++syncs;
        return ZuviDanmakuOverlayView::updatePaintNode(node, data);
    }
};

ZuviDanmakuItem item(double time, int mode, const QString &text, quint32 rgb = 0xFFFFFF)
{
    ZuviDanmakuItem made;
    made.text = text;
    made.time = time;
    made.mode = mode;
    made.fontSize = 20;
    made.colorRGB = rgb;
    return made;
}

// Pixels in the rectangle that are clearly lighter than the dark background.
int brightPixels(const QImage &image, const QRect &rect)
{
    int count = 0;
    const QRect clipped = rect.intersected(image.rect());
    for (int y = clipped.top(); y <= clipped.bottom(); ++y) {
        for (int x = clipped.left(); x <= clipped.right(); ++x) {
            if (qGray(image.pixel(x, y)) > 160)
                ++count;
        }
    }
    return count;
}

struct Scene {
    Scene()
    {
        window.setColor(QColor(20, 20, 40));
        window.resize(480, 320);
        overlay.setParentItem(window.contentItem());
        overlay.setSize(QSizeF(480, 320));
        overlay.engine()->setFlightClock([this] { return clock.now(); });
        overlay.engine()->setRandomSource([](quint32) { return 0u; });
        overlay.setPadIdiom(false);
        window.show();
    }

    QImage grab() { return window.grabWindow().convertToFormat(QImage::Format_RGB32); }
    QRect labelRect(int index) const
    {
        const ZuviDanmakuEngine *engine = overlay.engine();
        const ZuviDanmakuLabel &label = engine->visibleLabel(index);
        return QRectF(engine->currentPosition(label), label.size).toAlignedRect();
    }

    ZuviVirtualScheduler clock;
    QQuickWindow window;
    CountingOverlay overlay;
};

} // namespace

class TestZuviDanmakuOverlayView : public QObject
{
    Q_OBJECT

private slots:
    void painterStylesAndElides();
    void rendersLabelsAsTextures();
    void asksForFramesOnlyWhileMoving();
    void drawsWithVideoFramesWhileFollowingThem();
    void enabledSwitchHidesAndResets();
    void registeredInQml();
};

void TestZuviDanmakuOverlayView::painterStylesAndElides()
{
    ZuviDanmakuEngine engine;
    ZuviDanmakuLabel label;
    label.text = QStringLiteral("WWWW");
    label.fontSize = 20;
    label.color = 0xFFFFFFFF;
    label.size = engine.sizeForLabel(label, 0);
    QCOMPARE(ZuviDanmakuLabelPainter::displayedText(label), label.text);

    const QImage image = ZuviDanmakuLabelPainter::rasterise(label, 2.0);
    QCOMPARE(image.size(), (label.size * 2).toSize());
    // White text, and below-right of it the black shadow (alpha 0.88).
    int white = 0;
    int shadow = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QRgb pixel = image.pixel(x, y);
            white += qAlpha(pixel) > 200 && qGray(pixel) > 230;
            shadow += qAlpha(pixel) > 200 && qGray(pixel) < 30;
        }
    }
    QVERIFY(white > 40);
    QVERIFY(shadow > 10);
    QCOMPARE(QColor::fromRgba(image.pixel(image.width() - 1, 0)).alpha(), 0); // clear around

    // A text far wider than 0.86 × a 320 wide view is cut at the tail.
    label.text = QString(80, QChar(u'长'));
    label.size = engine.sizeForLabel(label, 0.86 * 320);
    QCOMPARE(label.size.width(), 0.86 * 320);
    const QString shown = ZuviDanmakuLabelPainter::displayedText(label);
    QVERIFY(shown.endsWith(QChar(0x2026)));
    QVERIFY(shown.size() < 40);
}

void TestZuviDanmakuOverlayView::rendersLabelsAsTextures()
{
    Scene scene;
    scene.overlay.setDanmakuItems({item(1.0, 5, QStringLiteral("顶部 WWW")),
                                   item(1.0, 1, QStringLiteral("滚动 WWWWW"), 0x000000)});
    scene.overlay.tickAtPlaybackTime(1.0, true);
    QCOMPARE(scene.overlay.visibleCount(), 2);
    scene.clock.advance(1.0);

    const QImage frame = scene.grab();
    if (frame.isNull())
        QSKIP("this platform cannot grab a scene-graph frame");
    const QRect top = scene.labelRect(0);
    const QRect scrolling = scene.labelRect(1);
    QCOMPARE(top.left(), int(std::floor((480 - top.width()) * 0.5))); // centred
    QVERIFY2(scrolling.left() < 480 && scrolling.right() > 0, "the scrolling label is on screen");
    // Both labels drew light text (the black one was made readable), and the
    // empty middle of the view stayed background.
    QVERIFY(brightPixels(frame, top) > 20);
    QVERIFY(brightPixels(frame, scrolling) > 20);
    QCOMPARE(brightPixels(frame, QRect(0, 120, 480, 60)), 0);

    // A second later the scrolling label has moved left and drawn there.
    scene.clock.advance(1.0);
    scene.overlay.tickAtPlaybackTime(2.0, true);
    const QRect moved = scene.labelRect(1);
    QVERIFY(moved.left() < scrolling.left());
    const QImage later = scene.grab();
    QVERIFY(brightPixels(later, moved) > 20);

    // When the flights end, their nodes go.
    scene.clock.advance(10);
    scene.overlay.tickAtPlaybackTime(2.12, true);
    QCOMPARE(scene.overlay.visibleCount(), 0);
    QCOMPARE(brightPixels(scene.grab(), QRect(0, 0, 480, 320)), 0);
}

void TestZuviDanmakuOverlayView::asksForFramesOnlyWhileMoving()
{
    Scene scene;
    scene.grab();
    const int idle = scene.overlay.syncs;
    // An empty overlay ticking and animating frames asks for nothing.
    scene.overlay.tickAtPlaybackTime(0.0, true);
    emit scene.window.afterAnimating();
    scene.grab();
    QCOMPARE(scene.overlay.syncs, idle);

    scene.overlay.setDanmakuItems({item(1.0, 1, QStringLiteral("移动"))});
    scene.overlay.tickAtPlaybackTime(1.0, true);
    scene.grab();
    QCOMPARE(scene.overlay.syncs, idle + 1);
    // While a label flies, every animated frame asks for the next one.
    for (int frame = 0; frame < 3; ++frame) {
        scene.clock.advance(1.0 / 60);
        emit scene.window.afterAnimating();
        scene.grab();
    }
    QCOMPARE(scene.overlay.syncs, idle + 4);

    // Paused: the frozen label needs no frames, whatever ticks and frames come.
    scene.overlay.tickAtPlaybackTime(1.12, false);
    QVERIFY(scene.overlay.isDanmakuPaused());
    for (int frame = 0; frame < 3; ++frame) {
        scene.clock.advance(1.0);
        scene.overlay.tickAtPlaybackTime(1.12, false);
        emit scene.window.afterAnimating();
        scene.grab();
    }
    QCOMPARE(scene.overlay.syncs, idle + 4);

    scene.overlay.tickAtPlaybackTime(1.12, true);
    scene.grab();
    QCOMPARE(scene.overlay.syncs, idle + 5);
}

void TestZuviDanmakuOverlayView::drawsWithVideoFramesWhileFollowingThem()
{
    Scene scene;
    scene.grab();
    const int idle = scene.overlay.syncs;
    scene.overlay.setDanmakuItems(
        {item(1.0, 1, QStringLiteral("跟随")), item(2.0, 5, QStringLiteral("顶部"))});
    scene.overlay.videoFrameShown();
    QVERIFY(scene.overlay.isFollowingVideoFrames());
    // A launch and animated frames between two pictures draw nothing.
    scene.overlay.tickAtPlaybackTime(1.0, true);
    QCOMPARE(scene.overlay.visibleCount(), 1);
    scene.clock.advance(1.0 / 60);
    emit scene.window.afterAnimating();
    scene.grab();
    QCOMPARE(scene.overlay.syncs, idle);
    // Each picture brings one frame, with what changed since the last.
    for (int picture = 1; picture <= 3; ++picture) {
        scene.clock.advance(1.0 / 25);
        scene.overlay.videoFrameShown();
        emit scene.window.afterAnimating();
        scene.grab();
        QCOMPARE(scene.overlay.syncs, idle + picture);
    }
    // Paused: the next picture shows where the labels stopped, and later
    // pictures (a seek's, say) ask for nothing.
    scene.clock.advance(1.0 / 60);
    emit scene.window.afterAnimating();
    scene.overlay.tickAtPlaybackTime(1.0, false);
    scene.grab();
    QCOMPARE(scene.overlay.syncs, idle + 3);
    scene.overlay.videoFrameShown();
    scene.grab();
    const int frozen = scene.overlay.syncs;
    QCOMPARE(frozen, idle + 4);
    for (int picture = 0; picture < 2; ++picture) {
        scene.overlay.videoFrameShown();
        scene.grab();
    }
    QCOMPARE(scene.overlay.syncs, frozen);
    // A launch held for a picture that never comes is drawn once following
    // stops, and from then on the overlay asks for its own frames.
    scene.overlay.tickAtPlaybackTime(2.0, true);
    QCOMPARE(scene.overlay.visibleCount(), 2);
    scene.grab();
    QCOMPARE(scene.overlay.syncs, frozen);
    scene.overlay.stopFollowingVideoFrames();
    QVERIFY(!scene.overlay.isFollowingVideoFrames());
    scene.grab();
    QCOMPARE(scene.overlay.syncs, frozen + 1);
    scene.clock.advance(1.0 / 60);
    emit scene.window.afterAnimating();
    scene.grab();
    QCOMPARE(scene.overlay.syncs, frozen + 2);
}

void TestZuviDanmakuOverlayView::enabledSwitchHidesAndResets()
{
    Scene scene;
    QSignalSpy enabledChanged(&scene.overlay, &ZuviDanmakuOverlayView::danmakuEnabledChanged);
    scene.overlay.setDanmakuItems(
        {item(1.0, 1, QStringLiteral("一")), item(3.0, 1, QStringLiteral("二"))});
    scene.overlay.tickAtPlaybackTime(1.0, true);
    QCOMPARE(scene.overlay.visibleCount(), 1);

    scene.overlay.setDanmakuEnabled(false);
    QVERIFY(!scene.overlay.isVisible());
    QCOMPARE(scene.overlay.visibleCount(), 0);
    scene.overlay.tickAtPlaybackTime(2.7, true); // only recorded
    QCOMPARE(scene.overlay.visibleCount(), 0);

    scene.overlay.setDanmakuEnabled(true);
    QVERIFY(scene.overlay.isVisible());
    scene.overlay.tickAtPlaybackTime(2.82, true);
    QCOMPARE(scene.overlay.visibleCount(), 1);
    QCOMPARE(scene.overlay.engine()->visibleLabel(0).text, QStringLiteral("二"));
    QCOMPARE(enabledChanged.count(), 2);
    QCOMPARE(scene.overlay.launchedCount(), 2);
}

void TestZuviDanmakuOverlayView::registeredInQml()
{
    QQmlEngine engine;
    QQmlComponent component(&engine);
    component.setData("import Zuvi\nZuviDanmakuOverlayView { width: 320; height: 200; "
                      "padIdiom: false }",
                      QUrl());
    std::unique_ptr<QObject> created(component.create());
    QVERIFY2(created, qPrintable(component.errorString()));
    auto *overlay = qobject_cast<ZuviDanmakuOverlayView *>(created.get());
    QVERIFY(overlay);
    QVERIFY(overlay->isDanmakuEnabled());
    QCOMPARE(overlay->engine()->maximumVisibleCount(), 24);
    QCOMPARE(overlay->engine()->scrollLaneCount(), 6);
}

QTEST_MAIN(TestZuviDanmakuOverlayView)
#include "tst_zuvidanmakuoverlayview.moc"
