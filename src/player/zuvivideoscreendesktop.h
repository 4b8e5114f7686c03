#pragma once

#include <QObject>

class ZuviKeyboardShortcuts;
class ZuviMoviePlayerNowPlaying;
class ZuviNowPlaying;
class ZuviVideoPlayerViewController;

// Joins one video screen to the desktop: the media keys and panel widgets,
// the screen saver and the player keys follow the screen's movie player and
// what it shows. The keys that act on the screen rather than on the movie
// alone (volume, mute, speed, fullscreen, danmaku) are bound here to the
// screen's own controls, for as long as the screen lives. Made as a child of the screen, so it goes
// with it; the app attaches one to every video screen it opens, while tests leave the screen alone
// unless they ask for it.
class ZuviVideoScreenDesktop : public QObject
{
    Q_OBJECT

public:
    ZuviVideoScreenDesktop(ZuviVideoPlayerViewController *screen, ZuviNowPlaying *nowPlaying,
                           ZuviKeyboardShortcuts *shortcuts);

private:
    void bindScreenKeys(ZuviKeyboardShortcuts *shortcuts);
    void followPlayer();
    void followDetail();

    ZuviVideoPlayerViewController *m_screen;
    ZuviMoviePlayerNowPlaying *m_connector;
};
