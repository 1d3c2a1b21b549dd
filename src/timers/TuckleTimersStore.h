#pragma once

#include "TimerEntry.h"

#include "core/Scheduler.h"

#include <QObject>
#include <QStringList>

#include <chrono>
#include <vector>

namespace kelvane {

class ActiveLiveActivitiesManager;
class SettingsDomain;
class SoundPlayer;
class TimersManager;

// The user's labelled countdown timers: runs, pauses and ends them, keeps them across restarts,
// and announces each ended timer in the top bar, one after another. Main thread only.
//
// The tick runs only while a timer runs, so an agent without running timers never wakes up for
// them. The saved list is rewritten when a timer is added, started, paused, removed or ends; the
// seconds left of a running timer follow from its end date and are not saved on every tick.
class TuckleTimersStore : public QObject {
    Q_OBJECT
    Q_PROPERTY(QList<QObject*> timers READ timerObjects NOTIFY timersChanged)
    // What the top bar announces now: the first of the ended timers' texts, or nothing.
    Q_PROPERTY(QString expiredText READ expiredText NOTIFY expiredLabelQueueChanged)
public:
    static constexpr std::chrono::milliseconds tickInterval{500};
    static constexpr double announcementSeconds = 4.0;
    static constexpr auto dismissTimerKey = "TimerExpiredLADismiss";
    static constexpr auto storageKey = "tuckleTimerEntries";
    static constexpr auto expirySound = "Glass";

    struct Dependencies {
        Scheduler& scheduler;
        TimersManager& timers;
        SettingsDomain& defaults;
        ActiveLiveActivitiesManager& liveActivities;
        SoundPlayer& sound;
    };

    // Restores the saved timers: running ones are brought up to date, and those that ended while
    // the agent was not running come back ended, without a sound or an announcement.
    explicit TuckleTimersStore(Dependencies dependencies, QObject* parent = nullptr);
    ~TuckleTimersStore() override;

    // In order of creation.
    const std::vector<TimerEntry*>& timers() const { return m_timers; }
    QList<QObject*> timerObjects() const;
    const QStringList& expiredLabelQueue() const { return m_expiredLabelQueue; }
    QString expiredText() const { return m_expiredLabelQueue.value(0); }
    TimerEntry* find(const QUuid& id) const;
    bool isTicking() const { return m_tick.isActive(); }

    // A new timer, running at once.
    Q_INVOKABLE kelvane::TimerEntry* add(const QString& label, qint64 totalSeconds);
    // Runs a paused timer again; an ended timer stays ended.
    Q_INVOKABLE void start(kelvane::TimerEntry* timer);
    // Stops a running timer where it stands; anything else is left as it is.
    Q_INVOKABLE void pause(kelvane::TimerEntry* timer);
    // Removes the timer, whatever its state.
    Q_INVOKABLE void cancel(kelvane::TimerEntry* timer);
    Q_INVOKABLE void dismissExpired(kelvane::TimerEntry* timer) { cancel(timer); }

    // Queues the ended timer's text and shows the "timer ended" activity.
    void fireTimerExpiredLA(const QString& label);
    static QString expiredLabelText(const QString& label);

    static TuckleTimersStore& shared();
    static void setShared(TuckleTimersStore* instance);

Q_SIGNALS:
    void timersChanged();
    void expiredLabelQueueChanged();

private:
    void load();
    void save();
    void ensureTick();
    void scheduleTick(std::chrono::milliseconds delay);
    void tick();
    void scheduleNextDismiss();
    void popAndAdvance();
    QDateTime now() const;

    Dependencies m_deps;
    std::vector<TimerEntry*> m_timers;
    QStringList m_expiredLabelQueue;
    ScheduledTask m_tick;
    std::chrono::nanoseconds m_nextTickAt{0};
};

} // namespace kelvane
