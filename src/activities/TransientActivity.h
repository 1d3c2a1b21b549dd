#pragma once

#include "settings/SettingsTypes.h"

#include <QString>

#include <functional>

namespace kelvane {

class ActiveLiveActivitiesManager;
class TimersManager;

// An activity raised for a few seconds under a keyed dismissal timer: raising it again starts the
// seconds anew; when they run out, or when it is dropped, it leaves the raised set and `onDropped`
// runs. Going away, it takes its timer with it.
class TransientActivity {
public:
    TransientActivity(LiveActivity activity, QString timerKey, double seconds, TimersManager& timers,
                      ActiveLiveActivitiesManager& activities, std::function<void()> onDropped);
    ~TransientActivity();
    TransientActivity(const TransientActivity&) = delete;
    TransientActivity& operator=(const TransientActivity&) = delete;

    void raise();
    void drop();

private:
    LiveActivity m_activity;
    QString m_timerKey;
    double m_seconds;
    TimersManager& m_timers;
    ActiveLiveActivitiesManager& m_activities;
    std::function<void()> m_onDropped;
};

} // namespace kelvane
