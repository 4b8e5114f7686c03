import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Zuvi

// The video screen. On a wide pad the player and the video's information
// scroll on the left and the related videos and comments sit on the right;
// otherwise everything is one column (at most 680 wide on a pad): the
// player, the information, then the related | comments tabs. All decisions
// are the controller's and its parts'.
Page {
    id: page

    // The navigation stack tells the controller when the screen appears and
    // goes; the page only hands over the items the movie and overlay use.
    required property ZuviVideoPlayerViewController controller
    readonly property bool wide: page.controller.padIdiom && page.width > page.height
    readonly property real sideWidth: wide ? Math.max(300, Math.round(page.width * 0.36)) : 0

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
        page.controller.playerContainer = surface
        page.controller.movieView = surface.movieView
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
        id: main
        objectName: "mainColumn"
        anchors { left: parent.left; top: parent.top; bottom: parent.bottom }
        width: parent.width - page.sideWidth
        contentHeight: column.height + 12
        clip: true
        // In one column the comments are part of this scroll: near its end,
        // the next page is asked for.
        onContentYChanged: {
            if (!page.wide && page.controller.sideContent.sideSegment === 1
                    && contentY + height > contentHeight - 160)
                page.controller.sideContent.loadNextCommentsIfNeeded()
        }

        ColumnLayout {
            id: column
            width: page.wide ? main.width : page.controller.portraitContentWidthForWidth(main.width)
            x: (main.width - width) / 2
            spacing: 8

            PlayerSurface {
                id: surface
                Layout.fillWidth: true
                Layout.preferredHeight: width * 9 / 16
                controller: page.controller
            }
            VideoInfoSection {
                Layout.fillWidth: true
                controller: page.controller
                onDanmakuPreviewRequested: preview.open()
            }
            // The related videos and comments exist for the layout in use
            // only: the other layout's pane would hold its lists for nothing.
            Loader {
                active: !page.wide
                visible: active
                Layout.fillWidth: true
                Layout.preferredHeight: item ? item.implicitHeight : 0
                sourceComponent: VideoSidePane {
                    objectName: "inlineSidePane"
                    inline: true
                    controller: page.controller
                }
            }
        }
    }

    Loader {
        active: page.wide
        anchors { right: parent.right; top: parent.top; bottom: parent.bottom }
        width: page.sideWidth
        sourceComponent: VideoSidePane {
            objectName: "sidePane"
            controller: page.controller
            Rectangle {
                anchors { left: parent.left; top: parent.top; bottom: parent.bottom }
                width: 1
                color: "#ddd"
            }
        }
    }

    Label {
        parent: surface.movieView
        z: 4
        anchors { top: parent.top; right: parent.right; margins: 8 }
        visible: text.length > 0
        text: page.controller.fullscreenDirectionText
        color: "yellow"
    }

    VideoActionDialogs {
        actions: page.controller.actions
    }

    // The developer's preview of the danmaku texts, made when first asked for.
    Loader {
        id: preview
        anchors.fill: parent
        active: false
        function open() {
            active = true
            item.dialog.open()
        }
        sourceComponent: Item {
            readonly property alias dialog: previewDialog
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
    }
}
