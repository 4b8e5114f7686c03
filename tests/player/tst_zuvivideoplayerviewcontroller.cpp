#include "../net/zuviclienttestfixture.h"
#include "danmaku/zuvidanmakuoverlayview.h"
#include "player/zuvivideoplayerviewcontroller.h"
#include "zuviplayertestscreen.h"
#include "zuviscriptedmovieplayer.h"

#include <QQuickWindow>
#include <QSignalSpy>

#include <cmath>

using Controller = ZuviVideoPlayerViewController;
using Player = ZuviMoviePlayer;

using namespace ZuviPlayerTest;

namespace {
constexpr double kPi = 3.14159265358979323846;
} // namespace

class TestVideoPlayerViewController : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void qualityPreference_data();
    void qualityPreference();
    void qualityTitleBelowTheLadder();
    void addressRequestWalksPreferredOrder();
    void normalStartShowsStateTextsInOrder();
    void stalledLoadStateShowsBuffering();
    void detailAnswerAfterReentryIsIgnored();
    void fallbackDetailAndPageChoice();
    void restoreOnReentry_data();
    void restoreOnReentry();
    void retry_data();
    void retry();
    void stallFreezesOverlayAndProgressResumesIt();
    void overlayFollowsVideoFramesWhileTheyCome();
    void fullscreenMovesOverlayAndResumesPlay_data();
    void fullscreenMovesOverlayAndResumesPlay();
    void finishReasons_data();
    void finishReasons();
    void danmakuLoadingIsTaggedWithPlaybackRequest();
    void previewTextsAndLocalDanmaku();
    void angles();
    void edgePanLeavesFullscreen_data();
    void edgePanLeavesFullscreen();

private:
    void makeController(const ZuviVideoItem &item = listItem());
    void answerNormally();
    // Starts the screen and waits until the scripted player exists.
    void startPlaying();
    ZuviScriptedMoviePlayer *lastPlayer() const
    {
        return players.isEmpty() ? nullptr : players.constLast().data();
    }
    void goFullscreen(ZuviScriptedMoviePlayer *player);

    std::unique_ptr<ZuviClientTestFixture> f;
    std::unique_ptr<QQuickWindow> window;
    QQuickItem *container = nullptr;
    QQuickItem *movieView = nullptr;
    std::unique_ptr<Controller> c;
    QList<QPointer<ZuviScriptedMoviePlayer>> players;
};

void TestVideoPlayerViewController::init()
{
    f = std::make_unique<ZuviClientTestFixture>();
    window = std::make_unique<QQuickWindow>();
    window->contentItem()->setSize(QSizeF(1024, 768));
    container = new QQuickItem(window->contentItem());
    container->setSize(QSizeF(640, 360));
    movieView = new QQuickItem(container);
    movieView->setSize(container->size());
    players.clear();
}

void TestVideoPlayerViewController::cleanup()
{
    c.reset();
    window.reset();
    f.reset();
}

void TestVideoPlayerViewController::makeController(const ZuviVideoItem &item)
{
    c = std::make_unique<Controller>(item, QStringLiteral("推荐"), f->client.get(), &f->scheduler,
                                     f->defaults.get(), [this](QObject *parent) {
                                         auto *p = new ZuviScriptedMoviePlayer(parent);
                                         p->setNaturalSize(QSizeF(1280, 720));
                                         players.append(p);
                                         return p;
                                     });
    c->setPlayerContainer(container);
    c->setMovieView(movieView);
}

void TestVideoPlayerViewController::answerNormally()
{
    f->answerJson(kDetailPath, detailJson());
    f->answerJson(kPlayURLPath, playJson(64));
    f->server.setAnswer("*", kDanmakuPath, ZuviScriptedAnswer::text(kDanmakuXml, "text/xml"));
}

void TestVideoPlayerViewController::startPlaying()
{
    answerNormally();
    makeController();
    c->loadViewIfNeeded();
    c->viewWillAppear();
    QTRY_VERIFY(c->moviePlayer() != nullptr);
    QTRY_COMPARE(c->danmakuItems().size(), 2);
}

