#pragma once

#include <QString>

namespace kelvane {

// The first address in the texts, taken in order, that joins a video meeting of a common service
// (Zoom, Google Meet, Microsoft Teams, Webex, Jitsi, Whereby, GoTo, Chime, BlueJeans, Skype,
// Slack huddles), or empty.
QString meetingLink(const QString& url, const QString& location, const QString& description);

// Whether a calendar property of this (upper-case) name carries the address of the event's online
// meeting, as services add it beside the standard ones.
bool isConferenceProperty(const QString& name);

} // namespace kelvane
