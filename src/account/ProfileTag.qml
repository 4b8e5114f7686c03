import QtQuick

// A small rounded label on the profile card (level, membership).
Rectangle {
    id: tag

    property string text: ""
    property color fillColor: "grey"

    width: label.implicitWidth + 14
    height: 20
    radius: 10
    color: fillColor

    Text {
        id: label
        anchors.centerIn: parent
        text: tag.text
        color: "white"
        font.pixelSize: 11
        font.bold: true
    }
}