void TestVideoPlayerViewController::goFullscreen(ZuviScriptedMoviePlayer *player)
{
    player->setFullscreen(true, true);
}

void TestVideoPlayerViewController::qualityPreference_data()
{
    QTest::addColumn<QVariant>("stored");
    QTest::addColumn<bool>("migrated");
    QTest::addColumn<int>("index");
    QTest::addColumn<QVariant>("storedAfter");
    QTest::addColumn<QList<int>>("order");
    QTest::addColumn<QString>("title");

    const QList<int> hi{64, 32, 16}, mid{32, 64, 16}, lo{16, 32, 64};
    QTest::newRow("absent") << QVariant() << false << 0 << QVariant() << hi << "720P";
    QTest::newRow("legacy 5") << QVariant(5) << false << 2 << QVariant(2) << lo << "360P";
    QTest::newRow("legacy 2") << QVariant(2) << false << 1 << QVariant(1) << mid << "480P";
    QTest::newRow("legacy 1") << QVariant(1) << false << 0 << QVariant(0) << hi << "720P";
    QTest::newRow("migrated 1") << QVariant(1) << true << 1 << QVariant(1) << mid << "480P";
    QTest::newRow("migrated -1") << QVariant(-1) << true << 0 << QVariant(-1) << hi << "720P";
    QTest::newRow("migrated 7") << QVariant(7) << true << 0 << QVariant(7) << hi << "720P";
}

void TestVideoPlayerViewController::qualityPreference()
{
    QFETCH(QVariant, stored);
    QFETCH(bool, migrated);
    QFETCH(int, index);
    QFETCH(QVariant, storedAfter);
    QFETCH(QList<int>, order);
    QFETCH(QString, title);
    ZuviDefaults *d = f->defaults.get();
    if (stored.isValid())
        d->setObject(stored, Controller::kPreferredQualityModeKey);
    if (migrated)
        d->setBool(true, Controller::kPreferredQualityModeLegacyMigratedKey);
    makeController();

    QCOMPARE(c->preferredQualityModeIndex(), index);
    QCOMPARE(d->boolForKey(Controller::kPreferredQualityModeLegacyMigratedKey), true);
    QCOMPARE(d->containsKey(Controller::kPreferredQualityModeKey), storedAfter.isValid());
    if (storedAfter.isValid())
        QCOMPARE(d->integerForKey(Controller::kPreferredQualityModeKey), storedAfter.toLongLong());
    // The migration runs once: a second read changes nothing.
    QCOMPARE(c->preferredQualityModeIndex(), index);
    QCOMPARE(c->currentQualityOrder(), order);
    QCOMPARE(c->currentQualityModeTitle(), title);
}

// 720P, 480P and 360P are the preference rows' titles, at their codes'
// lower bounds; below the ladder a code shows as it is.
void TestVideoPlayerViewController::qualityTitleBelowTheLadder()
{
    QCOMPARE(Controller::qualityDisplayTitleForQuality(15), QStringLiteral("15p"));
}

void TestVideoPlayerViewController::addressRequestWalksPreferredOrder()
{
    f->defaults.get()->setInteger(1, Controller::kPreferredQualityModeKey);
    f->defaults.get()->setBool(true, Controller::kPreferredQualityModeLegacyMigratedKey);
    f->answerJson(kDetailPath, detailJson());
    // 32 has only a segmented answer; 64 has the single file.
    f->server.setHandler("*", kPlayURLPath, [](const ZuviRecordedRequest &r) {
        return ZuviScriptedAnswer::json(r.queryValue("qn") == "64" ? playJson(64) : dashOnlyJson());
    });
    f->server.setAnswer("*", kDanmakuPath, ZuviScriptedAnswer::text(kDanmakuXml, "text/xml"));
    makeController();
    c->loadViewIfNeeded();
    QTRY_VERIFY(c->moviePlayer());
    QStringList qualities;
    for (const auto &r : f->server.requests(kPlayURLPath)) {
        qualities << r.queryValue("qn");
        QCOMPARE(r.queryValue("cid"), QStringLiteral("500"));
    }
    QCOMPARE(qualities, QStringList({"32", "64"}));
    QCOMPARE(c->activeQuality(), 64);
    QCOMPARE(c->stateText(), QStringLiteral("正在播放 64p"));
}

