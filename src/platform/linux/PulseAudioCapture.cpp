#include "PulseAudioCapture.h"

#include <pulse/pulseaudio.h>

#include <QMetaObject>

#include <cstring>

namespace kelvane {

namespace {
QString errorText(pa_context* context) { return QString::fromUtf8(pa_strerror(pa_context_errno(context))); }
} // namespace

PulseAudioCapture::PulseAudioCapture()
    : m_loop(pa_threaded_mainloop_new())
{
    if (m_loop)
        pa_threaded_mainloop_set_name(m_loop, "kelvane-audio");
}

PulseAudioCapture::~PulseAudioCapture()
{
    if (!m_loop)
        return;
    // The loop's thread is joined unlocked; once it has ended nothing else touches the context.
    pa_threaded_mainloop_stop(m_loop);
    if (m_stream) {
        pa_stream_set_state_callback(m_stream, nullptr, nullptr);
        pa_stream_set_read_callback(m_stream, nullptr, nullptr);
        pa_stream_unref(m_stream);
    }
    if (m_context) {
        pa_context_set_state_callback(m_context, nullptr, nullptr);
        pa_context_disconnect(m_context);
        pa_context_unref(m_context);
    }
    pa_threaded_mainloop_free(m_loop);
}

void PulseAudioCapture::start(std::function<void(std::span<const float>)> block)
{
    if (!m_loop) {
        report(QStringLiteral("The sound library could not start."));
        return;
    }
    if (!m_running) {
        m_running = pa_threaded_mainloop_start(m_loop) >= 0;
        if (!m_running) {
            report(QStringLiteral("The sound library could not start."));
            return;
        }
    }
    pa_threaded_mainloop_lock(m_loop);
    m_block = std::move(block);
    m_wanted = true;
    if (m_context && !PA_CONTEXT_IS_GOOD(pa_context_get_state(m_context))) {
        pa_context_set_state_callback(m_context, nullptr, nullptr);
        pa_context_unref(m_context);
        m_context = nullptr;
    }
    if (!m_context) {
        pa_proplist* properties = pa_proplist_new();
        pa_proplist_sets(properties, PA_PROP_APPLICATION_NAME, "Kelvane");
        pa_proplist_sets(properties, PA_PROP_APPLICATION_ID, "kelvane");
        pa_proplist_sets(properties, PA_PROP_APPLICATION_ICON_NAME, "kelvane");
        m_context = pa_context_new_with_proplist(pa_threaded_mainloop_get_api(m_loop), "Kelvane", properties);
        pa_proplist_free(properties);
        pa_context_set_state_callback(m_context, contextState, this);
        // No server is started for us: one that is not running is reported.
        if (pa_context_connect(m_context, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0) {
            const QString why = errorText(m_context);
            m_wanted = false;
            m_block = nullptr;
            pa_threaded_mainloop_unlock(m_loop);
            report(QStringLiteral("There is no sound server to listen to (%1).").arg(why));
            return;
        }
    } else if (pa_context_get_state(m_context) == PA_CONTEXT_READY) {
        openStream();
    }
    pa_threaded_mainloop_unlock(m_loop);
}

void PulseAudioCapture::stop()
{
    if (!m_loop)
        return;
    pa_threaded_mainloop_lock(m_loop);
    m_wanted = false;
    closeStream();
    m_block = nullptr;
    pa_threaded_mainloop_unlock(m_loop);
}

void PulseAudioCapture::contextState(pa_context* context, void* self)
{
    auto* capture = static_cast<PulseAudioCapture*>(self);
    switch (pa_context_get_state(context)) {
    case PA_CONTEXT_READY:
        if (capture->m_wanted)
            capture->openStream();
        break;
    case PA_CONTEXT_FAILED:
    case PA_CONTEXT_TERMINATED:
        capture->closeStream();
        if (capture->m_wanted) {
            capture->m_wanted = false;
            capture->m_block = nullptr;
            capture->report(QStringLiteral("There is no sound server to listen to (%1).").arg(errorText(context)));
        }
        break;
    default:
        break;
    }
}

void PulseAudioCapture::openStream()
{
    if (m_stream)
        return;
    const pa_sample_spec format{PA_SAMPLE_FLOAT32LE, rate, 1};
    pa_proplist* properties = pa_proplist_new();
    pa_proplist_sets(properties, PA_PROP_MEDIA_NAME, "Spectrum of what plays");
    pa_proplist_sets(properties, PA_PROP_MEDIA_ROLE, "production");
    m_stream = pa_stream_new_with_proplist(m_context, "Spectrum of what plays", &format, nullptr, properties);
    pa_proplist_free(properties);
    if (!m_stream) {
        m_wanted = false;
        report(QStringLiteral("The sound server refused to be listened to (%1).").arg(errorText(m_context)));
        return;
    }
    pa_stream_set_state_callback(m_stream, streamState, this);
    pa_stream_set_read_callback(m_stream, streamRead, this);
    // About a thirtieth of a second a read, so that the bars follow the sound closely.
    pa_buffer_attr buffer{};
    buffer.maxlength = std::uint32_t(-1);
    buffer.fragsize = std::uint32_t(rate / 30 * sizeof(float));
    const auto flags = pa_stream_flags_t(PA_STREAM_ADJUST_LATENCY | PA_STREAM_DONT_INHIBIT_AUTO_SUSPEND);
    if (pa_stream_connect_record(m_stream, "@DEFAULT_MONITOR@", &buffer, flags) < 0) {
        const QString why = errorText(m_context);
        closeStream();
        m_wanted = false;
        report(QStringLiteral("The sound server refused to be listened to (%1).").arg(why));
    }
}

void PulseAudioCapture::closeStream()
{
    if (!m_stream)
        return;
    pa_stream_set_state_callback(m_stream, nullptr, nullptr);
    pa_stream_set_read_callback(m_stream, nullptr, nullptr);
    pa_stream_disconnect(m_stream);
    pa_stream_unref(m_stream);
    m_stream = nullptr;
}

void PulseAudioCapture::streamState(pa_stream* stream, void* self)
{
    auto* capture = static_cast<PulseAudioCapture*>(self);
    if (pa_stream_get_state(stream) != PA_STREAM_FAILED)
        return;
    const QString why = errorText(capture->m_context);
    capture->closeStream();
    if (capture->m_wanted) {
        capture->m_wanted = false;
        capture->m_block = nullptr;
        capture->report(QStringLiteral("The sound server stopped being listened to (%1).").arg(why));
    }
}

void PulseAudioCapture::streamRead(pa_stream* stream, size_t, void* self)
{
    auto* capture = static_cast<PulseAudioCapture*>(self);
    const void* data = nullptr;
    size_t bytes = 0;
    while (pa_stream_readable_size(stream) > 0 && pa_stream_peek(stream, &data, &bytes) == 0 && bytes > 0) {
        // A hole in the recording reads as silence.
        capture->m_samples.assign(bytes / sizeof(float), 0.0f);
        if (data)
            std::memcpy(capture->m_samples.data(), data, capture->m_samples.size() * sizeof(float));
        pa_stream_drop(stream);
        if (capture->m_block)
            capture->m_block(capture->m_samples);
    }
}

void PulseAudioCapture::report(const QString& reason)
{
    QMetaObject::invokeMethod(
        &m_home,
        [this, reason] {
            if (failed)
                failed(reason);
        },
        Qt::QueuedConnection);
}

} // namespace kelvane
