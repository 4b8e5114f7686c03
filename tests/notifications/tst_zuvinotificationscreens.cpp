#include "app/zuviappdelegate.h"
#include "app/zuvinavigationcontroller.h"
#include "app/zuvisettingsviewcontroller.h"
#include "notifications/zuvinotificationhistorydetailviewcontroller.h"
#include "notifications/zuviremoteconfigdebugviewcontroller.h"
#include "notifications/zuviremotenotificationhistoryviewcontroller.h"
#include "zuvimessageservicesfixture.h"
#include "zuvipagewarnings.h"
#include "zuvitesthttpserver.h"

#include <QBuffer>
#include <QImage>
#include <QQmlEngine>
#include <QQmlExtensionPlugin>
#include <QQuickItem>
#include <QQuickWindow>
#include <QtTest>

#include <memory>

Q_IMPORT_QML_PLUGIN(ZuviPlugin)

namespace {
QByteArray png()
{
    QImage image(320, 180, QImage::Format_RGB32);
    image.fill(Qt::darkMagenta);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}
} // namespace

// The history, detail and configuration screens and their pages. The card
// over the running application window is driven end to end by
// messages-e2e.sh, its fade-out by tst_zuviremotenotificationpresenter.
class TestNotificationScreens : public QObject, private ZuviMessageServicesFixture
{
    Q_OBJECT

private:
    ZuviTestHttpServer server;
    ZuviPageWarnings pages;

    ZuviRemoteNotificationHistoryViewController::Services historyServices() const
    {
        return {presenter.get(), center.get(), images.get()};
    }

    void remember(qint64 version, const QString &text, const QString &image)
    {
        ZuviRemoteConfigMessage message;
        message.version = version;
        message.text = text;
        message.imageURLString = image;
        presenter->saveMessageToHistory(message);
    }

    // Waits until the image loader has delivered everything asked of it so far.
    void drainImageLoads(const QString &anyURL)
    {
        bool delivered = false;
        images->loadImageWithURLString(QVariant(anyURL),
                                       [&delivered](const QImage &) { delivered = true; });
        QTRY_VERIFY(delivered);
    }

    void loadPage(ZuviViewController *controller, QSize size)
    {
        ZuviPageWarnings::loadPage(controller, size, images.get());
    }

private slots:
    void initTestCase()
    {
        QVERIFY(server.start());
        server.setFallbackHandler([](const ZuviRecordedRequest &request) {
            if (request.path.startsWith("/pic/"))
                return ZuviScriptedAnswer::text(png(), "image/png");
            return ZuviScriptedAnswer::text("no", "text/plain", 404);
        });
        server.setAnswer(
            "GET", "/config.json",
            ZuviScriptedAnswer::json(R"({"message":{"version":3,"text":"配置通知"}})"));
        pages.start();
    }
    void cleanupTestCase() { pages.stop(); }

    void init()
    {
        pages.warnings.clear();
        makeServices(server.baseUrl());
        presenter->setClock([] { return QDateTime(QDate(2026, 3, 1), QTime(8, 30, 5)); });
    }
    void cleanup()
    {
        releaseServices();
        QVERIFY2(pages.warnings.isEmpty(), qPrintable(pages.warnings.join('\n')));
    }

    void historyListsNewestFirstAndClears()
    {
        ZuviRemoteNotificationHistoryViewController history(historyServices());
        QVERIFY(history.isEmpty());
        remember(1, "第一条", "");
        remember(2, "", "http://127.0.0.1/pic/a.png");
        remember(3, "第三条", "http://127.0.0.1/pic/b.png");
        QCOMPARE(history.rows().size(), 3);
        const QVariantMap newest = history.rows().first().toMap();
        QCOMPARE(newest.value("title").toString(), QStringLiteral("2026-03-01 08:30:05  v3"));
        QCOMPARE(newest.value("detail").toString(),
                 QStringLiteral("第三条\n图片: http://127.0.0.1/pic/b.png"));
        QCOMPARE(history.rows().at(1).toMap().value("detail").toString(),
                 QStringLiteral("图片: http://127.0.0.1/pic/a.png"));
        QCOMPARE(history.rows().at(2).toMap().value("detail").toString(), QStringLiteral("第一条"));

        // Entries from elsewhere: a time stored as text, none at all, no content.
        QCOMPARE(ZuviRemoteNotificationHistoryViewController::titleForEntry(
                     {{"time", "昨天"}, {"version", 4}}),
                 QStringLiteral("昨天  v4"));
        QCOMPARE(ZuviRemoteNotificationHistoryViewController::titleForEntry({}),
                 QStringLiteral("未知时间"));
        QCOMPARE(ZuviRemoteNotificationHistoryViewController::detailForEntry({}),
                 QStringLiteral("无内容"));

        history.confirmClear();
        QVERIFY(history.isEmpty());
        QVERIFY(!defaults->get()->containsKey(ZuviRemoteNotificationPresenter::kHistoryKey));
    }

