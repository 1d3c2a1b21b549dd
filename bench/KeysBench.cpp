// From a volume key arriving on the key thread to the indicator standing on the notch's state
// object on the main thread, in the process: the tap, the listener, the level read (and step), the
// hop to the main thread. Once with a level kept in memory (the path alone), once against a real
// PulseAudio server started for the run (the path with the server's round trips).
// Then, with no key at all, from a level set on that server by another client to the indicator on
// the state object (the change event, the read of the output, the follower, the hop to the main
// thread), in rounds against a bare client of the server that only takes the change event, sides
// in turn.
#include "core/QtScheduler.h"
#include "BenchSupport.h"
#include "hud/LevelFollower.h"
#include "hud/LevelKeys.h"
#include "hud/VolumeAndBrightnessListener.h"
#include "notch/KelvaneState.h"
#include "platform/linux/PulseVolumeService.h"
#include "platform/linux/PulseVolumeWatch.h"
#include "settings/SettingsStore.h"

#include <QCoreApplication>
#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <pulse/pulseaudio.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <thread>
#include <vector>

using namespace kelvane;
using SteadyClock = std::chrono::steady_clock;

namespace {
struct ThreadSource : KeyEventSource {
    std::function<KeyEvent(const KeyEvent&)> callback;
    bool start(std::function<KeyEvent(const KeyEvent&)> cb, QString*) override
    {
        callback = std::move(cb);
        return true;
    }
    void stop() override {}
    void enable() override {}
};
struct MemoryVolume : VolumeService {
    std::atomic<double> value{0.5};
    std::optional<Level> read(QString*) override { return Level{value.load(), false}; }
    void step(double delta) override { value = std::clamp(value.load() + delta, 0.0, 1.0); }
    void toggleMute() override {}
};
struct NoBrightness : BrightnessService {
    std::optional<double> read(QString* why) override
    {
        *why = "none";
        return std::nullopt;
    }
    void step(double) override {}
};

// Presses volume up and down in turn from a key thread; the times from each press to the
// indicator's change on the main thread, in microseconds.
std::vector<double> measure(VolumeService& volume, int presses)
{
    QtScheduler scheduler;
    InMemorySettingsDomain domain;
    SettingsStore settings(domain);
    KelvaneState state(scheduler, settings);
    ThreadSource source;
    WakeEvents wake;
    NoBrightness brightness;
    QObject context;
    LevelKeys keys({volume, brightness, [](MediaKey) { return false; },
                    [&](const Indicator& indicator) {
                        QMetaObject::invokeMethod(&context, [&state, indicator] { state.setIndicator(indicator); },
                                                  Qt::QueuedConnection);
                    },
                    [](std::chrono::milliseconds delay) { std::this_thread::sleep_for(delay); }});
    VolumeAndBrightnessListener listener({scheduler, source, wake, [] { return false; },
                                          [](std::function<void()>) {}, [] {}, [] {}});
    listener.setSideEffect("notch", [&](MediaKey key) { keys(key); });
    listener.start();

    std::vector<double> times;
    std::atomic<SteadyClock::time_point> pressed{};
    std::atomic<int> shown{0};
    QObject::connect(&state, &KelvaneState::indicatorChanged, &context, [&] {
        if (!state.hasIndicator())
            return;
        times.push_back(std::chrono::duration<double, std::micro>(SteadyClock::now() - pressed.load()).count());
        ++shown;
    });
    std::thread keyThread([&] {
        for (int i = 0; i < presses; ++i) {
            const int before = shown.load();
            pressed = SteadyClock::now();
            source.callback(KeyEvent::media(i % 2 == 0 ? 0 : 1, true));
            while (shown.load() == before)
                std::this_thread::sleep_for(std::chrono::microseconds(50));
        }
    });
    while (shown.load() < presses)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 10);
    keyThread.join();
    listener.stop();
    return times;
}

