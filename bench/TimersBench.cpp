// Measures the countdown timers:
//  - the cost of one tick with 1,000 running timers, in the store itself on virtual time, against
//    a tick with one running timer measured in the same run; and the tick in which all of them end
//    (sounds, announcements and the save to the settings file);
//  - the real agent's wake-ups per second with no timer, with one running timer, and after it is
//    cancelled: without a running timer the agent must not wake up at all.

#include "BenchSupport.h"

#include "activities/ActiveLiveActivitiesManager.h"
#include "core/ManualScheduler.h"
#include "core/SoundPlayer.h"
#include "core/TimersManager.h"
#include "settings/NativeSettingsDomain.h"
#include "timers/TuckleTimersStore.h"

#include <QCoreApplication>
#include <QTemporaryDir>

namespace {

using namespace bench;
using namespace std::chrono_literals;

struct TickCost {
    double medianMs = 0;
    double endingTickMs = 0;
};

// Median wall-clock cost of a tick with `count` running timers of one hour, then the cost of the
// tick in which they all end.
TickCost measureTicks(int count)
{
    QTemporaryDir folder;
    kelvane::ManualScheduler scheduler;
    kelvane::TimersManager keyed(scheduler);
    kelvane::NativeSettingsDomain domain(folder.filePath(QStringLiteral("kelvane.conf")));
    kelvane::SettingsStore settings(domain);
    kelvane::ActiveLiveActivitiesManager activities(settings);
    kelvane::SilentSoundPlayer sound;
    kelvane::TuckleTimersStore store({scheduler, keyed, domain, activities, sound});
    for (int i = 0; i < count; ++i)
        store.add(QStringLiteral("Timer %1").arg(i), 3600);

    std::vector<double> ticks;
    for (int i = 0; i < 400; ++i) {
        const auto start = Clock::now();
        scheduler.advance(kelvane::TuckleTimersStore::tickInterval);
        ticks.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start).count());
    }
    scheduler.advance(3600s - 400 * kelvane::TuckleTimersStore::tickInterval - 1ms);
    const auto start = Clock::now();
    scheduler.advance(1ms);
    const double ending = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
    if (store.isTicking() || store.expiredLabelQueue().size() != count)
        std::fprintf(stderr, "the timers did not all end in one tick\n");
    return {median(ticks), ending};
}

std::string ctl(const std::vector<std::string>& env, const std::vector<std::string>& args)
{
    std::string command;
    for (const auto& e : env)
        command += e + " ";
    command += KELVANECTL_BINARY;
    for (const auto& a : args)
        command += " '" + a + "'";
    std::string output;
    if (FILE* pipe = popen(command.c_str(), "r")) {
        char buffer[256];
        while (std::fgets(buffer, sizeof buffer, pipe))
            output += buffer;
        pclose(pipe);
    }
    while (!output.empty() && output.back() == '\n')
        output.pop_back();
    return output;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    // Five rounds, the two sides in turn and each round starting with the other one.
    std::vector<double> one, thousand, ending, ratio;
    for (int round = 0; round < 5; ++round) {
        const bool thousandFirst = round % 2 == 1;
        const TickCost first = measureTicks(thousandFirst ? 1000 : 1);
        const TickCost second = measureTicks(thousandFirst ? 1 : 1000);
        const TickCost& big = thousandFirst ? first : second;
        const TickCost& small = thousandFirst ? second : first;
        one.push_back(small.medianMs);
        thousand.push_back(big.medianMs);
        ending.push_back(big.endingTickMs);
        ratio.push_back(big.medianMs / small.medianMs);
    }
    std::printf("tick with 1,000 running timers: median %.3f ms (min %.3f, max %.3f, 5 rounds)\n", median(thousand),
                minimum(thousand), maximum(thousand));
    std::printf("  baseline, one running timer: median %.4f ms (min %.4f, max %.4f); ratio median %.0fx "
                "(min %.0fx, max %.0fx)\n",
                median(one), minimum(one), maximum(one), median(ratio), minimum(ratio), maximum(ratio));
    std::printf("  goal under 1 ms per tick: %s\n", verdict(median(thousand) < 1.0));
    std::printf("tick in which 1,000 timers end (announcements and one save): median %.1f ms (min %.1f, max %.1f)\n",
                median(ending), minimum(ending), maximum(ending));

    AgentSession session;
    if (!session.start(KELVANE_BINARY, KELVANECTL_BINARY))
        return 1;
    std::this_thread::sleep_for(2s);
    const double idle = wakeupsPerSecond(session.agent, 5);
    const std::string id = ctl(session.env, {"timer", "add", "Bench", "1h"});
    const double running = wakeupsPerSecond(session.agent, 5);
    ctl(session.env, {"timer", "cancel", id});
    std::this_thread::sleep_for(1s);
    const double cancelled = wakeupsPerSecond(session.agent, 5);
    std::printf("agent wake-ups per second over 5 s: no timer %.2f; one running timer %.2f; after it was "
                "cancelled %.2f\n",
                idle, running, cancelled);
    std::printf("  goal no timer wake-ups without a running timer: %s\n",
                verdict(id.size() == 36 && idle == 0 && cancelled == 0 && running > 0));
    return 0;
}
