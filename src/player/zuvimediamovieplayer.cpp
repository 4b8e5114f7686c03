#include "zuvimediamovieplayer.h"

#include <QAudio>
#include <QLoggingCategory>
#include <QMediaMetaData>
#include <QTimer>
#include <QVideoSink>

#include <cmath>
#ifdef __GLIBC__
#include <malloc.h>
#endif

Q_LOGGING_CATEGORY(lcZuviPlayer, "zuvi.player")

ZuviMediaMoviePlayer::ZuviMediaMoviePlayer(QObject *parent) : ZuviMoviePlayer(parent)
{
    m_player.setAudioOutput(&m_audio);
    connect(&m_player, &QMediaPlayer::mediaStatusChanged, this,
            &ZuviMediaMoviePlayer::mediaStatusChanged);
    connect(&m_player, &QMediaPlayer::bufferProgressChanged, this,
            &ZuviMediaMoviePlayer::updateLoadState);
    connect(&m_player, &QMediaPlayer::playbackStateChanged, this,
            &ZuviMoviePlayer::playbackStateDidChange);
    connect(&m_player, &QMediaPlayer::positionChanged, this,
            &ZuviMediaMoviePlayer::positionChanged);
    connect(&m_player, &QMediaPlayer::durationChanged, this, &ZuviMoviePlayer::timeChanged);
    connect(&m_player, &QMediaPlayer::playbackRateChanged, this, &ZuviMoviePlayer::rateChanged);
    connect(&m_player, &QMediaPlayer::errorOccurred, this,
            [this](QMediaPlayer::Error error, const QString &text) {
                if (error == QMediaPlayer::NoError || m_finished)
                    return;
                qCWarning(lcZuviPlayer) << "playback error" << text;
                m_finished = true;
                emit playbackDidFinish(FinishReasonPlaybackError);
            });
}

ZuviMediaMoviePlayer::~ZuviMediaMoviePlayer()
{
    m_player.stop();
    m_player.setVideoOutput(nullptr);
}

void ZuviMediaMoviePlayer::setContentURL(const QUrl &url)
{
    m_initialTimeApplied = false;
    m_newMediaLoading = false;
    m_startSeekTries = 0;
    m_finished = false;
    m_endedBySeek = false;
    m_player.setSource(url);
    if (url.isEmpty())
        returnFreedMemory();
}

// A torn-down pipeline frees tens of megabytes of decoded frames, spread over
// the allocator's per-thread arenas; without a trim the process keeps them
// resident, and every replay (a new pipeline) would add its own on top.
void ZuviMediaMoviePlayer::returnFreedMemory()
{
#ifdef __GLIBC__
    malloc_trim(0);
#endif
}

void ZuviMediaMoviePlayer::setView(QQuickItem *view)
{
    m_view = view;
    QObject *output = view ? view->findChild<QObject *>(QStringLiteral("videoOutput")) : nullptr;
    m_player.setVideoOutput(output);
    QObject::disconnect(m_frameConnection);
    m_frameConnection = {};
    m_timeChangeHeld = false;
    m_pictureSinceLastReport = false;
    if (QVideoSink *sink = output ? m_player.videoSink() : nullptr)
        m_frameConnection = connect(sink, &QVideoSink::videoFrameChanged, this,
                                    &ZuviMediaMoviePlayer::videoFrameArrived);
}

// The media reports its position on a timer of its own, out of step with
// the pictures; each report would repaint the seek bar in a frame between
// two pictures. While pictures come (one arrived since the last report), the
// report waits for the next picture. A report with no picture since the last
// one means they stopped, or there are none, and it goes out at once.
void ZuviMediaMoviePlayer::positionChanged()
{
    applyInitialPlaybackTime();
    if (m_frameConnection && m_pictureSinceLastReport &&
        m_player.playbackState() == QMediaPlayer::PlayingState) {
        m_pictureSinceLastReport = false;
        m_timeChangeHeld = true;
        return;
    }
    m_timeChangeHeld = false;
    emit timeChanged();
}

// The media backend drops a seek asked for before its pipeline really
// plays, and says nothing; so the start position is asked for again as the
// clock reports, until the clock is there (a few tries at most: a stream
// that cannot seek plays from its start).
void ZuviMediaMoviePlayer::applyInitialPlaybackTime()
{
    if (m_initialTimeApplied || !m_newMediaLoading)
        return;
    const qint64 target = qint64(m_initialPlaybackTime * 1000);
    if (target <= 0 || m_player.position() >= target - 500 || m_startSeekTries >= 8) {
        m_initialTimeApplied = true;
        return;
    }
    ++m_startSeekTries;
    m_player.setPosition(target);
}

void ZuviMediaMoviePlayer::videoFrameArrived()
{
    m_pictureSinceLastReport = true;
    emit videoFrameDidChange();
    if (m_timeChangeHeld) {
        m_timeChangeHeld = false;
        emit timeChanged();
    }
}

QSizeF ZuviMediaMoviePlayer::naturalSize() const
{
    return m_player.metaData().value(QMediaMetaData::Resolution).toSize();
}

void ZuviMediaMoviePlayer::play()
{
    // Playing again after the end starts over, as a replay would.
    if (m_player.mediaStatus() == QMediaPlayer::EndOfMedia || m_endedBySeek)
        m_player.setPosition(0);
    m_endedBySeek = false;
    m_finished = false;
    m_player.play();
}

