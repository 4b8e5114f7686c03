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

    // The badge sits wherever the picture is (the fullscreen window too),
    // above the danmaku and below the end card.
    Rectangle {
        objectName: "fastForwardBadge"
        parent: movieView.parent
        z: 10001
        visible: surface.controller.fastForward.badgeVisible
        x: movieView.x + (movieView.width - width) / 2
        y: movieView.y + 20
        width: badgeLabel.implicitWidth + 28
        height: 34
        radius: 17
        color: "#c0000000"
        Label {
            id: badgeLabel
            anchors.centerIn: parent
            text: surface.controller.fastForward.badgeText
            color: "white"
            font.pixelSize: 16
            font.bold: true
        }
    }

    // Made only while the card is up: most of the time there is no end.
    Loader {
        objectName: "playbackEndView"
        // Over the fullscreen picture while the end belongs to it.
        parent: surface.controller.endCard.inFullscreen && movieView.parent ? movieView.parent
                                                                             : surface
        anchors.fill: parent
        z: 10002
        active: surface.controller.endCard.visible
        sourceComponent: PlaybackEndView {
            controller: surface.controller
        }
    }
}
