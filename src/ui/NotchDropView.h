#pragma once

#include "tray/DropZone.h"

#include <QPointer>
#include <QMimeData>
#include <QQuickItem>

#include <memory>

namespace kelvane {

// An invisible item laid over the notch that takes the desktop's drags and hands them to the
// notch's drop zone, with the dragged data read as a pasteboard.
class NotchDropView : public QQuickItem {
    Q_OBJECT
    Q_PROPERTY(kelvane::DropZone* dropZone READ dropZone WRITE setDropZone NOTIFY dropZoneChanged)
public:
    explicit NotchDropView(QQuickItem* parent = nullptr);

    DropZone* dropZone() const { return m_dropZone; }
    void setDropZone(DropZone* zone);

Q_SIGNALS:
    void dropZoneChanged();

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    QRectF rectOnDesktop() const;

    QPointer<DropZone> m_dropZone;
    std::unique_ptr<QMimeData> m_snapshot;
};

} // namespace kelvane
