#include "X11PointerProbe.h"

#include <QCursor>
#include <QGuiApplication>

#include <X11/Xlib.h>

namespace kelvane {

QPointF X11PointerProbe::position() const { return QCursor::pos(); }

bool X11PointerProbe::leftButtonDown() const
{
    auto* x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
    if (!x11 || !x11->display())
        return QGuiApplication::mouseButtons().testFlag(Qt::LeftButton);
    Display* display = x11->display();
    Window root = 0, child = 0;
    int rootX = 0, rootY = 0, x = 0, y = 0;
    unsigned int mask = 0;
    XQueryPointer(display, DefaultRootWindow(display), &root, &child, &rootX, &rootY, &x, &y, &mask);
    return (mask & Button1Mask) != 0;
}

} // namespace kelvane
