#include "QuickNotchWindow.h"

#include "KeyRelayWindow.h"
#include "NotchShape.h"

#include "notch/KelvaneState.h"
#include "notch/NotchController.h"
#include "notch/NotchGeometry.h"
#include "notch/NotchGestures.h"
#include "notch/NotchViewModel.h"
#include "notch/WindowsManager.h"

#include "core/Log.h"
#include "platform/linux/X11WindowHints.h"

#include <QGuiApplication>
#include <QNativeGestureEvent>
#include <QPainterPath>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQuickItem>
#include <QRegion>
#include <QScreen>
#include <QtMath>

#include <QResizeEvent>

namespace kelvane {

namespace {
// A view whose content may keep the size of the notch's whole room while the window is smaller.
class RoomView final : public QQuickView {
public:
    RoomView(QQmlEngine* engine, bool keepsContentSize)
        : QQuickView(engine, nullptr)
        , m_keepsContentSize(keepsContentSize)
    {
    }

protected:
    void resizeEvent(QResizeEvent* event) override
    {
        if (m_keepsContentSize)
            QQuickWindow::resizeEvent(event);
        else
            QQuickView::resizeEvent(event);
    }

private:
    bool m_keepsContentSize;
};

constexpr int shrinkDelayMs = 250;
} // namespace

QuickNotchWindow::QuickNotchWindow(const NotchWindowSetup& setup, QQmlEngine& engine, const QVariantMap& services,
                                   std::unique_ptr<DropZone> dropZone)
    : m_dropZone(std::move(dropZone))
    , m_view(std::make_unique<RoomView>(&engine, insideWaylandSession()))
    , m_screenFrame(setup.screen.frame)
    , m_room(setup.frame.toAlignedRect())
    , m_bypassesManagement(insideWaylandSession())
    , m_cutToDrawing(m_bypassesManagement)
    , m_viewModel(setup.viewModel)
    , m_gestures(setup.gestures)
{
    if (auto* screen = qobject_cast<QScreen*>(setup.screen.handle))
        m_view->setScreen(screen);
    m_view->setTitle(QStringLiteral("Kelvane Notch"));
    Qt::WindowFlags flags = Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::NoDropShadowWindowHint;
    // A Wayland compositor places and stacks the windows it manages itself, whatever they ask.
    if (m_bypassesManagement)
        flags |= Qt::X11BypassWindowManagerHint;
    m_view->setFlags(flags);
    QSurfaceFormat format = m_view->format();
    format.setAlphaBufferSize(8);
    m_view->setFormat(format);
    m_view->setColor(Qt::transparent);
    m_view->setResizeMode(QQuickView::SizeRootObjectToView);
    m_view->setGeometry(m_room);
    m_shrink.setSingleShot(true);
    m_shrink.setInterval(shrinkDelayMs);
    connect(&m_shrink, &QTimer::timeout, this, &QuickNotchWindow::placeWindow);
    // Until the views have drawn, the window takes no clicks anywhere but on the notch's place.
    setInputRegion(0, 0, 1, 1);

    QVariantMap properties = services;
    properties.insert({
        {QStringLiteral("kelvane"), QVariant::fromValue(static_cast<QObject*>(setup.kelvane))},
        {QStringLiteral("viewModel"), QVariant::fromValue(static_cast<QObject*>(setup.viewModel))},
        {QStringLiteral("controller"), QVariant::fromValue(static_cast<QObject*>(setup.controller))},
        {QStringLiteral("gestures"), QVariant::fromValue(static_cast<QObject*>(setup.gestures))},
        {QStringLiteral("windowsManager"), QVariant::fromValue(static_cast<QObject*>(setup.windowsManager))},
        {QStringLiteral("notchWindow"), QVariant::fromValue(static_cast<QObject*>(this))},
        {QStringLiteral("displayKitId"), setup.displayKitId.toString(QUuid::WithoutBraces)},
    });
    if (m_dropZone)
        properties.insert(QStringLiteral("dropZone"), QVariant::fromValue(static_cast<QObject*>(m_dropZone.get())));
    m_view->setInitialProperties(properties);
    m_view->setSource(QUrl(QStringLiteral("qrc:/kelvane/ui/NotchView.qml")));
    if (m_view->status() == QQuickView::Error) {
        for (const QQmlError& error : m_view->errors())
            logLine(u"NotchWindow", error.toString());
    }
    placeWindow();

    connect(m_view.get(), &QQuickWindow::activeFocusItemChanged, this, [this] {
        followTextFocus();
        followTyping();
    });
    connect(m_view.get(), &QWindow::activeChanged, this, &QuickNotchWindow::followTyping);
    // The panel stays built when it closes, with its field's focus: typing ends with it.
    if (setup.kelvane)
        connect(setup.kelvane, &KelvaneState::modeChanged, this, [this, state = setup.kelvane] {
            if (state->mode() == KelvaneState::Mode::closed)
                endKeyRelay();
        });
    connect(m_view.get(), &QWindow::activeChanged, this, [this] {
        const bool active = m_view->isActive();
        if (m_wasActive && !active && m_resignKey)
            m_resignKey();
        m_wasActive = active;
    });
    connect(setup.viewModel, &NotchViewModel::sizesChanged, this, &QuickNotchWindow::followWindowSize);
    m_view->installEventFilter(this);
}

void QuickNotchWindow::followTyping()
{
    // Typing in the panel (a text field has the keyboard) may keep it open.
    if (!m_gestures || !m_view)
        return;
    const bool hasKeyboard = m_view->isActive() || (m_keyRelay && m_keyRelay->isVisible());
    m_gestures->setEditingText(hasKeyboard && isEditingText());
}

void QuickNotchWindow::followTextFocus()
{
    // Also called while the view goes, as its focus goes with it.
    if (!m_view || takesKeyboard())
        return;
    const bool relaying = m_keyRelay && m_keyRelay->isVisible();
    if (!isEditingText()) {
        if (relaying)
            m_keyRelay->hide();
        return;
    }
    // Only for a field the user just clicked (or opened with a click), not one that took the focus
    // as the panel was built; once relaying, the keys follow the focus from field to field.
    if (relaying || !m_lastPress.isValid() || m_lastPress.elapsed() > relayAfterPressMs)
        return;
    if (!m_keyRelay) {
        m_keyRelay = std::make_unique<KeyRelayWindow>(m_view.get());
        connect(m_keyRelay.get(), &KeyRelayWindow::dismissed, this, &QuickNotchWindow::endKeyRelay);
        connect(m_keyRelay.get(), &QWindow::visibleChanged, this, &QuickNotchWindow::followTyping);
    }
    const QRect drawn = m_drawnBounds.isEmpty() ? QRect(QPoint(), m_room.size()) : m_drawnBounds;
    m_keyRelay->showBelow(QPoint(m_room.left() + drawn.center().x(), m_room.top() + drawn.bottom()));
}

void QuickNotchWindow::endKeyRelay()
{
    if (!m_keyRelay)
        return;
    m_keyRelay->hide();
    // The field gives its focus back, so that a click on it later asks for the keyboard again.
    if (QQuickItem* field = m_view->activeFocusItem(); field && isEditingText())
        field->setFocus(false);
}

bool QuickNotchWindow::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonDblClick)
        m_lastPress.start();
    // A touchpad's own swipe, where the X server reports it (XInput 2.4): the fingers moving down
    // swipe down, as scrolling that pulls the content down does.
    if (event->type() == QEvent::NativeGesture && m_gestures) {
        const auto* gesture = static_cast<QNativeGestureEvent*>(event);
        if (gesture->gestureType() == Qt::SwipeNativeGesture) {
            m_gestures->scrolled(-gesture->delta().x(), -gesture->delta().y());
            return true;
        }
    }
    return QObject::eventFilter(watched, event);
}

