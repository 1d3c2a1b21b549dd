import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// A size: grid cells across and down, or a width and a height in points.
RowLayout {
    id: control
    required property QtObject record
    property string field: "size"
    property string label: "Size"
    // In points, stored as [width, height]; else in grid cells.
    property bool inPoints: false
    property int maximum: 12
    readonly property Item input: across
    readonly property var stored: record.values[field]
    readonly property int width_: inPoints ? (stored ? stored[0] : 0) : (stored ? stored.width.value : 0)
    readonly property int height_: inPoints ? (stored ? stored[1] : 0) : (stored ? stored.height.value : 0)
    objectName: record.key + "." + field
    Layout.fillWidth: true

    function store(w, h) {
        record.setField(field, inPoints ? [w, h] : { width: { value: w }, height: { value: h } })
    }

    Label { text: control.label; Layout.fillWidth: true; wrapMode: Text.Wrap }
    SpinBox {
        id: across
        from: 1; to: control.maximum
        editable: true
        value: control.width_
        onValueModified: control.store(value, control.height_)
        Accessible.name: control.label + (control.inPoints ? " width" : " across")
    }
    Label { text: "×" }
    SpinBox {
        from: 1; to: control.inPoints ? control.maximum : 6
        editable: true
        value: control.height_
        onValueModified: control.store(control.width_, value)
        Accessible.name: control.label + (control.inPoints ? " height" : " down")
    }
    Label { text: control.inPoints ? "points" : "cells"; Layout.preferredWidth: 56; opacity: 0.7 }
}
