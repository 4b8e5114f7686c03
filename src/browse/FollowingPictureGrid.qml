import QtQuick
import Zuvi

// The pictures of a picture post: one shown wide, two side by side, three
// or four in a two-by-two grid; a post without pictures gets a grey note.
Item {
    id: grid

    property var urls: []
    property bool emptyPictures: false

    readonly property int count: urls ? urls.length : 0
    readonly property int columns: count <= 1 ? 1 : 2
    readonly property real gap: 4
    readonly property real tileWidth: Math.floor((width - gap * (columns - 1)) / columns)
    readonly property real tileHeight: count <= 1 ? Math.floor(width * 9 / 16) : tileWidth

    implicitHeight: count === 0 ? (emptyPictures ? 44 : 0)
                                : Math.ceil(count / columns) * (tileHeight + gap) - gap
    height: implicitHeight

    Rectangle {
        anchors.fill: parent
        visible: grid.count === 0 && grid.emptyPictures
        radius: 4
        color: "#eeeaeb"
        Text {
            anchors.centerIn: parent
            text: "图片列表为空"
            color: "#9a9a9a"
            font.pixelSize: 12
        }
    }

    Repeater {
        model: grid.urls
        delegate: Rectangle {
            required property int index
            required property string modelData
            x: (index % grid.columns) * (grid.tileWidth + grid.gap)
            y: Math.floor(index / grid.columns) * (grid.tileHeight + grid.gap)
            width: grid.tileWidth
            height: grid.tileHeight
            color: "#d9d2d5"
            clip: true
            Image {
                anchors.fill: parent
                asynchronous: true
                fillMode: Image.PreserveAspectCrop
                sourceSize.width: 360
                source: ZuviCoverSource.sourceForURL(parent.modelData)
            }
        }
    }
}
