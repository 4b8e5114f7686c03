// Every failure switch of the demo service on every list screen's endpoint:
// the screen leaves its loading state (nothing hangs, even when the answer
// never comes in time), shows its error state with the failure's own text and
// a retry button, and the next good answer, asked for by that button, brings
// the list back. The switch × screen table of texts seen is printed at the end.
#include "browse/zuvisearchresultsviewcontroller.h"
#include "browse/zuvivideogridviewcontroller.h"
#include "net/zuviapiclient.h"
#include "platform/zuvidebuglog.h"
#include "platform/zuvinotificationcenter.h"
#include "platform/zuvivirtualscheduler.h"
#include "views/zuvistateview.h"
#include "zuvidemoservice.h"
#include "zuvitestsupport.h"

#include <QDeadlineTimer>
#include <QTemporaryDir>
#include <QtTest>

#include <cstdio>
#include <functional>
#include <memory>
#include <optional>
#include <tuple>

namespace {
// A list screen as this suite drives it.
struct Screen {
    std::unique_ptr<ZuviVideoListViewController> controller;
    std::function<qsizetype()> videoCount;
};

// Long enough for a whole popular page under the sanitizers; a slow switch
// answers far later.
constexpr int kTimeoutMs = 2000;
} // namespace

class TestZuviFailureSwitches : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanupTestCase();
    void screenShowsTheFailureAndRecovers_data();
    void screenShowsTheFailureAndRecovers();

private:
    Screen open(const QString &screen);
    // Spins until the screen has stopped loading; the client's search retry
    // and the service's slow answers run on virtual clocks, moved on here.
    bool settle(ZuviVideoListViewController *screen);

    QTemporaryDir m_media;
    ZuviVirtualScheduler m_serviceClock;
    ZuviVirtualScheduler m_clientClock;
    ZuviVirtualScheduler m_screenClock;
    std::unique_ptr<ZuviDemoService> m_service;
    ZuviScratchDefaults m_defaults;
    ZuviNotificationCenter m_center;
    std::unique_ptr<ZuviDebugLog> m_log;
    std::unique_ptr<ZuviAPIClient> m_client;
    QStringList m_table;
};

void TestZuviFailureSwitches::initTestCase()
{
    // Stand-in clips: list screens never play them.
    for (const ZuviDemoClip &clip : ZuviDemoContent::clips()) {
        for (int height : {360, 480, 720}) {
            QFile file(m_media.filePath(QStringLiteral("%1-%2.mp4").arg(clip.name).arg(height)));
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(QByteArray(4096, 'x'));
        }
    }
    ZuviDemoOptions options;
    options.mediaDirectory = m_media.path();
    m_service = std::make_unique<ZuviDemoService>(options, &m_serviceClock);
    QString errorText;
    QVERIFY2(m_service->start(0, &errorText), qPrintable(errorText));
    m_log = std::make_unique<ZuviDebugLog>(m_defaults.get(), &m_center);
    m_client = std::make_unique<ZuviAPIClient>(m_defaults.get(), m_log.get(), &m_center,
                                               ZuviEndpoints::allOn(QUrl(m_service->origin())),
                                               &m_clientClock);
    m_client->setRequestTimeoutMs(kTimeoutMs);
}

void TestZuviFailureSwitches::cleanupTestCase()
{
    std::printf("\nswitch × screen → state title: message\n%s\n",
                qPrintable(m_table.join(QLatin1Char('\n'))));
}

Screen TestZuviFailureSwitches::open(const QString &screen)
{
    Screen opened;
    if (screen == QLatin1String("search")) {
        // A word of a generated title always finds something.
        const QString keyword = m_service->content().videos().first().title.left(2);
        auto *search = new ZuviSearchResultsViewController(keyword, m_client.get());
        opened.controller.reset(search);
        opened.videoCount = [search] { return search->videos().size(); };
    } else {
        auto *grid = screen == QLatin1String("popular")
                         ? ZuviVideoGridViewController::createWithPopularTitle(
                               "热门", "暂无热门内容。", m_client.get(), &m_screenClock)
                         : ZuviVideoGridViewController::createWithRecommendedTitle(
                               "推荐", "暂无推荐内容。", m_client.get(), &m_screenClock);
        opened.controller.reset(grid);
        opened.videoCount = [grid] { return grid->videos().size(); };
    }
    opened.controller->loadViewIfNeeded();
    return opened;
}

bool TestZuviFailureSwitches::settle(ZuviVideoListViewController *screen)
{
    QDeadlineTimer deadline(10000);
    while (screen->isLoading() || screen->isLoadingMore()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        m_clientClock.advance(0.1);
    }
    return true;
}

void TestZuviFailureSwitches::screenShowsTheFailureAndRecovers_data()
{
    QTest::addColumn<QString>("screen");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("switchText");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("message"); // what the message must begin with
    const QList<std::tuple<QString, QString, QString>> screens{
        {"recommended", "/x/web-interface/index/top/feed/rcmd", "加载失败"},
        {"popular", "/x/web-interface/popular", "加载失败"},
        {"search", "/x/web-interface/search/type", "搜索失败"},
    };
    const QList<QPair<QString, QString>> switches{
        {"slow:60000", QStringLiteral("请求超时（%1 秒没有响应）").arg(kTimeoutMs / 1000.0)},
        {"code:-412:请求被拦截", "请求被拦截"},
        {"broken", "接口返回的数据不是有效的 JSON"},
        {"html", "接口返回的数据不是有效的 JSON"},
        // A dropped connection passes the network's own words through.
        {"drop", ""},
    };
    for (const auto &[screen, path, title] : screens) {
        for (const auto &[switchText, message] : switches) {
            QTest::addRow("%s %s", qPrintable(screen), qPrintable(switchText.section(':', 0, 0)))
                << screen << path << switchText << title << message;
        }
    }
}

void TestZuviFailureSwitches::screenShowsTheFailureAndRecovers()
{
    QFETCH(QString, screen);
    QFETCH(QString, path);
    QFETCH(QString, switchText);
    QFETCH(QString, title);
    QFETCH(QString, message);

    std::optional<ZuviDemoFailure> failure;
    QString errorText;
    QVERIFY(ZuviDemoFailureSwitches::parseMode(switchText, &failure, &errorText));
    m_service->failures().set(path, *failure);
    const Screen opened = open(screen);
    ZuviVideoListViewController *controller = opened.controller.get();
    QVERIFY2(settle(controller), "the screen still loads");

    ZuviStateView *state = controller->stateView();
    QVERIFY(state);
    QCOMPARE(state->mode(), int(ZuviStateView::Error));
    QCOMPARE(state->title(), title);
    QVERIFY2(state->message().startsWith(message), qPrintable(state->message()));
    QVERIFY(!state->message().isEmpty());
    QVERIFY(state->buttonVisible());
    QCOMPARE(opened.videoCount(), 0);
    m_table << QStringLiteral("%1 × %2 → %3: %4")
                   .arg(switchText.section(':', 0, 0), -6)
                   .arg(screen, -11)
                   .arg(state->title(), state->message());

    // The late answer of a slow switch arrives now and is dropped; then the
    // retry button meets a healthy service.
    m_serviceClock.advance(120);
    m_service->failures().clearAll();
    state->actionButtonTapped();
    QVERIFY2(settle(controller), "the retry still loads");
    QVERIFY(opened.videoCount() > 0);
    QCOMPARE(controller->stateView(), nullptr);
}

QTEST_MAIN(TestZuviFailureSwitches)
#include "tst_zuvifailureswitches.moc"
