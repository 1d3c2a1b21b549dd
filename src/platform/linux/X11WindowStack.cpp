#include "X11WindowStack.h"

#include <QGuiApplication>
#include <QSocketNotifier>

#include <xcb/xcb.h>

#include <unistd.h>

#include <cstdlib>
#include <memory>

namespace kelvane {

namespace {
struct FreeDeleter {
    void operator()(void* p) const { std::free(p); }
};
template <class T>
using Reply = std::unique_ptr<T, FreeDeleter>;

constexpr const char* atomNames[] = {
    "_NET_CLIENT_LIST_STACKING",
    "_NET_CLIENT_LIST",
    "_NET_ACTIVE_WINDOW",
    "_NET_WM_STATE",
    "_NET_WM_STATE_FULLSCREEN",
    "_NET_WM_STATE_HIDDEN",
    "_NET_WM_WINDOW_TYPE",
    "_NET_WM_PID",
    "_NET_WM_WINDOW_TYPE_DOCK",
    "_NET_WM_WINDOW_TYPE_DESKTOP",
    "_NET_WM_WINDOW_TYPE_NOTIFICATION",
};

std::vector<quint32> cardinals(xcb_get_property_reply_t* reply)
{
    if (!reply || reply->format != 32)
        return {};
    const auto* values = static_cast<const quint32*>(xcb_get_property_value(reply));
    return {values, values + xcb_get_property_value_length(reply) / 4};
}
} // namespace

X11WindowStack::X11WindowStack(QObject* parent)
    : WindowStackSource(parent)
{
}

X11WindowStack::~X11WindowStack()
{
    delete m_notifier;
    if (m_connection)
        xcb_disconnect(m_connection);
}

void X11WindowStack::start()
{
    int screenNumber = 0;
    m_connection = xcb_connect(nullptr, &screenNumber);
    if (xcb_connection_has_error(m_connection)) {
        xcb_disconnect(m_connection);
        m_connection = nullptr;
        Q_EMIT unavailable(QStringLiteral("there is no X display"));
        return;
    }
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(m_connection));
    for (int i = 0; i < screenNumber && screens.rem; ++i)
        xcb_screen_next(&screens);
    m_root = screens.data->root;

    std::vector<xcb_intern_atom_cookie_t> cookies;
    for (const char* name : atomNames)
        cookies.push_back(xcb_intern_atom(m_connection, 0, uint16_t(strlen(name)), name));
    for (std::size_t i = 0; i < cookies.size(); ++i) {
        Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(m_connection, cookies[i], nullptr));
        m_atoms.insert(atomNames[i], reply ? quint32(reply->atom) : quint32(XCB_ATOM_NONE));
    }
    const uint32_t rootEvents = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(m_connection, m_root, XCB_CW_EVENT_MASK, &rootEvents);
    xcb_flush(m_connection);

    m_notifier = new QSocketNotifier(xcb_get_file_descriptor(m_connection), QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &X11WindowStack::drain);
    refresh();
    drain();
}

void X11WindowStack::follow(quint32 window)
{
    if (m_followed.contains(window))
        return;
    m_followed.insert(window);
    const uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(m_connection, window, XCB_CW_EVENT_MASK, &events);
}

void X11WindowStack::drain()
{
    // Replies read while refreshing can bring events along: they are taken here too, until the
    // stack is read with nothing new behind it.
    for (;;) {
        bool dirty = false;
        while (xcb_generic_event_t* event = xcb_poll_for_event(m_connection)) {
            switch (event->response_type & 0x7f) {
            case XCB_PROPERTY_NOTIFY: {
                const auto* property = reinterpret_cast<xcb_property_notify_event_t*>(event);
                const auto atom = property->atom;
                dirty |= atom == m_atoms.value("_NET_WM_STATE") || atom == m_atoms.value("_NET_CLIENT_LIST_STACKING") ||
                         atom == m_atoms.value("_NET_CLIENT_LIST") || atom == m_atoms.value("_NET_ACTIVE_WINDOW");
                break;
            }
            case XCB_DESTROY_NOTIFY:
                m_followed.remove(reinterpret_cast<xcb_destroy_notify_event_t*>(event)->window);
                dirty = true;
                break;
            case XCB_CONFIGURE_NOTIFY:
            case XCB_MAP_NOTIFY:
            case XCB_UNMAP_NOTIFY:
                dirty = true;
                break;
            default:
                break;
            }
            std::free(event);
        }
        if (xcb_connection_has_error(m_connection)) {
            m_notifier->setEnabled(false);
            Q_EMIT unavailable(QStringLiteral("the connection to the X server was lost"));
            return;
        }
        if (!dirty)
            return;
        refresh();
    }
}

