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

#include "browse/zuvihotregionsettingsviewcontroller.h"
#include "browse/zuvihotviewcontroller.h"
#include "net/zuviapiclient.h"
#include "views/zuvistateview.h"
#include "zuvie2edriver.h"

#include <QCommandLineParser>
#include <QDir>
#include <QGuiApplication>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QQmlExtensionPlugin>
#include <QUrlQuery>

Q_IMPORT_QML_PLUGIN(ZuviPlugin)

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
    ZuviE2E::App shell;
    if (!shell.launch(parser.value("endpoints"), outDir + "/hot-defaults.ini"))
        return 4;
    const ZuviAppDelegate::Services &services = shell.services;
    ZuviTabBarController *tabs = shell.tabs();
    auto *hot = shell.root<ZuviHotViewController>(1);
    if (!hot)
        return 4;

    const auto shot = [&](const QString &name) {
        shell.shot(outDir + "/" + name + ".png");
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

    ZuviE2E::Steps steps;
    steps.expect(
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
    steps.expect(
        "its button opens 我的", [] { return true; },
        [&] {
            hot->stateView()->actionButtonTapped();
            return tabs->selectedIndex() == 3;
        });
    steps.expect(
        "a login code is issued", [] { return true; },
        [&] {
            services.client->generateLoginQRCodeWithCompletion(
                [&](const QString &, const QString &key, const ZuviError &) { qrKey = key; });
            return true;
        });
    steps.expect(
        "the phone confirms it", [&] { return !qrKey.isEmpty(); },
        [&] {
            QNetworkRequest request(QUrl(services.endpoints.api.toString() + "/admin/confirm"));
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
    steps.expect(
        "the login completes",
        [&] {
            // Scanned first, then confirmed: poll until the service says so.
            if (pollCode != 0 && !polling && !qrKey.isEmpty() && pollCode != -1)
                pollLogin();
            return pollCode == 0;
        },
        [&] { return !services.client->credentialCookie().isEmpty(); });
    steps.expect(
        "back on 热门, 综合 loads",
        [&] {
            if (tabs->selectedIndex() != 1)
                tabs->selectTab(1);
            return showsRegion("popular");
        },
        [&] { return hot->selectedRegionIndex() == 0 && shot("hot-e2e-2-popular"); });
    steps.expect(
        "choosing 动画 loads its ranking",
        [&] {
            if (hot->selectedRegionCacheKey() != "1005")
                hot->regionControlTapped(hot->indexForRegionKey("1005"));
            return showsRegion("1005");
        },
        [&] { return hot->currentSourceTitle() == "动画热门" && shot("hot-e2e-3-douga"); });
    ZuviHotRegionSettingsViewController *settings = nullptr;
    steps.expect(
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
    steps.expect(
        "the strip is reordered on return", [] { return true; },
        [&] {
            tabs->viewControllerAt(3)->popViewController(false);
            tabs->selectTab(1);
            return hot->regionTitles().first() == "动画" && hot->selectedRegionIndex() == 0 &&
                   showsRegion("1005") && shot("hot-e2e-5-reordered");
        });
    steps.run(300);
    return app.exec();
}
