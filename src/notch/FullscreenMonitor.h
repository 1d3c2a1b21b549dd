#pragma once

#include "settings/SettingsTypes.h"

#include <QObject>
#include <QRectF>

#include <optional>
#include <vector>

namespace kelvane {

// One top-level window as the window manager describes it.
struct StackedWindow {
    // Desktop coordinates, in points.
    QRectF frame;
    bool fullScreen = false;
    // Minimised, unmapped, or not something the user looks at (docks, the desktop, notifications,
    // the notches themselves).
    bool ignored = false;

    friend bool operator==(const StackedWindow&, const StackedWindow&) = default;
};

// The windows, topmost first, when the window manager gives their stacking order; otherwise only
// the active window is known.
struct WindowStack {
    std::vector<StackedWindow> windows;
    bool ordered = true;
    std::optional<StackedWindow> active;

    friend bool operator==(const WindowStack&, const WindowStack&) = default;
};

// Whether a full-screen window is what the screen shows: the topmost window the user looks at that
// covers the screen's centre is in full screen. Without a stacking order, the active window decides.
bool isCoveredByFullScreen(const QRectF& screenFrame, const WindowStack& stack);

// Whether a notch shows over a full-screen window on its screen. On Linux no screen reports a
// camera housing; the notebook's own panel (where the camera sits) counts as the notched screen.
bool notchShowsOverFullScreen(FullscreenOption option, bool builtInPanel);

// A notebook's own panel, by its output's name: eDP, LVDS or DSI.
bool isBuiltInPanel(const QString& outputName);

// The window manager's windows, followed as they change, never by polling.
class WindowStackSource : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    virtual void start() = 0;

Q_SIGNALS:
    void stackChanged(const kelvane::WindowStack& stack);
    void unavailable(const QString& reason);
};

// Which screens show a full-screen window now. Main thread only.
class FullscreenMonitor : public QObject {
    Q_OBJECT
public:
    explicit FullscreenMonitor(WindowStackSource& source, QObject* parent = nullptr);

    bool isFullScreen(const QRectF& screenFrame) const { return isCoveredByFullScreen(screenFrame, m_stack); }

Q_SIGNALS:
    // The stack changed; each screen's answer may have changed.
    void changed();

private:
    WindowStack m_stack;
};

} // namespace kelvane
