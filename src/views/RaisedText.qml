import QtQuick

// Text with a soft shadow one pixel below it: the embossed look of the bars'
// titles. The shadow is a second, plain text, not a styled one: a styled text
// is one more kind of material, and under a software renderer every kind is
// a shader program compiled and kept for as long as the process runs.
Text {
    id: label

    property color shadowColor: Qt.rgba(0, 0, 0, 0.25)

    Text {
        z: -1
        y: 1
        width: label.width
        height: label.height
        text: label.text
        textFormat: label.textFormat
        font: label.font
        color: label.shadowColor
        elide: label.elide
        horizontalAlignment: label.horizontalAlignment
        verticalAlignment: label.verticalAlignment
        leftPadding: label.leftPadding
        rightPadding: label.rightPadding
        topPadding: label.topPadding
        bottomPadding: label.bottomPadding
    }
}
