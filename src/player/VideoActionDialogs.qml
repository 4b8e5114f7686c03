import QtQuick
import QtQuick.Controls
import Zuvi

// The dialogs of the video actions: one text field for a comment or a
// danmaku ("取消" / "发送"), and the result of an action.
Item {
    id: dialogs

    required property ZuviVideoActions actions
    readonly property alias inputDialog: input
    readonly property alias resultDialog: result

    anchors.fill: parent

    Connections {
        target: dialogs.actions
        function onInputRequested(title, placeholder, tag) {
            input.title = title
            input.tag = tag
            field.placeholderText = placeholder
            field.text = ""
            input.open()
            field.forceActiveFocus()
        }
        function onResultRequested(title, message) {
            result.title = title
            resultText.text = message
            result.open()
        }
    }

    Dialog {
        id: input
        objectName: "videoActionInputDialog"
        property int tag: 0
        anchors.centerIn: parent
        width: Math.min(dialogs.width - 40, 420)
        modal: true
        contentItem: TextField {
            id: field
            objectName: "videoActionInputField"
            // Plain text as typed: no capitalisation or correction.
            inputMethodHints: Qt.ImhNoAutoUppercase | Qt.ImhNoPredictiveText
            onAccepted: input.accept()
        }
        footer: DialogButtonBox {
            Button {
                text: "取消"
                DialogButtonBox.buttonRole: DialogButtonBox.RejectRole
            }
            Button {
                objectName: "videoActionSendButton"
                text: "发送"
                DialogButtonBox.buttonRole: DialogButtonBox.AcceptRole
            }
        }
        onAccepted: dialogs.actions.inputSubmitted(tag, field.text)
    }

    Dialog {
        id: result
        objectName: "videoActionResultDialog"
        anchors.centerIn: parent
        width: Math.min(dialogs.width - 40, 360)
        modal: true
        contentItem: Label {
            id: resultText
            wrapMode: Text.Wrap
        }
        footer: DialogButtonBox {
            Button {
                text: "确定"
                DialogButtonBox.buttonRole: DialogButtonBox.AcceptRole
            }
        }
    }
}
