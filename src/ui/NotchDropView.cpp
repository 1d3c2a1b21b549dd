#include "NotchDropView.h"

#include "platform/linux/MimePasteboard.h"

#include <QDropEvent>
#include <QMimeData>

namespace kelvane {

NotchDropView::NotchDropView(QQuickItem* parent)
    : QQuickItem(parent)
{
    setFlag(ItemAcceptsDrops, true);
}

void NotchDropView::setDropZone(DropZone* zone)
{
    if (m_dropZone == zone)
        return;
    m_dropZone = zone;
    Q_EMIT dropZoneChanged();
}

QRectF NotchDropView::rectOnDesktop() const
{
    return QRectF(mapToGlobal(QPointF(0, 0)), size());
}

namespace {
// The formats a drop is read by, copied as the drag comes in.
std::unique_ptr<QMimeData> snapshot(const QMimeData& data)
{
    auto copy = std::make_unique<QMimeData>();
    for (const QString& format : data.formats()) {
        if (format.startsWith(QLatin1StringView("text/")))
            copy->setData(format, data.data(format));
        // Only marked: asked for, a direct-save source writes its file, which it may do only once
        // it knows where.
        else if (format == QLatin1StringView("XdndDirectSave0"))
            copy->setData(format, QByteArrayLiteral("promised"));
    }
    if (data.hasImage())
        copy->setImageData(data.imageData());
    return copy;
}
} // namespace

void NotchDropView::dragEnterEvent(QDragEnterEvent* event)
{
    m_snapshot = snapshot(*event->mimeData());
    const MimePasteboard pasteboard([this] { return m_snapshot.get(); });
    if (!m_dropZone || !m_dropZone->viewEntered(rectOnDesktop(), pasteboard)) {
        event->ignore();
        return;
    }
    event->setDropAction(Qt::CopyAction);
    event->accept();
}

void NotchDropView::dragMoveEvent(QDragMoveEvent* event)
{
    if (!m_dropZone)
        return event->ignore();
    m_dropZone->viewUpdated(rectOnDesktop(), event->position());
    event->setDropAction(Qt::CopyAction);
    event->accept();
}

void NotchDropView::dragLeaveEvent(QDragLeaveEvent*)
{
    if (m_dropZone)
        m_dropZone->viewExited(rectOnDesktop());
}

void NotchDropView::dropEvent(QDropEvent* event)
{
    // Read from what the drag offered on its way in: asked again now, some sources (Qt's among
    // them) no longer answer and the notch would wait for the clipboard's time-out.
    const MimePasteboard pasteboard([this, event] { return m_snapshot ? m_snapshot.get() : event->mimeData(); },
                                    [event] { return event->mimeData(); });
    const bool accepted = m_dropZone && m_dropZone->viewPerformed(pasteboard);
    m_snapshot.reset();
    if (!accepted)
        return event->ignore();
    event->setDropAction(Qt::CopyAction);
    event->accept();
}

} // namespace kelvane