void print(const char* name, std::vector<double> times)
{
    std::sort(times.begin(), times.end());
    const auto at = [&](double q) { return times[static_cast<size_t>(q * (times.size() - 1))] / 1000; };
    std::printf("%-34s median %.3f ms  p99 %.3f ms  max %.3f ms  (%zu presses; goal < 5 ms)\n", name, at(0.5), at(0.99),
                times.back() / 1000, times.size());
}

// A client of the sound server of its own, on the sound library's thread: sets the default
// output's volume, and (as the baseline) is told of the output's changes, doing nothing more.
class PulseClient {
public:
    PulseClient()
        : m_loop(pa_threaded_mainloop_new())
    {
        m_context = pa_context_new(pa_threaded_mainloop_get_api(m_loop), "bench");
        pa_context_set_state_callback(m_context, [](pa_context*, void* l) { pa_threaded_mainloop_signal(static_cast<pa_threaded_mainloop*>(l), 0); }, m_loop);
        pa_threaded_mainloop_lock(m_loop);
        pa_context_connect(m_context, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr);
        pa_threaded_mainloop_start(m_loop);
        while (PA_CONTEXT_IS_GOOD(pa_context_get_state(m_context)) && pa_context_get_state(m_context) != PA_CONTEXT_READY)
            pa_threaded_mainloop_wait(m_loop);
        pa_context_set_subscribe_callback(
            m_context,
            [](pa_context*, pa_subscription_event_type_t type, std::uint32_t, void* self) {
                auto* client = static_cast<PulseClient*>(self);
                if ((type & PA_SUBSCRIPTION_EVENT_FACILITY_MASK) == PA_SUBSCRIPTION_EVENT_SINK && client->listening)
                    client->heard(SteadyClock::now());
            },
            this);
        pa_operation_unref(pa_context_subscribe(m_context, PA_SUBSCRIPTION_MASK_SINK, nullptr, nullptr));
        pa_threaded_mainloop_unlock(m_loop);
    }
    ~PulseClient()
    {
        pa_threaded_mainloop_stop(m_loop);
        pa_context_disconnect(m_context);
        pa_context_unref(m_context);
        pa_threaded_mainloop_free(m_loop);
    }
    // Sets the level without waiting for the answer; when the request left.
    SteadyClock::time_point set(double level)
    {
        pa_cvolume volume;
        pa_cvolume_set(&volume, 2, static_cast<pa_volume_t>(level * PA_VOLUME_NORM));
        pa_threaded_mainloop_lock(m_loop);
        const auto sent = SteadyClock::now();
        pa_operation_unref(pa_context_set_sink_volume_by_name(m_context, "@DEFAULT_SINK@", &volume, nullptr, nullptr));
        pa_threaded_mainloop_unlock(m_loop);
        return sent;
    }
    std::atomic<bool> listening{false};
    std::function<void(SteadyClock::time_point)> heard;

private:
    pa_threaded_mainloop* m_loop;
    pa_context* m_context;
};

struct NoBacklight : BrightnessWatch {
    void start(std::function<void(double)>) override {}
    void stop() override {}
};

// Sets the level `changes` times from `setter`, each once the last was seen; the times from the
// request to `seen`, in milliseconds. `arm` is given what to call when a change is seen.
std::vector<double> levelChanges(PulseClient& setter, int changes,
                                 const std::function<void(std::function<void()>)>& arm, bool mainThread)
{
    std::vector<double> times;
    std::atomic<int> seen{0};
    SteadyClock::time_point sent;
    arm([&] {
        times.push_back(std::chrono::duration<double, std::milli>(SteadyClock::now() - sent).count());
        ++seen;
    });
    for (int i = 0; i < changes; ++i) {
        sent = setter.set(i % 2 == 0 ? 0.4 : 0.6);
        const auto deadline = SteadyClock::now() + std::chrono::seconds(2);
        while (seen.load() <= i && SteadyClock::now() < deadline) {
            if (mainThread)
                QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
            else
                std::this_thread::sleep_for(std::chrono::microseconds(50));
        }
        if (seen.load() <= i)
            ++seen; // lost: not counted
    }
    return times;
}

