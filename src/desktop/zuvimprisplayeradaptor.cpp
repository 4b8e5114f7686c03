#include "zuvimprisplayeradaptor.h"

#include "zuvimprisservice.h"
#include "zuvinowplaying.h"

#include <QMetaProperty>
#include <QRegularExpression>
#include <QStringList>

#include <cmath>

const char ZuviMprisPlayerAdaptor::kInterface[] = "org.mpris.MediaPlayer2.Player";

namespace {
constexpr double kMicroseconds = 1e6;

qlonglong toMicroseconds(double seconds)
{
    return static_cast<qlonglong>(std::llround(seconds * kMicroseconds));
}
} // namespace

ZuviMprisPlayerAdaptor::ZuviMprisPlayerAdaptor(ZuviMprisService *service,
                                               ZuviNowPlaying *nowPlaying)
    : QDBusAbstractAdaptor(service), m_service(service), m_nowPlaying(nowPlaying)
{
    const QStringList controls{QStringLiteral("CanPlay"), QStringLiteral("CanPause"),
                               QStringLiteral("CanSeek")};
    connect(nowPlaying, &ZuviNowPlaying::playbackStatusChanged, this,
            [this] { announce({QStringLiteral("PlaybackStatus")}); });
    connect(nowPlaying, &ZuviNowPlaying::trackChanged, this,
            [this, controls] { announce(QStringList{QStringLiteral("Metadata")} + controls); });
    connect(nowPlaying, &ZuviNowPlaying::activeChanged, this,
            [this, controls] { announce(controls); });
    connect(nowPlaying, &ZuviNowPlaying::volumeChanged, this,
            [this] { announce({QStringLiteral("Volume")}); });
    connect(nowPlaying, &ZuviNowPlaying::rateChanged, this,
            [this] { announce({QStringLiteral("Rate")}); });
    connect(nowPlaying, &ZuviNowPlaying::seeked, this,
            [this](double seconds) { emit Seeked(toMicroseconds(seconds)); });
}

QDBusObjectPath ZuviMprisPlayerAdaptor::trackPath(const QString &trackId)
{
    if (trackId.isEmpty())
        return QDBusObjectPath(QStringLiteral("/org/mpris/MediaPlayer2/TrackList/NoTrack"));
    // Object path elements allow only letters, digits and underscores.
    static const QRegularExpression notAllowed(QStringLiteral("[^A-Za-z0-9_]"));
    QString element = trackId;
    element.replace(notAllowed, QStringLiteral("_"));
    return QDBusObjectPath(QStringLiteral("/org/oldzuvi/track/") + element);
}

QString ZuviMprisPlayerAdaptor::playbackStatus() const
{
    switch (m_nowPlaying->playbackStatus()) {
    case ZuviNowPlaying::Playing:
        return QStringLiteral("Playing");
    case ZuviNowPlaying::Paused:
        return QStringLiteral("Paused");
    case ZuviNowPlaying::Stopped:
        break;
    }
    return QStringLiteral("Stopped");
}

double ZuviMprisPlayerAdaptor::rate() const
{
    return m_nowPlaying->rate();
}

void ZuviMprisPlayerAdaptor::setRate(double rate)
{
    m_nowPlaying->requestRate(rate);
}

double ZuviMprisPlayerAdaptor::minimumRate() const
{
    return ZuviNowPlaying::kMinimumRate;
}

double ZuviMprisPlayerAdaptor::maximumRate() const
{
    return ZuviNowPlaying::kMaximumRate;
}

QVariantMap ZuviMprisPlayerAdaptor::metadata() const
{
    const ZuviNowPlaying::Track track = m_nowPlaying->track();
    QVariantMap map;
    map.insert(QStringLiteral("mpris:trackid"), QVariant::fromValue(trackPath(track.trackId)));
    if (track.trackId.isEmpty())
        return map;
    if (track.length > 0)
        map.insert(QStringLiteral("mpris:length"), toMicroseconds(track.length));
    if (!track.title.isEmpty())
        map.insert(QStringLiteral("xesam:title"), track.title);
    if (!track.artist.isEmpty())
        map.insert(QStringLiteral("xesam:artist"), QStringList{track.artist});
    if (track.artUrl.isValid())
        map.insert(QStringLiteral("mpris:artUrl"), track.artUrl.toString());
    return map;
}

double ZuviMprisPlayerAdaptor::volume() const
{
    return m_nowPlaying->volume();
}

void ZuviMprisPlayerAdaptor::setVolume(double volume)
{
    m_nowPlaying->requestVolume(volume);
}

qlonglong ZuviMprisPlayerAdaptor::position() const
{
    return toMicroseconds(m_nowPlaying->position());
}

bool ZuviMprisPlayerAdaptor::canPlay() const
{
    return m_nowPlaying->isActive();
}

bool ZuviMprisPlayerAdaptor::canPause() const
{
    return m_nowPlaying->isActive();
}

bool ZuviMprisPlayerAdaptor::canSeek() const
{
    return m_nowPlaying->isActive() && m_nowPlaying->track().length > 0;
}

void ZuviMprisPlayerAdaptor::Pause()
{
    m_nowPlaying->requestPause();
}

void ZuviMprisPlayerAdaptor::PlayPause()
{
    m_nowPlaying->requestPlayPause();
}

void ZuviMprisPlayerAdaptor::Stop()
{
    m_nowPlaying->requestStop();
}

void ZuviMprisPlayerAdaptor::Play()
{
    m_nowPlaying->requestPlay();
}

void ZuviMprisPlayerAdaptor::Seek(qlonglong Offset)
{
    m_nowPlaying->requestSeek(Offset / kMicroseconds);
}

void ZuviMprisPlayerAdaptor::SetPosition(const QDBusObjectPath &TrackId, qlonglong Position)
{
    // A request meant for a track that is no longer playing is stale.
    if (TrackId != trackPath(m_nowPlaying->track().trackId) || Position < 0)
        return;
    m_nowPlaying->requestPosition(Position / kMicroseconds);
}

void ZuviMprisPlayerAdaptor::announce(const QStringList &properties)
{
    QVariantMap changed;
    const QMetaObject *meta = metaObject();
    for (const QString &name : properties) {
        const QMetaProperty property = meta->property(meta->indexOfProperty(name.toLatin1()));
        changed.insert(name, property.read(this));
    }
    m_service->sendPropertiesChanged(QString::fromLatin1(kInterface), changed);
}
