#include "VolumeAndBrightnessListener.h"

#include "core/Log.h"

#include <QDateTime>

namespace kelvane {

namespace {
// Passes the tap's reports on to the listener.
class Forwarder final : public MediaKeyTapDelegate {
public:
    explicit Forwarder(MediaKeyTapDelegate& target)
        : m_target(target)
    {
    }
    void handle(MediaKey key, unsigned modifiers) override { m_target.handle(key, modifiers); }

private:
    MediaKeyTapDelegate& m_target;
};
} // namespace

VolumeAndBrightnessListener::VolumeAndBrightnessListener(Dependencies dependencies, QObject* parent)
    : QObject(parent)
    , m_deps(std::move(dependencies))
{
}

VolumeAndBrightnessListener::~VolumeAndBrightnessListener()
{
    std::lock_guard guard(m_lock);
    m_mediaKeyTap.reset();
}

void VolumeAndBrightnessListener::start()
{
    std::lock_guard guard(m_lock);
    if (m_mediaKeyTap)
        return;
    m_tapDelegate = std::make_shared<Forwarder>(*this);
    MediaKeyTapOptions options{KeyPressMode::keyDown, keysToWatch, true, m_alternateBrightnessKeys,
                               m_deps.mainScreenIsBuiltIn};
    m_mediaKeyTap = std::make_unique<MediaKeyTap>(m_tapDelegate, std::move(options), m_deps.source);
    m_mediaKeyTap->start();
    emitLine(QStringLiteral("Media key monitoring started"));
    m_systemWakeUpMonitor = connect(&m_deps.wake, &WakeEvents::systemDidWake, this,
                                    [this] { wokeUp(QStringLiteral("System")); });
    m_screenWakeUpMonitor = connect(&m_deps.wake, &WakeEvents::screensDidWake, this,
                                    [this] { wokeUp(QStringLiteral("Screen")); });
    m_deps.background(m_deps.disableSystemHUD);
    attemptHUD();
}

void VolumeAndBrightnessListener::stop()
{
    std::lock_guard guard(m_lock);
    if (!m_mediaKeyTap) {
        emitLine(QStringLiteral("VolumeAndBrightnessListener is not running"));
        return;
    }
    m_mediaKeyTap->stop();
    m_mediaKeyTap.reset();
    m_tapDelegate.reset();
    emitLine(QStringLiteral("Media key monitoring stopped"));
    stopBackgroundCloseHUD();
    m_deps.background(m_deps.enableSystemHUD);
    disconnect(m_systemWakeUpMonitor);
    disconnect(m_screenWakeUpMonitor);
    m_wakeSuppressions.clear();
}

bool VolumeAndBrightnessListener::isRunning() const
{
    std::lock_guard guard(m_lock);
    return m_mediaKeyTap != nullptr;
}

bool VolumeAndBrightnessListener::isObservingKeys() const
{
    std::lock_guard guard(m_lock);
    return m_mediaKeyTap && m_mediaKeyTap->isRunning();
}

void VolumeAndBrightnessListener::setSideEffect(const QString& key, SideEffect effect)
{
    auto effects = std::make_shared<SideEffects>(*m_sideEffects.load());
    effects->insert(key, std::move(effect));
    m_sideEffects.store(std::move(effects));
}

void VolumeAndBrightnessListener::removeSideEffect(const QString& key)
{
    auto effects = std::make_shared<SideEffects>(*m_sideEffects.load());
    effects->remove(key);
    m_sideEffects.store(std::move(effects));
}

void VolumeAndBrightnessListener::handle(MediaKey key, unsigned)
{
    // The key thread takes no lock: a stop that holds the start-and-stop lock while it waits for
    // this thread to end must never wait on it in turn.
    const std::shared_ptr<const SideEffects> effects = m_sideEffects.load();
    for (const SideEffect& effect : *effects)
        effect(key);
}

void VolumeAndBrightnessListener::attemptHUD()
{
    stopBackgroundCloseHUD();
    m_HUDCloseWorkItem = m_deps.disableSystemHUD;
    scheduleSuppressionTick();
}

void VolumeAndBrightnessListener::scheduleSuppressionTick()
{
    m_HUDCloseTimer = m_deps.scheduler.schedule(suppressionInterval, [this] {
        if (m_HUDCloseWorkItem)
            m_deps.background(m_HUDCloseWorkItem);
        scheduleSuppressionTick();
    });
}

void VolumeAndBrightnessListener::stopBackgroundCloseHUD()
{
    m_HUDCloseWorkItem = nullptr;
    m_HUDCloseTimer.cancel();
}

void VolumeAndBrightnessListener::wokeUp(const QString& what)
{
    const QString now = m_deps.scheduler.clock().wallTime().toUTC().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss +0000"));
    emitLine(now + QStringLiteral(" : %1 wakes up \u2014 scheduling OSD suppression in 1s").arg(what));
    std::erase_if(m_wakeSuppressions, [](const ScheduledTask& task) { return !task.isActive(); });
    m_wakeSuppressions.push_back(m_deps.scheduler.schedule(wakeDelay, [this] { m_deps.background(m_deps.disableSystemHUD); }));
}

} // namespace kelvane
