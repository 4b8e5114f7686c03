import QtQuick
import QtQuick.Controls
import Zuvi

// Search results for one keyword in a grid of cards, with a search bar to
// search again in place.
Rectangle {
    id: page

    required property ZuviSearchResultsViewController controller
    // Covered by a pushed screen, the cards let go of their pictures, as the
    // recommended grid's do.
    readonly property bool coversShown: StackView.view === null
                                        || StackView.status !== StackView.Inactive
    readonly property var gridLayout: controller.layoutForWidth(width)
    readonly property real shorterSide: Math.min(Window.width > 0 ? Window.width : width,
                                                 Window.height > 0 ? Window.height : height)

    color: ZuviAppearance.backgroundColor

    // The search key of the keyboard lands here.
    Connections {
        target: page.controller
        function onSearchFocusRequested() { searchField.takeFocus() }
    }

    NavigationBar {
        id: bar
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        navigation: page.controller.navigationController
        title: page.controller.title
        centerContent: [
            SearchField {
                id: searchField
                width: Math.min(page.controller.searchBarWidth(page.shorterSide),
                               bar.centerMaximumWidth)
                placeholder: page.controller.searchPlaceholder
                text: page.controller.keyword
                onSearchRequested: function(text) {
                    if (page.controller.searchBarSearchButtonClicked(text))
                        dismissKeyboard()
                }
            }
        ]
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
                                                         contentY - originY - topMargin)
    }

    StateOverlay {
        anchors.fill: grid
        stateView: page.controller.stateView
    }
}