void TestVideoPlayerViewController::normalStartShowsStateTextsInOrder()
{
    answerNormally();
    makeController();
    QStringList texts;
    connect(c.get(), &Controller::stateLabelChanged, this, [&] {
        const QString line = c->isStateVisible() ? c->stateText() : QStringLiteral("<hidden>");
        if (texts.isEmpty() || texts.constLast() != line)
            texts << line;
    });
    c->loadViewIfNeeded();
    c->viewWillAppear();
    QTRY_VERIFY(c->moviePlayer());
    auto *player = lastPlayer();
    QCOMPARE(player->playCount, 1);
    QVERIFY(c->isDanmakuTimerRunning());
    QVERIFY(!c->isRetryVisible());
    player->changeLoadState(Player::LoadStatePlayable);
    QCOMPARE(texts, QStringList({"正在加载视频信息", "正在获取720P播放地址",
                                 "已获取 64p MP4，正在启动播放", "正在播放 64p", "<hidden>"}));
    QCOMPARE(c->retryTitle(), QStringLiteral("重试播放"));
    QCOMPARE(player->contentURL(), QUrl("http://127.0.0.1:9/v.mp4"));
}

void TestVideoPlayerViewController::stalledLoadStateShowsBuffering()
{
    startPlaying();
    auto *player = lastPlayer();
    QVERIFY(player);
    player->changeLoadState(Player::LoadStatePlayable | Player::LoadStatePlaythroughOK);
    QVERIFY(!c->isStateVisible());
    player->changeLoadState(Player::LoadStateStalled);
    QVERIFY(c->isStateVisible());
    QCOMPARE(c->stateText(), QStringLiteral("播放缓冲中"));
    // Stalled together with another bit is not "exactly stalled"; playable wins.
    player->changeLoadState(Player::LoadStateStalled | Player::LoadStatePlayable);
    QVERIFY(!c->isStateVisible());
}

void TestVideoPlayerViewController::detailAnswerAfterReentryIsIgnored()
{
    ZuviScriptedAnswer slow = ZuviScriptedAnswer::json(detailJson());
    slow.delayMs = 150;
    f->server.setAnswer("*", kDetailPath, slow);
    f->answerJson(kPlayURLPath, playJson(64));
    ZuviScriptedAnswer sentinel = ZuviScriptedAnswer::text(kDanmakuXml, "text/xml");
    sentinel.delayMs = 600;
    f->server.setAnswer("*", kDanmakuPath, sentinel);
    makeController();
    c->loadViewIfNeeded();
    const int firstNumber = c->detailRequestID();
    c->viewWillDisappear();
    c->viewWillAppear();
    QVERIFY(c->detailRequestID() > firstNumber);
    QVERIFY(c->acceptsMediaCallbacks());

    // A later, slower request through the same client: once it is answered,
    // the detail answer has long been delivered to the screen.
    bool sentinelDone = false;
    f->client->fetchDanmakuWithCID(
        1, [&](const QList<ZuviDanmakuItem> &, const ZuviError &) { sentinelDone = true; });
    QTRY_VERIFY(sentinelDone);
    QCOMPARE(f->server.requestCount(kDetailPath), 1);
    QVERIFY(!c->detail().has_value());
    QCOMPARE(f->server.requestCount(kPlayURLPath), 0);
    QCOMPARE(c->stateText(), QStringLiteral("正在加载视频信息"));
}

