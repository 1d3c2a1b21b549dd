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
    // The notch window the editor is in, if any: its pop-ups must hold the notch open.
    property QtObject notchWindow: null
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

    // A code note's language, in the corner where an editor's status shows it.
    ComboBox {
        id: languages
        objectName: "noteLanguage"
        visible: editor.codeMode && editor.notes !== null
        anchors { right: parent.right; bottom: parent.bottom; rightMargin: 2; bottomMargin: 2 }
        width: Math.min(editor.width / 2, languageLabel.implicitWidth)
        height: 18
        font.pixelSize: 9
        model: editor.notes ? editor.notes.languages : []
        currentIndex: Math.max(0, model.indexOf(editor.language))
        onActivated: index => editor.notes.setNoteLanguage(editor.noteId, model[index])
        Connections {
            target: languages.popup
            function onOpened() { if (editor.notchWindow) editor.notchWindow.popupOpened() }
            function onClosed() { if (editor.notchWindow) editor.notchWindow.popupClosed() }
        }
        indicator: null
        popup.width: 120
        popup.padding: 3
        popup.background: Rectangle { radius: 7; color: "#2c2c2e"; border.color: "#48484a" }
        delegate: ItemDelegate {
            id: choice
            required property var modelData
            required property int index
            width: languages.popup.width - 6
            height: 20
            highlighted: languages.highlightedIndex === index
            contentItem: Text {
                leftPadding: 4
                text: choice.modelData
                color: choice.highlighted ? "white" : "#d1d1d6"
                font.pixelSize: 10
                font.weight: choice.modelData === editor.language ? Font.DemiBold : Font.Normal
                verticalAlignment: Text.AlignVCenter
            }
            background: Rectangle { radius: 4; color: choice.highlighted ? "#0a84ff" : "transparent" }
        }
        background: Rectangle {
            radius: 5
            color: languages.hovered || languages.pressed ? "#3a3a3c" : "#2c2c2e"
            opacity: 0.92
        }
        contentItem: Text {
            id: languageLabel
            leftPadding: 6
            rightPadding: 6
            text: languages.displayText + " ▾"
            color: "#aeaeb2"
            font.pixelSize: 9
            verticalAlignment: Text.AlignVCenter
            elide: Text.ElideMiddle
        }
    }
}
