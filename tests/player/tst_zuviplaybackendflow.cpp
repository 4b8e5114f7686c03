#include "app/zuvinavigationcontroller.h"
#include "browse/zuvivideoscreenopener.h"
#include "danmaku/zuvidanmakuoverlayview.h"
#include "player/zuvifastforward.h"
#include "player/zuviplaybackendcard.h"
#include "player/zuvivideoactions.h"
#include "player/zuvivideosidecontent.h"
#include "zuviplayertestscreen.h"
#include "zuvistandinviewcontroller.h"

using namespace ZuviPlayerTest;
using Player = ZuviMoviePlayer;

// The video screen after the movie: the end card and its countdown into the
// related video in the same fullscreen player, fast forward and the gesture
// rules, and the screen going away with everything under way. The inline end
// card with its replay and a sent danmaku are driven end to end by
// video-screen-e2e.sh.
// Timers run on the virtual clock, with scripted players.
namespace {
const QString kSignedIn = "DedeUserID=42; DedeUserID__ckMd5=m; SESSDATA=s; zuvi_jct=tok; "
                          "buvid3=b3; buvid4=b4; buvid_fp=b3; b_nut=1";
const QString kRelatedURL = QStringLiteral("http://127.0.0.1:9/related.mp4");

// Answers for the video and, by bvid, for its first related video.
void answerWithRelated(ZuviClientTestFixture &f)
{
    f.server.setHandler("*", kDetailPath, [](const ZuviRecordedRequest &r) {
        return r.queryValue("bvid") == "BV1rel0"
                   ? ZuviScriptedAnswer::json(detailJson(1, QStringLiteral("BV1rel0"), 5))
                   : ZuviScriptedAnswer::json(detailJson());
    });
    f.server.setHandler("*", kPlayURLPath, [](const ZuviRecordedRequest &r) {
        return ZuviScriptedAnswer::json(
            r.queryValue("bvid") == "BV1rel0" ? playJson(64, kRelatedURL) : playJson(64));
    });
    f.server.setAnswer("*", kDanmakuPath, ZuviScriptedAnswer::text(kDanmakuXml, "text/xml"));
    f.answerJson(kRelatedPath, relatedJson(3));
    f.answerJson(kCommentsPath, commentsJson(0, 5));
}
} // namespace

class TestPlaybackEndFlow : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { s.reset(); }

    void fullscreenEndCountsDownIntoRelatedVideo();
    void inlineRelatedOpensAScreenAndTheEndComesBack();
    void hidingTheEndStopsTheCountdownOnTheNextTick();
    void errorEndNeverCountsDown();
    void longPressPlaysAtDoubleSpeedWhilePlaying();
    void gestureArbitration();
    void screenGoneWithEverythingUnderWay();

private:
    // Plays the video until the related list is in.
    void startPlaying();
    std::unique_ptr<ZuviPlayerTestScreen> s;
};

void TestPlaybackEndFlow::init()
{
    s = std::make_unique<ZuviPlayerTestScreen>();
}

void TestPlaybackEndFlow::startPlaying()
{
    answerWithRelated(s->f);
    s->make();
    s->c->loadViewIfNeeded();
    s->c->viewWillAppear();
    QTRY_VERIFY(s->lastPlayer());
    QTRY_COMPARE(s->c->sideContent()->relatedVideos().size(), 3);
    // Related covers wait for the movie, then start a moment after it can play.
    QVERIFY(!s->c->relatedImagesAllowed());
    s->lastPlayer()->changeLoadState(Player::LoadStatePlayable);
    QVERIFY(!s->c->relatedImagesAllowed());
    s->f.scheduler.advance(0.01);
    QVERIFY(s->c->relatedImagesAllowed());
}

