import QtQuick
import QtQuick.Controls

// A centred alert: a title, an optional message and one or two buttons. The
// second button, when named, is the one that acts (accepted()).
Dialog {
    id: alert

    property string message: ""
    property string cancelTitle: ""
    property string acceptTitle: "好"
    signal acceptedByUser()

    anchors.centerIn: parent
    modal: true
    width: Math.min(parent ? parent.width - 40 : 300, 300)

    // Fills the texts and shows the alert.
    function show(title, message, acceptTitle, cancelTitle) {
        alert.title = title
        alert.message = message
        alert.acceptTitle = acceptTitle
        alert.cancelTitle = cancelTitle || ""
        alert.open()
    }

    contentItem: Column {
        spacing: 12
        Text {
            visible: alert.message.length > 0
            width: alert.availableWidth
            text: alert.message
            wrapMode: Text.Wrap
            horizontalAlignment: Text.AlignHCenter
        }
        Row {
            spacing: 8
            Button {
                visible: alert.cancelTitle.length > 0
                width: (alert.availableWidth - 8) / 2
                text: alert.cancelTitle
                onClicked: alert.close()
            }
            Button {
                width: alert.cancelTitle.length > 0 ? (alert.availableWidth - 8) / 2
                                                    : alert.availableWidth
                text: alert.acceptTitle
                onClicked: {
                    alert.close()
                    alert.acceptedByUser()
                }
            }
        }
    }
}
