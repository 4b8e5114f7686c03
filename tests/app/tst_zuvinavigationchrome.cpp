#include "app/zuvinavigationcontroller.h"
#include "app/zuviphonechromecontroller.h"
#include "app/zuvitabbarcontroller.h"
#include "app/zuviviewcontroller.h"
#include "platform/zuviidiom.h"
#include "platform/zuvivirtualscheduler.h"

#include <QPointer>
#include <QSignalSpy>
#include <QtTest>

namespace {
class Screen : public ZuviViewController
{
public:
    explicit Screen(const QString &title) : ZuviViewController(title) {}
    QUrl pageUrl() const override { return {}; }
    void viewWillAppear() override { ++appeared; }
    void viewWillDisappear() override { ++disappeared; }
    int appeared = 0;
    int disappeared = 0;
};
} // namespace

class TestNavigationChrome : public QObject
{
    Q_OBJECT

private:
    ZuviVirtualScheduler scheduler;

private slots:
    void init() { ZuviIdiom::setCurrent(ZuviIdiom::Phone); }
    void cleanup() { ZuviIdiom::setCurrent(ZuviIdiom::Pad); }

    void pushAndPop()
    {
        auto *root = new Screen("root");
        ZuviNavigationController navigation(root, &scheduler);
        QCOMPARE(navigation.depth(), 1);
        QVERIFY(root->isViewLoaded());
        auto *pushed = new Screen("pushed");
        QSignalSpy pushes(&navigation, &ZuviNavigationController::pushed);
        navigation.pushViewController(pushed, true);
        QCOMPARE(navigation.depth(), 2);
        QCOMPARE(navigation.topViewController(), pushed);
        QCOMPARE(pushed->navigationController(), &navigation);
        QVERIFY(pushed->isViewLoaded());
        QCOMPARE(root->disappeared, 1);
        QCOMPARE(pushes.size(), 1);
        QPointer<Screen> gone(pushed);
        QVERIFY(navigation.popViewController(true));
        QCOMPARE(root->appeared, 1);
        QCOMPARE(pushed->disappeared, 1);
        QVERIFY(!navigation.popViewController(true)); // the root stays
        // A popped screen outlives its page's pop transition, then goes.
        scheduler.advance(1.0);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(gone.isNull());
    }

    void pushAndPopShowTheBarOnPhones()
    {
        ZuviNavigationController navigation(new Screen("root"), &scheduler);
        navigation.setNavigationBarHidden(true, true);
        navigation.pushViewController(new Screen("a"));
        QVERIFY(!navigation.isNavigationBarHidden());
        QVERIFY(!navigation.navigationBarAnimated());
        navigation.setNavigationBarHidden(true, true);
        navigation.popViewController();
        QVERIFY(!navigation.isNavigationBarHidden());
    }

    void edgeSwipeBegins_data()
    {
        QTest::addColumn<int>("depth");
        QTest::addColumn<double>("x");
        QTest::addColumn<double>("vx");
        QTest::addColumn<double>("vy");
        QTest::addColumn<bool>("begins");
        QTest::newRow("x = 56") << 2 << 56.0 << 300.0 << 0.0 << true;
        QTest::newRow("x = 57") << 2 << 57.0 << 300.0 << 0.0 << false;
        QTest::newRow("leftwards") << 2 << 10.0 << -300.0 << 0.0 << false;
        QTest::newRow("no horizontal speed") << 2 << 10.0 << 0.0 << 0.0 << false;
        QTest::newRow("mostly vertical") << 2 << 10.0 << 70.0 << 100.0 << false;
        QTest::newRow("just horizontal enough") << 2 << 10.0 << 71.0 << 100.0 << true;
        QTest::newRow("root only") << 1 << 10.0 << 300.0 << 0.0 << false;
    }
    void edgeSwipeBegins()
    {
        QFETCH(int, depth);
        QFETCH(double, x);
        QFETCH(double, vx);
        QFETCH(double, vy);
        QFETCH(bool, begins);
        ZuviNavigationController navigation(new Screen("root"), &scheduler);
        if (depth > 1)
            navigation.pushViewController(new Screen("a"));
        QCOMPARE(navigation.gestureShouldBegin(x, vx, vy), begins);
    }

    void edgeSwipeEnds_data()
    {
        QTest::addColumn<int>("state");
        QTest::addColumn<double>("translation");
        QTest::addColumn<double>("velocity");
        QTest::addColumn<bool>("pops");
        const int ended = ZuviNavigationController::GestureEnded;
        QTest::newRow("48 points, slow") << ended << 48.0 << 10.0 << true;
        QTest::newRow("47 points, slow") << ended << 47.0 << 239.0 << false;
        QTest::newRow("47 points, 240/s") << ended << 47.0 << 240.0 << true;
        QTest::newRow("still moving")
            << int(ZuviNavigationController::GestureChanged) << 200.0 << 900.0 << false;
        QTest::newRow("cancelled")
            << int(ZuviNavigationController::GestureCancelled) << 200.0 << 900.0 << false;
    }
    void edgeSwipeEnds()
    {
        QFETCH(int, state);
        QFETCH(double, translation);
        QFETCH(double, velocity);
        QFETCH(bool, pops);
        ZuviNavigationController navigation(new Screen("root"), &scheduler);
        navigation.pushViewController(new Screen("a"));
        navigation.edgeBackPanGestureRecognized(state, translation, velocity);
        QCOMPARE(navigation.depth(), pops ? 1 : 2);
    }

