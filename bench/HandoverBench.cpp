// Measures a second launch of the agent while one runs: the time from starting `kelvane` again to
// its exit, once it has handed the request to the running agent over the session bus. Baseline,
// in the same run: dbus-send making one call to the running agent and exiting. Also shown:
// kelvanectl reading the agent's state.

#include "BenchSupport.h"

namespace {

using namespace bench;

struct Series {
    const char* name;
    std::vector<std::string> argv;
    std::vector<double> ms;
    int failures = 0;
};

} // namespace

int main()
{
    AgentSession session;
    if (!session.start(KELVANE_BINARY, KELVANECTL_BINARY))
        return 1;
    const std::vector<std::string>& env = session.env;
    int status = 1;

    Series series[] = {
        {"second kelvane launch, handed over", {KELVANE_BINARY}, {}},
        {"baseline, dbus-send pinging the agent",
         {"dbus-send", "--session", "--print-reply", "--dest=io.kelvane.Kelvane", "/io/kelvane/Kelvane",
          "org.freedesktop.DBus.Peer.Ping"},
         {}},
        {"kelvanectl state", {KELVANECTL_BINARY, "state"}, {}},
    };
    constexpr int runs = 15;
    // Each run starts with another side, so that none always runs on what the one before warmed.
    for (int i = 0; i < runs; ++i) {
        for (int k = 0; k < 3; ++k) {
            Series& s = series[(i + k) % 3];
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

    return 0;
}
