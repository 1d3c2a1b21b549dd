#pragma once

#include <QObject>
#include <QString>

#include <optional>

namespace kelvane {

// What the battery monitor knows of the battery; a desktop without one has no status at all.
struct BatteryStatus {
    // Absent while the power source has not said whether it charges.
    std::optional<bool> isCharging;
    // 0 to 1.
    double level = 0;
};

// The battery's charge state as the power service reports it.
enum class ChargeState { unknown, charging, discharging, empty, fullyCharged, pendingCharge, pendingDischarge };

// One look at the machine's battery (all its batteries taken together).
struct PowerReading {
    // False on a machine without a battery.
    bool present = false;
    // 0 to 100.
    double percentage = 0;
    ChargeState state = ChargeState::unknown;
    // Seconds; 0 when the service does not know.
    qint64 timeToEmpty = 0;
    qint64 timeToFull = 0;

    friend bool operator==(const PowerReading&, const PowerReading&) = default;
};

// Whether the machine runs on external power in this state; unknown says nothing.
std::optional<bool> isOnExternalPower(ChargeState state);
QString rawValue(ChargeState state);

// The machine's power service, followed without ever blocking the main thread.
class PowerSource : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    // Asks for the first reading and follows the changes.
    virtual void start() = 0;

Q_SIGNALS:
    void readingChanged(const kelvane::PowerReading& reading);
    // The service cannot be reached; nothing else is said after this until it comes back.
    void unavailable(const QString& reason);
};

} // namespace kelvane
