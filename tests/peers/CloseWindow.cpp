// Asks an X11 window to close, as a window manager's close button does: a WM_DELETE_WINDOW message
// to the window named by its id ("0x2a00004"), so that its program closes it itself.
#include <X11/Xlib.h>

#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s WINDOW-ID\n", argv[0]);
        return 2;
    }
    Display* display = XOpenDisplay(nullptr);
    if (!display)
        return 1;
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = static_cast<Window>(std::strtoul(argv[1], nullptr, 0));
    event.xclient.message_type = XInternAtom(display, "WM_PROTOCOLS", False);
    event.xclient.format = 32;
    event.xclient.data.l[0] = static_cast<long>(XInternAtom(display, "WM_DELETE_WINDOW", False));
    event.xclient.data.l[1] = CurrentTime;
    const Status sent = XSendEvent(display, event.xclient.window, False, NoEventMask, &event);
    XSync(display, False);
    XCloseDisplay(display);
    return sent ? 0 : 1;
}
