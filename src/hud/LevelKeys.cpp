#include "LevelKeys.h"

#include "core/Log.h"

namespace kelvane {

LevelKeys::LevelKeys(Dependencies dependencies)
    : m_deps(std::move(dependencies))
{
}

void LevelKeys::operator()(MediaKey key)
{
    const bool volume = key == MediaKey::volumeUp || key == MediaKey::volumeDown || key == MediaKey::mute;
    const bool brightness = key == MediaKey::brightnessUp || key == MediaKey::brightnessDown;
    if (!volume && !brightness)
        return;
    const bool changeItHere = !m_deps.handledElsewhere(key);
    const auto indicator = volume ? volumeIndicator(key, changeItHere) : brightnessIndicator(key, changeItHere);
    if (indicator)
        m_deps.post(*indicator);
}

template <typename Level>
std::optional<Level> LevelKeys::readAfterChange(const std::function<std::optional<Level>(QString*)>& read,
                                                const std::function<void()>& change, std::atomic<bool>& reported,
                                                const QString& what)
{
    QString why;
    const std::optional<Level> before = read(&why);
    if (!before) {
        if (!reported.exchange(true))
            logLine(u"HUD", QStringLiteral("The %1 indicator is not shown: %2").arg(what, why));
        return std::nullopt;
    }
    reported = false;
    change();
    Level level = *before;
    for (int i = 0; i < settleReads; ++i) {
        level = read(&why).value_or(*before);
        if (level != *before)
            break;
        m_deps.sleep(settleInterval);
    }
    return level;
}

std::optional<Indicator> LevelKeys::volumeIndicator(MediaKey key, bool changeItHere)
{
    const auto level = readAfterChange<VolumeService::Level>(
        [this](QString* why) { return m_deps.volume.read(why); },
        [&] {
            if (!changeItHere)
                return;
            if (key == MediaKey::mute)
                m_deps.volume.toggleMute();
            else
                m_deps.volume.step(key == MediaKey::volumeUp ? stepSize : -stepSize);
        },
        m_volumeMissingReported, QStringLiteral("volume"));
    if (!level)
        return std::nullopt;
    return Indicator{Indicator::Kind::volume, volumeIcon(*level), level->muted ? 0.0 : level->value};
}

std::optional<Indicator> LevelKeys::brightnessIndicator(MediaKey key, bool changeItHere)
{
    const auto level = readAfterChange<double>(
        [this](QString* why) { return m_deps.brightness.read(why); },
        [&] {
            if (changeItHere)
                m_deps.brightness.step(key == MediaKey::brightnessUp ? stepSize : -stepSize);
        },
        m_brightnessMissingReported, QStringLiteral("brightness"));
    if (!level)
        return std::nullopt;
    return Indicator{Indicator::Kind::brightness, brightnessIcon, *level};
}

QString LevelKeys::volumeIcon(const VolumeService::Level& level)
{
    if (level.muted || level.value <= 0)
        return QStringLiteral("audio-volume-muted");
    if (level.value < 0.34)
        return QStringLiteral("audio-volume-low");
    if (level.value < 0.67)
        return QStringLiteral("audio-volume-medium");
    return QStringLiteral("audio-volume-high");
}

} // namespace kelvane
