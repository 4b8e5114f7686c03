import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// One comment: author and time on the first line, the message below, and a
// hairline under it.
Item {
    id: row

    required property string authorName
    required property string timeText
    required property string message
    required property string likeCountText

    implicitHeight: column.implicitHeight + 16

    ColumnLayout {
        id: column
        x: 12
        y: 8
        width: row.width - 24
        spacing: 4
        RowLayout {
            Layout.fillWidth: true
            Label {
                Layout.fillWidth: true
                text: row.authorName
                color: Qt.rgba(0.93, 0.44, 0.61, 1)
                font.bold: true
                elide: Text.ElideRight
            }
            Label {
                text: row.timeText + (row.likeCountText.length > 0 ? "  赞 " + row.likeCountText : "")
                color: "#999"
                font.pixelSize: 11
            }
        }
        Label {
            Layout.fillWidth: true
            text: row.message
            wrapMode: Text.Wrap
        }
    }
    Rectangle {
        x: 12
        width: row.width - 12
        anchors.bottom: parent.bottom
        height: 1
        color: "#e4e4e4"
    }
}
