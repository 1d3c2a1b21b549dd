// Runs the real agent for a long while under what a day of use throws at it: screens plugged and
// unplugged (each change followed by its debounced rebuild), a media player crashing and starting
// again, and files kept in the tray and taken out again. Before and after each part it prints the
// agent's resident memory and open file descriptors, and whether it still answers
// `kelvanectl state` within 100 ms.
//
// Usage: soak_bench [SCALE]   SCALE (default 1) multiplies 1,000 screen changes, 200 player crashes
//                             and 10,000 tray cycles; exits 1 when a goal is not met.

#include "BenchSupport.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <functional>

using namespace bench;

namespace {

struct Health {
    double rssKb = 0;
    int descriptors = 0;
    double stateMs = 0;
    bool answered = false;
};

int descriptorsOf(pid_t pid)
{
    int count = 0;
    if (DIR* dir = opendir(("/proc/" + std::to_string(pid) + "/fd").c_str())) {
        while (dirent* entry = readdir(dir))
            count += entry->d_name[0] != '.';
        closedir(dir);
    }
    return count;
}

QJsonObject ctlJson(const std::vector<std::string>& env, const std::vector<std::string>& arguments)
{
    std::vector<std::string> argv{KELVANECTL_BINARY};
    argv.insert(argv.end(), arguments.begin(), arguments.end());
    return QJsonDocument::fromJson(QByteArray::fromStdString(output(argv, env))).object();
}

int ctl(const std::vector<std::string>& env, const std::vector<std::string>& arguments)
{
    std::vector<std::string> argv{KELVANECTL_BINARY};
    argv.insert(argv.end(), arguments.begin(), arguments.end());
    int status = -1;
    timeToExit(argv, env, status);
    return status;
}

// Measured once the agent has settled: its worker threads end after 30 s without work, and with
// them what they hold.
Health health(pid_t agent, const std::vector<std::string>& env)
{
    std::this_thread::sleep_for(std::chrono::seconds(35));
    Health h;
    h.rssKb = double(statusField("/proc/" + std::to_string(agent) + "/status", "VmRSS:"));
    h.descriptors = descriptorsOf(agent);
    std::vector<double> times;
    for (int i = 0; i < 5; ++i) {
        int status = -1;
        times.push_back(timeToExit({KELVANECTL_BINARY, "state"}, env, status));
        h.answered = status == 0;
    }
    h.stateMs = median(times);
    return h;
}

bool waitFor(const std::function<bool()>& condition, int seconds = 10)
{
    const auto deadline = Clock::now() + std::chrono::seconds(seconds);
    while (Clock::now() < deadline) {
        if (condition())
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return false;
}

int notchCount(const std::vector<std::string>& env) { return int(ctlJson(env, {"state"})["notches"].toArray().size()); }

struct Part {
    const char* name;
    int count;
    Health before;
    Health after;
    int failures = 0;
};

// Each part runs twice before it is measured, so that what is made once (caches, the first worker
// threads) is not counted as growth; then its count, between two measures.
void measure(Part& part, pid_t agent, const std::vector<std::string>& env, const std::function<void(int)>& cycles)
{
    cycles(2);
    part.before = health(agent, env);
    cycles(part.count);
    part.after = health(agent, env);
}

bool report(const Part& part)
{
    const double growthMb = (part.after.rssKb - part.before.rssKb) / 1024.0;
    const int moreDescriptors = part.after.descriptors - part.before.descriptors;
    const bool met =
        growthMb < 1.0 && moreDescriptors <= 0 && part.after.answered && part.after.stateMs < 100 && part.failures == 0;
    std::printf("%s, %d times:\n", part.name, part.count);
    std::printf("  resident memory %.1f MB -> %.1f MB (%+.2f MB; goal under 1 MB)\n", part.before.rssKb / 1024,
                part.after.rssKb / 1024, growthMb);
    std::printf("  open descriptors %d -> %d (%+d; goal 0)\n", part.before.descriptors, part.after.descriptors,
                moreDescriptors);
    std::printf("  kelvanectl state answered in %.1f ms at the median (goal under 100 ms); steps "
                "that failed: %d\n",
                part.after.stateMs, part.failures);
    std::printf("  %s\n", verdict(met));
    return met;
}

} // namespace

int main(int argc, char** argv)
{
    const double scale = argc > 1 ? std::atof(argv[1]) : 1.0;
    AgentSession session;
    if (!session.start(KELVANE_BINARY, KELVANECTL_BINARY))
        return 1;
    const std::vector<std::string>& env = session.env;
    std::string display;
    for (const std::string& variable : env)
        if (variable.rfind("DISPLAY=", 0) == 0)
            display = variable.substr(8);
    const std::string xrandr = "DISPLAY=" + display + " xrandr ";
    std::system((xrandr + "--setmonitor M1 1512/400x982/260+0+0 screen >/dev/null").c_str());
    waitFor([&] { return notchCount(env) == 1; });
    bool met = true;

    // Screens: a second monitor plugged and unplugged, each change waited out until the notches
    // are rebuilt for it.
    Part screens{"Screen changes, each followed by its rebuild", std::max(2, int(1000 * scale)), {}, {}};
    measure(screens, session.agent, env, [&](int count) {
        for (int i = 0; i < count; ++i) {
            const bool plug = i % 2 == 0;
            std::system((xrandr + (plug ? "--setmonitor M2 1280/340x800/212+1512+0 none" : "--delmonitor M2") +
                         " >/dev/null 2>&1")
                            .c_str());
            if (!waitFor([&] { return notchCount(env) == (plug ? 2 : 1); }))
                ++screens.failures;
        }
    });
    met = report(screens) && met;

    // A player that crashes and is started again: the agent follows it each time and lets it go.
    char music[] = "/tmp/kelvane-soak-XXXXXX";
    if (!mkdtemp(music))
        return 1;
    const std::string tone = std::string(music) + "/tone.flac";
    std::system(("sox -n -r 44100 -c 2 --comment TITLE=Soak " + tone + " synth 600 sine 440 2>/dev/null").c_str());
    Part players{"A real player (mpv) crashing and starting again", std::max(1, int(200 * scale)), {}, {}};
    measure(players, session.agent, env, [&](int count) {
        for (int i = 0; i < count; ++i) {
            const pid_t player = spawn({"mpv", "--no-video", "--ao=null", "--no-terminal", tone}, env);
            const bool shown = waitFor([&] { return ctlJson(env, {"media"})["track"].toObject()["title"] == "Soak"; });
            kill(player, SIGKILL);
            waitpid(player, nullptr, 0);
            const bool gone = waitFor([&] { return ctlJson(env, {"media"})["track"].isNull(); });
            players.failures += !shown || !gone;
        }
    });
    met = report(players) && met;

    // The tray: one file kept and taken out again, over and over.
    const std::string file = std::string(music) + "/kept.txt";
    {
        QFile kept(QString::fromStdString(file));
        kept.open(QIODevice::WriteOnly);
        kept.write(QByteArray(4096, 'k'));
    }
    Part tray{"A file kept in the tray and taken out again", std::max(1, int(10000 * scale)), {}, {}};
    measure(tray, session.agent, env, [&](int count) {
        for (int i = 0; i < count; ++i) {
            const bool added = ctl(env, {"tray", "add", file}) == 0;
            const QJsonArray items = ctlJson(env, {"tray", "list"})["items"].toArray();
            const std::string name =
                items.isEmpty() ? std::string() : items.first().toObject()["title"].toString().toStdString();
            const bool removed = !name.empty() && ctl(env, {"tray", "remove", name}) == 0;
            tray.failures += !added || !removed;
        }
    });
    met = report(tray) && met;

    std::system(("rm -rf " + std::string(music)).c_str());
    return met ? 0 : 1;
}
