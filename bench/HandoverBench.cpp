// Measures a second launch of the agent while one runs: the time from starting `kelvane` again to
// its exit, once it has handed the request to the running agent over the session bus. Baseline,
// in the same run: dbus-send making one call to the running agent and exiting. Also shown:
// kelvanectl reading the agent's state.

#include "BenchSupport.h"

namespace {

using namespace bench;

// Milliseconds from start to exit of a process, and its exit status.
double timeToExit(const std::vector<std::string>& argv, const std::vector<std::string>& env, int& status)
{
    const auto start = Clock::now();
    const pid_t pid = spawn(argv, env);
    int raw = 0;
    waitpid(pid, &raw, 0);
    status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

struct Series {
    const char* name;
    std::vector<std::string> argv;
    std::vector<double> ms;
    int failures = 0;
};

} // namespace

int main()
{
    pid_t xvfb = -1;
    pid_t bus = -1;
    const std::string display = startXvfb(xvfb);
    const std::string busAddress = startSessionBus(bus);
    if (display.empty() || busAddress.empty()) {
        std::fprintf(stderr, "could not start Xvfb or a session bus\n");
        return 1;
    }
    char home[] = "/tmp/kelvane-bench-XXXXXX";
    if (!mkdtemp(home))
        return 1;
    const std::string h = home;
    const std::vector<std::string> env = {"HOME=" + h, "XDG_CONFIG_HOME=" + h + "/config",
                                          "XDG_DATA_HOME=" + h + "/data", "XDG_RUNTIME_DIR=" + h,
                                          "DISPLAY=" + display, "DBUS_SESSION_BUS_ADDRESS=" + busAddress};

    const pid_t agent = spawn({KELVANE_BINARY}, env);
    int status = 1;
    for (int attempt = 0; attempt < 200 && status != 0; ++attempt) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        timeToExit({KELVANECTL_BINARY, "state"}, env, status);
    }
    if (status != 0) {
        std::fprintf(stderr, "the agent did not come up on the session bus\n");
        return 1;
    }

    Series series[] = {
        {"second kelvane launch, handed over", {KELVANE_BINARY}, {}},
        {"baseline, dbus-send pinging the agent",
         {"dbus-send", "--session", "--print-reply", "--dest=io.kelvane.Kelvane", "/io/kelvane/Kelvane",
          "org.freedesktop.DBus.Peer.Ping"},
         {}},
        {"kelvanectl state", {KELVANECTL_BINARY, "state"}, {}},
    };
    constexpr int runs = 15;
    for (int i = 0; i < runs; ++i) {
        for (Series& s : series) {
            s.ms.push_back(timeToExit(s.argv, env, status));
            s.failures += status != 0;
        }
    }
    const double baseline = median(series[1].ms);
    for (const Series& s : series) {
        std::printf("%s: median %.1f ms (min %.1f, max %.1f, %d runs, %d failed); %.1fx the baseline\n", s.name,
                    median(s.ms), *std::min_element(s.ms.begin(), s.ms.end()),
                    *std::max_element(s.ms.begin(), s.ms.end()), runs, s.failures, median(s.ms) / baseline);
    }
    const double handover = median(series[0].ms);
    std::printf("  goal: a second launch hands over and exits in under 100 ms: %s\n",
                verdict(series[0].failures == 0 && handover < 100));

    stop(agent);
    stop(bus);
    stop(xvfb);
    std::system(("rm -rf " + h).c_str());
    return 0;
}
