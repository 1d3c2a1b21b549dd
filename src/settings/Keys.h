#pragma once

#include "Key.h"
#include "LiquidSettings.h"
#include "LiveActivityRecords.h"
#include "PanelSettings.h"
#include "WidgetSettings.h"

#include <QVariantMap>

// Every setting with its type and default, listed once.
#define KELVANE_SETTINGS_KEYS(X)                                                                   \
    X(bool, intro, true)                                                                           \
    X(QString, lastVersionNumber, QStringLiteral("0"))                                             \
    X(QString, preferredOpenMode, QStringLiteral("tuckle"))                                        \
    X(bool, autoOpenTrayWithFiles, false)                                                          \
    X(bool, rememberLastOpenTab, false)                                                            \
    X(QString, defaultMirrorDevice, QString())                                                     \
    X(bool, mirrorCameraInputWhenAvail, true)                                                      \
    X(GeneralSettings, generalSettings, {})                                                        \
    X(GestureControlSettings, gestureControlSettings, {})                                          \
    X(LiveActivitiesSettings, liveActivitiesSettings, {})                                          \
    X(MediaLiveActivitySettings, mediaLiveActivitySettings, {})                                    \
    X(CalendarLiveActivitySettings, calendarLiveActivitySettings, {})                              \
    X(BatteryLiveActivitySettings, batteryLiveActivitySettings, {})                                \
    X(TuckleSettings, tuckleSettings, {})                                                          \
    X(TraySettings, traySettings, {})                                                              \
    X(DropAreaSettings, dropAreaSettings, {})                                                      \
    X(MediaWidgetSettings, mediaWidgetSettings, {})                                                \
    X(CalendarWidgetSettings, calendarWidgetSettings, {})                                          \
    X(ShortcutsWidgetSettings, shortcutsWidgetSettings, {})                                        \
    X(MirrorWidgetSettings, mirrorWidgetSettings, {})                                              \
    X(NotesWidgetSettings, notesWidgetSettings, {})                                                \
    X(TodoListWidgetSettings, todoListWidgetSettings, {})                                          \
    X(QuickAppsWidgetSettings, quickAppsWidgetSettings, {})                                        \
    X(TimerWidgetSettings, timerWidgetSettings, {})                                                \
    X(LiquidBasicSettings, liquidBasicSettings, {})                                                \
    X(LiquidGlassSettings, liquidGlassSettings, {})

namespace kelvane::Keys {

// Each key is created on first use (thread-safely) and lives for the rest of the process.
#define KELVANE_DECLARE_KEY(Type, keyName, initial) const Key<Type>& keyName();
KELVANE_SETTINGS_KEYS(KELVANE_DECLARE_KEY)
#undef KELVANE_DECLARE_KEY

// Every key's name and stored default: the registration layer of the defaults domain.
QVariantMap registrationDefaults();

} // namespace kelvane::Keys
