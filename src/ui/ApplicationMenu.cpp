#include "ApplicationMenu.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QWindow>

namespace kelvane {

const QString ApplicationMenu::title = QStringLiteral("MainMenu");

QList<ApplicationMenu::Item> ApplicationMenu::items()
{
    using A = Action;
    const auto item = [](const char* title, const char* key, Action action) {
        return Item{QString::fromUtf8(title), QString::fromUtf8(key), action};
    };
    return {
        item("Settings…", ",", A::showSettings),
        item("", "", A::showSettings),
        item("Quit Kelvane", "q", A::quit),
        item("", "", A::quit),
        item("Close Window", "w", A::closeWindow),
        item("Undo", "z", A::undo),
        item("Redo", "Z", A::redo),
        item("Cut", "x", A::cut),
        item("Copy", "c", A::copy),
        item("Paste", "v", A::paste),
        item("Select All", "a", A::selectAll),
    };
}

ApplicationMenu::ApplicationMenu(std::function<void(Action)> application, QObject* parent)
    : QObject(parent)
    , m_application(std::move(application))
{
    qApp->installEventFilter(this);
}

ApplicationMenu::~ApplicationMenu()
{
    if (qApp)
        qApp->removeEventFilter(this);
}

namespace {
QString keyEquivalent(const QKeyEvent& event)
{
    const auto modifiers = event.modifiers() & ~Qt::KeypadModifier;
    if (!(modifiers & Qt::ControlModifier) || (modifiers & (Qt::AltModifier | Qt::MetaModifier)))
        return {};
    const int key = event.key();
    if (key >= Qt::Key_A && key <= Qt::Key_Z) {
        const QChar letter(u'a' + (key - Qt::Key_A));
        return (modifiers & Qt::ShiftModifier) ? letter.toUpper() : letter;
    }
    if (key == Qt::Key_Comma && !(modifiers & Qt::ShiftModifier))
        return QStringLiteral(",");
    return {};
}

const char* editMethod(ApplicationMenu::Action action)
{
    using A = ApplicationMenu::Action;
    switch (action) {
    case A::undo:
        return "undo";
    case A::redo:
        return "redo";
    case A::cut:
        return "cut";
    case A::copy:
        return "copy";
    case A::paste:
        return "paste";
    case A::selectAll:
        return "selectAll";
    default:
        return nullptr;
    }
}
} // namespace

bool ApplicationMenu::perform(const QKeyEvent& event)
{
    const QString key = keyEquivalent(event);
    if (key.isEmpty())
        return false;
    for (const Item& item : items()) {
        if (item.keyEquivalent != key)
            continue;
        if (const char* method = editMethod(item.action)) {
            // The text field with the focus takes the command, as the first responder would.
            QObject* focus = QGuiApplication::focusObject();
            const int index = focus ? focus->metaObject()->indexOfMethod(QByteArray(method) + "()") : -1;
            if (index < 0)
                return false;
            return QMetaObject::invokeMethod(focus, method);
        }
        if (item.action == Action::closeWindow) {
            // Only a window with a frame can be closed; the notches cannot.
            QWindow* window = QGuiApplication::focusWindow();
            if (!window || (window->flags() & Qt::FramelessWindowHint))
                return false;
            window->close();
            return true;
        }
        if (m_application)
            m_application(item.action);
        return true;
    }
    return false;
}

bool ApplicationMenu::eventFilter(QObject* watched, QEvent* event)
{
    // Key events reach the window first and then its items: the window is where the menu looks.
    if (event->type() == QEvent::KeyPress && watched->isWindowType())
        return perform(*static_cast<QKeyEvent*>(event));
    return QObject::eventFilter(watched, event);
}

} // namespace kelvane
