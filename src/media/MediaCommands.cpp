#include "MediaCommands.h"

#include "MediaManager.h"

#include <QJsonArray>

namespace kelvane {

namespace {
QJsonValue optional(const std::optional<QString>& value) { return value ? QJsonValue(*value) : QJsonValue(); }

QJsonObject sourceJson(const NowPlayingSource& source)
{
    return {{QStringLiteral("bundleIdentifier"), source.bundleIdentifier},
            {QStringLiteral("displayName"), source.displayName},
            {QStringLiteral("pid"), source.pid ? QJsonValue(*source.pid) : QJsonValue()}};
}
} // namespace

QJsonObject mediaState(const MediaManager& media)
{
    const Track& track = media.track();
    QJsonValue trackJson;
    if (media.hasTrack())
        trackJson = QJsonObject{{QStringLiteral("title"), track.title},
                                {QStringLiteral("artist"), track.artist},
                                {QStringLiteral("album"), track.album},
                                {QStringLiteral("appName"), track.appName},
                                {QStringLiteral("appBundleId"), track.appBundleId},
                                {QStringLiteral("browserBundleId"), optional(track.browserBundleId)},
                                {QStringLiteral("loved"), track.loved ? QJsonValue(*track.loved) : QJsonValue()},
                                {QStringLiteral("hasArtwork"), media.hasArtwork()}};
    QJsonArray sources;
    for (const NowPlayingSource& source : media.nowPlayingSources())
        sources.append(sourceJson(source));
    const auto active = media.activeSource();
    return {{QStringLiteral("track"), trackJson},
            {QStringLiteral("isPlaying"), media.isPlaying()},
            {QStringLiteral("currentElapsedTime"), media.currentElapsedTime()},
            {QStringLiteral("duration"), media.duration() ? QJsonValue(*media.duration()) : QJsonValue()},
            {QStringLiteral("sources"), sources},
            {QStringLiteral("activeSource"), active ? QJsonValue(sourceJson(*active)) : QJsonValue()},
            {QStringLiteral("preferredMediaSource"), json::rawValue(media.preferredMediaSource())},
            {QStringLiteral("trackUpdatesHandled"), media.trackUpdatesHandled()}};
}

std::optional<QString> performMediaCommand(MediaManager& media, const QString& command)
{
    if (command == QLatin1StringView("play-pause"))
        media.togglePlayPause();
    else if (command == QLatin1StringView("next"))
        media.goToNextTrack();
    else if (command == QLatin1StringView("previous"))
        media.goToPreviousTrack();
    else
        return QStringLiteral("Unknown media command \"%1\": use play-pause, next or previous.").arg(command);
    return std::nullopt;
}

} // namespace kelvane
