#include "desktop/zuvinowplaying.h"
#include "player/zuvivideoscreendesktop.h"
#include "zuviplayertestscreen.h"

using namespace ZuviPlayerTest;
using Player = ZuviMoviePlayer;

// A video screen joined to the desktop: what it plays is what the desktop is
// told, the desktop's commands reach its player, and the controls go back to
// it when it plays again after another screen had them.
class TestVideoScreenDesktop : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        s = std::make_unique<ZuviPlayerTestScreen>();
        s->f.answerJson(kDetailPath, detailJson());
        s->f.answerJson(kPlayURLPath, playJson(64));
        s->f.server.setAnswer("*", kDanmakuPath, ZuviScriptedAnswer::text(kDanmakuXml, "text/xml"));
        s->f.answerJson(kRelatedPath, relatedJson(1));
        s->f.answerJson(kCommentsPath, commentsJson(0, 1));
        s->make();
        new ZuviVideoScreenDesktop(s->c.get(), &nowPlaying, nullptr);
        s->c->loadViewIfNeeded();
        s->c->viewWillAppear();
        QTRY_VERIFY(s->lastPlayer());
    }
    void cleanup() { s.reset(); }

    void feedsTheDesktopAndObeysIt()
    {
        QVERIFY(nowPlaying.isActive());
        QCOMPARE(nowPlaying.track().title, QStringLiteral("测试视频"));
        QCOMPARE(nowPlaying.track().artist, QStringLiteral("UP"));
        QCOMPARE(nowPlaying.playbackStatus(), ZuviNowPlaying::Playing);

        nowPlaying.requestPlayPause();
        QCOMPARE(s->lastPlayer()->playbackState(), Player::PlaybackPaused);
        QCOMPARE(nowPlaying.playbackStatus(), ZuviNowPlaying::Paused);
        nowPlaying.requestPlay();
        QCOMPARE(s->lastPlayer()->playbackState(), Player::PlaybackPlaying);
    }

    void desktopVolumeAndRateAreTheScreens()
    {
        ZuviPlaybackOptions *options = s->c->playbackOptions();
        options->setVolume(0.8);
        QCOMPARE(nowPlaying.volume(), 0.8);
        options->setMuted(true);
        QCOMPARE(nowPlaying.volume(), 0.0);
        // Set from the desktop, it is heard (and remembered) like the slider's.
        nowPlaying.requestVolume(0.3);
        QVERIFY(!options->isMuted());
        QCOMPARE(options->volume(), 0.3);
        QCOMPARE(s->lastPlayer()->volume(), 0.3);
        QCOMPARE(nowPlaying.volume(), 0.3);

        // A rate from the desktop becomes the nearest speed of the menu.
        nowPlaying.requestRate(1.4);
        QCOMPARE(options->speedIndex(), 4);
        QCOMPARE(s->lastPlayer()->currentPlaybackRate(), 1.5);
    }

    void controlsComeBackWithTheNextPlayerAndGoWithTheScreen()
    {
        // Another screen (a related video, say) takes the controls ...
        QObject other;
        nowPlaying.begin(&other);
        nowPlaying.requestPause();
        QCOMPARE(s->lastPlayer()->playbackState(), Player::PlaybackPlaying);
        // ... and this one plays again: a replay makes a new player.
        s->lastPlayer()->finish(Player::FinishReasonPlaybackEnded);
        s->c->playbackEndReplayTapped();
        QTRY_COMPARE(s->players.size(), 2);
        QCOMPARE(nowPlaying.player() == &other, false);
        nowPlaying.requestPause();
        QCOMPARE(s->lastPlayer()->playbackState(), Player::PlaybackPaused);

        s->c.reset();
        QVERIFY(!nowPlaying.isActive());
    }

private:
    ZuviNowPlaying nowPlaying;
    std::unique_ptr<ZuviPlayerTestScreen> s;
};

QTEST_MAIN(TestVideoScreenDesktop)
#include "tst_zuvivideoscreendesktop.moc"
