import QtQuick
import QtQuick.Controls
import QtQuick.Controls as Controls
import Zuvi

// Related videos and comments, switched by a two-segment control. Beside
// the player on a wide pad it scrolls on its own; in the one-column layout
// it is laid out at full height inside the page's scroll (inline) and the
// page reports when the end nears.
Item {
    id: pane

    required property ZuviVideoPlayerViewController controller
    property bool inline: false
    readonly property ZuviVideoSideContent side: controller.sideContent
    readonly property bool showsComments: side.sideSegment === 1

    implicitHeight: tabs.height
                    + (pane.inline ? (pane.showsComments ? commentList : relatedList).contentHeight : 0)

    // The app has a TabBar of its own: this is the controls one.
    Controls.TabBar {
        id: tabs
        objectName: "sideSegment"
        width: parent.width
        currentIndex: pane.side.sideSegment
        TabButton {
            objectName: "relatedTab"
            text: "相关推荐"
            onClicked: pane.side.sideSegment = 0
        }
        TabButton {
            objectName: "commentsTab"
            text: "评论"
            onClicked: pane.side.sideSegment = 1
        }
    }

    // One list per segment, so switching never hands a row of one kind to
    // the other's delegate.
    ListView {
        id: relatedList
        objectName: "relatedList"
        visible: !pane.showsComments
        anchors.top: tabs.bottom
        width: parent.width
        height: pane.inline ? contentHeight : pane.height - tabs.height
        interactive: !pane.inline
        clip: !pane.inline
        // A hidden segment holds no rows (nor their pictures).
        model: !pane.showsComments ? pane.side.relatedModel : null
        delegate: relatedDelegate
        footer: statusRow
    }
    ListView {
        id: commentList
        objectName: "commentList"
        visible: pane.showsComments
        anchors.top: tabs.bottom
        width: parent.width
        height: pane.inline ? contentHeight : pane.height - tabs.height
        interactive: !pane.inline
        clip: !pane.inline
        model: pane.showsComments ? pane.side.comments : []
        delegate: commentDelegate
        footer: statusRow
        onContentYChanged: {
            if (!pane.inline && contentY + height > contentHeight + originY - 160)
                pane.side.loadNextCommentsIfNeeded()
        }
    }

    Component {
        id: relatedDelegate
        VideoListRow {
            // The row's other required properties are the model's roles.
            required property int index
            width: ListView.view.width
            height: 92
            coverAllowed: pane.side.relatedImagesAllowed
            lowQualityCover: true
            onTapped: pane.controller.relatedVideoTapped(index)
        }
    }
    Component {
        id: commentDelegate
        CommentRow {
            required property var modelData
            width: ListView.view.width
            authorName: modelData.authorName
            timeText: modelData.timeText
            message: modelData.message
            likeCountText: modelData.likeCountText
        }
    }
    Component {
        id: statusRow
        Label {
            id: statusLabel
            objectName: "sideStatusRow"
            readonly property bool forComments: ListView.view === commentList
            readonly property string statusText: forComments ? pane.side.commentsStatusText
                                                             : pane.side.relatedStatusText
            // A failed list says so and asks again when the row is tapped.
            readonly property bool failed: forComments ? pane.side.commentsFailed
                                                       : pane.side.relatedFailed
            width: ListView.view ? ListView.view.width : 0
            height: visible ? 44 : 0
            visible: forComments ? pane.side.showsCommentStatusRow
                                        : statusText.length > 0
            text: failed ? statusText + "，轻点重试"
                         : statusText.length > 0 ? statusText : "上拉加载更多评论"
            horizontalAlignment: Text.AlignHCenter
            verticalAlignment: Text.AlignVCenter
            color: "#999"
            TapHandler {
                enabled: statusLabel.failed
                onTapped: pane.side.statusRowTapped(statusLabel.forComments)
            }
        }
    }
}
