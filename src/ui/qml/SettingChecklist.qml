import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// A set of values, each ticked or not.
ColumnLayout {
    id: control
    required property QtObject record
    required property string field
    required property string label
    // [{ value, title }]
    required property var options
    readonly property Item input: boxes.count > 0 ? boxes.itemAt(0) : null
    readonly property var stored: record.values[field] || []
    objectName: record.key + "." + field
    Layout.fillWidth: true
    spacing: 0

    Label { text: control.label; wrapMode: Text.Wrap; Layout.fillWidth: true; Layout.bottomMargin: 4 }
    Flow {
        Layout.fillWidth: true
        spacing: 4
        Repeater {
            id: boxes
            model: control.options
            delegate: CheckBox {
                required property var modelData
                text: modelData.title
                checked: control.stored.indexOf(modelData.value) >= 0
                onToggled: {
                    const chosen = control.options.map(option => option.value).filter(value =>
                        value === modelData.value ? checked : control.stored.indexOf(value) >= 0)
                    control.record.setField(control.field, chosen)
                }
            }
        }
    }
}
