#include "X11WindowHints.h"

#include <QGuiApplication>
#include <QWindow>

#include <X11/Xatom.h>
#include <X11/Xlib.h>

namespace kelvane {

void applyDesktopFurnitureHints(QWindow* window)
{
    auto* x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
    if (!x11 || !x11->display())
        return;
    Display* display = x11->display();
    const auto id = static_cast<Window>(window->winId());
    const auto atom = [display](const char* name) { return XInternAtom(display, name, False); };

    // Qt merges its own states into this property when it maps the window.
    Atom states[] = {atom("_NET_WM_STATE_SKIP_TASKBAR"), atom("_NET_WM_STATE_SKIP_PAGER"),
                     atom("_NET_WM_STATE_STICKY")};
    XChangeProperty(display, id, atom("_NET_WM_STATE"), XA_ATOM, 32, PropModeReplace,
                    reinterpret_cast<unsigned char*>(states), 3);
    long allDesktops = 0xFFFFFFFF;
    XChangeProperty(display, id, atom("_NET_WM_DESKTOP"), XA_CARDINAL, 32, PropModeReplace,
                    reinterpret_cast<unsigned char*>(&allDesktops), 1);
    XFlush(display);
}

} // namespace kelvane
