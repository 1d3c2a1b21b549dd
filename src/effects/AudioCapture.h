#pragma once

#include <QString>

#include <functional>
#include <span>

namespace kelvane {

// What the default output plays, read back as it plays (its monitor).
class AudioCapture {
public:
    virtual ~AudioCapture() = default;
    // Starts reading; `block` runs on the capture's own thread with mono samples at `sampleRate()`.
    // It may be called again after `stop()`.
    virtual void start(std::function<void(std::span<const float> samples)> block) = 0;
    // Stops reading and lets go of the stream; no `block` runs once this returns.
    virtual void stop() = 0;
    virtual int sampleRate() const = 0;
    // Told on the main thread when reading cannot start or breaks off; reading has then stopped.
    std::function<void(const QString& reason)> failed;
};

} // namespace kelvane
