import QtQuick
import QtQuick.Controls
import Zuvi

// "通知详情": the entry's time, version and picture address, its full text
// and the picture itself.
Rectangle {
    id: page

    required property ZuviNotificationHistoryDetailViewController controller

    color: "white"

    NavigationBar {
        id: bar
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        navigation: page.controller.navigationController
        title: page.controller.title
    }

    Flickable {
        id: flick
        anchors.top: bar.bottom
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        contentHeight: content.height + 40
        clip: true

        Column {
            id: content
            x: 16
            y: 16
            width: Math.min(flick.width - 32, 720)
            spacing: 14

            Text {
                width: parent.width
                text: page.controller.infoText
                font.pixelSize: 13
                color: "#6d6d72"
                wrapMode: Text.WrapAnywhere
                textFormat: Text.PlainText
            }
            TextEdit {
                width: parent.width
                readOnly: true
                selectByMouse: true
                text: page.controller.messageText
                font.pixelSize: 16
                color: "#282828"
                wrapMode: TextEdit.Wrap
            }
            Rectangle {
                visible: page.controller.hasImage
                width: parent.width
                height: page.controller.imageAspectRatio > 0
                        ? Math.min(width * page.controller.imageAspectRatio, 480)
                        : width * 9 / 16
                radius: 7
                color: Qt.rgba(0.94, 0.94, 0.94, 1)
                clip: true

                Image {
                    anchors.fill: parent
                    fillMode: Image.PreserveAspectFit
                    source: page.controller.imageSource
                    asynchronous: true
                }
                Text {
                    anchors.centerIn: parent
                    visible: page.controller.imageStatusText.length > 0
                    text: page.controller.imageStatusText
                    font.pixelSize: 13
                    color: Qt.rgba(0.46, 0.46, 0.46, 1)
                }
            }
        }
    }
}
