import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// The Tuckle's to-do list: type and press Enter to add; tick, untick, edit in place, drag by the
// handle to reorder, and remove. Done ones show struck through, or not at all.
Item {
    id: widget
    property QtObject notes: null
    property QtObject settings: null
    property QtObject notchWindow: null
    readonly property bool showCompleted: settings ? settings.values.showCompleted !== false : true

    function addTodo() {
        if (!notes || field.text.trim() === "") return
        notes.addTodo(field.text)
        field.text = ""
        list.positionViewAtEnd()
    }

    ColumnLayout {
        anchors.fill: parent
        spacing: 4

        RowLayout {
            Layout.fillWidth: true
            Text { text: "To-do"; color: "white"; font.pixelSize: 12; font.weight: Font.DemiBold }
            Text {
                Layout.fillWidth: true
                text: widget.notes ? widget.notes.openTodoCount + " open" : ""
                color: "#8e8e93"
                font.pixelSize: 10
            }
        }

        ListView {
            id: list
            objectName: "todoList"
            Layout.fillWidth: true
            Layout.fillHeight: true
            clip: true
            model: widget.notes ? widget.notes.todos : null
            moveDisplaced: Transition { NumberAnimation { properties: "y"; duration: 160; easing.type: Easing.OutCubic } }
            delegate: Item {
                id: row
                required property var todoId
                required property string text
                required property bool done
                required property int index
                readonly property bool shown: widget.showCompleted || !done
                width: ListView.view.width
                height: shown ? 24 : 0
                visible: shown

                Rectangle {
                    id: content
                    width: row.width
                    height: 24
                    radius: 6
                    color: dragArea.drag.active ? "#2c2c2e" : rowHover.hovered ? "#1c1c1e" : "transparent"
                    z: dragArea.drag.active ? 2 : 0

                    Rectangle {
                        id: check
                        objectName: "todoCheck"
                        x: 6
                        anchors.verticalCenter: parent.verticalCenter
                        width: 15
                        height: 15
                        radius: 8
                        color: row.done ? "#30d158" : "transparent"
                        border.color: row.done ? "#30d158" : "#8e8e93"
                        border.width: 1.5
                        Text { anchors.centerIn: parent; visible: row.done; text: "✓"; color: "black"; font.pixelSize: 10; font.bold: true }
                        TapHandler { onTapped: widget.notes.setTodoDone(row.todoId, !row.done) }
                    }
                    TextInput {
                        id: input
                        anchors.left: check.right
                        anchors.leftMargin: 8
                        anchors.right: remove.left
                        anchors.rightMargin: 4
                        anchors.verticalCenter: parent.verticalCenter
                        text: row.text
                        color: row.done ? "#8e8e93" : "white"
                        font.pixelSize: 12
                        font.strikeout: row.done
                        clip: true
                        selectByMouse: true
                        onActiveFocusChanged: if (!activeFocus && text !== row.text) widget.notes.setTodoText(row.todoId, text)
                        onAccepted: { widget.notes.setTodoText(row.todoId, text); focus = false }
                        Keys.onEscapePressed: { text = row.text; focus = false }
                        TapHandler {
                            onTapped: { if (widget.notchWindow) widget.notchWindow.makeKeyWindow(); input.forceActiveFocus() }
                        }
                    }
                    Text {
                        id: remove
                        anchors.right: handle.left
                        anchors.verticalCenter: parent.verticalCenter
                        width: 18
                        visible: rowHover.hovered
                        text: "✕"
                        color: "#8e8e93"
                        font.pixelSize: 10
                        horizontalAlignment: Text.AlignHCenter
                        TapHandler { onTapped: widget.notes.removeTodo(row.todoId) }
                    }
                    Text {
                        id: handle
                        objectName: "todoHandle"
                        anchors.right: parent.right
                        anchors.rightMargin: 4
                        anchors.verticalCenter: parent.verticalCenter
                        width: 16
                        text: "≡"
                        color: rowHover.hovered || dragArea.drag.active ? "#c7c7cc" : "#48484a"
                        font.pixelSize: 14
                        horizontalAlignment: Text.AlignHCenter
                        MouseArea {
                            id: dragArea
                            anchors.fill: parent
                            anchors.margins: -4
                            cursorShape: Qt.OpenHandCursor
                            drag.target: content
                            drag.axis: Drag.YAxis
                            onReleased: {
                                // The row it was dropped over takes its place.
                                const middle = row.mapToItem(list.contentItem, 0, content.y + content.height / 2).y
                                const target = list.indexAt(10, middle)
                                content.y = 0
                                if (target >= 0 && target !== row.index)
                                    widget.notes.moveTodo(row.index, target)
                            }
                        }
                    }
                    HoverHandler { id: rowHover }
                }
            }
            ScrollBar.vertical: ScrollBar { policy: ScrollBar.AsNeeded }
            // More below: the last row fades out instead of being cut.
            Rectangle {
                anchors.left: parent.left
                anchors.right: parent.right
                anchors.bottom: parent.bottom
                height: 10
                visible: !list.atYEnd
                gradient: Gradient {
                    GradientStop { position: 0; color: "transparent" }
                    GradientStop { position: 1; color: "black" }
                }
            }
            Text {
                anchors.centerIn: parent
                visible: list.count === 0 || (!widget.showCompleted && widget.notes.openTodoCount === 0)
                text: list.count === 0 ? "Nothing to do" : "All done"
                color: "#636366"
                font.pixelSize: 11
            }
        }

        TextField {
            id: field
            objectName: "todoField"
            Layout.fillWidth: true
            placeholderText: "Add a to-do and press Enter"
            placeholderTextColor: "#8e8e93"
            color: "white"
            font.pixelSize: 12
            selectByMouse: true
            background: Rectangle { radius: 6; color: "#2c2c2e"; border.color: field.activeFocus ? "#0a84ff" : "#3a3a3c" }
            onPressed: if (widget.notchWindow) widget.notchWindow.makeKeyWindow()
            onAccepted: widget.addTodo()
        }
    }
}
