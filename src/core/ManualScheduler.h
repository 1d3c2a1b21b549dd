#pragma once

#include "Scheduler.h"

#include <cstdint>
#include <map>
#include <utility>

namespace kelvane {

// Virtual time for tests and benchmarks: nothing runs until advance() moves the clock past it.
class ManualScheduler final : public Scheduler {
public:
    ManualScheduler();
    const Clock& clock() const override { return m_clock; }
    ScheduledTask schedule(std::chrono::milliseconds delay, std::function<void()> work) override;

    // Runs, in due order, every task that falls due within the step (tasks scheduled by those
    // tasks included); the clock stands at each task's due time while it runs.
    void advance(std::chrono::milliseconds step);
    // Runs what is due now, such as work posted for the next event-loop turn.
    void runPending() { advance(std::chrono::milliseconds(0)); }
    std::size_t pendingCount() const;

private:
    class VirtualClock final : public Clock {
    public:
        std::chrono::nanoseconds monotonic() const override { return now; }
        QDateTime wallTime() const override;
        std::chrono::nanoseconds now{0};
        QDateTime origin;
    };

    VirtualClock m_clock;
    std::uint64_t m_sequence = 0;
    using Queue = std::map<std::pair<std::chrono::nanoseconds, std::uint64_t>,
                           std::shared_ptr<detail::TaskState>>;
    // Shared with the tasks' cancel hooks, so a handle may outlive the scheduler.
    std::shared_ptr<Queue> m_queue = std::make_shared<Queue>();
};

} // namespace kelvane
