// Calendar figures: loading and expanding a large iCalendar file, and how soon a change to one event
// in it reaches the calendar model. Each is set against a baseline measured in the same run, the
// two sides alternated: libical's own parse of the same text, and the kernel's notice of the same
// file write (a bare file watch).
#include "BenchSupport.h"

#include "calendar/CalendarFileList.h"
#include "calendar/CalendarManager.h"
#include "activities/ActiveLiveActivitiesManager.h"
#include "core/QtScheduler.h"
#include "platform/linux/IcalCalendar.h"
#include "platform/linux/IcsCalendarSource.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QFileSystemWatcher>
#include <QTemporaryDir>
#include <QTimer>

#include <libical/ical.h>

#include <cstdio>

using namespace kelvane;

namespace {

constexpr int runs = 7;

// 5,000 events over two years around now: 4,800 single ones and 200 weekly series. The one whose
// title the change test rewrites falls on today.
QByteArray largeCalendar(const QString& changedTitle = QStringLiteral("Single 2400"))
{
    const QDateTime first = QDateTime::currentDateTimeUtc().addDays(-365);
    const auto stamp = [](const QDateTime& t) { return t.toString(QStringLiteral("yyyyMMddTHHmmssZ")).toUtf8(); };
    QByteArray text = "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Kelvane//Bench//EN\r\n";
    for (int i = 0; i < 5000; ++i) {
        const bool series = i >= 4800;
        const QDateTime start = first.addSecs(qint64(i % 4800) * 730 * 86400 / 4800).addSecs(3600 * (i % 9));
        text += "BEGIN:VEVENT\r\nUID:event-" + QByteArray::number(i) + "\r\nSUMMARY:" +
                (i == 2400 ? changedTitle.toUtf8() : (series ? "Series " : "Single ") + QByteArray::number(i)) +
                "\r\nDTSTART:" + stamp(start) + "\r\nDTEND:" + stamp(start.addSecs(1800)) + "\r\n" +
                (series ? "RRULE:FREQ=WEEKLY\r\n" : "") + "END:VEVENT\r\n";
    }
    return text + "END:VCALENDAR\r\n";
}

struct Figures {
    std::vector<double> ours, baseline;
    void print(const char* what, const char* baselineName, double goalMs) const
    {
        std::vector<double> ratios;
        for (std::size_t i = 0; i < ours.size(); ++i)
            ratios.push_back(ours[i] / baseline[i]);
        std::printf("%s: %.1f ms (%.1f-%.1f), %s %.1f ms (%.1f-%.1f), ratio %.2f (%.2f-%.2f); goal under %.0f ms %s\n",
                    what, bench::median(ours), bench::minimum(ours), bench::maximum(ours), baselineName,
                    bench::median(baseline), bench::minimum(baseline), bench::maximum(baseline),
                    bench::median(ratios), bench::minimum(ratios), bench::maximum(ratios), goalMs,
                    bench::verdict(bench::median(ours) < goalMs));
    }
};

double msSince(const QElapsedTimer& timer) { return double(timer.nsecsElapsed()) / 1e6; }

void loadAndExpand(const QByteArray& text, Figures& figures)
{
    const QDateTime from = QDateTime::currentDateTimeUtc().addDays(-366), to = from.addDays(732);
    for (int run = 0; run < runs; ++run) {
        for (int side = 0; side < 2; ++side) {
            const bool ours = (run + side) % 2 == 0;
            QElapsedTimer timer;
            timer.start();
            if (ours) {
                QString error;
                const auto calendar = IcalCalendar::parse(text, error);
                const auto events = calendar->occurrences(from, to);
                figures.ours.push_back(msSince(timer));
                if (run == 0 && side == 0)
                    std::printf("expanded %lld occurrences of %d events\n", static_cast<long long>(events.size()),
                                calendar->eventCount());
            } else {
                icalcomponent* root = icalparser_parse_string(text.constData());
                figures.baseline.push_back(msSince(timer));
                icalcomponent_free(root);
            }
        }
    }
}

void changeReachesModel(Figures& figures)
{
    QTemporaryDir data, folder;
    const QString path = folder.filePath(QStringLiteral("big.ics"));
    QFile(path).open(QIODevice::WriteOnly);
    {
        QFile file(path);
        file.open(QIODevice::WriteOnly);
        file.write(largeCalendar());
    }
    QtScheduler scheduler;
    InMemorySettingsDomain domain;
    SettingsStore settings(domain);
    ActiveLiveActivitiesManager activities(settings);
    struct NoOpener final : EventOpener {
        void openUrl(const QUrl&) override {}
        void openCalendarApplication(const CalendarEvent&) override {}
    } opener;
    CalendarManager manager({scheduler, settings, activities, opener});
    CalendarFileList files(data.path());
    files.add(path);
    IcsCalendarSource source(files);
    manager.addSource(source);
    const auto hasTitle = [&](const QString& title) {
        for (const CalendarEvent& event : manager.events())
            if (event.title == title)
                return true;
        return false;
    };
    const auto waitFor = [](auto condition) {
        QEventLoop loop;
        QElapsedTimer limit;
        limit.start();
        while (!condition() && limit.elapsed() < 10000)
            loop.processEvents(QEventLoop::WaitForMoreEvents, 10);
    };
    waitFor([&] { return manager.events().size() > 100; });

    QFileSystemWatcher bare;
    const QString other = folder.filePath(QStringLiteral("other.txt"));
    QFile(other).open(QIODevice::WriteOnly);
    bare.addPath(other);
    bool noticed = false;
    QObject::connect(&bare, &QFileSystemWatcher::fileChanged, [&] { noticed = true; });

    const QByteArray changed[] = {largeCalendar(QStringLiteral("Changed A")), largeCalendar(QStringLiteral("Changed B"))};
    for (int run = 0; run < runs; ++run) {
        for (int side = 0; side < 2; ++side) {
            const bool ours = (run + side) % 2 == 0;
            QElapsedTimer timer;
            if (ours) {
                // The text is ready before the clock starts: what is timed is the way to the model.
                const QString title = run % 2 ? QStringLiteral("Changed B") : QStringLiteral("Changed A");
                QFile file(path);
                file.open(QIODevice::WriteOnly);
                timer.start();
                file.write(changed[run % 2]);
                file.close();
                waitFor([&] { return hasTitle(title); });
                figures.ours.push_back(msSince(timer));
            } else {
                noticed = false;
                QFile file(other);
                file.open(QIODevice::WriteOnly);
                timer.start();
                file.write(changed[run % 2]);
                file.close();
                waitFor([&] { return noticed; });
                figures.baseline.push_back(msSince(timer));
            }
        }
    }
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QByteArray text = largeCalendar();
    Figures load;
    loadAndExpand(text, load);
    load.print("5,000 events (200 weekly series) read and expanded over two years", "libical's parse alone", 200);
    Figures change;
    changeReachesModel(change);
    change.print("one event changed in the file, until the calendar model has it", "a bare file watch's notice", 100);
    return 0;
}
