import QtQuick
import QtQuick.Controls

// The rounded search field of the era, sitting in a navigation bar. It hands
// the typed text to its screen when the user presses return.
Item {
    id: field

    property alias text: input.text
    property string placeholder: ""
    signal searchRequested(string text)

    function clear() { input.text = "" }
    function dismissKeyboard() { input.focus = false }
    function takeFocus() { input.forceActiveFocus() }

    implicitHeight: 36
    implicitWidth: 200

    Rectangle {
        anchors.fill: parent
        anchors.topMargin: 5
        anchors.bottomMargin: 5
        radius: height / 2
        color: "white"
        border.color: Qt.rgba(0, 0, 0, 0.25)

        Text {
            id: glass
            anchors.left: parent.left
            anchors.leftMargin: 9
            anchors.verticalCenter: parent.verticalCenter
            text: "⌕"
            color: "#8a8a8a"
            font.pixelSize: 15
        }

        TextInput {
            id: input
            anchors.left: glass.right
            anchors.leftMargin: 5
            anchors.right: parent.right
            anchors.rightMargin: 10
            anchors.verticalCenter: parent.verticalCenter
            clip: true
            font.pixelSize: 14
            color: "#222222"
            selectByMouse: true
            inputMethodHints: Qt.ImhNoAutoUppercase | Qt.ImhNoPredictiveText
            onAccepted: field.searchRequested(text)

            Text {
                visible: input.text.length === 0
                anchors.verticalCenter: parent.verticalCenter
                text: field.placeholder
                color: "#a0a0a0"
                font.pixelSize: 14
                elide: Text.ElideRight
                width: parent.width
            }
        }
    }
}
