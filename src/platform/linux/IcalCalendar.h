#pragma once

#include "activities/CalendarModel.h"

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>

#include <memory>
#include <optional>

struct icalcomponent_impl;

namespace kelvane {

struct IcalSeriesList;

// One iCalendar document, read with libical, and its events' occurrences in a range: recurrence
// rules, added and excluded dates and moved or cancelled instances applied, times taken in their
// own time zones. Not thread-safe; keep each on one thread.
class IcalCalendar {
public:
    // Nothing, with the reason in `error`, when the text is no iCalendar document.
    static std::optional<IcalCalendar> parse(const QByteArray& text, QString& error);
    IcalCalendar(IcalCalendar&&) noexcept;
    IcalCalendar& operator=(IcalCalendar&&) noexcept;
    ~IcalCalendar();

    // The calendar's own name and colour ("#rrggbb"), when the document gives them.
    QString name() const { return m_name; }
    QString color() const { return m_color; }
    int eventCount() const { return m_eventCount; }
    // Events without a readable start are left out and counted here.
    int unreadableCount() const { return m_unreadable; }

    // Every occurrence that meets [from, to).
    QList<CalendarEvent> occurrences(const QDateTime& from, const QDateTime& to) const;

private:
    struct Free {
        void operator()(icalcomponent_impl* component) const;
    };
    explicit IcalCalendar(icalcomponent_impl* root);

    std::unique_ptr<icalcomponent_impl, Free> m_root;
    std::unique_ptr<IcalSeriesList> m_list;
    QString m_name;
    QString m_color;
    int m_eventCount = 0;
    int m_unreadable = 0;
};

} // namespace kelvane
