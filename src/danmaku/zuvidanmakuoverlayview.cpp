#include "zuvidanmakuoverlayview.h"

#include "zuvidanmakulabelnode.h"
#include "zuvidanmakulabelpainter.h"
#include "zuvidesktopmotion.h"

#include "platform/zuvidefaults.h"
#include "platform/zuvinotificationcenter.h"

#include <QQuickWindow>
#include <QSGNode>
#include <QSGTexture>

#include <cmath>

ZuviDanmakuOverlayView::ZuviDanmakuOverlayView(QQuickItem *parent) : QQuickItem(parent)
{
    // Transparent, clipped to its bounds and deaf to input: the movie and
    // its controls underneath keep every touch.
    setFlag(ItemHasContents, true);
    setClip(true);
    setAcceptedMouseButtons(Qt::NoButton);
    setAcceptTouchEvents(false);
}

ZuviDanmakuOverlayView::~ZuviDanmakuOverlayView()
{
    QObject::disconnect(m_frameConnection);
}

void ZuviDanmakuOverlayView::setDanmakuSettings(const ZuviDanmakuSettings &settings)
{
    ZuviDanmakuSettings applied = settings;
    applied.reducedMotion = settings.reducedMotion || ZuviDesktopMotion::prefersReducedMotion();
    if (applied.clamped() == m_engine.danmakuSettings())
        return;
    const bool listChanged = m_engine.setDanmakuSettings(applied);
    // Opacity reaches labels already in flight: their nodes are placed anew.
    update();
    afterStateChange();
    emit danmakuSettingsChanged();
    if (listChanged)
        emit danmakuItemsChanged();
}

void ZuviDanmakuOverlayView::followStoredSettings()
{
    followStoredSettings(ZuviDefaults::standardDefaults(), ZuviNotificationCenter::defaultCenter());
}

void ZuviDanmakuOverlayView::followStoredSettings(ZuviDefaults *defaults,
                                                  ZuviNotificationCenter *center)
{
    m_settingsDefaults = defaults;
    applyStoredSettings();
    if (m_settingsObservation == 0)
        // Observing with the overlay as observer ends with the overlay.
        m_settingsObservation =
            center->addObserver(QString::fromLatin1(ZuviDanmakuSettings::didChangeNotification),
                                this, [this](const ZuviNotification &) { applyStoredSettings(); });
}

void ZuviDanmakuOverlayView::applyStoredSettings()
{
    if (m_settingsDefaults)
        setDanmakuSettings(ZuviDanmakuSettings::fromDefaults(*m_settingsDefaults));
}

void ZuviDanmakuOverlayView::setDanmakuEnabled(bool enabled)
{
    const bool changed = enabled != m_engine.isDanmakuEnabled();
    m_engine.setDanmakuEnabled(enabled);
    setVisible(enabled);
    afterStateChange();
    if (changed)
        emit danmakuEnabledChanged();
}

void ZuviDanmakuOverlayView::setPadIdiom(bool pad)
{
    const ZuviIdiom::Kind kind = pad ? ZuviIdiom::Pad : ZuviIdiom::Phone;
    if (kind == m_engine.idiom())
        return;
    m_engine.setIdiom(kind);
    afterStateChange();
    emit padIdiomChanged();
}

void ZuviDanmakuOverlayView::setDanmakuItems(const QList<ZuviDanmakuItem> &items)
{
    m_engine.setDanmakuItems(items);
    afterStateChange();
    emit danmakuItemsChanged();
}

void ZuviDanmakuOverlayView::tickAtPlaybackTime(double playbackTime, bool playing)
{
    m_engine.tickAtPlaybackTime(playbackTime, playing);
    afterStateChange();
}

void ZuviDanmakuOverlayView::resetForPlaybackTime(double playbackTime)
{
    m_engine.resetForPlaybackTime(playbackTime);
    afterStateChange();
}

void ZuviDanmakuOverlayView::clearVisibleDanmaku()
{
    m_engine.clearVisibleDanmaku();
    afterStateChange();
}

void ZuviDanmakuOverlayView::setDanmakuPaused(bool paused)
{
    m_engine.setDanmakuPaused(paused);
    afterStateChange();
}

QString ZuviDanmakuOverlayView::debugStateTextForPlaybackTime(double playbackTime,
                                                              bool playing) const
{
    return m_engine.debugStateTextForPlaybackTime(playbackTime, playing);
}

qint64 ZuviDanmakuOverlayView::droppedCount() const
{
    const ZuviDanmakuEngine::Counters &counters = m_engine.counters();
    return qint64(counters.droppedByCap + counters.droppedNoLane);
}

// Asks for a frame only when the picture can differ from the last one: labels
// in flight, or a change in which labels are shown. A paused overlay with
// frozen labels, or an empty one, asks for nothing.
void ZuviDanmakuOverlayView::afterStateChange()
{
    const int count = m_engine.visibleLabelCount();
    const quint64 newest = count > 0 ? m_engine.visibleLabel(count - 1).serial : 0;
    const quint64 launched = m_engine.counters().launched;
    const bool changed = count != m_shownCount || newest != m_shownNewest;
    if (m_engine.isAnimating() || changed)
        requestFrame();
    if (changed || launched != m_reportedLaunched || droppedCount() != m_reportedDropped ||
        m_engine.isDanmakuPaused() != m_reportedPaused) {
        m_shownCount = count;
        m_shownNewest = newest;
        m_reportedLaunched = launched;
        m_reportedDropped = droppedCount();
        m_reportedPaused = m_engine.isDanmakuPaused();
        emit countersChanged();
    }
}

