import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// What the closed notch shows beside the camera, and the level indicator of the volume and
// brightness keys.
ColumnLayout {
    id: pane
    required property QtObject settingsWindow
    readonly property QtObject activities: settingsWindow.setting("liveActivitiesSettings")
    readonly property QtObject media: settingsWindow.setting("mediaLiveActivitySettings")
    readonly property QtObject calendar: settingsWindow.setting("calendarLiveActivitySettings")
    readonly property QtObject battery: settingsWindow.setting("batteryLiveActivitySettings")
    readonly property var kinds: [{ value: "media", title: "What is playing" }, { value: "tray", title: "Tray" },
                                  { value: "calendar", title: "Next event" }, { value: "batteryVisualizer", title: "Battery" },
                                  { value: "bluetoothDevice", title: "Bluetooth device" },
                                  { value: "timerExpired", title: "Ended timer" },
                                  { value: "updateAvailable", title: "Update available" }]
    readonly property bool gif: media.values.effect === "gif"
    spacing: 4

    SettingSection {
        title: "Live Activities"
        SettingSwitch { record: pane.activities; field: "enabled"; text: "Show live activities on the closed notch" }
        SettingChecklist { record: pane.activities; field: "enabledLiveActivities"; label: "Show"; options: pane.kinds }
        SettingChecklist {
            record: pane.activities; field: "liveActivitiesHiddenInFullscreen"
            label: "Hide over full-screen windows"; options: pane.kinds
        }
        SettingSwitch { record: pane.activities; field: "hiddenInNonNotchedScreens"; text: "Only on screens with a camera notch" }
        SettingSwitch { record: pane.activities; field: "interactive"; text: "Click an activity to open what it shows" }
        SettingNumber {
            record: pane.activities; field: "inactivityTimeoutInSecs"
            label: "Put paused media away after"; unit: "seconds"; from: 1; to: 600
        }
        SettingSwitch { record: pane.activities; field: "enableQuickPeek"; text: "Peek at news below the closed notch" }
        SettingSwitch { record: pane.activities; field: "quickPeekEvent"; text: "Peek when an event is near" }
        SettingSwitch { record: pane.activities; field: "unhideAutomatically"; text: "Bring a hidden notch back for news" }
    }

    SettingSection {
        title: "Volume and Brightness"
        note: "The level shows in the notch when you press the volume or brightness keys."
        SettingSwitch { record: pane.activities; field: "enableHUDReplacement"; text: "Show the level in the notch" }
        SettingSwitch { record: pane.activities; field: "HUDReplacementShouldShowInAllScreens"; text: "On every screen" }
        SettingSwitch { record: pane.activities; field: "disableColorsOnAudioHUDReplacement"; text: "Plain white volume level" }
    }

    SettingSection {
        title: "What Is Playing"
        SettingChoice {
            record: pane.media; field: "effect"; label: "Beside the artwork"
            options: [{ value: "audioSpectrograph", title: "Spectrum" }, { value: "waves", title: "Waves" },
                      { value: "vibratingCircle", title: "Trembling ring" }, { value: "gif", title: "Animation" }]
        }
        SettingSwitch { record: pane.media; field: "isAutomaticallyColored"; text: "Take colours from the artwork" }
        SettingSlider { record: pane.media; field: "albumCornerRadius"; label: "Artwork corners"; from: 0; to: 16; stepSize: 0.5; decimals: 1; unit: "pt" }
        SettingChoice {
            record: pane.media; field: "selectedGIF"; label: "Animation"; enabled: pane.gif
            options: [{ value: "equalizerBars", title: "Equaliser" }, { value: "pixelHeart", title: "Pixel heart" },
                      { value: "retroCassette", title: "Cassette" }, { value: "spinningVinyl", title: "Vinyl" }]
        }
        SettingFile {
            record: pane.media; field: "customGifURL"; enabled: pane.gif
            label: "Your own animation (replaces the one above)"
            nameFilters: ["Animations (*.gif *.webp *.apng *.png)", "All files (*)"]
        }
        SettingSlider { record: pane.media; field: "gifScale"; label: "Animation size"; from: 0.25; to: 3; enabled: pane.gif }
        SettingSlider { record: pane.media; field: "gifHorizontalOffset"; label: "Across"; from: -20; to: 20; stepSize: 0.5; decimals: 1; unit: "pt"; enabled: pane.gif }
        SettingSlider { record: pane.media; field: "gifVerticalOffset"; label: "Down"; from: -20; to: 20; stepSize: 0.5; decimals: 1; unit: "pt"; enabled: pane.gif }
        SettingChoice {
            record: pane.media; field: "gifScalingQuality"; label: "Scaling"; enabled: pane.gif
            options: [{ value: "Pixel-perfect", title: "Pixel-perfect" }, { value: "Interpolated", title: "Smooth" }]
        }
    }

    SettingSection {
        title: "Next Event"
        SettingNumber { record: pane.calendar; field: "preEventWindow"; label: "Show before it starts"; unit: "minutes"; from: 1; to: 240 }
        SettingSwitch { record: pane.calendar; field: "onlyEventsWithMeetings"; text: "Only events with an online meeting" }
        SettingSwitch { record: pane.calendar; field: "showEventTimeLapsed"; text: "Show how long ago it started" }
        SettingAppearance { record: pane.calendar; field: "appearanceMode"; label: "Shown" }
    }

    SettingSection {
        title: "Battery"
        SettingNumber { record: pane.battery; field: "lowBatteryThreshold"; label: "Low battery at"; unit: "%"; from: 1; to: 50 }
        SettingSwitch { record: pane.battery; field: "showLowBatteryWarning"; text: "Warn when the battery is low" }
        SettingSwitch { record: pane.battery; field: "showWhenPluggedIn"; text: "Show when plugged in" }
        SettingSwitch { record: pane.battery; field: "showWhenUnplugged"; text: "Show when unplugged" }
        SettingSwitch { record: pane.battery; field: "showWhenFullyCharged"; text: "Show when fully charged" }
    }
}
