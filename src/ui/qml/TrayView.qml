import QtQuick

// The Tray tab: the held files as singles and stacks. A click selects (Shift extends from the
// anchor, Ctrl toggles), a double click renames in place, arrows, Ctrl+A/C/V, Space and Delete
// work while the tab has the keyboard, and selected files can be dragged out to other applications.
FocusScope {
    id: view
    property QtObject tray: null
    property QtObject notchWindow: null
    // Dropping the tray's own files back on the notch is refused while they are dragged out.
    property QtObject dropZone: null
    readonly property var items: tray ? tray.items : []

    function fileUri(path) {
        return "file://" + path.split("/").map(encodeURIComponent).join("/")
    }
    // A selected tile drags every selected file; any other tile drags itself.
    function dragUris(file) {
        if (!tray || tray.selectedIds.indexOf(file.id) < 0)
            return fileUri(file.path) + "\r\n"
        let uris = ""
        for (const entry of items)
            for (const f of entry.files)
                if (tray.selectedIds.indexOf(f.id) >= 0)
                    uris += fileUri(f.path) + "\r\n"
        return uris
    }

    function keyName(key) {
        return ({ [Qt.Key_C]: "c", [Qt.Key_A]: "a", [Qt.Key_V]: "v", [Qt.Key_Space]: "space",
                  [Qt.Key_Left]: "left", [Qt.Key_Right]: "right", [Qt.Key_Delete]: "delete",
                  [Qt.Key_Backspace]: "delete", [Qt.Key_Return]: "return", [Qt.Key_Enter]: "return",
                  [Qt.Key_Escape]: "escape" })[key] || ""
    }
    Keys.onPressed: event => {
        if (!tray)
            return
        const name = keyName(event.key)
        if (name !== "")
            event.accepted = tray.handleKeyNamed(name, event.modifiers & Qt.ShiftModifier,
                                                 event.modifiers & Qt.ControlModifier)
    }

    Text {
        anchors.centerIn: parent
        visible: view.items.length === 0
        color: "#a0a0a5"
        font.pixelSize: 13
        text: "No files in the tray"
    }

    Rectangle {
        visible: view.tray !== null && view.tray.showsProgress
        anchors.bottom: parent.bottom
        width: parent.width
        height: 3
        radius: 1.5
        color: "#3a3a3c"
        Rectangle {
            width: parent.width * (view.tray ? view.tray.copyProgress : 0)
            height: parent.height
            radius: 1.5
            color: "#64d2ff"
        }
    }

    ListView {
        id: list
        anchors.fill: parent
        orientation: ListView.Horizontal
        spacing: 10
        clip: true
        model: view.items
        delegate: Column {
            id: item
            required property var modelData
            spacing: 4
            width: Math.max(72, row.width)

            Row {
                id: row
                spacing: item.modelData.isStack ? -40 : 0
                Repeater {
                    model: item.modelData.files
                    delegate: Rectangle {
                        id: tile
                        required property QtObject modelData
                        required property int index
                        readonly property bool selected: view.tray && view.tray.selectedIds.indexOf(modelData.id) >= 0
                        width: 64
                        height: 64
                        radius: 10
                        z: -index
                        color: selected ? "#0a84ff" : "#2c2c2e"
                        border.color: "#3a3a3c"
                        Image {
                            anchors.fill: parent
                            anchors.margins: 4
                            visible: tile.modelData.isImage
                            source: visible ? "image://tray/" + tile.modelData.id : ""
                            fillMode: Image.PreserveAspectFit
                            cache: false
                        }
                        Text {
                            anchors.centerIn: parent
                            visible: !tile.modelData.isImage
                            color: "white"
                            font.pixelSize: 11
                            font.bold: true
                            text: {
                                const dot = tile.modelData.name.lastIndexOf(".")
                                return dot > 0 ? tile.modelData.name.slice(dot + 1).toUpperCase().slice(0, 5) : "FILE"
                            }
                        }
                        Drag.active: dragArea.drag.active
                        Drag.dragType: Drag.Automatic
                        Drag.supportedActions: Qt.CopyAction
                        Drag.mimeData: ({ "text/uri-list": view.dragUris(tile.modelData) })
                        Drag.onDragStarted: if (view.dropZone) view.dropZone.dropsSuppressed = true
                        Drag.onDragFinished: if (view.dropZone) view.dropZone.dropsSuppressed = false
                        MouseArea {
                            id: dragArea
                            anchors.fill: parent
                            drag.target: tile
                            onPressed: mouse => {
                                view.forceActiveFocus()
                                if (view.notchWindow)
                                    view.notchWindow.makeKeyWindow()
                                view.tray.selectFileWithId(tile.modelData.id, mouse.modifiers & Qt.ShiftModifier,
                                                           mouse.modifiers & Qt.ControlModifier)
                            }
                            onDoubleClicked: view.tray.beginEditing(tile.modelData.id)
                        }
                    }
                }
            }
            Item {
                width: item.width
                height: 16
                readonly property QtObject first: item.modelData.files[0]
                readonly property bool editing: view.tray && !item.modelData.isStack && view.tray.editingId === first.id
                Text {
                    anchors.horizontalCenter: parent.horizontalCenter
                    visible: !parent.editing
                    color: "white"
                    font.pixelSize: 11
                    text: item.modelData.isStack ? item.modelData.title : parent.first.nameTruncated
                }
                Rectangle {
                    anchors.fill: parent
                    visible: parent.editing
                    color: "#2c2c2e"
                    radius: 4
                    TextInput {
                        id: nameInput
                        anchors.fill: parent
                        anchors.leftMargin: 4
                        color: "white"
                        font.pixelSize: 11
                        clip: true
                        focus: parent.visible
                        onVisibleChanged: if (visible) { text = view.tray.editingName; selectAll(); forceActiveFocus() }
                        onTextEdited: view.tray.setEditingName(text)
                        Keys.onReturnPressed: { view.tray.rename(); view.forceActiveFocus() }
                        Keys.onEscapePressed: { view.tray.cancelEditing(); view.forceActiveFocus() }
                    }
                }
            }
        }
    }
}
