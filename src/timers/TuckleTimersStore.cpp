#include "TuckleTimersStore.h"

#include "Duration.h"
#include "TimerSnapshot.h"

#include "activities/ActiveLiveActivitiesManager.h"
#include "core/MainThread.h"
#include "core/SoundPlayer.h"
#include "core/TimersManager.h"
#include "settings/SettingsDomain.h"

#include <algorithm>

namespace kelvane {

namespace {
TuckleTimersStore* s_shared = nullptr;

// Whole seconds left, rounded up: a timer of 60 seconds reads 60 right after it starts.
qint64 ceilingSeconds(qint64 milliseconds) { return (milliseconds + 999) / 1000; }

std::optional<QDateTime> fromStored(const std::optional<double>& seconds)
{
    if (!seconds)
        return std::nullopt;
    return dateFromReferenceSeconds(*seconds);
}

// A stored date that no date can stand for, or lengths no timer can have (below nothing, more left
// than its length, longer than the longest), make a snapshot undecodable.
bool decodes(const TimerSnapshot& snapshot)
{
    return (!snapshot.startedAt || dateFromReferenceSeconds(*snapshot.startedAt)) &&
           (!snapshot.expiresAt || dateFromReferenceSeconds(*snapshot.expiresAt)) && snapshot.remainingSeconds >= 0 &&
           snapshot.remainingSeconds <= snapshot.totalSeconds && snapshot.totalSeconds <= longestDurationSeconds;
}

std::optional<double> toStored(const std::optional<QDateTime>& date)
{
    if (!date)
        return std::nullopt;
    return secondsSinceReferenceDate(*date);
}
} // namespace

TuckleTimersStore::TuckleTimersStore(Dependencies dependencies, QObject* parent)
    : QObject(parent)
    , m_deps(dependencies)
{
    load();
}

TuckleTimersStore::~TuckleTimersStore() = default;

QDateTime TuckleTimersStore::now() const { return m_deps.scheduler.clock().wallTime(); }

QList<QObject*> TuckleTimersStore::timerObjects() const { return {m_timers.begin(), m_timers.end()}; }

TimerEntry* TuckleTimersStore::find(const QUuid& id) const
{
    const auto it = std::find_if(m_timers.begin(), m_timers.end(), [&](TimerEntry* t) { return t->id() == id; });
    return it == m_timers.end() ? nullptr : *it;
}

TimerEntry* TuckleTimersStore::add(const QString& label, qint64 totalSeconds)
{
    assertMainThread();
    auto* timer = new TimerEntry(QUuid::createUuid(), label, totalSeconds, this);
    m_timers.push_back(timer);
    Q_EMIT timersChanged();
    start(timer);
    return timer;
}

void TuckleTimersStore::start(TimerEntry* timer)
{
    assertMainThread();
    if (!timer || timer->state() == TimerEntry::State::expired)
        return;
    const QDateTime startedAt = now();
    timer->setExpiresAt(startedAt.addMSecs(std::max<qint64>(timer->remainingSeconds(), 0) * 1000));
    timer->setStartedAt(startedAt);
    timer->setState(TimerEntry::State::running);
    save();
    ensureTick();
}

void TuckleTimersStore::pause(TimerEntry* timer)
{
    assertMainThread();
    if (!timer || timer->state() != TimerEntry::State::running)
        return;
    timer->setState(TimerEntry::State::paused);
    timer->setExpiresAt(std::nullopt);
    save();
}

void TuckleTimersStore::cancel(TimerEntry* timer)
{
    assertMainThread();
    const auto it = std::find(m_timers.begin(), m_timers.end(), timer);
    if (it == m_timers.end())
        return;
    m_timers.erase(it);
    Q_EMIT timersChanged();
    // Views may still be handling the click that removed it.
    timer->deleteLater();
    save();
}

void TuckleTimersStore::ensureTick()
{
    if (m_tick.isActive())
        return;
    m_nextTickAt = m_deps.scheduler.clock().monotonic() + tickInterval;
    scheduleTick(tickInterval);
}

void TuckleTimersStore::scheduleTick(std::chrono::milliseconds delay)
{
    m_tick = m_deps.scheduler.schedule(delay, [this] { tick(); });
}

void TuckleTimersStore::tick()
{
    assertMainThread();
    const QDateTime current = now();
    bool ended = false;
    bool running = false;
    // Announcing an ended timer never changes the list, but a copy keeps the walk safe anyway.
    const std::vector<TimerEntry*> walk = m_timers;
    for (TimerEntry* timer : walk) {
        if (timer->state() != TimerEntry::State::running || !timer->expiresAt())
            continue;
        const qint64 left = current.msecsTo(*timer->expiresAt());
        if (left <= 0) {
            timer->setRemainingSeconds(0);
            timer->setState(TimerEntry::State::expired);
            timer->setExpiresAt(std::nullopt);
            ended = true;
            m_deps.sound.play(QString::fromLatin1(expirySound));
            fireTimerExpiredLA(timer->label());
        } else {
            timer->setRemainingSeconds(ceilingSeconds(left));
            running = true;
        }
    }
    if (ended)
        save();
    if (!running) {
        m_tick.cancel();
        return;
    }
    // Ticks keep to their half-second grid; after a long stall (a suspended machine) the grid
    // starts again from now.
    const auto monotonic = m_deps.scheduler.clock().monotonic();
    m_nextTickAt += tickInterval;
    if (m_nextTickAt <= monotonic)
        m_nextTickAt = monotonic + tickInterval;
    scheduleTick(std::chrono::ceil<std::chrono::milliseconds>(m_nextTickAt - monotonic));
}

QString TuckleTimersStore::expiredLabelText(const QString& label)
{
    if (label.isEmpty())
        return QStringLiteral("Timer ended");
    return QLatin1Char('"') + label + QStringLiteral("\" ended");
}

void TuckleTimersStore::fireTimerExpiredLA(const QString& label)
{
    assertMainThread();
    m_expiredLabelQueue.append(expiredLabelText(label));
    Q_EMIT expiredLabelQueueChanged();
    m_deps.liveActivities.insertSync(LiveActivity::timerExpired);
    scheduleNextDismiss();
}

void TuckleTimersStore::scheduleNextDismiss()
{
    // One timer under the key: an expiry while a text shows lengthens its time rather than
    // stacking a second timer.
    m_deps.timers.addTimer(QString::fromLatin1(dismissTimerKey), announcementSeconds, [this] { popAndAdvance(); });
}

void TuckleTimersStore::popAndAdvance()
{
    if (!m_expiredLabelQueue.isEmpty()) {
        m_expiredLabelQueue.removeFirst();
        Q_EMIT expiredLabelQueueChanged();
    }
    if (!m_expiredLabelQueue.isEmpty())
        scheduleNextDismiss();
    else
        m_deps.liveActivities.removeSync(LiveActivity::timerExpired);
}

void TuckleTimersStore::load()
{
    assertMainThread();
    const QVariant stored = m_deps.defaults.value(QString::fromLatin1(storageKey));
    if (!stored.isValid())
        return;
    const QJsonDocument document = QJsonDocument::fromJson(stored.toByteArray());
    // Unreadable data leaves the list empty; the next change writes a good list over it.
    if (!document.isArray())
        return;
    const auto snapshots = json::decode<std::vector<TimerSnapshot>>(document.array());
    if (!snapshots || !std::all_of(snapshots->begin(), snapshots->end(), decodes))
        return;
    const QDateTime current = now();
    for (const TimerSnapshot& snapshot : *snapshots) {
        auto* timer = new TimerEntry(snapshot.id, snapshot.label, snapshot.totalSeconds, this);
        timer->setRemainingSeconds(snapshot.remainingSeconds);
        timer->setState(snapshot.state);
        timer->setStartedAt(fromStored(snapshot.startedAt));
        timer->setExpiresAt(fromStored(snapshot.expiresAt));
        if (snapshot.state == TimerEntry::State::expired) {
            // An ended timer has nothing left, whatever was saved beside its state.
            timer->setRemainingSeconds(0);
            timer->setExpiresAt(std::nullopt);
        } else if (snapshot.state == TimerEntry::State::running) {
            if (!timer->expiresAt()) {
                // A run without an end cannot be timed: it waits, paused, for the user.
                timer->setState(TimerEntry::State::paused);
            } else if (const qint64 left = current.msecsTo(*timer->expiresAt()); left <= 0) {
                timer->setState(TimerEntry::State::expired);
                timer->setRemainingSeconds(0);
                timer->setExpiresAt(std::nullopt);
            } else if (left > timer->totalSeconds() * 1000) {
                // It ends later than it could (the clock was set back): it runs its whole length from now.
                timer->setRemainingSeconds(timer->totalSeconds());
                timer->setExpiresAt(current.addSecs(timer->totalSeconds()));
            } else {
                timer->setRemainingSeconds(ceilingSeconds(left));
            }
        }
        m_timers.push_back(timer);
    }
    Q_EMIT timersChanged();
    if (std::any_of(m_timers.begin(), m_timers.end(),
                    [](TimerEntry* t) { return t->state() == TimerEntry::State::running; }))
        ensureTick();
}

void TuckleTimersStore::save()
{
    std::vector<TimerSnapshot> snapshots;
    snapshots.reserve(m_timers.size());
    for (const TimerEntry* timer : m_timers) {
        TimerSnapshot snapshot;
        snapshot.id = timer->id();
        snapshot.label = timer->label();
        snapshot.totalSeconds = timer->totalSeconds();
        snapshot.remainingSeconds = timer->remainingSeconds();
        snapshot.state = timer->state();
        snapshot.startedAt = toStored(timer->startedAt());
        snapshot.expiresAt = toStored(timer->expiresAt());
        snapshots.push_back(std::move(snapshot));
    }
    const QJsonValue encoded = json::encode(snapshots);
    m_deps.defaults.setValue(QString::fromLatin1(storageKey),
                             QJsonDocument(encoded.toArray()).toJson(QJsonDocument::Compact));
}

TuckleTimersStore& TuckleTimersStore::shared()
{
    Q_ASSERT(s_shared);
    return *s_shared;
}

void TuckleTimersStore::setShared(TuckleTimersStore* instance) { s_shared = instance; }

} // namespace kelvane
