#pragma once

#include <QString>

namespace kelvane {

// The first address in the texts, taken in order, that joins a video meeting of a common service
// (Zoom, Google Meet, Microsoft Teams, Webex, Jitsi, Whereby, GoTo, Chime, BlueJeans, Skype,
// Slack huddles), or empty.
QString meetingLink(const QString& url, const QString& location, const QString& description);

} // namespace kelvane
