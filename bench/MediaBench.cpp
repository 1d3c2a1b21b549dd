// A player that reports 50 track changes a second for 10 s: how many track updates the agent
// handles and how much processor time it spends, against the same agent beside a player that
// plays quietly, measured in the same run.

#include "BenchSupport.h"

#include <QJsonDocument>
#include <QJsonObject>

using namespace bench;

namespace {
QJsonObject media(const std::vector<std::string>& env)
{
    const std::string text = output({KELVANECTL_BINARY, "media"}, env);
    return QJsonDocument::fromJson(QByteArray::fromStdString(text)).object();
}

// The number a flooding player puts after its title ("Flood 123").
int titleNumber(const QJsonObject& state)
{
    return state["track"].toObject()["title"].toString().section(' ', 1).toInt();
}

struct Window {
    double cpuPercent;
    double updatesPerSecond;
    int changesSent;
};

Window measure(pid_t agent, const std::vector<std::string>& env, int seconds)
{
    const QJsonObject before = media(env);
    const double cpuBefore = cpuSeconds(agent);
    const auto start = Clock::now();
    std::this_thread::sleep_for(std::chrono::seconds(seconds));
    const double cpu = cpuSeconds(agent) - cpuBefore;
    const double wall = std::chrono::duration<double>(Clock::now() - start).count();
    const QJsonObject after = media(env);
    return {100.0 * cpu / wall,
            (after["trackUpdatesHandled"].toInt() - before["trackUpdatesHandled"].toInt()) / wall,
            titleNumber(after) - titleNumber(before)};
}

// Waits until the agent shows the player's track, then for the notch's animation to settle.
bool waitForTitle(const std::vector<std::string>& env, const QString& prefix)
{
    for (int attempt = 0; attempt < 100; ++attempt) {
        if (media(env)["track"].toObject()["title"].toString().startsWith(prefix)) {
            std::this_thread::sleep_for(std::chrono::seconds(2));
            return true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    return false;
}
} // namespace

int main()
{
    AgentSession session;
    if (!session.start(KELVANE_BINARY, KELVANECTL_BINARY))
        return 1;
    constexpr int seconds = 10;

    const pid_t quiet = spawn({MPRIS_TEST_PLAYER, "quiet", "--identity", "Quiet", "--title", "Quiet"}, session.env);
    if (!waitForTitle(session.env, "Quiet")) {
        std::fprintf(stderr, "the agent did not see the quiet player\n");
        return 1;
    }
    const Window baseline = measure(session.agent, session.env, seconds);
    stop(quiet);

    const pid_t flood = spawn({MPRIS_TEST_PLAYER, "flood", "--identity", "Flood", "--title", "Flood", "--flood", "50"},
                              session.env);
    if (!waitForTitle(session.env, "Flood")) {
        std::fprintf(stderr, "the agent did not see the flooding player\n");
        return 1;
    }
    const Window flooded = measure(session.agent, session.env, seconds);
    stop(flood);

    std::printf("Media: a player reporting 50 track changes a second, %d s\n", seconds);
    std::printf("  changes sent by the player:        %d (%.1f a second)\n", flooded.changesSent,
                flooded.changesSent / double(seconds));
    std::printf("  track updates handled:             %.2f a second (goal: at most 1; %s)\n",
                flooded.updatesPerSecond, verdict(flooded.updatesPerSecond <= 1.05));
    std::printf("  agent CPU, flooded:                %.2f %% of one core (goal: under 2 %%; %s)\n",
                flooded.cpuPercent, verdict(flooded.cpuPercent < 2.0));
    std::printf("  agent CPU, beside a quiet player:  %.2f %% of one core (baseline, same run)\n",
                baseline.cpuPercent);
    // The processor clock counts in 10 ms ticks: a quiet agent may use none in the whole window.
    if (baseline.cpuPercent > 0)
        std::printf("  flooded / baseline:                %.1fx\n", flooded.cpuPercent / baseline.cpuPercent);
    else
        std::printf("  flooded / baseline:                baseline under one clock tick (0.1 %%)\n");
    return 0;
}
