import QtQuick
import Zuvi

// One region button of the ranking tab's strip: a raised, shaded key with a
// light edge along its top. The selected one is pressed in: accent-coloured,
// with an inner shadow along its top edge instead of the highlight.
Item {
    id: button

    property string title: ""
    property bool selected: false
    signal tapped()

    readonly property bool down: area.pressed || selected

    implicitWidth: Math.max(label.implicitWidth + 28, 56)
    implicitHeight: 30

    // The drop shadow under a raised key.
    Rectangle {
        visible: !button.down
        anchors.fill: face
        anchors.topMargin: 1.5
        anchors.bottomMargin: -1.5
        radius: face.radius
        color: Qt.rgba(0, 0, 0, 0.16)
    }

    Rectangle {
        id: face
        anchors.fill: parent
        radius: 7
        border.width: 1
        border.color: button.selected ? Qt.darker(ZuviAppearance.accentColor, 1.35)
                                      : Qt.rgba(0.70, 0.70, 0.72, 1)
        gradient: Gradient {
            GradientStop {
                position: 0.0
                color: button.selected ? Qt.darker(ZuviAppearance.accentColor, 1.18)
                                       : (area.pressed ? Qt.rgba(0.86, 0.86, 0.88, 1) : "white")
            }
            GradientStop {
                position: 1.0
                color: button.selected ? ZuviAppearance.accentColor
                                       : (area.pressed ? Qt.rgba(0.92, 0.92, 0.93, 1)
                                                       : Qt.rgba(0.89, 0.89, 0.91, 1))
            }
        }

        // A raised key catches the light along its top edge...
        Rectangle {
            visible: !button.down
            x: face.radius / 2
            y: 1
            width: parent.width - face.radius
            height: 1
            color: Qt.rgba(1, 1, 1, 0.9)
        }
        // ...a pressed one is shaded there from the inside.
        Rectangle {
            visible: button.down
            x: 1
            y: 1
            width: parent.width - 2
            height: 5
            radius: face.radius - 1
            gradient: Gradient {
                GradientStop { position: 0.0; color: Qt.rgba(0, 0, 0, 0.22) }
                GradientStop { position: 1.0; color: Qt.rgba(0, 0, 0, 0) }
            }
        }
    }

    Text {
        id: label
        anchors.centerIn: parent
        anchors.verticalCenterOffset: button.down ? 1 : 0
        text: button.title
        font.pixelSize: 14
        font.bold: true
        color: button.selected ? "white" : Qt.rgba(0.28, 0.28, 0.30, 1)
        style: button.selected ? Text.Sunken : Text.Raised
        styleColor: button.selected ? Qt.rgba(0, 0, 0, 0.25) : "white"
    }

    MouseArea {
        id: area
        anchors.fill: parent
        onClicked: button.tapped()
    }
}