QuickNotchWindow::~QuickNotchWindow()
{
    m_resignKey = nullptr;
    m_gestures = nullptr;
    m_keyRelay.reset();
    m_view.reset();
}

void QuickNotchWindow::followWindowSize()
{
    const QRectF content = NotchGeometry::windowContentRect(m_screenFrame.size(), m_viewModel->windowSize());
    const QRect room = NotchGeometry::toDesktop(m_screenFrame, content).toAlignedRect();
    if (room == m_room)
        return;
    m_room = room;
    placeWindow();
}

void QuickNotchWindow::placeWindow()
{
    m_shrink.stop();
    if (!m_cutToDrawing) {
        if (m_view->geometry() != m_room)
            m_view->setGeometry(m_room);
        return;
    }
    const QRect inRoom = m_drawnBounds.intersected(QRect(QPoint(), m_room.size()));
    const QRect cut = inRoom.isEmpty() ? QRect(m_room.width() / 2, 0, 1, 1) : inRoom;
    m_cut = cut;
    if (QQuickItem* root = m_view->rootObject()) {
        root->setSize(m_room.size());
        root->setPosition(-cut.topLeft());
    }
    const QRect geometry = cut.translated(m_room.topLeft());
    if (m_view->geometry() != geometry)
        m_view->setGeometry(geometry);
    const QRegion drawn = m_drawn.translated(-cut.topLeft());
    if (m_view->mask() != drawn)
        m_view->setMask(drawn);
    kelvane::setInputShape(m_view.get(), m_input.translated(-cut.topLeft()));
}