void TestVideoPlayerViewController::fallbackDetailAndPageChoice()
{
    f->answerJson(kDetailPath, R"({"code":-404,"message":"啥都木有"})");
    f->answerJson(kPlayURLPath, playJson(32));
    f->server.setAnswer("*", kDanmakuPath, ZuviScriptedAnswer::text(kDanmakuXml, "text/xml"));
    makeController(listItem(777));
    c->loadViewIfNeeded();
    QTRY_VERIFY(c->moviePlayer());
    QVERIFY(c->detail());
    QCOMPARE(c->detail()->danmakuCountText, QStringLiteral("--"));
    QCOMPARE(c->detail()->desc,
             QStringLiteral("详情接口暂不可用，正在使用列表里的 cid 尝试播放。"));
    QCOMPARE(c->pageTitles(), QStringList{"P1"});
    QCOMPARE(f->server.requests(kPlayURLPath).constFirst().queryValue("cid"), "777");
    // Without a cid (a search result) the list entry cannot stand in: the
    // failure's own words and the retry, tst_zuvifailureswitches' "video
    // search" rows.
    QVERIFY(!Controller::fallbackDetailFromVideoItem(listItem(0)));
}

void TestVideoPlayerViewController::restoreOnReentry_data()
{
    QTest::addColumn<double>("leftAt");
    QTest::addColumn<double>("startsAt");
    QTest::newRow("1.0 s starts over") << 1.0 << 0.0;
    QTest::newRow("95 s resumes") << 95.0 << 95.0;
}

void TestVideoPlayerViewController::restoreOnReentry()
{
    QFETCH(double, leftAt);
    QFETCH(double, startsAt);
    startPlaying();
    auto *player = lastPlayer();
    QVERIFY(player);
    player->setTime(leftAt);
    c->viewWillDisappear();
    QVERIFY(!c->moviePlayer());
    QVERIFY(!c->isDanmakuTimerRunning());
    const int requestsBefore = f->server.requestCount();
    c->viewWillAppear();
    QVERIFY(c->moviePlayer());
    auto *again = lastPlayer();
    QVERIFY(again != player);
    QCOMPARE(again->initialPlaybackTime(), startsAt);
    QCOMPARE(again->playCount, 1);
    // The address obtained before is played again without asking the service.
    QCOMPARE(f->server.requestCount(), requestsBefore);
}

void TestVideoPlayerViewController::retry_data()
{
    QTest::addColumn<QString>("failure");
    QTest::addColumn<QString>("retryTitle");
    QTest::addColumn<int>("detailRequests");
    QTest::addColumn<int>("addressRequests");
    QTest::newRow("address failed: address again") << "address"
                                                   << "重试获取" << 1 << 6;
    QTest::newRow("detail failed: detail again") << "detail"
                                                 << "重试获取" << 2 << 0;
    QTest::newRow("movie failed: same address") << "movie"
                                                << "重试播放" << 1 << 1;
}

void TestVideoPlayerViewController::retry()
{
    QFETCH(QString, failure);
    QFETCH(QString, retryTitle);
    QFETCH(int, detailRequests);
    QFETCH(int, addressRequests);
    f->answerJson(kDetailPath, failure == "detail" ? R"({"code":-400,"message":"坏请求"})"
                                                   : detailJson().constData());
    f->answerJson(kPlayURLPath, failure == "address" ? dashOnlyJson() : playJson(64));
    f->server.setAnswer("*", kDanmakuPath, ZuviScriptedAnswer::text(kDanmakuXml, "text/xml"));
    makeController(failure == "detail" ? listItem(0) : listItem());
    c->loadViewIfNeeded();
    if (failure == "movie") {
        QTRY_VERIFY(c->moviePlayer());
        lastPlayer()->finish(Player::FinishReasonPlaybackError);
        QCOMPARE(c->stateText(), QStringLiteral("播放器无法打开当前 MP4 地址"));
    }
    QTRY_VERIFY(c->isRetryVisible());
    QCOMPARE(c->retryTitle(), retryTitle);
    if (failure == "address")
        QVERIFY2(c->stateText().startsWith(QStringLiteral("请求qn=16")),
                 qPrintable(c->stateText()));
    const int playersBefore = int(players.size());
    c->retryButtonTapped();
    QTRY_COMPARE(f->server.requestCount(kDetailPath), detailRequests);
    QTRY_COMPARE(f->server.requestCount(kPlayURLPath), addressRequests);
    if (failure == "movie")
        QCOMPARE(players.size(), playersBefore + 1);
    else
        QTRY_VERIFY(c->isRetryVisible());
}

