import QtQuick
import Zuvi

// A three-way (or n-way) segmented control in the accent colour.
Rectangle {
    id: selector

    property var titles: []
    property int currentIndex: 0
    property real segmentWidth: 84
    signal activated(int index)

    width: segmentWidth * titles.length
    height: 30
    radius: 5
    color: "white"
    border.color: ZuviAppearance.accentColor
    clip: true

    Row {
        anchors.fill: parent
        Repeater {
            model: selector.titles
            delegate: Rectangle {
                required property int index
                required property string modelData
                width: selector.segmentWidth
                height: selector.height
                color: index === selector.currentIndex ? ZuviAppearance.accentColor : "transparent"
                Rectangle {
                    visible: parent.index > 0
                    width: 1
                    height: parent.height
                    color: ZuviAppearance.accentColor
                }
                Text {
                    anchors.centerIn: parent
                    text: parent.modelData
                    // Narrow segments (phones) take a smaller size.
                    font.pixelSize: selector.segmentWidth < 70 ? 11 : 13
                    color: parent.index === selector.currentIndex ? "white"
                                                                  : ZuviAppearance.accentColor
                }
                MouseArea {
                    anchors.fill: parent
                    onClicked: selector.activated(parent.index)
                }
            }
        }
    }
}
