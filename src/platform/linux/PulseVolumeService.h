#pragma once

#include "hud/LevelKeys.h"

#include <mutex>

struct pa_threaded_mainloop;
struct pa_context;

namespace kelvane {

// The default output's volume, from PulseAudio or from PipeWire's PulseAudio server, whichever
// the session runs. Connects on first use and again after the server went away.
class PulseVolumeService final : public VolumeService {
public:
    PulseVolumeService() = default;
    ~PulseVolumeService() override;

    std::optional<Level> read(QString* why) override;
    void step(double delta) override;
    void toggleMute() override;

private:
    bool connect(QString* why);
    void disconnect();
    // The default sink's name, volume and mute, read under the main loop's lock.
    struct Sink;
    std::optional<Sink> defaultSink(QString* why);

    std::mutex m_mutex;
    pa_threaded_mainloop* m_loop = nullptr;
    pa_context* m_context = nullptr;
};

} // namespace kelvane
