#pragma once

#include "ScreenProvider.h"

#include <QJsonObject>
#include <QRectF>
#include <QUuid>

#include <functional>
#include <memory>

namespace kelvane {

class KelvaneState;
class NotchViewModel;
class NotchController;
class NotchGestures;
class WindowsManager;

// One borderless, always-on-top, transparent notch window, as the window manager drives it.
class NotchWindow {
public:
    virtual ~NotchWindow() = default;
    // Called when the window loses keyboard focus; an empty handler stops observing.
    virtual void setResignKeyHandler(std::function<void()> handler) = 0;
    // True while a text field of the window is being edited.
    virtual bool isEditingText() const = 0;
    // Drops the views (before the objects they read are destroyed).
    virtual void clearContent() = 0;
    virtual void close() = 0;
    // Where the window is now, in desktop coordinates (y down).
    virtual QRectF frame() const = 0;
    // Shows the window in front, whether or not the application is active.
    virtual void orderFront() = 0;
    // The text the closed notch's top bar shows beside the camera now, as drawn; empty when it
    // shows none.
    virtual QString topBarText() const { return {}; }
    // What a drag over the notch is offered and over which target it is; empty without drops.
    virtual QJsonObject dropState() const { return {}; }
};

struct NotchWindowSetup {
    QUuid displayKitId;
    ScreenInfo screen;
    QSizeF rawNotchSize;
    // Desktop coordinates, y down.
    QRectF frame;
    KelvaneState* kelvane = nullptr;
    NotchViewModel* viewModel = nullptr;
    NotchController* controller = nullptr;
    NotchGestures* gestures = nullptr;
    WindowsManager* windowsManager = nullptr;
};

class NotchWindowFactory {
public:
    virtual ~NotchWindowFactory() = default;
    virtual std::unique_ptr<NotchWindow> createWindow(const NotchWindowSetup& setup) = 0;
};

} // namespace kelvane
