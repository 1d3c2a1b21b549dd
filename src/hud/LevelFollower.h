#pragma once

#include "LevelKeys.h"
#include "MediaKeyTap.h"

#include "core/Clock.h"
#include "notch/Indicator.h"

#include <array>
#include <atomic>
#include <functional>

namespace kelvane {

// The output volume's changes as the sound server reports them, whoever made them: a slider, a
// headset's buttons, the desktop's own keys. Never the level found when following starts, after
// the server came back, or on a newly chosen default output; never a stream's own volume.
class VolumeWatch {
public:
    virtual ~VolumeWatch() = default;
    // `changed` may be called on the watch's own thread.
    virtual void start(std::function<void(const VolumeService::Level&)> changed) = 0;
    virtual void stop() = 0;
};

// The backlight's changes, with the same rules.
class BrightnessWatch {
public:
    virtual ~BrightnessWatch() = default;
    virtual void start(std::function<void(double)> changed) = 0;
    virtual void stop() = 0;
};

// Shows the indicator for a level the user changed, where no key announced it: in a session that
// keeps the keys to itself it is the only way the indicator shows; where keys are observed, a
// change that follows a key of its kind within `keyEcho` is that key's, which shows it already.
class LevelFollower {
public:
    static constexpr std::chrono::milliseconds keyEcho{1000};

    struct Dependencies {
        VolumeWatch& volume;
        BrightnessWatch& brightness;
        const Clock& clock;
        // Hands the indicator to the main thread; may be called on the watches' threads.
        std::function<void(const Indicator&)> post;
    };

    explicit LevelFollower(Dependencies dependencies);
    ~LevelFollower();

    void start();
    void stop();
    bool isRunning() const { return m_running; }

    // From the key thread, before the key's own indicator: a volume or brightness key was seen.
    void keyObserved(MediaKey key);

private:
    void changed(const Indicator& indicator);

    Dependencies m_deps;
    bool m_running = false;
    // When a key of each kind was last seen, in the clock's nanoseconds; the lowest value for never.
    std::array<std::atomic<std::int64_t>, 2> m_lastKey;
};

} // namespace kelvane
