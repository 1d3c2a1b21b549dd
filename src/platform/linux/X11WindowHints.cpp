#include "X11WindowHints.h"

#include <QGuiApplication>
#include <QRegion>
#include <QWindow>
#include <QtMath>

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/shape.h>

#include <vector>

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

bool setInputShape(QWindow* window, const QRegion& region)
{
    auto* x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
    if (!x11 || !x11->display())
        return false;
    Display* display = x11->display();
    int event = 0, error = 0;
    if (!XShapeQueryExtension(display, &event, &error))
        return false;
    std::vector<XRectangle> rectangles;
    const qreal scale = window->devicePixelRatio();
    for (const QRect& rect : region) {
        const QRect pixels(QPoint(qFloor(rect.left() * scale), qFloor(rect.top() * scale)),
                           QPoint(qCeil((rect.right() + 1) * scale) - 1, qCeil((rect.bottom() + 1) * scale) - 1));
        rectangles.push_back({short(pixels.x()), short(pixels.y()), ushort(pixels.width()), ushort(pixels.height())});
    }
    XShapeCombineRectangles(display, static_cast<Window>(window->winId()), ShapeInput, 0, 0, rectangles.data(),
                            int(rectangles.size()), ShapeSet, Unsorted);
    XFlush(display);
    return true;
}

} // namespace kelvane
