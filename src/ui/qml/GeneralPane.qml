import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// How the notch opens, where it shows and how it looks; starting at login; the introduction.
ColumnLayout {
    id: pane
    required property QtObject settingsWindow
    readonly property QtObject general: settingsWindow.setting("generalSettings")
    spacing: 4

    SettingSection {
        title: "Start"
        Switch {
            objectName: "startAtLogin"
            Layout.fillWidth: true
            text: "Start Kelvane when you log in"
            checked: pane.settingsWindow.startAtLogin
            onToggled: pane.settingsWindow.startAtLogin = checked
        }
        Label {
            visible: text !== ""
            text: pane.settingsWindow.startAtLoginError
            color: "#c01c28"
            wrapMode: Text.Wrap
            Layout.fillWidth: true
        }
        RowLayout {
            Label { text: "See how Kelvane works in the notch itself"; Layout.fillWidth: true; wrapMode: Text.Wrap }
            Button {
                objectName: "intro"
                text: "Show the Introduction"
                onClicked: pane.settingsWindow.setting("intro").setValue(true)
            }
        }
    }

    SettingSection {
        title: "Opening"
        SettingSwitch { record: pane.general; field: "alwaysOpenNotchOnHover"; text: "Open the notch when the pointer rests on it" }
        SettingSwitch { record: pane.general; field: "preventUnhoverCloseWhenTyping"; text: "Keep the notch open while typing in it" }
        SettingSwitch { record: pane.general; field: "lockKVWhenTyping"; text: "Lock the notch while typing in it" }
        SettingChoice {
            record: pane.settingsWindow.setting("preferredOpenMode")
            label: "Open on"
            options: [{ value: "tuckle", title: "Widgets" }, { value: "tray", title: "Tray" }]
        }
        SettingSwitch { record: pane.settingsWindow.setting("rememberLastOpenTab"); text: "Open on the tab used last" }
        SettingSwitch { record: pane.settingsWindow.setting("autoOpenTrayWithFiles"); text: "Open on the tray when it holds files" }
        SettingSwitch { record: pane.general; field: "disableHaptics"; text: "Turn off touchpad feedback" }
    }

    SettingSection {
        title: "Screens"
        SettingSwitch { record: pane.general; field: "enableOnNonNotchScreens"; text: "Show a notch on screens without a camera notch" }
        SettingChoice {
            record: pane.general
            field: "showInFullscreen"
            label: "Over full-screen windows"
            options: [{ value: "allMonitors", title: "On every screen" },
                      { value: "notchedScreens", title: "On notched screens" },
                      { value: "never", title: "Never" }]
        }
    }

    SettingSection {
        title: "Size and Look"
        note: "Match the notch to your screen's camera housing: the adjusting face shows on the notch while you change it."
        RowLayout {
            SettingNumber {
                record: pane.general; field: "notchWidthFineTune"
                label: "Width adjustment"; unit: "points"; from: -100; to: 100
            }
            Button { text: "Adjust on the Notch"; onClicked: pane.settingsWindow.calibrate("width") }
        }
        RowLayout {
            SettingNumber {
                record: pane.general; field: "notchHeightFineTune"
                label: "Height adjustment"; unit: "points"; from: -20; to: 20
            }
            Button { text: "Adjust on the Notch"; onClicked: pane.settingsWindow.calibrate("height") }
        }
        SettingNumber { record: pane.general; field: "contentPadding"; label: "Panel padding"; unit: "points"; from: 0; to: 40 }
        SettingGridSize { record: pane.general; field: "handleSize"; label: "Handle of a hidden notch"; inPoints: true; maximum: 400 }
        SettingSwitch { record: pane.general; field: "transparentHandle"; text: "Transparent handle" }
        SettingSwitch { record: pane.general; field: "transluscent"; text: "Glass notch (set it up under Glass)" }
        SettingSwitch { record: pane.general; field: "preferRoundButtons"; text: "Round buttons" }
    }

    SettingSection {
        title: "Media"
        SettingChoice {
            record: pane.general
            field: "preferredMediaSource"
            label: "Follow"
            options: [{ value: "systemWide", title: "Any player" },
                      { value: "com.apple.Music", title: "Music" },
                      { value: "com.spotify.client", title: "Spotify" }]
        }
        SettingSwitch { record: pane.general; field: "demoMode"; text: "Demo mode: show a sample track" }
    }

    RowLayout {
        Layout.topMargin: 18
        Layout.bottomMargin: 12
        Button { text: "Reset to Defaults"; onClicked: pane.settingsWindow.resetDefaults() }
        Item { Layout.fillWidth: true }
        Button { text: "Quit Kelvane"; onClicked: pane.settingsWindow.quit() }
    }
}
