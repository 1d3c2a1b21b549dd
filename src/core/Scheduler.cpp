#include "Scheduler.h"

#include <cmath>

namespace kelvane {

ScheduledTask::ScheduledTask(std::shared_ptr<detail::TaskState> state)
    : m_state(std::move(state))
{
}

ScheduledTask::ScheduledTask(ScheduledTask&& other) noexcept
    : m_state(std::move(other.m_state))
{
}

ScheduledTask& ScheduledTask::operator=(ScheduledTask&& other) noexcept
{
    if (this != &other) {
        cancel();
        m_state = std::move(other.m_state);
    }
    return *this;
}

ScheduledTask::~ScheduledTask() { cancel(); }

void ScheduledTask::cancel()
{
    if (!m_state)
        return;
    auto state = std::move(m_state);
    if (state->done)
        return;
    state->done = true;
    state->work = nullptr;
    if (auto onCancel = std::move(state->onCancel))
        onCancel();
}

bool ScheduledTask::isActive() const { return m_state && !m_state->done; }

void Scheduler::run(const std::shared_ptr<detail::TaskState>& state)
{
    if (state->done)
        return;
    state->done = true;
    state->onCancel = nullptr;
    auto work = std::move(state->work);
    if (work)
        work();
}

std::chrono::milliseconds secondsToDelay(double seconds)
{
    if (!(seconds > 0.0)) // also catches NaN
        return std::chrono::milliseconds(0);
    return std::chrono::milliseconds(std::llround(seconds * 1000.0));
}

} // namespace kelvane
