#include "core/Log.h"
#include "core/ManualScheduler.h"
#include "hud/LevelKeys.h"
#include "hud/VolumeAndBrightnessListener.h"

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <thread>

using namespace kelvane;
using namespace std::chrono_literals;

namespace {
struct FakeSource : KeyEventSource {
    std::function<KeyEvent(const KeyEvent&)> callback;
    bool fails = false;
    int enabled = 0;
    bool start(std::function<KeyEvent(const KeyEvent&)> cb, QString* error) override
    {
        if (fails) {
            *error = "no X server";
            return false;
        }
        callback = std::move(cb);
        return true;
    }
    void stop() override { callback = nullptr; }
    void enable() override { ++enabled; }
};

struct Recorder : MediaKeyTapDelegate {
    QList<MediaKey> keys;
    void handle(MediaKey key, unsigned) override { keys << key; }
};

KeyEvent keyDown(int code) { return {KeyEvent::Type::keyDown, code, 0, 0, 0}; }
} // namespace

// Each event is classified by its table and the tap's options, and every one of them goes back
// to the stream unchanged, reported or not.
TEST(MediaKeyTap, ReportsWatchedKeysAndPassesEveryEventOn)
{
    const QList<MediaKey> volumeOnly{MediaKey::volumeUp, MediaKey::volumeDown, MediaKey::mute};
    const QList<MediaKey> all{MediaKey::brightnessUp, MediaKey::brightnessDown, MediaKey::volumeUp,
                              MediaKey::volumeDown, MediaKey::mute, MediaKey::playPause};
    const struct {
        const char* name;
        KeyEvent event;
        QList<MediaKey> watched;
        bool alternate;
        bool builtInMain;
        bool observeBuiltIn;
        KeyPressMode mode;
        std::optional<MediaKey> reported;
    } cases[] = {
        {"volume up", KeyEvent::media(0, true), all, false, false, false, KeyPressMode::keyDown, MediaKey::volumeUp},
        {"volume down", KeyEvent::media(1, true), all, false, false, false, KeyPressMode::keyDown, MediaKey::volumeDown},
        {"brightness up", KeyEvent::media(2, true), all, false, false, false, KeyPressMode::keyDown, MediaKey::brightnessUp},
        {"mute", KeyEvent::media(7, true), all, false, false, false, KeyPressMode::keyDown, MediaKey::mute},
        {"play", KeyEvent::media(16, true), all, false, false, false, KeyPressMode::keyDown, MediaKey::playPause},
        {"unknown code 4", KeyEvent::media(4, true), all, false, false, false, KeyPressMode::keyDown, std::nullopt},
        {"unknown code 21", KeyEvent::media(21, true), all, false, false, false, KeyPressMode::keyDown, std::nullopt},
        {"not watched", KeyEvent::media(2, true), volumeOnly, false, false, false, KeyPressMode::keyDown, std::nullopt},
        {"release in key-down mode", KeyEvent::media(0, false), all, false, false, false, KeyPressMode::keyDown, std::nullopt},
        {"release in key-up mode", KeyEvent::media(0, false), all, false, false, false, KeyPressMode::keyUp, MediaKey::volumeUp},
        {"press in key-up mode", KeyEvent::media(0, true), all, false, false, false, KeyPressMode::keyUp, std::nullopt},
        {"release in both mode", KeyEvent::media(1, false), all, false, false, false, KeyPressMode::keyDownAndUp, MediaKey::volumeDown},
        {"other subtype", {KeyEvent::Type::systemDefined, 0, 7, KeyEvent::media(0, true).data1, 0}, all, false, false, false, KeyPressMode::keyDown, std::nullopt},
        {"key 144", keyDown(144), all, false, false, false, KeyPressMode::keyDown, MediaKey::brightnessUp},
        {"key 145", keyDown(145), all, false, false, false, KeyPressMode::keyDown, MediaKey::brightnessDown},
        {"key 113 without the flag", keyDown(113), all, false, false, false, KeyPressMode::keyDown, std::nullopt},
        {"key 107 without the flag", keyDown(107), all, false, false, false, KeyPressMode::keyDown, std::nullopt},
        {"key 113 with the flag", keyDown(113), all, true, false, false, KeyPressMode::keyDown, MediaKey::brightnessUp},
        {"key 107 with the flag", keyDown(107), all, true, false, false, KeyPressMode::keyDown, MediaKey::brightnessDown},
        {"ordinary key", keyDown(0), all, true, false, false, KeyPressMode::keyDown, std::nullopt},
        {"key up event", {KeyEvent::Type::keyUp, 144, 0, 0, 0}, all, false, false, false, KeyPressMode::keyDown, std::nullopt},
        {"built-in main screen", KeyEvent::media(0, true), all, false, true, false, KeyPressMode::keyDown, std::nullopt},
        {"built-in main screen, key-down", keyDown(144), all, false, true, false, KeyPressMode::keyDown, std::nullopt},
        {"built-in main screen observed", KeyEvent::media(0, true), all, false, true, true, KeyPressMode::keyDown, MediaKey::volumeUp},
    };
    for (const auto& c : cases) {
        FakeSource source;
        auto recorder = std::make_shared<Recorder>();
        MediaKeyTap tap(recorder, {c.mode, c.watched, c.observeBuiltIn, c.alternate, [&] { return c.builtInMain; }}, source);
        ASSERT_TRUE(tap.start());
        EXPECT_EQ(source.callback(c.event), c.event) << c.name;
        EXPECT_EQ(recorder->keys, c.reported ? QList<MediaKey>{*c.reported} : QList<MediaKey>{}) << c.name;
    }
}

