import QtQuick
import QtQuick.Window
import Zuvi

// The application window: the four navigation stacks of the tab root, one
// shown at a time, above the tab bar.
Window {
    id: window

    required property ZuviAppDelegate appDelegate
    readonly property ZuviTabBarController tabs: appDelegate.rootTabBarController
    readonly property ZuviNavigationController selectedStack: tabs.selectedViewController
    readonly property bool bottomBarHidden: selectedStack !== null
                                            && selectedStack.topViewController !== null
                                            && selectedStack.topViewController.hidesBottomBarWhenPushed

    visible: true
    title: "oldZuvi"
    color: ZuviAppearance.backgroundColor

    Item {
        anchors.top: parent.top
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: window.bottomBarHidden ? parent.bottom : tabBar.top

        Repeater {
            model: window.tabs.count
            delegate: NavigationHost {
                required property int index
                anchors.fill: parent
                navigation: window.tabs.viewControllerAt(index)
                visible: window.tabs.selectedIndex === index
            }
        }
    }

    TabBar {
        id: tabBar
        tabs: window.tabs
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        visible: !window.bottomBarHidden && window.tabs.tabBarVisible
    }

    // The key card is made while it is open: it holds a text for every key
    // of the application, which nobody reads the rest of the time.
    Loader {
        anchors.fill: parent
        active: window.appDelegate.keyboardShortcuts !== null
                && window.appDelegate.keyboardShortcuts.helpVisible
        sourceComponent: KeyboardHelpOverlay {
            shortcuts: window.appDelegate.keyboardShortcuts
        }
    }
}
