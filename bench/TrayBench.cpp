// The tray's copies and loading, on real files in a temporary folder, each figure the median of
// five runs with its spread:
// - 1,000 small files and one 1 GB file added to the tray, against `cp` of the same data in the
//   same run, the side that goes first alternating (goal: within 1.3x of cp);
// - the longest the main thread is held up while the copies run (goal: at most 16 ms), and
//   whether progress was shown for the large one;
// - loading a saved tray of 10,000 records (goal: under 300 ms), and the longest the main thread
//   is held up meanwhile (goal: at most 16 ms).

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

// Runs the event loop until `done` holds, timing the gaps between 1 ms ticks: the longest stall
// of the main thread. `eachTick` looks at the tray meanwhile.
double longestStall(const std::function<bool()>& done, const std::function<void()>& eachTick = {})
{
    double longest = 0;
    QEventLoop loop;
    QElapsedTimer gap;
    QTimer ticker;
    ticker.setTimerType(Qt::PreciseTimer);
    ticker.setInterval(1);
    QObject::connect(&ticker, &QTimer::timeout, [&] {
        longest = std::max(longest, double(gap.nsecsElapsed()) / 1e6);
        gap.restart();
        if (eachTick)
            eachTick();
        if (done())
            loop.quit();
    });
    gap.start();
    ticker.start();
    loop.exec();
    return longest;
}

// Adds the files and runs the event loop until they are in.
AddResult add(Tray& tray, const QStringList& paths)
{
    QList<QUrl> urls;
    for (const QString& path : paths)
        urls.append(QUrl::fromLocalFile(path));
    AddResult result;
    bool added = false;
    QElapsedTimer clock;
    clock.start();
    tray.addFilesFromURLs(urls, [&](int) {
        added = true;
        result.seconds = double(clock.nsecsElapsed()) / 1e9;
    });
    result.longestStallMs = longestStall([&] { return added; },
                                         [&] { result.showedProgress = result.showedProgress || tray.showsProgress(); });
    return result;
}

void dropCaches() { std::system("sync"); }
} // namespace

// Median and spread of a set of runs, for printing.
struct Figures {
    std::vector<double> runs;
    double median() const { return bench::median(runs); }
    double low() const { return *std::min_element(runs.begin(), runs.end()); }
    double high() const { return *std::max_element(runs.begin(), runs.end()); }
};

constexpr int runs = 5;

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QTemporaryDir root(QDir::tempPath() + "/kelvane-tray-bench-XXXXXX");
    Bench bench;

    // 1,000 small files and one 1 GB file, each copied by cp and by the tray in every run, the
    // side that goes first alternating from run to run.
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
    const QString large = root.filePath("large.bin");
    {
        QFile file(large);
        file.open(QIODevice::WriteOnly);
        const QByteArray chunk(1 << 20, 'x');
        for (int i = 0; i < 1024; ++i)
            file.write(chunk);
    }
    Figures cpSmall, traySmall, smallRatio, cpLarge, trayLarge, largeRatio, largeStall, smallStall;
    bool showedProgress = false;
    for (int run = 0; run < runs; ++run) {
        const auto measure = [&](const QStringList& sources, const QString& name, Figures& cpFigures, Figures& trayFigures,
                                 Figures& ratio, Figures& stall) {
            double cpSeconds = 0;
            AddResult tray;
            const auto byCp = [&] {
                dropCaches();
                cpSeconds = cp(sources, root.filePath("cp-" + name));
                QDir(root.filePath("cp-" + name)).removeRecursively();
            };
            const auto byTray = [&] {
                dropCaches();
                auto made = bench.tray(root.filePath("tray-" + name));
                tray = add(*made, sources);
                made.reset();
                QDir(root.filePath("tray-" + name)).removeRecursively();
            };
            if (run % 2 == 0) {
                byCp();
                byTray();
            } else {
                byTray();
                byCp();
            }
            cpFigures.runs.push_back(cpSeconds);
            trayFigures.runs.push_back(tray.seconds);
            ratio.runs.push_back(tray.seconds / cpSeconds);
            stall.runs.push_back(tray.longestStallMs);
            return tray.showedProgress;
        };
        measure(smallFiles, "small", cpSmall, traySmall, smallRatio, smallStall);
        showedProgress = measure({large}, "large", cpLarge, trayLarge, largeRatio, largeStall) || showedProgress;
    }
    QFile::remove(large);

    // A saved tray of 10,000 records, loaded again in every run.
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
    const QByteArray saved = QJsonDocument(records).toJson();
    Figures load, loadStall;
    int loaded = 0;
    for (int run = 0; run < runs; ++run) {
        QFile state(base + "/tray_state.json");
        state.open(QIODevice::WriteOnly);
        state.write(saved);
        state.close();
        auto savedTray = bench.tray(base);
        // The list is read beside the main thread: the figure is the time until the files are in.
        QElapsedTimer clock;
        clock.start();
        savedTray->loadPersistedFiles();
        loadStall.runs.push_back(longestStall([&] { return savedTray->isIdle(); }));
        load.runs.push_back(double(clock.nsecsElapsed()) / 1e6);
        loaded = savedTray->count();
    }

    const auto line = [](const char* what, const Figures& f, const char* unit) {
        std::printf("  %-44s median %8.3f %s (%.3f to %.3f)\n", what, f.median(), unit, f.low(), f.high());
    };
    std::printf("Tray: copies against cp in the same run (%d runs, sides alternated), and loading a saved tray\n", runs);
    line("1,000 files of 4 KB, cp:", cpSmall, "s");
    line("1,000 files of 4 KB, tray:", traySmall, "s");
    line("1,000 files of 4 KB, tray / cp:", smallRatio, "x");
    std::printf("    goal: 1.3x; %s\n", bench::verdict(smallRatio.median() <= 1.3));
    line("one 1 GB file, cp:", cpLarge, "s");
    line("one 1 GB file, tray:", trayLarge, "s");
    line("one 1 GB file, tray / cp:", largeRatio, "x");
    std::printf("    goal: 1.3x; %s\n", bench::verdict(largeRatio.median() <= 1.3));
    line("longest main-thread stall, large copy:", largeStall, "ms");
    line("longest main-thread stall, small copies:", smallStall, "ms");
    std::printf("    goal: 16 ms; %s; progress shown for the large copy: %s\n",
                bench::verdict(std::max(largeStall.high(), smallStall.high()) <= 16), showedProgress ? "yes" : "no");
    line("loading 10,000 saved records:", load, "ms");
    std::printf("    goal: 300 ms; %s (%d files)\n", bench::verdict(load.median() < 300), loaded);
    line("longest main-thread stall while loading:", loadStall, "ms");
    std::printf("    goal: 16 ms; %s\n", bench::verdict(loadStall.high() <= 16));
    return 0;
}
