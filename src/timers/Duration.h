#pragma once

#include <QStringView>

#include <optional>

namespace kelvane {

// Whole seconds from what a user types for a timer: "90" (seconds), "90s", "5m", "1h30m",
// "1m 30s", "1.5m", or a clock reading "1:30" (m:ss) or "1:02:03" (h:mm:ss). Nothing when the
// text is not a duration or is longer than a week.
std::optional<qint64> parseDuration(QStringView text);
// The longest timer there is, in seconds: a week.
inline constexpr qint64 longestDurationSeconds = 7 * 24 * 3600;

} // namespace kelvane
