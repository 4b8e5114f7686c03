import QtQuick
import Zuvi

// An on/off switch in the accent colour: a pill with a white knob that
// slides to the side of the current state. toggled() reports a user's tap.
Rectangle {
    id: toggle

    property bool checked: false
    signal toggled(bool checked)

    width: 54
    height: 30
    radius: height / 2
    color: checked ? ZuviAppearance.accentColor : "#d8d8dc"
    border.color: checked ? Qt.darker(ZuviAppearance.accentColor, 1.15) : "#bdbdc2"

    Behavior on color { ColorAnimation { duration: 120 } }

    Rectangle {
        width: toggle.height - 4
        height: width
        radius: width / 2
        y: 2
        x: toggle.checked ? toggle.width - width - 2 : 2
        color: "white"
        border.color: "#b0b0b6"
        Behavior on x { NumberAnimation { duration: 120 } }
    }
    MouseArea {
        anchors.fill: parent
        onClicked: toggle.toggled(!toggle.checked)
    }
}
