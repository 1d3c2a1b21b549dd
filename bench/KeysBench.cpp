// From a volume key arriving on the key thread to the indicator standing on the notch's state
// object on the main thread, in the process: the tap, the listener, the level read (and step), the
// hop to the main thread. Once with a level kept in memory (the path alone), once against a real
// PulseAudio server started for the run (the path with the server's round trips).
#include "core/QtScheduler.h"
#include "hud/LevelKeys.h"
#include "hud/VolumeAndBrightnessListener.h"
#include "notch/KelvaneState.h"
#include "platform/linux/PulseVolumeService.h"
#include "settings/SettingsStore.h"

#include <QCoreApplication>
#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

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
    } else {
        std::printf("real PulseAudio: not measured (%s)\n", qPrintable(why));
    }
    server.kill();
    server.waitForFinished();
    return 0;
}
