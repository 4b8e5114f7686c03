import QtQuick
import QtQuick.Controls
import Zuvi

// The player container: the movie's view, the state line with its retry
// button, the fast-forward badge and the end card. The danmaku overlay is
// placed in here by the controller.
Rectangle {
    id: surface

    required property ZuviVideoPlayerViewController controller
    readonly property Item movieView: movieView

    objectName: "playerContainer"
    // The movie view paints its own letterbox.
    color: "transparent"
    clip: true

    MoviePlayerView {
        id: movieView
        objectName: "movieView"
        anchors.fill: parent
        controller: surface.controller
    }

    Label {
        objectName: "stateLabel"
        z: 2
        anchors.centerIn: parent
        anchors.verticalCenterOffset: -18
        visible: surface.controller.stateVisible
        text: surface.controller.stateText
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
        visible: surface.controller.retryVisible
        text: surface.controller.retryTitle
        onClicked: surface.controller.retryButtonTapped()
    }

    // The badge travels with the picture, into the fullscreen window too.
    Rectangle {
        objectName: "fastForwardBadge"
        parent: movieView
        z: 5
        visible: surface.controller.fastForward.badgeVisible
        anchors.horizontalCenter: parent.horizontalCenter
        anchors.top: parent.top
        anchors.topMargin: 16
        width: badgeLabel.implicitWidth + 24
        height: 30
        radius: 15
        color: "#b0000000"
        Label {
            id: badgeLabel
            anchors.centerIn: parent
            text: surface.controller.fastForward.badgeText
            color: "white"
            font.bold: true
        }
    }

    PlaybackEndView {
        objectName: "playbackEndView"
        // Over the fullscreen picture while the end belongs to it.
        parent: surface.controller.endCard.inFullscreen && movieView.parent ? movieView.parent
                                                                             : surface
        anchors.fill: parent
        z: 10002
        controller: surface.controller
    }
}
