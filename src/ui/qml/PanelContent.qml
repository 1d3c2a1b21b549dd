import QtQuick
import Kelvane

// The open panel: the tab switch in the band beside the camera, and below it the widget grid, the
// tray or the drop area.
Item {
    id: panel
    required property KelvaneState kelvane
    required property NotchViewModel viewModel
    property WidgetGridModel widgetGrid: null
    property QtObject timers: null
    property QtObject timerCommands: null
    property QtObject media: null
    property QtObject mediaStyle: null
    property QtObject tray: null
    property QtObject calendar: null
    property QtObject calendarFiles: null
    property QtObject notes: null
    property QtObject notesSettings: null
    property QtObject todoSettings: null
    property QtObject shortcuts: null
    property QtObject quickApps: null
    property QtObject shortcutsSettings: null
    property QtObject mirror: null
    property QtObject mirrorCamera: null
    property QtObject noteWindows: null
    property string displayKitId: ""
    property QtObject notchWindow: null
    property QtObject dropZone: null
    // The item the drop zone measures its targets in.
    property Item dropSpace: null
    readonly property string mode: kelvane.modeName
    // The band beside the camera: as tall as the notch, or 32 points where the notch is lower.
    readonly property real band: viewModel.drawnNotchSize.height > 21.12 ? viewModel.drawnNotchSize.height : 32
    readonly property real padding: viewModel.contentPadding
    readonly property real buttonRadius: viewModel.preferRoundButtons ? 1000 : 6

    // The tab switch: one segmented control left of the camera.
    component Segment: Item {
        id: segment
        required property string name
        required property string title
        width: label.implicitWidth + 20
        height: parent.height
        Text {
            id: label
            anchors.centerIn: parent
            text: segment.title
            color: panel.mode === segment.name ? "white" : "#8e8e93"
            font.pixelSize: 11
            font.weight: Font.DemiBold
        }
        TapHandler { onTapped: panel.kelvane.selectNamed(segment.name) }
    }
    Rectangle {
        id: tabs
        objectName: "tabSwitch"
        visible: panel.mode !== "dragging"
        x: panel.padding + 6
        y: (panel.band - height) / 2
        height: Math.min(24, panel.band - 8)
        width: segments.width + 4
        radius: Math.min(height / 2, panel.buttonRadius)
        color: "#1c1c1e"
        Rectangle {
            // The selected segment's pill slides under its title.
            readonly property Item selected: panel.mode === "tray" ? traySegment : tuckleSegment
            x: 2 + selected.x
            y: 2
            width: selected.width
            height: parent.height - 4
            radius: Math.min(height / 2, panel.buttonRadius)
            color: "#3a3a3c"
            Behavior on x { SpringAnimation { spring: 4; damping: 0.35 } }
            Behavior on width { SpringAnimation { spring: 4; damping: 0.35 } }
        }
        Row {
            id: segments
            x: 2
            height: parent.height
            Segment { id: tuckleSegment; name: "tuckle"; title: "Widgets" }
            Segment { id: traySegment; name: "tray"; title: "Tray" }
        }
    }

    // The widget grid, centred under the band.
    Item {
        id: grid
        objectName: "widgetGrid"
        visible: panel.mode === "tuckle"
        width: panel.widgetGrid ? panel.widgetGrid.gridWidth : 0
        height: panel.widgetGrid ? panel.widgetGrid.gridHeight : 0
        x: (panel.width - width) / 2
        y: panel.band

        Repeater {
            model: panel.widgetGrid ? panel.widgetGrid.dividers : []
            delegate: Rectangle {
                required property real modelData
                x: modelData
                width: 1
                y: grid.height * 0.15
                height: grid.height * 0.7
                color: "#2c2c2e"
            }
        }

        Repeater {
            model: panel.widgetGrid ? panel.widgetGrid.items : []
            delegate: Item {
                id: cell
                required property var modelData
                objectName: "widget-" + modelData.kind
                // Moves and resizes with the panel's spring when the layout changes.
                SpringValue { id: cx; spring: panel.kelvane.transition; target: cell.modelData.x }
                SpringValue { id: cy; spring: panel.kelvane.transition; target: cell.modelData.y }
                SpringValue { id: cw; spring: panel.kelvane.transition; target: cell.modelData.width }
                SpringValue { id: ch; spring: panel.kelvane.transition; target: cell.modelData.height }
                x: cx.value
                y: cy.value
                width: Math.max(0, cw.value)
                height: Math.max(0, ch.value)
                clip: true
                Loader {
                    anchors.fill: parent
                    sourceComponent: cell.modelData.kind === "media" ? mediaWidget
                        : cell.modelData.kind === "timer" ? timerWidget
                        : cell.modelData.kind === "calendar" ? calendarWidget
                        : cell.modelData.kind === "notes" ? notesWidget
                        : cell.modelData.kind === "todoList" ? todoWidget
                        : cell.modelData.kind === "shortcuts" ? shortcutsWidget
                        : cell.modelData.kind === "quickApps" ? quickAppsWidget
                        : cell.modelData.kind === "mirror" ? mirrorWidget : null
                }
            }
        }
    }

    Component {
        id: mediaWidget
        MediaWidget {
            media: panel.media
            style: panel.mediaStyle
        }
    }
    Component {
        id: calendarWidget
        CalendarWidget {
            calendar: panel.calendar
            calendarFiles: panel.calendarFiles
            notchWindow: panel.notchWindow
        }
    }
    Component {
        id: notesWidget
        NotesWidget {
            notes: panel.notes
            settings: panel.notesSettings
            notchWindow: panel.notchWindow
            noteWindows: panel.noteWindows
            displayKitId: panel.displayKitId
        }
    }
    Component {
        id: todoWidget
        TodoWidget {
            notes: panel.notes
            settings: panel.todoSettings
            notchWindow: panel.notchWindow
        }
    }
    Component {
        id: shortcutsWidget
        ShortcutsWidget {
            shortcuts: panel.shortcuts
            settings: panel.shortcutsSettings
        }
    }
    Component {
        id: quickAppsWidget
        QuickAppsWidget {
            apps: panel.quickApps
            notchWindow: panel.notchWindow
        }
    }
    Component {
        id: mirrorWidget
        MirrorWidget {
            mirror: panel.mirror
            camera: panel.mirrorCamera
        }
    }
    Component {
        id: timerWidget
        TimersWidget {
            timers: panel.timers
            commands: panel.timerCommands
            notchWindow: panel.notchWindow
        }
    }

    TrayView {
        anchors.fill: parent
        anchors.topMargin: panel.band
        anchors.leftMargin: panel.padding
        anchors.rightMargin: panel.padding
        anchors.bottomMargin: panel.padding
        visible: panel.mode === "tray"
        focus: visible
        tray: panel.tray
        notchWindow: panel.notchWindow
        dropZone: panel.dropZone
    }

    DropAreaView {
        anchors.fill: parent
        anchors.topMargin: panel.band
        anchors.margins: panel.padding
        visible: panel.mode === "dragging"
        dropZone: panel.dropZone
        dropSpace: panel.dropSpace
    }
}
