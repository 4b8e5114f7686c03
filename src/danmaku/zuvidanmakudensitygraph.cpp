#include "zuvidanmakudensitygraph.h"

#include "zuvidanmakudensity.h"
#include "zuvidanmakuoverlayview.h"

#include <QSGGeometryNode>
#include <QSGVertexColorMaterial>

#include <algorithm>

ZuviDanmakuDensityGraph::ZuviDanmakuDensityGraph(QQuickItem *parent) : QQuickItem(parent)
{
    setFlag(ItemHasContents, true);
    setVisible(false); // until there is something to count
}

void ZuviDanmakuDensityGraph::setOverlay(ZuviDanmakuOverlayView *overlay)
{
    if (overlay == m_overlay)
        return;
    QObject::disconnect(m_overlayConnection);
    QObject::disconnect(m_overlayGoneConnection);
    m_overlay = overlay;
    if (overlay) {
        m_overlayConnection = connect(overlay, &ZuviDanmakuOverlayView::danmakuItemsChanged, this,
                                      &ZuviDanmakuDensityGraph::recount);
        // A graph whose overlay went (its screen closed) shows nothing.
        m_overlayGoneConnection = connect(overlay, &QObject::destroyed, this, [this] {
            m_overlay = nullptr;
            recount();
        });
    }
    recount();
    emit overlayChanged();
}

void ZuviDanmakuDensityGraph::setDanmakuItems(const QList<ZuviDanmakuItem> &items)
{
    setOverlay(nullptr);
    m_items = items;
    recount();
}

void ZuviDanmakuDensityGraph::setDuration(double duration)
{
    if (duration == m_duration)
        return;
    m_duration = duration;
    recount();
    emit durationChanged();
}

void ZuviDanmakuDensityGraph::setSliceCount(int count)
{
    count = std::max(1, count);
    if (count == m_sliceCount)
        return;
    m_sliceCount = count;
    recount();
    emit sliceCountChanged();
}

void ZuviDanmakuDensityGraph::setColor(const QColor &color)
{
    if (color == m_color)
        return;
    m_color = color;
    markDirty();
    emit colorChanged();
}

void ZuviDanmakuDensityGraph::recount()
{
    const QList<ZuviDanmakuItem> &items = m_overlay ? m_overlay->engine()->danmakuItems() : m_items;
    QVector<int> counts = ZuviDanmakuDensity::countsPerSlice(items, m_duration, m_sliceCount);
    if (counts == m_counts)
        return;
    m_counts = std::move(counts);
    setVisible(hasData());
    markDirty();
    emit countsChanged();
}

double ZuviDanmakuDensityGraph::peakTime() const
{
    if (m_counts.isEmpty())
        return -1;
    const auto peak = std::max_element(m_counts.begin(), m_counts.end());
    const double length = m_duration > 0 ? m_duration
                          : m_overlay    ? m_overlay->engine()->danmakuItems().constLast().time
                                         : m_items.constLast().time;
    return (double(peak - m_counts.begin()) + 0.5) * length / m_counts.size();
}

void ZuviDanmakuDensityGraph::markDirty()
{
    m_geometryDirty = true;
    update();
}

void ZuviDanmakuDensityGraph::geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry)
{
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    if (newGeometry.size() != oldGeometry.size())
        markDirty();
}

// One triangle strip: for every slice a point on the baseline and one at
// its count's height, at the slice's middle, closed at both ends. The colour
// rides on the vertices: the window's rectangles already draw with that
// material, and under a software renderer every further kind of material is
// a shader program compiled and kept for the life of the process.
QSGNode *ZuviDanmakuDensityGraph::updatePaintNode(QSGNode *oldNode, UpdatePaintNodeData *)
{
    auto *node = static_cast<QSGGeometryNode *>(oldNode);
    if (m_counts.isEmpty() || width() <= 0 || height() <= 0) {
        delete node;
        return nullptr;
    }
    if (node && !m_geometryDirty)
        return node;
    if (!node) {
        node = new QSGGeometryNode;
        auto *geometry = new QSGGeometry(QSGGeometry::defaultAttributes_ColoredPoint2D(), 0);
        geometry->setDrawingMode(QSGGeometry::DrawTriangleStrip);
        node->setGeometry(geometry);
        node->setFlag(QSGNode::OwnsGeometry);
        node->setMaterial(new QSGVertexColorMaterial);
        node->setFlag(QSGNode::OwnsMaterial);
    }

    const int slices = int(m_counts.size());
    const float peak = float(*std::max_element(m_counts.begin(), m_counts.end()));
    const float w = float(width());
    const float h = float(height());
    // The material blends premultiplied colours.
    const QRgb rgba = qPremultiply(m_color.rgba());
    const uchar r = uchar(qRed(rgba)), g = uchar(qGreen(rgba)), b = uchar(qBlue(rgba)),
                alpha = uchar(qAlpha(rgba));
    QSGGeometry *geometry = node->geometry();
    geometry->allocate(2 * (slices + 2));
    QSGGeometry::ColoredPoint2D *points = geometry->vertexDataAsColoredPoint2D();
    const auto put = [&](int index, float x, float y) { points[index].set(x, y, r, g, b, alpha); };
    const auto top = [&](int slice) { return h - h * float(m_counts[slice]) / peak; };
    put(0, 0, h);
    put(1, 0, top(0));
    for (int i = 0; i < slices; ++i) {
        const float x = w * (float(i) + 0.5f) / float(slices);
        put(2 * i + 2, x, h);
        put(2 * i + 3, x, top(i));
    }
    put(2 * slices + 2, w, h);
    put(2 * slices + 3, w, top(slices - 1));
    node->markDirty(QSGNode::DirtyGeometry | QSGNode::DirtyMaterial);
    m_geometryDirty = false;
    ++m_geometryBuilds;
    return node;
}
