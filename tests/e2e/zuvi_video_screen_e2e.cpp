// End-to-end flow of the video screen in a real window under Xvfb, against
// the demo service, driven the way a user would through the screen's
// controller and its parts. Run by video-screen-e2e.sh in two phases:
//
//   signed out: a favourite fails with the missing-login message in the
//     status line and a dialog; the clip plays to its end inline (end card,
//     replay plays again); then in fullscreen, where the countdown plays the
//     first related video in the same fullscreen player.
//   --signed-in: favourite and watch later succeed; a comment is posted and
//     shows in the reloaded list; a danmaku is sent and flies at once.
//
// Usage: zuvi-video-screen-e2e --endpoints FILE --settings FILE --out DIR [--signed-in]
// Each check prints "ok: ..." or "FAIL: ..."; the exit status is the number of failures.
#include "browse/zuvivideogridviewcontroller.h"
#include "danmaku/zuvidanmakuengine.h"
#include "danmaku/zuvidanmakuoverlayview.h"
#include "zuvie2edriver.h"

#include <QCommandLineParser>
#include <QDateTime>
#include <QGuiApplication>
#include <QQmlExtensionPlugin>

Q_IMPORT_QML_PLUGIN(ZuviPlugin)

namespace {
using Controller = ZuviVideoPlayerViewController;
using ZuviE2E::Steps;

// The steps of one phase wait up to 30 s each: a clip plays to its end.
void add(Steps &flow, const QString &name, std::function<bool()> ready, std::function<void()> then)
{
    flow.add(name, std::move(ready), std::move(then), 30000);
}

bool playing(Controller *c)
{
    ZuviMoviePlayer *p = c ? c->moviePlayer() : nullptr;
    return p && p->isPlaying() && p->currentPlaybackTime() > 0.5;
}

bool flying(Controller *c, const QString &text)
{
    const ZuviDanmakuEngine *engine = c->danmakuOverlay()->engine();
    for (int i = 0; i < engine->visibleLabelCount(); ++i)
        if (engine->visibleLabel(i).text == text)
            return true;
    return false;
}

void signedOutFlow(Steps &flow, Controller *&c, QQuickWindow *window, const QString &outDir)
{
    auto shot = [window, outDir](const QString &name) {
        window->grabWindow().save(outDir + "/" + name + ".png");
    };
    auto results = std::make_shared<QStringList>();
    add(
        flow, "signed-out favourite", [&c] { return c && c->detail().has_value(); },
        [&c, results] {
            QObject::connect(c->actions(), &ZuviVideoActions::resultRequested, c,
                             [results](const QString &title, const QString &message) {
                                 *results << title + "|" + message;
                             });
            c->actions()->videoInteractionButtonTapped(ZuviVideoActions::FavoriteButton);
        });
    add(
        flow, "favourite refused", [&c] { return !c->actions()->isInProgress(); },
        [&c, results] {
            const QString message = QStringLiteral("缺少登录凭证或 zuvi_jct，请先登录");
            Steps::check(c->actions()->statusText() == QStringLiteral("收藏失败：") + message,
                         "signed out, the status line tells the login is missing: " +
                             c->actions()->statusText());
            Steps::check(results->value(0) == QStringLiteral("收藏|") + message,
                         "and a dialog says the same: " + results->value(0));
        });
    add(
        flow, "playing inline", [&c] { return playing(c); },
        [&c] { c->seekTo(c->moviePlayer()->duration() - 1.0); });
    add(
        flow, "inline end", [&c] { return c->isPlaybackEndVisible(); },
        [&c, shot] {
            shot("e2e-1-end-inline");
            Steps::check(!c->isPlaybackEndInFullscreen(),
                         "the clip ended inline with the end card up");
            Steps::check(c->endCard()->countdownRemaining() == 0, "inline, nothing counts down");
            c->playbackEndReplayTapped();
        });
    add(
        flow, "replay plays", [&c] { return playing(c) && !c->isPlaybackEndVisible(); },
        [&c] {
            Steps::check(true, "replay plays the clip again");
            c->toggleFullscreen();
        });
    auto firstRelated = std::make_shared<QString>();
    add(
        flow, "fullscreen", [&c] { return c->isMoviePlayerFullscreen() && playing(c); },
        [&c] { c->seekTo(c->moviePlayer()->duration() - 1.0); });
    add(
        flow, "fullscreen end", [&c] { return c->isPlaybackEndVisible(); },
        [&c, shot, firstRelated] {
            shot("e2e-2-end-fullscreen");
            Steps::check(c->isPlaybackEndInFullscreen(),
                         "the end card is in the fullscreen window");
            Steps::check(c->playbackEndBadgeText() == QStringLiteral("5秒后播放"),
                         "the countdown starts at 5: " + c->playbackEndBadgeText());
            *firstRelated = c->sideContent()->firstRelatedVideo()
                                ? c->sideContent()->firstRelatedVideo()->bvid
                                : QString();
        });
    auto player = std::make_shared<QPointer<ZuviMoviePlayer>>();
    add(
        flow, "countdown",
        [&c] { return c->playbackEndBadgeText() == QStringLiteral("1秒后播放"); },
        [&c, player] { *player = c->moviePlayer(); });
    add(
        flow, "related plays in fullscreen",
        [&c, firstRelated] {
            return c->videoItem().bvid == *firstRelated && playing(c) && !c->isPlaybackEndVisible();
        },
        [&c, shot, player] {
            shot("e2e-3-related-fullscreen");
            Steps::check(c->moviePlayer() == player->data(), "the same fullscreen player plays it");
            Steps::check(c->isMoviePlayerFullscreen(), "still fullscreen");
            Steps::check(c->sourceTitle() == QStringLiteral("相关推荐"), "as a related video");
        });
}

void signedInFlow(Steps &flow, Controller *&c, QQuickWindow *window, const QString &outDir)
{
    auto shot = [window, outDir](const QString &name) {
        window->grabWindow().save(outDir + "/" + name + ".png");
    };
    const QString comment =
        QStringLiteral("端到端评论 %1").arg(QDateTime::currentMSecsSinceEpoch() % 100000);
    const QString danmaku = QStringLiteral("端到端弹幕");
    add(
        flow, "detail and comments",
        [&c] { return c && c->detail() && !c->sideContent()->isLoadingComments() && playing(c); },
        [&c] { c->actions()->videoInteractionButtonTapped(ZuviVideoActions::FavoriteButton); });
    add(
        flow, "favourite", [&c] { return !c->actions()->isInProgress(); },
        [&c] {
            Steps::check(c->actions()->isFavorited(), "favourited: " + c->actions()->statusText());
            c->actions()->videoInteractionButtonTapped(ZuviVideoActions::WatchLaterButton);
        });
    add(
        flow, "watch later", [&c] { return !c->actions()->isInProgress(); },
        [&c, comment] {
            Steps::check(c->actions()->isWatchLater(),
                         "saved to watch later: " + c->actions()->statusText());
            c->actions()->inputSubmitted(ZuviVideoActions::CommentInput, comment);
        });
    add(
        flow, "comment in the reloaded list",
        [&c, comment] {
            if (c->actions()->isInProgress() || c->sideContent()->isLoadingComments())
                return false;
            for (const ZuviCommentItem &item : c->sideContent()->commentItems())
                if (item.message == comment)
                    return true;
            return !c->actions()->statusText().isEmpty();
        },
        [&c, comment, danmaku] {
            Steps::check(c->actions()->statusText().isEmpty(),
                         "the comment was posted: " + c->actions()->statusText());
            c->sideContent()->setSideSegment(1);
            c->actions()->inputSubmitted(ZuviVideoActions::DanmakuInput, danmaku);
        });
    add(
        flow, "danmaku flies", [&c, danmaku] { return flying(c, danmaku); },
        [&c, shot] {
            shot("e2e-4-signed-in");
            Steps::check(true, "the sent danmaku flies at once");
        });
}
} // namespace

