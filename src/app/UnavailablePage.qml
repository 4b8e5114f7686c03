import QtQuick
import Zuvi

// A tab whose screen this build does not carry.
Rectangle {
    id: page

    required property ZuviUnavailableViewController controller

    color: ZuviAppearance.backgroundColor

    NavigationBar {
        id: bar
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        navigation: page.controller.navigationController
        title: page.controller.title
    }

    StateOverlay {
        anchors.top: bar.bottom
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        stateView: page.controller.stateView
    }
}
