import QtQuick
import Zuvi

// One card of the following feed, in the look of its kind: a video (cover,
// duration, title, counts), a live room (cover with its on-air badge, area,
// online count), an article (cover, title, description, label), a picture
// post (up to four pictures, or a note when it has none) or a text post.
// Every card starts with the author's avatar, name and action line. The
// card's natural height is its content's; its line may stretch it.
Rectangle {
    id: cell

    // What the card shows, as ZuviFollowingCollectionViewCell worked it out.
    required property var card
    // The phone's one-column layout: covers run edge to edge, larger titles.
    property bool largePreview: false
    signal tapped()

    readonly property string kind: card.kind
    readonly property real padding: 10
    readonly property real contentWidth: width - 2 * padding

    implicitHeight: header.height + body.height + footer.height + 3 * padding
    color: "white"
    radius: 4
    border.color: "#e2dcdc"

    // --- Author line
    Item {
        id: header
        x: cell.padding
        y: cell.padding
        width: cell.contentWidth
        height: 36

        Rectangle {
            id: avatar
            width: 36
            height: 36
            radius: 6
            clip: true
            color: cell.card.placeholderColor
            Text {
                anchors.centerIn: parent
                visible: avatarImage.status !== Image.Ready
                text: cell.card.authorInitial
                color: "white"
                font.pixelSize: 16
                font.bold: true
            }
            Image {
                id: avatarImage
                anchors.fill: parent
                asynchronous: true
                fillMode: Image.PreserveAspectCrop
                sourceSize.width: 72
                source: ZuviCoverSource.sourceForURL(cell.card.avatarURL)
            }
        }
        Text {
            x: avatar.width + 8
            y: 1
            width: parent.width - x
            text: cell.card.authorName
            elide: Text.ElideRight
            color: "#333333"
            font.pixelSize: 13
            font.bold: true
        }
        Text {
            x: avatar.width + 8
            y: 20
            width: parent.width - x
            text: cell.card.actionText
            elide: Text.ElideRight
            color: "#8a8a8a"
            font.pixelSize: 11
        }
    }

    // --- The kind's own content
    Loader {
        id: body
        x: cell.largePreview && cell.kind === "video" ? 0 : cell.padding
        y: header.y + header.height + cell.padding
        width: cell.largePreview && cell.kind === "video" ? cell.width : cell.contentWidth
        height: item ? item.implicitHeight : 0
        sourceComponent: {
            switch (cell.kind) {
            case "video": return videoBody
            case "live": return liveBody
            case "article": return articleBody
            case "draw": return drawBody
            default: return textBody
            }
        }
    }

    // --- The summary line of live rooms, articles and picture posts
    Text {
        id: footer
        x: cell.padding
        y: body.y + body.height + cell.padding
        width: cell.contentWidth
        height: visible ? 16 : 0
        visible: text.length > 0 && (cell.kind === "live" || cell.kind === "article"
                                     || cell.kind === "draw")
        text: cell.card.subtitle
        elide: Text.ElideRight
        color: "#9a9a9a"
        font.pixelSize: 11
    }

    MouseArea {
        anchors.fill: parent
        onClicked: cell.tapped()
    }

    Component {
        id: videoBody
        Column {
            spacing: 6
            FollowingCover {
                width: parent.width
                url: cell.card.coverURL
                fill: cell.card.placeholderColor
                cornerText: cell.card.durationText
            }
            Text {
                x: cell.largePreview ? cell.padding : 0
                width: parent.width - 2 * x
                text: cell.card.title
                wrapMode: Text.Wrap
                maximumLineCount: 2
                elide: Text.ElideRight
                color: ZuviAppearance.accentColor
                font.pixelSize: cell.largePreview ? 16 : 14
                font.bold: true
            }
            Text {
                x: cell.largePreview ? cell.padding : 0
                width: parent.width - 2 * x
                visible: text.length > 0
                text: cell.card.bodyText ?? ""
                wrapMode: Text.Wrap
                maximumLineCount: 2
                elide: Text.ElideRight
                color: "#555555"
                font.pixelSize: 12
            }
            Text {
                x: cell.largePreview ? cell.padding : 0
                text: cell.card.playText + "  " + cell.card.commentText
                color: "#8a8a8a"
                font.pixelSize: 12
            }
        }
    }

    Component {
        id: liveBody
        Column {
            spacing: 6
            FollowingCover {
                width: parent.width
                url: cell.card.coverURL
                fill: Qt.rgba(0.36, 0.30, 0.48, 1)
                badgeText: cell.card.badgeText
                badgeColor: cell.card.badgeLive ? Qt.rgba(0.90, 0.22, 0.36, 1)
                                                : Qt.rgba(0.45, 0.45, 0.45, 1)
                cornerText: cell.card.onlineText
            }
            Text {
                width: parent.width
                text: cell.card.title
                wrapMode: Text.Wrap
                maximumLineCount: 2
                elide: Text.ElideRight
                color: ZuviAppearance.accentColor
                font.pixelSize: 14
                font.bold: true
            }
            Text {
                width: parent.width
                visible: text.length > 0
                text: cell.card.areaText
                elide: Text.ElideRight
                color: "#6f6f6f"
                font.pixelSize: 12
            }
        }
    }

    Component {
        id: articleBody
        Column {
            spacing: 6
            FollowingCover {
                width: parent.width
                aspect: 0.42
                url: cell.card.coverURL
                fill: Qt.rgba(0.42, 0.58, 0.66, 1)
                badgeText: "专栏"
                badgeColor: Qt.rgba(0.25, 0.55, 0.80, 1)
            }
            Text {
                width: parent.width
                text: cell.card.title
                wrapMode: Text.Wrap
                maximumLineCount: 2
                elide: Text.ElideRight
                color: ZuviAppearance.accentColor
                font.pixelSize: 14
                font.bold: true
            }
            Text {
                width: parent.width
                visible: text.length > 0
                text: cell.card.bodyText
                wrapMode: Text.Wrap
                maximumLineCount: 3
                elide: Text.ElideRight
                color: "#555555"
                font.pixelSize: 12
            }
        }
    }

    Component {
        id: drawBody
        Column {
            spacing: 8
            Text {
                width: parent.width
                visible: text.length > 0
                text: cell.card.bodyText
                wrapMode: Text.Wrap
                maximumLineCount: 4
                elide: Text.ElideRight
                color: "#333333"
                font.pixelSize: 13
            }
            FollowingPictureGrid {
                width: parent.width
                urls: cell.card.imageURLs
                emptyPictures: cell.card.emptyPictures
            }
        }
    }

    Component {
        id: textBody
        Rectangle {
            implicitHeight: postText.implicitHeight + 16
            radius: 4
            color: "#f6f3f4"
            Text {
                id: postText
                x: 8
                y: 8
                width: parent.width - 16
                text: cell.card.bodyText
                wrapMode: Text.Wrap
                maximumLineCount: 8
                elide: Text.ElideRight
                color: "#333333"
                font.pixelSize: 13
                lineHeight: 1.15
            }
        }
    }
}
