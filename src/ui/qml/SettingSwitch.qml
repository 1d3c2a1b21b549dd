import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// A setting that is on or off: a record's member, or a plain setting when no field is named.
Switch {
    id: control
    required property QtObject record
    property string field: ""
    readonly property Item input: control
    objectName: record.key + (field !== "" ? "." + field : "")
    Layout.fillWidth: true
    checked: (field !== "" ? record.values[field] : record.value) === true
    onToggled: field !== "" ? record.setField(field, checked) : record.setValue(checked)
}
