#pragma once

#include "hud/LevelFollower.h"

#include <QByteArray>

#include <optional>

struct pa_threaded_mainloop;
struct pa_context;
struct pa_sink_info;
struct pa_time_event;

namespace kelvane {

// The default output's volume and mute on PulseAudio or PipeWire's PulseAudio server, followed
// through the server's change events on the sound library's own thread. A server that is not
// there yet, or goes away, is waited for; when it comes, its level is where following starts.
class PulseVolumeWatch final : public VolumeWatch {
public:
    PulseVolumeWatch();
    ~PulseVolumeWatch() override;

    void start(std::function<void(const VolumeService::Level&)> changed) override;
    void stop() override;

private:
    // All below run on the loop's thread, or with its lock held.
    void connect();
    void dropContext();
    void askDefaultSink();
    void sinkReported(const pa_sink_info& info, bool fromDefault);
    static void contextState(pa_context* context, void* self);

    pa_threaded_mainloop* m_loop = nullptr;
    pa_context* m_context = nullptr;
    pa_time_event* m_retry = nullptr;
    bool m_loopRunning = false;
    bool m_wanted = false;
    std::function<void(const VolumeService::Level&)> m_changed;
    // The default output as last known: its name and level (nothing before the first report).
    QByteArray m_sink;
    std::optional<std::pair<std::uint32_t, bool>> m_level; // average volume, muted
};

} // namespace kelvane
