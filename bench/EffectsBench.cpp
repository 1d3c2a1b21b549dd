// The media effects' cost: processor time of the real agent while music really plays with the
// sound's bars on the top bar, against the same agent with nothing playing (no player, no
// sound), rounds in turn; the open panel on a moving backdrop while music plays; and the
// agent's wake-ups at rest (nothing playing, panel closed). A PulseAudio of the benchmark's own
// plays a chord into a null sink, whose monitor the agent listens to.

#include "BenchSupport.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace bench;

namespace {

// Ten seconds of a chord with a beat, as a 16-bit mono WAV file.
void writeMusic(const std::string& path)
{
    constexpr int rate = 48000, seconds = 10;
    std::vector<std::int16_t> samples(rate * seconds);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double t = double(i) / rate;
        const double beat = 0.55 + 0.45 * std::pow(std::sin(3.14159265 * t * 2), 2);
        const double chord = std::sin(2 * 3.14159265 * 110 * t) + 0.6 * std::sin(2 * 3.14159265 * 440 * t)
                             + 0.4 * std::sin(2 * 3.14159265 * 1320 * t) + 0.25 * std::sin(2 * 3.14159265 * 5000 * t);
        samples[i] = std::int16_t(6000 * beat * chord);
    }
    std::ofstream out(path, std::ios::binary);
    const auto put32 = [&](std::uint32_t v) { out.write(reinterpret_cast<const char*>(&v), 4); };
    const auto put16 = [&](std::uint16_t v) { out.write(reinterpret_cast<const char*>(&v), 2); };
    const std::uint32_t bytes = std::uint32_t(samples.size() * 2);
    out.write("RIFF", 4);
    put32(36 + bytes);
    out.write("WAVEfmt ", 8);
    put32(16);
    put16(1);
    put16(1);
    put32(rate);
    put32(rate * 2);
    put16(2);
    put16(16);
    out.write("data", 4);
    put32(bytes);
    out.write(reinterpret_cast<const char*>(samples.data()), bytes);
}

double cpuPercent(pid_t agent, int seconds)
{
    const double before = cpuSeconds(agent);
    std::this_thread::sleep_for(std::chrono::seconds(seconds));
    return 100.0 * (cpuSeconds(agent) - before) / seconds;
}

bool ctl(const std::vector<std::string>& env, std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), KELVANECTL_BINARY);
    int status = 1;
    timeToExit(arguments, env, status);
    return status == 0;
}

void printSpread(const char* label, const std::vector<double>& values, const char* unit)
{
    std::printf("  %-42s median %.2f %s (min %.2f, max %.2f)\n", label, median(values), unit, minimum(values),
                maximum(values));
}

} // namespace

