#include "zuvivideoscreendesktop.h"

#include "app/zuvikeyboardshortcuts.h"
#include "desktop/zuvimovieplayernowplaying.h"
#include "images/zuviimageurl.h"
#include "zuvivideoplayerviewcontroller.h"

ZuviVideoScreenDesktop::ZuviVideoScreenDesktop(ZuviVideoPlayerViewController *screen,
                                               ZuviNowPlaying *nowPlaying,
                                               ZuviKeyboardShortcuts *shortcuts)
    : QObject(screen), m_screen(screen),
      m_connector(new ZuviMoviePlayerNowPlaying(nowPlaying, shortcuts, this))
{
    using C = ZuviVideoPlayerViewController;
    connect(screen, &C::moviePlayerChanged, this, &ZuviVideoScreenDesktop::followPlayer);
    connect(screen, &C::detailChanged, this, &ZuviVideoScreenDesktop::followDetail);
    followDetail();
    followPlayer();
    // The desktop's volume is what the viewer hears: none while muted.
    ZuviPlaybackOptions *options = screen->playbackOptions();
    m_connector->setVolumeControl(
        [options] { return options->isMuted() ? 0.0 : options->volume(); },
        [options](double volume) {
            options->setMuted(false);
            options->setVolume(volume);
        });
    connect(options, &ZuviPlaybackOptions::volumeChanged, m_connector,
            &ZuviMoviePlayerNowPlaying::volumeDidChange);
    m_connector->setRateControl([options](double rate) { options->chooseNearestSpeed(rate); });
    if (shortcuts)
        bindScreenKeys(shortcuts);
}

void ZuviVideoScreenDesktop::bindScreenKeys(ZuviKeyboardShortcuts *shortcuts)
{
    using Keys = ZuviKeyboardShortcuts;
    ZuviVideoPlayerViewController *screen = m_screen;
    ZuviPlaybackOptions *options = screen->playbackOptions();
    shortcuts->bind(Keys::VolumeUp, this, [options] { options->stepVolume(1); });
    shortcuts->bind(Keys::VolumeDown, this, [options] { options->stepVolume(-1); });
    shortcuts->bind(Keys::Mute, this, [options] {
        options->toggleMute();
        options->pointerMoved();
    });
    shortcuts->bind(Keys::SlowerSpeed, this, [options] { options->stepSpeed(-1); });
    shortcuts->bind(Keys::FasterSpeed, this, [options] { options->stepSpeed(1); });
    shortcuts->bind(Keys::Fullscreen, this, [screen] { screen->toggleFullscreen(); });
    shortcuts->bind(
        Keys::LeaveFullscreen, this, [screen] { screen->escapePressed(); },
        [screen] { return screen->moviePlayer() && screen->moviePlayer()->isFullscreen(); });
    shortcuts->bind(Keys::Danmaku, this,
                    [screen] { screen->setDanmakuEnabledByUser(!screen->isDanmakuEnabled()); });
}

void ZuviVideoScreenDesktop::followPlayer()
{
    ZuviMoviePlayer *player = m_screen->moviePlayer();
    // A new player is made when this screen plays again (back from a
    // related video, a replay, another page): the controls come back to it
    // from whatever screen held them in between.
    if (player)
        m_connector->takeControls();
    m_connector->setPlayer(player);
}

void ZuviVideoScreenDesktop::followDetail()
{
    const ZuviVideoItem &item = m_screen->videoItem();
    const auto &detail = m_screen->detail();
    ZuviNowPlaying::Track track;
    // One track per page of a video, so a page change is a new track.
    track.trackId = QStringLiteral("%1/%2").arg(item.bvid).arg(m_screen->selectedPageIndex());
    track.title = m_screen->videoTitle();
    track.artist = detail && !detail->ownerName.isEmpty() ? detail->ownerName : item.ownerName;
    const QString cover =
        detail && !detail->coverURLString.isEmpty() ? detail->coverURLString : item.coverURLString;
    if (!cover.isEmpty())
        track.artUrl = QUrl(ZuviImageURL::normalizedURLString(cover));
    m_connector->setTrack(track);
}
