#include "platform/zuvivirtualscheduler.h"
#include "player/zuvifastforward.h"
#include "player/zuviplaybackoptions.h"
#include "zuviscriptedmovieplayer.h"
#include "zuvitestsupport.h"

#include <QSignalSpy>
#include <QTest>

using Options = ZuviPlaybackOptions;
using Player = ZuviMoviePlayer;

// The player's options alone: the sound remembered across screens, the speed
// list with the long press coming back to it, the quality ladder, and the
// controls hiding on the virtual clock.
class TestPlaybackOptions : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        defaults = std::make_unique<ZuviScratchDefaults>();
        options = makeOptions();
        player = std::make_unique<ZuviScriptedMoviePlayer>();
        options->setPlayer(player.get());
    }
    void cleanup()
    {
        options.reset();
        player.reset();
    }

    void volumeAndMuteAreRememberedForTheNextScreen()
    {
        options->setVolume(0.4);
        options->toggleMute();
        QCOMPARE(player->volume(), 0.4);
        QVERIFY(player->isMuted());

        // The next screen starts where this one left off, on its own player.
        auto next = makeOptions();
        ZuviScriptedMoviePlayer nextPlayer;
        next->setPlayer(&nextPlayer);
        QCOMPARE(next->volume(), 0.4);
        QVERIFY(next->isMuted());
        QCOMPARE(nextPlayer.volume(), 0.4);
        QVERIFY(nextPlayer.isMuted());

        // A covered screen sees the change when it shows again.
        next->setVolume(0.7);
        next->setMuted(false);
        options->loadStoredVolume();
        QCOMPARE(options->volume(), 0.7);
        QVERIFY(!options->isMuted());
        QCOMPARE(player->volume(), 0.7);
    }

    void volumeStepsUnmuteAndStopAtTheEnds()
    {
        options->setVolume(0.85);
        options->setMuted(true);
        options->stepVolume(1);
        QVERIFY(!options->isMuted());
        QCOMPARE(options->volume(), 0.95);
        options->stepVolume(1);
        options->stepVolume(1);
        QCOMPARE(options->volume(), 1.0);
        for (int i = 0; i < 12; ++i)
            options->stepVolume(-1);
        QCOMPARE(options->volume(), 0.0);
        QCOMPARE(player->volume(), 0.0);
        // Nonsense from a slider or the desktop leaves the volume alone.
        options->setVolume(qQNaN());
        QCOMPARE(options->volume(), 0.0);
    }

    void speedStepsAlongTheListAndStopsAtTheEnds()
    {
        QCOMPARE(options->speedTitles(),
                 QStringList({"0.5×", "0.75×", "1×", "1.25×", "1.5×", "2×"}));
        QCOMPARE(options->speedButtonTitle(), QStringLiteral("倍速"));
        QList<double> seen;
        for (int i = 0; i < 4; ++i) {
            options->stepSpeed(1);
            seen << player->currentPlaybackRate();
        }
        QCOMPARE(seen, QList<double>({1.25, 1.5, 2.0, 2.0}));
        QCOMPARE(options->speedButtonTitle(), QStringLiteral("2×"));
        seen.clear();
        for (int i = 0; i < 6; ++i) {
            options->stepSpeed(-1);
            seen << player->currentPlaybackRate();
        }
        QCOMPARE(seen, QList<double>({1.5, 1.25, 1.0, 0.75, 0.5, 0.5}));

        // A new player (another quality, a replay) plays at the chosen speed.
        ZuviScriptedMoviePlayer next;
        options->setPlayer(&next);
        QCOMPARE(next.currentPlaybackRate(), 0.5);
    }

    void longPressReturnsToTheChosenSpeed()
    {
        options->chooseSpeed(4); // 1.5×
        player->play();
        fastForward.beginIfPossible(player.get(), false);
        QCOMPARE(player->currentPlaybackRate(), ZuviFastForward::kFastRate);
        fastForward.endIfNeeded(player.get());
        QCOMPARE(player->currentPlaybackRate(), 1.5);

        // A speed chosen while the picture is held waits for the release.
        fastForward.beginIfPossible(player.get(), false);
        options->stepSpeed(-1);
        QCOMPARE(player->currentPlaybackRate(), ZuviFastForward::kFastRate);
        fastForward.endIfNeeded(player.get());
        QCOMPARE(player->currentPlaybackRate(), 1.25);
    }

    void qualityLadderAndChoice()
    {
        QCOMPARE(Options::qualityLadderFrom(64), QList<int>({64, 32, 16}));
        QCOMPARE(Options::qualityLadderFrom(32), QList<int>({32, 16}));
        QCOMPARE(Options::qualityLadderFrom(16), QList<int>({16}));
        QCOMPARE(Options::qualityLadderFrom(6), QList<int>({16}));

        QSignalSpy requested(options.get(), &Options::qualityRequested);
        QCOMPARE(options->qualityButtonTitle(), QStringLiteral("清晰度"));
        // An answer between the steps counts as the step it reaches.
        options->setActiveQuality(80);
        QCOMPARE(options->qualityIndex(), 0);
        options->chooseQuality(0); // already playing
        options->chooseQuality(3); // no such row
        QCOMPARE(requested.count(), 0);
        options->chooseQuality(2);
        QCOMPARE(requested.count(), 1);
        QCOMPARE(requested.at(0).at(0).toInt(), 16);
    }

    void controlsHideAfterThreeQuietSecondsWhilePlaying()
    {
        player->play();
        QVERIFY(options->areControlsVisible());
        scheduler.advance(2.9);
        QVERIFY(options->areControlsVisible());
        scheduler.advance(0.2);
        QVERIFY(!options->areControlsVisible());

        // The pointer brings them back and starts the count again.
        options->pointerMoved();
        QVERIFY(options->areControlsVisible());
        scheduler.advance(2.0);
        options->pointerMoved();
        scheduler.advance(2.0);
        QVERIFY(options->areControlsVisible());
        scheduler.advance(1.1);
        QVERIFY(!options->areControlsVisible());

        // A menu open keeps them however long it stays; closed, the count runs.
        options->setControlsInUse(true);
        QVERIFY(options->areControlsVisible());
        scheduler.advance(60);
        QVERIFY(options->areControlsVisible());
        options->setControlsInUse(false);
        scheduler.advance(3.1);
        QVERIFY(!options->areControlsVisible());

        // Paused, they show and stay.
        player->pause();
        QVERIFY(options->areControlsVisible());
        options->pointerMoved();
        scheduler.advance(60);
        QVERIFY(options->areControlsVisible());
    }

private:
    std::unique_ptr<Options> makeOptions()
    {
        return std::make_unique<Options>(&scheduler, defaults->get(), &fastForward);
    }

    ZuviVirtualScheduler scheduler;
    ZuviFastForward fastForward;
    std::unique_ptr<ZuviScratchDefaults> defaults;
    std::unique_ptr<ZuviScriptedMoviePlayer> player;
    std::unique_ptr<Options> options;
};

QTEST_MAIN(TestPlaybackOptions)
#include "tst_zuviplaybackoptions.moc"
