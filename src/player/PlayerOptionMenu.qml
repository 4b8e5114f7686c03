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

    x: parent ? (parent.width - width) / 2 : 0
    y: -height - 4
    closePolicy: Popup.CloseOnEscape | Popup.CloseOnPressOutsideParent

    function toggle() {
        if (visible)
            close()
        else
            open()
    }

    Instantiator {
        model: menu.titles
        delegate: MenuItem {
            required property int index
            required property string modelData
            objectName: "option" + index
            text: modelData
            checkable: true
            checked: index === menu.checkedIndex
            onTriggered: {
                // The row reflects the choice made, not the click.
                checked = Qt.binding(() => index === menu.checkedIndex)
                menu.chosen(index)
            }
        }
        onObjectAdded: (index, object) => menu.insertItem(index, object)
        onObjectRemoved: (index, object) => menu.removeItem(object)
    }
}
