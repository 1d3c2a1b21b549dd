#pragma once

#include "activities/CalendarModel.h"

#include <QDateTime>
#include <QList>
#include <QObject>

namespace kelvane {

// One calendar as its source names it.
struct CalendarInfo {
    // Stable across launches: what the user's selection of calendars stores.
    QString id;
    QString title;
    // "#rrggbb".
    QString color;
    // Where it comes from, for the user: "Evolution", or the file or folder it is read from.
    QString origin;

    bool operator==(const CalendarInfo&) const = default;
};

// A provider of calendars and their events: reads off the main thread, follows changes, and
// reports each calendar's events within the asked range whole, on the main thread.
class CalendarSource : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    // Starts reading the range, or reads it again when the range moved.
    virtual void setRange(const QDateTime& from, const QDateTime& to) = 0;

Q_SIGNALS:
    // Every occurrence of the calendar's events that meets the range; replaces what came before.
    void calendarChanged(const kelvane::CalendarInfo& calendar, const QList<kelvane::CalendarEvent>& events);
    void calendarRemoved(const QString& id);
};

} // namespace kelvane

Q_DECLARE_METATYPE(kelvane::CalendarInfo)
Q_DECLARE_METATYPE(kelvane::CalendarEvent)
