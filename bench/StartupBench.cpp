// Measures the agent as a user meets it, on a private X server with two monitors, with the OpenGL
// and the software renderer in the same run:
//  - time from process start to the first notch window mapped, against a minimal X client
//    (xmessage) measured in the same run;
//  - resident memory after 5 s idle;
//  - wake-ups per second while idle with the notch closed (context switches of all threads);
//  - the frames of one opening of the notch, as Qt Quick times them.

#include "BenchSupport.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <fstream>

namespace {

using namespace bench;

bool nameStartsWith(Display* display, Window window, const char* prefix)
{
    char* name = nullptr;
    if (!XFetchName(display, window, &name) || !name)
        return false;
    const bool match = std::strncmp(name, prefix, std::strlen(prefix)) == 0;
    XFree(name);
    return match;
}

// The milliseconds from `start` until a top-level window whose name starts with `prefix` is
// mapped, or -1.
double waitForMapped(Display* display, const char* prefix, Clock::time_point start)
{
    const auto deadline = start + std::chrono::seconds(20);
    while (Clock::now() < deadline) {
        while (XPending(display)) {
            XEvent event;
            XNextEvent(display, &event);
            if (event.type == MapNotify && nameStartsWith(display, event.xmap.window, prefix))
                return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
        }
        pollfd pfd{ConnectionNumber(display), POLLIN, 0};
        poll(&pfd, 1, 5);
    }
    return -1;
}

// Starts a client and returns the milliseconds until its window is mapped, or -1.
double timeToMapped(Display* display, const std::vector<std::string>& argv, const std::vector<std::string>& env,
                    const char* prefix, pid_t& pid)
{
    XSync(display, True);
    const auto start = Clock::now();
    pid = spawn(argv, env);
    return waitForMapped(display, prefix, start);
}

// The render times (ms) of every frame Qt Quick has logged so far, from both kinds of render loop:
// "... syncAndRender: frame rendered in 2ms, ..." (threaded) and "Frame rendered with 'software'
// renderloop in 1ms, ..." (the others).
std::vector<double> renderTimes(const std::string& log)
{
    std::vector<double> times;
    std::ifstream in(log);
    std::string line;
    while (std::getline(in, line)) {
        for (const std::string marker : {"frame rendered in ", "renderloop in "}) {
            const auto at = line.find(marker);
            if (at != std::string::npos) {
                times.push_back(std::atof(line.c_str() + at + marker.size()));
                break;
            }
        }
    }
    return times;
}

} // namespace

