import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// The general settings: how the notch opens, where it shows, how it looks.
ColumnLayout {
    id: pane
    required property QtObject general
    required property QtObject settingsWindow
    readonly property var values: general.values

    spacing: 6

    component Toggle: Switch {
        required property string field
        objectName: field
        Layout.fillWidth: true
        checked: pane.values[field] === true
        onToggled: pane.general.setField(field, checked)
    }

    component Choice: RowLayout {
        id: choice
        required property string field
        required property string label
        // Stored value and title of each option.
        required property var options
        Layout.fillWidth: true
        Label { text: choice.label; Layout.fillWidth: true }
        ComboBox {
            Layout.preferredWidth: 190
            textRole: "title"
            valueRole: "value"
            model: choice.options
            currentIndex: choice.options.findIndex(option => option.value === pane.values[choice.field])
            onActivated: pane.general.setField(choice.field, currentValue)
        }
    }

    component Number: RowLayout {
        id: number
        required property string field
        required property string label
        property int from: -50
        property int to: 50
        Layout.fillWidth: true
        Label { text: number.label; Layout.fillWidth: true }
        SpinBox {
            from: number.from
            to: number.to
            editable: true
            value: pane.values[number.field] || 0
            onValueModified: pane.general.setField(number.field, value)
        }
    }

    Label { text: "Opening"; font.bold: true; Layout.topMargin: 12 }
    Toggle { field: "alwaysOpenNotchOnHover"; text: "Open the notch when the pointer rests on it" }
    Toggle { field: "preventUnhoverCloseWhenTyping"; text: "Keep the notch open while typing in it" }
    Toggle { field: "lockKVWhenTyping"; text: "Lock the notch while typing in it" }
    Toggle { field: "disableHaptics"; text: "Turn off haptic feedback" }

    Label { text: "Screens"; font.bold: true; Layout.topMargin: 12 }
    Toggle { field: "enableOnNonNotchScreens"; text: "Show a notch on screens without a camera notch" }
    Choice {
        field: "showInFullscreen"
        label: "Over full-screen windows"
        options: [{ value: "allMonitors", title: "On every screen" },
                  { value: "notchedScreens", title: "On notched screens" },
                  { value: "never", title: "Never" }]
    }

    Label { text: "Look"; font.bold: true; Layout.topMargin: 12 }
    Toggle { field: "transluscent"; text: "Translucent glass" }
    Toggle { field: "preferRoundButtons"; text: "Round buttons" }
    Toggle { field: "transparentHandle"; text: "Transparent handle" }
    Number { field: "notchWidthFineTune"; label: "Notch width adjustment (points)" }
    Number { field: "notchHeightFineTune"; label: "Notch height adjustment (points)"; from: -20; to: 20 }
    Number { field: "contentPadding"; label: "Panel padding (points)"; from: 0; to: 40 }

    Label { text: "Media"; font.bold: true; Layout.topMargin: 12 }
    Choice {
        field: "preferredMediaSource"
        label: "Follow"
        options: [{ value: "systemWide", title: "Any player" },
                  { value: "com.apple.Music", title: "Music" },
                  { value: "com.spotify.client", title: "Spotify" }]
    }
    Toggle { field: "demoMode"; text: "Demo mode" }

    RowLayout {
        Layout.topMargin: 18
        Layout.bottomMargin: 12
        Button { text: "Reset to Defaults"; onClicked: pane.settingsWindow.resetDefaults() }
        Item { Layout.fillWidth: true }
        Button { text: "Quit Kelvane"; onClicked: pane.settingsWindow.quit() }
    }
}
