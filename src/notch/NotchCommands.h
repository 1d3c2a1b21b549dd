#pragma once

#include <QJsonObject>
#include <QString>

#include <functional>
#include <optional>

namespace kelvane {

class ScreenProvider;
class WindowsManager;
struct DisplayKit;

// What scripts may do to the notches, by screen: each operation answers an error message, or
// nothing when it was done. Without a screen, `open` and `select` act on the main screen's notch
// (where the user is looking) and `close` and `hide` on every notch.
class NotchCommands {
public:
    NotchCommands(WindowsManager& windows, ScreenProvider& screens);

    // Every notch: its screen, window, notch sizes and state.
    QJsonObject state() const;

    using Error = std::optional<QString>;
    // Opens as a hover would (the usual first tab), or on the tab given ("tuckle" or "tray").
    Error open(const QString& tab, const QString& screen);
    Error close(const QString& screen);
    Error hide(const QString& screen);
    // "width" or "height" shows the calibration face for that offset on a notch (the main
    // screen's unless one is named), closed; "done" leaves it on every notch.
    Error calibrate(const QString& what, const QString& screen);
    Error select(const QString& tab, const QString& screen);

private:
    enum class Default { mainScreen, everyScreen };
    // Runs `action` on the notches a command acts on; an error when there are none.
    Error forEachTarget(const QString& screen, Default fallback, const std::function<void(DisplayKit&)>& action);
    static Error checkTab(const QString& tab);

    WindowsManager& m_windows;
    ScreenProvider& m_screens;
};

} // namespace kelvane
