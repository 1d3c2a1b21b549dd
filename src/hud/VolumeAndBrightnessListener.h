#pragma once

#include "MediaKeyTap.h"

#include "core/Scheduler.h"

#include <QHash>
#include <QMetaObject>
#include <QObject>

#include <atomic>
#include <memory>
#include <mutex>

namespace kelvane {

// The system's and the screens' wake-ups, as the desktop reports them.
class WakeEvents : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
Q_SIGNALS:
    void systemDidWake();
    void screensDidWake();
};

// Listens to the volume and brightness keys and hands every press to the registered side effects
// (on the key thread: a side effect hops to the main thread itself). While it listens it keeps
// the system's own pop-up away: at start, every 35 minutes, and one second after every wake. The
// suppression always runs on the background queue.
class VolumeAndBrightnessListener : public QObject, public MediaKeyTapDelegate {
    Q_OBJECT
public:
    struct Dependencies {
        Scheduler& scheduler;
        KeyEventSource& source;
        WakeEvents& wake;
        std::function<bool()> mainScreenIsBuiltIn;
        // Runs work on the background queue.
        std::function<void(std::function<void()>)> background;
        std::function<void()> disableSystemHUD;
        std::function<void()> enableSystemHUD;
    };
    using SideEffect = std::function<void(MediaKey)>;

    static inline const QList<MediaKey> keysToWatch{MediaKey::brightnessUp, MediaKey::brightnessDown,
                                                    MediaKey::volumeUp, MediaKey::volumeDown, MediaKey::mute};
    static constexpr std::chrono::seconds suppressionInterval{2100};
    static constexpr std::chrono::seconds wakeDelay{1};

    explicit VolumeAndBrightnessListener(Dependencies dependencies, QObject* parent = nullptr);
    ~VolumeAndBrightnessListener() override;

    void start();
    void stop();
    bool isRunning() const;
    // Running, and the keys reach it (the key stream could be opened).
    bool isObservingKeys() const;

    void setSideEffect(const QString& key, SideEffect effect);
    void removeSideEffect(const QString& key);
    // From the tap: every side effect gets the key.
    void handle(MediaKey key, unsigned modifiers) override;

    // The tap's own options (the alternate brightness keys).
    void setAlternateBrightnessKeys(bool alternate) { m_alternateBrightnessKeys = alternate; }

private:
    void attemptHUD();
    void stopBackgroundCloseHUD();
    void scheduleSuppressionTick();
    void wokeUp(const QString& what);

    using SideEffects = QHash<QString, SideEffect>;

    Dependencies m_deps;
    // Serialises start and stop, and only them: stopping joins the key thread while holding it,
    // so the key thread never waits on it.
    mutable std::mutex m_lock;
    std::unique_ptr<MediaKeyTap> m_mediaKeyTap;
    // The tap reports to this, so that the tap never outlives whom it reports to.
    std::shared_ptr<MediaKeyTapDelegate> m_tapDelegate;
    // Replaced whole on the main thread, read by the key thread without waiting.
    std::atomic<std::shared_ptr<const SideEffects>> m_sideEffects{std::make_shared<const SideEffects>()};
    std::function<void()> m_HUDCloseWorkItem;
    ScheduledTask m_HUDCloseTimer;
    std::vector<ScheduledTask> m_wakeSuppressions;
    QMetaObject::Connection m_systemWakeUpMonitor;
    QMetaObject::Connection m_screenWakeUpMonitor;
    bool m_alternateBrightnessKeys = false;
};

} // namespace kelvane
