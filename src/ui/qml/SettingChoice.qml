import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// One of a few stored values, each with its title.
RowLayout {
    id: control
    required property QtObject record
    property string field: ""
    required property string label
    // [{ value, title }], in the order shown.
    required property var options
    readonly property Item input: box
    readonly property var stored: field !== "" ? record.values[field] : record.value
    objectName: record.key + (field !== "" ? "." + field : "")
    Layout.fillWidth: true

    Label { text: control.label; Layout.fillWidth: true; wrapMode: Text.Wrap }
    ComboBox {
        id: box
        Layout.preferredWidth: 220
        textRole: "title"
        valueRole: "value"
        model: control.options
        currentIndex: control.options.findIndex(option => option.value === control.stored)
        onActivated: control.field !== "" ? control.record.setField(control.field, currentValue)
                                          : control.record.setValue(currentValue)
        Accessible.name: control.label
    }
}
