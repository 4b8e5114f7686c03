#include "app/zuviglobalshortcuts.h"
#include "app/zuvikeyboardshortcuts.h"
#include "app/zuvinavigationcontroller.h"
#include "app/zuvitabbarcontroller.h"
#include "app/zuviviewcontroller.h"
#include "platform/zuvivirtualscheduler.h"

#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

using Shortcuts = ZuviKeyboardShortcuts;

namespace {
// A screen as the keys see it: a list that may refresh, with or without a
// search field in its bar.
class ListScreen : public ZuviViewController
{
    Q_OBJECT
    Q_PROPERTY(bool refreshEnabled MEMBER refreshEnabled)

public:
    ListScreen(const QString &title, bool search) : ZuviViewController(title), m_search(search) {}
    QUrl pageUrl() const override { return {}; }
    bool offersSearch() const override { return m_search; }
    Q_INVOKABLE void refreshButtonTapped() { ++refreshes; }

    bool refreshEnabled = true;
    int refreshes = 0;

private:
    bool m_search;
};
} // namespace

class TestKeyboardShortcuts : public QObject
{
    Q_OBJECT

private:
    QQmlEngine engine;
    std::unique_ptr<QQuickWindow> window;
    QQuickItem *field = nullptr;
    std::unique_ptr<Shortcuts> shortcuts;
    QList<Shortcuts::Action> fired;
    std::unique_ptr<QObject> player;

    void bindEveryAction(QObject *owner)
    {
        for (int action = 0; action < Shortcuts::ActionCount; ++action) {
            const auto bound = Shortcuts::Action(action);
            shortcuts->bind(bound, owner, [this, bound] { fired.append(bound); });
        }
    }

private slots:
    void initTestCase()
    {
        QQmlComponent component(&engine);
        component.setData("import QtQuick\nItem { width: 200; height: 100\n"
                          "  TextInput { objectName: \"field\"; width: 200; height: 30 } }",
                          QUrl());
        window = std::make_unique<QQuickWindow>();
        auto *root = qobject_cast<QQuickItem *>(component.create());
        QVERIFY2(root, qPrintable(component.errorString()));
        // The window owns the item too, so it goes with the window.
        root->setParent(window->contentItem());
        root->setParentItem(window->contentItem());
        field = root->findChild<QQuickItem *>("field");
        window->resize(200, 100);
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
    }

    void init()
    {
        shortcuts = std::make_unique<Shortcuts>();
        shortcuts->attachToWindow(window.get());
        player = std::make_unique<QObject>();
        bindEveryAction(player.get());
        fired.clear();
        field->setFocus(false);
    }

