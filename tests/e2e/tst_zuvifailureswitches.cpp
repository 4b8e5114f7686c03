// Every failure switch of the demo service on every screen's endpoints: the
// screen leaves its loading state (nothing hangs, even when the answer never
// comes in time), says what went wrong in its own words, and its way back
// (the retry button, a tap on the failed list's status row, a refresh) meets
// a healthy service and brings the content back. The signed-in screens run on
// a real session: the suite signs in through the service's QR login first.
// The switch × screen table of texts seen is printed at the end.
#include "../player/zuviscriptedmovieplayer.h"
#include "account/zuviaccountvideolistviewcontroller.h"
#include "account/zuviprofileviewcontroller.h"
#include "browse/zuvifollowingviewcontroller.h"
#include "browse/zuvihotviewcontroller.h"
#include "browse/zuvisearchresultsviewcontroller.h"
#include "browse/zuvivideogridviewcontroller.h"
#include "net/zuviapiclient.h"
#include "platform/zuvidebuglog.h"
#include "platform/zuvinotificationcenter.h"
#include "platform/zuvivirtualscheduler.h"
#include "player/zuvivideoplayerviewcontroller.h"
#include "views/zuvistateview.h"
#include "zuvidemoservice.h"
#include "zuvitestsupport.h"

#include <QDeadlineTimer>
#include <QTemporaryDir>
#include <QtTest>

#include <cstdio>
#include <functional>
#include <memory>
#include <optional>

namespace {
// One screen as this suite drives it.
struct Screen {
    std::unique_ptr<QObject> owner;
    std::function<bool()> busy;
    // What the screen says about the failure; empty while it shows none.
    std::function<QString()> failureText;
    // The user's way back; null when the screen carries on by itself.
    std::function<void()> retry;
    std::function<bool()> recovered;
};

// Which screen a row opens, the endpoints its switch is set on, and what its
// text says: it begins with the prefix and, when ownMessage is set, carries
// the failure's own message.
struct Target {
    const char *screen;
    QStringList paths;
    QString prefix;
    bool ownMessage;
};

// Long enough for a whole popular page under the sanitizers; a slow switch
// answers far later.
constexpr int kTimeoutMs = 2000;

// The list screens: their state view in its error mode with a retry button.
QString listFailureText(ZuviVideoListViewController *screen)
{
    const ZuviStateView *state = screen->stateView();
    if (!state || state->mode() != ZuviStateView::Error || !state->buttonVisible())
        return QString();
    return state->title() + QStringLiteral("：") + state->message();
}

bool listBusy(ZuviVideoListViewController *screen)
{
    // The signed-in tabs show their loading in the state view alone.
    const ZuviStateView *state = screen->stateView();
    return screen->isLoading() || screen->isLoadingMore() ||
           (state && state->mode() == ZuviStateView::Loading);
}

Screen listScreen(ZuviVideoListViewController *screen, std::function<qsizetype()> count)
{
    Screen opened;
    opened.owner.reset(screen);
    opened.busy = [screen] { return listBusy(screen); };
    opened.failureText = [screen] { return listFailureText(screen); };
    opened.retry = [screen] { screen->stateView()->actionButtonTapped(); };
    opened.recovered = [screen, count] { return count() > 0 && !screen->stateView(); };
    return opened;
}
} // namespace

class TestZuviFailureSwitches : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanupTestCase();
    void screenShowsTheFailureAndRecovers_data();
    void screenShowsTheFailureAndRecovers();

private:
    void signIn();
    Screen open(const QString &screen);
    Screen openVideo(const QString &screen);
    // Spins until the screen has stopped loading; the client's search retry
    // and the service's slow answers run on virtual clocks, moved on here.
    bool settle(const Screen &screen);

    QTemporaryDir m_media;
    ZuviVirtualScheduler m_serviceClock;
    ZuviVirtualScheduler m_clientClock;
    ZuviVirtualScheduler m_screenClock;
    std::unique_ptr<ZuviDemoService> m_service;
    ZuviScratchDefaults m_defaults;
    ZuviNotificationCenter m_center;
    std::unique_ptr<ZuviDebugLog> m_log;
    std::unique_ptr<ZuviAPIClient> m_client;
    qint64 m_mid = 0;
    ZuviVideoItem m_popularItem;
    ZuviVideoItem m_searchItem;
    QStringList m_table;
};

