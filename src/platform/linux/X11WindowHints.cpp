#include "X11WindowHints.h"

#include <QGuiApplication>
#include <QRegion>
#include <QWindow>
#include <QtMath>

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/shape.h>

#include <algorithm>
#include <vector>

namespace kelvane {

namespace {

Display* x11Display()
{
    auto* x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 ? x11->display() : nullptr;
}

// A region of the window in device pixels.
std::vector<QRect> devicePixels(QWindow* window, const QRegion& region)
{
    std::vector<QRect> rectangles;
    const qreal scale = window->devicePixelRatio();
    for (const QRect& rect : region)
        rectangles.emplace_back(QPoint(qFloor(rect.left() * scale), qFloor(rect.top() * scale)),
                                QPoint(qCeil((rect.right() + 1) * scale) - 1, qCeil((rect.bottom() + 1) * scale) - 1));
    return rectangles;
}

constexpr const char* blurBehindRegion = "_KDE_NET_WM_BLUR_BEHIND_REGION";

} // namespace

void applyDesktopFurnitureHints(QWindow* window)
{
    Display* display = x11Display();
    if (!display)
        return;
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

bool insideWaylandSession()
{
    return qEnvironmentVariable("XDG_SESSION_TYPE") == QLatin1StringView("wayland") ||
           !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

bool desktopBlursBehindWindows()
{
    Display* display = x11Display();
    if (!display)
        return false;
    // KWin's blur announces itself by a property of that name on the root window while it runs.
    const Atom wanted = XInternAtom(display, blurBehindRegion, True);
    if (wanted == None)
        return false;
    int count = 0;
    Atom* properties = XListProperties(display, DefaultRootWindow(display), &count);
    const bool found = properties && std::find(properties, properties + count, wanted) != properties + count;
    if (properties)
        XFree(properties);
    return found;
}

void setBlurBehind(QWindow* window, const QRegion& region)
{
    Display* display = x11Display();
    if (!display)
        return;
    const auto id = static_cast<Window>(window->winId());
    const Atom property = XInternAtom(display, blurBehindRegion, False);
    if (region.isEmpty()) {
        XDeleteProperty(display, id, property);
    } else {
        // x, y, width, height of each rectangle; an empty list would blur the whole window.
        std::vector<long> values;
        for (const QRect& rect : devicePixels(window, region))
            values.insert(values.end(), {rect.x(), rect.y(), rect.width(), rect.height()});
        XChangeProperty(display, id, property, XA_CARDINAL, 32, PropModeReplace,
                        reinterpret_cast<unsigned char*>(values.data()), int(values.size()));
    }
    XFlush(display);
}

bool setInputShape(QWindow* window, const QRegion& region)
{
    Display* display = x11Display();
    if (!display)
        return false;
    int event = 0, error = 0;
    if (!XShapeQueryExtension(display, &event, &error))
        return false;
    std::vector<XRectangle> rectangles;
    for (const QRect& pixels : devicePixels(window, region))
        rectangles.push_back({short(pixels.x()), short(pixels.y()), ushort(pixels.width()), ushort(pixels.height())});
    XShapeCombineRectangles(display, static_cast<Window>(window->winId()), ShapeInput, 0, 0, rectangles.data(),
                            int(rectangles.size()), ShapeSet, Unsorted);
    XFlush(display);
    return true;
}

} // namespace kelvane
