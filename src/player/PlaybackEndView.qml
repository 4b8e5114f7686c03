import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Zuvi

// The end of playback over the picture: the badge (the countdown in
// fullscreen), what ended or failed, the first related video as a card, and
// replay and exit.
Rectangle {
    id: endView

    required property ZuviVideoPlayerViewController controller
    readonly property ZuviPlaybackEndCard card: controller.endCard
    readonly property color accent: Qt.rgba(0.93, 0.44, 0.61, 1)

    visible: card.visible
    color: "#e0101014"

    ColumnLayout {
        anchors.centerIn: parent
        width: Math.min(parent.width - 32, 460)
        spacing: parent.height < 260 ? 4 : 10

        Label {
            objectName: "playbackEndBadge"
            Layout.alignment: Qt.AlignLeft
            leftPadding: 10
            rightPadding: 10
            topPadding: 3
            bottomPadding: 3
            text: endView.card.badgeText
            color: "white"
            font.bold: true
            background: Rectangle {
                radius: 4
                color: endView.accent
            }
        }

        // The related video: its cover, title and meta line; a tap plays it.
        Rectangle {
            objectName: "playbackEndRelatedCard"
            Layout.fillWidth: true
            implicitHeight: Math.max(cover.height, texts.implicitHeight) + 16
            radius: 6
            color: relatedArea.pressed ? "#40ffffff" : "#26ffffff"

            Rectangle {
                id: cover
                x: 8
                y: 8
                width: endView.height < 260 ? 96 : 128
                height: width * 9 / 16
                radius: 3
                color: "#333"
                clip: true
                Image {
                    anchors.fill: parent
                    fillMode: Image.PreserveAspectCrop
                    asynchronous: true
                    source: endView.card.coverSource
                }
            }
            ColumnLayout {
                id: texts
                anchors.left: cover.right
                anchors.leftMargin: 10
                anchors.right: parent.right
                anchors.rightMargin: 8
                anchors.verticalCenter: parent.verticalCenter
                spacing: 4
                Label {
                    objectName: "playbackEndTitle"
                    Layout.fillWidth: true
                    text: endView.card.titleText
                    color: "white"
                    font.pixelSize: 16
                    font.bold: true
                    elide: Text.ElideRight
                    maximumLineCount: 2
                    wrapMode: Text.Wrap
                }
                Label {
                    objectName: "playbackEndMeta"
                    Layout.fillWidth: true
                    text: endView.card.metaText
                    color: "#ccc"
                    elide: Text.ElideRight
                }
            }
            MouseArea {
                id: relatedArea
                objectName: "relatedButton"
                anchors.fill: parent
                enabled: endView.card.relatedButtonEnabled
                onClicked: endView.controller.playbackEndRelatedTapped()
            }
        }

        RowLayout {
            spacing: 10
            Button {
                objectName: "replayButton"
                text: "重播"
                onClicked: endView.controller.playbackEndReplayTapped()
            }
            Button {
                objectName: "exitButton"
                text: "退出"
                onClicked: endView.controller.playbackEndExitTapped()
            }
            Button {
                objectName: "playRelatedButton"
                text: "播放推荐"
                enabled: endView.card.relatedButtonEnabled
                onClicked: endView.controller.playbackEndRelatedTapped()
            }
        }
    }
}
