import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// The widget panel: which widgets, in which order, on what backdrop, and each widget's own options.
ColumnLayout {
    id: pane
    required property QtObject settingsWindow
    readonly property QtObject tuckle: settingsWindow.setting("tuckleSettings")
    function setting(key) { return settingsWindow.setting(key) }
    spacing: 4

    SettingSection {
        title: "Widgets"
        SettingSwitch { record: pane.tuckle; field: "enabled"; text: "Show the widgets tab" }
        WidgetOrder {
            record: pane.tuckle
            widgets: [{ value: "media", title: "Media" }, { value: "calendar", title: "Calendar" },
                      { value: "notes", title: "Notes" }, { value: "todoList", title: "To-dos" },
                      { value: "timer", title: "Timers" }, { value: "shortcuts", title: "Shortcuts" },
                      { value: "quickApps", title: "Quick apps" }, { value: "mirror", title: "Mirror" }]
        }
        SettingGridSize { record: pane.tuckle; label: "Panel size"; maximum: 16 }
        SettingNumber { record: pane.tuckle; field: "widgetsPadding"; label: "Space between widgets"; unit: "points"; from: 0; to: 40 }
        SettingSwitch { record: pane.tuckle; field: "showDividers"; text: "Lines between widgets" }
    }

    SettingSection {
        title: "Backdrop"
        SettingChoice {
            record: pane.tuckle
            field: "wallpaper"
            label: "Behind the widgets"
            options: [{ value: "none", title: "Nothing" }, { value: "clouds", title: "Clouds" },
                      { value: "aurora", title: "Aurora" }, { value: "petals", title: "Petals" },
                      { value: "sea", title: "Sea" }]
        }
        SettingSlider { record: pane.tuckle; field: "wallpaperBlur"; label: "Blur"; from: 0; to: 20; stepSize: 0.5; decimals: 1; unit: "pt" }
    }

    SettingSection {
        title: "Media"
        SettingGridSize { record: pane.setting("mediaWidgetSettings") }
    }

    SettingSection {
        id: calendar
        title: "Calendar"
        readonly property QtObject record: pane.setting("calendarWidgetSettings")
        SettingGridSize { record: calendar.record }
        SettingSwitch { record: calendar.record; field: "shouldShowTodayPastEvents"; text: "Show today's past events" }
        SettingSwitch { record: calendar.record; field: "shouldShowAllDayEvents"; text: "Show all-day events" }
        SettingSwitch { record: calendar.record; field: "shouldShowMultiDayEvents"; text: "Show events of several days" }
        SettingNumber { record: calendar.record; field: "numberOfDaysBehindToDisplay"; label: "Days before today"; unit: "days"; from: 0; to: 60 }
        SettingNumber { record: calendar.record; field: "numberOfDaysAheadToDisplay"; label: "Days after today"; unit: "days"; from: 0; to: 60 }
        SettingSwitch { record: calendar.record; field: "calendarSelectionWasExplicit"; text: "Show only the calendars listed below" }
        SettingList {
            record: calendar.record; field: "selectedCalendars"; emptyIsUnset: true
            label: "Calendars"; placeholder: "Calendar name or identifier"
            enabled: calendar.record.values.calendarSelectionWasExplicit === true
        }
    }

    SettingSection {
        id: notes
        title: "Notes"
        readonly property QtObject record: pane.setting("notesWidgetSettings")
        SettingGridSize { record: notes.record }
        SettingSwitch { record: notes.record; field: "codeMode"; text: "New notes are code" }
        SettingChoice {
            record: notes.record; field: "defaultCodeModeLanguage"; label: "Language of code"
            options: pane.settingsWindow.codeLanguages.map(name => ({ value: name, title: name }))
        }
        SettingSwitch { record: notes.record; field: "showScrollIndicator"; text: "Show the scroll bar" }
        SettingSwitch { record: notes.record; field: "fadeScrollEdges"; text: "Fade the edges of a long note" }
    }

    SettingSection {
        id: todos
        title: "To-dos"
        readonly property QtObject record: pane.setting("todoListWidgetSettings")
        SettingGridSize { record: todos.record }
        SettingSwitch { record: todos.record; field: "showCompleted"; text: "Show completed to-dos" }
        SettingNumber { record: todos.record; field: "autoArchiveCompletedAfterDays"; label: "Put completed to-dos away after"; unit: "days"; from: 0; to: 365 }
    }

    SettingSection {
        id: timers
        title: "Timers"
        readonly property QtObject record: pane.setting("timerWidgetSettings")
        SettingGridSize { record: timers.record }
        SettingSwitch { record: timers.record; field: "showSeconds"; text: "Show seconds" }
        SettingSwitch { record: timers.record; field: "playSound"; text: "Play a sound when a timer ends" }
    }

    SettingSection {
        id: shortcuts
        title: "Shortcuts"
        readonly property QtObject record: pane.setting("shortcutsWidgetSettings")
        SettingGridSize { record: shortcuts.record }
        SettingNumber { record: shortcuts.record; field: "shortcutButtonWidth"; member: "value"; label: "Button width"; unit: "cells"; from: 1; to: 12 }
        SettingList {
            record: shortcuts.record; field: "shortcutsToDisplay"
            label: "Shortcuts shown, in order"; placeholder: "Name of a shortcut in the Shortcuts folder"
        }
    }

    SettingSection {
        title: "Quick Apps"
        note: "Add and remove applications from the widget itself, or with kelvanectl apps."
        SettingGridSize { record: pane.setting("quickAppsWidgetSettings") }
    }

    SettingSection {
        title: "Mirror"
        SettingGridSize { record: pane.setting("mirrorWidgetSettings") }
        SettingChoice {
            record: pane.setting("defaultMirrorDevice")
            label: "Camera"
            options: [{ value: "", title: "The system's default" }].concat(pane.settingsWindow.cameras())
        }
        SettingSwitch { record: pane.setting("mirrorCameraInputWhenAvail"); text: "Start the camera when the widget shows" }
    }
}
