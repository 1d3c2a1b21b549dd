#include "QtScheduler.h"

#include "MainThread.h"

#include <QPointer>
#include <QTimer>

namespace kelvane {

QtClock::QtClock() { m_elapsed.start(); }

std::chrono::nanoseconds QtClock::monotonic() const
{
    return std::chrono::nanoseconds(m_elapsed.nsecsElapsed());
}

QDateTime QtClock::wallTime() const { return QDateTime::currentDateTimeUtc(); }

QtScheduler::QtScheduler(QObject* parent)
    : QObject(parent)
{
}

ScheduledTask QtScheduler::schedule(std::chrono::milliseconds delay, std::function<void()> work)
{
    assertMainThread();
    auto state = std::make_shared<detail::TaskState>();
    state->work = std::move(work);

    auto* timer = new QTimer(this);
    timer->setSingleShot(true);
    timer->setTimerType(Qt::PreciseTimer);
    QPointer<QTimer> guard(timer);
    connect(timer, &QTimer::timeout, this, [state, timer] {
        timer->deleteLater();
        run(state);
    });
    state->onCancel = [guard] {
        if (guard)
            guard->deleteLater();
    };
    timer->start(delay);
    return ScheduledTask(state);
}

} // namespace kelvane
