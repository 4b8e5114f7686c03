#include "app/zuvikeyboardshortcuts.h"
#include "desktop/zuvimovieplayernowplaying.h"
#include "desktop/zuvinowplaying.h"
#include "player/zuviscriptedmovieplayer.h"

#include <QSignalSpy>
#include <QtTest>

#include <memory>

using Keys = ZuviKeyboardShortcuts;

class TestMoviePlayerNowPlaying : public QObject
{
    Q_OBJECT

private:
    ZuviNowPlaying nowPlaying;
    Keys keys;

    static ZuviNowPlaying::Track track(const QString &id)
    {
        ZuviNowPlaying::Track track;
        track.trackId = id;
        track.title = QStringLiteral("标题 ") + id;
        track.artist = QStringLiteral("作者");
        return track;
    }

private slots:
    // The desktop sees the player's state, clock and length.
    void feedsThePlayersState()
    {
        ZuviScriptedMoviePlayer player;
        ZuviMoviePlayerNowPlaying bridge(&nowPlaying, &keys);
        bridge.setTrack(track("a"));
        bridge.setPlayer(&player);
        QCOMPARE(nowPlaying.track().length, 600.0);
        QCOMPARE(nowPlaying.track().title, QStringLiteral("标题 a"));

        player.play();
        QCOMPARE(nowPlaying.playbackStatus(), ZuviNowPlaying::Playing);
        player.setTime(12.5);
        emit player.timeChanged();
        QCOMPARE(nowPlaying.position(), 12.5);
        player.changeState(ZuviMoviePlayer::PlaybackInterrupted);
        QCOMPARE(nowPlaying.playbackStatus(), ZuviNowPlaying::Paused);
        player.finish(ZuviMoviePlayer::FinishReasonPlaybackEnded);
        QCOMPARE(nowPlaying.playbackStatus(), ZuviNowPlaying::Stopped);
    }

    // The desktop's commands and the player keys act on the player; seeks
    // stay inside the video and are announced.
    void carriesOutCommandsAndKeys()
    {
        ZuviScriptedMoviePlayer player;
        ZuviMoviePlayerNowPlaying bridge(&nowPlaying, &keys);
        bridge.setPlayer(&player);
        QSignalSpy seeked(&nowPlaying, &ZuviNowPlaying::seeked);

        nowPlaying.requestPlayPause();
        QVERIFY(player.isPlaying());
        keys.handleKeyPress(Qt::Key_Space, Qt::NoModifier);
        QCOMPARE(player.playbackState(), ZuviMoviePlayer::PlaybackPaused);

        nowPlaying.requestPosition(42);
        QCOMPARE(player.currentPlaybackTime(), 42.0);
        keys.handleKeyPress(Qt::Key_Right, Qt::NoModifier);
        QCOMPARE(player.currentPlaybackTime(), 47.0);
        keys.handleKeyPress(Qt::Key_Left, Qt::ShiftModifier);
        QCOMPARE(player.currentPlaybackTime(), 17.0);
        keys.handleKeyPress(Qt::Key_Left, Qt::ShiftModifier);
        QCOMPARE(player.currentPlaybackTime(), 0.0);
        player.setTime(590);
        keys.handleKeyPress(Qt::Key_Right, Qt::ShiftModifier);
        QCOMPARE(player.currentPlaybackTime(), 600.0);
        QCOMPARE(seeked.count(), 5);

        nowPlaying.requestRate(1.5);
        QCOMPARE(player.currentPlaybackRate(), 1.5);
    }

    // A video opened from a video: the newer screen has the desktop and the
    // keys; the older one takes them back when it shows again, and a gone
    // screen leaves its player alone.
    void coveredAndGoneScreens()
    {
        ZuviScriptedMoviePlayer first;
        ZuviScriptedMoviePlayer second;
        ZuviMoviePlayerNowPlaying older(&nowPlaying, &keys);
        older.setTrack(track("a"));
        older.setPlayer(&first);
        auto newer = std::make_unique<ZuviMoviePlayerNowPlaying>(&nowPlaying, &keys);
        newer->setTrack(track("b"));
        newer->setPlayer(&second);

        nowPlaying.requestPlay();
        keys.handleKeyPress(Qt::Key_Right, Qt::NoModifier);
        QVERIFY(second.isPlaying());
        QCOMPARE(second.currentPlaybackTime(), 5.0);
        QVERIFY(!first.isPlaying());
        QCOMPARE(first.currentPlaybackTime(), 0.0);
        first.play(); // the covered screen's own clock does not reach the desktop
        QCOMPARE(nowPlaying.track().trackId, QStringLiteral("b"));

        newer.reset();
        QVERIFY(!nowPlaying.isActive());
        older.takeControls();
        QCOMPARE(nowPlaying.track().trackId, QStringLiteral("a"));
        QCOMPARE(nowPlaying.playbackStatus(), ZuviNowPlaying::Playing);
        nowPlaying.requestPause();
        QVERIFY(!first.isPlaying());
        QVERIFY(second.isPlaying());
    }
};

QTEST_MAIN(TestMoviePlayerNowPlaying)
#include "tst_zuvimovieplayernowplaying.moc"
