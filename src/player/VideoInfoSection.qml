import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Zuvi

// The video's information under the player: title, meta line, description,
// the interaction buttons with the action status line, the page list and,
// for developers, the danmaku preview row.
ColumnLayout {
    id: info

    required property ZuviVideoPlayerViewController controller
    readonly property ZuviVideoActions actions: controller.actions
    readonly property color accent: Qt.rgba(0.93, 0.44, 0.61, 1)
    signal danmakuPreviewRequested()

    spacing: 8

    Label {
        objectName: "videoTitle"
        Layout.fillWidth: true
        Layout.topMargin: 12
        Layout.leftMargin: 12
        Layout.rightMargin: 12
        text: info.controller.videoTitle
        font.pixelSize: 18
        font.bold: true
        color: info.accent
        wrapMode: Text.Wrap
    }
    Label {
        Layout.fillWidth: true
        Layout.leftMargin: 12
        Layout.rightMargin: 12
        text: info.controller.detailMetaText
        color: "#666"
        wrapMode: Text.Wrap
    }
    Label {
        Layout.fillWidth: true
        Layout.leftMargin: 12
        Layout.rightMargin: 12
        visible: text.length > 0
        text: info.controller.detailDescription
        maximumLineCount: 4
        elide: Text.ElideRight
        wrapMode: Text.Wrap
    }

    // Like is kept out: this screen sends no like.
    RowLayout {
        objectName: "interactionButtons"
        Layout.fillWidth: true
        Layout.leftMargin: 8
        Layout.rightMargin: 8
        spacing: 6
        Repeater {
            model: [
                { tag: ZuviVideoActions.FavoriteButton, text: "收藏", selectedText: "已收藏" },
                { tag: ZuviVideoActions.WatchLaterButton, text: "稍后再看", selectedText: "已加入稍后再看" },
                { tag: ZuviVideoActions.CommentButton, text: "评论", selectedText: "" },
                { tag: ZuviVideoActions.DanmakuButton, text: "发弹幕", selectedText: "" }
            ]
            delegate: Button {
                id: actionButton
                required property var modelData
                readonly property bool selected:
                    (modelData.tag === ZuviVideoActions.FavoriteButton && info.actions.favorited)
                    || (modelData.tag === ZuviVideoActions.WatchLaterButton && info.actions.watchLater)
                objectName: "action" + modelData.tag
                // Equal shares of the row, whatever the titles.
                Layout.fillWidth: true
                Layout.preferredWidth: 1
                text: selected ? modelData.selectedText : modelData.text
                // Disabled while an action runs; a selected one stays filled.
                enabled: !info.actions.inProgress
                contentItem: Label {
                    text: actionButton.text
                    horizontalAlignment: Text.AlignHCenter
                    verticalAlignment: Text.AlignVCenter
                    elide: Text.ElideRight
                    color: actionButton.selected ? "white" : info.accent
                }
                background: Rectangle {
                    implicitHeight: 32
                    radius: 4
                    opacity: actionButton.enabled ? 1 : 0.55
                    color: actionButton.selected ? info.accent
                                                 : (actionButton.pressed ? "#f6dbe6" : "#fdfdfd")
                    border.color: info.accent
                }
                onClicked: info.actions.videoInteractionButtonTapped(modelData.tag)
            }
        }
    }
    Label {
        objectName: "actionStatus"
        Layout.fillWidth: true
        Layout.leftMargin: 12
        Layout.rightMargin: 12
        visible: text.length > 0
        text: info.actions.statusText
        color: "#888"
        font.pixelSize: 12
        wrapMode: Text.Wrap
    }

    Flow {
        Layout.fillWidth: true
        Layout.leftMargin: 12
        Layout.rightMargin: 12
        spacing: 6
        visible: info.controller.pageTitles.length > 1
        Repeater {
            model: info.controller.pageTitles
            delegate: Button {
                required property int index
                required property string modelData
                text: modelData
                highlighted: index === info.controller.selectedPageIndex
                onClicked: info.controller.selectPage(index)
            }
        }
    }
    // Developer aid: what the danmaku list holds.
    ItemDelegate {
        Layout.fillWidth: true
        visible: info.controller.showsDanmakuPreview
        text: "弹幕预览  " + info.controller.danmakuPreviewSummaryText
        onClicked: info.danmakuPreviewRequested()
    }
    Label {
        Layout.fillWidth: true
        Layout.leftMargin: 12
        visible: text.length > 0
        text: info.controller.danmakuStatusText
        color: "#999"
    }
}
