#pragma once

#include <QJsonArray>
#include <QObject>

#include <functional>
#include <optional>

namespace kelvane {

class TimerEntry;
class TuckleTimersStore;

// What scripts and the timer widget's form ask of the timers, by text: durations as the user types
// them, and timers named by their id or the first characters of it. Every operation answers
// an error message for the user, or nothing when it was done.
class TimerCommands : public QObject {
    Q_OBJECT
public:
    explicit TimerCommands(TuckleTimersStore& store, QObject* parent = nullptr);

    using Error = std::optional<QString>;
    struct Added {
        TimerEntry* timer = nullptr;
        Error error;
    };
    Added add(const QString& label, const QString& duration);
    // Every timer in order of creation: id, label, state, totalSeconds, remainingSeconds.
    QJsonArray list() const;
    // Pausing a timer that is not running, or resuming one that runs, changes nothing; an ended
    // timer cannot run again.
    Error pause(const QString& id);
    Error resume(const QString& id);
    Error cancel(const QString& id);

    // For the widget's form: an empty text once the timer runs, else what is wrong.
    Q_INVOKABLE QString addTimer(const QString& label, const QString& duration);

private:
    TimerEntry* resolve(const QString& id, QString& error) const;
    // Runs `action` on the timer that `id` names, or answers why there is none.
    Error act(const QString& id, const std::function<Error(TimerEntry&)>& action);

    TuckleTimersStore& m_store;
};

} // namespace kelvane
