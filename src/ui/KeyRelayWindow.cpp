#include "KeyRelayWindow.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QQuickWindow>

namespace kelvane {

namespace {
constexpr QSize relaySize{380, 40};
constexpr int gapBelowNotch = 10;
} // namespace

KeyRelayWindow::KeyRelayWindow(QQuickWindow* notch)
    : m_notch(notch)
{
    // A dialog: compositors that tile windows float it, at the size it asks for.
    setFlags(Qt::Dialog);
    setTitle(QStringLiteral("Typing in the notch — Kelvane"));
    resize(relaySize);
    setMinimumSize(relaySize);
    setMaximumSize(relaySize);
}

void KeyRelayWindow::showBelow(QPoint notchBottom)
{
    m_hadKeyboard = false;
    setScreen(m_notch->screen());
    setPosition(notchBottom.x() - relaySize.width() / 2, notchBottom.y() + gapBelowNotch);
    show();
    raise();
    requestActivate();
}

bool KeyRelayWindow::event(QEvent* event)
{
    switch (event->type()) {
    case QEvent::KeyPress:
        QCoreApplication::sendEvent(m_notch, event);
        // The field has its own use for Escape first (a rename is cancelled); then typing ends.
        if (static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape)
            Q_EMIT dismissed();
        return true;
    case QEvent::KeyRelease:
        QCoreApplication::sendEvent(m_notch, event);
        return true;
    case QEvent::FocusIn:
        m_hadKeyboard = true;
        break;
    case QEvent::FocusOut:
        // Only once it had the keyboard: the window may be shown before the compositor gives it.
        if (m_hadKeyboard && isVisible())
            Q_EMIT dismissed();
        break;
    case QEvent::Close:
        Q_EMIT dismissed();
        break;
    default:
        break;
    }
    return QRasterWindow::event(event);
}

void KeyRelayWindow::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QRect area(QPoint(), size());
    painter.fillRect(area, QColor(0x1c, 0x1c, 0x1e));
    QFont font = painter.font();
    font.setPixelSize(13);
    painter.setFont(font);
    const QRect text = area.adjusted(44, 0, -14, 0);
    painter.setPen(QColor(0x0a, 0x84, 0xff));
    painter.drawText(QRect(12, 0, 24, area.height()), Qt::AlignCenter, QStringLiteral("⌨"));
    painter.setPen(Qt::white);
    painter.drawText(text, Qt::AlignVCenter | Qt::AlignLeft, QStringLiteral("Your keys go to the notch"));
    painter.setPen(QColor(0x8e, 0x8e, 0x93));
    painter.drawText(text, Qt::AlignVCenter | Qt::AlignRight, QStringLiteral("Esc when done"));
}

} // namespace kelvane