void TestPlaybackEndFlow::fullscreenEndCountsDownIntoRelatedVideo()
{
    startPlaying();
    auto *c = s->c.get();
    auto *player = s->lastPlayer();
    player->setFullscreen(true, true);
    player->finish(Player::FinishReasonPlaybackEnded);
    QVERIFY(c->isPlaybackEndVisible());
    QVERIFY(c->isPlaybackEndInFullscreen());
    QCOMPARE(c->playbackEndBadgeText(), QStringLiteral("5秒后播放"));
    QCOMPARE(c->playbackEndTitleText(), QStringLiteral("相关0"));
    QVERIFY(c->playbackEndMetaText().startsWith(QStringLiteral("即将播放推荐  UP UP主  播放 ")));
    QVERIFY(c->endCard()->coverSource().toString().startsWith("image://"));

    const int detailID = c->detailRequestID();
    const int playbackID = c->playbackRequestID();
    const int movieID = c->movieStartRequestID();
    const int commentsID = c->sideContent()->commentsRequestID();
    for (int left : {4, 3, 2, 1}) {
        s->f.scheduler.advance(1.0);
        QCOMPARE(c->playbackEndBadgeText(), QStringLiteral("%1秒后播放").arg(left));
    }
    QCOMPARE(c->videoItem().bvid, QStringLiteral("BV1test"));
    s->f.scheduler.advance(1.0);
    // The fifth tick: the related video loads, the card says so, and every
    // answer of the finished video is now stale.
    QCOMPARE(c->videoItem().bvid, QStringLiteral("BV1rel0"));
    QCOMPARE(c->sourceTitle(), QStringLiteral("相关推荐"));
    QCOMPARE(c->playbackEndBadgeText(), QStringLiteral("正在播放"));
    QCOMPARE(c->playbackEndTitleText(), QStringLiteral("相关0"));
    QVERIFY(c->detailRequestID() > detailID);
    QVERIFY(c->playbackRequestID() > playbackID);
    QVERIFY(c->movieStartRequestID() > movieID);
    QVERIFY(c->sideContent()->commentsRequestID() > commentsID);

    // The new address plays in the player that never left fullscreen.
    QTRY_COMPARE(player->contentURL(), QUrl(kRelatedURL));
    QCOMPARE(s->players.size(), 1);
    QVERIFY(player->isFullscreen());
    QCOMPARE(player->playbackState(), Player::PlaybackPlaying);
    QVERIFY(!c->isPlaybackEndVisible());
    QVERIFY(c->isDanmakuTimerRunning());
    QVERIFY(c->isDanmakuOverlayInFullscreen());
    QCOMPARE(c->detail()->bvid, QStringLiteral("BV1rel0"));
}

void TestPlaybackEndFlow::inlineRelatedOpensAScreenAndTheEndComesBack()
{
    answerWithRelated(s->f);
    ZuviNavigationController navigation(new ZuviStandInViewController("推荐"), &s->f.scheduler);
    QList<QPointer<ZuviVideoPlayerViewController>> screens;
    ZuviVideoScreenOpener::setFactory([&](const ZuviVideoItem &item, const QString &title) {
        auto *screen =
            new ZuviVideoPlayerViewController(item, title, s->f.client.get(), &s->f.scheduler,
                                              s->f.defaults.get(), [this](QObject *parent) {
                                                  auto *p = new ZuviScriptedMoviePlayer(parent);
                                                  s->players.append(p);
                                                  return p;
                                              });
        screens.append(screen);
        return screen;
    });
    QVERIFY(ZuviVideoScreenOpener::open(&navigation, listItem(), QStringLiteral("推荐")));
    ZuviVideoPlayerViewController *first = screens.first();
    QCOMPARE(navigation.topViewController(), first);
    QVERIFY(first->hidesBottomBarWhenPushed());
    QCOMPARE(first->sourceTitle(), QStringLiteral("推荐"));
    // The stack loaded the screen and made it appear: it plays.
    QTRY_VERIFY(first->moviePlayer());
    QTRY_COMPARE(first->sideContent()->relatedVideos().size(), 3);
    s->lastPlayer()->finish(Player::FinishReasonPlaybackEnded);
    first->playbackEndRelatedTapped();
    ZuviVideoScreenOpener::setFactory({});
    QCOMPARE(navigation.depth(), 3);
    QCOMPARE(screens.size(), 2);
    QCOMPARE(screens.last()->videoItem().bvid, QStringLiteral("BV1rel0"));
    QCOMPARE(screens.last()->sourceTitle(), QStringLiteral("相关推荐"));
    QVERIFY(!first->isPlaybackEndVisible());
    // Back from the related video, the finished one shows its end again.
    QVERIFY(navigation.popViewController(true));
    QVERIFY(first->isPlaybackEndVisible());
    QVERIFY(!first->isPlaybackEndInFullscreen());
    // Exit on the inline end card goes back one screen.
    QPointer<ZuviVideoPlayerViewController> guarded(first);
    first->playbackEndExitTapped();
    QCOMPARE(navigation.depth(), 1);
    QVERIFY(!guarded || !guarded->acceptsMediaCallbacks());
}