    void detailShowsTheEntryAndItsPicture()
    {
        remember(5, "完整的通知文字", server.urlString("/pic/detail.png"));
        auto *history = new ZuviRemoteNotificationHistoryViewController(historyServices());
        ZuviNavigationController stack(history, scheduler.get());
        history->selectRow(0);
        auto *detail =
            qobject_cast<ZuviNotificationHistoryDetailViewController *>(stack.topViewController());
        QVERIFY(detail);
        QCOMPARE(detail->title(), QStringLiteral("通知详情"));
        QCOMPARE(detail->infoText(), QStringLiteral("时间: 2026-03-01 08:30:05\n版本: 5\n图片: %1")
                                         .arg(server.urlString("/pic/detail.png")));
        QCOMPARE(detail->messageText(), QStringLiteral("完整的通知文字"));
        detail->loadViewIfNeeded();
        QCOMPARE(detail->imageStatusText(), QStringLiteral("图片加载中..."));
        QTRY_VERIFY(!detail->imageSource().isEmpty());
        QCOMPARE(detail->imageStatusText(), QString());
        QCOMPARE(detail->imageAspectRatio(), 180.0 / 320.0);
        QVERIFY(detail->hidesBottomBarWhenPushed());
        loadPage(detail, QSize(1024, 768));
    }

    void detailPictureFailureAndEarlyDestruction()
    {
        const QString missing = server.urlString("/missing/gone.png");
        {
            ZuviNotificationHistoryDetailViewController detail(
                {{"version", 2}, {"imageURL", missing}}, images.get());
            detail.loadViewIfNeeded();
            QTRY_COMPARE(detail.imageStatusText(), QStringLiteral("图片加载失败"));
        }
        // Gone with its picture still on the way: the answer arrives to nobody.
        auto *early = new ZuviNotificationHistoryDetailViewController(
            {{"imageURL", server.urlString("/pic/late.png")}}, images.get());
        early->loadViewIfNeeded();
        delete early;
        drainImageLoads(server.urlString("/pic/late.png"));
        // (The loader asks for a thumbnail of it, under a longer path.)
        const auto requests = server.requests();
        QVERIFY(std::any_of(requests.cbegin(), requests.cend(), [](const ZuviRecordedRequest &r) {
            return r.path.startsWith("/pic/late.png");
        }));
    }

    void configDebugStateRefreshAndReplay()
    {
        ZuviRemoteConfigDebugViewController screen({config.get(), presenter.get(), center.get()});
        QSignalSpy alert(&screen, &ZuviRemoteConfigDebugViewController::alertRequested);
        screen.presentLatestNotification();
        QCOMPARE(alert.size(), 1);
        QCOMPARE(alert.first().at(0).toString(), QStringLiteral("暂无通知"));

        ZuviRemoteConfigOptions options = ZuviRemoteConfigOptions::optionsWithSources(
            QStringList{server.urlString("/config.json")});
        QTemporaryDir caches;
        options.cacheDirectoryPath = caches.path();
        config->startWithOptions(options);
        screen.refresh();
        QVERIFY(screen.isRefreshing());
        QCOMPARE(screen.stateText(), QStringLiteral("刷新远程配置中..."));
        QTRY_VERIFY(!screen.isRefreshing());
        const QString text = screen.stateText();
        QVERIFY(text.contains(QStringLiteral("URL: %1").arg(server.urlString("/config.json"))));
        QVERIFY(text.contains(QStringLiteral("本地 message version: 3")));
        QVERIFY(text.contains(QStringLiteral("配置 message version: 3\n配置 message image: 空\n"
                                             "配置 message text: 配置通知")));
        QVERIFY(text.contains(QStringLiteral("\"version\": 3")));

        // A failed refresh is shown until the next good one.
        center->post(ZuviRemoteConfig::kDidFailNotification, config.get(),
                     {{"error", QVariant::fromValue(ZuviRemoteConfig::errorWithCode(
                                    4, QStringLiteral("remote config response is empty")))}});
        QVERIFY(screen.stateText().contains(
            QStringLiteral("上次刷新错误: remote config response is empty")));

        // The configuration's message is there to replay (it waits for a screen to show on).
        QVERIFY(presenter->presentLatestNotificationForTesting());
        loadPage(&screen, QSize(1024, 768));
        config->stop();
    }

    void configDebugGoneDuringRefresh()
    {
        ZuviRemoteConfigOptions options = ZuviRemoteConfigOptions::optionsWithSources(
            QStringList{server.urlString("/config.json")});
        QTemporaryDir caches;
        options.cacheDirectoryPath = caches.path();
        config->startWithOptions(options);
        auto *screen =
            new ZuviRemoteConfigDebugViewController({config.get(), presenter.get(), center.get()});
        screen->refresh();
        delete screen;
        bool done = false;
        config->refreshWithCompletion(
            [&done](const std::optional<QJsonObject> &, const ZuviError &) { done = true; });
        QTRY_VERIFY(done);
        QVERIFY(config->currentConfig().has_value());
        config->stop();
    }

    void settingsAndHistoryPagesLoad()
    {
        remember(1, "页面里的通知", "");
        defaults->get()->setBool(true, ZuviAppDelegate::kDeveloperModeKey);
        ZuviSettingsViewController settings(settingsServices());
        loadPage(&settings, QSize(1024, 768));
        loadPage(&settings, QSize(320, 568));
        ZuviRemoteNotificationHistoryViewController history(historyServices());
        loadPage(&history, QSize(1024, 768));
        history.confirmClear();
        loadPage(&history, QSize(320, 568));
    }
};

int main(int argc, char *argv[])
{
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    QGuiApplication app(argc, argv);
    TestNotificationScreens test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_zuvinotificationscreens.moc"
