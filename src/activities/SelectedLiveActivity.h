#pragma once

#include "LiveActivitySelectionManager.h"

#include "settings/SettingValue.h"

#include <QJsonObject>
#include <QObject>

#include <functional>

namespace kelvane {

class ActiveLiveActivitiesManager;

// The one activity the closed notch's top bar shows now, kept current as activities are raised
// and dropped and as the settings change.
class SelectedLiveActivity : public QObject {
    Q_OBJECT
    // The activity's raw value, or empty when the top bar shows nothing.
    Q_PROPERTY(QString name READ name NOTIFY selectedChanged)
    Q_PROPERTY(QString displayName READ displayName NOTIFY selectedChanged)
    Q_PROPERTY(QString iconName READ iconName NOTIFY selectedChanged)
    // Screens without a camera notch show no activity when the user asked for that.
    Q_PROPERTY(bool hiddenInNonNotchedScreens READ hiddenInNonNotchedScreens NOTIFY selectedChanged)
    // The activity a screen showing a full-screen window shows: the same choice made without the
    // activities the user keeps out of full screen.
    Q_PROPERTY(QString fullScreenName READ fullScreenName NOTIFY selectedChanged)
public:
    using BatteryStatusSource = std::function<std::optional<BatteryStatus>()>;

    SelectedLiveActivity(ActiveLiveActivitiesManager& activities, const LiveActivitySelectionManager& selection,
                         SettingsStore& settings, QObject* parent = nullptr);

    // Until a power source is set, the machine is taken to have no battery.
    void setBatteryStatusSource(BatteryStatusSource source);
    // Selects again, for inputs that change without telling (the battery, the calendar's clock).
    void refresh();

    std::optional<LiveActivity> selected() const { return m_selected; }
    QString name() const;
    QString displayName() const;
    QString iconName() const;
    std::optional<LiveActivity> fullScreenSelected() const { return m_fullScreenSelected; }
    QString fullScreenName() const;
    bool hiddenInNonNotchedScreens() const { return m_hiddenInNonNotchedScreens; }

    // The raised set, the shown set and the selected activity, by raw value.
    QJsonObject state() const;

Q_SIGNALS:
    void selectedChanged();

private:
    ActiveLiveActivitiesManager& m_activities;
    const LiveActivitySelectionManager& m_selection;
    SettingValue<CalendarLiveActivitySettings> m_calendarSettings;
    BatteryStatusSource m_batteryStatus;
    std::optional<LiveActivity> m_selected;
    std::optional<LiveActivity> m_fullScreenSelected;
    bool m_hiddenInNonNotchedScreens = false;
};

} // namespace kelvane