    void theRecogniserRestsAfterAnEdgePop()
    {
        ZuviNavigationController navigation(new Screen("root"), &scheduler);
        navigation.pushViewController(new Screen("a"));
        navigation.pushViewController(new Screen("b"));
        navigation.setNavigationBarHidden(true, true);
        navigation.edgeBackPanGestureRecognized(ZuviNavigationController::GestureEnded, 60, 0);
        QCOMPARE(navigation.depth(), 2);
        QVERIFY(!navigation.isNavigationBarHidden());
        QVERIFY(!navigation.edgeBackGestureEnabled());
        QVERIFY(!navigation.gestureShouldBegin(10, 300, 0));
        scheduler.advance(0.44);
        QVERIFY(!navigation.edgeBackGestureEnabled());
        scheduler.advance(0.01);
        QVERIFY(navigation.edgeBackGestureEnabled());
        QVERIFY(!navigation.edgeBackPopInProgress());
        QVERIFY(navigation.gestureShouldBegin(10, 300, 0));
    }

    void touchesOnBarsAndControlsAreRefused()
    {
        ZuviNavigationController navigation(new Screen("root"), &scheduler);
        QVERIFY(!navigation.gestureShouldReceiveTouch(true));
        QVERIFY(navigation.gestureShouldReceiveTouch(false));
    }

    // Successive scroll positions and whether the bar is hidden after each.
    void chromeThresholds_data()
    {
        QTest::addColumn<double>("bounds");
        QTest::addColumn<double>("content");
        QTest::addColumn<QList<double>>("offsets");
        QTest::addColumn<QList<bool>>("hidden");
        const QList<bool> no{false, false};
        QTest::newRow("down 8 points") << 500.0 << 3000.0 << QList<double>{100, 108} << no;
        QTest::newRow("down 9 points")
            << 500.0 << 3000.0 << QList<double>{100, 109} << QList<bool>{false, true};
        QTest::newRow("down to exactly 24") << 500.0 << 3000.0 << QList<double>{10, 24} << no;
        QTest::newRow("down to 25")
            << 500.0 << 3000.0 << QList<double>{10, 25} << QList<bool>{false, true};
        QTest::newRow("up 9 shows again")
            << 500.0 << 3000.0 << QList<double>{100, 200, 191} << QList<bool>{false, true, false};
        QTest::newRow("up 8 keeps hidden")
            << 500.0 << 3000.0 << QList<double>{100, 200, 192} << QList<bool>{false, true, true};
        QTest::newRow("top shows again") << 500.0 << 3000.0 << QList<double>{100, 200, 198, 4}
                                         << QList<bool>{false, true, true, false};
        QTest::newRow("short list never hides")
            << 500.0 << 508.0 << QList<double>{0, 100, 300} << QList<bool>{false, false, false};
        QTest::newRow("just long enough")
            << 500.0 << 509.0 << QList<double>{0, 100} << QList<bool>{false, true};
        QTest::newRow("no height") << 0.0 << 3000.0 << QList<double>{0, 100} << no;
    }
    void chromeThresholds()
    {
        QFETCH(double, bounds);
        QFETCH(double, content);
        QFETCH(QList<double>, offsets);
        QFETCH(QList<bool>, hidden);
        ZuviTabBarController tabs;
        auto *root = new Screen("root");
        auto *navigation = new ZuviNavigationController(root, &scheduler);
        tabs.addTab(navigation, {});
        // As the screen leaves it when it appears: the current offset.
        double last = offsets.first();
        bool chromeHidden = false;
        for (int i = 0; i < offsets.size(); ++i) {
            ZuviPhoneChromeController::updateChromeForScrollView({bounds, content, offsets[i], 0},
                                                                 root, &last, &chromeHidden, true);
            QCOMPARE(chromeHidden, hidden[i]);
            QCOMPARE(navigation->isNavigationBarHidden(), hidden[i]);
            QVERIFY(tabs.tabBarVisible());
            QCOMPARE(tabs.tabBarOpacity(), 1.0);
        }
    }

    void chromeDoesNothingOnATablet()
    {
        ZuviIdiom::setCurrent(ZuviIdiom::Pad);
        ZuviNavigationController navigation(new Screen("root"), &scheduler);
        double last = 0;
        bool chromeHidden = false;
        for (double y : {100.0, 200.0, 400.0})
            ZuviPhoneChromeController::updateChromeForScrollView(
                {500, 3000, y, 0}, navigation.rootViewController(), &last, &chromeHidden, true);
        QVERIFY(!chromeHidden);
        QCOMPARE(last, 0.0);
        navigation.setNavigationBarHidden(true, false);
        ZuviPhoneChromeController::setChromeHidden(false, navigation.rootViewController(), true,
                                                   false);
        QVERIFY(navigation.isNavigationBarHidden());
    }

    void topInsetCountsInTheOffset()
    {
        ZuviNavigationController navigation(new Screen("root"), &scheduler);
        double last = 0;
        bool chromeHidden = false;
        // Offset -64 with a 64-point inset is the top.
        ZuviPhoneChromeController::updateChromeForScrollView(
            {500, 3000, -64, 64}, navigation.rootViewController(), &last, &chromeHidden, true);
        QCOMPARE(last, 0.0);
        ZuviPhoneChromeController::updateChromeForScrollView(
            {500, 3000, 0, 64}, navigation.rootViewController(), &last, &chromeHidden, true);
        QVERIFY(chromeHidden);
        QCOMPARE(last, 64.0);
    }
};

QTEST_MAIN(TestNavigationChrome)
#include "tst_zuvinavigationchrome.moc"
