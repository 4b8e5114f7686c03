import QtQuick
import QtQuick.Controls
import Zuvi

// The following feed. The controller decides what is loaded and shown; the
// page lays the cards out in lines (each as tall as its tallest card),
// reports scrolling and size changes, and forwards taps and segment changes.
Rectangle {
    id: page

    required property ZuviFollowingViewController controller
    readonly property var gridLayout: controller.layoutForWidth(width)

    color: ZuviAppearance.backgroundColor

    Binding {
        target: page.controller.rows
        property: "columnCount"
        value: page.gridLayout.columns
    }

    NavigationBar {
        id: bar
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        navigation: page.controller.navigationController
        title: page.controller.title
        leftContent: [
            BrandLabel {
                text: page.controller.brandText
            }
        ]
        centerContent: page.controller.showsSegmentControl ? [segmentControl] : []
        rightContent: [
            BarButton {
                enabled: page.controller.refreshEnabled
                text: "↻"
                onClicked: page.controller.refreshButtonTapped()
            }
        ]
    }

    FollowingSegmentControl {
        id: segmentControl
        visible: page.controller.showsSegmentControl
        titles: page.controller.segmentTitles
        selectedIndex: page.controller.selectedSegment
        onSegmentTapped: function(index) { page.controller.segmentChanged(index) }
    }

    ListView {
        id: grid
        objectName: "followingGrid"
        anchors.top: bar.bottom
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        clip: true
        boundsBehavior: Flickable.DragAndOvershootBounds
        model: page.controller.rows
        spacing: page.gridLayout.lineSpacing
        topMargin: page.gridLayout.insetTop
        bottomMargin: page.gridLayout.insetBottom
        leftMargin: page.gridLayout.insetLeft
        rightMargin: page.gridLayout.insetRight
        cacheBuffer: 600

        delegate: Item {
            id: line
            required property var cards
            // The line is as tall as its tallest card; every card then
            // stretches to it so the line's cards end together.
            readonly property real lineHeight: {
                let tallest = 0
                for (let i = 0; i < cardRepeater.count; ++i) {
                    const card = cardRepeater.itemAt(i)
                    if (card)
                        tallest = Math.max(tallest, card.implicitHeight)
                }
                return tallest
            }
            width: grid.width - grid.leftMargin - grid.rightMargin
            height: lineHeight

            Row {
                spacing: page.gridLayout.itemSpacing
                Repeater {
                    id: cardRepeater
                    model: line.cards
                    delegate: FollowingCollectionViewCell {
                        required property var modelData
                        card: modelData
                        width: page.gridLayout.itemWidth
                        height: line.lineHeight
                        largePreview: page.gridLayout.largePreview
                        onTapped: page.controller.selectItem(modelData.index)
                    }
                }
            }
        }

        function report() {
            page.controller.gridDidScroll(height, contentHeight, contentY - originY,
                                          topMargin)
        }
        onContentYChanged: report()
        onContentHeightChanged: report()
        onHeightChanged: report()
    }

    StateOverlay {
        anchors.fill: grid
        stateView: page.controller.stateView
    }
}
