// Another X client that holds a grab on one key, as a desktop's media-key daemon does, and
// prints "grabbed" (or "refused") and then "pressed" for every press it receives.
//
//   kelvane_key_grabber KEYSYM   (for example XF86AudioRaiseVolume)
#include <X11/Xlib.h>

#include <cstdio>

namespace {
bool refused = false;
int noteError(Display*, XErrorEvent* event)
{
    refused = refused || event->error_code == BadAccess;
    return 0;
}
} // namespace

int main(int argc, char** argv)
{
    Display* display = argc == 2 ? XOpenDisplay(nullptr) : nullptr;
    if (!display) {
        std::fprintf(stderr, "usage: kelvane_key_grabber KEYSYM (with an X server)\n");
        return 2;
    }
    const KeyCode keycode = XKeysymToKeycode(display, XStringToKeysym(argv[1]));
    XSetErrorHandler(noteError);
    XGrabKey(display, keycode, AnyModifier, DefaultRootWindow(display), True, GrabModeAsync, GrabModeAsync);
    XSync(display, False);
    std::printf("%s\n", refused ? "refused" : "grabbed");
    std::fflush(stdout);
    while (true) {
        XEvent event;
        XNextEvent(display, &event);
        if (event.type == KeyPress && event.xkey.keycode == keycode) {
            std::printf("pressed\n");
            std::fflush(stdout);
        }
    }
}
