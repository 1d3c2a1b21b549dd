#include "hud/LevelFollower.h"

#include "core/ManualScheduler.h"

#include <gtest/gtest.h>

using namespace kelvane;
using namespace std::chrono_literals;

namespace {
struct FakeVolume : VolumeWatch {
    std::function<void(const VolumeService::Level&)> changed;
    void start(std::function<void(const VolumeService::Level&)> c) override { changed = std::move(c); }
    void stop() override { changed = nullptr; }
};
struct FakeBrightness : BrightnessWatch {
    std::function<void(double)> changed;
    void start(std::function<void(double)> c) override { changed = std::move(c); }
    void stop() override { changed = nullptr; }
};
} // namespace

// A level change shows unless a key of its own kind was seen less than a second before it (that
// key shows it); each shown with the key path's icons.
TEST(LevelFollower, ShowsChangesExceptAKeysOwnEcho)
{
    struct Case {
        const char* name;
        std::optional<MediaKey> key;
        std::chrono::milliseconds after;
        bool volume; // else the backlight
        bool shown;
    };
    const Case cases[] = {
        {"no key", std::nullopt, 0ms, true, true},
        {"right after volume up", MediaKey::volumeUp, 0ms, true, false},
        {"just inside the echo", MediaKey::mute, 999ms, true, false},
        {"once the echo is over", MediaKey::volumeDown, 1000ms, true, true},
        {"a brightness key and a volume change", MediaKey::brightnessUp, 10ms, true, true},
        {"a brightness key and its change", MediaKey::brightnessDown, 10ms, false, false},
        {"a volume key and a backlight change", MediaKey::volumeUp, 10ms, false, true},
        {"a key that is not a level's", MediaKey::playPause, 10ms, true, true},
    };
    for (const Case& c : cases) {
        ManualScheduler scheduler;
        FakeVolume volume;
        FakeBrightness brightness;
        std::vector<Indicator> posted;
        LevelFollower follower({volume, brightness, scheduler.clock(), [&](const Indicator& i) { posted.push_back(i); }});
        follower.start();
        scheduler.advance(5s);
        if (c.key)
            follower.keyObserved(*c.key);
        scheduler.advance(c.after);
        if (c.volume)
            volume.changed({0.3, false});
        else
            brightness.changed(0.8);
        ASSERT_EQ(posted.size(), c.shown ? 1u : 0u) << c.name;
        const Indicator expected = c.volume ? Indicator{Indicator::Kind::volume, "audio-volume-low", 0.3}
                                            : Indicator{Indicator::Kind::brightness, "display-brightness", 0.8};
        if (c.shown) {
            EXPECT_EQ(posted[0], expected) << c.name;
        }
        follower.stop();
        EXPECT_FALSE(volume.changed || brightness.changed) << c.name;
    }
}
