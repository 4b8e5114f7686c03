// Drives the application's ranking tab against a running demo service, in a
// real window, as a user would go through it: signed out, the tab shows the
// login card and its button opens the profile tab; after signing in (the QR
// login, confirmed through the service) and coming back, the tab loads the
// popular list; choosing 动画 loads that region's ranking; moving 动画 to the
// front on the region settings screen reorders the strip on return. A
// screenshot is saved after each step; the exit code is 0 only when every
// step saw what it expected.
//
// Usage: zuvi-hot-e2e --endpoints FILE --out DIR

#include "app/zuviappdelegate.h"
#include "app/zuvinavigationcontroller.h"
#include "app/zuvitabbarcontroller.h"
#include "browse/zuvihotregionsettingsviewcontroller.h"
#include "browse/zuvihotviewcontroller.h"
#include "net/zuviapiclient.h"
#include "platform/zuvidefaults.h"
#include "platform/zuviendpoints.h"
#include "views/zuvistateview.h"

#include <QCommandLineParser>
#include <QDir>
#include <QGuiApplication>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QQmlEngine>
#include <QQmlExtensionPlugin>
#include <QQuickWindow>
#include <QTimer>
#include <QUrlQuery>

#include <functional>

Q_IMPORT_QML_PLUGIN(ZuviPlugin)

namespace {
QTextStream out(stdout);

void say(const QString &line)
{
    out << line << Qt::endl;
}

// Steps that each wait for a condition (polled every 100 ms, 20 s at most)
// and then act; a step that never sees its condition fails the run.
class Steps
{
public:
    void add(const QString &name, std::function<bool()> ready, std::function<bool()> act)
    {
        m_steps.append({name, std::move(ready), std::move(act)});
    }
    void run() { poll(0, 0); }

private:
    struct Step {
        QString name;
        std::function<bool()> ready;
        std::function<bool()> act;
    };
    void poll(int index, int waitedMs)
    {
        if (index >= m_steps.size()) {
            say("hot-e2e: every step passed");
            QCoreApplication::exit(0);
            return;
        }
        const Step &step = m_steps[index];
        if (!step.ready()) {
            if (waitedMs >= 20000) {
                say("hot-e2e: FAILED waiting for: " + step.name);
                QCoreApplication::exit(1);
                return;
            }
            QTimer::singleShot(100, [this, index, waitedMs] { poll(index, waitedMs + 100); });
            return;
        }
        if (!step.act()) {
            say("hot-e2e: FAILED at: " + step.name);
            QCoreApplication::exit(1);
            return;
        }
        say("hot-e2e: " + step.name);
        // Let the page draw what the step changed before the next one.
        QTimer::singleShot(300, [this, index] { poll(index + 1, 0); });
    }
    QList<Step> m_steps;
};
} // namespace

