import QtQuick
import QtQuick.Controls
import Kelvane

// One note's text. A plain note reads as rendered Markdown and turns into its source while it is
// edited; a code note is a monospace editor coloured in its language. Changes go to the notes as
// they are typed, which save them shortly after the last key.
Item {
    id: editor
    property QtObject notes: null
    property int noteId: 0
    property string body: ""
    property bool codeMode: false
    property string language: "markdown"
    property bool showScrollIndicator: false
    property bool fadeScrollEdges: true
    property color background: "black"
    property real textSize: 12
    // Asked for before the editor takes the keyboard (a notch window must become key first).
    signal editingRequested()
    readonly property bool editing: area.activeFocus
    readonly property alias textArea: area

    // What someone else changed (the command line, the other window) shows unless being edited here.
    onBodyChanged: if (!area.activeFocus && area.text !== body) area.text = body
    // Another note: its text replaces the editor's (its body may follow a moment later).
    property int shownNoteId: 0
    onNoteIdChanged: showNote()
    Component.onCompleted: showNote()
    function showNote() {
        if (noteId === shownNoteId)
            return
        shownNoteId = noteId
        // Read from the notes themselves: the bound body may still be the last note's.
        area.text = notes && noteId > 0 ? (notes.noteData(noteId).body || "") : body
    }

    function startEditing() {
        editor.editingRequested()
        area.forceActiveFocus()
        area.cursorPosition = area.length
    }

    Flickable {
        id: flick
        anchors.fill: parent
        clip: true
        contentWidth: width
        contentHeight: Math.max(rendered.visible ? rendered.implicitHeight : area.implicitHeight, height)
        boundsBehavior: Flickable.StopAtBounds
        ScrollBar.vertical: ScrollBar {
            policy: editor.showScrollIndicator ? ScrollBar.AsNeeded : ScrollBar.AlwaysOff
        }

        TextArea {
            id: area
            objectName: "noteText"
            width: flick.width
            height: Math.max(implicitHeight, flick.height)
            // Read as Markdown while not being edited; the source stays underneath for the caret.
            opacity: rendered.visible ? 0 : 1
            color: "white"
            selectionColor: "#0a84ff"
            selectedTextColor: "white"
            placeholderText: editor.codeMode ? "Code…" : "Write a note… (Markdown)"
            placeholderTextColor: "#636366"
            wrapMode: editor.codeMode ? TextEdit.NoWrap : TextEdit.Wrap
            textFormat: TextEdit.PlainText
            font.family: editor.codeMode ? "monospace" : Qt.application.font.family
            font.weight: Font.Normal
            font.pixelSize: editor.codeMode ? editor.textSize - 1 : editor.textSize
            selectByMouse: true
            persistentSelection: true
            tabStopDistance: 4 * fontMetrics.averageCharacterWidth
            background: null
            padding: 2
            onPressed: editor.editingRequested()
            // Escape ends editing: the note reads as rendered again.
            Keys.onEscapePressed: area.focus = false
            onTextChanged: if (activeFocus && editor.notes && editor.noteId > 0 && editor.noteId === editor.shownNoteId)
                               editor.notes.setNoteBody(editor.noteId, text)
            // Keeps the caret in view while typing.
            onCursorRectangleChanged: {
                if (!activeFocus)
                    return
                const r = cursorRectangle
                if (r.y < flick.contentY)
                    flick.contentY = r.y
                else if (r.y + r.height > flick.contentY + flick.height)
                    flick.contentY = r.y + r.height - flick.height
            }
            FontMetrics { id: fontMetrics; font: area.font }
        }

        TextEdit {
            id: rendered
            objectName: "noteRendered"
            visible: !editor.codeMode && !area.activeFocus && editor.body.trim() !== ""
            width: flick.width
            padding: 2
            readOnly: true
            textFormat: TextEdit.RichText
            text: visible ? Markdown.toHtml(editor.body, editor.textSize) : ""
            color: "white"
            wrapMode: TextEdit.Wrap
            font.pixelSize: editor.textSize
            selectByMouse: false
            onLinkActivated: link => Qt.openUrlExternally(link)
            HoverHandler { cursorShape: rendered.hoveredLink !== "" ? Qt.PointingHandCursor : Qt.IBeamCursor }
            TapHandler { onTapped: if (rendered.hoveredLink === "") editor.startEditing() }
        }
    }

    CodeHighlighter {
        id: highlighter
        document: area.textDocument
        language: editor.codeMode ? editor.language : ""
    }

    // The text fades out at an edge beyond which there is more.
    Rectangle {
        visible: editor.fadeScrollEdges && flick.contentY > 1
        anchors { left: parent.left; right: parent.right; top: parent.top }
        height: 14
        gradient: Gradient {
            GradientStop { position: 0; color: editor.background }
            GradientStop { position: 1; color: Qt.rgba(editor.background.r, editor.background.g, editor.background.b, 0) }
        }
    }
    Rectangle {
        visible: editor.fadeScrollEdges && flick.contentY + flick.height < flick.contentHeight - 1
        anchors { left: parent.left; right: parent.right; bottom: parent.bottom }
        height: 14
        gradient: Gradient {
            GradientStop { position: 0; color: Qt.rgba(editor.background.r, editor.background.g, editor.background.b, 0) }
            GradientStop { position: 1; color: editor.background }
        }
    }
}
