// A window of another application (an archive manager, say) that drags out a file it has not
// written yet: it offers only the direct-save type ("XdndDirectSave0"), names the file, and writes
// it where the drop target asks, then answers "S" (or "E" with --fail). It prints "ready" once
// shown and, once the drag has ended, "copy" or "ignored".
//
//   kelvane_xds_source X Y NAME CONTENTS [--fail]
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <cstdio>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

namespace {
Display* display;
Window source;
Atom xdndAware, xdndSelection, xdndTypeList, xdndEnter, xdndPosition, xdndStatus, xdndLeave, xdndDrop, xdndFinished,
    xdndActionCopy, directSave, textPlain, targets;

Atom atom(const char* name) { return XInternAtom(display, name, False); }

std::string property(Window window, Atom name)
{
    Atom type = None;
    int format = 0;
    unsigned long count = 0, after = 0;
    unsigned char* data = nullptr;
    if (XGetWindowProperty(display, window, name, 0, 4096, False, AnyPropertyType, &type, &format, &count, &after, &data) !=
            Success ||
        !data)
        return {};
    std::string value(reinterpret_cast<char*>(data), count);
    XFree(data);
    return value;
}

bool isAware(Window window)
{
    Atom type = None;
    int format = 0;
    unsigned long count = 0, after = 0;
    unsigned char* data = nullptr;
    const bool aware = XGetWindowProperty(display, window, xdndAware, 0, 1, False, AnyPropertyType, &type, &format, &count,
                                          &after, &data) == Success &&
                       type != None;
    if (data)
        XFree(data);
    return aware;
}

// The drop-aware window under the pointer: walks down from the root through the windows that
// hold the pointer, as a window manager's frames may wrap the one that takes drops.
Window awareWindowAt(int x, int y)
{
    Window window = DefaultRootWindow(display), found = None;
    for (;;) {
        Window child = None;
        int cx = 0, cy = 0;
        XTranslateCoordinates(display, DefaultRootWindow(display), window, x, y, &cx, &cy, &child);
        if (window != DefaultRootWindow(display) && window != source && isAware(window))
            found = window;
        if (child == None)
            return found;
        window = child;
    }
}

void sendMessage(Window target, Atom type, long l1, long l2, long l3, long l4)
{
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = target;
    event.xclient.message_type = type;
    event.xclient.format = 32;
    event.xclient.data.l[0] = long(source);
    event.xclient.data.l[1] = l1;
    event.xclient.data.l[2] = l2;
    event.xclient.data.l[3] = l3;
    event.xclient.data.l[4] = l4;
    XSendEvent(display, target, False, NoEventMask, &event);
    XFlush(display);
}

std::string pathOfUri(const std::string& uri)
{
    if (uri.rfind("file://", 0) != 0)
        return {};
    std::string rest = uri.substr(7);
    rest = rest.substr(rest.find('/')); // past an optional host name
    std::string path;
    for (std::size_t i = 0; i < rest.size(); ++i) {
        if (rest[i] == '%' && i + 2 < rest.size()) {
            path += char(std::stoi(rest.substr(i + 1, 2), nullptr, 16));
            i += 2;
        } else {
            path += rest[i];
        }
    }
    return path;
}

void answer(const XSelectionRequestEvent& request, bool fail, const std::string& contents)
{
    XEvent reply{};
    reply.xselection.type = SelectionNotify;
    reply.xselection.requestor = request.requestor;
    reply.xselection.selection = request.selection;
    reply.xselection.target = request.target;
    reply.xselection.time = request.time;
    const Atom into = request.property == None ? request.target : request.property;
    reply.xselection.property = into;
    if (request.target == targets) {
        const Atom offered[] = {targets, directSave};
        XChangeProperty(display, request.requestor, into, XA_ATOM, 32, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(offered), 2);
    } else if (request.target == directSave) {
        // The target has put where the file is to go on this window.
        const std::string path = pathOfUri(property(source, directSave));
        bool written = false;
        if (!fail && !path.empty()) {
            if (FILE* file = std::fopen(path.c_str(), "wb")) {
                written = std::fwrite(contents.data(), 1, contents.size(), file) == contents.size();
                written = std::fclose(file) == 0 && written;
            }
        }
        const char* result = written ? "S" : "E";
        XChangeProperty(display, request.requestor, into, textPlain, 8, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(result), 1);
    } else {
        reply.xselection.property = None;
    }
    XSendEvent(display, request.requestor, False, NoEventMask, &reply);
    XFlush(display);
}
} // namespace

