#include "TransientActivity.h"

#include "ActiveLiveActivitiesManager.h"

#include "core/TimersManager.h"

namespace kelvane {

TransientActivity::TransientActivity(LiveActivity activity, QString timerKey, double seconds, TimersManager& timers,
                                     ActiveLiveActivitiesManager& activities, std::function<void()> onDropped)
    : m_activity(activity)
    , m_timerKey(std::move(timerKey))
    , m_seconds(seconds)
    , m_timers(timers)
    , m_activities(activities)
    , m_onDropped(std::move(onDropped))
{
}

TransientActivity::~TransientActivity() { m_timers.removeTimer(m_timerKey); }

void TransientActivity::raise()
{
    m_activities.insertSync(m_activity);
    m_timers.addTimer(m_timerKey, m_seconds, [this] { drop(); });
}

void TransientActivity::drop()
{
    m_timers.removeTimer(m_timerKey);
    m_activities.removeSync(m_activity);
    m_onDropped();
}

} // namespace kelvane
