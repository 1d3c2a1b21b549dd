import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// What swipes on the notch do.
ColumnLayout {
    id: pane
    required property QtObject settingsWindow
    readonly property QtObject gestures: settingsWindow.setting("gestureControlSettings")
    spacing: 4

    SettingSection {
        title: "Swipes"
        note: "Two fingers on the touchpad, or the scroll wheel, over the notch."
        SettingSwitch { record: pane.gestures; field: "allowGestures"; text: "Swipe on the notch" }
        SettingSwitch {
            record: pane.gestures; field: "controlOpenState"; enabled: pane.gestures.values.allowGestures === true
            text: "Swipe down to open, up to close"
        }
        SettingSwitch {
            record: pane.gestures; field: "controlMedia"; enabled: pane.gestures.values.allowGestures === true
            text: "Swipe sideways to change track"
        }
        SettingSwitch {
            record: pane.gestures; field: "invertMediaGestures"; enabled: pane.gestures.values.allowGestures === true
            text: "Reverse the sideways direction"
        }
    }
}
