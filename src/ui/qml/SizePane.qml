import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// A panel whose one setting is its size in grid cells: the tray, the drop area.
ColumnLayout {
    id: pane
    required property QtObject settingsWindow
    required property string key
    required property string title
    required property string note
    spacing: 4

    SettingSection {
        title: pane.title
        note: pane.note
        SettingGridSize { record: pane.settingsWindow.setting(pane.key); label: "Size"; maximum: 16 }
    }
}
