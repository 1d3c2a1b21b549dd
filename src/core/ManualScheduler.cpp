#include "ManualScheduler.h"

#include <QTimeZone>

namespace kelvane {

QDateTime ManualScheduler::VirtualClock::wallTime() const
{
    return origin.addMSecs(std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}

ManualScheduler::ManualScheduler()
{
    m_clock.origin = QDateTime(QDate(2026, 1, 5), QTime(9, 0), QTimeZone::utc());
}

ScheduledTask ManualScheduler::schedule(std::chrono::milliseconds delay, std::function<void()> work)
{
    auto state = std::make_shared<detail::TaskState>();
    state->work = std::move(work);
    const auto key = std::make_pair(m_clock.now + std::max(delay, std::chrono::milliseconds(0)),
                                    m_sequence++);
    m_queue->emplace(key, state);
    state->onCancel = [queue = std::weak_ptr<Queue>(m_queue), key] {
        if (auto q = queue.lock())
            q->erase(key);
    };
    return ScheduledTask(state);
}

void ManualScheduler::advance(std::chrono::milliseconds step)
{
    const auto end = m_clock.now + step;
    while (!m_queue->empty() && m_queue->begin()->first.first <= end) {
        auto node = m_queue->extract(m_queue->begin());
        m_clock.now = node.key().first;
        run(node.mapped());
    }
    m_clock.now = end;
}

std::size_t ManualScheduler::pendingCount() const { return m_queue->size(); }

} // namespace kelvane
