#pragma once

#include "calendar/EventOpener.h"

namespace kelvane {

// Opens addresses with the desktop's handler for them (xdg-open), and the user's default
// application for calendars (the handler of "text/calendar").
class DesktopEventOpener final : public EventOpener {
public:
    void openUrl(const QUrl& url) override;
    void openCalendarApplication(const CalendarEvent& event) override;
};

} // namespace kelvane
