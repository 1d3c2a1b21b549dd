#pragma once

#include "activities/CalendarModel.h"

#include <QUrl>

namespace kelvane {

// Hands an event to the desktop: its address to the browser or meeting application, or the event
// to the user's calendar application.
class EventOpener {
public:
    virtual ~EventOpener() = default;
    virtual void openUrl(const QUrl& url) = 0;
    virtual void openCalendarApplication(const CalendarEvent& event) = 0;
};

} // namespace kelvane