int main(int argc, char *argv[])
{
    QGuiApplication app(argc, argv);
    QGuiApplication::setApplicationName(QStringLiteral("oldzuvi"));
    QCommandLineParser parser;
    parser.addOptions({{"endpoints", "endpoints file of the demo service", "file"},
                       {"out", "folder for the screenshots", "dir"}});
    parser.process(app);
    const QString outDir = parser.value("out").isEmpty() ? QDir::tempPath() : parser.value("out");
    QDir().mkpath(outDir);
    // A first launch: nobody signed in, every region shown.
    QFile::remove(outDir + "/hot-defaults.ini");
    ZuviDefaults::setStandardFilePath(outDir + "/hot-defaults.ini");
    ZuviEndpoints endpoints = ZuviEndpoints::defaults();
    ZuviError error;
    if (!ZuviEndpoints::loadFile(parser.value("endpoints"), &endpoints, &error)) {
        say("endpoints: " + error.message);
        return 2;
    }
    ZuviEndpoints::setShared(endpoints);

    const ZuviAppDelegate::Services services = ZuviAppDelegate::sharedServices();
    QQmlEngine engine;
    ZuviAppDelegate delegate(services);
    if (!delegate.applicationDidFinishLaunching(&engine))
        return 4;
    auto *window = qobject_cast<QQuickWindow *>(delegate.window());
    ZuviTabBarController *tabs = delegate.rootTabBarController();
    auto *hot =
        qobject_cast<ZuviHotViewController *>(tabs->viewControllerAt(1)->rootViewController());
    if (!window || !hot)
        return 4;

    const auto shot = [&](const QString &name) {
        window->grabWindow().save(outDir + "/" + name + ".png");
        return true;
    };
    const auto showsRegion = [hot](const QString &key) {
        return hot->selectedRegionCacheKey() == key && hot->isRefreshEnabled() &&
               !hot->videos().isEmpty() && !hot->stateView();
    };

    // The QR login as the profile tab runs it, with the phone's confirmation
    // sent to the demo service's admin endpoint.
    QNetworkAccessManager network;
    QString qrKey;
    int pollCode = -1;
    bool polling = false;
    const std::function<void()> pollLogin = [&] {
        polling = true;
        services.client->pollLoginQRCodeWithKey(qrKey,
                                                [&](int code, const QString &, const ZuviError &) {
                                                    polling = false;
                                                    pollCode = code;
                                                });
    };

    Steps steps;
    steps.add(
        "signed out, 热门 shows the login card",
        [&] {
            if (tabs->selectedIndex() != 1)
                tabs->selectTab(1);
            return hot->isShowingLoginRequiredState();
        },
        [&] {
            return hot->stateView()->title() == QStringLiteral("用户未登录") &&
                   hot->stateView()->buttonTitle() == QStringLiteral("登录") &&
                   shot("hot-e2e-1-signed-out");
        });
    steps.add(
        "its button opens 我的", [] { return true; },
        [&] {
            hot->stateView()->actionButtonTapped();
            return tabs->selectedIndex() == 3;
        });
    steps.add(
        "a login code is issued", [] { return true; },
        [&] {
            services.client->generateLoginQRCodeWithCompletion(
                [&](const QString &, const QString &key, const ZuviError &) { qrKey = key; });
            return true;
        });
    steps.add(
        "the phone confirms it", [&] { return !qrKey.isEmpty(); },
        [&] {
            QNetworkRequest request(QUrl(endpoints.api.toString() + "/admin/confirm"));
            request.setHeader(QNetworkRequest::ContentTypeHeader,
                              "application/x-www-form-urlencoded");
            QUrlQuery form;
            form.addQueryItem("qrcode_key", qrKey);
            QNetworkReply *reply = network.post(request, form.query(QUrl::FullyEncoded).toUtf8());
            QObject::connect(reply, &QNetworkReply::finished, reply, [reply, &pollLogin] {
                reply->deleteLater();
                pollLogin();
            });
            return true;
        });
    steps.add(
        "the login completes",
        [&] {
            // Scanned first, then confirmed: poll until the service says so.
            if (pollCode != 0 && !polling && !qrKey.isEmpty() && pollCode != -1)
                pollLogin();
            return pollCode == 0;
        },
        [&] { return !services.client->credentialCookie().isEmpty(); });
    steps.add(
        "back on 热门, 综合 loads",
        [&] {
            if (tabs->selectedIndex() != 1)
                tabs->selectTab(1);
            return showsRegion("popular");
        },
        [&] { return hot->selectedRegionIndex() == 0 && shot("hot-e2e-2-popular"); });
    steps.add(
        "choosing 动画 loads its ranking",
        [&] {
            if (hot->selectedRegionCacheKey() != "1005")
                hot->regionControlTapped(hot->indexForRegionKey("1005"));
            return showsRegion("1005");
        },
        [&] { return hot->currentSourceTitle() == "动画热门" && shot("hot-e2e-3-douga"); });
    ZuviHotRegionSettingsViewController *settings = nullptr;
    steps.add(
        "the region settings move 动画 to the front", [] { return true; },
        [&] {
            tabs->selectTab(3);
            settings = new ZuviHotRegionSettingsViewController(services.defaults);
            settings->setHidesBottomBarWhenPushed(true);
            tabs->viewControllerAt(3)->pushViewController(settings, false);
            settings->setEditing(true);
            const int from = int(settings->selectedRegionKeys().indexOf("1005"));
            const QVariantMap target = settings->targetForMove(0, 0);
            settings->moveRow(0, from, target.value("section").toInt(),
                              target.value("row").toInt());
            return settings->selectedRegionKeys().first() == "1005" &&
                   shot("hot-e2e-4-region-settings");
        });
    steps.add(
        "the strip is reordered on return", [] { return true; },
        [&] {
            tabs->viewControllerAt(3)->popViewController(false);
            tabs->selectTab(1);
            return hot->regionTitles().first() == "动画" && hot->selectedRegionIndex() == 0 &&
                   showsRegion("1005") && shot("hot-e2e-5-reordered");
        });
    steps.run();
    return app.exec();
}
