import QtQuick

// The brand at the left of a browsing tab's navigation bar: white, bold 20,
// with the bars' soft shadow.
RaisedText {
    color: "white"
    shadowColor: Qt.rgba(0, 0, 0, 0.2)
    font.pixelSize: 20
    font.bold: true
}
