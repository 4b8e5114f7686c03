#include "danmaku/zuvidanmakuoverlayview.h"
#include "images/zuviimageloader.h"
#include "images/zuviimageprovider.h"
#include "platform/zuvidefaults.h"
#include "platform/zuviendpoints.h"
#include "player/zuvivideoplayerviewcontroller.h"
#include "support/zuvitesthttpserver.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QQmlApplicationEngine>
#include <QQmlExtensionPlugin>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTemporaryDir>
#include <QTest>

Q_IMPORT_QML_PLUGIN(ZuviPlugin)

// The page loads offscreen with the real movie player, against a loopback
// service whose video address does not exist, and forwards the desktop keys.
class TestVideoPlayerPage : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void pageShowsPlayerErrorAndForwardsKeys();

private:
    QTemporaryDir m_dir;
    ZuviTestHttpServer m_server;
};

void TestVideoPlayerPage::initTestCase()
{
    QVERIFY(m_server.start());
    ZuviDefaults::setStandardFilePath(m_dir.filePath("defaults.ini"));
    ZuviEndpoints::setShared(ZuviEndpoints::allOn(m_server.baseUrl()));
    const QJsonObject detail{
        {"bvid", "BV1page"},
        {"aid", 7},
        {"cid", 70},
        {"title", "页面测试"},
        {"pages", QJsonArray{QJsonObject{{"cid", 70}, {"page", 1}, {"part", "P1"}}}}};
    m_server.setAnswer("*", "/x/web-interface/view",
                       ZuviScriptedAnswer::json(
                           QJsonDocument(QJsonObject{{"code", 0}, {"data", detail}}).toJson()));
    const QJsonObject play{
        {"quality", 32},
        {"durl", QJsonArray{QJsonObject{{"url", m_server.urlString("/missing.mp4")}}}}};
    m_server.setAnswer(
        "*", "/x/player/playurl",
        ZuviScriptedAnswer::json(QJsonDocument(QJsonObject{{"code", 0}, {"data", play}}).toJson()));
    m_server.setAnswer(
        "*", "/x/v1/dm/list.so",
        ZuviScriptedAnswer::text("<i><d p=\"1,1,25,16777215\">好</d></i>", "text/xml"));
    m_server.setAnswer("*", "/missing.mp4", ZuviScriptedAnswer::text("no", "text/plain", 404));
    const QJsonObject related{{"bvid", "BV1rel"},
                              {"aid", 8},
                              {"cid", 80},
                              {"title", "相关视频"},
                              {"owner", QJsonObject{{"name", "UP"}}},
                              {"pic", m_server.urlString("/cover.jpg")}};
    m_server.setAnswer(
        "*", "/x/web-interface/archive/related",
        ZuviScriptedAnswer::json(
            QJsonDocument(QJsonObject{{"code", 0}, {"data", QJsonArray{related}}}).toJson()));
}

void TestVideoPlayerPage::pageShowsPlayerErrorAndForwardsKeys()
{
    // Declared first so that it outlives the page that shows it.
    std::unique_ptr<ZuviVideoPlayerViewController> screen;
    QQmlApplicationEngine engine;
    // Qt 6.4 keeps the module's qmldir under :/Zuvi/, outside the default paths.
    engine.addImportPath(QStringLiteral("qrc:/"));
    engine.addImageProvider(QString::fromLatin1(ZuviImageProvider::kProviderId),
                            new ZuviImageProvider(ZuviImageLoader::sharedLoader()));
    ZuviVideoItem item;
    item.bvid = QStringLiteral("BV1page");
    item.aid = 7;
    item.cid = 70;
    item.title = QStringLiteral("列表里的标题");
    screen.reset(ZuviVideoPlayerViewController::createWithVideoItem(item, QStringLiteral("推荐")));
    engine.setInitialProperties({{"screen", QVariant::fromValue(screen.get())}});
    engine.loadData(R"(
        import QtQuick
        import QtQuick.Controls
        import Zuvi
        ApplicationWindow {
            required property ZuviVideoPlayerViewController screen
            width: 800; height: 600; visible: true
            VideoPlayerPage {
                objectName: "page"
                anchors.fill: parent
                controller: screen
            }
        })");
    QCOMPARE(engine.rootObjects().size(), 1);
    auto *window = qobject_cast<QQuickWindow *>(engine.rootObjects().constFirst());
    QVERIFY(window);
    auto *page = window->findChild<QQuickItem *>("page");
    QVERIFY(page);
    auto *c = screen.get();
    QCOMPARE(page->property("controller").value<ZuviVideoPlayerViewController *>(), c);
    QCOMPARE(c->pageUrl(), QUrl("qrc:/Zuvi/VideoPlayerPage.qml"));
    // As the navigation stack does on a push.
    c->loadViewIfNeeded();
    c->viewWillAppear();
    auto *container = page->findChild<QQuickItem *>("playerContainer");
    QCOMPARE(c->playerContainer(), container);
    QCOMPARE(c->danmakuOverlay()->parentItem(), container);
    QCOMPARE(c->title(), QStringLiteral("视频播放"));
    // Without a picture the movie view's letterbox is black all over.
    auto *movieView = page->findChild<QQuickItem *>("movieView");
    auto *letterbox = page->findChild<QQuickItem *>("letterbox");
    QVERIFY(movieView && letterbox);
    QTRY_COMPARE(movieView->height(), movieView->width() * 9 / 16);
    const QList<QQuickItem *> bars = letterbox->childItems();
    QCOMPARE(bars.size(), 4);
    QCOMPARE(bars.at(0)->size(), movieView->size());
    for (QQuickItem *bar : bars.mid(1))
        QVERIFY(bar->width() == 0 || bar->height() == 0);

    // The address is asked for, the movie is created, and QMediaPlayer's
    // failure on it comes back as the inline error with a retry.
    QTRY_VERIFY_WITH_TIMEOUT(m_server.requestCount("/missing.mp4") >= 1 || c->isRetryVisible(),
                             10000);
    QTRY_VERIFY_WITH_TIMEOUT(c->isRetryVisible(), 10000);
    QCOMPARE(c->stateText(), QStringLiteral("播放器无法打开当前 MP4 地址"));
    QCOMPARE(c->retryTitle(), QStringLiteral("重试播放"));
    QCOMPARE(c->videoTitle(), QStringLiteral("页面测试"));
    // The error lets the related covers load, and the side list asks for
    // the small, low-quality thumbnail.
    QTRY_COMPARE_WITH_TIMEOUT(m_server.requestCount("/cover.jpg@160w_90h_1c_60q.jpg"), 1, 10000);
    QCOMPARE(m_server.requestCount("/cover.jpg@320w_180h_1c_80q.jpg"), 0);

    // D switches the danmaku off and stores the choice; D again turns them on.
    window->requestActivate();
    page->forceActiveFocus();
    QVERIFY(c->isDanmakuEnabled());
    QTest::keyClick(window, Qt::Key_D);
    QVERIFY(!c->isDanmakuEnabled());
    QVERIFY(!c->danmakuOverlay()->isVisible());
    QCOMPARE(ZuviDefaults::standardDefaults()->boolForKey("ZuviDanmakuEnabled"), false);
    QTest::keyClick(window, Qt::Key_D);
    QVERIFY(c->isDanmakuEnabled());
}

QTEST_MAIN(TestVideoPlayerPage)
#include "tst_videoplayerpage.moc"
