#pragma once

#include "model/zuvidanmakuitem.h"
#include "zuvidanmakuoverlayview.h"

#include <QColor>
#include <QList>
#include <QPointer>
#include <QQuickItem>
#include <QVector>
#include <QtQml/qqmlregistration.h>

// A small area graph of how many danmaku fall in each slice of the video,
// meant to lie along the seek bar so that the busiest moments stand out.
// It follows an overlay's shown list (so the viewer's filters count) or a
// list given directly, hides itself while there is nothing to show, and
// builds its geometry only when the counts, its size or its colour change:
// a frame in which nothing changed costs it nothing.
class ZuviDanmakuDensityGraph : public QQuickItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(ZuviDanmakuOverlayView *overlay READ overlay WRITE setOverlay NOTIFY overlayChanged)
    Q_PROPERTY(double duration READ duration WRITE setDuration NOTIFY durationChanged)
    Q_PROPERTY(int sliceCount READ sliceCount WRITE setSliceCount NOTIFY sliceCountChanged)
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged)
    Q_PROPERTY(bool hasData READ hasData NOTIFY countsChanged)
    Q_PROPERTY(QList<int> counts READ counts NOTIFY countsChanged)
    // The middle of the busiest slice, in seconds, for a jump there (-1 without data).
    Q_PROPERTY(double peakTime READ peakTime NOTIFY countsChanged)

public:
    explicit ZuviDanmakuDensityGraph(QQuickItem *parent = nullptr);

    ZuviDanmakuOverlayView *overlay() const { return m_overlay; }
    void setOverlay(ZuviDanmakuOverlayView *overlay);
    double duration() const { return m_duration; }
    void setDuration(double duration);
    int sliceCount() const { return m_sliceCount; }
    void setSliceCount(int count);
    QColor color() const { return m_color; }
    void setColor(const QColor &color);

    // Counts this list instead of an overlay's (the overlay, if any, is let go).
    void setDanmakuItems(const QList<ZuviDanmakuItem> &items);

    bool hasData() const { return !m_counts.isEmpty(); }
    QList<int> counts() const { return m_counts; }
    double peakTime() const;
    // How many times the geometry was built, for tests and measurements.
    int geometryBuildCount() const { return m_geometryBuilds; }

signals:
    void overlayChanged();
    void durationChanged();
    void sliceCountChanged();
    void colorChanged();
    void countsChanged();

protected:
    QSGNode *updatePaintNode(QSGNode *oldNode, UpdatePaintNodeData *data) override;
    void geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry) override;

private:
    void recount();
    void markDirty();

    QPointer<ZuviDanmakuOverlayView> m_overlay;
    QMetaObject::Connection m_overlayConnection;
    QMetaObject::Connection m_overlayGoneConnection;
    QList<ZuviDanmakuItem> m_items;
    double m_duration = 0;
    int m_sliceCount = 120;
    QColor m_color = QColor::fromRgbF(0.93f, 0.44f, 0.61f, 0.55f);
    QVector<int> m_counts;
    bool m_geometryDirty = true;
    int m_geometryBuilds = 0;
};
