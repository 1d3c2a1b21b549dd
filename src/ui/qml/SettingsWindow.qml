import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import QtQuick.Window
import "Colours.js" as Colours

// The settings window: the panes listed on the left, the chosen one on the right. Everything in it
// is reached with the keyboard: Tab moves through a pane, the list takes the arrow keys, and
// Ctrl+Page Up / Page Down change the pane from anywhere.
ApplicationWindow {
    id: window
    required property QtObject settingsWindow
    property string pane: "general"
    readonly property var titles: ({ general: "General", liquid: "Glass", gestures: "Gestures",
                                     tuckle: "Widgets", tray: "Tray", dropArea: "Drop Area",
                                     liveActivities: "Live Activities", about: "About" })
    readonly property var symbols: ({ general: "⚙", liquid: "◐", gestures: "☝", tuckle: "▦",
                                      tray: "⇩", dropArea: "⤓", liveActivities: "●", about: "ℹ" })

    title: "Kelvane Settings"
    width: 760
    height: 700
    x: Screen.virtualX + (Screen.width - width) / 2
    y: Screen.virtualY + (Screen.height - height) / 3
    minimumWidth: 600
    minimumHeight: 420

    function choose(name) {
        if (settingsWindow.panes.indexOf(name) >= 0) {
            pane = name
            sidebar.currentIndex = settingsWindow.panes.indexOf(name)
            scroller.contentItem.contentY = 0
        }
    }

    Connections {
        target: window.settingsWindow
        function onPaneRequested(pane) { window.choose(pane) }
    }
    Shortcut {
        sequences: [StandardKey.NextChild, "Ctrl+PgDown"]
        onActivated: window.choose(window.settingsWindow.panes[(sidebar.currentIndex + 1) % sidebar.count])
    }
    Shortcut {
        sequences: [StandardKey.PreviousChild, "Ctrl+PgUp"]
        onActivated: window.choose(window.settingsWindow.panes[(sidebar.currentIndex + sidebar.count - 1) % sidebar.count])
    }
    Shortcut { sequence: StandardKey.Close; onActivated: window.close() }

    // What has the keyboard's focus is scrolled into view.
    onActiveFocusItemChanged: {
        const item = activeFocusItem
        const flick = scroller.contentItem
        if (!item || !flick || !panes.contains(panes.mapFromItem(item, 0, 0)))
            return
        const top = item.mapToItem(panes, 0, 0).y
        if (top < flick.contentY + 8)
            flick.contentY = Math.max(0, top - 24)
        else if (top + item.height > flick.contentY + flick.height - 8)
            flick.contentY = Math.min(panes.height - flick.height, top + item.height - flick.height + 24)
    }

    SystemPalette { id: system }
    readonly property bool dark: settingsWindow.dark
    onDarkChanged: Colours.apply(palette, dark, system)
    Component.onCompleted: Colours.apply(palette, dark, system)

    RowLayout {
        anchors.fill: parent
        spacing: 0

        Rectangle {
            Layout.preferredWidth: 190
            Layout.fillHeight: true
            color: window.palette.alternateBase
            ListView {
                id: sidebar
                objectName: "sidebar"
                anchors.fill: parent
                anchors.topMargin: 8
                model: window.settingsWindow.panes
                currentIndex: 0
                focus: true
                activeFocusOnTab: true
                keyNavigationEnabled: true
                onCurrentIndexChanged: if (currentIndex >= 0) window.choose(model[currentIndex])
                highlight: Rectangle { radius: 6; color: window.palette.highlight; opacity: sidebar.activeFocus ? 1 : 0.6 }
                highlightMoveDuration: 120
                delegate: ItemDelegate {
                    id: entry
                    required property string modelData
                    required property int index
                    objectName: "paneButton." + modelData
                    width: sidebar.width - 12
                    x: 6
                    focusPolicy: Qt.NoFocus
                    highlighted: ListView.isCurrentItem
                    contentItem: RowLayout {
                        spacing: 10
                        Label {
                            text: window.symbols[entry.modelData]
                            Layout.preferredWidth: 18
                            horizontalAlignment: Text.AlignHCenter
                            color: entry.highlighted ? window.palette.highlightedText : window.palette.text
                        }
                        Label {
                            text: window.titles[entry.modelData]
                            Layout.fillWidth: true
                            color: entry.highlighted ? window.palette.highlightedText : window.palette.text
                        }
                    }
                    background: null
                    onClicked: sidebar.currentIndex = index
                }
            }
        }

        ScrollView {
            id: scroller
            Layout.fillWidth: true
            Layout.fillHeight: true
            contentWidth: availableWidth

            Item {
                id: panes
                width: scroller.availableWidth
                property real shownHeight: 0
                implicitHeight: heading.y + heading.height + shownHeight + 40

                Label {
                    id: heading
                    x: 24; y: 18
                    text: window.titles[window.pane]
                    font.pixelSize: 22
                    font.bold: true
                }
                // Every pane is made at once, so that each control can be found, and only the
                // chosen one is shown.
                Repeater {
                    id: paneRepeater
                    model: window.settingsWindow.panes
                    delegate: Loader {
                        id: loader
                        required property string modelData
                        objectName: "pane." + modelData
                        x: 24
                        y: heading.y + heading.height + 4
                        width: panes.width - 48
                        visible: window.pane === modelData
                        onLoaded: item.width = Qt.binding(() => loader.width)
                        Binding {
                            target: panes
                            property: "shownHeight"
                            value: loader.item ? loader.item.implicitHeight : 0
                            when: loader.visible
                        }
                        Component.onCompleted: {
                            const initial = { settingsWindow: window.settingsWindow }
                            if (modelData === "tray")
                                Object.assign(initial, { key: "traySettings", title: "Tray",
                                    note: "The tray keeps the files you drop on the notch until you drag them out or remove them." })
                            if (modelData === "dropArea")
                                Object.assign(initial, { key: "dropAreaSettings", title: "Drop Area",
                                    note: "What shows while a file is dragged over the notch: the tray and the places a file can be passed on to." })
                            setSource(({ general: "GeneralPane.qml", liquid: "LiquidPane.qml", gestures: "GesturesPane.qml",
                                         tuckle: "TucklePane.qml", tray: "SizePane.qml", dropArea: "SizePane.qml",
                                         liveActivities: "LiveActivitiesPane.qml", about: "AboutPane.qml" })[modelData], initial)
                        }
                    }
                }
            }
        }
    }
}
