#pragma once

#include "Clock.h"

#include <chrono>
#include <functional>
#include <memory>

namespace kelvane {

namespace detail {
struct TaskState {
    std::function<void()> work;
    std::function<void()> onCancel;
    bool done = false;
};
} // namespace detail

// Handle of one scheduled piece of work. Destroying the handle cancels the work, so an owner that
// keeps its handles can never be called back after it is gone.
class [[nodiscard]] ScheduledTask {
public:
    ScheduledTask() = default;
    explicit ScheduledTask(std::shared_ptr<detail::TaskState> state);
    ScheduledTask(ScheduledTask&& other) noexcept;
    ScheduledTask& operator=(ScheduledTask&& other) noexcept;
    ScheduledTask(const ScheduledTask&) = delete;
    ScheduledTask& operator=(const ScheduledTask&) = delete;
    ~ScheduledTask();

    void cancel();
    bool isActive() const;

private:
    std::shared_ptr<detail::TaskState> m_state;
};

// The one source of delays. Production runs on the Qt event loop; tests advance virtual time.
class Scheduler {
public:
    virtual ~Scheduler() = default;
    virtual const Clock& clock() const = 0;
    // Runs work once, after delay, on the main thread. A zero delay means "one event-loop turn later".
    virtual ScheduledTask schedule(std::chrono::milliseconds delay, std::function<void()> work) = 0;

    ScheduledTask post(std::function<void()> work)
    {
        return schedule(std::chrono::milliseconds(0), std::move(work));
    }

protected:
    // Runs a task's work unless it was cancelled; the work is released before it runs so that
    // a task may safely drop its own handle.
    static void run(const std::shared_ptr<detail::TaskState>& state);
};

std::chrono::milliseconds secondsToDelay(double seconds);

} // namespace kelvane
