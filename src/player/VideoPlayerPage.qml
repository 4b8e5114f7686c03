import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Zuvi

// The video screen: the player container with the movie, the danmaku
// overlay, the state line and the retry button; below it the video's
// information and its pages. All decisions are the controller's.
Page {
    id: page

    // The list entry (ZuviVideoItem's fields) and the title of its list.
    property var videoItem: ({})
    property string sourceTitle: ""
    readonly property alias controller: controller

    title: controller.title
    focus: true

    ZuviVideoPlayerViewController {
        id: controller
        onCloseRequested: {
            if (page.StackView.view && page.StackView.view.depth > 1)
                page.StackView.view.pop()
        }
    }

    Component.onCompleted: {
        controller.playerContainer = container
        controller.movieView = movieView
        controller.openVideo(videoItem || ({}), sourceTitle)
        controller.viewDidLoad()
        controller.viewWillAppear()
    }
    StackView.onActivating: controller.viewWillAppear()
    StackView.onDeactivating: controller.viewWillDisappear()

    Keys.onPressed: event => {
        switch (event.key) {
        case Qt.Key_Space: controller.togglePlayPause(); break
        case Qt.Key_Left: controller.seekBy(-5); break
        case Qt.Key_Right: controller.seekBy(5); break
        case Qt.Key_F: controller.toggleFullscreen(); break
        case Qt.Key_Escape: controller.escapePressed(); break
        case Qt.Key_D: controller.danmakuEnabled = !controller.danmakuEnabled; break
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
                color: "black"
                clip: true

                MoviePlayerView {
                    id: movieView
                    objectName: "movieView"
                    anchors.fill: parent
                    controller: controller
                }

                Label {
                    objectName: "stateLabel"
                    z: 2
                    anchors.centerIn: parent
                    anchors.verticalCenterOffset: -18
                    visible: controller.stateVisible
                    text: controller.stateText
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
                    visible: controller.retryVisible
                    text: controller.retryTitle
                    onClicked: controller.retryButtonTapped()
                }
            }

            Label {
                Layout.fillWidth: true
                Layout.margins: 12
                text: controller.videoTitle
                font.pixelSize: 18
                font.bold: true
                color: Qt.rgba(0.93, 0.44, 0.61, 1)
                wrapMode: Text.Wrap
            }
            Label {
                Layout.fillWidth: true
                Layout.leftMargin: 12
                Layout.rightMargin: 12
                text: controller.detailMetaText
                color: "#666"
                wrapMode: Text.Wrap
            }
            Label {
                Layout.fillWidth: true
                Layout.leftMargin: 12
                Layout.rightMargin: 12
                visible: text.length > 0
                text: controller.detailDescription
                wrapMode: Text.Wrap
            }
            Flow {
                Layout.fillWidth: true
                Layout.margins: 12
                spacing: 6
                visible: controller.pageTitles.length > 1
                Repeater {
                    model: controller.pageTitles
                    delegate: Button {
                        required property int index
                        required property string modelData
                        text: modelData
                        highlighted: index === controller.selectedPageIndex
                        onClicked: controller.selectPage(index)
                    }
                }
            }
            // Developer aid: what the danmaku list holds.
            ItemDelegate {
                Layout.fillWidth: true
                visible: controller.showsDanmakuPreview
                text: controller.danmakuPreviewSummaryText
                onClicked: previewDialog.open()
            }
            Label {
                Layout.fillWidth: true
                Layout.leftMargin: 12
                visible: text.length > 0
                text: controller.danmakuStatusText
                color: "#999"
            }
        }
    }

    // The end of playback: replay or leave. In fullscreen it sits over the
    // fullscreen picture.
    Rectangle {
        objectName: "playbackEndView"
        parent: controller.playbackEndInFullscreen && movieView.parent ? movieView.parent : container
        visible: controller.playbackEndVisible
        anchors.fill: parent
        z: 10002
        color: "#d0000000"

        ColumnLayout {
            anchors.centerIn: parent
            width: Math.min(parent.width - 40, 420)
            spacing: 8
            Label {
                text: controller.playbackEndBadgeText
                color: Qt.rgba(0.93, 0.44, 0.61, 1)
            }
            Label {
                Layout.fillWidth: true
                text: controller.playbackEndTitleText
                color: "white"
                font.pixelSize: 18
                wrapMode: Text.Wrap
            }
            Label {
                Layout.fillWidth: true
                text: controller.playbackEndMetaText
                color: "#ccc"
                wrapMode: Text.Wrap
            }
            RowLayout {
                Button {
                    objectName: "replayButton"
                    text: "重播"
                    onClicked: controller.playbackEndReplayTapped()
                }
                Button {
                    objectName: "exitButton"
                    text: "退出"
                    onClicked: controller.playbackEndExitTapped()
                }
            }
        }
    }

    Label {
        parent: movieView
        z: 4
        anchors { top: parent.top; right: parent.right; margins: 8 }
        visible: text.length > 0
        text: controller.fullscreenDirectionText
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
                text: controller.danmakuPreviewAlertMessage
                wrapMode: Text.Wrap
                width: previewDialog.availableWidth
            }
        }
    }
}
