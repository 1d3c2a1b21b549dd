import QtQuick
import QtQuick.Controls
import Kelvane

// The notch's own small menu, opened with a right click: the settings, hiding the notch until its
// handle is used, and quitting. While it is up the notch stays as it is.
Menu {
    id: menu
    objectName: "notchMenu"
    required property WindowsManager windowsManager
    required property NotchController controller
    required property NotchGestures gestures
    // Called with whether the menu is up, for the window's input region.
    signal shownChanged(bool shown)

    onAboutToShow: {
        windowsManager.menuDidBeginTracking()
        shownChanged(true)
    }
    onClosed: {
        windowsManager.menuDidEndTracking()
        gestures.menuClosed()
        shownChanged(false)
    }

    topPadding: 5
    bottomPadding: 5
    background: Rectangle {
        implicitWidth: 168
        color: "#ee1c1c1e"
        radius: 9
        border.color: "#3a3a3c"
    }
    delegate: MenuItem {
        id: item
        implicitHeight: 26
        leftPadding: 12
        contentItem: Text {
            text: item.text
            color: "white"
            font.pixelSize: 13
            verticalAlignment: Text.AlignVCenter
        }
        background: Rectangle {
            x: 5
            width: item.width - 10
            radius: 5
            color: item.highlighted ? "#0a84ff" : "transparent"
        }
    }

    Action { objectName: "settingsItem"; text: qsTr("Settings…"); onTriggered: menu.windowsManager.showSettings("") }
    Action { objectName: "hideItem"; text: qsTr("Hide Notch"); onTriggered: { menu.controller.closeNotch(false, true); menu.controller.hideNotch() } }
    MenuSeparator {
        contentItem: Rectangle { implicitHeight: 1; color: "#3a3a3c" }
    }
    Action { objectName: "quitItem"; text: qsTr("Quit Kelvane"); onTriggered: Qt.quit() }
}
