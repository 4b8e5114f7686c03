import QtQuick
import Zuvi

// The "我的" tab. A tablet puts the card, the entries and the login button in
// a column on the left and the recent panel beside them; a phone shows the
// column alone.
Rectangle {
    id: page

    required property ZuviProfileViewController controller
    readonly property bool wide: controller.showsRecentPanel
    readonly property real columnWidth: wide ? 360 : width - 24

    color: ZuviAppearance.backgroundColor

    NavigationBar {
        id: bar
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        navigation: page.controller.navigationController
        title: page.controller.title
        leftContent: [
            BrandLabel {
                text: page.controller.brandText
            }
        ]
        rightContent: [
            BarButton {
                objectName: "settingsButton"
                visible: page.controller.hasSettings
                text: "设置"
                onClicked: page.controller.settingsButtonTapped()
            },
            BarButton {
                enabled: !page.controller.loadingProfile
                text: "↻"
                onClicked: page.controller.refreshButtonTapped()
            }
        ]
    }

    Flickable {
        id: column
        x: 12
        anchors.top: bar.bottom
        anchors.bottom: parent.bottom
        width: page.columnWidth
        contentHeight: content.height + 24
        clip: true

        Column {
            id: content
            y: 12
            width: column.width
            spacing: 14

            ProfileCard {
                width: parent.width
                controller: page.controller
            }
            ProfileEntries {
                width: parent.width
                visible: page.controller.loggedIn
                controller: page.controller
            }
            Rectangle {
                objectName: "loginButton"
                width: parent.width
                height: 44
                radius: 7
                readonly property bool prominent: !page.controller.loggedIn
                opacity: page.controller.loginButtonEnabled ? 1 : 0.5
                color: prominent ? (loginArea.pressed ? Qt.rgba(0.66, 0.16, 0.31, 1)
                                                      : Qt.rgba(0.82, 0.22, 0.40, 1))
                                 : (loginArea.pressed ? "#f4eef0" : "white")
                border.color: prominent ? Qt.rgba(1, 1, 1, 0.24) : "#e2dcdc"
                Text {
                    anchors.centerIn: parent
                    text: page.controller.loginButtonTitle
                    color: parent.prominent ? "white" : Qt.rgba(0.80, 0.24, 0.42, 1)
                    font.pixelSize: parent.prominent ? 18 : 16
                    font.bold: true
                }
                MouseArea {
                    id: loginArea
                    anchors.fill: parent
                    enabled: page.controller.loginButtonEnabled
                    onClicked: page.controller.loginButtonTapped()
                }
            }
        }
    }

    ProfileRecentPanel {
        anchors.left: column.right
        anchors.leftMargin: 14
        anchors.right: parent.right
        anchors.rightMargin: 12
        anchors.top: bar.bottom
        anchors.topMargin: 12
        anchors.bottom: parent.bottom
        anchors.bottomMargin: 12
        visible: page.wide && page.controller.loggedIn
        controller: page.controller
    }
}
