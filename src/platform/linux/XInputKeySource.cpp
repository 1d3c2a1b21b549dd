#include "XInputKeySource.h"

#include <X11/XF86keysym.h>
#include <X11/Xlib.h>
#include <X11/extensions/XInput2.h>

#include <poll.h>
#include <unistd.h>

#include <array>

namespace kelvane {

namespace {
struct KeyCodeOf {
    KeySym keysym;
    int code; // the system-defined media key code
};
constexpr std::array<KeyCodeOf, 10> mediaKeys{{
    {XF86XK_AudioRaiseVolume, 0},
    {XF86XK_AudioLowerVolume, 1},
    {XF86XK_MonBrightnessUp, 2},
    {XF86XK_MonBrightnessDown, 3},
    {XF86XK_AudioMute, 7},
    {XF86XK_AudioPlay, 16},
    {XF86XK_AudioNext, 17},
    {XF86XK_AudioPrev, 18},
    {XF86XK_AudioForward, 19},
    {XF86XK_AudioRewind, 20},
}};

std::optional<int> systemCodeOf(MediaKey key)
{
    switch (key) {
    case MediaKey::volumeUp: return 0;
    case MediaKey::volumeDown: return 1;
    case MediaKey::brightnessUp: return 2;
    case MediaKey::brightnessDown: return 3;
    case MediaKey::mute: return 7;
    default: return std::nullopt;
    }
}

// Set while a grab is being tried: the server answers BadAccess when someone else holds it.
thread_local bool t_grabRefused = false;
int noteGrabError(Display*, XErrorEvent* event)
{
    if (event->error_code == BadAccess)
        t_grabRefused = true;
    return 0;
}
} // namespace

XInputKeySource::~XInputKeySource() { stop(); }

bool XInputKeySource::start(std::function<KeyEvent(const KeyEvent&)> callback, QString* error)
{
    if (m_display)
        return true;
    Display* display = XOpenDisplay(nullptr);
    if (!display) {
        *error = QStringLiteral("Media keys are not observed: there is no X server to listen to.");
        return false;
    }
    int event = 0, xiError = 0;
    int major = 2, minor = 0;
    if (!XQueryExtension(display, "XInputExtension", &m_xiOpcode, &event, &xiError) ||
        XIQueryVersion(display, &major, &minor) != Success) {
        XCloseDisplay(display);
        *error = QStringLiteral("Media keys are not observed: the X server has no XInput 2.");
        return false;
    }
    std::array<unsigned char, XIMaskLen(XI_LASTEVENT)> mask{};
    XISetMask(mask.data(), XI_RawKeyPress);
    XISetMask(mask.data(), XI_RawKeyRelease);
    XIEventMask events{XIAllMasterDevices, static_cast<int>(mask.size()), mask.data()};
    XISelectEvents(display, DefaultRootWindow(display), &events, 1);
    XFlush(display);
    if (pipe(m_wakePipe) != 0) {
        XCloseDisplay(display);
        *error = QStringLiteral("Media keys are not observed: no pipe for the key thread.");
        return false;
    }
    m_display = display;
    m_callback = std::move(callback);
    m_stopping = false;
    m_thread = std::thread([this] { run(); });
    return true;
}

void XInputKeySource::stop()
{
    if (!m_display)
        return;
    // Presses still queued are left: the thread ends after the one it is handling.
    m_stopping = true;
    const char quit = 'q';
    [[maybe_unused]] const auto written = write(m_wakePipe[1], &quit, 1);
    m_thread.join();
    XCloseDisplay(static_cast<Display*>(m_display));
    m_display = nullptr;
    close(m_wakePipe[0]);
    close(m_wakePipe[1]);
    m_wakePipe[0] = m_wakePipe[1] = -1;
}

void XInputKeySource::run()
{
    auto* display = static_cast<Display*>(m_display);
    std::array<std::pair<KeyCode, int>, mediaKeys.size()> codes{};
    for (size_t i = 0; i < mediaKeys.size(); ++i)
        codes[i] = {XKeysymToKeycode(display, mediaKeys[i].keysym), mediaKeys[i].code};

    std::array<pollfd, 2> fds{{{ConnectionNumber(display), POLLIN, 0}, {m_wakePipe[0], POLLIN, 0}}};
    while (true) {
        while (!m_stopping && XPending(display) > 0) {
            XEvent event;
            XNextEvent(display, &event);
            XGenericEventCookie* cookie = &event.xcookie;
            if (cookie->type != GenericEvent || cookie->extension != m_xiOpcode || !XGetEventData(display, cookie))
                continue;
            if (cookie->evtype == XI_RawKeyPress || cookie->evtype == XI_RawKeyRelease) {
                const auto* raw = static_cast<const XIRawEvent*>(cookie->data);
                for (const auto& [keycode, code] : codes) {
                    if (keycode != 0 && keycode == raw->detail) {
                        m_callback(KeyEvent::media(code, cookie->evtype == XI_RawKeyPress,
                                                   (raw->flags & XIKeyRepeat) != 0));
                        break;
                    }
                }
            }
            XFreeEventData(display, cookie);
        }
        if (poll(fds.data(), fds.size(), -1) < 0 && errno != EINTR)
            return;
        if ((fds[1].revents & POLLIN) || m_stopping)
            return;
    }
}

bool XInputKeySource::grabbedElsewhere(MediaKey key) const
{
    auto* display = static_cast<Display*>(m_display);
    const auto code = systemCodeOf(key);
    if (!display || !code)
        return false;
    KeyCode keycode = 0;
    for (const auto& entry : mediaKeys)
        if (entry.code == *code)
            keycode = XKeysymToKeycode(display, entry.keysym);
    if (keycode == 0)
        return false;
    // Trying the grab is the one way X tells: refused when another client holds it. When it is
    // ours it is let go at once.
    t_grabRefused = false;
    XSync(display, False);
    auto* previous = XSetErrorHandler(noteGrabError);
    const Window root = DefaultRootWindow(display);
    XGrabKey(display, keycode, AnyModifier, root, True, GrabModeAsync, GrabModeAsync);
    XSync(display, False);
    if (!t_grabRefused)
        XUngrabKey(display, keycode, AnyModifier, root);
    XSync(display, False);
    XSetErrorHandler(previous);
    return t_grabRefused;
}

} // namespace kelvane
