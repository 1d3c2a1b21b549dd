#include "TimersManager.h"

#include "MainThread.h"

namespace kelvane {

namespace {
TimersManager* s_shared = nullptr;
}

TimersManager::TimersManager(Scheduler& scheduler)
    : m_scheduler(scheduler)
{
}

void TimersManager::addTimer(const QString& key, double delaySeconds, std::function<void()> callback)
{
    assertMainThread();
    m_timers.erase(key);
    m_timers.emplace(key, m_scheduler.schedule(secondsToDelay(delaySeconds),
                                               [this, key, cb = std::move(callback)] {
                                                   // The handle is spent; forget it first so that
                                                   // the callback may add the key again.
                                                   m_timers.erase(key);
                                                   if (cb)
                                                       cb();
                                               }));
}

void TimersManager::removeTimer(const QString& key)
{
    assertMainThread();
    m_timers.erase(key);
}

bool TimersManager::isRunning(const QString& key) const
{
    const auto it = m_timers.find(key);
    return it != m_timers.end() && it->second.isActive();
}

TimersManager& TimersManager::shared()
{
    Q_ASSERT_X(s_shared, "TimersManager::shared", "no instance registered");
    return *s_shared;
}

void TimersManager::setShared(TimersManager* instance) { s_shared = instance; }

} // namespace kelvane
