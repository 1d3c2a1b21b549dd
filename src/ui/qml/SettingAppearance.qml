import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// When an activity shows: all along, or for a moment every so often.
RowLayout {
    id: control
    required property QtObject record
    required property string field
    required property string label
    readonly property Item input: mode
    readonly property var stored: record.values[field] || ({ constant: {} })
    readonly property bool periodic: stored.periodic !== undefined
    objectName: record.key + "." + field
    Layout.fillWidth: true

    Label { text: control.label; Layout.fillWidth: true; wrapMode: Text.Wrap }
    ComboBox {
        id: mode
        Layout.preferredWidth: 150
        model: ["All along", "Every so often"]
        currentIndex: control.periodic ? 1 : 0
        onActivated: control.record.setField(control.field, currentIndex === 1
            ? { periodic: { interval: Math.max(60, every.value * 60) } } : { constant: {} })
        Accessible.name: control.label
    }
    SpinBox {
        id: every
        visible: control.periodic
        from: 1; to: 240
        editable: true
        value: control.periodic ? Math.max(1, Math.round(control.stored.periodic.interval / 60)) : 5
        onValueModified: control.record.setField(control.field, { periodic: { interval: value * 60 } })
        Accessible.name: "Minutes between showings"
    }
    Label { visible: control.periodic; text: "minutes"; opacity: 0.7 }
}
