import QtQuick
import Zuvi

// The three entries to the account's lists, one row each with its icon.
Rectangle {
    id: entries

    required property ZuviProfileViewController controller

    height: controller.entryTitles.length * 48
    radius: 8
    color: "white"
    border.color: "#e2dcdc"

    Column {
        anchors.fill: parent
        Repeater {
            model: entries.controller.entryTitles.length
            Item {
                id: row
                required property int index
                objectName: "profileEntry" + index
                width: entries.width
                height: 48
                Rectangle {
                    anchors.fill: parent
                    anchors.margins: 1
                    radius: 7
                    color: area.pressed ? "#f4eef0" : "transparent"
                }
                Image {
                    x: 14
                    anchors.verticalCenter: parent.verticalCenter
                    width: 28
                    height: 28
                    sourceSize: Qt.size(56, 56)
                    source: entries.controller.entryIcons[row.index]
                }
                Text {
                    x: 54
                    anchors.verticalCenter: parent.verticalCenter
                    text: entries.controller.entryTitles[row.index]
                    color: Qt.rgba(0.15, 0.15, 0.15, 1)
                    font.pixelSize: 16
                }
                Text {
                    anchors.right: parent.right
                    anchors.rightMargin: 14
                    anchors.verticalCenter: parent.verticalCenter
                    text: "›"
                    color: "#b8b0b0"
                    font.pixelSize: 22
                }
                Rectangle {
                    visible: row.index > 0
                    x: 54
                    width: parent.width - 54
                    height: 1
                    color: "#f0eaea"
                }
                MouseArea {
                    id: area
                    anchors.fill: parent
                    onClicked: entries.controller.openEntryAtIndex(row.index)
                }
            }
        }
    }
}