void measureLevelChanges()
{
    PulseClient setter;
    PulseClient bare;
    QtScheduler scheduler;
    InMemorySettingsDomain domain;
    SettingsStore settings(domain);
    KelvaneState state(scheduler, settings);
    PulseVolumeWatch watch;
    NoBacklight backlight;
    QObject context;
    LevelFollower follower({watch, backlight, scheduler.clock(), [&](const Indicator& indicator) {
                                QMetaObject::invokeMethod(&context, [&state, indicator] { state.setIndicator(indicator); },
                                                          Qt::QueuedConnection);
                            }});
    setter.set(0.5);
    follower.start();
    std::this_thread::sleep_for(std::chrono::milliseconds(300));

    const int rounds = 7;
    const int changes = 40;
    std::vector<double> agentMedians, bareMedians;
    std::size_t agentSeen = 0, bareSeen = 0;
    std::function<void()> onIndicator;
    QObject::connect(&state, &KelvaneState::indicatorChanged, &context, [&] {
        if (state.hasIndicator() && onIndicator)
            onIndicator();
    });
    for (int round = 0; round < rounds; ++round) {
        // Sides in turn, the first side changing from round to round.
        for (int side = 0; side < 2; ++side) {
            const bool agentSide = (round + side) % 2 == 0;
            // What the other side left queued is handled first, unmeasured.
            for (int i = 0; i < 20; ++i) {
                QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
            }
            if (agentSide) {
                const auto times = levelChanges(setter, changes, [&](std::function<void()> seen) { onIndicator = std::move(seen); }, true);
                agentMedians.push_back(bench::median(times));
                agentSeen += times.size();
                onIndicator = nullptr;
            } else {
                const auto times = levelChanges(setter, changes, [&](std::function<void()> seen) {
                    bare.heard = [seen](SteadyClock::time_point) { seen(); };
                    bare.listening = true;
                }, false);
                bare.listening = false;
                bareMedians.push_back(bench::median(times));
                bareSeen += times.size();
            }
        }
    }
    std::vector<double> ratios;
    for (int i = 0; i < rounds; ++i)
        ratios.push_back(agentMedians[i] / bareMedians[i]);
    std::printf("\nA level set on the server by another client, no key (%d rounds of %d changes, sides in turn;\n"
                "medians of the rounds' medians, with their range):\n", rounds, changes);
    std::printf("  to the indicator on the state object   %.3f ms  (%.3f to %.3f; %zu of %d seen)  goal < 20 ms: %s\n",
                bench::median(agentMedians), bench::minimum(agentMedians), bench::maximum(agentMedians), agentSeen,
                rounds * changes, bench::verdict(bench::median(agentMedians) < 20));
    std::printf("  to a bare client's change event        %.3f ms  (%.3f to %.3f; %zu of %d seen)\n",
                bench::median(bareMedians), bench::minimum(bareMedians), bench::maximum(bareMedians), bareSeen,
                rounds * changes);
    std::printf("  ratio                                  %.2f  (%.2f to %.2f)\n", bench::median(ratios),
                bench::minimum(ratios), bench::maximum(ratios));
    follower.stop();
}
} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const int presses = 500;
    MemoryVolume memory;
    print("level kept in memory", measure(memory, presses));

    QTemporaryDir runtime;
    qputenv("XDG_RUNTIME_DIR", runtime.path().toUtf8());
    QProcess server;
    server.start("pulseaudio", {"--daemonize=no", "-n", "--exit-idle-time=-1", "--disallow-exit", "-L",
                                "module-null-sink", "-L", "module-native-protocol-unix"});
    PulseVolumeService pulse;
    QString why;
    for (int i = 0; i < 100 && !pulse.read(&why); ++i)
        QThread::msleep(50);
    if (pulse.read(&why)) {
        pulse.step(-0.5);
        print("real PulseAudio (read, step, read)", measure(pulse, presses));
        measureLevelChanges();
    } else {
        std::printf("real PulseAudio: not measured (%s)\n", qPrintable(why));
    }
    server.kill();
    server.waitForFinished();
    return 0;
}