int main(int argc, char **argv)
{
    ZuviAppDelegate::prepareProcess();
    QGuiApplication app(argc, argv);
    QCommandLineParser parser;
    parser.addOption({"endpoints", "endpoints file", "file"});
    parser.addOption({"settings", "settings file", "file"});
    parser.addOption({"out", "screenshot directory", "dir"});
    parser.addOption({"signed-in", "the signed-in phase"});
    parser.process(app);
    ZuviE2E::App shell;
    if (!shell.launch(parser.value("endpoints"), parser.value("settings")))
        return 100;
    QQuickWindow *window = shell.window();
    ZuviNavigationController *navigation = shell.tab(0);
    auto *grid = shell.root<ZuviVideoGridViewController>(0);

    Controller *c = nullptr;
    Steps flow;
    add(
        flow, "the grid", [grid] { return !grid->videos().isEmpty(); },
        [&] {
            grid->selectItem(0);
            c = qobject_cast<Controller *>(navigation->topViewController());
            if (c)
                ZuviE2E::say("video: " + c->videoItem().bvid);
        });
    if (parser.isSet("signed-in"))
        signedInFlow(flow, c, window, parser.value("out"));
    else
        signedOutFlow(flow, c, window, parser.value("out"));
    flow.run();
    return app.exec();
}
