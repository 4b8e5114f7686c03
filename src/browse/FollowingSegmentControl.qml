import QtQuick
import Zuvi

// A bar-style segmented control: bordered segments in a darker shade of the
// navigation bar, the selected one pressed in. It only reports taps; the
// selection shown is the controller's.
Rectangle {
    id: control

    property var titles: []
    property int selectedIndex: 0
    signal segmentTapped(int index)

    width: segments.implicitWidth
    height: 30
    radius: 5
    color: "transparent"
    border.color: Qt.darker(ZuviAppearance.navigationBarTintColor, 1.5)
    clip: true

    Row {
        id: segments
        anchors.fill: parent
        Repeater {
            model: control.titles
            delegate: Rectangle {
                id: segment
                required property int index
                required property string modelData
                readonly property bool selected: index === control.selectedIndex
                width: Math.max(64, label.implicitWidth + 24)
                height: control.height
                color: selected || area.pressed
                       ? Qt.darker(ZuviAppearance.navigationBarTintColor, 1.35)
                       : Qt.darker(ZuviAppearance.navigationBarTintColor, 1.1)
                Rectangle {
                    visible: segment.index > 0
                    width: 1
                    height: parent.height
                    color: Qt.darker(ZuviAppearance.navigationBarTintColor, 1.5)
                }
                Text {
                    id: label
                    anchors.centerIn: parent
                    text: segment.modelData
                    color: "white"
                    opacity: segment.selected ? 1 : 0.82
                    font.pixelSize: 14
                    font.bold: true
                }
                MouseArea {
                    id: area
                    anchors.fill: parent
                    onClicked: control.segmentTapped(segment.index)
                }
            }
        }
    }
}
