#pragma once

#include "model/zuvidanmakuitem.h"
#include "zuvidanmakuengine.h"
#include "zuvidanmakusettings.h"

#include <QList>
#include <QMetaObject>
#include <QQuickItem>
#include <QtQml/qqmlregistration.h>

class ZuviDanmakuLabelNode;
class ZuviDefaults;
class ZuviNotificationCenter;

// The transparent danmaku layer laid over the movie picture. It forwards the
// video screen's ticks to its ZuviDanmakuEngine and draws the engine's labels:
// each label's text is a texture made once when the label starts its flight,
// and each frame only moves it. Frames are asked for only while some label
// is on screen and its clock runs, so a paused or empty overlay costs nothing.
class ZuviDanmakuOverlayView : public QQuickItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(bool danmakuEnabled READ isDanmakuEnabled WRITE setDanmakuEnabled NOTIFY
                   danmakuEnabledChanged)
    Q_PROPERTY(bool danmakuPaused READ isDanmakuPaused NOTIFY countersChanged)
    Q_PROPERTY(bool padIdiom READ isPadIdiom WRITE setPadIdiom NOTIFY padIdiomChanged)
    Q_PROPERTY(int visibleCount READ visibleCount NOTIFY countersChanged)
    Q_PROPERTY(int itemCount READ itemCount NOTIFY countersChanged)
    Q_PROPERTY(qint64 launchedCount READ launchedCount NOTIFY countersChanged)
    Q_PROPERTY(qint64 droppedCount READ droppedCount NOTIFY countersChanged)
    Q_PROPERTY(qreal danmakuOpacity READ danmakuOpacity NOTIFY danmakuSettingsChanged)

public:
    explicit ZuviDanmakuOverlayView(QQuickItem *parent = nullptr);
    ~ZuviDanmakuOverlayView() override;

    ZuviDanmakuEngine *engine() { return &m_engine; }
    const ZuviDanmakuEngine *engine() const { return &m_engine; }

    bool isDanmakuEnabled() const { return m_engine.isDanmakuEnabled(); }
    void setDanmakuEnabled(bool enabled);
    bool isDanmakuPaused() const { return m_engine.isDanmakuPaused(); }
    bool isPadIdiom() const { return m_engine.idiom() == ZuviIdiom::Pad; }
    void setPadIdiom(bool pad);

    // The list must be sorted by time.
    void setDanmakuItems(const QList<ZuviDanmakuItem> &items);

    // The viewer's settings, applied live. Reduced motion is also on while
    // the desktop asks for it.
    const ZuviDanmakuSettings &danmakuSettings() const { return m_engine.danmakuSettings(); }
    void setDanmakuSettings(const ZuviDanmakuSettings &settings);
    // Takes the settings from the defaults store now and again whenever a
    // change to them is posted, for as long as the overlay lives.
    void followStoredSettings(ZuviDefaults *defaults, ZuviNotificationCenter *center);
    Q_INVOKABLE void followStoredSettings();

    Q_INVOKABLE void tickAtPlaybackTime(double playbackTime, bool playing);
    Q_INVOKABLE void resetForPlaybackTime(double playbackTime);
    Q_INVOKABLE void clearVisibleDanmaku();
    Q_INVOKABLE void setDanmakuPaused(bool paused);
    Q_INVOKABLE QString debugStateTextForPlaybackTime(double playbackTime, bool playing) const;

    // The movie underneath showed a new picture. From then on the overlay
    // draws only together with the movie's pictures, so that a playing video
    // and flying labels cost one frame per video frame rather than two
    // interleaved streams of frames (under software rendering each frame
    // repaints the whole window). Following ends with stopFollowingVideoFrames().
    void videoFrameShown();
    // The movie's pictures stopped coming (paused, stalled, ended, gone):
    // the overlay asks for its own frames again, starting with any change
    // held back for the next picture.
    void stopFollowingVideoFrames();
    bool isFollowingVideoFrames() const { return m_followsVideoFrames; }

    int visibleCount() const { return m_engine.visibleLabelCount(); }
    int itemCount() const { return int(m_engine.danmakuItems().size()); }
    // Labels launched, and items dropped by the cap or for want of a lane.
    qint64 launchedCount() const { return qint64(m_engine.counters().launched); }
    qint64 droppedCount() const;
    qreal danmakuOpacity() const { return m_engine.danmakuSettings().opacity(); }

signals:
    void danmakuEnabledChanged();
    void padIdiomChanged();
    void countersChanged();
    // The list shown changed: a new list, or settings that filter it anew.
    void danmakuItemsChanged();
    void danmakuSettingsChanged();

protected:
    QSGNode *updatePaintNode(QSGNode *oldNode, UpdatePaintNodeData *data) override;
    void geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry) override;
    void itemChange(ItemChange change, const ItemChangeData &value) override;

private:
    void afterStateChange();
    void applyStoredSettings();
    void requestFrame();
    void drawHeldFrame();
    void frameAnimated();
    void watchWindow(QQuickWindow *window);
    ZuviDanmakuLabelNode *createLabelNode(const ZuviDanmakuLabel &label);
    void placeLabelNode(ZuviDanmakuLabelNode *node, const ZuviDanmakuLabel &label) const;

    ZuviDanmakuEngine m_engine;
    ZuviDefaults *m_settingsDefaults = nullptr;
    int m_settingsObservation = 0;
    QMetaObject::Connection m_frameConnection;
    qreal m_devicePixelRatio = 1;
    // What the last requested frame showed and the counters last reported.
    int m_shownCount = 0;
    quint64 m_shownNewest = 0;
    quint64 m_reportedLaunched = 0;
    qint64 m_reportedDropped = 0;
    bool m_reportedPaused = false;
    // While following the movie's pictures, a change that needs a frame
    // waits here for the next picture.
    bool m_followsVideoFrames = false;
    bool m_frameHeldForVideo = false;
};