int main()
{
    pid_t xvfb = -1;
    const std::string display = startXvfb(xvfb);
    if (display.empty()) {
        std::fprintf(stderr, "could not start Xvfb\n");
        return 1;
    }
    setenv("DISPLAY", display.c_str(), 1);
    Display* x = nullptr;
    for (int attempt = 0; attempt < 100 && !x; ++attempt) {
        x = XOpenDisplay(display.c_str());
        if (!x)
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    if (!x) {
        std::fprintf(stderr, "could not connect to Xvfb on %s\n", display.c_str());
        return 1;
    }
    std::system("xrandr --setmonitor M1 1512/400x982/260+0+0 screen >/dev/null && "
                "xrandr --setmonitor M2 1280/340x800/212+1512+0 none >/dev/null");

    char home[] = "/tmp/kelvane-bench-XXXXXX";
    if (!mkdtemp(home))
        return 1;
    const std::string h = home;
    pid_t bus = -1;
    const std::string busAddress = startSessionBus(bus);
    const std::vector<std::string> env = sessionEnvironment(h, display, busAddress);

    XSelectInput(x, DefaultRootWindow(x), SubstructureNotifyMask);

    // Each renderer, the baseline between them, the order turned around every run. Each agent
    // stays up for its idle figures, then opens its notch once for the frame times.
    struct Side {
        const char* name;
        const char* renderer;
        double memoryGoal;
        std::vector<double> mapped, memory, wakeups, worstFrame, frames, slowFrames;
    };
    Side sides[] = {{"hardware (OpenGL)", "opengl", 90, {}, {}, {}, {}, {}, {}},
                    {"software", "software", 60, {}, {}, {}, {}, {}, {}}};
    std::vector<double> baseline;
    const std::string frameLog = h + "/frames.log";
    const auto measureAgent = [&](Side& side) {
        std::vector<std::string> agentEnv = env;
        agentEnv.push_back(std::string("KELVANE_RENDERER=") + side.renderer);
        agentEnv.push_back("QT_LOGGING_RULES=qt.scenegraph.time.renderloop=true");
        pid_t pid = -1;
        XSync(x, True);
        const auto start = Clock::now();
        pid = spawn({KELVANE_BINARY}, agentEnv, frameLog);
        side.mapped.push_back(waitForMapped(x, "Kelvane Notch", start));
        std::this_thread::sleep_for(std::chrono::seconds(5));
        side.memory.push_back(statusField("/proc/" + std::to_string(pid) + "/status", "VmRSS:") / 1024.0);
        side.wakeups.push_back(wakeupsPerSecond(pid, 3));
        // One opening: the frames drawn from the command to a second later.
        const std::size_t before = renderTimes(frameLog).size();
        std::system(("env DBUS_SESSION_BUS_ADDRESS=" + busAddress + " " KELVANECTL_BINARY " open >/dev/null").c_str());
        std::this_thread::sleep_for(std::chrono::seconds(1));
        const std::vector<double> times = renderTimes(frameLog);
        const std::vector<double> opening(times.begin() + long(std::min(before, times.size())), times.end());
        side.frames.push_back(double(opening.size()));
        side.worstFrame.push_back(opening.empty() ? -1 : maximum(opening));
        side.slowFrames.push_back(
            double(std::count_if(opening.begin(), opening.end(), [](double ms) { return ms > 16; })));
        stop(pid);
    };
    constexpr int runs = 6;
    for (int i = 0; i < runs; ++i) {
        Side& first = sides[i % 2];
        Side& second = sides[1 - i % 2];
        measureAgent(first);
        pid_t pid = -1;
        baseline.push_back(timeToMapped(x, {"xmessage", "baseline"}, env, "xmessage", pid));
        stop(pid);
        measureAgent(second);
    }

    const double baselineMs = median(baseline);
    std::printf("baseline, xmessage to its window mapped: median %.0f ms (min %.0f, max %.0f, %d runs)\n", baselineMs,
                minimum(baseline), maximum(baseline), runs);
    for (const Side& side : sides) {
        const double mappedMs = median(side.mapped);
        std::printf("%s renderer, %d runs (median, min to max):\n", side.name, runs);
        std::printf("  start to first notch window mapped: %.0f ms (%.0f to %.0f); %.1fx the baseline; goal under "
                    "300 ms: %s\n",
                    mappedMs, minimum(side.mapped), maximum(side.mapped), mappedMs / baselineMs,
                    verdict(mappedMs > 0 && mappedMs < 300));
        std::printf("  resident memory after 5 s idle: %.1f MB (%.1f to %.1f); goal under %.0f MB: %s\n",
                    median(side.memory), minimum(side.memory), maximum(side.memory), side.memoryGoal,
                    verdict(median(side.memory) < side.memoryGoal));
        std::printf("  wake-ups per second idle with the notch closed (context switches of all threads over "
                    "3 s): %.2f (%.2f to %.2f); goal 0: %s\n",
                    median(side.wakeups), minimum(side.wakeups), maximum(side.wakeups),
                    verdict(maximum(side.wakeups) == 0));
        std::printf(
            "  opening the notch: %.0f frames drawn (%.0f to %.0f), %.0f over 16 ms (%.0f to %.0f), the longest "
            "%.1f ms (%.1f to %.1f); goal no frame over 16 ms: %s\n",
            median(side.frames), minimum(side.frames), maximum(side.frames), median(side.slowFrames),
            minimum(side.slowFrames), maximum(side.slowFrames), median(side.worstFrame), minimum(side.worstFrame),
            maximum(side.worstFrame), verdict(minimum(side.worstFrame) >= 0 && maximum(side.worstFrame) <= 16));
    }

    XCloseDisplay(x);
    stop(bus);
    stop(xvfb);
    std::system(("rm -rf " + h).c_str());
    return 0;
}