void TestVideoPlayerViewController::stallFreezesOverlayAndProgressResumesIt()
{
    startPlaying();
    auto *player = lastPlayer();
    QVERIFY(player);
    ZuviDanmakuOverlayView *overlay = c->danmakuOverlay();
    QCOMPARE(overlay->parentItem(), container);
    QCOMPARE(overlay->size(), container->size());
    const QList<double> clock{12.000, 12.003, 12.004, 12.004, 12.004};
    const QList<bool> paused{false, false, false, false, true};
    const QList<int> stagnant{0, 1, 2, 3, 4};
    for (int i = 0; i < clock.size(); ++i) {
        player->setTime(clock[i]);
        f->scheduler.advance(Controller::kDanmakuTickInterval);
        QCOMPARE(c->stagnantPlaybackTickCount(), stagnant[i]);
        QVERIFY2(overlay->isDanmakuPaused() == paused[i], qPrintable(QString::number(i)));
    }
    player->setTime(12.2);
    f->scheduler.advance(Controller::kDanmakuTickInterval);
    QVERIFY(!overlay->isDanmakuPaused());
    QCOMPARE(c->stagnantPlaybackTickCount(), 0);
    QCOMPARE(c->lastDanmakuTickPlaybackTime(), 12.2);
    // A pause freezes at once, whatever the clock says.
    player->setTime(12.5);
    player->changeState(Player::PlaybackPaused);
    QVERIFY(overlay->isDanmakuPaused());
}

void TestVideoPlayerViewController::overlayFollowsVideoFramesWhileTheyCome()
{
    startPlaying();
    QPointer<ZuviScriptedMoviePlayer> player = lastPlayer();
    ZuviDanmakuOverlayView *overlay = c->danmakuOverlay();
    QVERIFY(!overlay->isFollowingVideoFrames());
    emit player->videoFrameDidChange();
    QVERIFY(overlay->isFollowingVideoFrames());
    // Pictures within every tick keep the overlay on them, over many ticks.
    for (int tick = 0; tick < 5; ++tick) {
        f->scheduler.advance(Controller::kDanmakuTickInterval / 2);
        emit player->videoFrameDidChange();
        f->scheduler.advance(Controller::kDanmakuTickInterval / 2);
        QVERIFY2(overlay->isFollowingVideoFrames(), qPrintable(QString::number(tick)));
    }
    // A whole tick without a picture: the overlay draws on its own again.
    f->scheduler.advance(Controller::kDanmakuTickInterval);
    QVERIFY(!overlay->isFollowingVideoFrames());

    // A picture from a player this screen has let go of changes nothing.
    emit player->videoFrameDidChange();
    QVERIFY(overlay->isFollowingVideoFrames());
    c->retryButtonTapped();
    QVERIFY(lastPlayer() != player);
    QVERIFY(!overlay->isFollowingVideoFrames());
    QVERIFY(player);
    emit player->videoFrameDidChange();
    QVERIFY(!overlay->isFollowingVideoFrames());
}

void TestVideoPlayerViewController::fullscreenMovesOverlayAndResumesPlay_data()
{
    QTest::addColumn<bool>("byUserExit");
    QTest::newRow("Esc (user exit)") << true;
    QTest::newRow("player leaves fullscreen") << false;
}

