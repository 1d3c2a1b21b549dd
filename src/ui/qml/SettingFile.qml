import QtQuick
import QtQuick.Controls
import QtQuick.Dialogs
import QtQuick.Layouts

// A file, typed or chosen; empty when none is set.
ColumnLayout {
    id: control
    required property QtObject record
    required property string field
    required property string label
    property var nameFilters: ["All files (*)"]
    readonly property Item input: path
    readonly property string stored: record.values[field] ? String(record.values[field]) : ""
    objectName: record.key + "." + field
    Layout.fillWidth: true

    function store(url) {
        record.setField(field, url === "" ? null : url)
    }

    Label { text: control.label; wrapMode: Text.Wrap; Layout.fillWidth: true }
    RowLayout {
        Layout.fillWidth: true
        TextField {
            id: path
            Layout.fillWidth: true
            placeholderText: "No file chosen"
            text: control.stored.startsWith("file://") ? decodeURIComponent(control.stored.substring(7)) : control.stored
            onEditingFinished: {
                const typed = text.trim()
                control.store(typed === "" ? "" : typed.startsWith("/") ? "file://" + encodeURI(typed) : typed)
            }
            Accessible.name: control.label
        }
        Button { text: "Choose…"; onClicked: dialog.open() }
        Button { text: "Clear"; enabled: control.stored !== ""; onClicked: control.store("") }
    }
    FileDialog {
        id: dialog
        title: control.label
        nameFilters: control.nameFilters
        onAccepted: control.store(String(selectedFile))
    }
}
