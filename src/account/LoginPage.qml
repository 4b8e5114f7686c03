import QtQuick
import Zuvi

// The QR login screen: a centred column with the hint, the code, the status
// line and the button that asks for a new code.
Rectangle {
    id: page

    required property ZuviLoginViewController controller
    readonly property real imageSide: controller.defaultImageSide

    color: Qt.rgba(0.96, 0.96, 0.96, 1)

    NavigationBar {
        id: bar
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        navigation: page.controller.navigationController
        title: page.controller.title
    }

    Column {
        anchors.horizontalCenter: parent.horizontalCenter
        anchors.top: bar.bottom
        anchors.topMargin: Math.max(16, (page.height - bar.height - height) / 3)
        width: Math.min(page.width - 40, 360)
        spacing: 16

        Text {
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            text: page.controller.hintText
            color: Qt.rgba(0.2, 0.2, 0.2, 1)
            font.pixelSize: 17
            font.bold: true
        }
        Rectangle {
            anchors.horizontalCenter: parent.horizontalCenter
            width: page.imageSide + 16
            height: width
            color: "white"
            radius: 6
            border.color: "#dddddd"
            ZuviQRCodeView {
                id: code
                objectName: "loginCode"
                anchors.centerIn: parent
                width: page.imageSide
                height: page.imageSide
                image: page.controller.qrcodeImage
                Component.onCompleted: page.controller.setImageViewWidth(width)
            }
        }
        Text {
            objectName: "loginStatus"
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            text: page.controller.statusText
            color: Qt.rgba(0.4, 0.4, 0.4, 1)
            font.pixelSize: 14
        }
        Rectangle {
            anchors.horizontalCenter: parent.horizontalCenter
            width: 200
            height: 40
            radius: 7
            opacity: page.controller.refreshEnabled ? 1 : 0.5
            color: refreshArea.pressed ? Qt.rgba(0.66, 0.16, 0.31, 1) : Qt.rgba(0.82, 0.22, 0.40, 1)
            Text {
                anchors.centerIn: parent
                text: page.controller.refreshButtonTitle
                color: "white"
                font.pixelSize: 16
                font.bold: true
            }
            MouseArea {
                id: refreshArea
                anchors.fill: parent
                enabled: page.controller.refreshEnabled
                onClicked: page.controller.refreshButtonTapped()
            }
        }
    }
}