// A tap whose delegate is gone takes nothing; the system's turning the tap off turns it on again;
// a stream that cannot be observed is said once.
TEST(MediaKeyTap, SurvivesItsDelegateAndTheStreamGoingAway)
{
    FakeSource source;
    auto recorder = std::make_shared<Recorder>();
    MediaKeyTap tap(recorder, {KeyPressMode::keyDown, {MediaKey::volumeUp}, true, false, {}}, source);
    ASSERT_TRUE(tap.start());
    for (auto type : {KeyEvent::Type::tapDisabledByTimeout, KeyEvent::Type::tapDisabledByUserInput})
        source.callback({type, 0, 0, 0, 0});
    EXPECT_EQ(source.enabled, 2);
    EXPECT_TRUE(recorder->keys.isEmpty());
    recorder.reset();
    EXPECT_EQ(source.callback(KeyEvent::media(0, true)), KeyEvent::media(0, true));

    FakeSource missing;
    missing.fails = true;
    MediaKeyTap failing(std::make_shared<Recorder>(), {}, missing);
    LogCapture log;
    EXPECT_FALSE(failing.start());
    EXPECT_EQ(log.lines(), QStringList{"Error occurred while starting media key tap listener. no X server"});
}

namespace {
// A listener in virtual time whose suppression calls are counted as the background queue runs them.
struct Listening {
    ManualScheduler scheduler;
    FakeSource source;
    WakeEvents wake;
    int disabled = 0, enabled = 0;
    VolumeAndBrightnessListener listener{{scheduler, source, wake, [] { return false; },
                                          [](std::function<void()> work) { work(); }, [this] { ++disabled; },
                                          [this] { ++enabled; }}};
};
} // namespace

// Start and stop say so; suppression comes at start, every 35 minutes and a second after each
// wake, and stops with the listener; presses reach every side effect.
TEST(VolumeAndBrightnessListener, SuppressesAtStartPeriodicallyAndAfterWake)
{
    Listening l;
    LogCapture log;
    l.listener.stop();
    l.listener.start();
    l.listener.start();
    EXPECT_EQ(log.lines(), (QStringList{"VolumeAndBrightnessListener is not running", "Media key monitoring started"}));
    EXPECT_EQ(l.disabled, 1);

    QList<MediaKey> first, second;
    l.listener.setSideEffect("a", [&](MediaKey key) { first << key; });
    l.listener.setSideEffect("b", [&](MediaKey key) { second << key; });
    l.listener.setSideEffect("b", [&](MediaKey key) { second << key << key; });
    l.source.callback(KeyEvent::media(1, true));
    l.source.callback(KeyEvent::media(16, true)); // play is not the listener's
    EXPECT_EQ(first, QList<MediaKey>{MediaKey::volumeDown});
    EXPECT_EQ(second, (QList<MediaKey>{MediaKey::volumeDown, MediaKey::volumeDown}));

    l.scheduler.advance(2099s);
    EXPECT_EQ(l.disabled, 1);
    l.scheduler.advance(1s);
    EXPECT_EQ(l.disabled, 2);
    l.scheduler.advance(2100s);
    EXPECT_EQ(l.disabled, 3);

    Q_EMIT l.wake.systemDidWake();
    Q_EMIT l.wake.screensDidWake();
    ASSERT_EQ(log.lines().size(), 4);
    EXPECT_TRUE(QRegularExpression("^\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d \\+0000 : System wakes up \u2014 scheduling OSD suppression in 1s$")
                    .match(log.lines()[2]).hasMatch()) << log.lines()[2].toStdString();
    EXPECT_TRUE(log.lines()[3].endsWith(" : Screen wakes up \u2014 scheduling OSD suppression in 1s"));
    l.scheduler.advance(999ms);
    EXPECT_EQ(l.disabled, 3);
    l.scheduler.advance(1ms);
    EXPECT_EQ(l.disabled, 5);

    l.listener.stop();
    EXPECT_EQ(log.lines().back(), "Media key monitoring stopped");
    EXPECT_EQ(l.enabled, 1);
    Q_EMIT l.wake.systemDidWake();
    l.scheduler.advance(3h);
    EXPECT_EQ(l.disabled, 5);
    EXPECT_FALSE(l.source.callback);
}

