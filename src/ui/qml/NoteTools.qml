import QtQuick
import QtQuick.Controls

// A note's commands, at the right: code mode, pin, its own window, delete. Deleting asks once more.
Item {
    id: tools
    property QtObject notes: null
    property int noteId: 0
    property bool codeMode: false
    property bool pinned: false
    property bool canDetach: true
    signal detachRequested()
    implicitHeight: 22
    // Another note: no deletion is half asked for.
    onNoteIdChanged: remove.asking = false

    component Glyph: Rectangle {
        id: glyph
        property alias text: label.text
        property bool on: false
        property string tip: ""
        // Drawn as a warning, for a second click that cannot be taken back.
        property bool alarm: false
        signal clicked()
        width: Math.max(21, label.implicitWidth + 10)
        height: 22
        radius: 6
        color: alarm ? (tap.pressed ? "#d70015" : "#ff453a")
                     : tap.pressed ? "#48484a" : hover.hovered ? "#3a3a3c" : on ? "#2c2c2e" : "transparent"
        Text {
            id: label
            anchors.centerIn: parent
            color: glyph.alarm ? "white" : glyph.on ? "#0a84ff" : "#c7c7cc"
            font.pixelSize: 12
            font.weight: Font.DemiBold
        }
        HoverHandler { id: hover }
        TapHandler { id: tap; onTapped: glyph.clicked() }
        ToolTip.visible: hover.hovered && tip !== ""
        ToolTip.text: tip
        ToolTip.delay: 600
    }

    Row {
        id: buttons
        anchors.right: parent.right
        spacing: 2
        Glyph { objectName: "noteCodeMode"; text: "</>"; on: tools.codeMode; tip: "Code"
                onClicked: tools.notes.setNoteCodeMode(tools.noteId, !tools.codeMode) }
        Glyph { text: tools.pinned ? "★" : "☆"; on: tools.pinned; tip: tools.pinned ? "Unpin" : "Pin"
                onClicked: tools.notes.setNotePinned(tools.noteId, !tools.pinned) }
        Glyph { objectName: "noteDetach"; visible: tools.canDetach; text: "↗"; tip: "Open in a window"
                onClicked: tools.detachRequested() }
        Glyph {
            id: remove
            objectName: "noteDelete"
            property bool asking: false
            text: asking ? "Delete" : "✕"
            tip: asking ? "" : "Delete"
            alarm: asking
            onClicked: {
                if (asking)
                    tools.notes.removeNote(tools.noteId)
                asking = !asking
            }
            Timer { running: remove.asking; interval: 3000; onTriggered: remove.asking = false }
        }
    }
}
