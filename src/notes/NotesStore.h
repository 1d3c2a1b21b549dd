#pragma once

#include "core/Clock.h"

#include <QString>

#include <functional>
#include <optional>
#include <vector>

namespace kelvane {

struct Note {
    qint64 id = 0;
    // Empty: the title is the first line of the body.
    QString title;
    QString body;
    bool codeMode = false;
    // The code editor's language; empty: the widget's default.
    QString language;
    // Seconds since 2001-01-01.
    double created = 0;
    double modified = 0;
    bool pinned = false;
    qint64 position = 0;

    bool operator==(const Note&) const = default;
};

struct Todo {
    qint64 id = 0;
    QString text;
    bool done = false;
    // Seconds since 2001-01-01; absent while not done.
    std::optional<double> completed;
    qint64 position = 0;
    bool archived = false;

    bool operator==(const Todo&) const = default;
};

// The notes and to-dos, kept in one SQLite database (write-ahead log, each change its own
// committed transaction). It is used from one thread only: the one that opened it.
class NotesStore {
public:
    static constexpr int schemaVersion = 2;

    // `clock` dates what an upgrade has to fill in.
    explicit NotesStore(const Clock& clock);
    ~NotesStore();
    NotesStore(const NotesStore&) = delete;
    NotesStore& operator=(const NotesStore&) = delete;

    // Opens the database at `path`, bringing an older schema up to date. A file that is not a
    // database Kelvane can use is kept beside the new one as "<path>.broken" (or ".broken.2"...,
    // never over an earlier one) with one line. An error only when no database could be made.
    std::optional<QString> open(const QString& path);
    bool isOpen() const;
    QString path() const { return m_path; }

    struct Contents {
        std::vector<Note> notes;
        // Those not archived.
        std::vector<Todo> todos;
        qint64 nextNoteId = 1;
        qint64 nextTodoId = 1;
        bool seeded = false;
    };
    std::optional<QString> load(Contents& contents);

    // Each is one transaction; the answer is the error, if the change did not reach the disk.
    std::optional<QString> putNote(const Note& note);
    std::optional<QString> removeNote(qint64 id);
    std::optional<QString> putTodo(const Todo& todo);
    std::optional<QString> removeTodo(qint64 id);
    // Rewrites the positions of these rows, in one transaction.
    std::optional<QString> putNotePositions(const std::vector<std::pair<qint64, qint64>>& positions);
    std::optional<QString> putTodoPositions(const std::vector<std::pair<qint64, qint64>>& positions);
    std::optional<QString> markSeeded();
    // Several changes as one transaction: all of them or none.
    std::optional<QString> transaction(const std::function<std::optional<QString>()>& changes);

    // Rows as they are on disk, for `kelvanectl` and the tests: archived to-dos included.
    std::optional<QString> allTodos(std::vector<Todo>& todos);

private:
    std::optional<QString> migrate();
    std::optional<QString> exec(const QString& statement);
    void close();

    const Clock& m_clock;
    QString m_connection;
    QString m_path;
    int m_depth = 0;
};

} // namespace kelvane
