#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QtQml/qqmlregistration.h>

class ZuviDefaults;
class ZuviFastForward;
class ZuviMoviePlayer;
class ZuviScheduler;

// What the viewer sets on the player from its controls and keys: the
// volume and mute (kept in the defaults, so every screen and every launch
// starts where the last one left off), the playback speed for this screen,
// the quality menu, and whether the controls show.
//
// The controls hide after a few seconds without pointer movement while the
// movie plays; they come back with the pointer and stay while the movie is
// paused or the viewer is using them (a menu open, a slider held).
//
// A quality chosen here is only asked for: the screen fetches the address
// and tells what it got through setActiveQuality. The stored quality
// preference is not touched.
class ZuviPlaybackOptions : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Part of the video screen")
    Q_PROPERTY(double volume READ volume WRITE setVolume NOTIFY volumeChanged)
    Q_PROPERTY(bool muted READ isMuted WRITE setMuted NOTIFY volumeChanged)
    Q_PROPERTY(QStringList speedTitles READ speedTitles CONSTANT)
    Q_PROPERTY(int speedIndex READ speedIndex WRITE chooseSpeed NOTIFY speedChanged)
    Q_PROPERTY(QString speedButtonTitle READ speedButtonTitle NOTIFY speedChanged)
    Q_PROPERTY(QStringList qualityTitles READ qualityTitles CONSTANT)
    Q_PROPERTY(int qualityIndex READ qualityIndex NOTIFY qualityChanged)
    Q_PROPERTY(QString qualityButtonTitle READ qualityButtonTitle NOTIFY qualityChanged)
    Q_PROPERTY(bool switchingQuality READ isSwitchingQuality NOTIFY qualityChanged)
    Q_PROPERTY(bool controlsVisible READ areControlsVisible NOTIFY controlsVisibleChanged)
    Q_PROPERTY(bool controlsInUse READ areControlsInUse WRITE setControlsInUse NOTIFY
                   controlsVisibleChanged)

public:
    static const char *const kVolumeKey;
    static const char *const kMutedKey;
    static constexpr double kVolumeStep = 0.1;
    static constexpr double kControlsHideDelay = 3.0;

    ZuviPlaybackOptions(ZuviScheduler *scheduler, ZuviDefaults *defaults,
                        ZuviFastForward *fastForward, QObject *parent = nullptr);

    // The player the options act on; each new one gets them at once.
    void setPlayer(ZuviMoviePlayer *player);

    // --- Volume
    double volume() const { return m_volume; }
    void setVolume(double volume);
    bool isMuted() const { return m_muted; }
    void setMuted(bool muted);
    Q_INVOKABLE void toggleMute() { setMuted(!m_muted); }
    // Steps of a tenth; a step also ends a mute, so the change is heard.
    Q_INVOKABLE void stepVolume(int steps);
    // Reads the stored volume again, changed by another screen meanwhile.
    void loadStoredVolume();

    // --- Speed
    static const QList<double> &speeds();
    static QStringList speedTitles();
    int speedIndex() const { return m_speedIndex; }
    double rate() const { return speeds().at(m_speedIndex); }
    Q_INVOKABLE void chooseSpeed(int index);
    // Moves along the list and stays at either end.
    Q_INVOKABLE void stepSpeed(int steps);
    // The listed speed closest to any rate (one asked for by the desktop).
    void chooseNearestSpeed(double rate);
    QString speedButtonTitle() const;

    // --- Quality
    static const QList<int> &qualities();
    static QStringList qualityTitles();
    // The chosen quality and those below it, best first: the order the
    // address is asked for in after a choice.
    static QList<int> qualityLadderFrom(int quality);
    int qualityIndex() const;
    QString qualityButtonTitle() const;
    bool isSwitchingQuality() const { return m_switchingQuality; }
    Q_INVOKABLE void chooseQuality(int index);
    void setActiveQuality(int quality);
    void setSwitchingQuality(bool switching);

    // --- Controls
    bool areControlsVisible() const { return m_controlsVisible; }
    bool areControlsInUse() const { return m_controlsInUse; }
    void setControlsInUse(bool inUse);
    // The pointer moved over the picture, or a key changed a setting: the
    // controls show, and hide again later if the movie plays.
    Q_INVOKABLE void pointerMoved();

signals:
    void volumeChanged();
    void speedChanged();
    void qualityChanged();
    void controlsVisibleChanged();
    // The viewer picked another quality; the screen fetches it.
    void qualityRequested(int quality);

private:
    void applyVolume();
    void applyRate();
    void saveVolume();
    void followPlaybackState();
    void scheduleHide();
    void setControlsVisible(bool visible);
    bool isPlaying() const;

    ZuviScheduler *m_scheduler;
    ZuviDefaults *m_defaults;
    ZuviFastForward *m_fastForward;
    QPointer<ZuviMoviePlayer> m_player;
    QMetaObject::Connection m_stateConnection;
    double m_volume = 1;
    bool m_muted = false;
    int m_speedIndex = 2;
    int m_activeQuality = 0;
    bool m_switchingQuality = false;
    bool m_controlsVisible = true;
    bool m_controlsInUse = false;
};
