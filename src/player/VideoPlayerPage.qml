import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Zuvi

// The video screen: the player container with the movie, the danmaku
// overlay, the state line and the retry button; below it the video's
// information and its pages. All decisions are the controller's.
Page {
    id: page

    // The navigation stack tells the controller when the screen appears and
    // goes; the page only hands over the items the movie and overlay use.
    required property ZuviVideoPlayerViewController controller

    title: page.controller.title
    focus: true
    // The window's own background shows through: a page-sized fill would be
    // painted again under the movie with every video frame.
    background: null
    header: NavigationBar {
        navigation: page.controller.navigationController
        title: page.controller.title
    }

    Component.onCompleted: {
        page.controller.playerContainer = container
        page.controller.movieView = movieView
        forceActiveFocus()
    }

    Keys.onPressed: event => {
        switch (event.key) {
        case Qt.Key_Space: page.controller.togglePlayPause(); break
        case Qt.Key_Left: page.controller.seekBy(-5); break
        case Qt.Key_Right: page.controller.seekBy(5); break
        case Qt.Key_F: page.controller.toggleFullscreen(); break
        case Qt.Key_Escape: page.controller.escapePressed(); break
        case Qt.Key_D: page.controller.danmakuEnabled = !page.controller.danmakuEnabled; break
        default: return
        }
        event.accepted = true
    }

    Flickable {
        anchors.fill: parent
        contentHeight: column.height
        clip: true

        ColumnLayout {
            id: column
            width: parent.width
            spacing: 8

            Rectangle {
                id: container
                objectName: "playerContainer"
                Layout.fillWidth: true
                Layout.preferredHeight: width * 9 / 16
                // The movie view paints its own letterbox.
                color: "transparent"
                clip: true

                MoviePlayerView {
                    id: movieView
                    objectName: "movieView"
                    anchors.fill: parent
                    controller: page.controller
                }

                Label {
                    objectName: "stateLabel"
                    z: 2
                    anchors.centerIn: parent
                    anchors.verticalCenterOffset: -18
                    visible: page.controller.stateVisible
                    text: page.controller.stateText
                    color: "white"
                    width: parent.width - 40
                    horizontalAlignment: Text.AlignHCenter
                    wrapMode: Text.Wrap
                }
                Button {
                    objectName: "retryButton"
                    z: 2
                    anchors.horizontalCenter: parent.horizontalCenter
                    anchors.top: parent.verticalCenter
                    anchors.topMargin: 8
                    visible: page.controller.retryVisible
                    text: page.controller.retryTitle
                    onClicked: page.controller.retryButtonTapped()
                }
            }

            Label {
                Layout.fillWidth: true
                Layout.margins: 12
                text: page.controller.videoTitle
                font.pixelSize: 18
                font.bold: true
                color: Qt.rgba(0.93, 0.44, 0.61, 1)
                wrapMode: Text.Wrap
            }
            Label {
                Layout.fillWidth: true
                Layout.leftMargin: 12
                Layout.rightMargin: 12
                text: page.controller.detailMetaText
                color: "#666"
                wrapMode: Text.Wrap
            }
            Label {
                Layout.fillWidth: true
                Layout.leftMargin: 12
                Layout.rightMargin: 12
                visible: text.length > 0
                text: page.controller.detailDescription
                wrapMode: Text.Wrap
            }
            Flow {
                Layout.fillWidth: true
                Layout.margins: 12
                spacing: 6
                visible: page.controller.pageTitles.length > 1
                Repeater {
                    model: page.controller.pageTitles
                    delegate: Button {
                        required property int index
                        required property string modelData
                        text: modelData
                        highlighted: index === page.controller.selectedPageIndex
                        onClicked: page.controller.selectPage(index)
                    }
                }
            }
            // Developer aid: what the danmaku list holds.
            ItemDelegate {
                Layout.fillWidth: true
                visible: page.controller.showsDanmakuPreview
                text: page.controller.danmakuPreviewSummaryText
                onClicked: previewDialog.open()
            }
            Label {
                Layout.fillWidth: true
                Layout.leftMargin: 12
                visible: text.length > 0
                text: page.controller.danmakuStatusText
                color: "#999"
            }
        }
    }

    // The end of playback: replay or leave. In fullscreen it sits over the
    // fullscreen picture.
    Rectangle {
        objectName: "playbackEndView"
        parent: page.controller.playbackEndInFullscreen && movieView.parent ? movieView.parent : container
        visible: page.controller.playbackEndVisible
        anchors.fill: parent
        z: 10002
        color: "#d0000000"

        ColumnLayout {
            anchors.centerIn: parent
            width: Math.min(parent.width - 40, 420)
            spacing: 8
            Label {
                text: page.controller.playbackEndBadgeText
                color: Qt.rgba(0.93, 0.44, 0.61, 1)
            }
            Label {
                Layout.fillWidth: true
                text: page.controller.playbackEndTitleText
                color: "white"
                font.pixelSize: 18
                wrapMode: Text.Wrap
            }
            Label {
                Layout.fillWidth: true
                text: page.controller.playbackEndMetaText
                color: "#ccc"
                wrapMode: Text.Wrap
            }
            RowLayout {
                Button {
                    objectName: "replayButton"
                    text: "重播"
                    onClicked: page.controller.playbackEndReplayTapped()
                }
                Button {
                    objectName: "exitButton"
                    text: "退出"
                    onClicked: page.controller.playbackEndExitTapped()
                }
            }
        }
    }

    Label {
        parent: movieView
        z: 4
        anchors { top: parent.top; right: parent.right; margins: 8 }
        visible: text.length > 0
        text: page.controller.fullscreenDirectionText
        color: "yellow"
    }

    Dialog {
        id: previewDialog
        title: "弹幕预览"
        anchors.centerIn: parent
        width: Math.min(page.width - 40, 480)
        footer: DialogButtonBox {
            Button {
                text: "关闭"
                DialogButtonBox.buttonRole: DialogButtonBox.RejectRole
            }
        }
        contentItem: ScrollView {
            implicitHeight: Math.min(page.height * 0.6, previewText.implicitHeight)
            Label {
                id: previewText
                text: page.controller.danmakuPreviewAlertMessage
                wrapMode: Text.Wrap
                width: previewDialog.availableWidth
            }
        }
    }
}
