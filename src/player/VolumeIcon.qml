import QtQuick
import QtQuick.Shapes

// A loudspeaker with one or two waves by volume, or a cross when muted.
// Drawn rather than taken from a font, so it looks the same on every system.
Item {
    id: icon

    property real volume: 1
    property bool muted: false
    property color color: "white"

    implicitWidth: 20
    implicitHeight: 20

    Shape {
        width: 20
        height: 20
        anchors.centerIn: parent

        ShapePath { // the speaker
            strokeColor: "transparent"
            fillColor: icon.color
            startX: 2; startY: 7
            PathLine { x: 6; y: 7 }
            PathLine { x: 11; y: 3 }
            PathLine { x: 11; y: 17 }
            PathLine { x: 6; y: 13 }
            PathLine { x: 2; y: 13 }
            PathLine { x: 2; y: 7 }
        }
        ShapePath { // the near wave, for any sound at all
            strokeColor: !icon.muted && icon.volume > 0 ? icon.color : "transparent"
            strokeWidth: 1.6
            fillColor: "transparent"
            capStyle: ShapePath.RoundCap
            startX: 13.5; startY: 7
            PathArc { x: 13.5; y: 13; radiusX: 4; radiusY: 4 }
        }
        ShapePath { // the far wave, from half volume up
            strokeColor: !icon.muted && icon.volume >= 0.5 ? icon.color : "transparent"
            strokeWidth: 1.6
            fillColor: "transparent"
            capStyle: ShapePath.RoundCap
            startX: 15.5; startY: 4
            PathArc { x: 15.5; y: 16; radiusX: 7; radiusY: 7 }
        }
        ShapePath { // the cross of a muted speaker
            strokeColor: icon.muted ? icon.color : "transparent"
            strokeWidth: 1.8
            fillColor: "transparent"
            capStyle: ShapePath.RoundCap
            startX: 13.5; startY: 7.5
            PathLine { x: 18.5; y: 12.5 }
            PathMove { x: 18.5; y: 7.5 }
            PathLine { x: 13.5; y: 12.5 }
        }
    }
}
