#include "app/zuvikeyboardshortcuts.h"
#include "desktop/zuvinowplaying.h"
#include "player/zuviqualitypreference.h"
#include "player/zuvivideoscreendesktop.h"
#include "zuviplayertestscreen.h"
#include "zuviscreenlifetimecheck.h"

#include <atomic>

using namespace ZuviPlayerTest;
using Player = ZuviMoviePlayer;

namespace {
const QString kSecondAddress = QStringLiteral("http://127.0.0.1:9/q%1.mp4");
} // namespace

// The player's controls on a whole video screen: a quality picked in the
// player is fetched again from that quality down and carries on from the
// same moment, and the screen's keys reach the volume, the speed, the
// fullscreen and the danmaku.
class TestPlayerControls : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        s = std::make_unique<ZuviPlayerTestScreen>();
        s->f.answerJson(kDetailPath, detailJson());
        // The first address is 720P; later ones answer with the quality asked
        // for, or only a segmented answer where the test says so.
        s->f.server.setHandler("*", kPlayURLPath, [this](const ZuviRecordedRequest &r) {
            const int qn = r.queryValue("qn").toInt();
            if (segmentedOnly & qn)
                return ZuviScriptedAnswer::json(dashOnlyJson());
            ZuviScriptedAnswer answer = ZuviScriptedAnswer::json(
                playJson(qn, qn == 64 ? QStringLiteral("http://127.0.0.1:9/v.mp4")
                                      : kSecondAddress.arg(qn)));
            answer.delayMs = qn == 64 ? 0 : laterAnswerDelayMs.load();
            return answer;
        });
        s->f.server.setAnswer("*", kDanmakuPath, ZuviScriptedAnswer::text(kDanmakuXml, "text/xml"));
        s->f.answerJson(kRelatedPath, relatedJson(1));
        s->f.answerJson(kCommentsPath, commentsJson(0, 1));
        s->make();
        new ZuviVideoScreenDesktop(s->c.get(), &nowPlaying, &keys);
        s->c->loadViewIfNeeded();
        s->c->viewWillAppear();
        QTRY_VERIFY(s->lastPlayer());
        QTRY_COMPARE(s->c->danmakuItems().size(), 2);
    }
    void cleanup()
    {
        s.reset();
        segmentedOnly = 0;
        laterAnswerDelayMs = 0;
    }

    void qualityChoiceRefetchesFromThereAndCarriesOn()
    {
        ZuviScriptedMoviePlayer *player = s->lastPlayer();
        ZuviPlaybackOptions *options = s->c->playbackOptions();
        QCOMPARE(options->qualityIndex(), 0);
        player->setTime(123.5);
        // 480P has no single file: the walk goes down to 360P, never up.
        segmentedOnly = 32;
        const int before = s->f.server.requests(kPlayURLPath).size();
        options->chooseQuality(1);
        QVERIFY(options->isSwitchingQuality());
        QTRY_COMPARE(player->contentURL(), QUrl(kSecondAddress.arg(16)));

        QStringList asked;
        for (const auto &r : s->f.server.requests(kPlayURLPath).mid(before)) {
            asked << r.queryValue("qn");
            QCOMPARE(r.queryValue("cid"), QStringLiteral("500"));
        }
        QCOMPARE(asked, QStringList({"32", "16"}));
        // The same player carries on where the movie was, in the new quality.
        QCOMPARE(s->players.size(), 1);
        QCOMPARE(player->initialPlaybackTime(), 123.5);
        QCOMPARE(player->playbackState(), Player::PlaybackPlaying);
        QCOMPARE(s->c->activeQuality(), 16);
        QCOMPARE(options->qualityIndex(), 2);
        QVERIFY(!options->isSwitchingQuality());
        // The danmaku stay loaded; the stored preference is untouched.
        QCOMPARE(s->c->danmakuItems().size(), 2);
        QVERIFY(!s->f.defaults.get()->containsKey(ZuviQualityPreference::kModeKey) ||
                ZuviQualityPreference(s->f.defaults.get()).modeIndex() == 0);
        QCOMPARE(s->c->currentQualityOrder(), QList<int>({64, 32, 16}));
    }

    void failedSwitchKeepsTheMoviePlaying()
    {
        ZuviScriptedMoviePlayer *player = s->lastPlayer();
        const QUrl address = player->contentURL();
        segmentedOnly = 16;
        s->c->playbackOptions()->chooseQuality(2);
        QTRY_VERIFY(!s->c->playbackOptions()->isSwitchingQuality());
        QCOMPARE(player->contentURL(), address);
        QCOMPARE(s->c->activeQuality(), 64);
        QVERIFY(s->c->stateText().startsWith(QStringLiteral("清晰度切换失败")));
        QVERIFY(s->c->isStateVisible());
        // The note goes after a moment; the movie never stopped.
        s->f.scheduler.advance(3.1);
        QVERIFY(!s->c->isStateVisible());
        QCOMPARE(player->playbackState(), Player::PlaybackPlaying);
    }

    void leavingWithASwitchOutstandingIsSafe()
    {
        laterAnswerDelayMs = 300;
        ZuviScreenLifetimeCheck check(&s->f.server, s->f.client.get(), {&s->f.scheduler});
        s->c->playbackOptions()->chooseQuality(1);
        QVERIFY2(check.waitForRequests(1), qPrintable(check.failure()));
        QVERIFY2(check.destroyAndDrain(s->c.release()), qPrintable(check.failure()));
        QCOMPARE(check.requestsAfterDestruction(), 0);
    }

    void keysReachTheScreensControls()
    {
        using K = ZuviKeyboardShortcuts;
        ZuviScriptedMoviePlayer *player = s->lastPlayer();
        ZuviPlaybackOptions *options = s->c->playbackOptions();
        options->setVolume(0.5);

        QVERIFY(keys.handleKeyPress(Qt::Key_Up, Qt::NoModifier));
        QCOMPARE(player->volume(), 0.6);
        QVERIFY(keys.handleKeyPress(Qt::Key_Down, Qt::NoModifier, true)); // held down
        QVERIFY(keys.handleKeyPress(Qt::Key_Down, Qt::NoModifier, true));
        QCOMPARE(player->volume(), 0.4);
        QVERIFY(keys.handleKeyPress(Qt::Key_M, Qt::NoModifier));
        QVERIFY(player->isMuted());
        QVERIFY(s->f.defaults.get()->boolForKey(ZuviPlaybackOptions::kMutedKey));

        QVERIFY(keys.handleKeyPress(Qt::Key_BracketRight, Qt::NoModifier));
        QCOMPARE(player->currentPlaybackRate(), 1.25);
        for (int i = 0; i < 5; ++i)
            keys.handleKeyPress(Qt::Key_BracketLeft, Qt::NoModifier);
        QCOMPARE(player->currentPlaybackRate(), 0.5);

        const bool danmaku = s->c->isDanmakuEnabled();
        QVERIFY(keys.handleKeyPress(Qt::Key_D, Qt::NoModifier));
        QCOMPARE(s->c->isDanmakuEnabled(), !danmaku);

        // Esc belongs to the focused item (a menu, a dialog) unless there is
        // a fullscreen to leave.
        QVERIFY(!keys.handleKeyPress(Qt::Key_Escape, Qt::NoModifier));
        QVERIFY(keys.handleKeyPress(Qt::Key_F, Qt::NoModifier));
        QVERIFY(player->isFullscreen());
        QVERIFY(keys.handleKeyPress(Qt::Key_Escape, Qt::NoModifier));
        QVERIFY(!player->isFullscreen());
        QVERIFY(keys.isBound(K::Mute));

        // The keys go with the screen.
        s->c.reset();
        QVERIFY(!keys.isBound(K::Mute));
        QVERIFY(!keys.handleKeyPress(Qt::Key_Up, Qt::NoModifier));
    }

private:
    ZuviNowPlaying nowPlaying;
    ZuviKeyboardShortcuts keys;
    std::unique_ptr<ZuviPlayerTestScreen> s;
    // Read by the server's thread: qualities (as bits of their codes) that
    // only have a segmented answer, and the delay of every answer but 720P.
    std::atomic<int> segmentedOnly{0};
    std::atomic<int> laterAnswerDelayMs{0};
};

QTEST_MAIN(TestPlayerControls)
#include "tst_zuviplayercontrols.moc"