void X11WindowStack::refresh()
{
    xcb_connection_t* c = m_connection;
    const auto rootProperty = [&](const char* name, xcb_atom_t type) {
        return xcb_get_property(c, 0, m_root, m_atoms.value(name), type, 0, 4096);
    };
    auto stackingCookie = rootProperty("_NET_CLIENT_LIST_STACKING", XCB_ATOM_WINDOW);
    auto clientsCookie = rootProperty("_NET_CLIENT_LIST", XCB_ATOM_WINDOW);
    auto activeCookie = rootProperty("_NET_ACTIVE_WINDOW", XCB_ATOM_WINDOW);
    Reply<xcb_get_property_reply_t> stacking(xcb_get_property_reply(c, stackingCookie, nullptr));
    Reply<xcb_get_property_reply_t> clients(xcb_get_property_reply(c, clientsCookie, nullptr));
    Reply<xcb_get_property_reply_t> activeReply(xcb_get_property_reply(c, activeCookie, nullptr));

    WindowStack stack;
    std::vector<quint32> windows = cardinals(stacking.get());
    stack.ordered = !windows.empty();
    if (!stack.ordered)
        windows = cardinals(clients.get());
    const std::vector<quint32> active = cardinals(activeReply.get());
    const quint32 activeWindow = active.empty() ? 0 : active.front();

    // All questions first, then all answers: one round trip for the whole stack.
    struct Asked {
        quint32 window;
        xcb_get_property_cookie_t state, type, pid;
        xcb_get_window_attributes_cookie_t attributes;
        xcb_get_geometry_cookie_t geometry;
        xcb_translate_coordinates_cookie_t origin;
    };
    std::vector<Asked> asked;
    for (quint32 window : windows) {
        follow(window);
        asked.push_back({window, xcb_get_property(c, 0, window, m_atoms.value("_NET_WM_STATE"), XCB_ATOM_ATOM, 0, 64),
                         xcb_get_property(c, 0, window, m_atoms.value("_NET_WM_WINDOW_TYPE"), XCB_ATOM_ATOM, 0, 64),
                         xcb_get_property(c, 0, window, m_atoms.value("_NET_WM_PID"), XCB_ATOM_CARDINAL, 0, 1),
                         xcb_get_window_attributes(c, window), xcb_get_geometry(c, window),
                         xcb_translate_coordinates(c, window, m_root, 0, 0)});
    }
    const double scale = qGuiApp ? qGuiApp->devicePixelRatio() : 1;
    const quint32 ownProcess = quint32(::getpid());
    const QSet<quint32> ignoredTypes{m_atoms.value("_NET_WM_WINDOW_TYPE_DOCK"),
                                     m_atoms.value("_NET_WM_WINDOW_TYPE_DESKTOP"),
                                     m_atoms.value("_NET_WM_WINDOW_TYPE_NOTIFICATION")};
    for (const Asked& question : asked) {
        Reply<xcb_get_property_reply_t> state(xcb_get_property_reply(c, question.state, nullptr));
        Reply<xcb_get_property_reply_t> type(xcb_get_property_reply(c, question.type, nullptr));
        Reply<xcb_get_property_reply_t> pid(xcb_get_property_reply(c, question.pid, nullptr));
        Reply<xcb_get_window_attributes_reply_t> attributes(
            xcb_get_window_attributes_reply(c, question.attributes, nullptr));
        Reply<xcb_get_geometry_reply_t> geometry(xcb_get_geometry_reply(c, question.geometry, nullptr));
        Reply<xcb_translate_coordinates_reply_t> origin(xcb_translate_coordinates_reply(c, question.origin, nullptr));
        // A window that went away between the list and the questions has no answers.
        if (!attributes || !geometry || !origin)
            continue;
        StackedWindow window;
        window.frame =
            QRectF(origin->dst_x / scale, origin->dst_y / scale, geometry->width / scale, geometry->height / scale);
        const std::vector<quint32> states = cardinals(state.get());
        const auto has = [&](const char* name) {
            return std::find(states.begin(), states.end(), m_atoms.value(name)) != states.end();
        };
        window.fullScreen = has("_NET_WM_STATE_FULLSCREEN");
        const std::vector<quint32> types = cardinals(type.get());
        const std::vector<quint32> owner = cardinals(pid.get());
        window.ignored = attributes->map_state != XCB_MAP_STATE_VIEWABLE || has("_NET_WM_STATE_HIDDEN") ||
                         (!types.empty() && ignoredTypes.contains(types.front())) ||
                         (!owner.empty() && owner.front() == ownProcess);
        // Only asked for without a stacking order: focus moving between windows changes nothing.
        if (!stack.ordered && question.window == activeWindow)
            stack.active = window;
        if (stack.ordered)
            stack.windows.insert(stack.windows.begin(), window); // the list runs bottom to top
    }
    Q_EMIT stackChanged(stack);
}

} // namespace kelvane
