import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// A value along a range, with the value written beside it.
RowLayout {
    id: control
    required property QtObject record
    property string field: ""
    required property string label
    property real from: 0
    property real to: 1
    property real stepSize: 0.01
    property int decimals: 2
    property string unit: ""
    readonly property Item input: slider
    readonly property var stored: field !== "" ? record.values[field] : record.value
    objectName: record.key + (field !== "" ? "." + field : "")
    Layout.fillWidth: true

    Label { text: control.label; Layout.preferredWidth: 190; wrapMode: Text.Wrap }
    Slider {
        id: slider
        Layout.fillWidth: true
        from: control.from
        to: control.to
        stepSize: control.stepSize
        value: Number(control.stored) || 0
        onMoved: control.field !== "" ? control.record.setField(control.field, value) : control.record.setValue(value)
        Accessible.name: control.label
    }
    Label {
        text: slider.value.toFixed(control.decimals) + (control.unit !== "" ? " " + control.unit : "")
        Layout.preferredWidth: 64
        horizontalAlignment: Text.AlignRight
    }
}
