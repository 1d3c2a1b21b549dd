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

std::optional<Indicator> LevelKeys::volumeIndicator(MediaKey key, bool changeItHere)
{
    QString why;
    auto level = m_deps.volume.read(&why);
    if (!level) {
        reportMissing(m_volumeMissingReported, QStringLiteral("volume"), why);
        return std::nullopt;
    }
    m_volumeMissingReported = false;
    const auto before = *level;
    if (changeItHere) {
        if (key == MediaKey::mute)
            m_deps.volume.toggleMute();
        else
            m_deps.volume.step(key == MediaKey::volumeUp ? stepSize : -stepSize);
    }
    // The change, ours or the desktop's, reaches the server a moment after the key.
    for (int i = 0; i < settleReads; ++i) {
        level = m_deps.volume.read(&why).value_or(before);
        if (level->value != before.value || level->muted != before.muted)
            break;
        m_deps.sleep(settleInterval);
    }
    return Indicator{Indicator::Kind::volume, volumeIcon(*level), level->muted ? 0.0 : level->value};
}

std::optional<Indicator> LevelKeys::brightnessIndicator(MediaKey key, bool changeItHere)
{
    QString why;
    auto level = m_deps.brightness.read(&why);
    if (!level) {
        reportMissing(m_brightnessMissingReported, QStringLiteral("brightness"), why);
        return std::nullopt;
    }
    m_brightnessMissingReported = false;
    const double before = *level;
    if (changeItHere)
        m_deps.brightness.step(key == MediaKey::brightnessUp ? stepSize : -stepSize);
    for (int i = 0; i < settleReads; ++i) {
        level = m_deps.brightness.read(&why).value_or(before);
        if (*level != before)
            break;
        m_deps.sleep(settleInterval);
    }
    return Indicator{Indicator::Kind::brightness, brightnessIcon, *level};
}

void LevelKeys::reportMissing(std::atomic<bool>& reported, const QString& what, const QString& why)
{
    if (!reported.exchange(true))
        logLine(u"HUD", QStringLiteral("The %1 indicator is not shown: %2").arg(what, why));
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