void TestPlaybackEndFlow::hidingTheEndStopsTheCountdownOnTheNextTick()
{
    startPlaying();
    auto *c = s->c.get();
    s->lastPlayer()->setFullscreen(true, true);
    s->lastPlayer()->finish(Player::FinishReasonPlaybackEnded);
    s->f.scheduler.advance(1.0);
    QCOMPARE(c->endCard()->countdownRemaining(), 4);
    c->hidePlaybackEndView();
    s->f.scheduler.advance(1.0);
    QVERIFY(!c->endCard()->isCountdownRunning());
    QCOMPARE(c->endCard()->countdownRemaining(), 0);
    s->f.scheduler.advance(10);
    QCOMPARE(c->videoItem().bvid, QStringLiteral("BV1test"));
}

void TestPlaybackEndFlow::errorEndNeverCountsDown()
{
    startPlaying();
    ZuviPlaybackEndCard *card = s->c->endCard();
    card->show(Player::FinishReasonPlaybackError, true);
    QVERIFY(!card->isCountdownRunning());
    QCOMPARE(card->badgeText(), QStringLiteral("相关推荐"));
    QVERIFY(card->metaText().startsWith(QStringLiteral("点按播放推荐")));
    card->showError(QStringLiteral("坏了"));
    QCOMPARE(card->badgeText(), QStringLiteral("播放失败"));
    QVERIFY(!card->isRelatedButtonEnabled());
    // Related videos arriving later leave the failure on the card.
    s->c->sideContent()->loadRelatedVideos();
    QTRY_VERIFY(!s->c->sideContent()->isLoadingRelated());
    QCOMPARE(card->badgeText(), QStringLiteral("播放失败"));
    QCOMPARE(card->titleText(), QStringLiteral("坏了"));
    s->f.scheduler.advance(10);
    QCOMPARE(s->c->videoItem().bvid, QStringLiteral("BV1test"));
}

void TestPlaybackEndFlow::longPressPlaysAtDoubleSpeedWhilePlaying()
{
    startPlaying();
    auto *c = s->c.get();
    auto *player = s->lastPlayer();
    ZuviFastForward *ff = c->fastForward();

    player->pause();
    c->fastForwardLongPressBegan();
    QVERIFY(!ff->isActive());
    QCOMPARE(player->currentPlaybackRate(), 1.0);

    player->play();
    QVERIFY(c->fastForwardLongPressShouldBegin(false));
    c->fastForwardLongPressBegan();
    QVERIFY(ff->isActive());
    QVERIFY(ff->isBadgeVisible());
    QCOMPARE(ff->badgeText(), QStringLiteral("2x 快进"));
    QCOMPARE(player->currentPlaybackRate(), 2.0);
    c->fastForwardLongPressEnded();
    QCOMPARE(player->currentPlaybackRate(), 1.0);
    QVERIFY(!ff->isActive());
    QVERIFY(!ff->isBadgeVisible());

    // A slower rate set before the press is the one that comes back, and
    // releasing the player ends the press too.
    player->setCurrentPlaybackRate(0.5);
    c->fastForwardLongPressBegan();
    QCOMPARE(ff->restoreRate(), 0.5);
    c->releaseMoviePlayer();
    QVERIFY(!ff->isActive());
    QCOMPARE(player->currentPlaybackRate(), 0.5);
}