void TestVideoPlayerViewController::fullscreenMovesOverlayAndResumesPlay()
{
    QFETCH(bool, byUserExit);
    startPlaying();
    auto *player = lastPlayer();
    QVERIFY(player);
    ZuviDanmakuOverlayView *overlay = c->danmakuOverlay();
    player->setTime(30);
    goFullscreen(player);
    QVERIFY(c->isMoviePlayerFullscreen());
    QVERIFY(c->isDanmakuOverlayInFullscreen());
    QCOMPARE(movieView->parentItem(), window->contentItem());
    QCOMPARE(overlay->parentItem(), window->contentItem());
    // The 16:9 picture fitted into 1024 × 768 leaves bars above and below.
    QCOMPARE(overlay->size(), QSizeF(1024, 576));
    QCOMPARE(overlay->position(), QPointF(0, 96));
    QVERIFY(overlay->isVisible());
    QVERIFY(overlay->z() > movieView->z());
    QVERIFY(c->movieShouldResumeAfterFullscreenExit());

    const int playsBefore = player->playCount;
    player->pause();
    QVERIFY(!c->movieShouldResumeAfterFullscreenExit());
    player->play();
    QVERIFY(c->movieShouldResumeAfterFullscreenExit());

    if (byUserExit) {
        c->escapePressed();
        QVERIFY(player->lastFullscreenAnimated);
    } else {
        player->setFullscreen(false, true);
    }
    QVERIFY(!player->isFullscreen());
    QVERIFY(!c->isMoviePlayerFullscreen());
    QVERIFY(!c->isDanmakuOverlayInFullscreen());
    QVERIFY(!c->isDanmakuSuspendedForFullscreenExit());
    QCOMPARE(movieView->parentItem(), container);
    QCOMPARE(overlay->parentItem(), container);
    QCOMPARE(overlay->size(), container->size());
    QCOMPARE(overlay->position(), QPointF(0, 0));
    QVERIFY(overlay->isVisible());
    QCOMPARE(player->playCount, playsBefore + 2);
    f->scheduler.advance(1.0);
    QCOMPARE(player->playbackState(), Player::PlaybackPlaying);
    QVERIFY(!c->movieShouldResumeAfterFullscreenExit());
    QVERIFY(c->moviePlayer() == player);
    QVERIFY(c->isDanmakuTimerRunning());
}

void TestVideoPlayerViewController::finishReasons_data()
{
    QTest::addColumn<int>("reason");
    QTest::addColumn<bool>("fullscreen");
    QTest::addColumn<bool>("playerKept");
    QTest::addColumn<bool>("endShown");
    QTest::addColumn<bool>("endInFullscreen");
    QTest::addColumn<QString>("errorText");
    QTest::newRow("ended inline") << 0 << false << false << true << false << "";
    QTest::newRow("error inline") << 1 << false << false << false << false
                                  << "播放器无法打开当前 MP4 地址";
    QTest::newRow("user exit inline") << 2 << false << true << false << false << "";
    QTest::newRow("ended fullscreen") << 0 << true << true << true << true << "";
    QTest::newRow("error fullscreen")
        << 1 << true << false << false << false << "播放器无法打开当前 MP4 地址";
    QTest::newRow("user exit fullscreen") << 2 << true << true << false << false << "";
}

