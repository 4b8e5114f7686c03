// Drives the application against a running demo service, in a real window,
// through the operator messages and the settings tools:
//   --phase first   the demo's first message shows as a card (with its
//                   picture); "知道了" dismisses it; a message announced while
//                   the app runs shows within the poll interval; settings →
//                   "历史通知" lists both, newest first; the older one's detail
//                   shows its picture; developer mode on, a failing feed
//                   leaves its failure in the debug log.
//   --phase restart the same store again: no card comes back.
// Each step prints one line; the exit code is 0 only when every step held.
//
// Usage: zuvi-messages-e2e --endpoints FILE --out DIR --phase first|restart
//                          --demo-service BINARY --port N
#include "account/zuviprofileviewcontroller.h"
#include "app/zuvidebuglogviewcontroller.h"
#include "app/zuvisettingsviewcontroller.h"
#include "browse/zuvivideogridviewcontroller.h"
#include "config/zuviremoteconfig.h"
#include "notifications/zuvinotificationhistorydetailviewcontroller.h"
#include "notifications/zuviremotemessageoverlayview.h"
#include "notifications/zuviremotenotificationhistoryviewcontroller.h"
#include "notifications/zuviremotenotificationpresenter.h"
#include "platform/zuvidebuglog.h"
#include "zuvie2edriver.h"

#include <QCommandLineParser>
#include <QDir>
#include <QGuiApplication>
#include <QProcess>
#include <QQmlExtensionPlugin>
#include <QTest>

Q_IMPORT_QML_PLUGIN(ZuviPlugin)

namespace {
// Taps "知道了" where the card draws it.
void tapDismiss(QQuickWindow *window, ZuviRemoteMessageOverlayView *card)
{
    const QPointF local = card->panelRect().topLeft() + card->buttonRect().center();
    QTest::mouseClick(window, Qt::LeftButton, {}, card->mapToScene(local).toPoint());
}
} // namespace

