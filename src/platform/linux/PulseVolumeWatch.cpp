#include "PulseVolumeWatch.h"

#include "core/Log.h"

#include <pulse/pulseaudio.h>

#include <algorithm>

namespace kelvane {

namespace {
constexpr pa_usec_t retryDelay = 2 * PA_USEC_PER_SEC;
} // namespace

PulseVolumeWatch::PulseVolumeWatch()
    : m_loop(pa_threaded_mainloop_new())
{
    if (m_loop)
        pa_threaded_mainloop_set_name(m_loop, "kelvane-levels");
}

PulseVolumeWatch::~PulseVolumeWatch()
{
    if (!m_loop)
        return;
    stop();
    pa_threaded_mainloop_stop(m_loop);
    pa_threaded_mainloop_free(m_loop);
}

void PulseVolumeWatch::start(std::function<void(const VolumeService::Level&)> changed)
{
    if (!m_loop)
        return;
    if (!m_loopRunning) {
        m_loopRunning = pa_threaded_mainloop_start(m_loop) >= 0;
        if (!m_loopRunning) {
            logLine(u"HUD", QStringLiteral("The volume is not followed: the sound library could not start."));
            return;
        }
    }
    pa_threaded_mainloop_lock(m_loop);
    m_changed = std::move(changed);
    m_wanted = true;
    if (!m_context)
        connect();
    pa_threaded_mainloop_unlock(m_loop);
}

void PulseVolumeWatch::stop()
{
    if (!m_loopRunning)
        return;
    pa_threaded_mainloop_lock(m_loop);
    m_wanted = false;
    m_changed = nullptr;
    dropContext();
    pa_threaded_mainloop_unlock(m_loop);
}

void PulseVolumeWatch::connect()
{
    pa_proplist* properties = pa_proplist_new();
    pa_proplist_sets(properties, PA_PROP_APPLICATION_NAME, "Kelvane");
    pa_proplist_sets(properties, PA_PROP_APPLICATION_ID, "kelvane");
    m_context = pa_context_new_with_proplist(pa_threaded_mainloop_get_api(m_loop), "Kelvane levels", properties);
    pa_proplist_free(properties);
    pa_context_set_state_callback(m_context, contextState, this);
    // A server that is not running yet is waited for, never started for us.
    if (pa_context_connect(m_context, nullptr, pa_context_flags_t(PA_CONTEXT_NOAUTOSPAWN | PA_CONTEXT_NOFAIL), nullptr) < 0)
        dropContext();
}

void PulseVolumeWatch::dropContext()
{
    if (m_retry) {
        pa_threaded_mainloop_get_api(m_loop)->time_free(m_retry);
        m_retry = nullptr;
    }
    if (m_context) {
        pa_context_set_state_callback(m_context, nullptr, nullptr);
        pa_context_set_subscribe_callback(m_context, nullptr, nullptr);
        pa_context_disconnect(m_context);
        pa_context_unref(m_context);
        m_context = nullptr;
    }
    m_sink.clear();
    m_level.reset();
}

void PulseVolumeWatch::contextState(pa_context* context, void* self)
{
    auto* watch = static_cast<PulseVolumeWatch*>(self);
    switch (pa_context_get_state(context)) {
    case PA_CONTEXT_READY:
        pa_context_set_subscribe_callback(
            context,
            [](pa_context* c, pa_subscription_event_type_t type, std::uint32_t index, void* data) {
                auto* w = static_cast<PulseVolumeWatch*>(data);
                const auto facility = type & PA_SUBSCRIPTION_EVENT_FACILITY_MASK;
                if (facility == PA_SUBSCRIPTION_EVENT_SERVER) {
                    w->askDefaultSink(); // the default output may be another now
                } else if (facility == PA_SUBSCRIPTION_EVENT_SINK &&
                           (type & PA_SUBSCRIPTION_EVENT_TYPE_MASK) == PA_SUBSCRIPTION_EVENT_CHANGE) {
                    if (pa_operation* op = pa_context_get_sink_info_by_index(
                            c, index,
                            [](pa_context*, const pa_sink_info* info, int eol, void* d) {
                                if (eol == 0 && info)
                                    static_cast<PulseVolumeWatch*>(d)->sinkReported(*info, false);
                            },
                            w))
                        pa_operation_unref(op);
                }
            },
            watch);
        if (pa_operation* op = pa_context_subscribe(
                context, pa_subscription_mask_t(PA_SUBSCRIPTION_MASK_SINK | PA_SUBSCRIPTION_MASK_SERVER), nullptr, nullptr))
            pa_operation_unref(op);
        watch->askDefaultSink();
        break;
    case PA_CONTEXT_FAILED:
    case PA_CONTEXT_TERMINATED:
        // The server went away: wait for it again, a moment later.
        if (!watch->m_wanted || watch->m_retry)
            break;
        logLine(u"HUD", QStringLiteral("The sound server went away; its volume is followed again when it is back."));
        {
            pa_mainloop_api* api = pa_threaded_mainloop_get_api(watch->m_loop);
            timeval when{};
            pa_timeval_add(pa_gettimeofday(&when), retryDelay);
            // The old context is let go from the loop, outside its own callback.
            watch->m_retry = api->time_new(
                api, &when,
                [](pa_mainloop_api*, pa_time_event*, const timeval*, void* data) {
                    auto* w = static_cast<PulseVolumeWatch*>(data);
                    w->dropContext();
                    if (w->m_wanted)
                        w->connect();
                },
                watch);
        }
        break;
    default:
        break;
    }
}

void PulseVolumeWatch::askDefaultSink()
{
    if (pa_operation* op = pa_context_get_sink_info_by_name(
            m_context, "@DEFAULT_SINK@",
            [](pa_context*, const pa_sink_info* info, int eol, void* d) {
                if (eol == 0 && info)
                    static_cast<PulseVolumeWatch*>(d)->sinkReported(*info, true);
            },
            this))
        pa_operation_unref(op);
}

void PulseVolumeWatch::sinkReported(const pa_sink_info& info, bool fromDefault)
{
    const QByteArray name(info.name);
    const std::pair<std::uint32_t, bool> level{pa_cvolume_avg(&info.volume), info.mute != 0};
    if (fromDefault && name != m_sink) {
        // A new default output (or the first): where following starts, not a change.
        m_sink = name;
        m_level = level;
        return;
    }
    if (name != m_sink || !m_level || *m_level == level)
        return;
    m_level = level;
    if (m_changed)
        m_changed({std::clamp(static_cast<double>(level.first) / PA_VOLUME_NORM, 0.0, 1.0), level.second});
}

} // namespace kelvane
