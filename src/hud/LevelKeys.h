#pragma once

#include "MediaKeyTap.h"

#include "notch/Indicator.h"

#include <atomic>
#include <functional>
#include <optional>

namespace kelvane {

// The output volume of the sound server. Each call may block (it asks the server); never on the
// main thread.
class VolumeService {
public:
    struct Level {
        double value = 0; // 0 to 1
        bool muted = false;
        bool operator==(const Level&) const = default;
    };
    virtual ~VolumeService() = default;
    // Nothing, with the reason, when there is no sound server to ask.
    virtual std::optional<Level> read(QString* why) = 0;
    virtual void step(double delta) = 0;
    virtual void toggleMute() = 0;
};

// The display's backlight; blocking like the volume.
class BrightnessService {
public:
    virtual ~BrightnessService() = default;
    virtual std::optional<double> read(QString* why) = 0;
    virtual void step(double delta) = 0;
};

// What the notch does with a volume or brightness key: where no one else on the desktop handles
// the key it changes the level itself (one step of 5 %, or mute), never both; then it reads the
// level and posts the indicator. Runs on the key thread.
class LevelKeys {
public:
    static constexpr double stepSize = 0.05;
    // How long a level changed by the desktop may take to show, and how often it is read meanwhile.
    static constexpr int settleReads = 4;
    static constexpr std::chrono::milliseconds settleInterval{40};

    struct Dependencies {
        VolumeService& volume;
        BrightnessService& brightness;
        // Whether another program on the desktop acts on this key.
        std::function<bool(MediaKey)> handledElsewhere;
        // Hands the indicator to the main thread.
        std::function<void(const Indicator&)> post;
        std::function<void(std::chrono::milliseconds)> sleep;
    };

    explicit LevelKeys(Dependencies dependencies);

    void operator()(MediaKey key);

    static QString volumeIcon(const VolumeService::Level& level);
    static inline const QString brightnessIcon = QStringLiteral("display-brightness");

private:
    std::optional<Indicator> volumeIndicator(MediaKey key, bool changeItHere);
    std::optional<Indicator> brightnessIndicator(MediaKey key, bool changeItHere);
    // Reads the level, makes the change, and reads again until the change shows (ours or the
    // desktop's reaches the service a moment after the key). Nothing when the service is missing:
    // one line per outage, said when it goes missing and again only after it came back.
    template <typename Level>
    std::optional<Level> readAfterChange(const std::function<std::optional<Level>(QString*)>& read,
                                         const std::function<void()>& change, std::atomic<bool>& reported,
                                         const QString& what);

    Dependencies m_deps;
    std::atomic<bool> m_volumeMissingReported{false};
    std::atomic<bool> m_brightnessMissingReported{false};
};

} // namespace kelvane
