import QtQuick
import QtQuick.Controls
import Zuvi

// "分区配置" as a grouped table: the shown regions with check marks, then the
// hidden ones. A tap moves a region across; in edit mode the shown rows are
// dragged by their grip to a new place.
Rectangle {
    id: page

    required property ZuviHotRegionSettingsViewController controller
    readonly property real rowHeight: 44
    readonly property real sectionGap: 44
    readonly property real sideInset: width >= 600 ? 40 : 10

    color: Qt.rgba(0.94, 0.94, 0.96, 1)

    NavigationBar {
        id: bar
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        navigation: page.controller.navigationController
        title: page.controller.title
        rightContent: [
            BarButton {
                text: page.controller.editButtonTitle
                onClicked: page.controller.editing = !page.controller.editing
            }
        ]
    }

    Flickable {
        id: table
        anchors.top: bar.bottom
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        contentHeight: sections.height + 30
        clip: true
        interactive: !rowDrag.dragging

        Column {
            id: sections
            x: page.sideInset
            width: table.width - 2 * page.sideInset

            Repeater {
                model: 2
                delegate: Column {
                    id: section
                    required property int index
                    readonly property var titles: index === 0 ? page.controller.selectedRegionTitles
                                                              : page.controller.hiddenRegionTitles
                    width: sections.width

                    RaisedText {
                        width: parent.width
                        height: page.sectionGap
                        leftPadding: 10
                        verticalAlignment: Text.AlignBottom
                        bottomPadding: 6
                        text: page.controller.sectionTitles[section.index]
                        color: Qt.rgba(0.30, 0.34, 0.42, 1)
                        font.pixelSize: 16
                        font.bold: true
                        shadowColor: "white"
                    }

                    Rectangle {
                        width: parent.width
                        height: rows.height
                        radius: 9
                        color: "white"
                        border.color: Qt.rgba(0.74, 0.74, 0.77, 1)
                        clip: true

                        Column {
                            id: rows
                            width: parent.width
                            Repeater {
                                model: section.titles
                                delegate: HotRegionSettingsRow {
                                    required property int index
                                    required property string modelData
                                    width: rows.width
                                    height: page.rowHeight
                                    title: modelData
                                    checked: section.index === 0 && !page.controller.editing
                                    showsGrip: section.index === 0 && page.controller.editing
                                    last: index === section.titles.length - 1
                                    lifted: rowDrag.dragging && section.index === 0
                                            && rowDrag.fromRow === index
                                    liftOffset: rowDrag.offset
                                    onTapped: page.controller.selectRow(section.index, index)
                                    onGripPressed: function(sceneY) {
                                        rowDrag.begin(index, sceneY)
                                    }
                                    onGripMoved: function(sceneY) {
                                        rowDrag.offset = sceneY - rowDrag.startY
                                    }
                                    onGripReleased: rowDrag.finish()
                                }
                            }
                        }
                    }
                }
            }
        }
    }

    // The drag of a shown row in edit mode: the row follows the finger, and
    // on release lands where the controller allows.
    QtObject {
        id: rowDrag
        property bool dragging: false
        property int fromRow: -1
        property real startY: 0
        property real offset: 0

        function begin(row, sceneY) {
            fromRow = row
            startY = sceneY
            offset = 0
            dragging = true
        }
        function finish() {
            if (!dragging)
                return
            dragging = false
            // The row's centre, in rows of the whole table: past the shown
            // rows and the hidden section's header means the hidden section.
            const shown = page.controller.selectedRegionKeys.length
            let proposedRow = Math.round(fromRow + offset / page.rowHeight)
            let proposedSection = 0
            if (proposedRow >= shown + page.sectionGap / page.rowHeight) {
                proposedSection = 1
                proposedRow = proposedRow - shown
            }
            const target = page.controller.targetForMove(proposedSection, Math.max(0, proposedRow))
            const from = fromRow
            fromRow = -1
            offset = 0
            page.controller.moveRow(0, from, target.section, target.row)
        }
    }

    Dialog {
        id: alert
        property string buttonTitle: ""
        property alias message: alertMessage.text
        anchors.centerIn: parent
        modal: true
        width: Math.min(page.width - 40, 300)
        contentItem: Column {
            spacing: 12
            Text {
                id: alertMessage
                visible: text.length > 0
                width: alert.availableWidth
                wrapMode: Text.Wrap
                horizontalAlignment: Text.AlignHCenter
            }
            Button {
                width: alert.availableWidth
                text: alert.buttonTitle
                onClicked: alert.close()
            }
        }
    }

    Connections {
        target: page.controller
        function onAlertRequested(title, message, buttonTitle) {
            alert.title = title
            alert.message = message
            alert.buttonTitle = buttonTitle
            alert.open()
        }
    }
}
