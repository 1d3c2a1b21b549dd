import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// The panel's widgets: those shown first, left to right in the order listed, then the others.
// A switch shows or hides each; a row is moved by dragging its handle or with its arrows.
ColumnLayout {
    id: control
    required property QtObject record
    readonly property string field: "enabledWidgets"
    // [{ value, title }] of every widget there is.
    required property var widgets
    readonly property Item input: rows.count > 0 ? rows.itemAt(0).toggle : null
    readonly property var stored: record.values[field] || []
    readonly property var order: stored.concat(widgets.map(widget => widget.value).filter(v => stored.indexOf(v) < 0))
    readonly property real rowHeight: 40
    objectName: record.key + "." + field
    Layout.fillWidth: true

    function titleOf(value) {
        const widget = widgets.find(w => w.value === value)
        return widget ? widget.title : value
    }
    // The shown widgets after `value` is put at `index` of them, shown.
    function placed(value, index) {
        const list = stored.filter(v => v !== value)
        list.splice(Math.max(0, Math.min(index, list.length)), 0, value)
        return list
    }

    Label { text: "Widgets, in the order they appear"; Layout.fillWidth: true }
    Item {
        id: area
        Layout.fillWidth: true
        implicitHeight: control.order.length * control.rowHeight
        Repeater {
            id: rows
            model: control.order
            delegate: Rectangle {
                id: row
                required property string modelData
                required property int index
                readonly property bool shown: control.stored.indexOf(modelData) >= 0
                readonly property alias toggle: toggle
                property bool dragging: false
                objectName: "widgetRow." + modelData
                width: area.width
                height: control.rowHeight - 4
                y: index * control.rowHeight
                z: row.dragging ? 2 : 1
                radius: 6
                color: row.dragging ? toggle.palette.highlight : toggle.palette.alternateBase
                opacity: shown ? 1 : 0.75

                RowLayout {
                    anchors.fill: parent
                    anchors.leftMargin: 6
                    anchors.rightMargin: 4
                    Label {
                        objectName: "handle"
                        text: "⠿"
                        font.pixelSize: 18
                        opacity: 0.6
                        Layout.preferredWidth: 22
                        MouseArea {
                            anchors.fill: parent
                            anchors.margins: -6
                            cursorShape: pressed ? Qt.ClosedHandCursor : Qt.OpenHandCursor
                            drag.target: row
                            drag.axis: Drag.YAxis
                            drag.minimumY: 0
                            drag.maximumY: area.height - control.rowHeight
                            // The page's own scrolling does not take a row's drag away.
                            preventStealing: true
                            onPressed: row.dragging = true
                            onReleased: {
                                row.dragging = false
                                const to = Math.round(row.y / control.rowHeight)
                                if (to !== row.index && (to < control.stored.length || row.shown))
                                    control.record.setField(control.field, control.placed(row.modelData, to))
                                row.y = Qt.binding(() => row.index * control.rowHeight)
                            }
                        }
                    }
                    Switch {
                        id: toggle
                        checked: row.shown
                        Accessible.name: "Show " + control.titleOf(row.modelData)
                        onToggled: control.record.setField(control.field, checked
                            ? control.stored.concat([row.modelData])
                            : control.stored.filter(v => v !== row.modelData))
                    }
                    Label { text: control.titleOf(row.modelData); Layout.fillWidth: true }
                    ToolButton {
                        text: "↑"
                        enabled: row.shown && row.index > 0
                        Accessible.name: "Move " + control.titleOf(row.modelData) + " left"
                        onClicked: control.record.setField(control.field, control.placed(row.modelData, row.index - 1))
                    }
                    ToolButton {
                        text: "↓"
                        enabled: row.shown && row.index < control.stored.length - 1
                        Accessible.name: "Move " + control.titleOf(row.modelData) + " right"
                        onClicked: control.record.setField(control.field, control.placed(row.modelData, row.index + 1))
                    }
                }
            }
        }
    }
}
