import QtQuick
import QtQuick.Controls
import Zuvi

// The ranking tab: a strip of region buttons over the video grid of the
// selected region, and the state overlay (checking, login required, loading,
// empty, error). Everything it decides lives in its controller.
Rectangle {
    id: page

    required property ZuviHotViewController controller
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
        leftContent: [
            BrandLabel {
                text: page.controller.brandText
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

    Rectangle {
        id: strip
        anchors.left: parent.left
        anchors.right: parent.right
        // Follows the phone's navigation bar up and down over the screen's
        // own layout time.
        y: page.controller.phoneChromeHidden ? 0 : bar.barHeight
        height: 46
        z: 5
        gradient: Gradient {
            GradientStop { position: 0.0; color: Qt.rgba(0.97, 0.97, 0.98, 1) }
            GradientStop { position: 1.0; color: Qt.rgba(0.91, 0.91, 0.93, 1) }
        }
        Behavior on y {
            NumberAnimation { duration: page.controller.chromeAnimationMs; easing.type: Easing.OutQuad }
        }

        ListView {
            id: regions
            anchors.fill: parent
            anchors.leftMargin: 8
            anchors.rightMargin: 8
            orientation: ListView.Horizontal
            spacing: 8
            clip: true
            boundsBehavior: Flickable.StopAtBounds
            model: page.controller.regionTitles
            currentIndex: page.controller.selectedRegionIndex
            highlightFollowsCurrentItem: false
            onCurrentIndexChanged: positionViewAtIndex(currentIndex, ListView.Contain)
            delegate: Item {
                id: slot
                required property int index
                required property string modelData
                width: key.implicitWidth
                height: regions.height
                HotRegionButton {
                    id: key
                    anchors.verticalCenter: parent.verticalCenter
                    width: implicitWidth
                    title: slot.modelData
                    selected: slot.index === page.controller.selectedRegionIndex
                    onTapped: page.controller.regionControlTapped(slot.index)
                }
            }
        }

        Rectangle {
            anchors.bottom: parent.bottom
            width: parent.width
            height: 1
            color: Qt.rgba(0.78, 0.78, 0.80, 1)
        }
    }

    GridView {
        id: grid
        anchors.top: strip.bottom
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

        onContentYChanged: page.controller.gridDidScroll(height, contentHeight, contentY - originY,
                                                         topMargin)
    }

    StateOverlay {
        anchors.fill: grid
        stateView: page.controller.stateView
    }
}
