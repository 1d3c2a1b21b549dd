import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// A colour with its opacity: a swatch that opens its red, green, blue and opacity sliders.
ColumnLayout {
    id: control
    required property QtObject record
    required property string field
    required property string label
    readonly property Item input: swatch
    readonly property var stored: record.values[field] || ({ r: 1, g: 1, b: 1, a: 1 })
    objectName: record.key + "." + field
    Layout.fillWidth: true
    spacing: 4

    function store(channel, value) {
        const colour = { r: stored.r, g: stored.g, b: stored.b, a: stored.a }
        colour[channel] = value
        record.setField(field, colour)
    }

    RowLayout {
        Layout.fillWidth: true
        Label { text: control.label; Layout.fillWidth: true; wrapMode: Text.Wrap }
        Button {
            id: swatch
            checkable: true
            Layout.preferredWidth: 72
            Accessible.name: control.label
            ToolTip.visible: hovered
            ToolTip.text: "Edit the colour"
            contentItem: Item {
                implicitHeight: 18
                // A checkered ground shows how see-through the colour is.
                Grid {
                    anchors.fill: parent
                    columns: 12
                    clip: true
                    Repeater {
                        model: 24
                        Rectangle {
                            required property int index
                            width: 6; height: 9
                            color: (index + Math.floor(index / 12)) % 2 ? "#bbbbbb" : "#ffffff"
                        }
                    }
                }
                Rectangle {
                    anchors.fill: parent
                    radius: 3
                    border.color: "#80808080"
                    color: Qt.rgba(control.stored.r, control.stored.g, control.stored.b, control.stored.a)
                }
            }
        }
    }
    GridLayout {
        visible: swatch.checked
        columns: 3
        Layout.fillWidth: true
        Layout.leftMargin: 16
        Repeater {
            model: [{ channel: "r", title: "Red" }, { channel: "g", title: "Green" },
                    { channel: "b", title: "Blue" }, { channel: "a", title: "Opacity" }]
            delegate: Item {
                id: row
                required property var modelData
                Layout.columnSpan: 3
                Layout.fillWidth: true
                implicitHeight: line.implicitHeight
                RowLayout {
                    id: line
                    anchors.fill: parent
                    Label { text: row.modelData.title; Layout.preferredWidth: 70; opacity: 0.8 }
                    Slider {
                        objectName: control.objectName + "." + row.modelData.channel
                        Layout.fillWidth: true
                        from: 0; to: 1; stepSize: 0.01
                        value: control.stored[row.modelData.channel]
                        onMoved: control.store(row.modelData.channel, value)
                        Accessible.name: control.label + " " + row.modelData.title
                    }
                    Label {
                        text: Math.round(control.stored[row.modelData.channel] * 100) + "%"
                        Layout.preferredWidth: 44
                        horizontalAlignment: Text.AlignRight
                    }
                }
            }
        }
    }
}
