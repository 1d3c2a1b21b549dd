#pragma once

class QWindow;

namespace kelvane {

// Tells the X11 window manager that a window is part of the desktop's furniture: on every
// workspace, and in neither the task bar nor the pager. Does nothing on other platforms.
// Must be called before the window is first shown.
void applyDesktopFurnitureHints(QWindow* window);

} // namespace kelvane
