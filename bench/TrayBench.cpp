// The tray's copies and loading, on real files in a temporary folder:
// - 1,000 small files and one 1 GB file added to the tray, against `cp` of the same data in the
//   same run (goal: within 1.3x of cp);
// - the longest the main thread is held up while the large copy runs (goal: at most 16 ms), and
//   whether progress was shown for it;
// - loading a saved tray of 10,000 records (goal: under 300 ms).

#include "BenchSupport.h"

#include "activities/ActiveLiveActivitiesManager.h"
#include "core/QtScheduler.h"
#include "settings/SettingsStore.h"
#include "tray/Tray.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTimer>

using namespace kelvane;

namespace {
struct NoPasteboard : Pasteboard, SharingService, FilePreviewer {
    QStringList types() const override { return {}; }
    QList<QUrl> fileURLs() const override { return {}; }
    QImage image() const override { return {}; }
    std::optional<QString> string(const QString&) const override { return std::nullopt; }
    void writeFileURLs(const QList<QUrl>&) override {}
    void perform(const QList<QUrl>&, std::function<void()> finished) override { finished(); }
    void toggle(const QList<QUrl>&) override {}
};

struct Bench {
    QtScheduler scheduler;
    InMemorySettingsDomain domain;
    SettingsStore settings{domain};
    ActiveLiveActivitiesManager activities{settings};
    NoPasteboard none;
    StagingArea staging;

    std::unique_ptr<Tray> tray(const QString& base)
    {
        auto made = std::make_unique<Tray>(Tray::Dependencies{scheduler, activities, none, none, none, staging, base});
        made->setupTempDirectory();
        return made;
    }
};

double secondsOf(const std::function<void()>& work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    return double(timer.nsecsElapsed()) / 1e9;
}

double cp(const QStringList& sources, const QString& destination)
{
    QDir().mkpath(destination);
    std::vector<std::string> argv{"cp"};
    for (const QString& source : sources)
        argv.push_back(source.toStdString());
    argv.push_back(destination.toStdString());
    int status = 0;
    const double ms = bench::timeToExit(argv, {}, status);
    return ms / 1000.0;
}

struct AddResult {
    double seconds = 0;
    double longestStallMs = 0;
    bool showedProgress = false;
};

// Adds the files and runs the event loop until they are in, timing the gaps between 1 ms ticks.
AddResult add(Tray& tray, const QStringList& paths)
{
    QList<QUrl> urls;
    for (const QString& path : paths)
        urls.append(QUrl::fromLocalFile(path));
    AddResult result;
    QEventLoop loop;
    QElapsedTimer gap;
    QTimer ticker;
    ticker.setTimerType(Qt::PreciseTimer);
    ticker.setInterval(1);
    QObject::connect(&ticker, &QTimer::timeout, [&] {
        result.longestStallMs = std::max(result.longestStallMs, double(gap.nsecsElapsed()) / 1e6);
        gap.restart();
        result.showedProgress = result.showedProgress || tray.showsProgress();
    });
    QElapsedTimer clock;
    clock.start();
    gap.start();
    ticker.start();
    tray.addFilesFromURLs(urls, [&](int) { loop.quit(); });
    loop.exec();
    result.seconds = double(clock.nsecsElapsed()) / 1e9;
    return result;
}

void dropCaches() { std::system("sync"); }
} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QTemporaryDir root(QDir::tempPath() + "/kelvane-tray-bench-XXXXXX");
    Bench bench;

    // 1,000 small files.
    const QString small = root.filePath("small");
    QDir().mkpath(small);
    QStringList smallFiles;
    for (int i = 0; i < 1000; ++i) {
        const QString path = small + QString("/file-%1.txt").arg(i, 4, 10, QChar('0'));
        QFile file(path);
        file.open(QIODevice::WriteOnly);
        file.write(QByteArray(4096, char('a' + i % 26)));
        smallFiles << path;
    }
    dropCaches();
    const double cpSmall = cp(smallFiles, root.filePath("cp-small"));
    auto smallTray = bench.tray(root.filePath("tray-small"));
    const AddResult traySmall = add(*smallTray, smallFiles);

    // One 1 GB file.
    const QString large = root.filePath("large.bin");
    {
        QFile file(large);
        file.open(QIODevice::WriteOnly);
        const QByteArray chunk(1 << 20, 'x');
        for (int i = 0; i < 1024; ++i)
            file.write(chunk);
    }
    dropCaches();
    const double cpLarge = cp({large}, root.filePath("cp-large"));
    auto largeTray = bench.tray(root.filePath("tray-large"));
    const AddResult trayLarge = add(*largeTray, {large});
    QFile::remove(large);
    QDir(root.filePath("cp-large")).removeRecursively();
    QDir(root.filePath("tray-large")).removeRecursively();

    // A saved tray of 10,000 records.
    const QString base = root.filePath("saved");
    const QString folder = base + "/TrayFiles";
    QDir().mkpath(folder);
    QJsonArray records;
    for (int i = 0; i < 10000; ++i) {
        const QString path = folder + QString("/saved-%1.txt").arg(i);
        QFile file(path);
        file.open(QIODevice::WriteOnly);
        file.write("x");
        records.append(QJsonObject{{"url", QUrl::fromLocalFile(path).toString()},
                                   {"addedAt", "2026-11-21T09:00:00Z"},
                                   {"originalName", QString("saved-%1.txt").arg(i)}});
    }
    QFile state(base + "/tray_state.json");
    state.open(QIODevice::WriteOnly);
    state.write(QJsonDocument(records).toJson());
    state.close();
    auto savedTray = bench.tray(base);
    // The list is read beside the main thread: the figure is the time until the files are in.
    const double load = secondsOf([&] {
        savedTray->loadPersistedFiles();
        while (!savedTray->isIdle())
            QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
    });

    std::printf("Tray: copies against cp, and loading a saved tray\n");
    std::printf("  1,000 files of 4 KB:  tray %.3f s, cp %.3f s, ratio %.2fx (goal: 1.3x; %s)\n", traySmall.seconds,
                cpSmall, traySmall.seconds / cpSmall, bench::verdict(traySmall.seconds <= 1.3 * cpSmall));
    std::printf("  one 1 GB file:        tray %.3f s, cp %.3f s, ratio %.2fx (goal: 1.3x; %s)\n", trayLarge.seconds,
                cpLarge, trayLarge.seconds / cpLarge, bench::verdict(trayLarge.seconds <= 1.3 * cpLarge));
    std::printf("  longest main-thread stall during the large copy: %.1f ms (goal: 16 ms; %s); progress shown: %s\n",
                trayLarge.longestStallMs, bench::verdict(trayLarge.longestStallMs <= 16), trayLarge.showedProgress ? "yes" : "no (copy under 0.5 s)");
    std::printf("  longest main-thread stall during the small copies: %.1f ms\n", traySmall.longestStallMs);
    std::printf("  loading 10,000 saved records: %.0f ms (goal: 300 ms; %s), %d files\n", load * 1000,
                bench::verdict(load < 0.3), savedTray->count());
    return 0;
}