void TestVideoPlayerViewController::finishReasons()
{
    QFETCH(int, reason);
    QFETCH(bool, fullscreen);
    QFETCH(bool, playerKept);
    QFETCH(bool, endShown);
    QFETCH(bool, endInFullscreen);
    QFETCH(QString, errorText);
    startPlaying();
    auto *player = lastPlayer();
    QVERIFY(player);
    player->changeLoadState(Player::LoadStatePlayable);
    if (fullscreen)
        goFullscreen(player);
    emit player->videoFrameDidChange();
    player->finish(reason);
    f->scheduler.advance(1.5);
    // Wherever the danmaku tick stops, the overlay draws on its own again.
    if (!c->isDanmakuTimerRunning())
        QVERIFY(!c->danmakuOverlay()->isFollowingVideoFrames());

    QCOMPARE(c->moviePlayer() != nullptr, playerKept);
    QCOMPARE(c->isPlaybackEndVisible(), endShown);
    QCOMPARE(c->isPlaybackEndInFullscreen(), endInFullscreen);
    QCOMPARE(c->isStateVisible(), !errorText.isEmpty());
    if (!errorText.isEmpty()) {
        QCOMPARE(c->stateText(), errorText);
        QCOMPARE(c->retryTitle(), QStringLiteral("重试播放"));
    }
    if (endShown)
        QCOMPARE(c->playbackEndReason(), reason);
    if (reason == Player::FinishReasonUserExited) {
        // Back inline and playing, with the overlay in the player container.
        QVERIFY(!player->isFullscreen());
        QCOMPARE(player->playbackState(), Player::PlaybackPlaying);
        QCOMPARE(c->danmakuOverlay()->parentItem(), container);
        QVERIFY(c->danmakuOverlay()->isVisible());
        QVERIFY(c->isDanmakuTimerRunning());
    }
    if (reason == Player::FinishReasonPlaybackEnded && fullscreen) {
        // The movie stays fullscreen behind the end view; the danmaku stop.
        QVERIFY(player->isFullscreen());
        QVERIFY(!c->isDanmakuTimerRunning());
        QVERIFY(!c->danmakuOverlay()->isVisible());
        // Exit leaves fullscreen and keeps the end view, inline.
        c->playbackEndExitTapped();
        QVERIFY(!c->moviePlayer());
        QVERIFY(c->isPlaybackEndVisible());
        QVERIFY(!c->isPlaybackEndInFullscreen());
        QCOMPARE(movieView->parentItem(), container);
    }
    if (!playerKept)
        QVERIFY(!c->isDanmakuTimerRunning());
}

void TestVideoPlayerViewController::danmakuLoadingIsTaggedWithPlaybackRequest()
{
    f->answerJson(kDetailPath, detailJson(3));
    f->answerJson(kPlayURLPath, playJson(64));
    ZuviScriptedAnswer slow = ZuviScriptedAnswer::text(kDanmakuXml, "text/xml");
    slow.delayMs = 300;
    f->server.setHandler("*", kDanmakuPath, [slow](const ZuviRecordedRequest &r) {
        // The first page's danmaku come late; the third page's at once, and empty.
        if (r.queryValue("oid") == "500")
            return slow;
        return ZuviScriptedAnswer::text("<i></i>", "text/xml");
    });
    makeController();
    c->loadViewIfNeeded();
    QTRY_VERIFY(c->moviePlayer());
    c->selectPage(2);
    QCOMPARE(c->loadingCID(), 502);
    QTRY_COMPARE(c->danmakuStatusText(), QStringLiteral("暂无弹幕"));
    QTRY_COMPARE(f->server.requestCount(kDanmakuPath), 2);
    // Wait past the slow answer: it belongs to the first page and is dropped.
    bool later = false;
    ZuviScriptedAnswer sentinel = ZuviScriptedAnswer::json(playJson(64));
    sentinel.delayMs = 700;
    f->server.setAnswer("*", "/sentinel", sentinel);
    f->client->send(f->client->requestWithURLString(f->server.urlString("/sentinel"), {}),
                    [&](const ZuviHTTPResponse &, const ZuviError &) { later = true; });
    QTRY_VERIFY(later);
    QCoreApplication::processEvents();
    QVERIFY(c->danmakuItems().isEmpty());
    QCOMPARE(c->danmakuStatusText(), QStringLiteral("暂无弹幕"));
    QCOMPARE(c->selectedPageIndex(), 2);
}