void TestZuviFailureSwitches::initTestCase()
{
    // Stand-in clips: no screen here plays them.
    for (const ZuviDemoClip &clip : ZuviDemoContent::clips()) {
        for (int height : {360, 480, 720}) {
            QFile file(m_media.filePath(QStringLiteral("%1-%2.mp4").arg(clip.name).arg(height)));
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(QByteArray(4096, 'x'));
        }
    }
    ZuviDemoOptions options;
    options.mediaDirectory = m_media.path();
    m_service = std::make_unique<ZuviDemoService>(options, &m_serviceClock);
    QString errorText;
    QVERIFY2(m_service->start(0, &errorText), qPrintable(errorText));
    m_log = std::make_unique<ZuviDebugLog>(m_defaults.get(), &m_center);
    m_client = std::make_unique<ZuviAPIClient>(m_defaults.get(), m_log.get(), &m_center,
                                               ZuviEndpoints::allOn(QUrl(m_service->origin())),
                                               &m_clientClock);
    m_client->setRequestTimeoutMs(kTimeoutMs);
    signIn();

    // The video screen opens from a list entry: a popular card carries the
    // page's cid, a search result does not.
    bool done = false;
    m_client->fetchPopularPage(1, 20, [&](const QList<ZuviVideoItem> &videos, const ZuviError &) {
        m_popularItem = videos.value(0);
        done = true;
    });
    QTRY_VERIFY(done);
    const QString keyword = m_service->content().videos().first().title.left(2);
    done = false;
    m_client->fetchSearchVideosWithKeyword(
        keyword, 1, [&](const QList<ZuviVideoItem> &videos, const ZuviError &) {
            m_searchItem = videos.value(0);
            done = true;
        });
    QTRY_VERIFY(done);
    QVERIFY(m_popularItem.cid > 0);
    QVERIFY(!m_searchItem.bvid.isEmpty());
    QCOMPARE(m_searchItem.cid, 0);
}

// Signs in as the app does, with the client's own generate and poll calls;
// the service's state confirms the code as the phone would.
void TestZuviFailureSwitches::signIn()
{
    QString key;
    bool done = false;
    m_client->generateLoginQRCodeWithCompletion(
        [&](const QString &, const QString &qrcodeKey, const ZuviError &) {
            key = qrcodeKey;
            done = true;
        });
    QTRY_VERIFY(done);
    QVERIFY(!m_service->state().confirmQRLogin(key, m_serviceClock.now()).isEmpty());
    // A confirmed code is reported as scanned once before the login goes through.
    int code = -1;
    for (int poll = 0; poll < 3 && code != 0; ++poll) {
        done = false;
        m_client->pollLoginQRCodeWithKey(key, [&](int answer, const QString &, const ZuviError &) {
            code = answer;
            done = true;
        });
        QTRY_VERIFY(done);
    }
    QCOMPARE(code, 0);
    QVERIFY(!m_client->credentialCookie().isEmpty());
    done = false;
    m_client->fetchCurrentUserProfileWithCompletion(
        [&](const std::optional<ZuviUserProfile> &profile, const ZuviError &) {
            m_mid = profile && profile->isLogin ? profile->mid : 0;
            done = true;
        });
    QTRY_VERIFY(done);
    QVERIFY(m_mid > 0);
}

void TestZuviFailureSwitches::cleanupTestCase()
{
    std::printf("\nswitch × screen → text seen\n%s\n", qPrintable(m_table.join(QLatin1Char('\n'))));
}

