#pragma once

// The records of the panel's widgets. Every one starts with its size in grid cells, which is how
// the widget grid lays them out without knowing their other options.

#include "SettingsTypes.h"

namespace kelvane {

using MediaWidgetSettings = SizeOnlySettings<struct MediaWidgetTag, 5, 2>;
using MirrorWidgetSettings = SizeOnlySettings<struct MirrorWidgetTag, 2, 2>;
using QuickAppsWidgetSettings = SizeOnlySettings<struct QuickAppsWidgetTag, 4, 2>;

struct CalendarWidgetSettings : JsonRecord<CalendarWidgetSettings> {
    TuckleGrid::Size size = TuckleGrid::Size::cells(5, 3);
    bool shouldShowTodayPastEvents = false;
    bool shouldShowAllDayEvents = false;
    bool shouldShowMultiDayEvents = false;
    int numberOfDaysBehindToDisplay = 7;
    int numberOfDaysAheadToDisplay = 7;
    std::optional<std::vector<QString>> selectedCalendars;
    std::optional<bool> calendarSelectionWasExplicit;

    static constexpr auto fields()
    {
        using R = CalendarWidgetSettings;
        using json::field;
        return std::make_tuple(field("size", &R::size),
                               field("shouldShowTodayPastEvents", &R::shouldShowTodayPastEvents),
                               field("shouldShowAllDayEvents", &R::shouldShowAllDayEvents),
                               field("shouldShowMultiDayEvents", &R::shouldShowMultiDayEvents),
                               field("numberOfDaysBehindToDisplay", &R::numberOfDaysBehindToDisplay),
                               field("numberOfDaysAheadToDisplay", &R::numberOfDaysAheadToDisplay),
                               field("selectedCalendars", &R::selectedCalendars),
                               field("calendarSelectionWasExplicit", &R::calendarSelectionWasExplicit));
    }
};

struct ShortcutsWidgetSettings : JsonRecord<ShortcutsWidgetSettings> {
    TuckleGrid::Size size = TuckleGrid::Size::cells(4, 2);
    std::vector<QString> shortcutsToDisplay;
    TuckleGrid::Point shortcutButtonWidth{{}, 4};

    static constexpr auto fields()
    {
        using R = ShortcutsWidgetSettings;
        using json::field;
        return std::make_tuple(field("size", &R::size),
                               field("shortcutsToDisplay", &R::shortcutsToDisplay),
                               field("shortcutButtonWidth", &R::shortcutButtonWidth));
    }
};

struct NotesWidgetSettings : JsonRecord<NotesWidgetSettings> {
    TuckleGrid::Size size = TuckleGrid::Size::cells(5, 2);
    bool showScrollIndicator = false;
    bool codeMode = false;
    QString defaultCodeModeLanguage = QStringLiteral("markdown");
    bool fadeScrollEdges = true;

    static constexpr auto fields()
    {
        using R = NotesWidgetSettings;
        using json::field;
        return std::make_tuple(field("size", &R::size),
                               field("showScrollIndicator", &R::showScrollIndicator),
                               field("codeMode", &R::codeMode),
                               field("defaultCodeModeLanguage", &R::defaultCodeModeLanguage),
                               field("fadeScrollEdges", &R::fadeScrollEdges));
    }
};

struct TodoListWidgetSettings : JsonRecord<TodoListWidgetSettings> {
    TuckleGrid::Size size = TuckleGrid::Size::cells(4, 2);
    bool showCompleted = true;
    int autoArchiveCompletedAfterDays = 7;

    static constexpr auto fields()
    {
        using R = TodoListWidgetSettings;
        using json::field;
        return std::make_tuple(field("size", &R::size), field("showCompleted", &R::showCompleted),
                               field("autoArchiveCompletedAfterDays", &R::autoArchiveCompletedAfterDays));
    }
};

struct TimerWidgetSettings : JsonRecord<TimerWidgetSettings> {
    TuckleGrid::Size size = TuckleGrid::Size::cells(6, 3);
    bool showSeconds = true;
    bool playSound = true;

    static constexpr auto fields()
    {
        using R = TimerWidgetSettings;
        using json::field;
        return std::make_tuple(field("size", &R::size), field("showSeconds", &R::showSeconds),
                               field("playSound", &R::playSound));
    }
};

} // namespace kelvane
