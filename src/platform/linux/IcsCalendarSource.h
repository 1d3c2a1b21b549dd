#pragma once

#include "calendar/CalendarSource.h"

#include <QThread>

namespace kelvane {

class CalendarFileList;
class IcsWorker;

// The calendars of the user's iCalendar files and folders: read and expanded on a thread of their
// own, read again when a file changes (inotify), each calendar reported whole when its events
// changed. A file that cannot be read is named in one line; the others go on.
class IcsCalendarSource : public CalendarSource {
    Q_OBJECT
public:
    explicit IcsCalendarSource(CalendarFileList& files, QObject* parent = nullptr);
    ~IcsCalendarSource() override;

    void setRange(const QDateTime& from, const QDateTime& to) override;

private:
    QThread m_thread;
    IcsWorker* m_worker;
};

} // namespace kelvane
