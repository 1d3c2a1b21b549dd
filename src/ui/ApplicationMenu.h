#pragma once

#include <QList>
#include <QObject>
#include <QString>

#include <functional>

class QKeyEvent;

namespace kelvane {

// The application menu. It is never drawn (the agent has no menu bar); its key equivalents, with
// Ctrl standing for the Command key, work in every window of the agent: the settings, quit and
// close commands, and the standard editing commands in whichever text field has the focus.
class ApplicationMenu : public QObject {
    Q_OBJECT
public:
    enum class Action { showSettings, quit, closeWindow, undo, redo, cut, copy, paste, selectAll };
    struct Item {
        QString title;
        // A lower-case letter or punctuation for Ctrl+key; an upper-case letter for Ctrl+Shift+key.
        QString keyEquivalent;
        Action action;
    };
    // Separators are empty titles.
    static const QString title;
    static QList<Item> items();

    // `application` handles the commands that are the application's own (settings, quit).
    explicit ApplicationMenu(std::function<void(Action)> application, QObject* parent = nullptr);
    ~ApplicationMenu() override;

    // Runs the item with this key equivalent; false when there is none or nothing could take it.
    bool perform(const QKeyEvent& event);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    std::function<void(Action)> m_application;
};

} // namespace kelvane
