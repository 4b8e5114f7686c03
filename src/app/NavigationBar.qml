import QtQuick
import Zuvi

// The navigation bar of a page: tinted in the accent colour, opaque, with a
// back button whenever the page is not the root of its stack. It slides away
// when the phone chrome hides it.
Item {
    id: bar

    property ZuviNavigationController navigation: null
    property string title: ""
    property alias leftContent: leftSlot.data
    property alias centerContent: centerSlot.data
    property alias rightContent: rightSlot.data
    readonly property bool showsBack: navigation !== null && navigation.depth > 1
                                      && navigation.rootViewController !== null
    readonly property bool barHidden: navigation !== null && navigation.navigationBarHidden
    readonly property real barHeight: 44
    // The widest a title view may be: the room between the side items.
    readonly property real centerMaximumWidth: Math.max(0, centerRightEdge - centerLeftEdge)
    readonly property real centerLeftEdge: leftSlot.x + leftSlot.width + 8
    readonly property real centerRightEdge: rightSlot.x - 8

    height: barHidden ? 0 : barHeight
    clip: true
    z: 10

    Behavior on height {
        enabled: bar.navigation !== null && bar.navigation.navigationBarAnimated
        NumberAnimation { duration: 200; easing.type: Easing.OutQuad }
    }

    Rectangle {
        width: parent.width
        height: bar.barHeight
        anchors.bottom: parent.bottom
        gradient: Gradient {
            GradientStop { position: 0.0; color: Qt.lighter(ZuviAppearance.navigationBarBarTintColor, 1.18) }
            GradientStop { position: 1.0; color: ZuviAppearance.navigationBarBarTintColor }
        }
        Rectangle { width: parent.width; height: 1; color: Qt.rgba(1, 1, 1, 0.35) }
        Rectangle {
            width: parent.width; height: 1; anchors.bottom: parent.bottom
            color: Qt.darker(ZuviAppearance.navigationBarBarTintColor, 1.35)
        }

        Row {
            id: leftSlot
            anchors.left: parent.left
            anchors.leftMargin: 6
            anchors.verticalCenter: parent.verticalCenter
            spacing: 6

            Rectangle {
                id: backButton
                visible: bar.showsBack
                width: backLabel.implicitWidth + 22
                height: 30
                radius: 5
                color: backArea.pressed ? Qt.darker(ZuviAppearance.navigationBarTintColor, 1.3)
                                        : Qt.darker(ZuviAppearance.navigationBarTintColor, 1.12)
                border.color: Qt.darker(ZuviAppearance.navigationBarTintColor, 1.5)
                Text {
                    id: backLabel
                    anchors.centerIn: parent
                    anchors.horizontalCenterOffset: 3
                    text: "‹ 返回"
                    color: "white"
                    font.pixelSize: 13
                    font.bold: true
                }
                MouseArea {
                    id: backArea
                    anchors.fill: parent
                    onClicked: bar.navigation.popViewController(true)
                }
            }
        }

        RaisedText {
            visible: centerSlot.children.length === 0
            anchors.centerIn: parent
            text: bar.title
            color: "white"
            shadowColor: Qt.rgba(0, 0, 0, 0.25)
            font.pixelSize: 20
            font.bold: true
        }

        // Centred in the bar when there is room, else pushed clear of the
        // side items, as a title view always was.
        Item {
            id: centerSlot
            width: children.length > 0 ? Math.min(children[0].width, bar.centerMaximumWidth) : 0
            height: parent.height
            x: Math.max(bar.centerLeftEdge,
                        Math.min((parent.width - width) / 2, bar.centerRightEdge - width))
        }

        Row {
            id: rightSlot
            anchors.right: parent.right
            anchors.rightMargin: 6
            anchors.verticalCenter: parent.verticalCenter
            spacing: 6
        }
    }
}
