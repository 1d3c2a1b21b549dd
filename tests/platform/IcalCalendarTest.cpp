#include "platform/linux/IcalCalendar.h"

#include <QFile>
#include <QTimeZone>

#include <gtest/gtest.h>

namespace kelvane {
namespace {

QDateTime utc(const char* iso) { return QDateTime::fromString(QString::fromLatin1(iso), Qt::ISODate); }

IcalCalendar load(const char* name)
{
    QFile file(QStringLiteral(KELVANE_TEST_DATA "/calendar/") + QString::fromLatin1(name));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name;
    QString error;
    auto calendar = IcalCalendar::parse(file.readAll(), error);
    EXPECT_TRUE(calendar) << name << ": " << error.toStdString();
    return std::move(*calendar);
}

// "title@start" in UTC, for compact comparisons.
QStringList describe(const QList<CalendarEvent>& events)
{
    QStringList lines;
    for (const CalendarEvent& event : events)
        lines << event.title + u'@' + event.start.toUTC().toString(Qt::ISODate) + u'/' +
                     QString::number(event.start.secsTo(event.end) / 60);
    lines.sort();
    return lines;
}

TEST(IcalCalendar, ExpandsRecurrenceWithExceptionsMovedAndCancelledInstancesInTheirZone)
{
    const IcalCalendar calendar = load("weekly.ics");
    EXPECT_EQ(calendar.name(), "Team");
    EXPECT_EQ(calendar.color(), "#ff2968");
    // Mondays at 10:00 in Berlin, summer then winter time: 26 October excluded, 2 November moved to
    // the Tuesday afternoon, 9 November cancelled (named in UTC), one added Thursday.
    EXPECT_EQ(describe(calendar.occurrences(utc("2026-10-01T00:00:00Z"), utc("2026-12-01T00:00:00Z"))),
              (QStringList{"Stand-up (moved)@2026-11-03T13:00:00Z/30", "Stand-up@2026-10-12T08:00:00Z/15",
                           "Stand-up@2026-10-19T08:00:00Z/15", "Stand-up@2026-10-29T15:00:00Z/15",
                           "Stand-up@2026-11-16T09:00:00Z/15"}));
    const auto events = calendar.occurrences(utc("2026-10-12T00:00:00Z"), utc("2026-10-13T00:00:00Z"));
    ASSERT_EQ(events.size(), 1);
    EXPECT_EQ(events[0].meetingLink, "https://meet.google.com/abc-defg-hij");
    EXPECT_EQ(events[0].uid, "standup@kelvane.test");
}

TEST(IcalCalendar, FollowsTheEventsOwnZoneAcrossItsDaylightSavingChange)
{
    const IcalCalendar calendar = load("newyork.ics");
    const struct {
        const char* from;
        const char* to;
        QStringList expected;
    } cases[] = {
        // New York leaves summer time on 1 November, a week after Europe.
        {"2026-10-15T00:00:00Z", "2026-11-12T00:00:00Z",
         {"Sync with New York@2026-10-19T13:00:00Z/30", "Sync with New York@2026-10-26T13:00:00Z/30",
          "Sync with New York@2026-11-02T14:00:00Z/30", "Sync with New York@2026-11-09T14:00:00Z/30"}},
        // An endless series, months after its first instance.
        {"2027-06-01T00:00:00Z", "2027-06-15T00:00:00Z",
         {"Sync with New York@2027-06-07T13:00:00Z/30", "Sync with New York@2027-06-14T13:00:00Z/30"}},
        // An instance under way at the start of the range meets it.
        {"2026-10-19T13:15:00Z", "2026-10-19T13:20:00Z", {"Sync with New York@2026-10-19T13:00:00Z/30"}},
        {"2026-10-19T13:30:00Z", "2026-10-26T13:00:00Z", {}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(describe(calendar.occurrences(utc(c.from), utc(c.to))), c.expected) << c.from;
    const auto events = calendar.occurrences(utc("2026-10-19T00:00:00Z"), utc("2026-10-20T00:00:00Z"));
    ASSERT_EQ(events.size(), 1);
    EXPECT_EQ(events[0].meetingLink, "https://us02web.zoom.us/j/81234567890?pwd=abc");
}

TEST(IcalCalendar, AllDayEventsSpanLocalDaysAndUnreadableEventsAreCounted)
{
    const IcalCalendar calendar = load("days.ics");
    EXPECT_EQ(calendar.unreadableCount(), 1);
    const auto events = calendar.occurrences(QDate(2026, 11, 20).startOfDay(), QDate(2026, 12, 1).startOfDay());
    ASSERT_EQ(events.size(), 2);
    for (const CalendarEvent& event : events)
        EXPECT_TRUE(event.allDay) << event.title.toStdString();
    EXPECT_EQ(events[0].start, QDate(2026, 11, 24).startOfDay());
    EXPECT_EQ(events[0].end, QDate(2026, 11, 25).startOfDay());
    EXPECT_EQ(events[1].start, QDate(2026, 11, 25).startOfDay());
    EXPECT_EQ(events[1].end, QDate(2026, 11, 28).startOfDay());
}

} // namespace
} // namespace kelvane
