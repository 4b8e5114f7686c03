#include "account/zuviaccountvideolistviewcontroller.h"
#include "account/zuviloginviewcontroller.h"
#include "account/zuviprofileviewcontroller.h"
#include "app/zuviappdelegate.h"
#include "app/zuvidebuglog.h"
#include "app/zuvidebuglogviewcontroller.h"
#include "app/zuvikeyboardshortcuts.h"
#include "app/zuvinavigationcontroller.h"
#include "app/zuvitabbarcontroller.h"
#include "browse/zuvifollowingviewcontroller.h"
#include "browse/zuvihotregionsettingsviewcontroller.h"
#include "browse/zuvihotviewcontroller.h"
#include "browse/zuvisearchresultsviewcontroller.h"
#include "browse/zuvivideogridviewcontroller.h"
#include "images/zuviimageloader.h"
#include "net/zuviapiclient.h"
#include "platform/zuviidiom.h"
#include "platform/zuvinotificationcenter.h"
#include "platform/zuvivirtualscheduler.h"
#include "zuvipagewarnings.h"
#include "zuvitesthttpserver.h"
#include "zuvitestsupport.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QQmlEngine>
#include <QQmlExtensionPlugin>
#include <QQuickItem>
#include <QQuickWindow>
#include <QtTest>

#include <memory>

Q_IMPORT_QML_PLUGIN(ZuviPlugin)

namespace {
QList<ZuviVideoItem> sampleVideos(int count, bool covers = true)
{
    QList<ZuviVideoItem> videos;
    for (int i = 0; i < count; ++i) {
        ZuviVideoItem item;
        item.bvid = QStringLiteral("BV%1").arg(i);
        item.title = QStringLiteral("第 %1 个视频").arg(i);
        item.ownerName = QStringLiteral("作者 %1").arg(i);
        item.playCountText = "12.3万";
        item.durationText = "3:25";
        // Covers from the loopback server, which has none: placeholders stay.
        if (covers)
            item.coverURLString = QStringLiteral("http://127.0.0.1:1/cover%1.jpg").arg(i);
        videos.append(item);
    }
    return videos;
}
} // namespace

class TestPages : public QObject
{
    Q_OBJECT

private:
    ZuviTestHttpServer server;
    ZuviScratchDefaults defaults;
    ZuviNotificationCenter center;
    ZuviVirtualScheduler scheduler;
    std::unique_ptr<ZuviDebugLog> log;
    std::unique_ptr<ZuviAPIClient> client;
    std::unique_ptr<ZuviImageLoader> images;
    ZuviPageWarnings pages;

    // The items under root, in the order the scene holds them.
    static QList<QQuickItem *> itemsUnder(QQuickItem *root, const char *className)
    {
        QList<QQuickItem *> found;
        for (QQuickItem *child : root->childItems()) {
            if (child->inherits(className))
                found.append(child);
            found += itemsUnder(child, className);
        }
        return found;
    }
    // The depth of each tab's page stack, in tab order.
    static QList<int> stackDepths(QQuickWindow *window)
    {
        QList<int> depths;
        for (QQuickItem *stack : itemsUnder(window->contentItem(), "QQuickStackView"))
            depths.append(stack->property("depth").toInt());
        return depths;
    }
    // How many cards on each page of a tab's stack may show their cover.
    static QList<int> cardsShowingCovers(QQuickWindow *window, int tab)
    {
        QQuickItem *stack = itemsUnder(window->contentItem(), "QQuickStackView").value(tab);
        QList<int> counts;
        for (QQuickItem *page : itemsUnder(stack, "QQuickItem")) {
            if (!page->property("controller").isValid())
                continue;
            int cards = 0;
            for (QQuickItem *card : itemsUnder(page, "QQuickItem"))
                cards += card->property("coverAllowed").toBool() ? 1 : 0;
            counts.append(cards);
        }
        return counts;
    }

    void loadPage(ZuviViewController *controller, QSize size)
    {
        ZuviPageWarnings::loadPage(controller, size, images.get());
    }

private slots:
    void initTestCase()
    {
        QVERIFY(server.start());
        log.reset(new ZuviDebugLog(defaults.get(), &center));
        client.reset(new ZuviAPIClient(defaults.get(), log.get(), &center,
                                       ZuviEndpoints::allOn(server.baseUrl())));
        images.reset(
            new ZuviImageLoader(log.get(), ZuviEndpoints::allOn(server.baseUrl()), nullptr));
        pages.start();
    }
    void cleanupTestCase() { pages.stop(); }
    void init() { pages.warnings.clear(); }
    void cleanup()
    {
        ZuviIdiom::setCurrent(ZuviIdiom::Pad);
        QVERIFY2(pages.warnings.isEmpty(), qPrintable(pages.warnings.join('\n')));
    }

