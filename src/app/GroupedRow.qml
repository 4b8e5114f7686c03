import QtQuick
import QtQuick.Controls
import Zuvi

// A row of a grouped table: a title on the left, then either a detail text
// with a disclosure mark (a row that opens something), or a control placed
// in the accessory slot. A separator line divides it from the next row.
Item {
    id: row

    property string title: ""
    property string subtitle: ""
    property string detail: ""
    property bool disclosure: false
    property bool selectable: disclosure
    property bool separator: true
    default property alias accessory: accessorySlot.data
    signal clicked()

    width: parent ? parent.width : 0
    height: subtitle.length > 0 ? Math.max(64, texts.implicitHeight + 20) : 46

    Rectangle {
        anchors.fill: parent
        color: area.pressed && row.selectable ? "#d9d9de" : "transparent"
    }
    MouseArea {
        id: area
        anchors.fill: parent
        enabled: row.selectable
        onClicked: row.clicked()
    }
    Column {
        id: texts
        anchors.left: parent.left
        anchors.leftMargin: 14
        anchors.right: trailing.left
        anchors.rightMargin: 10
        anchors.verticalCenter: parent.verticalCenter
        spacing: 3
        Text {
            width: parent.width
            text: row.title
            font.pixelSize: 16
            font.bold: true
            color: "#1e1e1e"
            elide: Text.ElideRight
        }
        Text {
            visible: row.subtitle.length > 0
            width: parent.width
            text: row.subtitle
            font.pixelSize: 13
            color: "#6d6d72"
            maximumLineCount: 2
            wrapMode: Text.Wrap
            elide: Text.ElideRight
        }
    }
    Row {
        id: trailing
        anchors.right: parent.right
        anchors.rightMargin: 12
        anchors.verticalCenter: parent.verticalCenter
        spacing: 8
        Text {
            visible: row.detail.length > 0
            anchors.verticalCenter: parent.verticalCenter
            text: row.detail
            font.pixelSize: 15
            color: "#385487"
        }
        Item {
            id: accessorySlot
            anchors.verticalCenter: parent.verticalCenter
            width: childrenRect.width
            height: childrenRect.height
        }
        Text {
            visible: row.disclosure
            anchors.verticalCenter: parent.verticalCenter
            text: "›"
            font.pixelSize: 24
            color: "#a0a0a6"
        }
    }
    Rectangle {
        visible: row.separator
        anchors.left: parent.left
        anchors.leftMargin: 14
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        height: 1
        color: "#e0e0e4"
    }
}
