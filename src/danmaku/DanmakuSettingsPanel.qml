import QtQuick
import QtQuick.Controls
import QtQuick.Dialogs
import QtQuick.Layouts
import Zuvi

// The viewer's danmaku settings, laid over the picture: look (opacity, text
// size, speed, area), the kinds shown, the block list with its import and
// export, merged repeats and reduced motion. Every control writes through
// its controller at once, so the overlay changes while the panel is open.
Rectangle {
    id: panel

    property ZuviDanmakuSettingsController controller: ZuviDanmakuSettingsController {}
    readonly property color accent: Qt.rgba(0.93, 0.44, 0.61, 1)

    signal closeRequested()

    implicitWidth: 360
    implicitHeight: 560
    radius: 8
    color: "#e6181a20"

    component SectionTitle: Label {
        color: "#9aa0aa"
        font.pixelSize: 12
        topPadding: 6
    }

    // A labelled slider that shows its value in the viewer's units.
    component ValueRow: RowLayout {
        id: row
        property alias title: rowTitle.text
        property alias from: rowSlider.from
        property alias to: rowSlider.to
        property alias stepSize: rowSlider.stepSize
        property real value
        property string valueText
        signal moved(real value)
        Layout.fillWidth: true
        spacing: 8
        Label { id: rowTitle; color: "white"; Layout.preferredWidth: 64 }
        Slider {
            id: rowSlider
            Layout.fillWidth: true
            snapMode: Slider.SnapAlways
            value: row.value
            onMoved: row.moved(value)
        }
        Label {
            text: row.valueText
            color: "white"
            horizontalAlignment: Text.AlignRight
            Layout.preferredWidth: 48
        }
    }

    component KindBox: CheckBox {
        palette.windowText: "white"
    }

    // A switch whose text stays readable on the dark panel.
    component PanelSwitch: Switch {
        id: panelSwitch
        contentItem: Label {
            leftPadding: panelSwitch.indicator.width + panelSwitch.spacing
            text: panelSwitch.text
            color: "white"
            verticalAlignment: Text.AlignVCenter
        }
    }

    ColumnLayout {
        anchors.fill: parent
        anchors.margins: 12
        spacing: 4

        RowLayout {
            Layout.fillWidth: true
            Label {
                text: "弹幕设置"
                color: "white"
                font.pixelSize: 16
                font.bold: true
                Layout.fillWidth: true
            }
            Button {
                text: "恢复默认"
                flat: true
                palette.buttonText: panel.accent
                onClicked: panel.controller.resetToDefaults()
            }
            Button {
                text: "完成"
                flat: true
                palette.buttonText: panel.accent
                onClicked: panel.closeRequested()
            }
        }

        ScrollView {
            id: scroller
            Layout.fillWidth: true
            Layout.fillHeight: true
            contentWidth: availableWidth
            clip: true

            ColumnLayout {
                width: scroller.availableWidth
                spacing: 4

                ValueRow {
                    objectName: "opacityRow"
                    title: "不透明度"
                    from: 20; to: 100; stepSize: 5
                    value: panel.controller.opacityPercent
                    valueText: panel.controller.opacityPercent + "%"
                    onMoved: value => panel.controller.opacityPercent = Math.round(value)
                }
                ValueRow {
                    title: "字号"
                    from: 50; to: 200; stepSize: 10
                    value: panel.controller.textScalePercent
                    valueText: panel.controller.textScalePercent + "%"
                    onMoved: value => panel.controller.textScalePercent = Math.round(value)
                }
                ValueRow {
                    title: "速度"
                    from: 0.5; to: 2; stepSize: 0.25
                    value: panel.controller.speed
                    valueText: panel.controller.speed.toFixed(2) + "×"
                    onMoved: value => panel.controller.speed = value
                }

                SectionTitle { text: "显示区域" }
                RowLayout {
                    Layout.fillWidth: true
                    spacing: 0
                    Repeater {
                        model: ["1/4 屏", "半屏", "3/4 屏", "全屏"]
                        delegate: Button {
                            required property int index
                            required property string modelData
                            Layout.fillWidth: true
                            text: modelData
                            checkable: true
                            checked: panel.controller.displayArea === index + 1
                            highlighted: checked
                            palette.highlight: panel.accent
                            onClicked: panel.controller.displayArea = index + 1
                        }
                    }
                }

                SectionTitle { text: "显示类型" }
                GridLayout {
                    columns: 4
                    Layout.fillWidth: true
                    KindBox {
                        text: "滚动"
                        checked: panel.controller.showsScrolling
                        onToggled: panel.controller.showsScrolling = checked
                    }
                    KindBox {
                        text: "顶部"
                        checked: panel.controller.showsTop
                        onToggled: panel.controller.showsTop = checked
                    }
                    KindBox {
                        text: "底部"
                        checked: panel.controller.showsBottom
                        onToggled: panel.controller.showsBottom = checked
                    }
                    KindBox {
                        text: "彩色"
                        checked: panel.controller.showsColored
                        onToggled: panel.controller.showsColored = checked
                    }
                }

                SectionTitle { text: "合并与动态" }
                PanelSwitch {
                    text: "合并重复弹幕（" + panel.controller.mergeWindow.toFixed(0) + " 秒内）"
                    checked: panel.controller.mergesRepeats
                    onToggled: panel.controller.mergesRepeats = checked
                }
                ValueRow {
                    visible: panel.controller.mergesRepeats
                    title: "合并窗口"
                    from: 1; to: 30; stepSize: 1
                    value: panel.controller.mergeWindow
                    valueText: panel.controller.mergeWindow.toFixed(0) + " 秒"
                    onMoved: value => panel.controller.mergeWindow = value
                }
                PanelSwitch {
                    text: "减少动态：弹幕静止显示"
                    checked: panel.controller.reducedMotion
                    onToggled: panel.controller.reducedMotion = checked
                }
                Label {
                    visible: panel.controller.desktopPrefersReducedMotion
                    text: "系统已要求减少动态效果，弹幕将静止显示"
                    color: "#9aa0aa"
                    font.pixelSize: 12
                }

                SectionTitle { text: "屏蔽词（每行一条，/正则表达式/）" }
                TextArea {
                    id: blockEditor
                    objectName: "blockEditor"
                    Layout.fillWidth: true
                    Layout.preferredHeight: 96
                    wrapMode: TextEdit.NoWrap
                    color: "white"
                    placeholderText: "关键词\n/^前方高能/"
                    placeholderTextColor: "#6a707a"
                    text: panel.controller.blockListText
                    background: Rectangle { color: "#30ffffff"; radius: 4 }
                }
                Label {
                    Layout.fillWidth: true
                    text: panel.controller.blockListProblems
                    visible: text.length > 0
                    color: "#ff8a80"
                    font.pixelSize: 12
                    wrapMode: Text.Wrap
                }
                Label {
                    text: panel.controller.blockListSummary
                    color: "#9aa0aa"
                    font.pixelSize: 12
                }
                RowLayout {
                    Layout.fillWidth: true
                    Item { Layout.fillWidth: true }
                    Button {
                        text: "应用"
                        enabled: blockEditor.text !== panel.controller.blockListText
                        onClicked: panel.controller.blockListText = blockEditor.text
                    }
                    Button { text: "导入"; onClicked: importDialog.open() }
                    Button { text: "导出"; onClicked: exportDialog.open() }
                }
                Label {
                    Layout.fillWidth: true
                    text: panel.controller.statusText
                    visible: text.length > 0
                    color: "#c8ccd4"
                    font.pixelSize: 12
                    wrapMode: Text.Wrap
                }
            }
        }
    }

    FileDialog {
        id: importDialog
        title: "导入屏蔽词"
        nameFilters: ["文本文件 (*.txt)", "所有文件 (*)"]
        onAccepted: panel.controller.importBlockList(selectedFile)
    }
    FileDialog {
        id: exportDialog
        title: "导出屏蔽词"
        fileMode: FileDialog.SaveFile
        defaultSuffix: "txt"
        nameFilters: ["文本文件 (*.txt)"]
        onAccepted: panel.controller.exportBlockList(selectedFile)
    }
}
