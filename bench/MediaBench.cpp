// A player that reports 50 track changes a second for 10 s: how many track updates the agent
// handles and how much processor time it spends, against the same agent beside a player that
// plays quietly, measured in the same run. Then a player paused and played again and again: the
// time until the agent shows the new state, against the time until the player itself answers
// with it, the two sides measured in turn.

#include "BenchSupport.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QJsonDocument>
#include <QJsonObject>

#include <functional>

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

// Milliseconds from a player's play/pause until `shows(playing)` holds, asked every half millisecond.
double msUntil(QDBusConnection& bus, const QString& player, bool playing,
               const std::function<bool(QDBusConnection&, bool)>& shows)
{
    const auto start = Clock::now();
    bus.call(QDBusMessage::createMethodCall(player, "/org/mpris/MediaPlayer2", "org.mpris.MediaPlayer2.Player",
                                            playing ? "Play" : "Pause"));
    while (!shows(bus, playing) && Clock::now() - start < std::chrono::seconds(5))
        std::this_thread::sleep_for(std::chrono::microseconds(500));
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

bool agentShows(QDBusConnection& bus, bool playing)
{
    const QDBusMessage reply = bus.call(
        QDBusMessage::createMethodCall("io.kelvane.Kelvane", "/io/kelvane/Kelvane", "io.kelvane.Kelvane", "Media"));
    const QJsonObject state = QJsonDocument::fromJson(reply.arguments().value(0).toString().toUtf8()).object();
    return state["isPlaying"].toBool() == playing && !state["track"].isNull();
}

bool playerShows(QDBusConnection& bus, bool playing)
{
    const QDBusMessage reply = bus.call(QDBusMessage::createMethodCall(
        "org.mpris.MediaPlayer2.latency", "/org/mpris/MediaPlayer2", "org.freedesktop.DBus.Properties", "Get")
        << QString("org.mpris.MediaPlayer2.Player") << QString("PlaybackStatus"));
    const QString status = reply.arguments().value(0).value<QDBusVariant>().variant().toString();
    return status == (playing ? "Playing" : "Paused");
}

void printSpread(const char* label, const std::vector<double>& values)
{
    std::printf("  %s median %.1f ms (from %.1f to %.1f, %zu runs)\n", label, median(values),
                *std::min_element(values.begin(), values.end()), *std::max_element(values.begin(), values.end()),
                values.size());
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

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    AgentSession session;
    if (!session.start(KELVANE_BINARY, KELVANECTL_BINARY))
        return 1;
    constexpr int seconds = 6;
    constexpr int rounds = 5;

    // A window beside a quiet player and one beside a flooding player, five rounds, each round
    // starting with the other side.
    const auto window = [&](bool flooding, Window& into) {
        const pid_t player =
            flooding ? spawn({MPRIS_TEST_PLAYER, "flood", "--identity", "Flood", "--title", "Flood", "--flood", "50"},
                             session.env)
                     : spawn({MPRIS_TEST_PLAYER, "quiet", "--identity", "Quiet", "--title", "Quiet"}, session.env);
        const bool seen = waitForTitle(session.env, flooding ? "Flood" : "Quiet");
        if (seen)
            into = measure(session.agent, session.env, seconds);
        stop(player);
        // The agent lets the stopped player go before the next one comes.
        std::this_thread::sleep_for(std::chrono::seconds(1));
        return seen;
    };
    std::vector<double> quietCpu, floodCpu, updates, sent;
    for (int round = 0; round < rounds; ++round) {
        Window quiet{}, flooded{};
        const bool floodFirst = round % 2 == 1;
        if (!window(floodFirst, floodFirst ? flooded : quiet) || !window(!floodFirst, floodFirst ? quiet : flooded)) {
            std::fprintf(stderr, "the agent did not see a player\n");
            return 1;
        }
        quietCpu.push_back(quiet.cpuPercent);
        floodCpu.push_back(flooded.cpuPercent);
        updates.push_back(flooded.updatesPerSecond);
        sent.push_back(flooded.changesSent / double(seconds));
    }

    std::printf("Media: a player reporting 50 track changes a second, %d rounds of %d s, sides in turn\n", rounds,
                seconds);
    std::printf("  changes sent by the player:        median %.1f a second\n", median(sent));
    std::printf("  track updates handled:             median %.2f a second (min %.2f, max %.2f; goal: at most 1; %s)\n",
                median(updates), minimum(updates), maximum(updates), verdict(maximum(updates) <= 1.05));
    std::printf("  agent CPU, flooded:                median %.2f %% of one core (min %.2f, max %.2f; goal: under 2 %%; %s)\n",
                median(floodCpu), minimum(floodCpu), maximum(floodCpu), verdict(median(floodCpu) < 2.0));
    std::printf("  agent CPU, beside a quiet player:  median %.2f %% of one core (min %.2f, max %.2f; baseline)\n",
                median(quietCpu), minimum(quietCpu), maximum(quietCpu));
    // The processor clock counts in 10 ms ticks: a quiet agent may use none in a whole window.
    if (median(quietCpu) > 0)
        std::printf("  flooded / baseline:                %.1fx at the median\n", median(floodCpu) / median(quietCpu));
    else
        std::printf("  flooded / baseline:                baseline under one clock tick in a window\n");

    // Pause and play, from a third of a second to over two seconds apart as a person would; each
    // change is timed on one side, the sides in turn.
    spawn({MPRIS_TEST_PLAYER, "latency", "--identity", "Latency", "--title", "Latency"}, session.env);
    if (!waitForTitle(session.env, "Latency")) {
        std::fprintf(stderr, "the agent did not see the player\n");
        return 1;
    }
    std::string address;
    for (const std::string& variable : session.env)
        if (variable.rfind("DBUS_SESSION_BUS_ADDRESS=", 0) == 0)
            address = variable.substr(std::strlen("DBUS_SESSION_BUS_ADDRESS="));
    QDBusConnection bus = QDBusConnection::connectToBus(QString::fromStdString(address), "bench");
    std::vector<double> agentMs, playerMs;
    constexpr int runsPerSide = 10;
    for (int change = 0; change < 2 * runsPerSide; ++change) {
        std::this_thread::sleep_for(std::chrono::milliseconds(300 + (change * 373) % 2000));
        const bool playing = change % 2 == 1;
        const bool agentSide = (change / 2) % 2 == 0;
        (agentSide ? agentMs : playerMs)
            .push_back(msUntil(bus, "org.mpris.MediaPlayer2.latency", playing, agentSide ? agentShows : playerShows));
    }
    std::printf("A player's pause or play until it is shown\n");
    printSpread("agent shows it:  ", agentMs);
    printSpread("player answers:  ", playerMs);
    std::printf("  agent / player:   %.1fx; goal: agent under 150 ms at the median (%s)\n",
                median(agentMs) / median(playerMs), verdict(median(agentMs) < 150));
    return 0;
}
