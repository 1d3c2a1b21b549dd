#pragma once

#include "notch/NotchWindow.h"
#include "tray/DropZone.h"

#include <QElapsedTimer>
#include <QQuickView>
#include <QRegion>
#include <QTimer>

#include <functional>
#include <memory>

namespace kelvane {

class KeyRelayWindow;

// A notch window drawn with Qt Quick: frameless, above other windows, transparent, shadowless and
// kept out of the task bar. Outside the notch's current shape it lets the pointer through.
class QuickNotchWindow final : public QObject, public NotchWindow {
    Q_OBJECT
    Q_PROPERTY(bool popupShown READ popupShown NOTIFY popupShownChanged)
    // Whether the window can have the keyboard: not where it goes around the compositor's window
    // management (a Wayland session), as the compositor gives the keyboard only to windows it
    // manages and takes back at once what a window takes for itself.
    Q_PROPERTY(bool takesKeyboard READ takesKeyboard CONSTANT)
public:
    // Every notch window shares the one QML engine of the application. `services` are the
    // application's models that the views show (the live activities, the timers), by the name of
    // the view's property.
    // The window owns the notch's drop zone, when it is given one, and shows it as "dropZone".
    QuickNotchWindow(const NotchWindowSetup& setup, QQmlEngine& engine, const QVariantMap& services = {},
                     std::unique_ptr<DropZone> dropZone = nullptr);
    ~QuickNotchWindow() override;

    void setResignKeyHandler(std::function<void()> handler) override;
    bool isEditingText() const override;
    void clearContent() override;
    void close() override;
    // The notch's whole room on the desktop (the window may be cut to the part that is drawn).
    QRectF frame() const override;
    void orderFront() override;
    QString topBarText() const override;
    QJsonObject dropState() const override;

    QQuickView* view() const { return m_view.get(); }

    // The part of the window that takes the pointer, in window coordinates; the views keep it on
    // the notch's shape as it animates.
    Q_INVOKABLE void setInputRegion(double x, double y, double width, double height);
    // The same, as the notch's outline for a body of this size hanging from the top, centred on x.
    Q_INVOKABLE void setInputShape(double centreX, double bodyWidth, double bodyHeight);
    // The glass look: whether the desktop is asked to blur what lies behind the outline, and how far
    // beyond the outline the glass draws its shadow. Taken at the next shape.
    Q_INVOKABLE void setGlass(bool blurBehind, double shadowMargin);
    // Asks the window for keyboard focus (a text field of the panel was clicked), where it can
    // have it.
    Q_INVOKABLE void makeKeyWindow();
    bool takesKeyboard() const { return !m_bypassesManagement; }
    // A widget's pop-up (a list to choose from) opened or closed: while one is up, the notch holds
    // open as it does for its menu, and the whole window takes the pointer.
    Q_INVOKABLE void popupOpened();
    Q_INVOKABLE void popupClosed();
    bool popupShown() const { return m_popups > 0; }

Q_SIGNALS:
    void popupShownChanged();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void followWindowSize();
    void followTyping();
    // Where the window cannot have the keyboard, a text field given the focus by a click has its
    // keys passed on by a relay window that can.
    void followTextFocus();
    void endKeyRelay();
    // `drawn` clips what is shown; `input` is where the pointer is taken.
    void applyInput(const QRegion& drawn, const QRegion& input);
    void applyBlurBehind(const QRegion& region);
    // Where a compositor routes the pointer by the window's rectangle (XWayland), the window is cut
    // to what is drawn: it grows at once and shrinks once the drawing has stayed smaller a moment,
    // while the content keeps the size of the whole room.
    void placeWindow();

    // Before the view, so that it outlives the views that read it.
    std::unique_ptr<DropZone> m_dropZone;
    std::unique_ptr<QQuickView> m_view;
    std::function<void()> m_resignKey;
    QRectF m_screenFrame;
    QRect m_room;
    // Placed and stacked by itself, around the compositor's management.
    const bool m_bypassesManagement;
    const bool m_cutToDrawing;
    QRect m_drawnBounds; // in the room's coordinates
    QRect m_cut;         // the part of the room the window covers
    QRegion m_drawn;
    QTimer m_shrink;
    NotchViewModel* m_viewModel;
    NotchGestures* m_gestures;
    bool m_wasActive = false;
    QRegion m_input;
    QRegion m_blurRegion;
    bool m_blurBehind = false;
    double m_glassMargin = 0;
    int m_popups = 0;
    static constexpr int relayAfterPressMs = 2000;
    QElapsedTimer m_lastPress;
    std::unique_ptr<KeyRelayWindow> m_keyRelay;
};

} // namespace kelvane
