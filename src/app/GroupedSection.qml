import QtQuick
import Zuvi

// One section of a grouped table: a grey header above a white rounded group
// of rows, with an optional footer below.
Column {
    id: section

    property string header: ""
    property string footer: ""
    default property alias rows: group.data

    width: parent ? parent.width : 0
    spacing: 6

    Text {
        visible: section.header.length > 0
        x: 18
        width: section.width - 36
        text: section.header
        font.pixelSize: 15
        font.bold: true
        color: "#4c566c"
    }
    Rectangle {
        x: 10
        width: section.width - 20
        height: group.height
        radius: 9
        color: "white"
        border.color: "#c8c8cc"
        clip: true

        Column {
            id: group
            width: parent.width
        }
    }
    Text {
        visible: section.footer.length > 0
        x: 18
        width: section.width - 36
        text: section.footer
        wrapMode: Text.Wrap
        horizontalAlignment: Text.AlignHCenter
        font.pixelSize: 13
        color: "#4c566c"
    }
}
