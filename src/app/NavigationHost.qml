import QtQuick
import QtQuick.Controls
import Zuvi

// Shows one navigation stack: a page per screen, pushed and popped as the
// stack says, and the left-edge swipe that goes back one screen. Whether a
// swipe counts is decided by the stack's controller.
Item {
    id: host

    required property ZuviNavigationController navigation

    clip: true

    StackView {
        id: stack
        anchors.fill: parent
    }

    // A stack's first page is made when its tab is first shown, not at
    // launch: a tab the viewer never opens costs no page, and the covers of
    // a list nobody looks at are never decoded. A push into a tab that was
    // never shown puts its first page under the pushed one first.
    property bool rootShown: false
    function showRootIfNeeded() {
        if (host.rootShown)
            return
        host.rootShown = true
        const root = host.navigation.rootViewController
        if (root)
            stack.push(root.pageUrl, { controller: root }, StackView.Immediate)
    }
    onVisibleChanged: if (visible) showRootIfNeeded()
    Component.onCompleted: if (visible) showRootIfNeeded()

    Connections {
        target: host.navigation
        function onPushed(controller, animated) {
            host.showRootIfNeeded()
            stack.push(controller.pageUrl, { controller: controller },
                       animated ? StackView.PushTransition : StackView.Immediate)
        }
        function onPopped(controller, animated) {
            stack.pop(animated ? StackView.PopTransition : StackView.Immediate)
        }
    }

    // The edge-back pan. It watches horizontal drags anywhere in the stack;
    // the controller accepts only those that start near the left edge and
    // move mostly rightwards.
    DragHandler {
        id: edgePan
        property bool accepted: false
        target: null
        yAxis.enabled: false
        enabled: host.navigation.depth > 1 && host.navigation.edgeBackGestureEnabled
        onActiveChanged: {
            if (active) {
                accepted = host.navigation.gestureShouldBegin(centroid.pressPosition.x,
                                                              centroid.velocity.x,
                                                              centroid.velocity.y)
                return
            }
            if (accepted)
                host.navigation.edgeBackPanGestureRecognized(ZuviNavigationController.GestureEnded,
                                                             translation.x, centroid.velocity.x)
            accepted = false
        }
    }
}
