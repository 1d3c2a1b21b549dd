#include "MediaKeyTap.h"

#include "core/Log.h"

namespace kelvane {

std::optional<MediaKey> mediaKeyForSystemCode(int code)
{
    switch (code) {
    case 0: return MediaKey::volumeUp;
    case 1: return MediaKey::volumeDown;
    case 2: return MediaKey::brightnessUp;
    case 3: return MediaKey::brightnessDown;
    case 7: return MediaKey::mute;
    case 16: return MediaKey::playPause;
    case 17: return MediaKey::next;
    case 18: return MediaKey::previous;
    case 19: return MediaKey::fastForward;
    case 20: return MediaKey::rewind;
    default: return std::nullopt;
    }
}

std::optional<MediaKey> mediaKeyForKeyDown(int keyCode, bool alternateBrightnessKeys)
{
    if (keyCode == 144 || (alternateBrightnessKeys && keyCode == 113))
        return MediaKey::brightnessUp;
    if (keyCode == 145 || (alternateBrightnessKeys && keyCode == 107))
        return MediaKey::brightnessDown;
    return std::nullopt;
}

MediaKeyTap::MediaKeyTap(std::weak_ptr<MediaKeyTapDelegate> delegate, MediaKeyTapOptions options, KeyEventSource& source)
    : m_delegate(std::move(delegate))
    , m_options(std::move(options))
    , m_source(source)
{
}

MediaKeyTap::~MediaKeyTap() { stop(); }

bool MediaKeyTap::start()
{
    if (m_running)
        return true;
    QString error;
    if (!m_source.start([this](const KeyEvent& event) { return handleEvent(event); }, &error)) {
        emitLine(QStringLiteral("Error occurred while starting media key tap listener. ") + error);
        return false;
    }
    m_running = true;
    return true;
}

void MediaKeyTap::stop()
{
    if (!m_running)
        return;
    m_running = false;
    m_source.stop();
}

bool MediaKeyTap::takes(MediaKey key) const
{
    if (!m_options.keysToWatch.contains(key) || m_delegate.expired())
        return false;
    const bool builtInMain = m_options.mainScreenIsBuiltIn && m_options.mainScreenIsBuiltIn();
    return m_options.observeBuiltIn || !builtInMain;
}

KeyEvent MediaKeyTap::handleEvent(const KeyEvent& event)
{
    switch (event.type) {
    case KeyEvent::Type::tapDisabledByTimeout:
    case KeyEvent::Type::tapDisabledByUserInput:
        m_source.enable();
        break;
    case KeyEvent::Type::keyDown:
        if (const auto key = mediaKeyForKeyDown(event.keyCode, m_options.alternateBrightnessKeys); key && takes(*key))
            handle(*key, true, event.modifiers);
        break;
    case KeyEvent::Type::systemDefined:
        if (event.subtype != KeyEvent::mediaKeySubtype)
            break;
        if (const auto key = mediaKeyForSystemCode(event.mediaKeyCode()); key && takes(*key))
            handle(*key, event.mediaKeyDown(), event.modifiers);
        break;
    default:
        break;
    }
    return event;
}

void MediaKeyTap::handle(MediaKey key, bool down, unsigned modifiers)
{
    const bool reported = m_options.keyPressMode == KeyPressMode::keyDownAndUp ||
                          (m_options.keyPressMode == KeyPressMode::keyDown) == down;
    if (!reported)
        return;
    if (const auto delegate = m_delegate.lock())
        delegate->handle(key, modifiers);
}

} // namespace kelvane
