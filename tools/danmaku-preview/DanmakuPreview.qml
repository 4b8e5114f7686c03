import QtQuick
import Zuvi

// A stand-in for a movie picture: slowly drifting coloured bars under the
// danmaku overlay, with the density graph and the live counters along the
// bottom edge.
Rectangle {
    id: root
    color: "#1d2633"

    // Set by the tool with --panel: the settings panel then shows on the right.
    property ZuviDanmakuSettingsController settingsController: null

    Row {
        id: bars
        height: parent.height
        NumberAnimation on x {
            from: 0; to: -320
            duration: 8000
            loops: Animation.Infinite
        }
        Repeater {
            model: Math.ceil(root.width / 80) + 5
            Rectangle {
                width: 80
                height: bars.height
                color: Qt.hsla((index % 8) / 8, 0.35, index % 2 ? 0.30 : 0.22, 1)
            }
        }
    }

    Rectangle {
        width: parent.width * 0.3
        height: width
        radius: width / 2
        color: "#f4d36b"
        opacity: 0.55
        y: parent.height * 0.25
        SequentialAnimation on x {
            loops: Animation.Infinite
            NumberAnimation { from: 0; to: root.width * 0.7; duration: 6000 }
            NumberAnimation { from: root.width * 0.7; to: 0; duration: 6000 }
        }
    }

    ZuviDanmakuOverlayView {
        id: overlay
        objectName: "overlay"
        anchors.fill: parent
    }

    // How busy each moment of the document is, from what the settings keep.
    ZuviDanmakuDensityGraph {
        objectName: "density"
        overlay: overlay
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: countersBar.top
        height: 28
    }

    Loader {
        active: root.settingsController !== null
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.bottom: countersBar.top
        anchors.margins: 16
        width: 360
        sourceComponent: DanmakuSettingsPanel {
            controller: root.settingsController
        }
    }

    Rectangle {
        id: countersBar
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        height: counters.implicitHeight + 8
        color: "#b0000000"
        Text {
            id: counters
            objectName: "counters"
            anchors.fill: parent
            anchors.margins: 4
            color: "#e0e0e0"
            font.pixelSize: 12
            elide: Text.ElideRight
        }
    }
}
