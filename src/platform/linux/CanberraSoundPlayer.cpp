#include "CanberraSoundPlayer.h"

#include "core/Log.h"

#include <canberra.h>
#include <dlfcn.h>

namespace kelvane {

namespace {
void dropAlsaMessage(const char*, int, const char*, int, const char*, ...) {}

// Without a sound server libcanberra falls back to ALSA, whose library prints its own errors on
// standard error when there is no sound card; the player's one line says all the user needs.
void quietAlsa()
{
    using Handler = void (*)(const char*, int, const char*, int, const char*, ...);
    void* alsa = ::dlopen("libasound.so.2", RTLD_LAZY);
    if (!alsa)
        return;
    if (auto* setHandler = reinterpret_cast<int (*)(Handler)>(::dlsym(alsa, "snd_lib_error_set_handler")))
        setHandler(dropAlsaMessage);
    // The library stays loaded: ALSA keeps the handler for the life of the process.
}
} // namespace

CanberraSoundPlayer::CanberraSoundPlayer() = default;

CanberraSoundPlayer::~CanberraSoundPlayer()
{
    m_queue.sync([this] {
        if (m_context)
            ca_context_destroy(m_context);
        m_context = nullptr;
    });
}

QString CanberraSoundPlayer::eventId(const QString& name)
{
    if (name == QLatin1StringView("Glass"))
        return QStringLiteral("complete");
    return name.toLower();
}

void CanberraSoundPlayer::play(const QString& name)
{
    m_queue.async([this, id = eventId(name)] { playOnQueue(id); });
}

void CanberraSoundPlayer::playOnQueue(const QString& eventId)
{
    if (!m_context) {
        quietAlsa();
        if (const int error = ca_context_create(&m_context); error != CA_SUCCESS) {
            m_context = nullptr;
            reportOnce(eventId, error);
            return;
        }
        ca_context_change_props(m_context, CA_PROP_APPLICATION_NAME, "Kelvane", CA_PROP_APPLICATION_ID,
                                "io.kelvane.Kelvane", nullptr);
        if (const int error = ca_context_open(m_context); error != CA_SUCCESS) {
            ca_context_destroy(m_context);
            m_context = nullptr;
            reportOnce(eventId, error);
            return;
        }
    }
    const QByteArray id = eventId.toUtf8();
    if (const int error = ca_context_play(m_context, 0, CA_PROP_EVENT_ID, id.constData(), nullptr);
        error != CA_SUCCESS)
        reportOnce(eventId, error);
}

void CanberraSoundPlayer::reportOnce(const QString& eventId, int error)
{
    if (m_reported.exchange(true))
        return;
    logLine(u"Sound", QStringLiteral("Cannot play the \"%1\" sound (%2); sounds stay silent.")
                          .arg(eventId, QString::fromUtf8(ca_strerror(error))));
}

} // namespace kelvane
