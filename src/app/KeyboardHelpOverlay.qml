import QtQuick
import Zuvi

// The card listing every key of the application, over a dimmed window. It
// opens and closes with "?" (or Esc, or a click beside the card); the keys
// and their sections come from the keyboard layer.
Item {
    id: overlay

    required property ZuviKeyboardShortcuts shortcuts
    // A section is as wide as the card allows on a phone.
    readonly property real sectionWidth: Math.min(300, width - 32 - 44)
    readonly property real keyCapWidth: 118

    visible: shortcuts.helpVisible
    opacity: visible ? 1 : 0
    Behavior on opacity { NumberAnimation { duration: 120 } }

    Rectangle {
        anchors.fill: parent
        color: Qt.rgba(0, 0, 0, 0.55)
    }

    MouseArea {
        anchors.fill: parent
        onClicked: overlay.shortcuts.helpVisible = false
    }

    Rectangle {
        id: card
        anchors.centerIn: parent
        // Both sections side by side when the window is wide enough.
        width: Math.min(overlay.width - 32, 2 * overlay.sectionWidth + sections.spacing + 44)
        height: Math.min(overlay.height - 32, content.implicitHeight + 44)
        radius: 10
        color: "#fbfbfb"
        border.color: Qt.rgba(0, 0, 0, 0.2)

        // Clicks on the card stay on the card.
        MouseArea { anchors.fill: parent }

        // A window too short for every key scrolls the card.
        Flickable {
            anchors.fill: parent
            anchors.margins: 22
            contentHeight: content.implicitHeight
            boundsBehavior: Flickable.StopAtBounds
            clip: true

            Column {
                id: content
                width: parent.width
                spacing: 16

                Text {
                    text: "键盘快捷键"
                    color: ZuviAppearance.accentColor
                    font.pixelSize: 22
                    font.bold: true
                }

                Flow {
                    id: sections
                    width: parent.width
                    spacing: 32

                    Repeater {
                        model: overlay.shortcuts.helpSections
                        delegate: Column {
                            id: section
                            required property var modelData
                            width: overlay.sectionWidth
                            spacing: 8

                            Text {
                                text: section.modelData.title
                                color: "#555555"
                                font.pixelSize: 14
                                font.bold: true
                            }
                            Repeater {
                                model: section.modelData.rows
                                delegate: Row {
                                    id: row
                                    required property var modelData
                                    spacing: 12

                                    Rectangle {
                                        width: overlay.keyCapWidth
                                        height: 26
                                        radius: 5
                                        color: "#ececec"
                                        border.color: "#c8c8c8"
                                        Text {
                                            anchors.centerIn: parent
                                            text: row.modelData.keys
                                            color: "#222222"
                                            font.pixelSize: 13
                                            font.bold: true
                                        }
                                    }
                                    Text {
                                        anchors.verticalCenter: parent.verticalCenter
                                        width: overlay.sectionWidth - overlay.keyCapWidth - 12
                                        text: row.modelData.text
                                        color: "#333333"
                                        font.pixelSize: 14
                                        elide: Text.ElideRight
                                    }
                                }
                            }
                        }
                    }
                }

                Text {
                    text: "在输入框中打字时快捷键不起作用。按 ? 或 Esc 关闭。"
                    color: "#888888"
                    font.pixelSize: 12
                    width: parent.width
                    wrapMode: Text.Wrap
                }
            }
        }
    }
}
