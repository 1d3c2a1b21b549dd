#include "PulseVolumeService.h"

#include <pulse/pulseaudio.h>

#include <cmath>

namespace kelvane {

namespace {
// Runs an operation to its end, with the main loop locked by the caller.
void await(pa_threaded_mainloop* loop, pa_operation* operation)
{
    if (!operation)
        return;
    while (pa_operation_get_state(operation) == PA_OPERATION_RUNNING)
        pa_threaded_mainloop_wait(loop);
    pa_operation_unref(operation);
}

// Wakes the thread waiting on the main loop passed as `loop`.
void wake(pa_threaded_mainloop* loop) { pa_threaded_mainloop_signal(loop, 0); }
void wakeOnState(pa_context*, void* loop) { wake(static_cast<pa_threaded_mainloop*>(loop)); }
void wakeOnSuccess(pa_context*, int, void* loop) { wake(static_cast<pa_threaded_mainloop*>(loop)); }
} // namespace

struct PulseVolumeService::Sink {
    QByteArray name;
    pa_cvolume volume;
    bool muted = false;
};

PulseVolumeService::~PulseVolumeService()
{
    std::lock_guard guard(m_mutex);
    disconnect();
}

bool PulseVolumeService::connect(QString* why)
{
    if (m_context && pa_context_get_state(m_context) == PA_CONTEXT_READY)
        return true;
    disconnect();
    m_loop = pa_threaded_mainloop_new();
    m_context = pa_context_new(pa_threaded_mainloop_get_api(m_loop), "Kelvane");
    pa_context_set_state_callback(
        m_context, wakeOnState, m_loop);
    pa_threaded_mainloop_lock(m_loop);
    bool ready = pa_context_connect(m_context, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) >= 0 &&
                 pa_threaded_mainloop_start(m_loop) >= 0;
    while (ready) {
        const pa_context_state_t state = pa_context_get_state(m_context);
        if (state == PA_CONTEXT_READY)
            break;
        if (!PA_CONTEXT_IS_GOOD(state))
            ready = false;
        else
            pa_threaded_mainloop_wait(m_loop);
    }
    const int error = pa_context_errno(m_context);
    pa_threaded_mainloop_unlock(m_loop);
    if (!ready) {
        *why = QStringLiteral("no PulseAudio or PipeWire sound server answers (%1)").arg(QString::fromUtf8(pa_strerror(error)));
        disconnect();
    }
    return ready;
}

void PulseVolumeService::disconnect()
{
    if (m_loop)
        pa_threaded_mainloop_stop(m_loop);
    if (m_context) {
        pa_context_disconnect(m_context);
        pa_context_unref(m_context);
        m_context = nullptr;
    }
    if (m_loop) {
        pa_threaded_mainloop_free(m_loop);
        m_loop = nullptr;
    }
}

std::optional<PulseVolumeService::Sink> PulseVolumeService::defaultSink(QString* why)
{
    struct Query {
        pa_threaded_mainloop* loop;
        std::optional<Sink> sink;
    } query{m_loop, std::nullopt};
    await(m_loop, pa_context_get_sink_info_by_name(
                      m_context, "@DEFAULT_SINK@",
                      [](pa_context*, const pa_sink_info* info, int eol, void* data) {
                          auto* q = static_cast<Query*>(data);
                          if (eol == 0 && info)
                              q->sink = Sink{QByteArray(info->name), info->volume, info->mute != 0};
                          wake(q->loop);
                      },
                      &query));
    if (!query.sink)
        *why = QStringLiteral("the sound server has no output device");
    return query.sink;
}

std::optional<VolumeService::Level> PulseVolumeService::read(QString* why)
{
    std::lock_guard guard(m_mutex);
    if (!connect(why))
        return std::nullopt;
    pa_threaded_mainloop_lock(m_loop);
    const auto sink = defaultSink(why);
    pa_threaded_mainloop_unlock(m_loop);
    if (!sink)
        return std::nullopt;
    const double value = static_cast<double>(pa_cvolume_avg(&sink->volume)) / PA_VOLUME_NORM;
    return Level{std::clamp(value, 0.0, 1.0), sink->muted};
}

void PulseVolumeService::step(double delta)
{
    std::lock_guard guard(m_mutex);
    QString why;
    if (!connect(&why))
        return;
    pa_threaded_mainloop_lock(m_loop);
    if (auto sink = defaultSink(&why)) {
        // Steps stop at 100 %, as the desktop's own keys do.
        const double current = static_cast<double>(pa_cvolume_avg(&sink->volume)) / PA_VOLUME_NORM;
        const double target = std::clamp(std::round((current + delta) * 100) / 100, 0.0, 1.0);
        pa_cvolume_scale(&sink->volume, static_cast<pa_volume_t>(std::lround(target * PA_VOLUME_NORM)));
        await(m_loop, pa_context_set_sink_volume_by_name(
                          m_context, sink->name.constData(), &sink->volume,
                          wakeOnSuccess, m_loop));
    }
    pa_threaded_mainloop_unlock(m_loop);
}

void PulseVolumeService::toggleMute()
{
    std::lock_guard guard(m_mutex);
    QString why;
    if (!connect(&why))
        return;
    pa_threaded_mainloop_lock(m_loop);
    if (auto sink = defaultSink(&why))
        await(m_loop, pa_context_set_sink_mute_by_name(
                          m_context, sink->name.constData(), sink->muted ? 0 : 1,
                          wakeOnSuccess, m_loop));
    pa_threaded_mainloop_unlock(m_loop);
}

} // namespace kelvane
