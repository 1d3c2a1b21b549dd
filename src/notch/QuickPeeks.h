#pragma once

#include "QuickPeek.h"
#include "WindowsManager.h"

#include "core/Scheduler.h"
#include "settings/SettingValue.h"

#include <QObject>

namespace kelvane {

// Shows new content for a moment on the closed notches (a new track's title and artist) and then
// takes it away. Only closed, shown notches peek: an open panel already shows the content, and a
// hidden notch stays out of the way. Off when `enableQuickPeek` is.
class QuickPeeks : public QObject {
    Q_OBJECT
public:
    // How long a peek stays, in seconds.
    static constexpr double duration = 2.5;

    QuickPeeks(Scheduler& scheduler, SettingsStore& settings, WindowsManager& windows, QObject* parent = nullptr);

    // Shows `peek` on every closed notch, in place of the one shown.
    void post(const QuickPeek& peek);

private:
    void clear();

    Scheduler& m_scheduler;
    WindowsManager& m_windows;
    SettingValue<LiveActivitiesSettings> m_settings;
    ScheduledTask m_end;
};

} // namespace kelvane
