import QtQuick
import QtQuick.Controls
import Zuvi

// The debug log in a read-only monospaced text, scrolled to its end, with an
// action sheet to copy or clear it.
Rectangle {
    id: page

    required property ZuviDebugLogViewController controller

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
                text: page.controller.actionButtonTitle
                onClicked: actions.open()
            }
        ]
    }

    ScrollView {
        id: scroller
        anchors.top: bar.bottom
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom

        TextArea {
            id: logText
            readOnly: true
            wrapMode: TextEdit.WrapAnywhere
            font.family: "Courier"
            font.pixelSize: 12
            text: page.controller.displayText
            onTextChanged: cursorPosition = length
            Component.onCompleted: cursorPosition = length
        }
    }

    Dialog {
        id: actions
        anchors.centerIn: parent
        modal: true
        width: Math.min(page.width - 40, 320)
        contentItem: Column {
            spacing: 8
            Repeater {
                model: page.controller.actionTitles
                delegate: Button {
                    required property int index
                    required property string modelData
                    width: actions.availableWidth
                    text: modelData
                    onClicked: {
                        actions.close()
                        page.controller.chooseAction(index)
                    }
                }
            }
        }
    }

    Dialog {
        id: alert
        property string buttonTitle: ""
        property alias message: alertMessage.text
        anchors.centerIn: parent
        modal: true
        width: Math.min(page.width - 40, 300)
        contentItem: Column {
            spacing: 12
            Text {
                id: alertMessage
                width: alert.availableWidth
                wrapMode: Text.Wrap
                horizontalAlignment: Text.AlignHCenter
            }
            Button {
                width: alert.availableWidth
                text: alert.buttonTitle
                onClicked: alert.close()
            }
        }
    }

    Connections {
        target: page.controller
        function onAlertRequested(title, message, buttonTitle) {
            alert.title = title
            alert.message = message
            alert.buttonTitle = buttonTitle
            alert.open()
        }
    }
}
