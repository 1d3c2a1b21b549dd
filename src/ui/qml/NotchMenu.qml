import QtQuick
import Kelvane

// The notch's own small menu, opened with a right click: the settings, hiding the notch until its
// handle is used, and quitting. While it is up the notch stays as it is; a click beside it or
// Escape closes it.
Item {
    id: menu
    objectName: "notchMenu"
    required property WindowsManager windowsManager
    required property NotchController controller
    required property NotchGestures gestures
    // Whether the menu is up (the window then takes the pointer everywhere).
    property bool shown: false

    anchors.fill: parent
    visible: shown
    z: 10

    // Opens the menu at that point of `item`, kept inside the window.
    function popup(item, x, y) {
        const at = item.mapToItem(menu, x, y)
        panel.x = Math.max(4, Math.min(at.x, width - panel.width - 4))
        panel.y = Math.max(4, Math.min(at.y, height - panel.height - 4))
        if (shown)
            return
        shown = true
        windowsManager.menuDidBeginTracking()
        forceActiveFocus()
    }
    function close() {
        if (!shown)
            return
        shown = false
        windowsManager.menuDidEndTracking()
        gestures.menuClosed()
    }
    function trigger(name) {
        close()
        if (name === "settings")
            windowsManager.showSettings("")
        else if (name === "hide") {
            controller.closeNotch(false, true)
            controller.hideNotch()
        } else if (name === "quit")
            Qt.quit()
    }

    Keys.onEscapePressed: close()
    MouseArea {
        anchors.fill: parent
        acceptedButtons: Qt.AllButtons
        onPressed: menu.close()
    }

    Rectangle {
        id: panel
        width: 168
        height: items.height + 10
        radius: 9
        color: "#1c1c1e"
        border.color: "#3a3a3c"
        Column {
            id: items
            x: 5
            y: 5
            width: parent.width - 10
            Repeater {
                // An empty name is a separator.
                model: [
                    { name: "settings", title: qsTr("Settings…") },
                    { name: "hide", title: qsTr("Hide Notch") },
                    { name: "", title: "" },
                    { name: "quit", title: qsTr("Quit Kelvane") },
                ]
                delegate: Item {
                    id: entry
                    required property var modelData
                    readonly property bool separator: modelData.name === ""
                    width: items.width
                    height: separator ? 9 : 26
                    Rectangle {
                        visible: entry.separator
                        anchors.verticalCenter: parent.verticalCenter
                        width: parent.width
                        height: 1
                        color: "#3a3a3c"
                    }
                    Rectangle {
                        visible: !entry.separator
                        anchors.fill: parent
                        radius: 5
                        color: area.containsMouse ? "#0a84ff" : "transparent"
                    }
                    Text {
                        visible: !entry.separator
                        x: 7
                        anchors.verticalCenter: parent.verticalCenter
                        text: entry.modelData.title
                        color: "white"
                        font.pixelSize: 13
                    }
                    MouseArea {
                        id: area
                        anchors.fill: parent
                        enabled: !entry.separator
                        hoverEnabled: true
                        onClicked: menu.trigger(entry.modelData.name)
                    }
                }
            }
        }
    }
}