    void videoGridPage_data()
    {
        QTest::addColumn<bool>("pad");
        QTest::addColumn<int>("count");
        QTest::newRow("pad grid") << true << 12;
        QTest::newRow("phone list") << false << 12;
        QTest::newRow("pad, empty static list") << true << 0;
    }
    void videoGridPage()
    {
        QFETCH(bool, pad);
        QFETCH(int, count);
        ZuviIdiom::setCurrent(pad ? ZuviIdiom::Pad : ZuviIdiom::Phone);
        std::unique_ptr<ZuviVideoGridViewController> grid(
            ZuviVideoGridViewController::createWithTitle("合集", sampleVideos(count), "空",
                                                         client.get(), &scheduler));
        grid->loadViewIfNeeded();
        loadPage(grid.get(), ZuviIdiom::defaultWindowSize(ZuviIdiom::current()));
    }

    void searchResultsPage()
    {
        ZuviSearchResultsViewController search("", client.get());
        search.loadViewIfNeeded();
        loadPage(&search, QSize(1024, 768));
    }

    // On a phone (the application window below shows the pad's), signed
    // out: the page shows the account check over its strip.
    void hotPhonePage()
    {
        ZuviIdiom::setCurrent(ZuviIdiom::Phone);
        ZuviHotViewController hot(client.get(), defaults.get());
        hot.viewWillAppear();
        loadPage(&hot, ZuviIdiom::defaultWindowSize(ZuviIdiom::current()));
    }

    void hotRegionSettingsPageDragsByTheGrip()
    {
        ZuviHotViewController::setVisibleHotRegionKeys({"popular", "1005", "1008"}, defaults.get());
        ZuviHotRegionSettingsViewController settings(defaults.get());
        settings.setEditing(true);
        QQmlEngine engine;
        QQuickWindow window;
        window.resize(1024, 768);
        QQmlComponent component(&engine, settings.pageUrl());
        std::unique_ptr<QObject> page(component.createWithInitialProperties(
            {{"controller", QVariant::fromValue(&settings)}}));
        QVERIFY2(page, qPrintable(component.errorString()));
        auto *item = qobject_cast<QQuickItem *>(page.get());
        item->setParentItem(window.contentItem());
        item->setSize(window.size());
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        // The first shown row's grip (under the bar and the section title),
        // dragged two rows down.
        const QPoint grip(1024 - 40 - 24, 44 + 44 + 22);
        QTest::mousePress(&window, Qt::LeftButton, {}, grip);
        for (int step = 1; step <= 8; ++step)
            QTest::mouseMove(&window, grip + QPoint(0, step * 11));
        QTest::mouseRelease(&window, Qt::LeftButton, {}, grip + QPoint(0, 88));
        QTRY_COMPARE(ZuviHotViewController::visibleHotRegionKeys(defaults.get()),
                     (QStringList{"1005", "1008", "popular"}));
    }

    // The feed with a card of each kind it draws differently, signed in.
    void followingPage_data()
    {
        QTest::addColumn<bool>("pad");
        QTest::newRow("pad") << true;
        QTest::newRow("phone") << false;
    }
    void followingPage()
    {
        QFETCH(bool, pad);
        ZuviIdiom::setCurrent(pad ? ZuviIdiom::Pad : ZuviIdiom::Phone);
        defaults.get()->setString(QStringLiteral("SESSDATA=s; DedeUserID=42"),
                                  QString::fromLatin1(ZuviAPIClient::kCredentialCookieKey));
        const auto item = [](const QString &id, const QJsonObject &major) {
            return QJsonObject{
                {"id_str", id},
                {"modules", QJsonObject{{"module_author", QJsonObject{{"name", "阿木"}}},
                                        {"module_dynamic", QJsonObject{{"major", major}}}}}};
        };
        const QJsonArray items{
            item("1", {{"archive", QJsonObject{{"bvid", "BV1a"}, {"title", "片"}}}}),
            item("2",
                 {{"draw", QJsonObject{{"items", QJsonArray{QJsonObject{{"src", "x.jpg"}}}}}}}),
            item("3", {{"draw", QJsonObject{{"items", QJsonArray()}}}}),
            item("4", {{"article", QJsonObject{{"title", "文"}, {"covers", QJsonArray{"y.jpg"}}}}}),
            item("5", {})};
        server.setAnswer(
            "GET", "/x/polymer/web-dynamic/v1/feed/all",
            ZuviScriptedAnswer::json(
                QJsonDocument(QJsonObject{{"code", 0}, {"data", QJsonObject{{"items", items}}}})
                    .toJson()));
        ZuviFollowingViewController following(client.get(), &scheduler);
        following.loadViewIfNeeded();
        QTRY_VERIFY(!following.rows().isEmpty());
        loadPage(&following, ZuviIdiom::defaultWindowSize(ZuviIdiom::current()));
        defaults.get()->setString(QString(),
                                  QString::fromLatin1(ZuviAPIClient::kCredentialCookieKey));
    }

