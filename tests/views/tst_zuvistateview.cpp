#include "views/zuvistateview.h"

#include <QSignalSpy>
#include <QtTest>

class TestStateView : public QObject
{
    Q_OBJECT

private slots:
    // Each mode with and without a button: spinner, picture, badge, fonts,
    // button style and whether touches are taken.
    void modes_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<QString>("button");
        QTest::addColumn<bool>("spinner");
        QTest::addColumn<bool>("picture");
        QTest::addColumn<int>("titleSize");
        QTest::addColumn<int>("messageSize");
        QTest::addColumn<bool>("messageBold");
        QTest::addColumn<bool>("prominent");
        QTest::newRow("loading") << 0 << "" << true << false << 17 << 13 << false << false;
        QTest::newRow("empty") << 1 << "" << false << false << 17 << 13 << false << false;
        QTest::newRow("empty with retry")
            << 1 << "重试" << false << false << 17 << 13 << false << false;
        QTest::newRow("error with retry")
            << 2 << "重试" << false << true << 22 << 15 << true << true;
        QTest::newRow("error without button")
            << 2 << "" << false << true << 22 << 15 << true << false;
    }
    void modes()
    {
        QFETCH(int, mode);
        QFETCH(QString, button);
        QFETCH(bool, spinner);
        QFETCH(bool, picture);
        QFETCH(int, titleSize);
        QFETCH(int, messageSize);
        QFETCH(bool, messageBold);
        QFETCH(bool, prominent);
        ZuviStateView view;
        view.setMode(mode, "标题", "说明", button);
        QCOMPARE(view.mode(), mode);
        QCOMPARE(view.title(), QStringLiteral("标题"));
        QCOMPARE(view.message(), QStringLiteral("说明"));
        QCOMPARE(view.spinnerRunning(), spinner);
        QCOMPARE(view.buttonVisible(), !button.isEmpty());
        QCOMPARE(view.acceptsTouches(), !button.isEmpty());
        QCOMPARE(view.imageVisible(), picture);
        QCOMPARE(view.badgeVisible(), picture);
        QCOMPARE(view.usesDefaultErrorImage(), picture);
        if (picture)
            QCOMPARE(view.imageName(), QStringLiteral("mascot_login_required"));
        QCOMPARE(view.titlePixelSize(), titleSize);
        QCOMPARE(view.messagePixelSize(), messageSize);
        QCOMPARE(view.messageBold(), messageBold);
        QCOMPARE(view.usesProminentActionButton(), prominent);
    }

    void leavingErrorRemovesOnlyTheDefaultPicture()
    {
        ZuviStateView view;
        view.setMode(ZuviStateView::Error, "t", "m", "重试");
        view.setMode(ZuviStateView::Loading, "t", "m");
        QVERIFY(!view.imageVisible());
        QVERIFY(!view.usesDefaultErrorImage());
        QVERIFY(!view.badgeVisible());
        QVERIFY(view.spinnerRunning());
    }

    // The login card: a picture the caller chose survives every mode and
    // hides the badge; an empty card keeps the caller's prominent button.
    void loginRequiredCard()
    {
        ZuviStateView view;
        view.setWhiteBackground(true);
        view.setUsesProminentActionButton(true);
        view.setMode(ZuviStateView::Empty, "需要登录", "登录后查看", "登录");
        view.setImageNamed("mascot_login_required");
        QVERIFY(view.imageVisible());
        QVERIFY(!view.usesDefaultErrorImage());
        QVERIFY(!view.badgeVisible());
        QVERIFY(view.usesProminentActionButton());
        QCOMPARE(view.titlePixelSize(), 24);
        QCOMPARE(view.messagePixelSize(), 15);
        view.setMode(ZuviStateView::Empty, "需要登录", "登录后查看", "登录");
        QVERIFY(view.imageVisible());
        QVERIFY(view.usesProminentActionButton());
        // Loading with a button always turns the prominent style off.
        view.setMode(ZuviStateView::Loading, "正在加载", "", "取消");
        QVERIFY(!view.usesProminentActionButton());
        QVERIFY(view.imageVisible());
    }

    void aMissingPictureHidesIt()
    {
        ZuviStateView view;
        view.setMode(ZuviStateView::Error, "t", "m", "重试");
        view.setImageNamed("no_such_picture");
        QVERIFY(!view.imageVisible());
        QVERIFY(!view.badgeVisible());
        QVERIFY(!view.usesDefaultErrorImage());
        QVERIFY(view.imageSource().isEmpty());
    }

    void retryTargetIsReplaced()
    {
        ZuviStateView view;
        QObject target;
        int first = 0, second = 0;
        view.setMode(ZuviStateView::Error, "t", "m", "重试");
        view.setRetryTarget(&target, [&] { ++first; });
        view.setRetryTarget(&target, [&] { ++second; });
        QSignalSpy triggered(&view, &ZuviStateView::actionTriggered);
        view.actionButtonTapped();
        QCOMPARE(first, 0);
        QCOMPARE(second, 1);
        QCOMPARE(triggered.size(), 1);
        view.setRetryTarget(nullptr, [&] { ++second; });
        view.actionButtonTapped();
        QCOMPARE(second, 1);
        // Without a button there is nothing to tap.
        view.setRetryTarget(&target, [&] { ++second; });
        view.setMode(ZuviStateView::Empty, "t", "m");
        view.actionButtonTapped();
        QCOMPARE(second, 1);
    }

    void aDestroyedTargetIsNotCalled()
    {
        ZuviStateView view;
        int calls = 0;
        {
            QObject target;
            view.setRetryTarget(&target, [&] { ++calls; });
        }
        view.setMode(ZuviStateView::Error, "t", "m", "重试");
        view.actionButtonTapped();
        QCOMPARE(calls, 0);
    }
};

QTEST_MAIN(TestStateView)
#include "tst_zuvistateview.moc"
