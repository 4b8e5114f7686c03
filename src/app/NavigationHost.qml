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

    Component.onCompleted: {
        const root = host.navigation.rootViewController
        if (root)
            stack.push(root.pageUrl, { controller: root }, StackView.Immediate)
    }

    Connections {
        target: host.navigation
        function onPushed(controller, animated) {
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