    void debugLogPage()
    {
        ZuviDebugLogViewController screen(log.get(), &center);
        loadPage(&screen, QSize(1024, 768));
    }

    void accountPages_data()
    {
        QTest::addColumn<QString>("screen");
        QTest::addColumn<bool>("pad");
        // The pad's profile is the application window's fourth tab.
        QTest::newRow("login") << "login" << true;
        QTest::newRow("profile, phone") << "profile" << false;
        QTest::newRow("history, phone") << "history" << false;
    }
    void accountPages()
    {
        QFETCH(QString, screen);
        QFETCH(bool, pad);
        ZuviIdiom::setCurrent(pad ? ZuviIdiom::Pad : ZuviIdiom::Phone);
        std::unique_ptr<ZuviViewController> controller;
        if (screen == "login")
            controller.reset(new ZuviLoginViewController(client.get(), &scheduler));
        else if (screen == "profile")
            controller.reset(new ZuviProfileViewController(client.get(), &scheduler));
        else
            controller.reset(
                new ZuviAccountVideoListViewController("历史记录", "history", 1, client.get()));
        controller->loadViewIfNeeded();
        loadPage(controller.get(), ZuviIdiom::defaultWindowSize(ZuviIdiom::current()));
    }

    void applicationWindow()
    {
        ZuviKeyboardShortcuts shortcuts;
        ZuviAppDelegate::Services services;
        services.client = client.get();
        services.defaults = defaults.get();
        services.center = &center;
        services.scheduler = &scheduler;
        services.log = log.get();
        services.imageLoader = images.get();
        services.endpoints = ZuviEndpoints::allOn(server.baseUrl());
        services.shortcuts = &shortcuts;
        QQmlEngine engine;
        auto delegate = std::make_unique<ZuviAppDelegate>(services);
        QVERIFY(delegate->applicationDidFinishLaunching(&engine));
        auto *window = qobject_cast<QQuickWindow *>(delegate->window());
        QVERIFY(window);
        QCOMPARE(window->size(), QSize(1024, 768));
        QVERIFY(QTest::qWaitForWindowExposed(window));
        ZuviTabBarController *tabs = delegate->rootTabBarController();
        // Only the shown tab has made its page. A screen pushed on a tab
        // never shown lands above that tab's first page.
        QCOMPARE(stackDepths(window), (QList<int>{1, 0, 0, 0}));
        for (int i = 0; i < 2; ++i) {
            tabs->viewControllerAt(1)->pushViewController(
                ZuviVideoGridViewController::createWithTitle("合集", sampleVideos(4, false), "空",
                                                             client.get(), &scheduler),
                false);
        }
        QCOMPARE(stackDepths(window), (QList<int>{1, 3, 0, 0}));
        // Every tab shows its page.
        for (int i = 0; i < 4; ++i) {
            tabs->selectTab(i);
            QCoreApplication::processEvents();
        }
        QCOMPARE(stackDepths(window), (QList<int>{1, 3, 1, 1}));
        // The covered grid lets go of its covers; the one above it shows its own.
        QCOMPARE(cardsShowingCovers(window, 1), (QList<int>{0, 0, 4}));

        // The search key, from another tab, lands in the recommended grid's
        // search field; what is typed there is text, not keys.
        QTest::keyClick(window, Qt::Key_F, Qt::ControlModifier);
        QCOMPARE(delegate->rootTabBarController()->selectedIndex(), 0);
        QVERIFY(window->activeFocusItem());
        QVERIFY(window->activeFocusItem()->inherits("QQuickTextInput"));
        QTest::keyClick(window, Qt::Key_Question, Qt::ShiftModifier, 0);
        QVERIFY(!shortcuts.isHelpVisible());
        window->activeFocusItem()->setFocus(false);
        QTest::keyClick(window, Qt::Key_Question, Qt::ShiftModifier);
        QVERIFY(shortcuts.isHelpVisible());
        QCoreApplication::processEvents();

        // The next launch opens the window as this one was left.
        window->resize(720, 540);
        QTRY_COMPARE(window->size(), QSize(720, 540));
        delegate.reset();
        ZuviAppDelegate next(services);
        QVERIFY(next.applicationDidFinishLaunching(&engine));
        QCOMPARE(qobject_cast<QQuickWindow *>(next.window())->size(), QSize(720, 540));
    }
};

int main(int argc, char *argv[])
{
    // The software renderer keeps the test independent of any GPU.
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    QGuiApplication app(argc, argv);
    TestPages test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_zuvipages.moc"
