import QtQuick
import Zuvi

// A cover card of the tablet grid: 16:9 cover on its placeholder colour with
// the uploader's name until the picture arrives, the duration badge, a
// two-line title, the uploader and the play count.
Rectangle {
    id: card

    required property string title
    required property string coverURL
    required property string ownerName
    required property string ownerText
    required property string playText
    required property string durationText
    required property color placeholderColor
    // False while the page is covered: the picture's texture is let go.
    property bool coverAllowed: true
    signal tapped()

    readonly property real contentWidth: width - 16
    readonly property real playWidth: Math.min(Math.max(64, Math.floor(contentWidth * 0.42)),
                                               Math.floor(contentWidth / 2))

    color: "white"
    radius: 4
    border.color: "#e2dcdc"

    Rectangle {
        id: cover
        x: 4
        y: 4
        width: Math.max(1, card.width - 8)
        height: Math.floor(width * 9 / 16)
        color: card.placeholderColor
        clip: true

        Text {
            anchors.centerIn: parent
            width: parent.width - 16
            visible: coverImage.status !== Image.Ready
            horizontalAlignment: Text.AlignHCenter
            elide: Text.ElideRight
            text: card.ownerName
            color: "white"
            font.pixelSize: 15
            font.bold: true
        }
        Image {
            id: coverImage
            anchors.fill: parent
            asynchronous: true
            fillMode: Image.PreserveAspectCrop
            sourceSize.width: 480
            source: card.coverAllowed ? ZuviCoverSource.sourceForURL(card.coverURL) : ""
        }
        Rectangle {
            visible: card.durationText.length > 0
            width: 50
            height: 18
            x: parent.width - width - 4
            y: parent.height - height - 4
            radius: 3
            color: Qt.rgba(0, 0, 0, 0.62)
            Text {
                anchors.centerIn: parent
                text: card.durationText
                color: "white"
                font.pixelSize: 11
                font.bold: true
            }
        }
    }

    Text {
        id: titleLabel
        x: 8
        y: cover.y + cover.height + 11
        width: card.width - 16
        height: 38
        text: card.title
        wrapMode: Text.Wrap
        maximumLineCount: 2
        elide: Text.ElideRight
        color: ZuviAppearance.accentColor
        font.pixelSize: 14
        font.bold: true
    }

    Text {
        x: 8
        y: titleLabel.y + 42
        width: Math.max(1, card.contentWidth - card.playWidth - 6)
        height: 18
        text: card.ownerText
        elide: Text.ElideRight
        color: "#6f6f6f"
        font.pixelSize: 12
    }

    Text {
        x: card.width - 8 - card.playWidth
        y: titleLabel.y + 42
        width: card.playWidth
        height: 18
        horizontalAlignment: Text.AlignRight
        text: card.playText
        elide: Text.ElideRight
        color: "#8a8a8a"
        font.pixelSize: 12
    }

    MouseArea {
        anchors.fill: parent
        onClicked: card.tapped()
    }
}
