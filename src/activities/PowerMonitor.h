#pragma once

#include "PowerSource.h"
#include "TransientActivity.h"

#include "settings/SettingValue.h"

#include <QJsonObject>
#include <QObject>

#include <optional>

namespace kelvane {

class ActiveLiveActivitiesManager;
class TimersManager;

// The battery changes that raise the battery activity for a moment.
enum class BatteryEvent { pluggedIn, unplugged, fullyCharged, low };
QString rawValue(BatteryEvent event);

// Which change from `before` to `now` the battery activity announces, as the user's settings ask:
// external power coming or going, the charge becoming full, or the level falling below the
// low-battery threshold while on battery. A first reading, or one whose state is unknown, is no
// change.
std::optional<BatteryEvent> batteryEvent(const PowerReading& before, const PowerReading& now,
                                         const BatteryLiveActivitySettings& settings);

// Follows the battery and raises the battery activity for four seconds on the changes the user
// wants to see. Main thread only.
class PowerMonitor : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool hasBattery READ hasBattery NOTIFY changed)
    Q_PROPERTY(int percentage READ percentage NOTIFY changed)
    Q_PROPERTY(bool charging READ charging NOTIFY changed)
    Q_PROPERTY(bool pluggedIn READ pluggedIn NOTIFY changed)
    // The change being announced ("pluggedIn", "unplugged", "fullyCharged", "low"), or empty.
    Q_PROPERTY(QString announced READ announced NOTIFY changed)
    // The level is below the user's low-battery threshold and nothing charges it.
    Q_PROPERTY(bool low READ low NOTIFY changed)
public:
    using BatteryStatus = kelvane::BatteryStatus;
    static constexpr const char* dismissKey = "BatteryActivityDismiss";
    static constexpr double dismissDelaySeconds = 4.0;

    struct Dependencies {
        PowerSource& source;
        TimersManager& timers;
        ActiveLiveActivitiesManager& liveActivities;
        SettingsStore& settings;
    };
    explicit PowerMonitor(const Dependencies& dependencies, QObject* parent = nullptr);

    // Absent on a machine without a battery and before the first reading.
    std::optional<BatteryStatus> batteryStatus() const;
    const std::optional<PowerReading>& reading() const { return m_reading; }

    bool hasBattery() const { return m_reading && m_reading->present; }
    int percentage() const;
    bool charging() const;
    bool pluggedIn() const;
    QString announced() const { return m_event ? rawValue(*m_event) : QString(); }
    bool low() const;

    // For `kelvanectl activities`.
    QJsonObject state() const;

Q_SIGNALS:
    void changed();

private:
    void read(const PowerReading& reading);
    void announce(BatteryEvent event);

    Dependencies m_deps;
    SettingValue<BatteryLiveActivitySettings> m_settings;
    std::optional<PowerReading> m_reading;
    std::optional<BatteryEvent> m_event;
    TransientActivity m_shown;
};

} // namespace kelvane
