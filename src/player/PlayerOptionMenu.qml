import QtQuick
import QtQuick.Controls

// One of the player's choice menus (speed, quality): it opens above the
// button it belongs to, shows the current choice checked and reports the
// row picked. The button opens and closes it; a press anywhere else closes it.
Menu {
    id: menu

    property var titles: []
    property int checkedIndex: -1
    signal chosen(int index)

    // Dark over the picture, like the control bar it opens from; the
    // current choice stands out in the accent colour.
    readonly property color accent: Qt.rgba(0.93, 0.44, 0.61, 1)

    width: 112
    x: parent ? (parent.width - width) / 2 : 0
    y: -height - 4
    padding: 4
    closePolicy: Popup.CloseOnEscape | Popup.CloseOnPressOutsideParent
    background: Rectangle {
        color: "#e0202020"
        radius: 6
    }

    function toggle() {
        if (visible)
            close()
        else
            open()
    }

    Instantiator {
        model: menu.titles
        delegate: MenuItem {
            id: row
            required property int index
            required property string modelData
            objectName: "option" + row.index
            text: row.modelData
            checkable: true
            checked: row.index === menu.checkedIndex
            indicator: null
            contentItem: Text {
                text: row.text
                horizontalAlignment: Text.AlignHCenter
                verticalAlignment: Text.AlignVCenter
                color: row.checked ? menu.accent : "white"
                font.bold: row.checked
            }
            background: Rectangle {
                radius: 4
                color: row.highlighted ? "#40ffffff" : "transparent"
            }
            onTriggered: {
                // The row reflects the choice made, not the click.
                row.checked = Qt.binding(() => row.index === menu.checkedIndex)
                menu.chosen(row.index)
            }
        }
        onObjectAdded: (index, object) => menu.insertItem(index, object)
        onObjectRemoved: (index, object) => menu.removeItem(object)
    }
}