Screen TestZuviFailureSwitches::open(const QString &screen)
{
    if (screen.startsWith(QLatin1String("video")))
        return openVideo(screen);
    if (screen == QLatin1String("search")) {
        // A word of a generated title always finds something.
        const QString keyword = m_service->content().videos().first().title.left(2);
        auto *search = new ZuviSearchResultsViewController(keyword, m_client.get());
        search->loadViewIfNeeded();
        return listScreen(search, [search] { return search->videos().size(); });
    }
    if (screen == QLatin1String("ranking")) {
        auto *hot = new ZuviHotViewController(m_client.get(), m_defaults.get());
        Screen opened = listScreen(hot, [hot] { return hot->videos().size(); });
        // The tab opens on the popular list; the user then picks a region.
        hot->loadViewIfNeeded();
        hot->viewWillAppear();
        if (settle(opened))
            hot->regionControlTapped(2);
        return opened;
    }
    if (screen == QLatin1String("following")) {
        auto *feed = new ZuviFollowingViewController(m_client.get(), &m_screenClock);
        feed->loadViewIfNeeded();
        return listScreen(feed, [feed] { return feed->rows().size(); });
    }
    if (screen == QLatin1String("profile")) {
        auto *profile = new ZuviProfileViewController(m_client.get(), &m_screenClock);
        profile->loadViewIfNeeded();
        Screen opened;
        opened.owner.reset(profile);
        opened.busy = [profile] { return profile->isLoadingProfile(); };
        opened.failureText = [profile] { return profile->statusLine(); };
        opened.retry = [profile] { profile->refreshButtonTapped(); };
        opened.recovered = [profile] { return profile->isLoggedIn(); };
        return opened;
    }
    const QHash<QString, QString> titles{
        {"history", "历史记录"}, {"watchLater", "稍后再看"}, {"favorites", "我的收藏"}};
    if (titles.contains(screen)) {
        auto *list = new ZuviAccountVideoListViewController(titles.value(screen), screen, m_mid,
                                                            m_client.get());
        list->loadViewIfNeeded();
        return listScreen(list, [list] { return list->videos().size(); });
    }
    auto *grid = screen == QLatin1String("popular")
                     ? ZuviVideoGridViewController::createWithPopularTitle(
                           "热门", "暂无热门内容。", m_client.get(), &m_screenClock)
                     : ZuviVideoGridViewController::createWithRecommendedTitle(
                           "推荐", "暂无推荐内容。", m_client.get(), &m_screenClock);
    grid->loadViewIfNeeded();
    return listScreen(grid, [grid] { return grid->videos().size(); });
}

// The video screen, one row per part it loads: "video detail" and the rest
// open the popular card, "video search" the search result without a cid.
Screen TestZuviFailureSwitches::openVideo(const QString &screen)
{
    const bool fromSearch = screen == QLatin1String("video search");
    auto *video = new ZuviVideoPlayerViewController(
        fromSearch ? m_searchItem : m_popularItem, fromSearch ? "搜索" : "热门", m_client.get(),
        &m_screenClock, m_defaults.get(),
        [](QObject *parent) { return new ZuviScriptedMoviePlayer(parent); });
    ZuviVideoSideContent *side = video->sideContent();
    Screen opened;
    opened.owner.reset(video);
    // Loading as the user sees it: any line that still says so counts.
    opened.busy = [video, side] {
        return video->isLoadingDetail() || video->isLoadingPlayURL() ||
               video->danmakuStatusText() == QStringLiteral("弹幕加载中") ||
               side->relatedStatusText() == QStringLiteral("相关推荐加载中") ||
               side->commentsStatusText() == QStringLiteral("评论加载中");
    };
    const auto playing = [video] { return video->moviePlayer() && !video->isRetryVisible(); };
    if (screen == QLatin1String("video related")) {
        opened.failureText = [side] { return side->relatedStatusText(); };
        opened.retry = [side] { side->statusRowTapped(false); };
        opened.recovered = [side] { return !side->relatedVideos().isEmpty(); };
    } else if (screen == QLatin1String("video comments")) {
        opened.failureText = [side] { return side->commentsStatusText(); };
        opened.retry = [side] { side->statusRowTapped(true); };
        opened.recovered = [side] { return !side->commentItems().isEmpty(); };
    } else if (screen == QLatin1String("video danmaku")) {
        // The danmaku are an extra: the video plays without them.
        opened.failureText = [video] { return video->danmakuStatusText(); };
        opened.recovered = playing;
    } else if (screen == QLatin1String("video detail")) {
        // The list's cid stands in for the detail, so the video plays anyway.
        opened.failureText = [video] { return video->detailDescription(); };
        opened.recovered = [video, playing] {
            return playing() && video->stateText().startsWith(QStringLiteral("正在播放"));
        };
    } else {
        opened.failureText = [video] {
            return video->isRetryVisible() ? video->stateText() : QString();
        };
        opened.retry = [video] { video->retryButtonTapped(); };
        opened.recovered = playing;
    }
    video->loadViewIfNeeded();
    return opened;
}

bool TestZuviFailureSwitches::settle(const Screen &screen)
{
    QDeadlineTimer deadline(10000);
    while (screen.busy()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        m_clientClock.advance(0.1);
    }
    return true;
}

