import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// The Tuckle's notes: the list of notes beside the chosen one's editor. A note can go out into a
// window of its own; the panel then says where it is until that window closes.
Item {
    id: widget
    property QtObject notes: null
    property QtObject settings: null
    property QtObject notchWindow: null
    property QtObject noteWindows: null
    property string displayKitId: ""
    property var selectedId: 0
    readonly property var options: settings ? settings.values : ({})
    readonly property var away: noteWindows ? noteWindows.openNoteId : 0

    // The chosen note as the notes have it now; the first note when none is chosen or it went.
    property var current: ({})
    readonly property bool hasNote: current.noteId !== undefined
    function refresh() {
        if (!notes) { current = ({}); return }
        let data = notes.noteData(selectedId)
        if (data.noteId === undefined && list.count > 0) {
            selectedId = notes.noteIdAt(0)
            data = notes.noteData(selectedId)
        }
        current = data
    }
    Connections {
        target: widget.notes ? widget.notes.notes : null
        function onDataChanged() { widget.refresh() }
        function onRowsInserted() { widget.refresh() }
        function onRowsRemoved() { widget.refresh() }
        function onModelReset() { widget.refresh() }
    }
    onSelectedIdChanged: refresh()
    onNotesChanged: refresh()

    // Where the notch cannot have the keyboard, a note is typed in a window of its own.
    readonly property bool typesInPlace: !notchWindow || notchWindow.takesKeyboard
    function editElsewhere(noteId, code) {
        if (noteWindows) noteWindows.open(noteId, displayKitId, code)
    }

    function newNote(code) {
        if (!notes) return
        if (notchWindow) notchWindow.makeKeyWindow()
        selectedId = code ? notes.addCodeNote() : notes.addNote("")
        if (typesInPlace)
            Qt.callLater(editor.startEditing)
        else
            editElsewhere(selectedId, code)
    }

    RowLayout {
        anchors.fill: parent
        spacing: 8

        ColumnLayout {
            Layout.preferredWidth: Math.min(150, widget.width * 0.36)
            Layout.minimumWidth: Layout.preferredWidth
            Layout.maximumWidth: Layout.preferredWidth
            Layout.fillHeight: true
            spacing: 4
            RowLayout {
                Layout.fillWidth: true
                Text { text: "Notes"; color: "white"; font.pixelSize: 12; font.weight: Font.DemiBold; Layout.fillWidth: true }
                PillButton { objectName: "newNote"; text: "+"; onClicked: widget.newNote(false) }
            }
            ListView {
                id: list
                objectName: "notesList"
                Layout.fillWidth: true
                Layout.fillHeight: true
                clip: true
                spacing: 2
                model: widget.notes ? widget.notes.notes : null
                Component.onCompleted: widget.refresh()
                ScrollBar.vertical: ScrollBar { policy: widget.options.showScrollIndicator ? ScrollBar.AsNeeded : ScrollBar.AlwaysOff }
                delegate: Rectangle {
                    id: row
                    required property var noteId
                    required property string title
                    required property string modified
                    required property bool pinned
                    required property bool codeMode
                    required property string body
                    required property string language
                    required property int index
                    width: ListView.view.width
                    height: 34
                    radius: 7
                    color: widget.selectedId === noteId ? "#2c2c2e" : rowHover.hovered ? "#1c1c1e" : "transparent"
                    Column {
                        anchors.fill: parent
                        anchors.leftMargin: 8
                        anchors.rightMargin: 6
                        anchors.topMargin: 3
                        Text {
                            width: parent.width
                            text: (row.pinned ? "★ " : "") + (row.title !== "" ? row.title : "New Note")
                            color: row.title !== "" ? "white" : "#8e8e93"
                            elide: Text.ElideRight
                            font.pixelSize: 11
                            font.weight: Font.DemiBold
                        }
                        Text {
                            width: parent.width
                            text: widget.away === row.noteId ? "In its own window" : row.modified
                            color: "#8e8e93"
                            elide: Text.ElideRight
                            font.pixelSize: 9
                        }
                    }
                    HoverHandler { id: rowHover }
                    TapHandler {
                        onTapped: {
                            // Choosing a note ends editing the last one.
                            list.forceActiveFocus()
                            widget.selectedId = row.noteId
                        }
                    }
                }
                Text {
                    anchors.centerIn: parent
                    visible: list.count === 0
                    text: "No notes"
                    color: "#636366"
                    font.pixelSize: 11
                }
            }
        }

        Rectangle { Layout.fillHeight: true; Layout.preferredWidth: 1; color: "#2c2c2e" }

        ColumnLayout {
            id: pane
            Layout.fillWidth: true
            Layout.minimumWidth: 0
            Layout.fillHeight: true
            spacing: 4
            readonly property var current: widget.current
            readonly property bool hasNote: widget.hasNote
            readonly property bool isAway: hasNote && widget.away === current.noteId

            NoteTools {
                Layout.fillWidth: true
                visible: pane.hasNote
                notes: widget.notes
                noteId: pane.hasNote ? pane.current.noteId : 0
                codeMode: pane.hasNote && pane.current.codeMode
                pinned: pane.hasNote && pane.current.pinned
                canDetach: !pane.isAway
                onDetachRequested: widget.editElsewhere(pane.current.noteId, pane.current.codeMode)
            }
            NoteEditor {
                id: editor
                Layout.fillWidth: true
                Layout.fillHeight: true
                visible: pane.hasNote && !pane.isAway
                notes: widget.notes
                noteId: pane.hasNote ? pane.current.noteId : 0
                body: pane.hasNote ? pane.current.body : ""
                codeMode: pane.hasNote && pane.current.codeMode
                language: pane.hasNote ? pane.current.language : ""
                showScrollIndicator: !!widget.options.showScrollIndicator
                fadeScrollEdges: widget.options.fadeScrollEdges !== false
                notchWindow: widget.notchWindow
                onEditingRequested: {
                    if (!widget.typesInPlace)
                        widget.editElsewhere(pane.current.noteId, pane.current.codeMode)
                    else if (widget.notchWindow)
                        widget.notchWindow.makeKeyWindow()
                }
            }
            Column {
                Layout.alignment: Qt.AlignCenter
                visible: pane.isAway
                spacing: 8
                Text { text: "This note is open in its own window."; color: "#8e8e93"; font.pixelSize: 11 }
                PillButton { anchors.horizontalCenter: parent.horizontalCenter; text: "Bring it back"
                             onClicked: widget.noteWindows.close() }
            }
            Item {
                Layout.fillWidth: true
                Layout.fillHeight: true
                visible: !pane.hasNote
                Column {
                    anchors.centerIn: parent
                    spacing: 8
                    Text { text: "No note chosen"; color: "#636366"; font.pixelSize: 11; anchors.horizontalCenter: parent.horizontalCenter }
                    Row {
                        spacing: 6
                        PillButton { text: "New note"; onClicked: widget.newNote(false) }
                        PillButton { text: "New code note"; onClicked: widget.newNote(true) }
                    }
                }
            }
        }
    }
}
