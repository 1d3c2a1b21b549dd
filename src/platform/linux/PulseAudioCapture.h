#pragma once

#include "effects/AudioCapture.h"

#include <QObject>

#include <vector>

struct pa_threaded_mainloop;
struct pa_context;
struct pa_stream;

namespace kelvane {

// What the default output plays, from its monitor on PulseAudio or PipeWire's PulseAudio server.
// Everything runs on the sound library's own thread: connecting, reading, and the `block` calls;
// the main thread only takes its lock for a moment to open or close the stream. The connection
// stays up between captures; a stream exists only while capturing, and it does not keep the
// output from suspending.
class PulseAudioCapture final : public AudioCapture {
public:
    static constexpr int rate = 48000;

    PulseAudioCapture();
    ~PulseAudioCapture() override;

    void start(std::function<void(std::span<const float>)> block) override;
    void stop() override;
    int sampleRate() const override { return rate; }

private:
    static void contextState(pa_context* context, void* self);
    static void streamState(pa_stream* stream, void* self);
    static void streamRead(pa_stream* stream, size_t bytes, void* self);
    // With the loop locked.
    void openStream();
    void closeStream();
    void report(const QString& reason);

    QObject m_home; // the main thread's end, for reports
    pa_threaded_mainloop* m_loop = nullptr;
    pa_context* m_context = nullptr;
    pa_stream* m_stream = nullptr;
    std::function<void(std::span<const float>)> m_block; // guarded by the loop's lock
    bool m_running = false;
    bool m_wanted = false;        // guarded by the loop's lock
    std::vector<float> m_samples; // the loop thread's own
};

} // namespace kelvane