namespace {
struct FakeVolume : VolumeService {
    std::optional<Level> level = Level{0.5, false};
    int readsBeforeChangeShows = 0;  // the desktop's change reaches the server late
    std::optional<Level> later;
    int steps = 0, mutes = 0;
    std::optional<Level> read(QString* why) override
    {
        if (!level)
            *why = "no sound server";
        if (later && readsBeforeChangeShows-- <= 0)
            level = later;
        return level;
    }
    void step(double delta) override { ++steps, level->value = std::clamp(level->value + delta, 0.0, 1.0); }
    void toggleMute() override { ++mutes, level->muted = !level->muted; }
};
struct FakeBrightness : BrightnessService {
    std::optional<double> level = 0.5;
    std::optional<double> read(QString* why) override
    {
        if (!level)
            *why = "no backlight";
        return level;
    }
    void step(double delta) override { *level += delta; }
};
} // namespace

// The level is changed here only where nobody else takes the key, never twice; the indicator
// carries the level that results; a missing service is one line, and no indicator.
TEST(LevelKeys, ChangesTheLevelOnceAndShowsWhatResults)
{
    FakeVolume volume;
    FakeBrightness brightness;
    bool elsewhere = false;
    QList<Indicator> posted;
    int sleeps = 0;
    LevelKeys keys({volume, brightness, [&](MediaKey) { return elsewhere; }, [&](const Indicator& i) { posted << i; },
                    [&](std::chrono::milliseconds) { ++sleeps; }});

    keys(MediaKey::volumeUp);
    keys(MediaKey::mute);
    keys(MediaKey::brightnessDown);
    keys(MediaKey::playPause);
    EXPECT_EQ(volume.steps, 1);
    EXPECT_EQ(volume.mutes, 1);
    ASSERT_EQ(posted.size(), 3);
    EXPECT_EQ(posted[0], (Indicator{Indicator::Kind::volume, "audio-volume-medium", 0.55}));
    EXPECT_EQ(posted[1], (Indicator{Indicator::Kind::volume, "audio-volume-muted", 0.0}));
    EXPECT_EQ(posted[2], (Indicator{Indicator::Kind::brightness, "display-brightness", 0.45}));
    EXPECT_EQ(sleeps, 0);

    // The desktop changes the level itself: it is read again until the change shows.
    elsewhere = true;
    volume.level = VolumeService::Level{0.2, false};
    volume.later = VolumeService::Level{0.25, false};
    volume.readsBeforeChangeShows = 3;
    keys(MediaKey::volumeUp);
    EXPECT_EQ(volume.steps, 1);
    EXPECT_EQ(posted.back(), (Indicator{Indicator::Kind::volume, "audio-volume-low", 0.25}));
    EXPECT_EQ(sleeps, 2);

    LogCapture log;
    volume.level.reset();
    volume.later.reset();
    keys(MediaKey::volumeDown);
    keys(MediaKey::volumeDown);
    EXPECT_EQ(posted.size(), 4);
    EXPECT_EQ(log.lines(), QStringList{"[HUD] The volume indicator is not shown: no sound server"});
}

namespace {
// A key stream on a thread of its own, as the X server's is: presses as fast as they come, and,
// as from a queue that still holds some, one more while stop() waits for the thread to end.
struct FloodingSource : KeyEventSource {
    std::thread thread;
    std::atomic<bool> stopping{false};
    std::atomic<int> delivered{0};
    bool start(std::function<KeyEvent(const KeyEvent&)> callback, QString*) override
    {
        thread = std::thread([this, callback] {
            while (!stopping) {
                callback(KeyEvent::media(1, true));
                ++delivered;
            }
            callback(KeyEvent::media(1, true));
        });
        return true;
    }
    void stop() override
    {
        stopping = true;
        thread.join();
    }
    void enable() override {}
};
} // namespace

// Stopping while presses flood in, and while one is being handled, ends the key thread at once:
// the thread never waits on the lock that start and stop hold.
TEST(VolumeAndBrightnessListener, StopsWithinAMomentWhilePressesFloodIn)
{
    ManualScheduler scheduler;
    FloodingSource source;
    WakeEvents wake;
    VolumeAndBrightnessListener listener{{scheduler, source, wake, [] { return false; },
                                          [](std::function<void()> work) { work(); }, [] {}, [] {}}};
    std::atomic<int> handled{0};
    listener.setSideEffect("count", [&](MediaKey) { ++handled; });
    listener.start();
    while (source.delivered < 1000)
        std::this_thread::yield();

    // A stop that never returns cannot be failed from this thread: a watchdog ends the test.
    std::mutex mutex;
    std::condition_variable stopped;
    bool done = false;
    std::thread watchdog([&] {
        std::unique_lock lock(mutex);
        if (!stopped.wait_for(lock, std::chrono::seconds(5), [&] { return done; })) {
            std::fprintf(stderr, "stop() did not return within 5 s: the key thread and stop wait on each other\n");
            std::_Exit(1);
        }
    });
    listener.stop();
    {
        std::lock_guard lock(mutex);
        done = true;
    }
    stopped.notify_one();
    watchdog.join();
    EXPECT_FALSE(listener.isRunning());
    EXPECT_GE(handled.load(), 1000);
}
