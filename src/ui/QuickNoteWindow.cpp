#include "QuickNoteWindow.h"

#include "core/Log.h"

#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickWindow>

namespace kelvane {

QuickNoteWindow::QuickNoteWindow(QQmlEngine& engine, const QVariantMap& properties, qint64 noteId,
                                 std::function<void()> closed)
    : m_noteId(noteId)
    , m_closed(std::move(closed))
{
    QQmlComponent component(&engine, QUrl(QStringLiteral("qrc:/kelvane/ui/NoteWindow.qml")));
    QVariantMap initial = properties;
    initial.insert(QStringLiteral("controller"), QVariant::fromValue(static_cast<QObject*>(this)));
    m_window = qobject_cast<QQuickWindow*>(component.createWithInitialProperties(initial));
    if (!m_window) {
        for (const QQmlError& error : component.errors())
            logLine(u"Notes", error.toString());
        return;
    }
    QMetaObject::invokeMethod(m_window, "grow");
}

QuickNoteWindow::~QuickNoteWindow()
{
    // Closed by the program (another note took the window, or the end): no report back.
    m_closed = nullptr;
    delete m_window.data();
}

void QuickNoteWindow::raise()
{
    if (!m_window)
        return;
    m_window->show();
    m_window->raise();
    m_window->requestActivate();
}

void QuickNoteWindow::windowClosed()
{
    if (auto closed = std::exchange(m_closed, nullptr))
        closed();
}

std::unique_ptr<NoteWindow> QuickNoteWindowFactory::createNoteWindow(qint64 noteId, bool isCodeMode,
                                                                     const QRectF& notch, const QRectF& screen,
                                                                     std::function<void()> closed)
{
    QVariantMap properties = m_services;
    properties.insert({{QStringLiteral("noteId"), noteId},
                       {QStringLiteral("codeMode"), isCodeMode},
                       {QStringLiteral("notch"), notch},
                       {QStringLiteral("screenArea"), screen}});
    return std::make_unique<QuickNoteWindow>(m_engine, properties, noteId, std::move(closed));
}

} // namespace kelvane
