import QtQuick
import Zuvi

// One row of the region settings table: the region's title in bold, a check
// mark for a shown region, and in edit mode a grip to drag it by.
Item {
    id: row

    property string title: ""
    property bool checked: false
    property bool showsGrip: false
    property bool last: false
    // While dragged, the row floats this far from its place.
    property bool lifted: false
    property real liftOffset: 0
    signal tapped()
    signal gripPressed(real sceneY)
    signal gripMoved(real sceneY)
    signal gripReleased()

    z: lifted ? 10 : 0

    Rectangle {
        id: face
        width: parent.width
        height: parent.height
        y: row.lifted ? row.liftOffset : 0
        color: area.pressed || row.lifted ? Qt.rgba(0.93, 0.93, 0.95, 1) : "transparent"
        border.width: row.lifted ? 1 : 0
        border.color: Qt.rgba(0.74, 0.74, 0.77, 1)

        Text {
            anchors.left: parent.left
            anchors.leftMargin: 14
            anchors.verticalCenter: parent.verticalCenter
            text: row.title
            font.pixelSize: 16
            font.bold: true
            color: Qt.rgba(0.12, 0.12, 0.12, 1)
        }

        Text {
            visible: row.checked
            anchors.right: parent.right
            anchors.rightMargin: 16
            anchors.verticalCenter: parent.verticalCenter
            text: "✓"
            font.pixelSize: 18
            font.bold: true
            color: ZuviAppearance.accentColor
        }

        MouseArea {
            id: area
            anchors.fill: parent
            enabled: !row.showsGrip
            onClicked: row.tapped()
        }

        // The grip: three short lines at the right edge.
        Item {
            visible: row.showsGrip
            anchors.right: parent.right
            anchors.top: parent.top
            anchors.bottom: parent.bottom
            width: 48
            Column {
                anchors.centerIn: parent
                spacing: 3
                Repeater {
                    model: 3
                    delegate: Rectangle {
                        width: 18
                        height: 2
                        color: Qt.rgba(0.62, 0.62, 0.65, 1)
                    }
                }
            }
            MouseArea {
                anchors.fill: parent
                preventStealing: true
                onPressed: function(mouse) { row.gripPressed(mapToItem(null, mouse.x, mouse.y).y) }
                onPositionChanged: function(mouse) {
                    row.gripMoved(mapToItem(null, mouse.x, mouse.y).y)
                }
                onReleased: row.gripReleased()
                onCanceled: row.gripReleased()
            }
        }
    }

    Rectangle {
        visible: !row.last && !row.lifted
        anchors.bottom: parent.bottom
        x: 14
        width: parent.width - 14
        height: 1
        color: Qt.rgba(0.86, 0.86, 0.88, 1)
    }
}
