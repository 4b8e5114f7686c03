import QtQuick
import QtQuick.Controls
import Zuvi

// "远程配置": the configuration service's state as monospaced text, with
// "刷新" and "弹出最近通知".
Rectangle {
    id: page

    required property ZuviRemoteConfigDebugViewController controller

    color: "white"

    NavigationBar {
        id: bar
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        navigation: page.controller.navigationController
        title: page.controller.title
        rightContent: [
            BarButton {
                text: "刷新"
                enabled: !page.controller.refreshing
                onClicked: page.controller.refresh()
            }
        ]
    }

    Rectangle {
        id: toolbar
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        height: 52
        color: "#eeeef2"
        Rectangle { width: parent.width; height: 1; color: "#c8c8cc" }

        Button {
            anchors.centerIn: parent
            text: "弹出最近通知"
            onClicked: page.controller.presentLatestNotification()
        }
    }

    ScrollView {
        anchors.top: bar.bottom
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: toolbar.top

        TextArea {
            readOnly: true
            wrapMode: TextEdit.WrapAnywhere
            font.family: "Courier"
            font.pixelSize: 13
            text: page.controller.stateText
        }
    }

    AlertDialog {
        id: alert
    }

    Connections {
        target: page.controller
        function onAlertRequested(title, message, buttonTitle) {
            alert.show(title, message, buttonTitle, "")
        }
    }
}
