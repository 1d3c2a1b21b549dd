import QtQuick
import QtQuick.Controls

// A note's commands: code mode and its language, pin, its own window, delete.
Row {
    id: tools
    property QtObject notes: null
    property int noteId: 0
    property bool codeMode: false
    property bool pinned: false
    property string language: "markdown"
    property bool canDetach: true
    signal detachRequested()
    spacing: 2

    component Glyph: Rectangle {
        id: glyph
        property alias text: label.text
        property bool on: false
        property string tip: ""
        signal clicked()
        width: 21
        height: 22
        radius: 6
        color: tap.pressed ? "#48484a" : hover.hovered ? "#3a3a3c" : on ? "#2c2c2e" : "transparent"
        Text {
            id: label
            anchors.centerIn: parent
            color: glyph.on ? "#0a84ff" : "#c7c7cc"
            font.pixelSize: 12
            font.weight: Font.DemiBold
        }
        HoverHandler { id: hover }
        TapHandler { id: tap; onTapped: glyph.clicked() }
        ToolTip.visible: hover.hovered && tip !== ""
        ToolTip.text: tip
        ToolTip.delay: 600
    }

    ComboBox {
        id: languages
        objectName: "noteLanguage"
        visible: tools.codeMode
        width: 72
        height: 22
        font.pixelSize: 10
        model: tools.notes ? tools.notes.languages : []
        currentIndex: Math.max(0, model.indexOf(tools.language))
        onActivated: index => tools.notes.setNoteLanguage(tools.noteId, model[index])
        background: Rectangle { radius: 6; color: "#2c2c2e"; border.color: "#3a3a3c" }
        contentItem: Text {
            leftPadding: 6
            text: languages.displayText
            color: "#c7c7cc"
            font.pixelSize: 10
            verticalAlignment: Text.AlignVCenter
            elide: Text.ElideRight
        }
    }
    Glyph { objectName: "noteCodeMode"; text: "</>"; on: tools.codeMode; tip: "Code"
            onClicked: tools.notes.setNoteCodeMode(tools.noteId, !tools.codeMode) }
    Glyph { text: tools.pinned ? "★" : "☆"; on: tools.pinned; tip: tools.pinned ? "Unpin" : "Pin"
            onClicked: tools.notes.setNotePinned(tools.noteId, !tools.pinned) }
    Glyph { objectName: "noteDetach"; visible: tools.canDetach; text: "↗"; tip: "Open in a window"
            onClicked: tools.detachRequested() }
    Glyph { objectName: "noteDelete"; text: "✕"; tip: "Delete"; onClicked: tools.notes.removeNote(tools.noteId) }
}