int main()
{
    AgentSession session;
    if (!session.start(KELVANE_BINARY, KELVANECTL_BINARY))
        return 1;
    std::string home;
    for (const std::string& variable : session.env)
        if (variable.rfind("HOME=", 0) == 0)
            home = variable.substr(5);
    std::vector<std::string> env = session.env;
    env.push_back("PULSE_SERVER=unix:" + home + "/pulse/native");
    const pid_t sound = spawn({"pulseaudio", "--daemonize=no", "-n", "--exit-idle-time=-1", "--disallow-exit", "-L",
                               "module-null-sink", "-L", "module-native-protocol-unix"},
                              env);
    const std::string music = home + "/music.wav";
    writeMusic(music);
    std::this_thread::sleep_for(std::chrono::seconds(2));
    // Music: a player that says it plays, and the chord sounding; quiet: neither.
    pid_t playing = -1, player = -1;
    const auto setMusic = [&](bool on) {
        for (pid_t* process : {&playing, &player})
            if (*process > 0)
                stop(std::exchange(*process, -1));
        if (on) {
            player = spawn({MPRIS_TEST_PLAYER, "bench", "--identity", "Bench", "--title", "Bench", "--status", "Playing"},
                           env);
            playing = spawn({"sh", "-c", "while :; do paplay \"$0\"; done", music}, env);
        }
        std::this_thread::sleep_for(std::chrono::seconds(3));
    };
    const auto capturing = [&] { return output({KELVANECTL_BINARY, "effects"}, env).find("\"capturing\": true") != std::string::npos; };

    constexpr int seconds = 6, rounds = 5;
    std::vector<double> withMusic, quiet, openPanel;
    bool heard = true;
    bool on = false;
    for (int round = 0; round < rounds; ++round) {
        // Each round starts from the other side.
        for (int side = 0; side < 2; ++side) {
            const bool withSound = (round + side) % 2 == 0;
            if (withSound != on) {
                setMusic(withSound);
                on = withSound;
            }
            heard = heard && capturing() == withSound;
            (withSound ? withMusic : quiet).push_back(cpuPercent(session.agent, seconds));
        }
    }
    if (!on)
        setMusic(true);
    ctl(env, {"settings", "set", "tuckleSettings",
              R"({"enabled":true,"enabledWidgets":["media"],"showDividers":true,"size":{"height":{"value":2},"width":{"value":11}},"wallpaper":"clouds","wallpaperBlur":4,"widgetsPadding":12})"});
    for (int round = 0; round < rounds; ++round) {
        ctl(env, {"open", "tuckle"});
        std::this_thread::sleep_for(std::chrono::seconds(1));
        openPanel.push_back(cpuPercent(session.agent, seconds));
        ctl(env, {"close"});
        std::this_thread::sleep_for(std::chrono::seconds(1));
    }
    setMusic(false);
    std::vector<double> rest;
    for (int round = 0; round < rounds; ++round)
        rest.push_back(wakeupsPerSecond(session.agent, 4));

    // The moving backdrop is drawn by shaders: an agent drawing with OpenGL, here Mesa's software
    // rasteriser, which does on the processor what a graphics card does for itself. Open on the
    // clouds against closed, rounds in turn, nothing playing.
    std::vector<double> glOpen, glClosed;
    {
        AgentSession gl;
        if (gl.start(KELVANE_BINARY, KELVANECTL_BINARY, {"KELVANE_RENDERER=opengl"})) {
            ctl(gl.env,
                {"settings", "set", "tuckleSettings",
                 R"({"enabled":true,"enabledWidgets":["media"],"showDividers":true,"size":{"height":{"value":2},"width":{"value":11}},"wallpaper":"clouds","wallpaperBlur":4,"widgetsPadding":12})"});
            std::this_thread::sleep_for(std::chrono::seconds(2));
            for (int round = 0; round < rounds; ++round)
                for (int side = 0; side < 2; ++side) {
                    const bool open = (round + side) % 2 == 0;
                    ctl(gl.env, open ? std::vector<std::string>{"open", "tuckle"} : std::vector<std::string>{"close"});
                    std::this_thread::sleep_for(std::chrono::seconds(1));
                    (open ? glOpen : glClosed).push_back(cpuPercent(gl.agent, seconds));
                }
        }
    }

    std::printf("Effects: the agent under Xvfb with the software renderer, %d rounds of %d s, sides in turn\n", rounds,
                seconds);
    std::printf("  the bars heard the music (and only then): %s\n", heard ? "yes" : "NO");
    printSpread("agent CPU, music with the spectrum:", withMusic, "% of one core");
    printSpread("agent CPU, nothing playing (baseline):", quiet, "% of one core");
    // A baseline too small to measure in ticks of a hundredth of a second has no ratio.
    if (median(quiet) > 0)
        std::printf("  music / baseline:                          %.1fx at the median\n", median(withMusic) / median(quiet));
    else
        std::printf("  music / baseline:                          no ratio: nothing playing measured no time\n");
    std::printf("  music minus baseline:                      %.2f %% of one core; goal: under 3 %% with music: %s\n",
                median(withMusic) - median(quiet), verdict(median(withMusic) < 3.0));
    printSpread("agent CPU, panel open on clouds, music:", openPanel, "% of one core");
    printSpread("wake-ups at rest (nothing plays, closed):", rest, "a second");
    std::printf("    by round, from the first after the music stopped:");
    for (const double value : rest)
        std::printf(" %.2f", value);
    std::printf("\n");
    std::printf("  goal: no wake-ups at rest: %s\n", verdict(median(rest) < 1.0));
    if (!glOpen.empty()) {
        std::printf(
            "Drawn with OpenGL by Mesa's software rasteriser (a graphics card's work done here by the processor):\n");
        printSpread("agent CPU, panel open on the moving clouds:", glOpen, "% of one core");
        printSpread("agent CPU, panel closed (baseline):", glClosed, "% of one core");
        if (median(glClosed) > 0)
            std::printf("  open / closed:                             %.1fx at the median\n",
                        median(glOpen) / median(glClosed));
    } else {
        std::printf("An agent drawing with OpenGL could not be started: the moving backdrop is not measured.\n");
    }
    stop(sound);
    return 0;
}
