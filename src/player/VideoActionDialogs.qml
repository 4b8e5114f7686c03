import QtQuick
import QtQuick.Controls
import Zuvi

// The dialogs of the video actions: one text field for a comment or a
// danmaku ("取消" / "发送"), and the result of an action. Each is made the
// first time it is needed: most viewings never open one, and a dialog with
// its buttons and field is a sizeable set of objects to keep beside a
// playing video.
Item {
    id: dialogs

    required property ZuviVideoActions actions

    anchors.fill: parent

    Connections {
        target: dialogs.actions
        function onInputRequested(title, placeholder, tag) {
            inputLoader.active = true
            inputLoader.item.ask(title, placeholder, tag)
        }
        function onResultRequested(title, message) {
            resultLoader.active = true
            resultLoader.item.show(title, message)
        }
    }

    Loader {
        id: inputLoader
        anchors.fill: parent
        active: false
        sourceComponent: Item {
            function ask(title, placeholder, tag) {
                input.title = title
                input.tag = tag
                field.placeholderText = placeholder
                field.text = ""
                input.open()
                field.forceActiveFocus()
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
        }
    }

    Loader {
        id: resultLoader
        anchors.fill: parent
        active: false
        sourceComponent: Item {
            function show(title, message) {
                result.title = title
                resultText.text = message
                result.open()
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
    }
}
