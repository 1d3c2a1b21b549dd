import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// A whole number with its unit, stepped or typed. A member named by `member` holds it when the
// setting is a small record such as a count of grid cells.
RowLayout {
    id: control
    required property QtObject record
    property string field: ""
    property string member: ""
    required property string label
    property string unit: ""
    property int from: 0
    property int to: 100
    property int stepSize: 1
    readonly property Item input: spin
    readonly property var stored: field !== "" ? record.values[field] : record.value
    objectName: record.key + (field !== "" ? "." + field : "")
    Layout.fillWidth: true

    function store(number) {
        let value = number
        if (member !== "") {
            value = {}
            value[member] = number
        }
        return field !== "" ? record.setField(field, value) : record.setValue(value)
    }

    Label { text: control.label; Layout.fillWidth: true; wrapMode: Text.Wrap }
    SpinBox {
        id: spin
        from: control.from
        to: control.to
        stepSize: control.stepSize
        editable: true
        value: Math.round(Number(control.member !== "" && control.stored ? control.stored[control.member]
                                                                         : control.stored) || 0)
        onValueModified: control.store(value)
        Accessible.name: control.label
    }
    Label { text: control.unit; Layout.preferredWidth: 56; opacity: 0.7 }
}