void TestZuviFailureSwitches::screenShowsTheFailureAndRecovers_data()
{
    QTest::addColumn<QString>("screen");
    QTest::addColumn<QStringList>("paths");
    QTest::addColumn<QString>("switchText");
    QTest::addColumn<QString>("prefix");
    QTest::addColumn<QString>("message");
    // The network's own words follow the prefix.
    QTest::addColumn<bool>("networkWords");
    const QString listFailed = QStringLiteral("加载失败：");
    const QList<Target> targets{
        {"recommended", {"/x/web-interface/index/top/feed/rcmd"}, listFailed, true},
        {"popular", {"/x/web-interface/popular"}, listFailed, true},
        {"search", {"/x/web-interface/search/type"}, "搜索失败：", true},
        {"ranking", {"/x/web-interface/ranking/v2"}, listFailed, true},
        {"following", {"/x/polymer/web-dynamic/v1/feed/all"}, listFailed, true},
        {"history", {"/x/web-interface/history/cursor"}, listFailed, true},
        {"watchLater", {"/x/v2/history/toview/web"}, listFailed, true},
        // The folder list and the folder's contents alike.
        {"favorites", {"/x/v3/fav/*"}, listFailed, true},
        {"profile", {"/x/web-interface/nav"}, "登录状态检查失败：", true},
        {"video detail",
         {"/x/web-interface/view"},
         "详情接口暂不可用，正在使用列表里的 cid 尝试播放。",
         false},
        {"video search", {"/x/web-interface/view"}, "", true},
        {"video address", {"/x/player/playurl"}, "", true},
        // Both comment sources; the second one's failure is what is shown.
        {"video comments", {"/x/v2/reply*"}, "", true},
        {"video related", {"/x/web-interface/archive/related"}, "相关推荐加载失败", false},
        // Both danmaku sources.
        {"video danmaku", {"/x/v1/dm/list.so", "/{cid}.xml"}, "弹幕加载失败，不影响播放", false},
    };
    const QList<QPair<QString, QString>> switches{
        {"slow:60000", QStringLiteral("请求超时（%1 秒没有响应）").arg(kTimeoutMs / 1000.0)},
        {"code:-412:请求被拦截", "请求被拦截"},
        // ("html" fails the same way as "broken": neither is JSON.)
        {"broken", "接口返回的数据不是有效的 JSON"},
        // A dropped connection passes the network's own words through.
        {"drop", ""},
    };
    for (const Target &target : targets) {
        for (const auto &[switchText, message] : switches) {
            QTest::addRow("%s %s", target.screen, qPrintable(switchText.section(':', 0, 0)))
                << QString::fromUtf8(target.screen) << target.paths << switchText << target.prefix
                << (target.ownMessage ? message : QString())
                << (target.ownMessage && message.isEmpty());
        }
    }
}

void TestZuviFailureSwitches::screenShowsTheFailureAndRecovers()
{
    QFETCH(QString, screen);
    QFETCH(QStringList, paths);
    QFETCH(QString, switchText);
    QFETCH(QString, prefix);
    QFETCH(QString, message);
    QFETCH(bool, networkWords);

    std::optional<ZuviDemoFailure> failure;
    QString errorText;
    QVERIFY(ZuviDemoFailureSwitches::parseMode(switchText, &failure, &errorText));
    for (const QString &path : paths)
        m_service->failures().set(path, *failure);
    const Screen opened = open(screen);
    QVERIFY2(settle(opened), "the screen still loads");

    const QString text = opened.failureText();
    m_table << QStringLiteral("%1 × %2 → %3")
                   .arg(switchText.section(':', 0, 0), -6)
                   .arg(screen, -14)
                   .arg(text);
    QVERIFY2(text.startsWith(prefix) && text.contains(message), qPrintable(text));
    QVERIFY2(!networkWords || text.size() > prefix.size(), qPrintable(text));

    // The late answer of a slow switch arrives now and is dropped; then the
    // way back meets a healthy service.
    m_serviceClock.advance(120);
    m_service->failures().clearAll();
    if (opened.retry) {
        QVERIFY2(!opened.recovered(), "the screen shows content it never received");
        opened.retry();
        QVERIFY2(settle(opened), "the retry still loads");
    }
    QVERIFY2(opened.recovered(), qPrintable(screen + " did not recover"));
}

QTEST_MAIN(TestZuviFailureSwitches)
#include "tst_zuvifailureswitches.moc"
