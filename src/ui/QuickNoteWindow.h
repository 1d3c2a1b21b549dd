#pragma once

#include "notch/ExpandedNoteManager.h"

#include <QObject>
#include <QPointer>
#include <QVariantMap>

class QQmlEngine;
class QQuickWindow;

namespace kelvane {

// A detached note as a Qt Quick window (NoteWindow.qml).
class QuickNoteWindow final : public QObject, public NoteWindow {
    Q_OBJECT
public:
    QuickNoteWindow(QQmlEngine& engine, const QVariantMap& properties, qint64 noteId, std::function<void()> closed);
    ~QuickNoteWindow() override;

    qint64 noteId() const override { return m_noteId; }
    void raise() override;
    // The window's own report that the user closed it.
    Q_INVOKABLE void windowClosed();

private:
    qint64 m_noteId;
    std::function<void()> m_closed;
    QPointer<QQuickWindow> m_window;
};

class QuickNoteWindowFactory final : public NoteWindowFactory {
public:
    explicit QuickNoteWindowFactory(QQmlEngine& engine)
        : m_engine(engine)
    {
    }
    // The notes and their widget settings the windows show ("notes", "settings").
    void setServices(QVariantMap services) { m_services = std::move(services); }
    std::unique_ptr<NoteWindow> createNoteWindow(qint64 noteId, bool isCodeMode, const QRectF& notch,
                                                 const QRectF& screen, std::function<void()> closed) override;

private:
    QQmlEngine& m_engine;
    QVariantMap m_services;
};

} // namespace kelvane