void ZuviDanmakuOverlayView::requestFrame()
{
    if (m_followsVideoFrames)
        m_frameHeldForVideo = true;
    else
        update();
}

void ZuviDanmakuOverlayView::videoFrameShown()
{
    m_followsVideoFrames = true;
    drawHeldFrame();
}

void ZuviDanmakuOverlayView::stopFollowingVideoFrames()
{
    if (!m_followsVideoFrames)
        return;
    m_followsVideoFrames = false;
    drawHeldFrame();
}

// A change held for a picture, or labels still moving, need this frame.
void ZuviDanmakuOverlayView::drawHeldFrame()
{
    if (m_frameHeldForVideo || m_engine.isAnimating())
        update();
    m_frameHeldForVideo = false;
}

// Runs on the main thread once per rendered frame: flights that ended leave
// the engine, and the next frame is asked for while something still moves.
void ZuviDanmakuOverlayView::frameAnimated()
{
    m_engine.completeFinishedFlights();
    afterStateChange();
}

void ZuviDanmakuOverlayView::watchWindow(QQuickWindow *window)
{
    QObject::disconnect(m_frameConnection);
    if (!window)
        return;
    m_devicePixelRatio = window->effectiveDevicePixelRatio();
    m_frameConnection = connect(window, &QQuickWindow::afterAnimating, this,
                                &ZuviDanmakuOverlayView::frameAnimated);
}

void ZuviDanmakuOverlayView::geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry)
{
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    if (newGeometry.size() != oldGeometry.size()) {
        m_engine.setViewSize(newGeometry.size());
        afterStateChange();
    }
}

void ZuviDanmakuOverlayView::itemChange(ItemChange change, const ItemChangeData &value)
{
    QQuickItem::itemChange(change, value);
    switch (change) {
    case ItemVisibleHasChanged:
        m_engine.setHidden(!value.boolValue);
        break;
    case ItemSceneChange:
        watchWindow(value.window);
        break;
    case ItemDevicePixelRatioHasChanged:
        m_devicePixelRatio = value.realValue;
        break;
    default:
        break;
    }
}

// The text is rasterised here, once for each node, and the picture goes as
// soon as its texture holds it: forty labels in flight would otherwise keep
// a second copy of every one of them. A label whose node is made again (the
// overlay moved to the fullscreen window) is simply rasterised again.
ZuviDanmakuLabelNode *ZuviDanmakuOverlayView::createLabelNode(const ZuviDanmakuLabel &label)
{
    QSGTexture *texture = nullptr;
    const QImage image = ZuviDanmakuLabelPainter::rasterise(label, m_devicePixelRatio);
    if (!image.isNull())
        texture = window()->createTextureFromImage(
            image, QQuickWindow::CreateTextureOptions(QQuickWindow::TextureHasAlphaChannel |
                                                      QQuickWindow::TextureCanUseAtlas));
    return new ZuviDanmakuLabelNode(label.serial, texture, label.size);
}

void ZuviDanmakuOverlayView::placeLabelNode(ZuviDanmakuLabelNode *node,
                                            const ZuviDanmakuLabel &label) const
{
    // Whole device pixels keep the text as crisp as it was rasterised.
    const QPointF position = m_engine.currentPosition(label);
    const qreal ratio = m_devicePixelRatio > 0 ? m_devicePixelRatio : 1;
    node->place(std::round(position.x() * ratio) / ratio, std::round(position.y() * ratio) / ratio,
                m_engine.currentOpacity(label));
}

// Labels and their nodes are both in launch order, and serials grow with
// every launch, so one walk pairs them: nodes of labels that left are
// dropped, nodes for new labels are made once, the rest are only moved.
QSGNode *ZuviDanmakuOverlayView::updatePaintNode(QSGNode *oldNode, UpdatePaintNodeData *)
{
    QSGNode *root = oldNode ? oldNode : new QSGNode;
    auto *child = static_cast<ZuviDanmakuLabelNode *>(root->firstChild());
    const int count = m_engine.visibleLabelCount();
    for (int i = 0; i < count; ++i) {
        const ZuviDanmakuLabel &label = m_engine.visibleLabel(i);
        while (child && child->serial() < label.serial) {
            auto *next = static_cast<ZuviDanmakuLabelNode *>(child->nextSibling());
            root->removeChildNode(child);
            delete child;
            child = next;
        }
        if (child && child->serial() == label.serial) {
            placeLabelNode(child, label);
            child = static_cast<ZuviDanmakuLabelNode *>(child->nextSibling());
            continue;
        }
        ZuviDanmakuLabelNode *node = createLabelNode(label);
        if (child)
            root->insertChildNodeBefore(node, child);
        else
            root->appendChildNode(node);
        placeLabelNode(node, label);
    }
    while (child) {
        auto *next = static_cast<ZuviDanmakuLabelNode *>(child->nextSibling());
        root->removeChildNode(child);
        delete child;
        child = next;
    }
    return root;
}
