import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import QtQuick.Window

// The settings window: a list of panes on the left, the chosen pane on the right.
ApplicationWindow {
    id: window
    required property QtObject settingsWindow
    required property QtObject general
    property string pane: "general"

    title: "Settings"
    width: 640
    height: 680
    x: Screen.virtualX + (Screen.width - width) / 2
    y: Screen.virtualY + (Screen.height - height) / 3
    minimumWidth: 520
    minimumHeight: 420

    Connections {
        target: window.settingsWindow
        function onPaneRequested(pane) {
            if (window.settingsWindow.panes.indexOf(pane) >= 0)
                window.pane = pane
        }
    }

    RowLayout {
        anchors.fill: parent
        spacing: 0

        ListView {
            id: sidebar
            Layout.preferredWidth: 160
            Layout.fillHeight: true
            model: [{ name: "general", title: "General" }]
            delegate: ItemDelegate {
                required property var modelData
                width: sidebar.width
                text: modelData.title
                highlighted: window.pane === modelData.name
                onClicked: window.pane = modelData.name
            }
        }

        ScrollView {
            Layout.fillWidth: true
            Layout.fillHeight: true
            contentWidth: availableWidth

            GeneralPane {
                x: 20
                width: parent.width - 40
                visible: window.pane === "general"
                general: window.general
                settingsWindow: window.settingsWindow
            }
        }
    }
}
