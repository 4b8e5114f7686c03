import QtQuick
import Zuvi

// The black-tinted tab bar with the four tabs' icons and titles. A tap goes
// to the tab root, which also tells a tab's screen when it is tapped again.
Rectangle {
    id: tabBar

    required property ZuviTabBarController tabs

    height: 49
    visible: tabs.tabBarVisible
    opacity: tabs.tabBarOpacity
    enabled: tabs.tabBarTouchable
    gradient: Gradient {
        GradientStop { position: 0.0; color: "#3a3a3a" }
        GradientStop { position: 0.5; color: "#161616" }
        GradientStop { position: 1.0; color: tabBar.tabs.tintColor }
    }

    Rectangle { width: parent.width; height: 1; color: "#4a4a4a" }

    Row {
        anchors.fill: parent
        Repeater {
            model: tabBar.tabs.count
            delegate: Item {
                id: tabItem
                required property int index
                readonly property bool selected: tabBar.tabs.selectedIndex === index
                width: tabBar.width / tabBar.tabs.count
                height: tabBar.height

                Rectangle {
                    anchors.fill: parent
                    anchors.margins: 2
                    radius: 4
                    visible: tabItem.selected
                    color: Qt.rgba(1, 1, 1, 0.12)
                }
                Image {
                    id: icon
                    anchors.horizontalCenter: parent.horizontalCenter
                    y: 4
                    width: 30
                    height: 30
                    sourceSize: Qt.size(30, 30)
                    source: tabBar.tabs.imageAt(tabItem.index, tabItem.selected)
                }
                Text {
                    anchors.horizontalCenter: parent.horizontalCenter
                    anchors.top: icon.bottom
                    text: tabBar.tabs.titleAt(tabItem.index)
                    color: tabItem.selected ? "white" : "#9a9a9a"
                    font.pixelSize: 10
                    font.bold: true
                }
                MouseArea {
                    anchors.fill: parent
                    onClicked: tabBar.tabs.selectTab(tabItem.index)
                }
            }
        }
    }
}