void TestVideoPlayerViewController::previewTextsAndLocalDanmaku()
{
    makeController();
    QCOMPARE(c->danmakuPreviewSummaryText(), QStringLiteral("弹幕加载中"));
    for (int i = 25; i >= 1; --i)
        c->appendLocalDanmakuText(i == 3 ? QString() : QStringLiteral("第%1条").arg(i), i * 0.5);
    QCOMPARE(c->danmakuItems().size(), 24); // an empty text makes no item
    QCOMPARE(c->danmakuItems().constFirst().time, 0.5);
    QCOMPARE(c->danmakuItems().constLast().time, 12.5);
    QCOMPARE(c->danmakuItems().constFirst().mode, 1);
    QCOMPARE(c->danmakuItems().constFirst().colorRGB, 0xFFFFFFu);
    c->appendLocalDanmakuText(QStringLiteral("第3条"), 1.5);
    QCOMPARE(c->danmakuPreviewSummaryText(), QStringLiteral("已加载 25 条，点击查看前 20 条"));
    const QString alert = c->danmakuPreviewAlertMessage();
    QVERIFY(alert.startsWith(QStringLiteral("1. 第1条\n2. 第2条\n3. 第3条\n")));
    QCOMPARE(alert.count('\n'), 20 + 1);
    QVERIFY(alert.endsWith(QStringLiteral("20. 第20条\n\n还有 5 条弹幕未显示")));
    QCOMPARE(c->danmakuOverlay()->itemCount(), 25);
}

void TestVideoPlayerViewController::angles()
{
    QCOMPARE(Controller::normalizedAngle(3 * kPi / 2), -kPi / 2);
    QCOMPARE(Controller::normalizedAngle(-kPi), kPi);
    QCOMPARE(Controller::normalizedAngle(kPi), kPi);
    QCOMPARE(Controller::directionNameForAngle(0), QStringLiteral("右"));
    QCOMPARE(Controller::directionNameForAngle(kPi), QStringLiteral("左"));
    QCOMPARE(Controller::directionNameForAngle(kPi / 2), QStringLiteral("下"));
    QCOMPARE(Controller::directionNameForAngle(-kPi / 2), QStringLiteral("上"));
    QCOMPARE(Controller::xAxisAngleInWindowForView(container), 0.0);
    container->setRotation(90);
    QVERIFY(std::abs(Controller::xAxisAngleInWindowForView(container) - kPi / 2) < 1e-9);
    makeController();
    QVERIFY(std::abs(c->fullscreenDanmakuCorrectionAngleForContainerView(container) + kPi / 2) <
            1e-9);
    c->setInterfaceRotation(kPi / 2);
    // A half turn in all reads as π before the sign flips.
    QVERIFY(std::abs(c->fullscreenDanmakuCorrectionAngleForContainerView(container) + kPi) < 1e-9);
}

void TestVideoPlayerViewController::edgePanLeavesFullscreen_data()
{
    QTest::addColumn<double>("translation");
    QTest::addColumn<double>("velocity");
    QTest::addColumn<bool>("leaves");
    QTest::newRow("40 pt at 300 pt/s") << 40.0 << 300.0 << true;
    QTest::newRow("40 pt at 200 pt/s") << 40.0 << 200.0 << false;
    QTest::newRow("52 pt slowly") << 52.0 << 10.0 << true;
    QTest::newRow("51 pt at 259 pt/s") << 51.0 << 259.0 << false;
}

void TestVideoPlayerViewController::edgePanLeavesFullscreen()
{
    QFETCH(double, translation);
    QFETCH(double, velocity);
    QFETCH(bool, leaves);
    startPlaying();
    auto *player = lastPlayer();
    QVERIFY(player);
    goFullscreen(player);
    const int plays = player->playCount;
    c->fullscreenEdgeExitPanRecognized(translation, velocity);
    QCOMPARE(player->isFullscreen(), !leaves);
    QCOMPARE(c->isDanmakuOverlayInFullscreen(), !leaves);
    // Leaving by the edge keeps the movie playing inline.
    QCOMPARE(player->playCount, leaves ? plays + 1 : plays);
    QCOMPARE(Controller::fullscreenEdgeZoneWidth(320), 58.0);
    QCOMPARE(Controller::fullscreenEdgeZoneWidth(200), 50.0);
}

QTEST_MAIN(TestVideoPlayerViewController)
#include "tst_zuvivideoplayerviewcontroller.moc"
