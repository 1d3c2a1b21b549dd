#include "MediaCommands.h"

#include "MediaManager.h"

#include <QJsonArray>

#include <functional>

namespace kelvane {

namespace {
QJsonValue optional(const std::optional<QString>& value) { return value ? QJsonValue(*value) : QJsonValue(); }

QJsonObject sourceJson(const NowPlayingSource& source)
{
    return {{QStringLiteral("bundleIdentifier"), source.bundleIdentifier},
            {QStringLiteral("displayName"), source.displayName},
            {QStringLiteral("pid"), source.pid ? QJsonValue(*source.pid) : QJsonValue()},
            {QStringLiteral("clientID"), source.clientID}};
}

// The source a word names: its client identifier or process number exactly, else its
// application identifier or display name when only one source has it.
std::optional<QString> pin(MediaManager& media, const QString& word)
{
    const std::vector<NowPlayingSource>& sources = media.nowPlayingSources();
    std::vector<const NowPlayingSource*> named;
    for (const NowPlayingSource& source : sources) {
        if (source.clientID == word || (source.pid && QString::number(*source.pid) == word)) {
            named = {&source};
            break;
        }
        if (source.bundleIdentifier.compare(word, Qt::CaseInsensitive) == 0 ||
            source.displayName.compare(word, Qt::CaseInsensitive) == 0)
            named.push_back(&source);
    }
    if (named.empty())
        return QStringLiteral("No media source \"%1\": \"kelvanectl media\" lists the sources.").arg(word);
    if (named.size() > 1) {
        QStringList clients;
        for (const NowPlayingSource* source : named)
            clients << source->clientID;
        return QStringLiteral("\"%1\" names %2 sources: pin one of %3.")
            .arg(word)
            .arg(named.size())
            .arg(clients.join(QStringLiteral(", ")));
    }
    media.setUserPinnedClientID(named.front()->clientID);
    return std::nullopt;
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
            {QStringLiteral("userPinnedClientID"), optional(media.userPinnedClientID())},
            {QStringLiteral("preferredMediaSource"), json::rawValue(media.preferredMediaSource())},
            {QStringLiteral("trackUpdatesHandled"), media.trackUpdatesHandled()}};
}

std::optional<QString> performMediaCommand(MediaManager& media, const QStringList& words)
{
    const QString command = words.value(0);
    const qsizetype arguments = words.size() - 1;
    if (command == QLatin1StringView("pin") && arguments == 1)
        return pin(media, words.at(1));
    const std::pair<const char*, std::function<void()>> actions[] = {
        {"play-pause", [&] { media.togglePlayPause(); }},
        {"next", [&] { media.goToNextTrack(); }},
        {"previous", [&] { media.goToPreviousTrack(); }},
        {"pause-and-dismiss", [&] { media.pauseAndDismiss(); }},
        {"unpin", [&] { media.setUserPinnedClientID(std::nullopt); }}};
    for (const auto& [name, act] : actions)
        if (arguments == 0 && command == QLatin1StringView(name)) {
            act();
            return std::nullopt;
        }
    return QStringLiteral("Unknown media command \"%1\": use play-pause, next, previous, pause-and-dismiss, "
                          "pin SOURCE or unpin.")
        .arg(words.join(QLatin1Char(' ')));
}

} // namespace kelvane
