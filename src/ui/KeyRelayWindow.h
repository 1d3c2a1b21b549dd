#pragma once

#include <QRasterWindow>

class QQuickWindow;

namespace kelvane {

// Where a compositor gives the keyboard only to the windows it manages (a Wayland session), a text
// field of the notch cannot have it. This small window, which the compositor manages, takes the
// keyboard in its place below the notch while a field has the focus, and passes every key on to the
// notch's window, which gives it to that field as if typed there: each field keeps its own keys
// (Enter, Escape, arrows, editing shortcuts), and the focus may move from field to field.
class KeyRelayWindow final : public QRasterWindow {
    Q_OBJECT
public:
    explicit KeyRelayWindow(QQuickWindow* notch);

    // Shown centred below `notchBottom` (a point on the desktop), where the desktop lets a window
    // place itself, and given the keyboard.
    void showBelow(QPoint notchBottom);

Q_SIGNALS:
    // The keyboard went elsewhere, or the window was closed.
    void dismissed();

protected:
    void paintEvent(QPaintEvent* event) override;
    bool event(QEvent* event) override;

private:
    QQuickWindow* m_notch;
    bool m_hadKeyboard = false;
};

} // namespace kelvane