int main(int argc, char **argv)
{
    ZuviAppDelegate::prepareProcess();
    QGuiApplication app(argc, argv);
    QGuiApplication::setApplicationName(QStringLiteral("oldzuvi"));
    QCommandLineParser parser;
    parser.addOptions({{"endpoints", "endpoints file", "file"},
                       {"out", "work and screenshot directory", "dir"},
                       {"phase", "first or restart", "phase", "first"},
                       {"demo-service", "the demo service binary", "file"},
                       {"port", "the demo service's port", "port"}});
    parser.process(app);
    const QString outDir = parser.value("out");
    QDir().mkpath(outDir);
    ZuviE2E::App shell;
    if (!shell.launch(parser.value("endpoints"), outDir + "/defaults.ini",
                      [&outDir](ZuviAppDelegate::Services &services) {
                          services.cachesDirectory = outDir + "/caches";
                      }))
        return 1;
    QQuickWindow *window = shell.window();
    auto *presenter = shell.services.presenter;
    ZuviTabBarController *tabs = shell.tabs();
    auto demo = [&parser](const QStringList &arguments) {
        QProcess process;
        process.setStandardOutputFile(QProcess::nullDevice());
        process.start(parser.value("demo-service"),
                      arguments + QStringList{"--port", parser.value("port")});
        process.waitForFinished();
    };
    auto shot = [&shell, outDir](const QString &name) { shell.shot(outDir + "/" + name + ".png"); };
    auto card = [presenter] { return presenter->currentOverlayView(); };

    ZuviE2E::Steps steps;
    if (parser.value("phase") == "restart") {
        // A refresh of our own: when it ends, the document has been fetched
        // again and any announcement it caused has been delivered.
        bool refreshed = false;
        presenter->remoteConfig()->refreshWithCompletion(
            [&refreshed](const std::optional<QJsonObject> &, const ZuviError &) {
                refreshed = true;
            });
        steps.add(
            "the configuration is fetched again", [&refreshed] { return refreshed; }, {}, 20000);
        steps.add(
            "no card after a restart", [&card] { return !card(); }, {}, 0);
        steps.run(300);
        return app.exec();
    }

    ZuviSettingsViewController *settings = nullptr;
    ZuviRemoteNotificationHistoryViewController *history = nullptr;
    steps.add(
        "the demo's first message shows with its picture",
        [&card] { return card() && card()->wantsImage() && card()->isImageLoaded(); },
        [&] { shot("first-card"); }, 20000);
    steps.add(
        "知道了 dismisses it", [] { return true; }, [&] { tapDismiss(window, card()); }, 0);
    QElapsedTimer sinceAnnounce;
    steps.add(
        "the card is gone", [&card] { return !card(); },
        [&] {
            sinceAnnounce.start();
            demo({"announce", "运行中发布的第二条通知", "--image",
                  shell.services.endpoints.remoteConfigSource.section('/', 0, 2) +
                      "/img/pic/banner-2.jpg"});
        },
        2000);
    steps.add(
        "an announced message shows while the app runs",
        [&card] {
            return card() && card()->messageText() == QStringLiteral("运行中发布的第二条通知");
        },
        [&] {
            // How long a running app takes to show an announcement (bounded
            // by the poll interval of the information keys).
            ZuviE2E::say(
                QStringLiteral("     announce to card: %1 ms").arg(sinceAnnounce.elapsed()));
            shot("announced-card");
        },
        30000);
    steps.add(
        "知道了 dismisses the second", [] { return true; }, [&] { tapDismiss(window, card()); }, 0);
    steps.add(
        "settings → 历史通知", [&card] { return !card(); },
        [&] {
            // Settings as the user opens them: the profile bar's button.
            tabs->selectTab(3);
            shell.root<ZuviProfileViewController>(3)->settingsButtonTapped();
            settings = qobject_cast<ZuviSettingsViewController *>(
                tabs->viewControllerAt(3)->topViewController());
            settings->openNotificationHistory();
            history = qobject_cast<ZuviRemoteNotificationHistoryViewController *>(
                tabs->viewControllerAt(3)->topViewController());
        },
        2000);
    steps.add(
        "the history lists both, newest first",
        [&] {
            return history && history->rows().size() == 2 &&
                   history->rows().at(0).toMap().value("title").toString().endsWith("v2") &&
                   history->rows().at(1).toMap().value("title").toString().endsWith("v1");
        },
        [&] {
            shot("history");
            history->selectRow(1);
        },
        2000);
    steps.add(
        "the first message's detail shows its picture",
        [&] {
            auto *detail = qobject_cast<ZuviNotificationHistoryDetailViewController *>(
                tabs->viewControllerAt(3)->topViewController());
            return detail && !detail->imageSource().isEmpty();
        },
        [&] {
            shot("history-detail");
            tabs->viewControllerAt(3)->popViewController(false);
            tabs->viewControllerAt(3)->popViewController(false);
            settings->developerSwitchChanged(true);
            demo({"fail", "/x/web-interface/index/top/feed/rcmd", "code:-500"});
            tabs->selectTab(0);
            auto *grid = qobject_cast<ZuviVideoGridViewController *>(
                tabs->viewControllerAt(0)->rootViewController());
            grid->refreshButtonTapped();
        },
        20000);
    steps.add(
        "developer mode: the feed's failure reaches the debug log",
        [] { return ZuviDebugLog::sharedLog()->logText().contains("code=-500"); },
        [&] {
            demo({"fail", "off"});
            tabs->selectTab(3);
            settings->openDebugLog();
        },
        20000);
    steps.add(
        "the debug log screen shows it",
        [&] {
            auto *screen = qobject_cast<ZuviDebugLogViewController *>(
                tabs->viewControllerAt(3)->topViewController());
            return screen && screen->displayText().contains("[请求错误]");
        },
        [&] { shot("debug-log"); }, 2000);
    steps.run(300);
    return app.exec();
}
