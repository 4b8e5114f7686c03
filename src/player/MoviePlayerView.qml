import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import QtMultimedia
import Zuvi

// The movie's own view: the picture and the embedded controls. The player
// moves this whole item into the window's root while fullscreen, so the
// controls travel with the picture. Everything is forwarded to the screen's
// controller, which owns the player.
Rectangle {
    id: root

    required property ZuviVideoPlayerViewController controller
    readonly property ZuviMoviePlayer player: controller.moviePlayer
    readonly property bool fullscreen: player !== null && player.fullscreen
    readonly property ZuviPlaybackOptions options: controller.playbackOptions

    // No fill under the picture: with a software renderer every pixel drawn
    // is drawn again with each video frame, so only the letterbox bars
    // around the picture are painted black (all of the view until the first
    // picture).
    color: "transparent"

    function timeText(seconds) {
        if (!(seconds > 0))
            return "0:00"
        const s = Math.floor(seconds)
        const m = Math.floor(s / 60)
        const h = Math.floor(m / 60)
        const ss = (s % 60 < 10 ? "0" : "") + (s % 60)
        if (h > 0)
            return h + ":" + ((m % 60) < 10 ? "0" : "") + (m % 60) + ":" + ss
        return m + ":" + ss
    }

    VideoOutput {
        id: videoOutput
        objectName: "videoOutput"
        anchors.fill: parent
        fillMode: VideoOutput.PreserveAspectFit
    }

    Item {
        id: letterbox
        objectName: "letterbox"
        // Before the first picture the output reports all of itself as
        // content; its source size tells whether there is a picture yet.
        readonly property rect picture: videoOutput.sourceRect.width > 0
                                        ? videoOutput.contentRect : Qt.rect(0, 0, 0, 0)
        anchors.fill: parent

        Rectangle { // above the picture, or all of the view without one
            color: "black"
            width: parent.width
            height: letterbox.picture.width > 0 ? letterbox.picture.y : parent.height
        }
        Rectangle { // below
            color: "black"
            y: letterbox.picture.y + letterbox.picture.height
            width: parent.width
            height: letterbox.picture.width > 0 ? parent.height - y : 0
        }
        Rectangle { // left
            color: "black"
            y: letterbox.picture.y
            width: letterbox.picture.x
            height: letterbox.picture.height
        }
        Rectangle { // right
            color: "black"
            x: letterbox.picture.x + letterbox.picture.width
            y: letterbox.picture.y
            width: letterbox.picture.width > 0 ? parent.width - x : 0
            height: letterbox.picture.height
        }
    }

    // Any movement of the pointer over the picture brings the controls
    // back; in fullscreen the pointer hides with them.
    HoverHandler {
        onPointChanged: root.options.pointerMoved()
        cursorShape: root.fullscreen && !root.options.controlsVisible ? Qt.BlankCursor
                                                                      : Qt.ArrowCursor
    }

    // The controls stay while the viewer works them.
    Binding {
        target: root.options
        property: "controlsInUse"
        value: speedMenu.visible || qualityMenu.visible || danmakuSettings.visible
               || volumeSlider.pressed || seekBar.pressed || controlsHover.hovered
    }

    // Whether a press at this point (in this view) is on one of the
    // player's own controls: those never start a gesture on the picture.
    function onControl(position) {
        for (const item of [controls, doneButton]) {
            if (item.visible && item.contains(item.mapFromItem(root, position)))
                return true
        }
        return false
    }

    // Held down, the movie plays at double speed; let go, at its old rate.
    TapHandler {
        id: longPress
        objectName: "fastForwardPress"
        longPressThreshold: 0.35
        property bool fastForwarding: false
        onLongPressed: {
            if (!root.controller.fastForwardLongPressShouldBegin(root.onControl(point.pressPosition)))
                return
            fastForwarding = true
            root.controller.fastForwardLongPressBegan()
        }
        onPressedChanged: {
            // A touch on the picture shows the controls as a pointer does.
            if (pressed)
                root.options.pointerMoved()
            if (!pressed && fastForwarding) {
                fastForwarding = false
                root.controller.fastForwardLongPressEnded()
            }
        }
        onCanceled: {
            if (fastForwarding) {
                fastForwarding = false
                root.controller.fastForwardLongPressEnded()
            }
        }
    }

    // A swipe to the right that starts at the left edge leaves fullscreen.
    DragHandler {
        id: edgePan
        enabled: root.fullscreen
        target: null
        xAxis.enabled: true
        yAxis.enabled: true
        property bool fromEdge: false
        onActiveChanged: {
            if (active) {
                // The first movement tells the direction when the speed
                // is not known yet.
                const moved = Qt.point(centroid.position.x - centroid.pressPosition.x,
                                       centroid.position.y - centroid.pressPosition.y)
                const vx = centroid.velocity.x !== 0 ? centroid.velocity.x : moved.x
                const vy = centroid.velocity.y !== 0 ? centroid.velocity.y : moved.y
                fromEdge = root.controller.fullscreenEdgePanShouldBegin(
                            centroid.pressPosition.x, root.width, vx, vy,
                            root.onControl(centroid.pressPosition))
                if (fromEdge)
                    root.controller.fastForwardLongPressEnded()
                return
            }
            if (fromEdge)
                root.controller.fullscreenEdgeExitPanRecognized(
                            centroid.position.x - centroid.pressPosition.x,
                            centroid.velocity.x)
            fromEdge = false
        }
    }

    // Done leaves fullscreen; the player reports it as the user's exit.
    Button {
        id: doneButton
        objectName: "doneButton"
        visible: root.fullscreen && root.options.controlsVisible
        text: "完成"
        anchors { top: parent.top; left: parent.left; margins: 12 }
        z: 3
        onClicked: root.player.userExitFullscreen()
    }

    Rectangle {
        id: controls
        objectName: "playerControls"
        visible: root.player !== null && opacity > 0
        opacity: root.options.controlsVisible ? 1 : 0
        z: 3
        // A narrow player (a phone) gives the seek bar a row of its own
        // above the buttons; a wide one keeps everything on one line.
        readonly property bool narrow: root.width < 560
        anchors { left: parent.left; right: parent.right; bottom: parent.bottom }
        height: narrow ? 76 : 40
        color: "#a0000000"

        Behavior on opacity {
            NumberAnimation { duration: 200 }
        }
        HoverHandler {
            id: controlsHover
        }

        GridLayout {
            anchors.fill: parent
            anchors.leftMargin: 6
            anchors.rightMargin: 6
            columns: controls.narrow ? 1 : 2
            rowSpacing: 0
            columnSpacing: 6

            RowLayout {
                Layout.fillWidth: true
                spacing: 6

                ToolButton {
                    objectName: "playPauseButton"
                    text: root.player && root.player.playing ? "❚❚" : "▶"
                    palette.buttonText: "white"
                    onClicked: root.controller.togglePlayPause()
                }
                Label {
                    objectName: "elapsedLabel"
                    color: "white"
                    text: root.timeText(root.player ? root.player.currentPlaybackTime : 0)
                }
                Slider {
                    id: seekBar
                    objectName: "seekBar"
                    Layout.fillWidth: true
                    from: 0
                    to: root.player && root.player.duration > 0 ? root.player.duration : 1
                    // Follows the clock except while the user drags it.
                    value: pressed ? value : (root.player ? root.player.currentPlaybackTime || 0 : 0)
                    onMoved: root.controller.seekTo(value)

                    // Where the danmaku crowd, along the bar, so the busiest
                    // moments can be seen and jumped to; drawn under the handle
                    // and hidden while there is nothing to count.
                    ZuviDanmakuDensityGraph {
                        objectName: "danmakuDensity"
                        z: -1
                        x: seekBar.leftPadding
                        width: seekBar.availableWidth
                        height: 14
                        anchors.bottom: parent.verticalCenter
                        overlay: root.controller.danmakuOverlay
                        duration: root.player ? root.player.duration : 0
                        color: Qt.rgba(1, 1, 1, 0.5)
                    }
                }
                Label {
                    objectName: "totalLabel"
                    color: "white"
                    text: root.timeText(root.player ? root.player.duration : 0)
                }
            }

            RowLayout {
                spacing: 6

                ToolButton {
                    objectName: "muteButton"
                    implicitWidth: 32
                    onClicked: root.options.toggleMute()
                    contentItem: VolumeIcon {
                        volume: root.options.volume
                        muted: root.options.muted
                    }
                }
                Slider {
                    id: volumeSlider
                    objectName: "volumeSlider"
                    // On a phone the button and the device's keys set the sound.
                    visible: !controls.narrow
                    Layout.preferredWidth: 76
                    from: 0
                    to: 1
                    value: pressed ? value : (root.options.muted ? 0 : root.options.volume)
                    onMoved: {
                        root.options.muted = false
                        root.options.volume = value
                    }
                }
                ToolButton {
                    id: speedButton
                    objectName: "speedButton"
                    text: root.options.speedButtonTitle
                    palette.buttonText: "white"
                    onClicked: speedMenu.toggle()

                    PlayerOptionMenu {
                        id: speedMenu
                        objectName: "speedMenu"
                        titles: root.options.speedTitles
                        checkedIndex: root.options.speedIndex
                        onChosen: index => root.options.chooseSpeed(index)
                    }
                }
                ToolButton {
                    id: qualityButton
                    objectName: "qualityButton"
                    text: root.options.switchingQuality ? "切换中…" : root.options.qualityButtonTitle
                    palette.buttonText: "white"
                    onClicked: qualityMenu.toggle()

                    PlayerOptionMenu {
                        id: qualityMenu
                        objectName: "qualityMenu"
                        titles: root.options.qualityTitles
                        checkedIndex: root.options.qualityIndex
                        onChosen: index => root.options.chooseQuality(index)
                    }
                }
                Switch {
                    objectName: "danmakuSwitch"
                    checked: root.controller.danmakuEnabled
                    onToggled: root.controller.danmakuEnabled = checked
                }
                Label {
                    color: "white"
                    text: "弹幕"
                }
                ToolButton {
                    objectName: "danmakuSettingsButton"
                    text: "⚙"
                    palette.buttonText: "white"
                    onClicked: danmakuSettings.open()
                }
                ToolButton {
                    objectName: "fullscreenButton"
                    text: root.fullscreen ? "⤡" : "⤢"
                    palette.buttonText: "white"
                    onClicked: root.controller.toggleFullscreen()
                }
            }
        }
    }

    // The viewer's danmaku settings, over the whole window so the panel has
    // room inline as in fullscreen; changes apply to the flying danmaku at once.
    Popup {
        id: danmakuSettings
        objectName: "danmakuSettingsPopup"
        parent: Overlay.overlay
        x: parent ? parent.width - width - 16 : 0
        y: 16
        width: 360
        height: parent ? Math.min(560, parent.height - 32) : 560
        padding: 0
        modal: false
        closePolicy: Popup.CloseOnEscape | Popup.CloseOnPressOutside
        background: null
        // The panel is made on the first opening and then kept: most
        // viewings never open it, and it is one of the larger pieces of
        // the screen.
        property bool wanted: false
        onAboutToShow: wanted = true
        contentItem: Loader {
            active: danmakuSettings.wanted
            sourceComponent: DanmakuSettingsPanel {
                onCloseRequested: danmakuSettings.close()
            }
        }
    }
}
