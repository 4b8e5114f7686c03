import QtQuick
import Zuvi

// A cover picture of a feed card on its placeholder colour, with an optional
// badge in the top-left corner and a dark label in the bottom-right one.
Rectangle {
    id: cover

    property string url: ""
    property color fill: "#8899aa"
    // Height over width; 16:9 unless the card says otherwise.
    property real aspect: 9 / 16
    property string badgeText: ""
    property color badgeColor: "#e5395c"
    property string cornerText: ""

    implicitHeight: Math.floor(width * aspect)
    height: implicitHeight
    color: fill
    clip: true

    Image {
        anchors.fill: parent
        asynchronous: true
        fillMode: Image.PreserveAspectCrop
        sourceSize.width: 480
        source: ZuviCoverSource.sourceForURL(cover.url)
    }
    Rectangle {
        visible: cover.badgeText.length > 0
        x: 6
        y: 6
        width: badgeLabel.implicitWidth + 12
        height: 20
        radius: 3
        color: cover.badgeColor
        Text {
            id: badgeLabel
            anchors.centerIn: parent
            text: cover.badgeText
            color: "white"
            font.pixelSize: 11
            font.bold: true
        }
    }
    Rectangle {
        visible: cover.cornerText.length > 0
        width: cornerLabel.implicitWidth + 12
        height: 18
        x: parent.width - width - 4
        y: parent.height - height - 4
        radius: 3
        color: Qt.rgba(0, 0, 0, 0.62)
        Text {
            id: cornerLabel
            anchors.centerIn: parent
            text: cover.cornerText
            color: "white"
            font.pixelSize: 11
            font.bold: true
        }
    }
}
