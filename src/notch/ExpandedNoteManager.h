#pragma once

#include <QObject>
#include <QRectF>
#include <QUuid>

#include <functional>
#include <memory>

namespace kelvane {

// A note in a window of its own: a normal, resizable window that grows out of a notch.
class NoteWindow {
public:
    virtual ~NoteWindow() = default;
    virtual qint64 noteId() const = 0;
    // Brings it forward and gives it the keyboard.
    virtual void raise() = 0;
};

class NoteWindowFactory {
public:
    virtual ~NoteWindowFactory() = default;
    // `notch`: where the window grows from, on `screen` (desktop coordinates, y down).
    // `closed` runs once the user has closed it.
    virtual std::unique_ptr<NoteWindow> createNoteWindow(qint64 noteId, bool isCodeMode, const QRectF& notch,
                                                         const QRectF& screen, std::function<void()> closed) = 0;
};

// Which note, if any, is out of the panel in its own window. The panel shows that note as away;
// closing the window puts it back.
class ExpandedNoteManager : public QObject {
    Q_OBJECT
    Q_PROPERTY(qint64 openNoteId READ openNoteId NOTIFY openNoteIdChanged)
public:
    using QObject::QObject;
    // Bound by the window manager, which knows the notches and makes the window.
    std::function<void(qint64 noteId, const QUuid& displayKitId, bool isCodeMode)> openWindow;

    qint64 openNoteId() const { return m_openNoteId; }
    Q_INVOKABLE void open(qint64 noteId, const QString& displayKitId, bool isCodeMode);
    // Closes the window, if any; the note goes back to the panel.
    Q_INVOKABLE void close();
    // The window manager's report of what is open: 0 when nothing is.
    void setOpenNoteId(qint64 noteId);
    // Set by the window manager: closes what it opened.
    std::function<void()> closeWindow;

Q_SIGNALS:
    void openNoteIdChanged();

private:
    qint64 m_openNoteId = 0;
};

} // namespace kelvane
