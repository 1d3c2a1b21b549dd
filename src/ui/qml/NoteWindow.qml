import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Kelvane

// A note in a window of its own. It grows out of the notch it was opened from, then is an
// ordinary window: moved, resized, closed; closing puts the note back in the panel.
Window {
    id: window
    property QtObject notes: null
    property QtObject settings: null
    property QtObject controller: null
    property int noteId: 0
    property bool codeMode: false
    property rect notch: Qt.rect(0, 0, 200, 32)
    property rect screenArea: Qt.rect(0, 0, 1280, 800)
    readonly property var options: settings ? settings.values : ({})
    readonly property rect target: Qt.rect(Math.round(screenArea.x + (screenArea.width - 520) / 2),
                                           Math.round(screenArea.y + notch.height + 40), 520, 420)
    property var current: notes ? notes.noteData(noteId) : ({})

    title: (current.title && current.title !== "" ? current.title : "New Note") + " — Kelvane"
    width: target.width
    height: target.height
    minimumWidth: 280
    minimumHeight: 180
    color: "#1c1c1e"
    onClosing: if (controller) controller.windowClosed()

    Connections {
        target: window.notes ? window.notes.notes : null
        function onDataChanged() { window.current = window.notes.noteData(window.noteId) }
    }
    Connections {
        target: window.notes
        function onNoteRemoved(id) { if (id === window.noteId) window.close() }
    }

    function grow() {
        window.x = target.x
        window.y = target.y
        ghost.visible = true
        growth.start()
    }

    // The notch's black shape, stretching down into the window's place.
    Window {
        id: ghost
        flags: Qt.ToolTip | Qt.FramelessWindowHint | Qt.WindowStaysOnTopHint | Qt.WindowTransparentForInput
        color: "transparent"
        property real t: 0
        x: Math.round(window.notch.x + (window.target.x - window.notch.x) * t)
        y: Math.round(window.notch.y + (window.target.y - window.notch.y) * t)
        width: Math.max(1, Math.round(window.notch.width + (window.target.width - window.notch.width) * t))
        height: Math.max(1, Math.round(window.notch.height + (window.target.height - window.notch.height) * t))
        Rectangle {
            anchors.fill: parent
            radius: 10 + 6 * ghost.t
            color: Qt.rgba(0.11 * ghost.t, 0.11 * ghost.t, 0.12 * ghost.t, 1)
        }
        NumberAnimation {
            id: growth
            target: ghost
            property: "t"
            from: 0
            to: 1
            duration: 260
            easing.type: Easing.OutCubic
            onFinished: {
                window.visible = true
                window.raise()
                window.requestActivate()
                ghost.visible = false
                editor.startEditing()
            }
        }
    }

    ColumnLayout {
        anchors.fill: parent
        anchors.margins: 12
        spacing: 6
        NoteTools {
            Layout.fillWidth: true
            notes: window.notes
            noteId: window.noteId
            codeMode: !!window.current.codeMode
            pinned: !!window.current.pinned
            canDetach: false
        }
        NoteEditor {
            id: editor
            Layout.fillWidth: true
            Layout.fillHeight: true
            notes: window.notes
            noteId: window.noteId
            body: window.current.body || ""
            codeMode: !!window.current.codeMode
            language: window.current.language || "markdown"
            showScrollIndicator: true
            fadeScrollEdges: window.options.fadeScrollEdges !== false
            background: window.color
            textSize: 14
        }
    }
}
