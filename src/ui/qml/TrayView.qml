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

    // Sends the selected files through the desktop's sharing service, named as it is known.
    Rectangle {
        id: shareButton
        objectName: "shareButton"
        visible: view.tray !== null && view.tray.sharingService !== "" && view.tray.selectedIds.length > 0 && !view.tray.previewing
        anchors.top: parent.top
        anchors.right: parent.right
        z: 2
        width: shareLabel.implicitWidth + 16
        height: 22
        radius: 11
        color: shareArea.pressed ? "#0060df" : "#0a84ff"
        Text {
            id: shareLabel
            anchors.centerIn: parent
            color: "white"
            font.pixelSize: 11
            text: view.tray ? "Send with " + view.tray.sharingService : ""
        }
        MouseArea {
            id: shareArea
            anchors.fill: parent
            onClicked: view.tray.airdropSelectedFiles()
        }
    }

    // The preview of the selected files (Space): pictures and text shown here, other files named,
    // with the desktop's previewer a click away where it runs. Space or Escape closes it.
    Rectangle {
        id: preview
        objectName: "preview"
        visible: view.tray !== null && view.tray.previewing
        anchors.fill: parent
        z: 3
        radius: 12
        color: "#1c1c1e"
        ListView {
            anchors.fill: parent
            anchors.margins: 6
            anchors.rightMargin: 28
            orientation: ListView.Horizontal
            spacing: 8
            clip: true
            model: view.tray ? view.tray.previewFiles : []
            delegate: Rectangle {
                id: page
                required property QtObject modelData
                readonly property bool textual: modelData.iconName.startsWith("text-")
                readonly property bool pdf: modelData.iconName === "application-pdf"
                width: modelData.isImage ? height * 1.5 : (textual ? 220 : (pdf && pdfPage.status === Image.Ready ? pdfPage.paintedWidth + 8 : 140))
                height: ListView.view.height
                radius: 8
                color: "#2c2c2e"
                clip: true
                Image {
                    anchors.fill: parent
                    anchors.margins: 4
                    visible: page.modelData.isImage
                    source: visible ? view.fileUri(page.modelData.path) : ""
                    sourceSize.height: 512
                    fillMode: Image.PreserveAspectFit
                    asynchronous: true
                }
                // A PDF's first page, drawn beside the notch.
                Image {
                    id: pdfPage
                    anchors.fill: parent
                    anchors.margins: 4
                    visible: page.pdf && status === Image.Ready
                    source: page.pdf ? "image://pdfpage/" + view.fileUri(page.modelData.path) : ""
                    sourceSize.height: 512
                    fillMode: Image.PreserveAspectFit
                    asynchronous: true
                    cache: false
                }
                Text {
                    anchors.fill: parent
                    anchors.margins: 6
                    visible: page.textual
                    color: "#e5e5ea"
                    font.family: "monospace"
                    font.pixelSize: 9
                    wrapMode: Text.WrapAnywhere
                    elide: Text.ElideRight
                    text: visible ? view.tray.previewText(page.modelData.path) : ""
                }
                Column {
                    anchors.centerIn: parent
                    visible: !page.modelData.isImage && !page.textual && !pdfPage.visible
                    spacing: 6
                    Text {
                        anchors.horizontalCenter: parent.horizontalCenter
                        color: "white"
                        font.pixelSize: 12
                        text: page.modelData.nameTruncated
                    }
                    Text {
                        anchors.horizontalCenter: parent.horizontalCenter
                        visible: view.tray && view.tray.desktopPreviewer
                        color: "#64d2ff"
                        font.pixelSize: 11
                        text: "Open in Previewer"
                        MouseArea {
                            anchors.fill: parent
                            onClicked: view.tray.openInDesktopPreviewer(page.modelData.id)
                        }
                    }
                }
            }
        }
        Text {
            anchors.top: parent.top
            anchors.right: parent.right
            anchors.margins: 6
            color: "#a0a0a5"
            font.pixelSize: 14
            text: "\u2715"
            MouseArea {
                anchors.fill: parent
                anchors.margins: -6
                onClicked: view.tray.closePreview()
            }
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
