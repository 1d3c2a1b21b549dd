// Measures the agent as a user meets it, on a private X server with two monitors:
//  - time from process start to the first notch window mapped, against a minimal X client
//    (xmessage) measured in the same run;
//  - resident memory after 5 s idle;
//  - wake-ups per second while idle with the notch closed (context switches of all threads).

#include "BenchSupport.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>


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

// Starts a client and returns the milliseconds until a top-level window whose name starts with
// `prefix` is mapped, or -1.
double timeToMapped(Display* display, const std::vector<std::string>& argv,
                    const std::vector<std::string>& env, const char* prefix, pid_t& pid)
{
    XSync(display, True);
    const auto start = Clock::now();
    pid = spawn(argv, env);
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

    constexpr int runs = 6;
    std::vector<double> agent;
    std::vector<double> baseline;
    pid_t pid = -1;
    // The sides in turn, each run starting with the other one; the agent of the last run (which
    // starts with the baseline) stays up.
    for (int i = 0; i < runs; ++i) {
        if (i % 2 == 0) {
            agent.push_back(timeToMapped(x, {KELVANE_BINARY}, env, "Kelvane Notch", pid));
            stop(pid);
        }
        baseline.push_back(timeToMapped(x, {"xmessage", "baseline"}, env, "xmessage", pid));
        stop(pid);
        if (i % 2 == 1) {
            agent.push_back(timeToMapped(x, {KELVANE_BINARY}, env, "Kelvane Notch", pid));
            if (i + 1 < runs)
                stop(pid);
        }
    }
    const double agentMs = median(agent);
    const double baselineMs = median(baseline);
    std::printf("start to first notch window mapped: median %.0f ms (min %.0f, max %.0f, %d runs)\n",
                agentMs, *std::min_element(agent.begin(), agent.end()),
                *std::max_element(agent.begin(), agent.end()), runs);
    std::printf("  baseline, xmessage to its window mapped: median %.0f ms (min %.0f, max %.0f); ratio %.1fx\n",
                baselineMs, minimum(baseline), maximum(baseline), agentMs / baselineMs);
    std::printf("  goal under 300 ms: %s\n", verdict(agentMs > 0 && agentMs < 300));

    std::this_thread::sleep_for(std::chrono::seconds(5));
    const double rssMb = statusField("/proc/" + std::to_string(pid) + "/status", "VmRSS:") / 1024.0;
    std::printf("resident memory after 5 s idle: %.1f MB; goal under 60 MB: %s\n", rssMb,
                verdict(rssMb < 60));

    const double wakeups = wakeupsPerSecond(pid, 10);
    std::printf("wake-ups per second while idle, notch closed: %.2f (context switches of all "
                "threads over 10 s); goal 0: %s\n",
                wakeups, verdict(wakeups == 0));

    stop(pid);
    XCloseDisplay(x);
    stop(bus);
    stop(xvfb);
    std::system(("rm -rf " + h).c_str());
    return 0;
}
