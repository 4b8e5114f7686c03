import QtQuick
import Zuvi

// The tablet's "最近观看" panel: the first history videos as cards, or its
// status while they load, fail or are none.
Rectangle {
    id: panel

    required property ZuviProfileViewController controller
    readonly property int columns: controller.recentColumnCountForWidth(width)
    readonly property real spacing: 10
    // The cards fill the inner width; the grid is one spacing wider so that
    // the last column's cell (card plus spacing) fits beside the others.
    readonly property real cellWidth: Math.floor((width - 24 - (columns - 1) * spacing) / columns)

    radius: 8
    color: "white"
    border.color: "#e2dcdc"

    Text {
        id: header
        x: 14
        y: 12
        text: panel.controller.recentTitle
        color: Qt.rgba(0.22, 0.15, 0.13, 1)
        font.pixelSize: 18
        font.bold: true
    }
    Text {
        objectName: "recentStatus"
        anchors.centerIn: parent
        visible: text.length > 0
        text: panel.controller.recentStatusText
        color: Qt.rgba(0.5, 0.5, 0.5, 1)
        font.pixelSize: 14
    }
    GridView {
        id: grid
        x: 12
        y: header.y + header.height + 12
        width: panel.width - 24 + panel.spacing
        height: panel.height - y - 8
        clip: true
        model: panel.controller.recentVideos
        cellWidth: panel.cellWidth + panel.spacing
        cellHeight: Math.floor(Math.max(1, panel.cellWidth - 8) * 9 / 16) + 76 + panel.spacing
        delegate: VideoGridCell {
            required property int index
            width: panel.cellWidth
            height: grid.cellHeight - panel.spacing
            onTapped: panel.controller.selectRecentItem(index)
        }
    }
}
