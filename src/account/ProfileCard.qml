import QtQuick
import Zuvi

// The user's card: a banner, the round avatar (the name's first character
// until the picture arrives), name, level and membership tags, the coin,
// following and follower columns and the status line.
Rectangle {
    id: card

    required property ZuviProfileViewController controller

    height: 236
    radius: 8
    color: "white"
    border.color: "#e2dcdc"
    clip: true

    Rectangle {
        id: banner
        x: 1
        y: 1
        width: parent.width - 2
        height: 64
        radius: 7
        gradient: Gradient {
            GradientStop { position: 0; color: Qt.rgba(0.93, 0.44, 0.61, 1) }
            GradientStop { position: 1; color: Qt.rgba(0.80, 0.26, 0.45, 1) }
        }
    }
    Rectangle {
        id: avatar
        x: 18
        y: 28
        width: 76
        height: 76
        radius: 38
        color: card.controller.loggedIn ? Qt.rgba(0.98, 0.80, 0.86, 1) : Qt.rgba(0.85, 0.85, 0.85, 1)
        border.color: "white"
        border.width: 3
        Text {
            anchors.centerIn: parent
            visible: !avatarPhoto.ready
            text: card.controller.avatarCharacter
            color: card.controller.loggedIn ? Qt.rgba(0.80, 0.24, 0.42, 1) : "white"
            font.pixelSize: 32
            font.bold: true
        }
        RoundPhoto {
            id: avatarPhoto
            anchors.fill: parent
            anchors.margins: 3
            source: card.controller.avatarSource
        }
    }
    Text {
        id: name
        objectName: "profileName"
        x: avatar.x + avatar.width + 14
        y: banner.height + 8
        width: card.width - x - 14
        elide: Text.ElideRight
        text: card.controller.displayName
        color: Qt.rgba(0.15, 0.15, 0.15, 1)
        font.pixelSize: 20
        font.bold: true
    }
    Row {
        x: name.x
        y: name.y + 30
        spacing: 6
        visible: card.controller.loggedIn
        ProfileTag {
            text: card.controller.levelTag
            fillColor: Qt.rgba(0.95, 0.55, 0.20, 1)
        }
        ProfileTag {
            text: card.controller.membershipTag
            fillColor: card.controller.membershipHighlighted ? Qt.rgba(0.93, 0.44, 0.61, 1)
                                                             : Qt.rgba(0.62, 0.62, 0.62, 1)
        }
    }
    Row {
        id: stats
        x: 14
        y: 122
        width: card.width - 28
        Repeater {
            model: 3
            Item {
                id: column
                required property int index
                width: stats.width / 3
                height: 54
                Text {
                    anchors.horizontalCenter: parent.horizontalCenter
                    y: 4
                    text: card.controller.statValues[column.index]
                    color: Qt.rgba(0.15, 0.15, 0.15, 1)
                    font.pixelSize: 19
                    font.bold: true
                }
                Text {
                    anchors.horizontalCenter: parent.horizontalCenter
                    y: 32
                    text: card.controller.statTitles[column.index]
                    color: Qt.rgba(0.5, 0.5, 0.5, 1)
                    font.pixelSize: 12
                }
                Rectangle {
                    visible: column.index > 0
                    width: 1
                    height: 34
                    y: 8
                    color: "#ebe4e4"
                }
            }
        }
    }
    Rectangle {
        x: 14
        y: 186
        width: card.width - 28
        height: 1
        color: "#f0eaea"
    }
    Text {
        objectName: "profileStatus"
        x: 14
        y: 196
        width: card.width - 28
        elide: Text.ElideRight
        text: card.controller.statusLine
        color: Qt.rgba(0.45, 0.45, 0.45, 1)
        font.pixelSize: 13
    }
}