void ZuviMediaMoviePlayer::pause()
{
    m_player.pause();
}

void ZuviMediaMoviePlayer::stop()
{
    m_player.stop();
}

void ZuviMediaMoviePlayer::seek(double seconds)
{
    const double target = std::max(0.0, seconds);
    // A seek to the very end (the seek bar's far end, a skip past the last
    // seconds) ends playback here instead of in the media backend: streaming
    // over HTTP, the backend would ask for the bytes after the last one, the
    // server rightly refuses, and the pipeline stalls without a word.
    if (duration() > 0 && target >= duration()) {
        finishAtEnd();
        return;
    }
    m_seekState =
        target >= currentPlaybackTime() ? PlaybackSeekingForward : PlaybackSeekingBackward;
    emit playbackStateDidChange();
    m_player.setPosition(qint64(target * 1000));
    // QMediaPlayer seeks without reporting when it is done; the seeking
    // state lasts until control returns to the event loop.
    QTimer::singleShot(0, this, &ZuviMediaMoviePlayer::endSeek);
}

void ZuviMediaMoviePlayer::finishAtEnd()
{
    m_player.pause();
    m_endedBySeek = true;
    if (m_finished)
        return;
    m_finished = true;
    emit playbackDidFinish(FinishReasonPlaybackEnded);
}

void ZuviMediaMoviePlayer::endSeek()
{
    if (m_seekState == PlaybackStopped)
        return;
    m_seekState = PlaybackStopped;
    emit playbackStateDidChange();
}

double ZuviMediaMoviePlayer::currentPlaybackTime() const
{
    if (m_player.source().isEmpty())
        return std::nan("");
    return m_player.position() / 1000.0;
}

ZuviMoviePlayer::PlaybackState ZuviMediaMoviePlayer::playbackState() const
{
    if (m_seekState != PlaybackStopped)
        return m_seekState;
    switch (m_player.playbackState()) {
    case QMediaPlayer::PlayingState:
        // A player that wants to play but has run out of data is interrupted.
        return m_player.mediaStatus() == QMediaPlayer::StalledMedia ? PlaybackInterrupted
                                                                    : PlaybackPlaying;
    case QMediaPlayer::PausedState:
        return PlaybackPaused;
    case QMediaPlayer::StoppedState:
        break;
    }
    return PlaybackStopped;
}

void ZuviMediaMoviePlayer::setFullscreen(bool fullscreen, bool animated)
{
    Q_UNUSED(animated) // the window switches at once on the desktop
    if (fullscreen == m_fullscreen)
        return;
    if (fullscreen) {
        emit willEnterFullscreen();
        m_fullscreen = true;
        placeViewForFullscreen(true);
        emit fullscreenChanged();
        emit didEnterFullscreen();
        return;
    }
    emit willExitFullscreen();
    m_fullscreen = false;
    placeViewForFullscreen(false);
    emit fullscreenChanged();
    emit didExitFullscreen();
}

double ZuviMediaMoviePlayer::currentPlaybackRate() const
{
    return m_player.playbackRate();
}

void ZuviMediaMoviePlayer::setCurrentPlaybackRate(double rate)
{
    m_player.setPlaybackRate(rate);
}

void ZuviMediaMoviePlayer::setVolume(double volume)
{
    m_volume = qBound(0.0, volume, 1.0);
    // The output's volume is the signal's amplitude; an ear hears it on a
    // logarithmic scale, so a linear slider would do all its work at the
    // bottom end.
    m_audio.setVolume(float(QAudio::convertVolume(m_volume, QAudio::LogarithmicVolumeScale,
                                                  QAudio::LinearVolumeScale)));
}

int ZuviMediaMoviePlayer::loadStateForStatus(QMediaPlayer::MediaStatus status, float bufferProgress)
{
    switch (status) {
    case QMediaPlayer::LoadedMedia:
    case QMediaPlayer::BufferedMedia:
    case QMediaPlayer::EndOfMedia:
        return LoadStatePlayable | LoadStatePlaythroughOK;
    case QMediaPlayer::BufferingMedia:
        return bufferProgress >= 1.0f ? LoadStatePlayable | LoadStatePlaythroughOK
                                      : LoadStatePlayable;
    case QMediaPlayer::StalledMedia:
        return LoadStateStalled;
    case QMediaPlayer::NoMedia:
    case QMediaPlayer::LoadingMedia:
    case QMediaPlayer::InvalidMedia:
        break;
    }
    return LoadStateUnknown;
}

void ZuviMediaMoviePlayer::mediaStatusChanged(QMediaPlayer::MediaStatus status)
{
    // A status of the media before can still arrive after a new address
    // was set (pausing the old one reports it loaded): the start position
    // waits until the new media has been seen loading.
    if (status == QMediaPlayer::LoadingMedia)
        m_newMediaLoading = true;
    if (status == QMediaPlayer::LoadedMedia || status == QMediaPlayer::BufferedMedia)
        applyInitialPlaybackTime();
    updateLoadState();
    if (status == QMediaPlayer::EndOfMedia && !m_finished) {
        m_finished = true;
        emit playbackDidFinish(FinishReasonPlaybackEnded);
    }
}

void ZuviMediaMoviePlayer::updateLoadState()
{
    const int state = loadStateForStatus(m_player.mediaStatus(), m_player.bufferProgress());
    if (state == m_loadState)
        return;
    m_loadState = state;
    emit loadStateDidChange();
}
