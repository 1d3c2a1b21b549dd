#pragma once

#include "Scheduler.h"

#include <QElapsedTimer>
#include <QObject>

namespace kelvane {

class QtClock final : public Clock {
public:
    QtClock();
    std::chrono::nanoseconds monotonic() const override;
    QDateTime wallTime() const override;

private:
    QElapsedTimer m_elapsed;
};

// Scheduler on the Qt event loop: one precise single-shot QTimer per task, deleted when the task
// runs or is cancelled, so that nothing wakes the loop once the work is gone.
class QtScheduler final : public QObject, public Scheduler {
    Q_OBJECT
public:
    explicit QtScheduler(QObject* parent = nullptr);
    const Clock& clock() const override { return m_clock; }
    ScheduledTask schedule(std::chrono::milliseconds delay, std::function<void()> work) override;

private:
    QtClock m_clock;
};

} // namespace kelvane
