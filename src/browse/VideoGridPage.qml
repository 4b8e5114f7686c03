import QtQuick
import QtQuick.Controls
import Zuvi

// The recommended (or popular, or a given) video grid. Everything it decides
// lives in its controller; the page lays out the cards, reports scrolling and
// taps, and draws the pull-to-refresh spinner and the state overlay.
Rectangle {
    id: page

    required property ZuviVideoGridViewController controller
    // While a pushed screen covers the page (a video playing over the list),
    // its cards let go of their pictures: a covered page would otherwise
    // keep a texture per card for as long as the video plays. The decoded
    // pictures stay in the image loader's cache, so they are back as the
    // page slides in again.
    readonly property bool coversShown: StackView.view === null
                                        || StackView.status !== StackView.Inactive
    readonly property var gridLayout: controller.layoutForWidth(width)
    readonly property real shorterSide: Math.min(Window.width > 0 ? Window.width : width,
                                                 Window.height > 0 ? Window.height : height)
    // Room for the spinner while a pull-to-refresh runs.
    readonly property real refreshInset: controller.pullRefreshRefreshing ? 44 : 0

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
        leftContent: [
            BrandLabel {
                visible: page.controller.showsBrandLabel
                text: page.controller.brandText
            }
        ]
        centerContent: [
            SearchField {
                id: searchField
                width: Math.min(page.controller.searchBarWidth(page.shorterSide),
                               bar.centerMaximumWidth)
                placeholder: page.controller.searchPlaceholder
                onSearchRequested: function(text) {
                    if (page.controller.searchButtonClicked(text)) {
                        dismissKeyboard()
                        clear()
                    }
                }
            }
        ]
        rightContent: [
            BarButton {
                visible: page.controller.loadsRemoteVideos
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
        boundsBehavior: Flickable.DragAndOvershootBounds
        model: page.controller.videos
        cellWidth: page.gridLayout.itemWidth + page.gridLayout.itemSpacing
        cellHeight: page.gridLayout.itemHeight + page.gridLayout.lineSpacing
        leftMargin: page.gridLayout.insetLeft
        // The last column's spacing may reach into the right inset.
        rightMargin: page.gridLayout.insetRight - page.gridLayout.itemSpacing
        topMargin: page.gridLayout.insetTop + page.refreshInset
        bottomMargin: page.gridLayout.insetBottom

        header: Item {
            width: grid.width - grid.leftMargin - grid.rightMargin
            height: page.gridLayout.headerHeight
            visible: page.controller.showsHeader
            Text {
                x: (!page.gridLayout.compact ? 14 : 12) - grid.leftMargin
                y: 12
                height: 28
                text: page.controller.contentHeaderTitle
                color: Qt.rgba(0.22, 0.15, 0.13, 1)
                font.pixelSize: !page.gridLayout.compact ? 22 : 18
                font.bold: true
            }
            Text {
                x: (!page.gridLayout.compact ? 14 : 12) - grid.leftMargin
                y: 38
                height: 18
                visible: text.length > 0
                text: page.controller.contentHeaderSubtitle
                color: Qt.rgba(0.46, 0.46, 0.46, 1)
                font.pixelSize: 12
            }
        }

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

        function report() {
            page.controller.gridDidScroll(height, contentHeight, contentY - originY, topMargin,
                                          dragging)
        }
        onContentYChanged: report()
        onDraggingChanged: {
            if (dragging) {
                report()
                return
            }
            // Whether the list keeps moving is known once the release is handled.
            Qt.callLater(function() { page.controller.gridDidEndDragging(grid.flicking) })
        }
        onMovementEnded: page.controller.gridDidEndDecelerating()
    }

    BusyIndicator {
        anchors.horizontalCenter: parent.horizontalCenter
        y: bar.y + bar.height + 4
        width: 36
        height: 36
        running: page.controller.pullRefreshRefreshing
        visible: running
    }

    StateOverlay {
        anchors.fill: grid
        stateView: page.controller.stateView
    }
}