void TestPlaybackEndFlow::gestureArbitration()
{
    startPlaying();
    auto *c = s->c.get();
    // The long press never starts on a control or over the end card.
    QVERIFY(!c->fastForwardLongPressShouldBegin(true));
    s->lastPlayer()->finish(Player::FinishReasonPlaybackEnded);
    QVERIFY(!c->fastForwardLongPressShouldBegin(false));
    c->playbackEndReplayTapped();

    // The edge pan needs fullscreen playback, the left edge zone, a move to
    // the right and more sideways than up or down.
    QVERIFY(!c->fullscreenEdgePanShouldBegin(10, 320, 300, 0, false));
    s->lastPlayer()->setFullscreen(true, true);
    QVERIFY(c->fullscreenEdgePanShouldBegin(58, 320, 300, 0, false));
    QVERIFY(!c->fullscreenEdgePanShouldBegin(70, 320, 300, 0, false));
    QVERIFY(c->fullscreenEdgePanShouldBegin(40, 160, 300, 0, false));
    QVERIFY(!c->fullscreenEdgePanShouldBegin(41, 160, 300, 0, false));
    QVERIFY(!c->fullscreenEdgePanShouldBegin(10, 320, -300, 0, false));
    QVERIFY(!c->fullscreenEdgePanShouldBegin(10, 320, 300, 400, false));
    QVERIFY(c->fullscreenEdgePanShouldBegin(10, 320, 300, 390, false));
    QVERIFY(!c->fullscreenEdgePanShouldBegin(10, 320, 300, 0, true));
}

void TestPlaybackEndFlow::screenGoneWithEverythingUnderWay()
{
    ZuviClientTestFixture &f = s->f;
    f.client->updateCredentialCookie(kSignedIn);
    ZuviScriptedAnswer late = ZuviScriptedAnswer::json(playJson(64));
    late.delayMs = 400;
    f.answerJson(kDetailPath, detailJson());
    f.server.setAnswer("*", kPlayURLPath, late);
    for (const QString &path :
         {kDanmakuPath, kRelatedPath, kCommentsPath, QStringLiteral("/x/v2/history/toview/add")}) {
        ZuviScriptedAnswer answer = late;
        answer.body = path == kRelatedPath    ? relatedJson(3)
                      : path == kCommentsPath ? commentsJson(0, 20)
                      : path == kDanmakuPath  ? kDanmakuXml
                                              : zuviJson({{"code", 0}});
        f.server.setAnswer("*", path, answer);
    }
    s->make();
    auto *c = s->c.get();
    c->loadViewIfNeeded();
    c->viewWillAppear();
    ZUVI_WAIT(f.server.requestCount(kCommentsPath) == 1 &&
              f.server.requestCount(kRelatedPath) == 1 &&
              f.server.requestCount(kPlayURLPath) == 1 && f.server.requestCount(kDanmakuPath) == 1);
    c->actions()->sendWatchLaterAction();
    QVERIFY(c->actions()->isInProgress());
    // A second detail request, answered late, so the detail is under way too.
    ZuviScriptedAnswer lateDetail = ZuviScriptedAnswer::json(detailJson());
    lateDetail.delayMs = 400;
    f.server.setAnswer("*", kDetailPath, lateDetail);
    c->loadVideoDetail();
    ZUVI_WAIT(f.server.requestCount(kDetailPath) == 2 &&
              f.server.requestCount(QStringLiteral("/x/v2/history/toview/add")) == 1);

    QPointer<ZuviVideoSideContent> side = c->sideContent();
    s->c.reset();
    QVERIFY(!side);
    // Wait past every answer; none of them may reach the screen or its parts.
    bool later = false;
    ZuviScriptedAnswer sentinel = ZuviScriptedAnswer::json("{}");
    sentinel.delayMs = 900;
    f.server.setAnswer("*", "/sentinel", sentinel);
    f.client->send(f.client->requestWithURLString(f.server.urlString("/sentinel"), {}),
                   [&](const ZuviHTTPResponse &, const ZuviError &) { later = true; });
    ZUVI_WAIT(later);
    QCoreApplication::processEvents();
    f.scheduler.advance(5);
    // The address arrived for nobody: no player was ever made.
    QVERIFY(s->players.isEmpty());
}

QTEST_MAIN(TestPlaybackEndFlow)
#include "tst_zuviplaybackendflow.moc"
