import QtQuick
import Kelvane

// What a drag opens the notch into: the tray's target and, beside it, one target for each
// pipeline that can take what is dragged. The target under the pointer is lit. Each target tells
// the drop zone where it is, in the coordinates of the item the drops arrive on.
Item {
    id: area
    property DropZone dropZone: null
    property Item dropSpace: null
    readonly property var pipelines: dropZone ? dropZone.availableActions : []
    readonly property string hovered: dropZone ? dropZone.hoveredDropTargetID : ""

    component Target: Rectangle {
        id: target
        required property string targetId
        property string title
        property string glyph
        readonly property bool lit: area.hovered === targetId
        radius: 14
        color: lit ? "#3a3a3c" : "#1c1c1e"
        border.width: 2
        border.color: lit ? "white" : "#48484a"
        Behavior on color { ColorAnimation { duration: 120 } }

        readonly property rect frameInZone: {
            area.width; area.height; x; y; width; height
            return area.dropSpace ? mapToItem(area.dropSpace, 0, 0, width, height) : Qt.rect(0, 0, 0, 0)
        }
        function bind() {
            if (area.dropZone && area.dropSpace)
                area.dropZone.bindDropAreaCoords(targetId, frameInZone)
        }
        onFrameInZoneChanged: bind()
        Component.onCompleted: bind()
        Component.onDestruction: if (area.dropZone) area.dropZone.unbindDropAreaCoords(targetId)

        Column {
            anchors.centerIn: parent
            spacing: 6
            Text {
                anchors.horizontalCenter: parent.horizontalCenter
                text: target.glyph
                color: target.lit ? "white" : "#a0a0a5"
                font.pixelSize: 26
            }
            Text {
                anchors.horizontalCenter: parent.horizontalCenter
                text: target.title
                color: target.lit ? "white" : "#a0a0a5"
                font.pixelSize: 12
            }
        }
    }

    Row {
        id: row
        anchors.fill: parent
        spacing: 10
        readonly property real pipelineWidth: Math.min(120, area.width / 4)

        Target {
            targetId: "sheld"
            objectName: "trayDropTarget"
            title: "Release to keep in the tray"
            glyph: "\u2193"
            width: row.width - area.pipelines.length * (row.pipelineWidth + row.spacing)
            height: row.height
        }
        Repeater {
            model: area.pipelines
            delegate: Target {
                required property var modelData
                targetId: modelData.id
                objectName: "pipelineDropTarget"
                title: modelData.label
                glyph: "\u25CE"
                width: row.pipelineWidth
                height: row.height
            }
        }
    }
}
