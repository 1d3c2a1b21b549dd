#pragma once

#include <optional>

namespace kelvane {

// What the battery monitor knows of the battery; a desktop without one has no status at all.
struct BatteryStatus {
    // Absent while the power source has not said whether it charges.
    std::optional<bool> isCharging;
    // 0 to 1.
    double level = 0;
};

} // namespace kelvane
