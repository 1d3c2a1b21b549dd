#pragma once

#include "NotesStore.h"

#include "core/Scheduler.h"
#include "settings/SettingsStore.h"

#include <QAbstractListModel>
#include <QJsonArray>
#include <QJsonObject>
#include <QThread>

#include <functional>
#include <memory>
#include <optional>
#include <set>

namespace kelvane {

class NotesManager;

// The notes as the widgets list them: pinned ones first, then newest first.
class NoteListModel : public QAbstractListModel {
    Q_OBJECT
public:
    enum Role { IdRole = Qt::UserRole + 1, TitleRole, BodyRole, CodeModeRole, LanguageRole, PinnedRole, ModifiedRole };
    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

private:
    friend class NotesManager;
    explicit NoteListModel(const Clock& clock);
    const Clock& m_clock;
    std::vector<Note> m_notes;
};

// The to-dos in their order, done ones included (a widget may hide them).
class TodoListModel : public QAbstractListModel {
    Q_OBJECT
public:
    enum Role { IdRole = Qt::UserRole + 1, TextRole, DoneRole };
    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

private:
    friend class NotesManager;
    using QAbstractListModel::QAbstractListModel;
    std::vector<Todo> m_todos;
};

// The notes and to-dos of every widget, window and command. What they show changes at once; the
// store follows on a thread of its own, so that no save ever holds up the main thread. Typing is
// saved shortly after the last key; everything else as it happens.
class NotesManager : public QObject {
    Q_OBJECT
    Q_PROPERTY(NoteListModel* notes READ notes CONSTANT)
    Q_PROPERTY(TodoListModel* todos READ todos CONSTANT)
    Q_PROPERTY(int todoCount READ todoCount NOTIFY todosChanged)
    Q_PROPERTY(int openTodoCount READ openTodoCount NOTIFY todosChanged)
    Q_PROPERTY(QStringList languages READ languages CONSTANT)
public:
    struct Dependencies {
        Scheduler& scheduler;
        SettingsStore& settings;
        // The database file; its folder is made when missing.
        QString path;
        // The code editor's languages, for the note's language choice.
        QStringList languages = {};
    };
    // How long after the last key a note is saved.
    static constexpr std::chrono::milliseconds typingSaveDelay{400};
    // Answers a change once it is on the disk (or could not be): the error, if any.
    using Done = std::function<void(const std::optional<QString>& error)>;

    explicit NotesManager(const Dependencies& dependencies, QObject* parent = nullptr);
    ~NotesManager() override;

    // Opens and reads the store; the error, if it could not (the notes then live in memory).
    std::optional<QString> openError() const { return m_openError; }

    // Once per launch: a first run finds the welcome note; notes left empty go, and done to-dos
    // older than the widget's setting go to the archive.
    std::optional<QString> seedAndPruneDefaultNotes();
    // Writes what is pending and waits for the store.
    std::optional<QString> save();

    NoteListModel* notes() { return &m_notes; }
    TodoListModel* todos() { return &m_todos; }
    int todoCount() const { return int(m_todos.m_todos.size()); }
    int openTodoCount() const;
    QStringList languages() const { return m_languages; }
    const Note* note(qint64 id) const;
    // The numbers the next note and to-do will have.
    qint64 nextNoteId() const { return m_nextNoteId; }
    qint64 nextTodoId() const { return m_nextTodoId; }
    const Todo* todo(qint64 id) const;

    Q_INVOKABLE qint64 addNote(const QString& body = {}) { return addNote(body, Done()); }
    qint64 addNote(const QString& body, Done done);
    Q_INVOKABLE qint64 addCodeNote();
    Q_INVOKABLE void setNoteBody(qint64 id, const QString& body);
    Q_INVOKABLE void setNoteCodeMode(qint64 id, bool codeMode);
    Q_INVOKABLE void setNoteLanguage(qint64 id, const QString& language);
    Q_INVOKABLE void setNotePinned(qint64 id, bool pinned);
    Q_INVOKABLE bool removeNote(qint64 id) { return removeNote(id, Done()); }
    bool removeNote(qint64 id, Done done);
    Q_INVOKABLE QVariantMap noteData(qint64 id) const;
    Q_INVOKABLE qint64 noteIdAt(int row) const;
    Q_INVOKABLE QString titleOf(const QString& body) const;
    // The language a note's code is highlighted in: its own, else the widget's default.
    Q_INVOKABLE QString languageOf(qint64 id) const;

    Q_INVOKABLE qint64 addTodo(const QString& text) { return addTodo(text, Done()); }
    qint64 addTodo(const QString& text, Done done);
    Q_INVOKABLE bool setTodoDone(qint64 id, bool done) { return setTodoDone(id, done, Done()); }
    bool setTodoDone(qint64 id, bool done, Done answer);
    Q_INVOKABLE void setTodoText(qint64 id, const QString& text);
    Q_INVOKABLE void moveTodo(int from, int to);
    Q_INVOKABLE bool removeTodo(qint64 id) { return removeTodo(id, Done()); }
    bool removeTodo(qint64 id, Done done);

    QJsonArray notesJson() const;
    QJsonObject noteJson(const Note& note) const;
    QJsonArray todosJson() const;

Q_SIGNALS:
    void todosChanged();
    void noteRemoved(qint64 id);

private:
    class Worker;
    double now() const;
    int noteRow(qint64 id) const;
    int todoRow(qint64 id) const;
    // Writes through the store's thread; `done` hears back on this thread.
    void write(std::function<std::optional<QString>(NotesStore&)> change, Done done = {});
    void writeNote(const Note& note, Done done = {});
    void writeTodo(const Todo& todo, Done done = {});
    void flushTyping();
    void noteChanged(int row, const QList<int>& roles);
    void placeNote(int row);

    Dependencies m_deps;
    std::unique_ptr<Worker> m_worker;
    NoteListModel m_notes;
    TodoListModel m_todos;
    QStringList m_languages;
    qint64 m_nextNoteId = 1;
    qint64 m_nextTodoId = 1;
    bool m_seeded = false;
    std::optional<QString> m_openError;
    std::set<qint64> m_typing;
    ScheduledTask m_typingSave;
};

} // namespace kelvane
