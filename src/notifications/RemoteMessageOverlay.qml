import QtQuick
import Zuvi

// The card of one operator message. Its geometry comes from the view's own
// layout; this page only draws the parts where they are told to go.
ZuviRemoteMessageOverlayView {
    id: card

    opacity: card.alpha
    Behavior on opacity {
        NumberAnimation { duration: card.fadeMilliseconds }
    }

    // Swallows every touch around the panel: the card is modal.
    MouseArea {
        anchors.fill: parent
        hoverEnabled: true
    }
    Rectangle {
        anchors.fill: parent
        color: Qt.rgba(0, 0, 0, 0.52)
    }

    // A soft shadow below the panel: rings of growing size and falling
    // strength, offset 8 down, about 18 wide.
    Repeater {
        model: 6
        delegate: Rectangle {
            required property int index
            readonly property real spread: 3 * (index + 1)
            x: card.panelRect.x - spread
            y: card.panelRect.y + 8 - spread
            width: card.panelRect.width + 2 * spread
            height: card.panelRect.height + 2 * spread
            radius: 10 + spread
            color: Qt.rgba(0, 0, 0, 0.28 / 6 * (1 - index / 6))
        }
    }

    Rectangle {
        id: panel
        x: card.panelRect.x
        y: card.panelRect.y
        width: card.panelRect.width
        height: card.panelRect.height
        radius: 10
        color: "white"
        clip: true

        Text {
            x: card.titleRect.x
            y: card.titleRect.y
            width: card.titleRect.width
            height: card.titleRect.height
            text: "通知"
            font.bold: true
            font.pixelSize: 17
            color: ZuviAppearance.accentColor
            verticalAlignment: Text.AlignVCenter
        }

        Rectangle {
            visible: card.wantsImage
            x: card.imageRect.x
            y: card.imageRect.y
            width: card.imageRect.width
            height: card.imageRect.height
            radius: 7
            color: Qt.rgba(0.94, 0.94, 0.94, 1)
            clip: true

            Image {
                anchors.fill: parent
                fillMode: Image.PreserveAspectFit
                source: card.imageSource
                asynchronous: true
            }
        }

        Text {
            visible: card.imageStatusVisible
            x: card.imageStatusRect.x
            y: card.imageStatusRect.y
            width: card.imageStatusRect.width
            height: card.imageStatusRect.height
            text: card.imageStatusText
            font.pixelSize: 13
            color: Qt.rgba(0.46, 0.46, 0.46, 1)
            horizontalAlignment: Text.AlignHCenter
            verticalAlignment: Text.AlignVCenter
            wrapMode: Text.Wrap
        }

        Text {
            visible: card.wantsText
            x: card.textRect.x
            y: card.textRect.y
            width: card.textRect.width
            height: card.textRect.height
            text: card.messageText
            font.pixelSize: 15
            color: Qt.rgba(0.16, 0.16, 0.16, 1)
            wrapMode: Text.WordWrap
            elide: Text.ElideRight
            clip: true
        }

        Rectangle {
            x: card.buttonRect.x
            y: card.buttonRect.y
            width: card.buttonRect.width
            height: card.buttonRect.height
            radius: 6
            color: dismissArea.pressed ? Qt.darker(ZuviAppearance.accentColor, 1.2)
                                       : ZuviAppearance.accentColor

            Text {
                anchors.centerIn: parent
                text: "知道了"
                color: "white"
                font.pixelSize: 16
            }
            MouseArea {
                id: dismissArea
                anchors.fill: parent
                onClicked: card.dismissButtonTapped()
            }
        }
    }
}
