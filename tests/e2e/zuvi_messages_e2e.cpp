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
#include "app/zuviappdelegate.h"
#include "app/zuvidebuglogviewcontroller.h"
#include "app/zuvinavigationcontroller.h"
#include "app/zuvisettingsviewcontroller.h"
#include "app/zuvitabbarcontroller.h"
#include "browse/zuvivideogridviewcontroller.h"
#include "config/zuviremoteconfig.h"
#include "notifications/zuvinotificationhistorydetailviewcontroller.h"
#include "notifications/zuviremotemessageoverlayview.h"
#include "notifications/zuviremotenotificationhistoryviewcontroller.h"
#include "notifications/zuviremotenotificationpresenter.h"
#include "platform/zuvidebuglog.h"
#include "platform/zuvidefaults.h"
#include "platform/zuviendpoints.h"

#include <QCommandLineParser>
#include <QDir>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QProcess>
#include <QQmlEngine>
#include <QQmlExtensionPlugin>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>
#include <QTimer>

#include <functional>

Q_IMPORT_QML_PLUGIN(ZuviPlugin)

namespace {
QTextStream out(stdout);

// Steps run in order; each waits (polling) until its condition holds, then acts.
struct Steps {
    struct Step {
        QString name;
        std::function<bool()> ready;
        int timeoutMs;
        std::function<void()> action;
    };
    QList<Step> steps;
    void add(const QString &name, std::function<bool()> ready, int timeoutMs,
             std::function<void()> action = {})
    {
        steps.append({name, std::move(ready), timeoutMs, std::move(action)});
    }
    void run(int index = 0, int waitedMs = 0)
    {
        if (index >= steps.size()) {
            out << "messages-e2e: all steps held" << Qt::endl;
            QCoreApplication::exit(0);
            return;
        }
        const Step &step = steps[index];
        if (!step.ready()) {
            if (waitedMs >= step.timeoutMs) {
                out << "FAIL " << step.name << Qt::endl;
                QCoreApplication::exit(1);
                return;
            }
            QTimer::singleShot(100, [this, index, waitedMs] { run(index, waitedMs + 100); });
            return;
        }
        out << "ok   " << step.name << Qt::endl;
        if (step.action)
            step.action();
        QTimer::singleShot(300, [this, index] { run(index + 1); });
    }
};

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
    ZuviDefaults::setStandardFilePath(outDir + "/defaults.ini");
    ZuviEndpoints endpoints = ZuviEndpoints::defaults();
    ZuviError error;
    if (!ZuviEndpoints::loadFile(parser.value("endpoints"), &endpoints, &error)) {
        out << "endpoints: " << error.message << Qt::endl;
        return 2;
    }
    ZuviEndpoints::setShared(endpoints);

    ZuviAppDelegate::Services services = ZuviAppDelegate::sharedServices();
    services.cachesDirectory = outDir + "/caches";
    QQmlEngine engine;
    ZuviAppDelegate delegate(services);
    if (!delegate.applicationDidFinishLaunching(&engine))
        return 1;
    auto *window = qobject_cast<QQuickWindow *>(delegate.window());
    auto *presenter = services.presenter;
    ZuviTabBarController *tabs = delegate.rootTabBarController();
    auto demo = [&parser](const QStringList &arguments) {
        QProcess process;
        process.setStandardOutputFile(QProcess::nullDevice());
        process.start(parser.value("demo-service"),
                      arguments + QStringList{"--port", parser.value("port")});
        process.waitForFinished();
    };
    auto shot = [window, outDir](const QString &name) {
        window->grabWindow().save(outDir + "/" + name + ".png");
    };
    auto card = [presenter] { return presenter->currentOverlayView(); };

    Steps steps;
    if (parser.value("phase") == "restart") {
        // A refresh of our own: when it ends, the document has been fetched
        // again and any announcement it caused has been delivered.
        bool refreshed = false;
        presenter->remoteConfig()->refreshWithCompletion(
            [&refreshed](const std::optional<QJsonObject> &, const ZuviError &) {
                refreshed = true;
            });
        steps.add(
            "the configuration is fetched again", [&refreshed] { return refreshed; }, 20000);
        steps.add(
            "no card after a restart", [&card] { return !card(); }, 0);
        steps.run();
        return app.exec();
    }

    ZuviSettingsViewController *settings = nullptr;
    ZuviRemoteNotificationHistoryViewController *history = nullptr;
    steps.add(
        "the demo's first message shows with its picture",
        [&card] { return card() && card()->wantsImage() && card()->isImageLoaded(); }, 20000,
        [&] { shot("first-card"); });
    steps.add(
        "知道了 dismisses it", [] { return true; }, 0, [&] { tapDismiss(window, card()); });
    QElapsedTimer sinceAnnounce;
    steps.add(
        "the card is gone", [&card] { return !card(); }, 2000,
        [&] {
            sinceAnnounce.start();
            demo({"announce", "运行中发布的第二条通知", "--image",
                  endpoints.remoteConfigSource.section('/', 0, 2) + "/img/pic/banner-2.jpg"});
        });
    steps.add(
        "an announced message shows while the app runs",
        [&card] {
            return card() && card()->messageText() == QStringLiteral("运行中发布的第二条通知");
        },
        30000,
        [&] {
            // How long a running app takes to show an announcement (bounded
            // by the poll interval of the information keys).
            out << "     announce to card: " << sinceAnnounce.elapsed() << " ms" << Qt::endl;
            shot("announced-card");
        });
    steps.add(
        "知道了 dismisses the second", [] { return true; }, 0, [&] { tapDismiss(window, card()); });
    steps.add(
        "settings → 历史通知", [&card] { return !card(); }, 2000,
        [&] {
            tabs->selectTab(3);
            settings = new ZuviSettingsViewController(ZuviSettingsViewController::sharedServices());
            settings->setHidesBottomBarWhenPushed(true);
            tabs->viewControllerAt(3)->pushViewController(settings, true);
            settings->openNotificationHistory();
            history = qobject_cast<ZuviRemoteNotificationHistoryViewController *>(
                tabs->viewControllerAt(3)->topViewController());
        });
    steps.add(
        "the history lists both, newest first",
        [&] {
            return history && history->rows().size() == 2 &&
                   history->rows().at(0).toMap().value("title").toString().endsWith("v2") &&
                   history->rows().at(1).toMap().value("title").toString().endsWith("v1");
        },
        2000,
        [&] {
            shot("history");
            history->selectRow(1);
        });
    steps.add(
        "the first message's detail shows its picture",
        [&] {
            auto *detail = qobject_cast<ZuviNotificationHistoryDetailViewController *>(
                tabs->viewControllerAt(3)->topViewController());
            return detail && !detail->imageSource().isEmpty();
        },
        20000,
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
        });
    steps.add(
        "developer mode: the feed's failure reaches the debug log",
        [] { return ZuviDebugLog::sharedLog()->logText().contains("code=-500"); }, 20000,
        [&] {
            demo({"fail", "off"});
            tabs->selectTab(3);
            settings->openDebugLog();
        });
    steps.add(
        "the debug log screen shows it",
        [&] {
            auto *screen = qobject_cast<ZuviDebugLogViewController *>(
                tabs->viewControllerAt(3)->topViewController());
            return screen && screen->displayText().contains("[请求错误]");
        },
        2000, [&] { shot("debug-log"); });
    steps.run();
    return app.exec();
}
