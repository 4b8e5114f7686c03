#pragma once

#include <QDBusAbstractAdaptor>
#include <QDBusObjectPath>
#include <QString>
#include <QVariantMap>

class ZuviMprisService;
class ZuviNowPlaying;

// The playback half of the media player interfaces. It reads the now-playing
// state, turns the desktop's calls into the now-playing commands, and
// announces every change of a property the desktop shows. Times on the bus
// are microseconds; the player's are seconds.
class ZuviMprisPlayerAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.mpris.MediaPlayer2.Player")
    Q_PROPERTY(QString PlaybackStatus READ playbackStatus)
    Q_PROPERTY(double Rate READ rate WRITE setRate)
    Q_PROPERTY(double MinimumRate READ minimumRate)
    Q_PROPERTY(double MaximumRate READ maximumRate)
    Q_PROPERTY(QVariantMap Metadata READ metadata)
    Q_PROPERTY(double Volume READ volume WRITE setVolume)
    Q_PROPERTY(qlonglong Position READ position)
    Q_PROPERTY(bool CanGoNext READ canGoNext)
    Q_PROPERTY(bool CanGoPrevious READ canGoPrevious)
    Q_PROPERTY(bool CanPlay READ canPlay)
    Q_PROPERTY(bool CanPause READ canPause)
    Q_PROPERTY(bool CanSeek READ canSeek)
    Q_PROPERTY(bool CanControl READ canControl)

public:
    static const char kInterface[];

    ZuviMprisPlayerAdaptor(ZuviMprisService *service, ZuviNowPlaying *nowPlaying);

    // The object path naming a track; the empty id is the "no track" path.
    static QDBusObjectPath trackPath(const QString &trackId);

    QString playbackStatus() const;
    double rate() const;
    void setRate(double rate);
    double minimumRate() const;
    double maximumRate() const;
    QVariantMap metadata() const;
    double volume() const;
    void setVolume(double volume);
    qlonglong position() const;
    // There is no playlist to move through.
    bool canGoNext() const { return false; }
    bool canGoPrevious() const { return false; }
    bool canPlay() const;
    bool canPause() const;
    bool canSeek() const;
    bool canControl() const { return true; }

public slots:
    void Next() {}
    void Previous() {}
    void Pause();
    void PlayPause();
    void Stop();
    void Play();
    void Seek(qlonglong Offset);
    void SetPosition(const QDBusObjectPath &TrackId, qlonglong Position);
    void OpenUri(const QString &) {}

signals:
    void Seeked(qlonglong Position);

private:
    void announce(const QStringList &properties);

    ZuviMprisService *m_service;
    ZuviNowPlaying *m_nowPlaying;
};
