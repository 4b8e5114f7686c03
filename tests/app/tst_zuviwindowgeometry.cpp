#include "app/zuviwindowgeometry.h"
#include "platform/zuvidefaults.h"
#include "zuvitestsupport.h"

#include <QWindow>
#include <QtTest>

#include <memory>

using Placement = ZuviWindowGeometry::Placement;

class TestWindowGeometry : public QObject
{
    Q_OBJECT

private slots:
    void placement_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QRect>("geometry");
        QTest::addColumn<bool>("hasPosition");
        QTest::addColumn<bool>("maximized");
        const QRect fallback(0, 0, 1024, 768);
        QTest::newRow("first launch") << QString() << fallback << false << false;
        QTest::newRow("damaged") << "10,20,abc,600,0" << fallback << false << false;
        QTest::newRow("too small") << "10,20,100,80,0" << fallback << false << false;
        QTest::newRow("on the second screen")
            << "2000,100,800,600,1" << QRect(2000, 100, 800, 600) << true << true;
        // That screen is gone: the size stays, the place is the desktop's.
        QTest::newRow("off every screen")
            << "5000,100,800,600,0" << QRect(0, 0, 800, 600) << false << false;
        QTest::newRow("title bar above the screen")
            << "100,-20,800,600,0" << QRect(0, 0, 800, 600) << false << false;
        QTest::newRow("larger than any screen")
            << "0,0,4000,3000,0" << QRect(0, 0, 2560, 1400) << true << false;
    }
    void placement()
    {
        QFETCH(QString, stored);
        QFETCH(QRect, geometry);
        QFETCH(bool, hasPosition);
        QFETCH(bool, maximized);
        const QList<QRect> screens{QRect(0, 0, 1920, 1050), QRect(1920, 0, 2560, 1400)};
        const Placement placement =
            ZuviWindowGeometry::placement(stored, QSize(1024, 768), screens);
        QCOMPARE(placement.geometry, geometry);
        QCOMPARE(placement.hasPosition, hasPosition);
        QCOMPARE(placement.maximized, maximized);
    }

    // What the window last had is saved when it closes, and read back as
    // the next launch's placement.
    void savedWhenTheWindowCloses()
    {
        ZuviScratchDefaults defaults;
        const QString key = QStringLiteral("ZuviWindowGeometryPad");
        auto window = std::make_unique<QWindow>();
        window->setGeometry(40, 50, 900, 700);
        ZuviWindowGeometry geometry(window.get(), defaults.get(), key);
        window->show();
        window->setGeometry(60, 70, 880, 640);
        QTRY_COMPARE(window->geometry(), QRect(60, 70, 880, 640));
        window->hide();
        const QString stored = defaults.get()->stringForKey(key);
        QCOMPARE(stored, ZuviWindowGeometry::storedText(window->geometry(), false));
        const Placement next =
            ZuviWindowGeometry::placement(stored, QSize(1024, 768), {QRect(0, 0, 1920, 1080)});
        QCOMPARE(next.geometry, window->geometry());

        // A window destroyed while shown still leaves its place behind.
        window->show();
        window->setGeometry(80, 90, 860, 620);
        QTRY_COMPARE(window->geometry(), QRect(80, 90, 860, 620));
        const QRect last = window->geometry();
        window.reset();
        QCOMPARE(defaults.get()->stringForKey(key), ZuviWindowGeometry::storedText(last, false));
    }
};

QTEST_MAIN(TestWindowGeometry)
#include "tst_zuviwindowgeometry.moc"
