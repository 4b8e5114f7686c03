import QtQuick
import QtQuick.Controls
import Zuvi

// One of the account's video lists (history, watch later, favourites): the
// recommended grid's cards on a tablet, compact rows on a phone, with the
// state overlay while loading, empty or failed.
Rectangle {
    id: page

    required property ZuviAccountVideoListViewController controller
    // Covered by a pushed screen, the cards let go of their pictures, as the
    // recommended grid's do.
    readonly property bool coversShown: StackView.view === null
                                        || StackView.status !== StackView.Inactive
    readonly property var gridLayout: controller.layoutForWidth(width)

    color: ZuviAppearance.backgroundColor

    NavigationBar {
        id: bar
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        navigation: page.controller.navigationController
        title: page.controller.title
        rightContent: [
            BarButton {
                enabled: page.controller.refreshEnabled
                text: "↻"
                onClicked: page.controller.refreshButtonTapped()
            }
        ]
    }

    GridView {
        id: grid
        anchors.top: bar.bottom
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        clip: true
        model: page.controller.videos
        cellWidth: page.gridLayout.itemWidth + page.gridLayout.itemSpacing
        cellHeight: page.gridLayout.itemHeight + page.gridLayout.lineSpacing
        leftMargin: page.gridLayout.insetLeft
        rightMargin: page.gridLayout.insetRight - page.gridLayout.itemSpacing
        topMargin: page.gridLayout.insetTop
        bottomMargin: page.gridLayout.insetBottom

        delegate: Loader {
            id: cell
            required property int index
            objectName: "accountVideo" + index
            required property string title
            required property string coverURL
            required property string ownerName
            required property string ownerText
            required property string playText
            required property string compactPlayText
            required property string durationText
            required property color placeholderColor
            width: page.gridLayout.itemWidth
            height: page.gridLayout.itemHeight
            sourceComponent: page.gridLayout.compact ? rowComponent : cardComponent

            Component {
                id: cardComponent
                VideoGridCell {
                    coverAllowed: page.coversShown
                    title: cell.title
                    coverURL: cell.coverURL
                    ownerName: cell.ownerName
                    ownerText: cell.ownerText
                    playText: cell.playText
                    durationText: cell.durationText
                    placeholderColor: cell.placeholderColor
                    onTapped: page.controller.selectItem(cell.index)
                }
            }
            Component {
                id: rowComponent
                VideoListRow {
                    coverAllowed: page.coversShown
                    title: cell.title
                    coverURL: cell.coverURL
                    ownerName: cell.ownerName
                    ownerText: cell.ownerText
                    compactPlayText: cell.compactPlayText
                    durationText: cell.durationText
                    placeholderColor: cell.placeholderColor
                    onTapped: page.controller.selectItem(cell.index)
                }
            }
        }
        onContentYChanged: page.controller.gridDidScroll(height, contentHeight,
                                                         contentY - originY - topMargin, topMargin)
    }

    StateOverlay {
        anchors.fill: grid
        stateView: page.controller.stateView
    }
}
