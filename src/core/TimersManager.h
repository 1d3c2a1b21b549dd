#pragma once

#include "Scheduler.h"

#include <map>
#include <QString>

#include <functional>

namespace kelvane {

// Keyed one-shot timers on the main loop. Adding a key that is running replaces it and starts the
// delay anew; a fired timer is forgotten before its callback runs, so the callback may add it again.
class TimersManager {
public:
    explicit TimersManager(Scheduler& scheduler);

    void addTimer(const QString& key, double delaySeconds, std::function<void()> callback);
    void removeTimer(const QString& key);
    bool isRunning(const QString& key) const;

    static TimersManager& shared();
    static void setShared(TimersManager* instance);

private:
    Scheduler& m_scheduler;
    std::map<QString, ScheduledTask> m_timers;
};

} // namespace kelvane
