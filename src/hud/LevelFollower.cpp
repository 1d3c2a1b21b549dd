#include "LevelFollower.h"

#include <limits>

namespace kelvane {

namespace {
std::size_t slot(Indicator::Kind kind) { return kind == Indicator::Kind::volume ? 0 : 1; }
constexpr std::int64_t never = std::numeric_limits<std::int64_t>::min() / 2;
} // namespace

LevelFollower::LevelFollower(Dependencies dependencies)
    : m_deps(std::move(dependencies))
{
    for (auto& time : m_lastKey)
        time = never;
}

LevelFollower::~LevelFollower() { stop(); }

void LevelFollower::start()
{
    if (m_running)
        return;
    m_running = true;
    m_deps.volume.start([this](const VolumeService::Level& level) {
        changed({Indicator::Kind::volume, LevelKeys::volumeIcon(level), level.muted ? 0.0 : level.value});
    });
    m_deps.brightness.start(
        [this](double level) { changed({Indicator::Kind::brightness, LevelKeys::brightnessIcon, level}); });
}

void LevelFollower::stop()
{
    if (!m_running)
        return;
    m_running = false;
    m_deps.volume.stop();
    m_deps.brightness.stop();
}

void LevelFollower::keyObserved(MediaKey key)
{
    std::optional<Indicator::Kind> kind;
    if (key == MediaKey::volumeUp || key == MediaKey::volumeDown || key == MediaKey::mute)
        kind = Indicator::Kind::volume;
    else if (key == MediaKey::brightnessUp || key == MediaKey::brightnessDown)
        kind = Indicator::Kind::brightness;
    if (kind)
        m_lastKey[slot(*kind)] = m_deps.clock.monotonic().count();
}

void LevelFollower::changed(const Indicator& indicator)
{
    const auto sinceKey = std::chrono::nanoseconds(m_deps.clock.monotonic().count() - m_lastKey[slot(indicator.kind)]);
    if (sinceKey >= std::chrono::nanoseconds::zero() && sinceKey < keyEcho)
        return;
    m_deps.post(indicator);
}

} // namespace kelvane
