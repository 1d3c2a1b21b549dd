import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// An ordered list of names: added, removed and moved; none at all may be stored as nothing
// when the setting allows it.
ColumnLayout {
    id: control
    required property QtObject record
    required property string field
    required property string label
    property string placeholder: "Add…"
    // An empty list is stored as nothing ("not chosen") rather than as an empty list.
    property bool emptyIsUnset: false
    readonly property Item input: entry
    readonly property var stored: record.values[field] || []
    objectName: record.key + "." + field
    Layout.fillWidth: true

    function store(list) {
        record.setField(field, list.length === 0 && emptyIsUnset ? null : list)
    }
    function moved(from, to) {
        const list = stored.slice()
        list.splice(to, 0, list.splice(from, 1)[0])
        store(list)
    }

    Label { text: control.label; wrapMode: Text.Wrap; Layout.fillWidth: true }
    Repeater {
        model: control.stored
        delegate: RowLayout {
            id: item
            required property var modelData
            required property int index
            Layout.fillWidth: true
            Label { text: item.modelData; elide: Text.ElideMiddle; Layout.fillWidth: true }
            ToolButton {
                text: "↑"; enabled: item.index > 0
                Accessible.name: "Move " + item.modelData + " up"
                onClicked: control.moved(item.index, item.index - 1)
            }
            ToolButton {
                text: "↓"; enabled: item.index < control.stored.length - 1
                Accessible.name: "Move " + item.modelData + " down"
                onClicked: control.moved(item.index, item.index + 1)
            }
            ToolButton {
                text: "✕"
                Accessible.name: "Remove " + item.modelData
                onClicked: control.store(control.stored.filter((_, i) => i !== item.index))
            }
        }
    }
    RowLayout {
        Layout.fillWidth: true
        TextField {
            id: entry
            Layout.fillWidth: true
            placeholderText: control.placeholder
            onAccepted: add.clicked()
            Accessible.name: control.label
        }
        Button {
            id: add
            text: "Add"
            enabled: entry.text.trim() !== "" && control.stored.indexOf(entry.text.trim()) < 0
            onClicked: {
                if (!enabled)
                    return
                control.store(control.stored.concat([entry.text.trim()]))
                entry.clear()
            }
        }
    }
}
