import QtQuick
import Kelvane

// The open panel: the two tabs and, for now, what each of them holds.
Item {
    id: panel
    required property KelvaneState kelvane
    property QtObject timers: null
    property QtObject timerCommands: null
    property QtObject media: null
    property QtObject tray: null
    property QtObject notchWindow: null
    property QtObject dropZone: null
    // The item the drop zone measures its targets in.
    property Item dropSpace: null
    readonly property string mode: kelvane.modeName

    Row {
        id: tabs
        anchors.horizontalCenter: parent.horizontalCenter
        spacing: 8
        visible: panel.mode !== "dragging"
        Repeater {
            model: [{ name: "tuckle", title: "Tuckle" }, { name: "tray", title: "Tray" }]
            delegate: Rectangle {
                required property var modelData
                width: label.implicitWidth + 20
                height: label.implicitHeight + 8
                radius: height / 2
                color: panel.mode === modelData.name ? "#3a3a3c" : "transparent"
                Text {
                    id: label
                    anchors.centerIn: parent
                    text: parent.modelData.title
                    color: "white"
                    font.pixelSize: 12
                }
                TapHandler { onTapped: panel.kelvane.selectNamed(parent.modelData.name) }
            }
        }
    }

    MediaWidget {
        id: mediaWidget
        anchors.left: parent.left
        anchors.top: parent.top
        anchors.bottom: parent.bottom
        anchors.topMargin: tabs.height + 8
        width: Math.min(260, parent.width * 0.42)
        visible: panel.mode === "tuckle"
        media: panel.media
    }

    TimersWidget {
        anchors.left: mediaWidget.right
        anchors.leftMargin: 16
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.bottom: parent.bottom
        anchors.topMargin: tabs.height + 8
        visible: panel.mode === "tuckle"
        timers: panel.timers
        commands: panel.timerCommands
        notchWindow: panel.notchWindow
    }

    TrayView {
        anchors.fill: parent
        anchors.topMargin: tabs.height + 8
        visible: panel.mode === "tray"
        focus: visible
        tray: panel.tray
        notchWindow: panel.notchWindow
        dropZone: panel.dropZone
    }

    DropAreaView {
        anchors.fill: parent
        visible: panel.mode === "dragging"
        dropZone: panel.dropZone
        dropSpace: panel.dropSpace
    }
}