void QuickNotchWindow::popupOpened()
{
    if (++m_popups == 1)
        Q_EMIT popupShownChanged();
}

void QuickNotchWindow::popupClosed()
{
    if (m_popups > 0 && --m_popups == 0)
        Q_EMIT popupShownChanged();
}

void QuickNotchWindow::setResignKeyHandler(std::function<void()> handler)
{
    m_resignKey = std::move(handler);
}

bool QuickNotchWindow::isEditingText() const
{
    const QQuickItem* item = m_view->activeFocusItem();
    return item && (item->inherits("QQuickTextInput") || item->inherits("QQuickTextEdit"));
}

void QuickNotchWindow::clearContent()
{
    m_view->setSource(QUrl());
}

void QuickNotchWindow::close() { m_view->close(); }

QRectF QuickNotchWindow::frame() const { return m_cutToDrawing ? QRectF(m_room) : QRectF(m_view->geometry()); }

void QuickNotchWindow::orderFront()
{
    if (!m_view->isVisible())
        applyDesktopFurnitureHints(m_view.get());
    m_view->show();
    // Off screen there is no stacking order to take part in.
    if (QGuiApplication::platformName() != QLatin1StringView("offscreen"))
        m_view->raise();
}

QString QuickNotchWindow::topBarText() const
{
    const QQuickItem* root = m_view->rootObject();
    const auto* text = root ? root->findChild<QQuickItem*>(QStringLiteral("topBarText")) : nullptr;
    // Only what can be seen: the item and its parents visible, none of them transparent.
    for (const QQuickItem* item = text; item; item = item->parentItem())
        if (!item->isVisible() || item->opacity() <= 0 || item->width() <= 0)
            return {};
    return text ? text->property("text").toString() : QString();
}

QJsonObject QuickNotchWindow::dropState() const
{
    return m_dropZone ? m_dropZone->stateJson() : QJsonObject();
}

void QuickNotchWindow::setInputRegion(double x, double y, double width, double height)
{
    // An empty mask would mean "the whole window": keep at least one point.
    const QRect rect = QRectF(x, y, std::max(width, 1.0), std::max(height, 1.0)).toAlignedRect();
    applyInput(QRegion(rect), QRegion(rect));
    applyBlurBehind({});
}

void QuickNotchWindow::setInputShape(double centreX, double bodyWidth, double bodyHeight)
{
    const QSizeF body(std::max(bodyWidth, 1.0), std::max(bodyHeight, 1.0));
    const double left = centreX - body.width() / 2 - NotchShape::shoulderRadiusFor(body);
    const QPainterPath outline = NotchShape::outline(body).translated(left, 0);
    const QRect bounds = outline.boundingRect().toAlignedRect();
    if (bounds.isEmpty())
        return setInputRegion(0, 0, 1, 1);
    // Drawn within the bounds, whose edges stay soft; the pointer is taken on the outline alone, so
    // that a click in a rounded corner's cut-out reaches the window beneath.
    const QRegion shape(outline.toFillPolygon().toPolygon(), Qt::WindingFill);
    // The glass's shadow falls beside and below the outline.
    const int margin = qCeil(m_glassMargin);
    applyInput(QRegion(bounds.adjusted(-margin, 0, margin, margin)), shape);
    applyBlurBehind(m_blurBehind ? shape : QRegion());
}

void QuickNotchWindow::setGlass(bool blurBehind, double shadowMargin)
{
    m_blurBehind = blurBehind;
    m_glassMargin = std::clamp(shadowMargin, 0.0, 64.0);
}

void QuickNotchWindow::applyBlurBehind(const QRegion& region)
{
    if (region == m_blurRegion)
        return;
    m_blurRegion = region;
    setBlurBehind(m_view.get(), region);
}

void QuickNotchWindow::applyInput(const QRegion& drawn, const QRegion& input)
{
    if (m_cutToDrawing) {
        if (drawn == m_drawn && input == m_input)
            return;
        m_drawn = drawn;
        m_input = input;
        m_drawnBounds = drawn.boundingRect();
        if (!m_cut.contains(m_drawnBounds) || m_cut == m_drawnBounds)
            placeWindow();
        else
            m_shrink.start(); // the window stays as it is a moment: the drawing is still moving
        return;
    }
    if (m_view->mask() != drawn)
        m_view->setMask(drawn);
    if (input != m_input) {
        m_input = input;
        // Without an input shape of its own the window takes the pointer wherever it is drawn.
        kelvane::setInputShape(m_view.get(), input);
    }
}

void QuickNotchWindow::makeKeyWindow()
{
    // Taken by the window itself, the focus would be taken back at once, and its loss would close
    // the panel as if the user had gone to another window.
    if (takesKeyboard())
        m_view->requestActivate();
}

} // namespace kelvane
