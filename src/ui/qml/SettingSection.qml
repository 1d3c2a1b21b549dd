import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// A titled group of settings on a pane, drawn as a card.
ColumnLayout {
    id: section
    property string title
    property string note
    default property alias content: rows.data
    Layout.fillWidth: true
    Layout.topMargin: 14
    spacing: 6

    Label { text: section.title; font.bold: true; font.pixelSize: 15 }
    Label {
        visible: section.note !== ""
        text: section.note
        wrapMode: Text.Wrap
        opacity: 0.7
        Layout.fillWidth: true
    }
    Frame {
        Layout.fillWidth: true
        padding: 12
        ColumnLayout {
            id: rows
            width: parent.width
            spacing: 8
        }
    }
}
