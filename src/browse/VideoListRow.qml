import QtQuick
import Zuvi

// A row of the phone's one-column list: a small cover on the left, the
// title, uploader and counts beside it, and a hairline below the text.
Item {
    id: row

    required property string title
    required property string coverURL
    required property string ownerName
    required property string ownerText
    required property string compactPlayText
    required property string durationText
    required property color placeholderColor
    // A screen may hold the cover back (the video screen does until its movie plays).
    property bool coverAllowed: true
    // The video screen's side list shows its covers small and asks for the
    // low-quality thumbnail; the browsing lists ask for the normal one.
    property bool lowQualityCover: false
    signal tapped()

    readonly property real coverWidth: {
        const w = Math.min(Math.floor(width * 0.43), 129)
        return w < 92 ? 92 : w
    }
    readonly property real coverHeight: {
        const w = Math.floor(width * 0.43)
        if (w < 92)
            return 51
        return w >= 129 ? 73 : Math.floor(w * 9 / 16)
    }
    readonly property real textX: cover.x + cover.width + 8
    readonly property real textWidth: Math.max(90, width - 6 - textX)

    Rectangle {
        id: cover
        x: 4
        y: 9
        width: row.coverWidth
        height: row.coverHeight
        color: row.placeholderColor
        clip: true

        Text {
            anchors.centerIn: parent
            width: parent.width - 8
            visible: coverImage.status !== Image.Ready
            horizontalAlignment: Text.AlignHCenter
            elide: Text.ElideRight
            text: row.ownerName
            color: "white"
            font.pixelSize: 12
            font.bold: true
        }
        Image {
            id: coverImage
            anchors.fill: parent
            asynchronous: true
            fillMode: Image.PreserveAspectCrop
            sourceSize.width: 260
            source: !row.coverAllowed ? ""
                    : row.lowQualityCover ? ZuviCoverSource.lowQualitySourceForURL(row.coverURL)
                                          : ZuviCoverSource.sourceForURL(row.coverURL)
        }
        Rectangle {
            visible: row.durationText.length > 0
            width: 44
            height: 16
            x: parent.width - width - 3
            y: parent.height - height - 3
            radius: 3
            color: Qt.rgba(0, 0, 0, 0.62)
            Text {
                anchors.centerIn: parent
                text: row.durationText
                color: "white"
                font.pixelSize: 10
                font.bold: true
            }
        }
    }

    Text {
        x: row.textX
        y: 9
        width: row.textWidth
        height: 36
        text: row.title
        wrapMode: Text.Wrap
        maximumLineCount: 2
        elide: Text.ElideRight
        color: ZuviAppearance.accentColor
        font.pixelSize: 13
        font.bold: true
    }
    Text {
        x: row.textX
        y: 50
        width: row.textWidth
        height: 15
        text: row.ownerText
        elide: Text.ElideRight
        color: "#6f6f6f"
        font.pixelSize: 11
    }
    Text {
        x: row.textX
        y: 67
        width: row.textWidth
        height: 15
        text: row.compactPlayText
        elide: Text.ElideRight
        color: "#8a8a8a"
        font.pixelSize: 11
    }
    Rectangle {
        x: row.textX
        y: row.height - 1
        width: row.textWidth
        height: 1
        color: "#e4dede"
    }

    MouseArea {
        anchors.fill: parent
        onClicked: row.tapped()
    }
}
