import QtQuick
import Zuvi

// "设置": a grouped table of preferences and tools. Every value and detail
// comes from the controller; the page forwards switches, selectors and taps.
Rectangle {
    id: page

    required property ZuviSettingsViewController controller

    color: "#dfe3ea"

    NavigationBar {
        id: bar
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        navigation: page.controller.navigationController
        title: page.controller.title
    }

    Flickable {
        id: flick
        anchors.top: bar.bottom
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        contentHeight: sections.height + 40
        clip: true

        Column {
            id: sections
            y: 16
            width: Math.min(flick.width, 720)
            x: (flick.width - width) / 2
            spacing: 18

            GroupedSection {
                header: "缓存"
                GroupedRow {
                    title: "删除缓存"
                    detail: page.controller.clearCacheDetailText
                    disclosure: true
                    separator: false
                    onClicked: page.controller.clearCaches()
                }
            }

            GroupedSection {
                header: "播放"
                GroupedRow {
                    title: "默认画质"
                    SegmentedSelector {
                        titles: page.controller.qualityModeTitles
                        currentIndex: page.controller.preferredQualityModeIndex
                        segmentWidth: page.width < 500 ? 62 : 84
                        onActivated: index => page.controller.qualityControlChanged(index)
                    }
                }
                GroupedRow {
                    title: "弹幕"
                    separator: false
                    ToggleSwitch {
                        checked: page.controller.defaultDanmakuEnabled
                        onToggled: on => page.controller.danmakuSwitchChanged(on)
                    }
                }
            }

            GroupedSection {
                header: "热门"
                GroupedRow {
                    title: "分区配置"
                    detail: page.controller.regionDetailText
                    disclosure: true
                    onClicked: page.controller.openRegionSettings()
                }
                GroupedRow {
                    title: "视频排序"
                    separator: false
                    SegmentedSelector {
                        titles: page.controller.hotSortModeTitles
                        currentIndex: page.controller.preferredHotSortModeIndex
                        segmentWidth: page.width < 500 ? 62 : 84
                        onActivated: index => page.controller.hotSortControlChanged(index)
                    }
                }
            }

            GroupedSection {
                header: "通知"
                GroupedRow {
                    title: "历史通知"
                    detail: page.controller.historyDetailText
                    disclosure: true
                    separator: false
                    onClicked: page.controller.openNotificationHistory()
                }
            }

            GroupedSection {
                header: "开发"
                GroupedRow {
                    title: "开发者模式"
                    separator: page.controller.developerSectionRowCount > 1
                    ToggleSwitch {
                        checked: page.controller.developerModeEnabled
                        onToggled: on => page.controller.developerSwitchChanged(on)
                    }
                }
                GroupedRow {
                    visible: page.controller.developerSectionRowCount > 1
                    title: "远程配置"
                    detail: page.controller.remoteConfigDetailText
                    disclosure: true
                    onClicked: page.controller.openRemoteConfigDebug()
                }
                GroupedRow {
                    visible: page.controller.developerSectionRowCount > 1
                    title: "方向指南针"
                    detail: page.controller.directionGuideDetailText
                    ToggleSwitch {
                        checked: page.controller.fullscreenDirectionGuideEnabled
                        onToggled: on => page.controller.directionGuideSwitchChanged(on)
                    }
                }
                GroupedRow {
                    visible: page.controller.developerSectionRowCount > 1
                    title: "调试日志"
                    detail: page.controller.debugLogDetailText
                    disclosure: true
                    separator: false
                    onClicked: page.controller.openDebugLog()
                }
            }
        }
    }

    AlertDialog {
        id: alert
    }

    Connections {
        target: page.controller
        function onAlertRequested(title, message, buttonTitle) {
            alert.show(title, message, buttonTitle, "")
        }
    }
}
