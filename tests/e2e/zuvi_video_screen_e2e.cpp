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
#include "app/zuviappdelegate.h"
#include "app/zuvinavigationcontroller.h"
#include "app/zuvitabbarcontroller.h"
#include "browse/zuvivideogridviewcontroller.h"
#include "browse/zuvivideoscreenopener.h"
#include "danmaku/zuvidanmakuengine.h"
#include "danmaku/zuvidanmakuoverlayview.h"
#include "platform/zuvidefaults.h"
#include "platform/zuviendpoints.h"
#include "player/zuvivideoplayerviewcontroller.h"

#include <QCommandLineParser>
#include <QDateTime>
#include <QGuiApplication>
#include <QQmlEngine>
#include <QQmlExtensionPlugin>
#include <QQuickWindow>
#include <QTextStream>
#include <QTimer>

#include <functional>
#include <memory>

Q_IMPORT_QML_PLUGIN(ZuviPlugin)

namespace {
using Controller = ZuviVideoPlayerViewController;

QTextStream out(stdout);
int failures = 0;

void check(bool condition, const QString &what)
{
    out << (condition ? "ok: " : "FAIL: ") << what << Qt::endl;
    if (!condition)
        ++failures;
}

// The steps of one phase, each waiting (up to 30 s) for its condition.
struct Flow {
    struct Step {
        QString name;
        std::function<bool()> ready;
        std::function<void()> then;
    };
    QList<Step> steps;
    void add(const QString &name, std::function<bool()> ready, std::function<void()> then)
    {
        steps.append({name, std::move(ready), std::move(then)});
    }
    void run(int index = 0, int waitedMs = 0)
    {
        if (index >= steps.size()) {
            QCoreApplication::exit(failures);
            return;
        }
        Step &step = steps[index];
        if (step.ready()) {
            step.then();
            QTimer::singleShot(0, [this, index] { run(index + 1); });
            return;
        }
        if (waitedMs > 30000) {
            check(false, step.name + " (never came)");
            QCoreApplication::exit(failures);
            return;
        }
        QTimer::singleShot(100, [this, index, waitedMs] { run(index, waitedMs + 100); });
    }
};

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

void signedOutFlow(Flow &flow, Controller *&c, QQuickWindow *window, const QString &outDir)
{
    auto shot = [window, outDir](const QString &name) {
        window->grabWindow().save(outDir + "/" + name + ".png");
    };
    auto results = std::make_shared<QStringList>();
    flow.add(
        "signed-out favourite", [&c] { return c && c->detail().has_value(); },
        [&c, results] {
            QObject::connect(c->actions(), &ZuviVideoActions::resultRequested, c,
                             [results](const QString &title, const QString &message) {
                                 *results << title + "|" + message;
                             });
            c->actions()->videoInteractionButtonTapped(ZuviVideoActions::FavoriteButton);
        });
    flow.add(
        "favourite refused", [&c] { return !c->actions()->isInProgress(); },
        [&c, results] {
            const QString message = QStringLiteral("缺少登录凭证或 zuvi_jct，请先登录");
            check(c->actions()->statusText() == QStringLiteral("收藏失败：") + message,
                  "signed out, the status line tells the login is missing: " +
                      c->actions()->statusText());
            check(results->value(0) == QStringLiteral("收藏|") + message,
                  "and a dialog says the same: " + results->value(0));
        });
    flow.add(
        "playing inline", [&c] { return playing(c); },
        [&c] { c->seekTo(c->moviePlayer()->duration() - 1.0); });
    flow.add(
        "inline end", [&c] { return c->isPlaybackEndVisible(); },
        [&c, shot] {
            shot("e2e-1-end-inline");
            check(!c->isPlaybackEndInFullscreen(), "the clip ended inline with the end card up");
            check(c->endCard()->countdownRemaining() == 0, "inline, nothing counts down");
            c->playbackEndReplayTapped();
        });
    flow.add(
        "replay plays", [&c] { return playing(c) && !c->isPlaybackEndVisible(); },
        [&c] {
            check(true, "replay plays the clip again");
            c->toggleFullscreen();
        });
    auto firstRelated = std::make_shared<QString>();
    flow.add(
        "fullscreen", [&c] { return c->isMoviePlayerFullscreen() && playing(c); },
        [&c] { c->seekTo(c->moviePlayer()->duration() - 1.0); });
    flow.add(
        "fullscreen end", [&c] { return c->isPlaybackEndVisible(); },
        [&c, shot, firstRelated] {
            shot("e2e-2-end-fullscreen");
            check(c->isPlaybackEndInFullscreen(), "the end card is in the fullscreen window");
            check(c->playbackEndBadgeText() == QStringLiteral("5秒后播放"),
                  "the countdown starts at 5: " + c->playbackEndBadgeText());
            *firstRelated = c->sideContent()->firstRelatedVideo()
                                ? c->sideContent()->firstRelatedVideo()->bvid
                                : QString();
        });
    auto player = std::make_shared<QPointer<ZuviMoviePlayer>>();
    flow.add(
        "countdown", [&c] { return c->playbackEndBadgeText() == QStringLiteral("1秒后播放"); },
        [&c, player] { *player = c->moviePlayer(); });
    flow.add(
        "related plays in fullscreen",
        [&c, firstRelated] {
            return c->videoItem().bvid == *firstRelated && playing(c) && !c->isPlaybackEndVisible();
        },
        [&c, shot, player] {
            shot("e2e-3-related-fullscreen");
            check(c->moviePlayer() == player->data(), "the same fullscreen player plays it");
            check(c->isMoviePlayerFullscreen(), "still fullscreen");
            check(c->sourceTitle() == QStringLiteral("相关推荐"), "as a related video");
        });
}

void signedInFlow(Flow &flow, Controller *&c, QQuickWindow *window, const QString &outDir)
{
    auto shot = [window, outDir](const QString &name) {
        window->grabWindow().save(outDir + "/" + name + ".png");
    };
    const QString comment =
        QStringLiteral("端到端评论 %1").arg(QDateTime::currentMSecsSinceEpoch() % 100000);
    const QString danmaku = QStringLiteral("端到端弹幕");
    flow.add(
        "detail and comments",
        [&c] { return c && c->detail() && !c->sideContent()->isLoadingComments() && playing(c); },
        [&c] { c->actions()->videoInteractionButtonTapped(ZuviVideoActions::FavoriteButton); });
    flow.add(
        "favourite", [&c] { return !c->actions()->isInProgress(); },
        [&c] {
            check(c->actions()->isFavorited(), "favourited: " + c->actions()->statusText());
            c->actions()->videoInteractionButtonTapped(ZuviVideoActions::WatchLaterButton);
        });
    flow.add(
        "watch later", [&c] { return !c->actions()->isInProgress(); },
        [&c, comment] {
            check(c->actions()->isWatchLater(),
                  "saved to watch later: " + c->actions()->statusText());
            c->actions()->inputSubmitted(ZuviVideoActions::CommentInput, comment);
        });
    flow.add(
        "comment in the reloaded list",
        [&c, comment] {
            if (c->actions()->isInProgress() || c->sideContent()->isLoadingComments())
                return false;
            for (const ZuviCommentItem &item : c->sideContent()->commentItems())
                if (item.message == comment)
                    return true;
            return !c->actions()->statusText().isEmpty();
        },
        [&c, comment, danmaku] {
            check(c->actions()->statusText().isEmpty(),
                  "the comment was posted: " + c->actions()->statusText());
            c->sideContent()->setSideSegment(1);
            c->actions()->inputSubmitted(ZuviVideoActions::DanmakuInput, danmaku);
        });
    flow.add(
        "danmaku flies", [&c, danmaku] { return flying(c, danmaku); },
        [&c, shot] {
            shot("e2e-4-signed-in");
            check(true, "the sent danmaku flies at once");
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
    ZuviDefaults::setStandardFilePath(parser.value("settings"));
    ZuviEndpoints endpoints = ZuviEndpoints::defaults();
    ZuviError error;
    if (!ZuviEndpoints::loadFile(parser.value("endpoints"), &endpoints, &error)) {
        out << "endpoints: " << error.message << Qt::endl;
        return 100;
    }
    ZuviEndpoints::setShared(endpoints);

    const ZuviAppDelegate::Services services = ZuviAppDelegate::sharedServices();
    Controller::openVideosFromLists(services.client, services.scheduler, services.defaults);
    QQmlEngine engine;
    ZuviAppDelegate delegate(services);
    if (!delegate.applicationDidFinishLaunching(&engine))
        return 100;
    auto *window = qobject_cast<QQuickWindow *>(delegate.window());
    ZuviNavigationController *navigation = delegate.rootTabBarController()->viewControllerAt(0);
    auto *grid = qobject_cast<ZuviVideoGridViewController *>(navigation->rootViewController());

    Controller *c = nullptr;
    Flow flow;
    flow.steps.append({"the grid", [grid] { return !grid->videos().isEmpty(); },
                       [&] {
                           grid->selectItem(0);
                           c = qobject_cast<Controller *>(navigation->topViewController());
                           if (c)
                               out << "video: " << c->videoItem().bvid << Qt::endl;
                       }});
    if (parser.isSet("signed-in"))
        signedInFlow(flow, c, window, parser.value("out"));
    else
        signedOutFlow(flow, c, window, parser.value("out"));
    flow.run();
    return app.exec();
}
