#include "TimerCommands.h"

#include "Duration.h"
#include "TuckleTimersStore.h"

#include <QJsonObject>

namespace kelvane {

namespace {
QString nameOf(const TimerEntry& timer)
{
    return timer.label().isEmpty() ? QStringLiteral("The timer") : QStringLiteral("Timer \"%1\"").arg(timer.label());
}
} // namespace

TimerCommands::TimerCommands(TuckleTimersStore& store, QObject* parent)
    : QObject(parent)
    , m_store(store)
{
}

TimerCommands::Added TimerCommands::add(const QString& label, const QString& duration)
{
    const auto seconds = parseDuration(duration);
    if (!seconds)
        return {nullptr, QStringLiteral("Not a duration: \"%1\". Try 90, 5m, 1h30m or 1:30 (up to a week).")
                             .arg(duration)};
    return {m_store.add(label.trimmed(), *seconds), std::nullopt};
}

QString TimerCommands::addTimer(const QString& label, const QString& duration)
{
    return add(label, duration).error.value_or(QString());
}

QJsonArray TimerCommands::list() const
{
    QJsonArray timers;
    for (const TimerEntry* timer : m_store.timers())
        timers.append(QJsonObject{{QStringLiteral("id"), timer->idText()},
                                  {QStringLiteral("label"), timer->label()},
                                  {QStringLiteral("state"), timer->stateName()},
                                  {QStringLiteral("totalSeconds"), timer->totalSeconds()},
                                  {QStringLiteral("remainingSeconds"), timer->remainingSeconds()}});
    return timers;
}

TimerEntry* TimerCommands::resolve(const QString& id, QString& error) const
{
    TimerEntry* found = nullptr;
    const QString wanted = id.trimmed();
    for (TimerEntry* timer : m_store.timers()) {
        if (wanted.isEmpty() || !timer->idText().startsWith(wanted, Qt::CaseInsensitive))
            continue;
        if (found) {
            error = QStringLiteral("\"%1\" names more than one timer; give more of its id.").arg(id);
            return nullptr;
        }
        found = timer;
    }
    if (!found)
        error = QStringLiteral("No timer \"%1\".").arg(id);
    return found;
}

TimerCommands::Error TimerCommands::act(const QString& id, const std::function<Error(TimerEntry&)>& action)
{
    QString error;
    TimerEntry* timer = resolve(id, error);
    return timer ? action(*timer) : Error(error);
}

TimerCommands::Error TimerCommands::pause(const QString& id)
{
    return act(id, [this](TimerEntry& timer) -> Error {
        m_store.pause(&timer);
        return std::nullopt;
    });
}

TimerCommands::Error TimerCommands::resume(const QString& id)
{
    return act(id, [this](TimerEntry& timer) -> Error {
        if (timer.state() == TimerEntry::State::expired)
            return QStringLiteral("%1 has ended; it cannot run again.").arg(nameOf(timer));
        if (timer.state() == TimerEntry::State::paused)
            m_store.start(&timer);
        return std::nullopt;
    });
}

TimerCommands::Error TimerCommands::cancel(const QString& id)
{
    return act(id, [this](TimerEntry& timer) -> Error {
        m_store.cancel(&timer);
        return std::nullopt;
    });
}

} // namespace kelvane
