// Kills the real agent with SIGKILL at random moments while it saves: tray adds and removes,
// timers started and cancelled, settings written. After every kill the next start must load every
// saved file (no file set aside as broken, no line saying one could not be read), list only tray
// files that exist, whole, and keep every file the tray folder held.
//
// Usage: crash_bench [TRIALS]   (default 1000); exits 1 when any trial fails.

#include "BenchSupport.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>
#include <QSet>

#include <atomic>

using namespace bench;

namespace {

struct Session {
    std::vector<std::string> env;
    QString home;
    QString dataFolder() const { return home + "/data/io.kelvane.Kelvane"; }
    QString trayFolder() const { return dataFolder() + "/TrayFiles"; }
};

// The agent with its output kept in a file, as a user's session keeps it in the journal.
pid_t startAgent(const Session& session, const QString& logPath)
{
    const pid_t pid = fork();
    if (pid == 0) {
        for (const auto& e : session.env)
            putenv(const_cast<char*>(e.c_str()));
        const int log = open(QFile::encodeName(logPath).constData(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        dup2(log, STDOUT_FILENO);
        dup2(log, STDERR_FILENO);
        execl(KELVANE_BINARY, KELVANE_BINARY, nullptr);
        _exit(127);
    }
    return pid;
}

int ctl(const Session& session, const std::vector<std::string>& arguments)
{
    std::vector<std::string> argv{KELVANECTL_BINARY};
    argv.insert(argv.end(), arguments.begin(), arguments.end());
    int status = -1;
    timeToExit(argv, session.env, status);
    return status;
}

QJsonObject ctlJson(const Session& session, const std::vector<std::string>& arguments)
{
    std::vector<std::string> argv{KELVANECTL_BINARY};
    argv.insert(argv.end(), arguments.begin(), arguments.end());
    return QJsonDocument::fromJson(QByteArray::fromStdString(output(argv, session.env))).object();
}

bool waitUntilAnswering(const Session& session, pid_t agent)
{
    for (int attempt = 0; attempt < 300; ++attempt) {
        if (waitpid(agent, nullptr, WNOHANG) == agent)
            return false;
        if (ctl(session, {"state"}) == 0)
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return false;
}

QSet<QString> filesIn(const QString& folder)
{
    QSet<QString> names;
    QDirIterator it(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext())
        names.insert(QDir(folder).relativeFilePath(it.next()));
    return names;
}

QStringList brokenFiles(const Session& session)
{
    QStringList found;
    QDirIterator it(session.home, {"*.broken"}, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext())
        found << it.next();
    return found;
}

// The paths the tray lists, or nothing when its answer does not parse.
std::optional<QStringList> trayPaths(const Session& session)
{
    const QJsonObject list = ctlJson(session, {"tray", "list"});
    if (!list.contains("items"))
        return std::nullopt;
    QStringList paths;
    for (const QJsonValue& item : list["items"].toArray())
        for (const QJsonValue& file : item.toObject()["files"].toArray())
            paths << file.toObject()["path"].toString();
    return paths;
}

struct Figures {
    int trials = 0;
    int loaded = 0;
    int brokenLoads = 0;
    int filesLost = 0;
    int missingListed = 0;
    int partialListed = 0;
    int partialLeftOver = 0;
    int operations = 0;
};

// One random change, as a user or a script makes it.
void change(const Session& session, const QString& sources, int serial, QRandomGenerator& random,
            const std::optional<QStringList>& listed)
{
    // The tray stays around thirty files, so that every start loads about as much.
    const bool full = listed && listed->size() > 30;
    switch (random.bounded(5)) {
    case 0:
    case 1: {
        if (full) {
            ctl(session, {"tray", "remove", QFileInfo(listed->at(random.bounded(int(listed->size())))).fileName().toStdString()});
            break;
        }
        // A new file, named once so that its copy keeps its name; one in eight is 4 MB, long
        // enough to copy that a kill may land in the middle.
        const QString path = sources + QString("/file-%1.bin").arg(serial);
        QFile file(path);
        if (file.open(QIODevice::WriteOnly)) {
            QByteArray bytes(random.bounded(8) == 0 ? 4 << 20 : random.bounded(1, 64 << 10), char('a' + serial % 26));
            file.write(bytes);
            file.close();
        }
        ctl(session, {"tray", "add", path.toStdString()});
        break;
    }
    case 2:
        if (listed && !listed->isEmpty())
            ctl(session, {"tray", "remove", QFileInfo(listed->at(random.bounded(int(listed->size())))).fileName().toStdString()});
        break;
    case 3:
        // Timers of a few seconds: they end, are announced and leave the list again.
        ctl(session, {"timer", "add", "T" + std::to_string(serial), std::to_string(1 + random.bounded(5))});
        break;
    default:
        ctl(session, {"settings", "set", "preferredOpenMode", random.bounded(2) ? "\"tray\"" : "\"tuckle\""});
        break;
    }
}

} // namespace

int main(int argc, char** argv)
{
    const int trials = argc > 1 ? std::atoi(argv[1]) : 1000;
    pid_t xvfb = -1, bus = -1;
    const std::string display = startXvfb(xvfb);
    const std::string address = startSessionBus(bus);
    char home[] = "/tmp/kelvane-crash-XXXXXX";
    if (display.empty() || address.empty() || !mkdtemp(home)) {
        std::fprintf(stderr, "could not start Xvfb or a session bus\n");
        return 1;
    }
    Session session{sessionEnvironment(home, display, address), QString::fromLocal8Bit(home)};
    const QString sources = session.home + "/sources";
    QDir().mkpath(sources);
    QRandomGenerator random(20261123);
    Figures figures;
    QSet<QString> trayBefore;
    int serial = 0;
    const auto started = Clock::now();

    for (int trial = 0; trial <= trials; ++trial) {
        const QString log = session.home + "/agent.log";
        const pid_t agent = startAgent(session, log);
        const bool answering = waitUntilAnswering(session, agent);
        QFile logFile(log);
        logFile.open(QIODevice::ReadOnly);
        const QString said = QString::fromLocal8Bit(logFile.readAll());
        const QStringList broken = brokenFiles(session);
        const auto listed = answering ? trayPaths(session) : std::nullopt;
        const QSet<QString> trayNow = filesIn(session.trayFolder());
        if (trial > 0) {
            ++figures.trials;
            const bool clean = answering && listed && broken.isEmpty() && !said.contains("could not be read") &&
                               !said.contains("Failed to load") && ctl(session, {"timer", "list"}) == 0;
            if (clean)
                ++figures.loaded;
            else {
                ++figures.brokenLoads;
                std::fprintf(stderr, "trial %d: %s%s\n", trial, broken.join(", ").toLocal8Bit().constData(),
                             said.toLocal8Bit().constData());
                for (const QString& path : broken)
                    QFile::remove(path);
            }
            for (const QString& name : trayBefore)
                if (!trayNow.contains(name)) {
                    ++figures.filesLost;
                    std::fprintf(stderr, "trial %d: lost %s\n", trial, name.toLocal8Bit().constData());
                }
            for (const QString& path : listed.value_or(QStringList())) {
                const QFileInfo copy(path);
                const QFileInfo original(sources + "/" + copy.fileName());
                if (!copy.exists())
                    ++figures.missingListed;
                else if (original.exists() && copy.size() != original.size()) {
                    ++figures.partialListed;
                    std::fprintf(stderr, "trial %d: %s has %lld bytes of %lld\n", trial, path.toLocal8Bit().constData(),
                                 copy.size(), original.size());
                }
            }
            for (const QString& name : trayNow) {
                const QFileInfo original(sources + "/" + name);
                if (original.exists() && QFileInfo(session.trayFolder() + "/" + name).size() != original.size() &&
                    !listed.value_or(QStringList()).contains(session.trayFolder() + "/" + name))
                    ++figures.partialLeftOver;
            }
        }
        // Copies the tray no longer lists, and their originals, go now that they have been
        // checked: the run would otherwise fill the disk.
        if (listed) {
            for (const QString& name : trayNow)
                if (!listed->contains(session.trayFolder() + "/" + name)) {
                    QFile::remove(session.trayFolder() + "/" + name);
                    QFile::remove(sources + "/" + name);
                }
        }
        if (trial == trials || !answering) {
            kill(agent, SIGKILL);
            waitpid(agent, nullptr, 0);
            if (!answering) {
                std::fprintf(stderr, "trial %d: the agent did not come up\n", trial);
                continue;
            }
            break;
        }

        // Changes go on until the kill, which lands at a random moment up to a second and a half in.
        std::atomic<bool> killed = false;
        std::thread killer([&, delay = random.bounded(50, 1500)] {
            std::this_thread::sleep_for(std::chrono::milliseconds(delay));
            kill(agent, SIGKILL);
            killed = true;
        });
        auto current = listed;
        while (!killed) {
            change(session, sources, ++serial, random, current);
            ++figures.operations;
        }
        killer.join();
        waitpid(agent, nullptr, 0);
        trayBefore = filesIn(session.trayFolder());
    }

    const double seconds = std::chrono::duration<double>(Clock::now() - started).count();
    std::printf("Crash consistency: SIGKILL at a random moment while saving, %d trials, %.0f s\n", figures.trials,
                seconds);
    std::printf("  changes made before the kills:      %d\n", figures.operations);
    std::printf("  starts that loaded every file:      %d of %d\n", figures.loaded, figures.trials);
    std::printf("  starts with a broken saved file:    %d\n", figures.brokenLoads);
    std::printf("  tray files lost:                    %d\n", figures.filesLost);
    std::printf("  listed tray files missing:          %d\n", figures.missingListed);
    std::printf("  listed tray files cut short:        %d\n", figures.partialListed);
    std::printf("  half-copied files left in the tray folder: %d\n", figures.partialLeftOver);
    const bool met = figures.trials == trials && figures.loaded == trials && figures.filesLost == 0 &&
                     figures.missingListed == 0 && figures.partialListed == 0 && figures.partialLeftOver == 0;
    std::printf("  goal: every start loads, nothing lost or cut short (%s)\n", verdict(met));
    for (pid_t pid : {bus, xvfb})
        stop(pid);
    std::system(("rm -rf " + std::string(home)).c_str());
    return met ? 0 : 1;
}
