#pragma once

#include <QJsonObject>
#include <QString>

#include <optional>

namespace kelvane {

class MediaManager;

// What is playing as scripts read it: the track (null when nothing plays), isPlaying,
// currentElapsedTime and duration in seconds, the sources, the active source and the preferred one.
QJsonObject mediaState(const MediaManager& media);

// A media command by its script words ("play-pause", "next", "previous", "pause-and-dismiss",
// "pin SOURCE", "unpin"); an error message for the user when there is no such command or source.
std::optional<QString> performMediaCommand(MediaManager& media, const QStringList& words);

} // namespace kelvane