    void keysReachTheirActions_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<int>("modifiers");
        QTest::addColumn<int>("action");
        // The plain keys (Space, ←, F, F5, M, D, Esc, [ and ]) and Ctrl+F
        // reach their actions in the cases below and in
        // tst_zuviplayercontrols; these rows are the other modifiers.
        QTest::newRow("shift left")
            << int(Qt::Key_Left) << int(Qt::ShiftModifier) << int(Shortcuts::SeekBackwardLong);
        QTest::newRow("alt left") << int(Qt::Key_Left) << int(Qt::AltModifier)
                                  << int(Shortcuts::Back);
        QTest::newRow("shift right")
            << int(Qt::Key_Right) << int(Qt::ShiftModifier) << int(Shortcuts::SeekForwardLong);
        QTest::newRow("keypad up")
            << int(Qt::Key_Up) << int(Qt::KeypadModifier) << int(Shortcuts::VolumeUp);
        // Keys with other modifiers belong to someone else.
        QTest::newRow("ctrl shift f")
            << int(Qt::Key_F) << int(Qt::ControlModifier | Qt::ShiftModifier)
            << int(Shortcuts::NoAction);
        QTest::newRow("alt right")
            << int(Qt::Key_Right) << int(Qt::AltModifier) << int(Shortcuts::NoAction);
    }

    // Pressed in the window with no item focused, as after opening a video.
    void keysReachTheirActions()
    {
        QFETCH(int, key);
        QFETCH(int, modifiers);
        QFETCH(int, action);
        QTest::keyClick(window.get(), Qt::Key(key), Qt::KeyboardModifiers(modifiers));
        const QList<Shortcuts::Action> expected =
            action == Shortcuts::NoAction ? QList<Shortcuts::Action>{}
                                          : QList<Shortcuts::Action>{Shortcuts::Action(action)};
        QCOMPARE(fired, expected);
    }

    void ignoredWhileATextFieldHasFocus()
    {
        field->forceActiveFocus();
        QTest::keyClick(window.get(), 'f');
        QTest::keyClick(window.get(), Qt::Key_Space);
        QTest::keyClick(window.get(), Qt::Key_Question, Qt::ShiftModifier);
        QTest::keyClick(window.get(), Qt::Key_F5);
        QTest::keyClick(window.get(), Qt::Key_F, Qt::ControlModifier);
        QVERIFY(fired.isEmpty());
        QVERIFY(!shortcuts->isHelpVisible());
        QCOMPARE(field->property("text").toString(), QStringLiteral("f ?"));

        field->setFocus(false);
        QTest::keyClick(window.get(), Qt::Key_Space);
        QCOMPARE(fired, QList<Shortcuts::Action>{Shortcuts::PlayPause});
        field->setProperty("text", QString());
    }

    // The newest living owner acts; a destroyed owner hands the key back;
    // a key nobody can act on is left to the focused item.
    void bindingsFollowTheirOwners()
    {
        auto covering = std::make_unique<QObject>();
        int coveringPlays = 0;
        shortcuts->bind(Shortcuts::PlayPause, covering.get(), [&] { ++coveringPlays; });
        QVERIFY(shortcuts->handleKeyPress(Qt::Key_Space, Qt::NoModifier));
        QCOMPARE(coveringPlays, 1);
        QVERIFY(fired.isEmpty());

        covering.reset();
        QVERIFY(shortcuts->handleKeyPress(Qt::Key_Space, Qt::NoModifier));
        QCOMPARE(fired, QList<Shortcuts::Action>{Shortcuts::PlayPause});

        player.reset();
        QVERIFY(!shortcuts->isBound(Shortcuts::PlayPause));
        QVERIFY(!shortcuts->handleKeyPress(Qt::Key_Space, Qt::NoModifier));
    }

    // Holding a key repeats seeks and volume steps, never a toggle.
    void autoRepeat()
    {
        shortcuts->handleKeyPress(Qt::Key_Left, Qt::NoModifier, true);
        shortcuts->handleKeyPress(Qt::Key_Space, Qt::NoModifier, true);
        shortcuts->handleKeyPress(Qt::Key_Down, Qt::NoModifier, true);
        QCOMPARE(fired, (QList<Shortcuts::Action>{Shortcuts::SeekBackward, Shortcuts::VolumeDown}));
    }

    // Every action is on the help card; the card closes before Esc means
    // leaving fullscreen.
    void helpCard()
    {
        QSet<int> listed;
        for (const QVariant &section : Shortcuts::helpSections()) {
            for (const QVariant &row : section.toMap().value("rows").toList()) {
                QVERIFY(!row.toMap().value("keys").toString().isEmpty());
                for (const QVariant &action : row.toMap().value("actions").toList())
                    listed.insert(action.toInt());
            }
        }
        QCOMPARE(listed.size(), int(Shortcuts::ActionCount));

        QTest::keyClick(window.get(), Qt::Key_Question, Qt::ShiftModifier);
        QVERIFY(shortcuts->isHelpVisible());
        QTest::keyClick(window.get(), Qt::Key_Escape);
        QVERIFY(!shortcuts->isHelpVisible());
        QVERIFY(fired.isEmpty());
        QTest::keyClick(window.get(), Qt::Key_Escape);
        QCOMPARE(fired, QList<Shortcuts::Action>{Shortcuts::LeaveFullscreen});
    }

    // Back, refresh and search act on the selected tab's stack.
    void applicationKeys()
    {
        ZuviVirtualScheduler scheduler;
        ZuviTabBarController tabs;
        auto *recommended = new ListScreen("推荐", true);
        auto *following = new ListScreen("关注", false);
        tabs.addTab(new ZuviNavigationController(recommended, &scheduler), {});
        tabs.addTab(new ZuviNavigationController(following, &scheduler), {});
        player.reset(); // only the application's keys now
        ZuviGlobalShortcuts global(shortcuts.get(), &tabs);

        auto *results = new ListScreen("搜索", true);
        tabs.viewControllerAt(0)->pushViewController(results, false);
        tabs.selectTab(1);
        auto *detail = new ListScreen("详情", false);
        tabs.viewControllerAt(1)->pushViewController(detail, false);

        QTest::keyClick(window.get(), Qt::Key_F5);
        QCOMPARE(detail->refreshes, 1);
        detail->refreshEnabled = false;
        QTest::keyClick(window.get(), Qt::Key_F5);
        QCOMPARE(detail->refreshes, 1);

        QTest::keyClick(window.get(), Qt::Key_Left, Qt::AltModifier);
        QCOMPARE(tabs.viewControllerAt(1)->depth(), 1);
        QVERIFY(!global.goBack()); // the root stays

        // This tab has no search field: the recommended tab's search
        // results take the focus, as they have one.
        QSignalSpy rootFocus(recommended, &ZuviViewController::searchFocusRequested);
        QSignalSpy resultsFocus(results, &ZuviViewController::searchFocusRequested);
        QTest::keyClick(window.get(), Qt::Key_F, Qt::ControlModifier);
        QCOMPARE(tabs.selectedIndex(), 0);
        QCOMPARE(resultsFocus.count(), 1);
        QCOMPARE(rootFocus.count(), 0);
        QCOMPARE(following->refreshes, 0);
    }
};

QTEST_MAIN(TestKeyboardShortcuts)
#include "tst_zuvikeyboardshortcuts.moc"