int main(int argc, char** argv)
{
    if (argc < 5) {
        std::fprintf(stderr, "usage: kelvane_xds_source X Y NAME CONTENTS [--fail]\n");
        return 2;
    }
    const bool fail = argc > 5 && std::strcmp(argv[5], "--fail") == 0;
    const std::string name = argv[3], contents = argv[4];
    display = XOpenDisplay(nullptr);
    if (!display)
        return 1;
    xdndAware = atom("XdndAware");
    xdndSelection = atom("XdndSelection");
    xdndTypeList = atom("XdndTypeList");
    xdndEnter = atom("XdndEnter");
    xdndPosition = atom("XdndPosition");
    xdndStatus = atom("XdndStatus");
    xdndLeave = atom("XdndLeave");
    xdndDrop = atom("XdndDrop");
    xdndFinished = atom("XdndFinished");
    xdndActionCopy = atom("XdndActionCopy");
    directSave = atom("XdndDirectSave0");
    textPlain = atom("text/plain");
    targets = atom("TARGETS");

    source = XCreateSimpleWindow(display, DefaultRootWindow(display), std::atoi(argv[1]), std::atoi(argv[2]), 200, 200, 0,
                                 0, 0xc06030);
    XStoreName(display, source, "XDS Source");
    XSizeHints hints{};
    hints.flags = PPosition | USPosition;
    hints.x = std::atoi(argv[1]);
    hints.y = std::atoi(argv[2]);
    XSetWMNormalHints(display, source, &hints);
    XSelectInput(display, source, ButtonPressMask | ButtonReleaseMask | PointerMotionMask | ExposureMask);
    XMapRaised(display, source);
    XSync(display, False);
    std::printf("ready\n");
    std::fflush(stdout);

    bool dragging = false, accepted = false, dropped = false;
    Window target = None;
    const std::time_t started = std::time(nullptr);
    while (std::time(nullptr) - started < 60) {
        if (!XPending(display)) {
            struct timespec pause {0, 10'000'000};
            nanosleep(&pause, nullptr);
            continue;
        }
        XEvent event;
        XNextEvent(display, &event);
        switch (event.type) {
        case ButtonPress:
            if (dragging)
                break;
            dragging = true;
            XSetSelectionOwner(display, xdndSelection, source, event.xbutton.time);
            XChangeProperty(display, source, directSave, textPlain, 8, PropModeReplace,
                            reinterpret_cast<const unsigned char*>(name.data()), int(name.size()));
            XChangeProperty(display, source, xdndTypeList, XA_ATOM, 32, PropModeReplace,
                            reinterpret_cast<const unsigned char*>(&directSave), 1);
            XGrabPointer(display, source, False, ButtonReleaseMask | PointerMotionMask, GrabModeAsync, GrabModeAsync, None,
                         None, event.xbutton.time);
            break;
        case MotionNotify: {
            if (!dragging || dropped)
                break;
            const int x = event.xmotion.x_root, y = event.xmotion.y_root;
            const Window under = awareWindowAt(x, y);
            if (under != target) {
                if (target != None)
                    sendMessage(target, xdndLeave, 0, 0, 0, 0);
                target = under;
                accepted = false;
                if (target != None)
                    sendMessage(target, xdndEnter, 5L << 24, long(directSave), 0, 0);
            }
            if (target != None)
                sendMessage(target, xdndPosition, 0, (long(x) << 16) | (y & 0xffff), long(event.xmotion.time),
                            long(xdndActionCopy));
            break;
        }
        case ButtonRelease:
            if (!dragging)
                break;
            XUngrabPointer(display, event.xbutton.time);
            if (target != None && accepted) {
                dropped = true;
                sendMessage(target, xdndDrop, 0, long(event.xbutton.time), 0, 0);
            } else {
                if (target != None)
                    sendMessage(target, xdndLeave, 0, 0, 0, 0);
                std::printf("ignored\n");
                return 0;
            }
            break;
        case ClientMessage:
            if (Atom(event.xclient.message_type) == xdndStatus)
                accepted = (event.xclient.data.l[1] & 1) != 0;
            else if (Atom(event.xclient.message_type) == xdndFinished) {
                std::printf("%s\n", (event.xclient.data.l[1] & 1) ? "copy" : "ignored");
                return 0;
            }
            break;
        case SelectionRequest:
            answer(event.xselectionrequest, fail, contents);
            break;
        default:
            break;
        }
    }
    std::printf("timed out\n");
    return 1;
}
