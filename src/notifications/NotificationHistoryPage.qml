import QtQuick
import QtQuick.Controls
import Zuvi

// "历史通知": the stored messages, newest first, in one grouped section;
// "清空" asks before emptying the history.
Rectangle {
    id: page

    required property ZuviRemoteNotificationHistoryViewController controller

    color: "#dfe3ea"

    NavigationBar {
        id: bar
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        navigation: page.controller.navigationController
        title: page.controller.title
        rightContent: [
            BarButton {
                text: "清空"
                onClicked: confirm.show("清空全部历史通知？", "", "清空", "取消")
            }
        ]
    }

    Flickable {
        id: flick
        anchors.top: bar.bottom
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        contentHeight: section.height + 40
        clip: true

        GroupedSection {
            id: section
            y: 16
            width: Math.min(flick.width, 720)
            x: (flick.width - width) / 2
            header: page.controller.headerText
            footer: page.controller.footerText

            GroupedRow {
                visible: page.controller.empty
                title: "暂无历史通知"
                subtitle: "收到远程通知后会显示在这里。"
                separator: false
            }
            Repeater {
                model: page.controller.rows
                delegate: GroupedRow {
                    required property int index
                    required property var modelData
                    title: modelData.title
                    subtitle: modelData.detail
                    disclosure: true
                    separator: index < page.controller.rows.length - 1
                    onClicked: page.controller.selectRow(index)
                }
            }
        }
    }

    AlertDialog {
        id: confirm
        onAcceptedByUser: page.controller.confirmClear()
    }
}
