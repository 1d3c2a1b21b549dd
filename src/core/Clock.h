#pragma once

#include <QDateTime>

#include <optional>

#include <chrono>

namespace kelvane {

// Every "now" of the rules comes from a Clock, so that tests can move time at will.
class Clock {
public:
    virtual ~Clock() = default;
    // Monotonic time since an arbitrary origin; what delays and lifetimes are measured in.
    virtual std::chrono::nanoseconds monotonic() const = 0;
    // Wall-clock time, for what is shown to the user or stored as a date.
    virtual QDateTime wallTime() const = 0;
};

// Seconds since 2001-01-01 00:00:00 UTC, the reference date of stored timer dates.
double secondsSinceReferenceDate(const QDateTime& time);
// Nothing for a number of seconds that no date can stand for (not finite, or beyond the range of
// dates).
std::optional<QDateTime> dateFromReferenceSeconds(double seconds);

// Hours and minutes as the user's locale writes them (some locales' short form has seconds too).
QString clockTime(const QTime& time);

} // namespace kelvane
