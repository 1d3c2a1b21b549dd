#include "platform/linux/IcsCalendarSource.h"

#include "calendar/CalendarFileList.h"
#include "core/Log.h"
#include "support/Polling.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace kelvane;
using namespace kelvane::test;

namespace {

bool write(const QString& path, const QByteArray& text)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(text) == text.size();
}

QByteArray calendar(const QByteArray& title)
{
    return "BEGIN:VCALENDAR\nVERSION:2.0\nBEGIN:VEVENT\nUID:" + title + "\nSUMMARY:" + title +
           "\nDTSTART:20261124T100000Z\nDTEND:20261124T110000Z\nEND:VEVENT\nEND:VCALENDAR\n";
}

} // namespace

TEST(IcsCalendarSource, ReadsFoldersAndFilesFollowsChangesAndNamesABrokenFileOnce)
{
    QTemporaryDir data, synced;
    const QDir root(synced.path());
    ASSERT_TRUE(root.mkpath("work") && root.mkpath("home"));
    ASSERT_TRUE(write(root.filePath("work/a.ics"), calendar("Review")));
    ASSERT_TRUE(write(root.filePath("work/displayname"), "Work\n"));
    ASSERT_TRUE(write(root.filePath("work/color"), "#FF9500\n"));
    ASSERT_TRUE(write(root.filePath("home/broken.ics"), "BEGIN:VCARD\nEND:VCARD\n"));
    ASSERT_TRUE(write(root.filePath("home/b.ics"), calendar("Dentist")));

    LogCapture log;
    CalendarFileList files(data.path());
    ASSERT_EQ(files.add(synced.path()), "");
    std::map<QString, std::pair<CalendarInfo, QStringList>> seen;
    {
        IcsCalendarSource source(files);
        QObject::connect(&source, &CalendarSource::calendarChanged,
                         [&](const CalendarInfo& info, const QList<CalendarEvent>& events) {
                             QStringList titles;
                             for (const CalendarEvent& event : events)
                                 titles << event.title;
                             seen[info.id] = {info, titles};
                         });
        QObject::connect(&source, &CalendarSource::calendarRemoved, [&](const QString& id) { seen.erase(id); });
        source.setRange(QDateTime::fromString("2026-11-20T00:00:00Z", Qt::ISODate),
                        QDateTime::fromString("2026-11-30T00:00:00Z", Qt::ISODate));
        const QString work = "file:" + root.filePath("work"), home = "file:" + root.filePath("home");
        ASSERT_TRUE(waitUntil([&] { return seen.size() == 2; }));
        EXPECT_EQ(seen[work].first.title, "Work");
        EXPECT_EQ(seen[work].first.color, "#FF9500");
        EXPECT_EQ(seen[work].second, QStringList{"Review"});
        EXPECT_EQ(seen[home].first.title, "home");
        EXPECT_EQ(seen[home].second, QStringList{"Dentist"});

        // Written in place, and saved anew by renaming over the old file.
        ASSERT_TRUE(write(root.filePath("work/a.ics"), calendar("Review moved")));
        ASSERT_TRUE(waitUntil([&] { return seen[work].second == QStringList{"Review moved"}; }));
        ASSERT_TRUE(write(root.filePath("home/c.tmp"), calendar("Dentist at nine")));
        ASSERT_TRUE(QFile::remove(root.filePath("home/b.ics")));
        ASSERT_TRUE(QFile::rename(root.filePath("home/c.tmp"), root.filePath("home/b.ics")));
        ASSERT_TRUE(waitUntil([&] { return seen[home].second == QStringList{"Dentist at nine"}; }));

        // A new file in a calendar's folder.
        ASSERT_TRUE(write(root.filePath("home/gym.ics"), calendar("Gym")));
        ASSERT_TRUE(waitUntil([&] { return seen[home].second.contains("Gym"); }));

        // A calendar whose last file goes is gone.
        ASSERT_TRUE(QFile::remove(root.filePath("work/a.ics")));
        ASSERT_TRUE(waitUntil([&] { return !seen.contains(work); }));
    }
    const QStringList broken = log.lines().filter("broken.ics");
    ASSERT_EQ(broken.size(), 1) << log.lines().join("\n").toStdString();
    EXPECT_EQ(broken[0], "[Calendar] Could not read " + root.filePath("home/broken.ics") + ": not an iCalendar file.");
}
