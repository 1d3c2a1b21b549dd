import QtQuick
import QtQuick.Controls

// The Tuckle's shortcuts: one button for each program of the shortcuts folder that is shown. A
// click runs it with the files selected in the tray; while it runs, a click stops it. The button
// says how its last run ended, and its last line of output shows when the pointer rests on it.
Item {
    id: widget
    property QtObject shortcuts: null
    property QtObject settings: null
    readonly property var entries: shortcuts ? shortcuts.shown : []
    // A button is this many cells wide, never wider than the widget.
    readonly property real buttonWidth: {
        const cells = settings && settings.values.shortcutButtonWidth ? settings.values.shortcutButtonWidth.value : 4
        return Math.max(40, Math.min(width, cells * 50 - 6))
    }

    Text {
        id: title
        text: "Shortcuts"
        color: "white"
        font.pixelSize: 12
        font.weight: Font.DemiBold
    }

    Flickable {
        id: flick
        anchors { left: parent.left; right: parent.right; top: title.bottom; bottom: parent.bottom; topMargin: 6 }
        clip: true
        ScrollBar.vertical: ScrollBar { policy: ScrollBar.AsNeeded }
        contentHeight: flow.implicitHeight
        boundsBehavior: Flickable.StopAtBounds
        Flow {
            id: flow
            width: parent.width
            spacing: 6
            Repeater {
                model: widget.entries
                delegate: Rectangle {
                    id: button
                    required property var modelData
                    readonly property string state_: modelData.state
                    objectName: "shortcut-" + modelData.name
                    width: widget.buttonWidth
                    height: 30
                    radius: 8
                    color: tap.pressed ? "#48484a" : hover.hovered ? "#3a3a3c" : "#2c2c2e"
                    border.color: state_ === "failed" ? "#ff453a" : "transparent"

                    // What it is doing, or how it ended.
                    Item {
                        id: badge
                        x: 8
                        width: 16
                        height: 16
                        anchors.verticalCenter: parent.verticalCenter
                        Text {
                            anchors.centerIn: parent
                            visible: !spinner.running
                            text: button.state_ === "done" ? "✓" : button.state_ === "failed" ? "!" : "▶"
                            color: button.state_ === "done" ? "#30d158" : button.state_ === "failed" ? "#ff453a" : "#c7c7cc"
                            font.pixelSize: button.state_ === "idle" ? 10 : 13
                            font.bold: true
                        }
                        Rectangle {
                            // A quarter of a ring, turning while the program runs.
                            id: spinner
                            property bool running: button.state_ === "running"
                            visible: running
                            anchors.fill: parent
                            radius: 8
                            color: "transparent"
                            border.width: 2
                            border.color: "#0a84ff"
                            Rectangle { width: 8; height: 8; color: button.color; anchors.right: parent.right; anchors.top: parent.top }
                            RotationAnimator on rotation { running: spinner.running; from: 0; to: 360; duration: 900; loops: Animation.Infinite }
                        }
                    }
                    Text {
                        anchors { left: badge.right; leftMargin: 8; right: parent.right; rightMargin: 8; verticalCenter: parent.verticalCenter }
                        text: button.state_ === "running" && hover.hovered ? "Stop" : button.modelData.label
                        color: "white"
                        font.pixelSize: 12
                        elide: Text.ElideRight
                    }
                    HoverHandler { id: hover }
                    TapHandler {
                        id: tap
                        onTapped: {
                            if (button.state_ === "running")
                                widget.shortcuts.stop(button.modelData.name)
                            else
                                widget.shortcuts.runWithSelection(button.modelData.name)
                        }
                    }
                    ToolTip.visible: hover.hovered && tipText !== ""
                    ToolTip.delay: 500
                    ToolTip.text: tipText
                    readonly property string tipText: {
                        const status = modelData.exitStatus
                        if (state_ === "failed")
                            return (status !== undefined && status !== null ? "Failed with status " + status : "Ended")
                                + (modelData.lastLine !== "" ? ": " + modelData.lastLine : "")
                        return modelData.lastLine
                    }
                }
            }
        }
    }

    // More below: the last row fades out instead of being cut.
    Rectangle {
        anchors { left: flick.left; right: flick.right; bottom: flick.bottom }
        height: 12
        visible: flick.contentHeight > flick.height && !flick.atYEnd
        gradient: Gradient {
            GradientStop { position: 0; color: "transparent" }
            GradientStop { position: 1; color: "black" }
        }
    }

    // Nothing to show: where shortcuts come from.
    Column {
        anchors.centerIn: parent
        anchors.verticalCenterOffset: 8
        visible: widget.entries.length === 0
        width: parent.width - 12
        spacing: 2
        Text {
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            text: "No shortcuts yet"
            color: "#8e8e93"
            font.pixelSize: 11
        }
        Text {
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            text: "Put programs or scripts in " + (widget.shortcuts ? widget.shortcuts.folder : "the Shortcuts folder")
            color: "#636366"
            font.pixelSize: 9
            wrapMode: Text.WrapAnywhere
            maximumLineCount: 3
            elide: Text.ElideLeft
        }
    }
}
