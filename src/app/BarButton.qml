import QtQuick
import Zuvi

// A bordered button of the navigation bar, in a darker shade of the bar.
Rectangle {
    id: button

    property string text: ""
    signal clicked()

    width: Math.max(label.implicitWidth + 20, 36)
    height: 30
    radius: 5
    opacity: enabled ? 1 : 0.5
    color: area.pressed ? Qt.darker(ZuviAppearance.navigationBarTintColor, 1.3)
                        : Qt.darker(ZuviAppearance.navigationBarTintColor, 1.12)
    border.color: Qt.darker(ZuviAppearance.navigationBarTintColor, 1.5)

    Text {
        id: label
        anchors.centerIn: parent
        text: button.text
        color: "white"
        font.pixelSize: 14
        font.bold: true
    }
    MouseArea {
        id: area
        anchors.fill: parent
        onClicked: button.clicked()
    }
}
