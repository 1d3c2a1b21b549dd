#pragma once

class QRegion;
class QWindow;

namespace kelvane {

// Tells the X11 window manager that a window is part of the desktop's furniture: on every
// workspace, and in neither the task bar nor the pager. Does nothing on other platforms.
// Must be called before the window is first shown.
void applyDesktopFurnitureHints(QWindow* window);

// Whether this X11 client runs inside a Wayland session (through XWayland). There the compositor
// places and stacks ordinary X11 windows its own way: a window that must stand at a given place
// above the others goes around the window manager.
bool insideWaylandSession();

// Sets the part of the window that takes the pointer (the X11 input shape), apart from the part
// that is drawn, so that a drawn shape with soft edges can take the pointer on its outline alone.
// Returns false where there is no X11 shape extension, and does nothing then.
bool setInputShape(QWindow* window, const QRegion& region);

// Whether the desktop blurs what lies behind a window that asks for it (KDE's blur-behind on X11).
bool desktopBlursBehindWindows();

// Asks the desktop to blur what lies behind `region` of the window; an empty region asks no more.
void setBlurBehind(QWindow* window, const QRegion& region);

} // namespace kelvane
