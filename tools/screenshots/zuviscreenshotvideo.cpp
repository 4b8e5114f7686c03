// The video screen's review pictures: --scenario video --argument SHOT with
// SHOT one of side (information, buttons, pages and related list), comments
// (the comment tab scrolled into view), end-inline, end-fullscreen (the
// countdown badge up), fastforward (the 2x badge over a playing picture) and
// dialog (the comment input open), danmaku-density (the density graph on the
// seek bar) and danmaku-settings (the viewer's danmaku panel open over the
// playing video) and player-menus (the speed menu open over the playing
// video, the volume beside it). An optional ":N" picks the grid's Nth
// video instead of the first.
#include "app/zuviappdelegate.h"
#include "app/zuvinavigationcontroller.h"
#include "app/zuvitabbarcontroller.h"
#include "browse/zuvivideogridviewcontroller.h"
#include "browse/zuvivideoscreenopener.h"
#include "player/zuvivideoplayerviewcontroller.h"
#include "zuviscreenshotscenario.h"

#include <QQuickItem>
#include <QQuickWindow>
#include <QTimer>

namespace {
using Controller = ZuviVideoPlayerViewController;

constexpr int kTimeoutMs = 30000;

bool playing(Controller *c)
{
    ZuviMoviePlayer *player = c ? c->moviePlayer() : nullptr;
    return player && player->playbackState() == ZuviMoviePlayer::PlaybackPlaying &&
           player->currentPlaybackTime() > 0.8;
}

bool sideReady(Controller *c)
{
    return c && !c->sideContent()->isLoadingRelated() && !c->sideContent()->isLoadingComments() &&
           c->sideContent()->relatedImagesAllowed();
}

// An item of the visual tree by its objectName: the player's controls are
// made by loaders, so their items are not QObject children of the window's.
QQuickItem *findItem(QQuickItem *item, const QString &name)
{
    if (item->objectName() == name)
        return item;
    for (QQuickItem *child : item->childItems()) {
        if (QQuickItem *found = findItem(child, name))
            return found;
    }
    return nullptr;
}

// The density graph along the seek bar has counted the loaded danmaku.
bool densityShown(QQuickWindow *window)
{
    QQuickItem *graph = findItem(window->contentItem(), QStringLiteral("danmakuDensity"));
    return graph && graph->property("hasData").toBool();
}

// Brings the inline side pane's comment tab to the top of the page's scroll.
void scrollToComments(QQuickWindow *window)
{
    auto *main = window->contentItem()->findChild<QQuickItem *>(QStringLiteral("mainColumn"));
    auto *pane = window->contentItem()->findChild<QQuickItem *>(QStringLiteral("inlineSidePane"));
    if (!main || !pane)
        return;
    const QPointF top =
        pane->mapToItem(main->property("contentItem").value<QQuickItem *>(), QPointF(0, 0));
    main->setProperty("contentY", std::max(0.0, top.y() - 120));
}

void runShot(const ZuviScreenshotScenario::Context &context, Controller *c, const QString &shot)
{
    const auto &ready = context.whenReady;
    // Taken as just after the viewer moved the pointer: the player's
    // controls show, as they do for a few seconds after every movement.
    const auto save = [c, take = context.save] {
        c->playbackOptions()->pointerMoved();
        take();
    };
    if (shot == QLatin1String("dialog")) {
        ready([c] { return c->detail().has_value() && sideReady(c); },
              [c, save] {
                  c->actions()->videoInteractionButtonTapped(ZuviVideoActions::CommentButton);
                  save();
              },
              kTimeoutMs);
    } else if (shot == QLatin1String("comments")) {
        ready([c] { return sideReady(c) && playing(c); },
              [c, save, window = context.window] {
                  c->sideContent()->setSideSegment(1);
                  QTimer::singleShot(300, [window, save] {
                      scrollToComments(window);
                      save();
                  });
              },
              kTimeoutMs);
    } else if (shot == QLatin1String("fastforward")) {
        ready([c] { return playing(c); },
              [c, save] {
                  c->fastForwardLongPressBegan();
                  save();
              },
              kTimeoutMs);
    } else if (shot == QLatin1String("danmaku-settings") ||
               shot == QLatin1String("danmaku-density")) {
        const bool panel = shot == QLatin1String("danmaku-settings");
        ready([c, window = context.window] { return playing(c) && densityShown(window); },
              [save, panel, window = context.window] {
                  if (panel)
                      QMetaObject::invokeMethod(
                          findItem(window->contentItem(), QStringLiteral("danmakuSettingsButton")),
                          "clicked");
                  save();
              },
              kTimeoutMs);
    } else if (shot == QLatin1String("player-menus")) {
        ready([c] { return playing(c) && sideReady(c); },
              [c, save, window = context.window] {
                  c->playbackOptions()->setVolume(0.7);
                  QMetaObject::invokeMethod(
                      findItem(window->contentItem(), QStringLiteral("speedButton")), "clicked");
                  save();
              },
              kTimeoutMs);
    } else if (shot.startsWith(QLatin1String("end"))) {
        const bool fullscreen = shot == QLatin1String("end-fullscreen");
        ready([c] { return playing(c) && sideReady(c); },
              [c, save, ready, fullscreen] {
                  if (fullscreen)
                      c->toggleFullscreen();
                  // Close to the end, so the picture still ends by itself.
                  c->seekTo(c->moviePlayer()->duration() - 1.0);
                  ready([c] { return c->isPlaybackEndVisible(); }, save, kTimeoutMs);
              },
              kTimeoutMs);
    } else {
        ready([c] { return sideReady(c) && playing(c); }, save, kTimeoutMs);
    }
}

const ZuviScreenshotScenario::Registrar
    video(QStringLiteral("video"), [](const ZuviScreenshotScenario::Context &context) {
        // As the application starts it: the video screen behind the lists.
        const ZuviAppDelegate::Services services = ZuviAppDelegate::sharedServices();
        Controller::openVideosFromLists(services.client, services.scheduler, services.defaults);
        ZuviNavigationController *stack =
            context.delegate->rootTabBarController()->viewControllerAt(0);
        auto *grid = qobject_cast<ZuviVideoGridViewController *>(stack->rootViewController());
        const QStringList parts = context.argument.split(QLatin1Char(':'));
        const QString shot = parts.value(0);
        const int chosen = parts.value(1).toInt();
        context.whenReady(
            [grid, chosen] { return !grid->isLoading() && grid->videos().size() > chosen; },
            [=] {
                int index = chosen;
                // The comment list is worth a picture only with comments in it.
                const QList<ZuviVideoItem> videos = grid->videos();
                while (shot == QLatin1String("comments") && parts.size() < 2 &&
                       index + 1 < videos.size() &&
                       videos.at(index).commentCountText.toDouble() < 3)
                    ++index;
                ZuviVideoScreenOpener::open(stack, videos.at(index), QStringLiteral("推荐"));
                auto *c = qobject_cast<Controller *>(stack->topViewController());
                if (!c) {
                    QCoreApplication::exit(1);
                    return;
                }
                runShot(context, c, shot);
            },
            kTimeoutMs);
    });
} // namespace
