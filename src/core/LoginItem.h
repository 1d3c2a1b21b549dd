#pragma once

#include <QString>

#include <optional>

namespace kelvane {

// Whether the application starts when the user logs in, as the desktop keeps it.
class LoginItem {
public:
    virtual ~LoginItem() = default;
    virtual bool isEnabled() const = 0;
    // Starts or stops starting at login; the reason when the desktop's record could not be changed.
    virtual std::optional<QString> setEnabled(bool enabled) = 0;
};

} // namespace kelvane
