#pragma once

#include <QJsonObject>
#include <QString>

#include <optional>

namespace kelvane {

class MediaManager;

// What is playing as scripts read it: the track (null when nothing plays), isPlaying,
// currentElapsedTime and duration in seconds, the sources, the active source and the preferred one.
QJsonObject mediaState(const MediaManager& media);

// A playback command by its script name ("play-pause", "next", "previous"); an error message for
// the user when there is no such command.
std::optional<QString> performMediaCommand(MediaManager& media, const QString& command);

} // namespace kelvane
