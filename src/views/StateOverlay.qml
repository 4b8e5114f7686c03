import QtQuick
import QtQuick.Controls
import Zuvi

// Draws a ZuviStateView over a list: picture with its "!" badge, spinner,
// title, message and the action button in its plain or prominent style.
// Without a button, touches pass through to the list below.
Item {
    id: overlay

    property ZuviStateView stateView: null

    visible: stateView !== null

    Rectangle {
        anchors.fill: parent
        visible: overlay.stateView !== null && overlay.stateView.whiteBackground
        color: "white"
    }

    MouseArea {
        anchors.fill: parent
        enabled: overlay.stateView !== null && overlay.stateView.acceptsTouches
    }

    Column {
        anchors.centerIn: parent
        width: Math.min(parent.width - 40, 420)
        spacing: 10

        Item {
            visible: overlay.stateView !== null && overlay.stateView.imageVisible
            width: parent.width
            height: 120
            Image {
                id: picture
                anchors.centerIn: parent
                height: 120
                width: 138
                fillMode: Image.PreserveAspectFit
                sourceSize: Qt.size(276, 240)
                source: overlay.stateView ? overlay.stateView.imageSource : ""
            }
            Rectangle {
                visible: overlay.stateView !== null && overlay.stateView.badgeVisible
                x: picture.x + picture.width - width / 2
                y: picture.y
                width: 24
                height: 24
                radius: 12
                color: Qt.rgba(0.82, 0.22, 0.40, 1)
                border.color: "white"
                border.width: 2
                Text {
                    anchors.centerIn: parent
                    text: "!"
                    color: "white"
                    font.pixelSize: 15
                    font.bold: true
                }
            }
        }

        BusyIndicator {
            anchors.horizontalCenter: parent.horizontalCenter
            visible: running
            running: overlay.stateView !== null && overlay.stateView.spinnerRunning
        }

        Text {
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            text: overlay.stateView ? overlay.stateView.title : ""
            color: overlay.stateView ? overlay.stateView.titleColor : "black"
            font.pixelSize: overlay.stateView ? overlay.stateView.titlePixelSize : 17
            font.bold: true
        }

        Text {
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            text: overlay.stateView ? overlay.stateView.message : ""
            color: overlay.stateView ? overlay.stateView.messageColor : "grey"
            font.pixelSize: overlay.stateView ? overlay.stateView.messagePixelSize : 13
            font.bold: overlay.stateView !== null && overlay.stateView.messageBold
        }

        Item {
            visible: overlay.stateView !== null && overlay.stateView.buttonVisible
            width: parent.width
            height: 54

            Rectangle {
                id: button
                readonly property bool prominent: overlay.stateView !== null
                                                  && overlay.stateView.usesProminentActionButton
                anchors.centerIn: parent
                width: Math.max(buttonLabel.implicitWidth + 48, 140)
                height: 42
                radius: prominent ? 7 : 0
                color: prominent ? Qt.rgba(0.82, 0.22, 0.40, 1) : "transparent"
                border.width: prominent ? 1 : 0
                border.color: Qt.rgba(1, 1, 1, 0.24)

                // A soft shadow under the prominent button.
                Rectangle {
                    visible: button.prominent
                    z: -1
                    anchors.fill: parent
                    anchors.topMargin: 2
                    anchors.bottomMargin: -2
                    radius: 7
                    color: Qt.rgba(0, 0, 0, 0.5 * 0.28)
                }

                Text {
                    id: buttonLabel
                    anchors.centerIn: parent
                    text: overlay.stateView ? overlay.stateView.buttonTitle : ""
                    font.bold: true
                    font.pixelSize: button.prominent ? 18 : 16
                    color: button.prominent
                           ? (buttonArea.pressed ? Qt.rgba(1, 1, 1, 0.72) : "white")
                           : (buttonArea.pressed ? Qt.rgba(0.58, 0.12, 0.27, 1)
                                                 : Qt.rgba(0.80, 0.24, 0.42, 1))
                }
                MouseArea {
                    id: buttonArea
                    anchors.fill: parent
                    onClicked: overlay.stateView.actionButtonTapped()
                }
            }
        }
    }
}
