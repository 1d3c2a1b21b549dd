#pragma once

#include "calendar/CalendarSource.h"

#include <memory>
#include <thread>

namespace kelvane {

struct EdsWorker;

// The calendars of Evolution Data Server (GNOME Calendar's and Evolution's, and through them the
// user's online accounts), read with libecal on a thread that runs its own GLib main context:
// every enabled calendar gets a live view over the range, and each change re-expands that calendar
// there. Kelvane only reads. Without the service, one line says so and the others go on.
class EdsCalendarSource : public CalendarSource {
    Q_OBJECT
public:
    explicit EdsCalendarSource(QObject* parent = nullptr);
    ~EdsCalendarSource() override;

    void setRange(const QDateTime& from, const QDateTime& to) override;

private:
    std::shared_ptr<EdsWorker> m_worker;
    std::thread m_thread;
};

} // namespace kelvane
