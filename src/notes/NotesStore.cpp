#include "NotesStore.h"

#include "core/Log.h"

#include <QFile>
#include <QFileInfo>
#include <QDir>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QUuid>
#include <QVariant>

namespace kelvane {

namespace {

// Each step brings the schema from its index to the next version, in one transaction.
const char* const migrations[] = {
    // 0 → 1: the first notes and to-dos.
    "CREATE TABLE notes(id INTEGER PRIMARY KEY AUTOINCREMENT, body TEXT NOT NULL DEFAULT '',"
    " created REAL NOT NULL DEFAULT 0, modified REAL NOT NULL DEFAULT 0);"
    "CREATE TABLE todos(id INTEGER PRIMARY KEY AUTOINCREMENT, text TEXT NOT NULL DEFAULT '',"
    " done INTEGER NOT NULL DEFAULT 0, position INTEGER NOT NULL DEFAULT 0);",
    // 1 → 2: titles, code notes, pins and order; completion dates and the archive; what the
    // store has done once. To-dos done before completion dates count from the upgrade, so none
    // is archived earlier than its owner could expect; a store that existed has been welcomed.
    "ALTER TABLE notes ADD COLUMN title TEXT;"
    "ALTER TABLE notes ADD COLUMN code_mode INTEGER NOT NULL DEFAULT 0;"
    "ALTER TABLE notes ADD COLUMN language TEXT NOT NULL DEFAULT '';"
    "ALTER TABLE notes ADD COLUMN pinned INTEGER NOT NULL DEFAULT 0;"
    "ALTER TABLE notes ADD COLUMN position INTEGER NOT NULL DEFAULT 0;"
    "UPDATE notes SET position = -id;"
    "ALTER TABLE todos ADD COLUMN completed REAL;"
    "ALTER TABLE todos ADD COLUMN archived INTEGER NOT NULL DEFAULT 0;"
    "UPDATE todos SET completed = :now WHERE done != 0;"
    "CREATE TABLE meta(key TEXT PRIMARY KEY, value TEXT);"
    "INSERT INTO meta(key, value) SELECT 'seeded', '1' WHERE EXISTS(SELECT 1 FROM notes)"
    " OR EXISTS(SELECT 1 FROM todos);",
};
static_assert(std::size(migrations) == NotesStore::schemaVersion);

QString errorText(const QSqlError& error)
{
    const QString text = error.text().trimmed();
    return text.isEmpty() ? QStringLiteral("unknown database error") : text;
}

// The first free name for a kept-aside copy: never over one kept before.
QString asideName(const QString& path)
{
    QString name = path + QStringLiteral(".broken");
    for (int n = 2; QFileInfo::exists(name); ++n)
        name = path + QStringLiteral(".broken.") + QString::number(n);
    return name;
}

} // namespace

NotesStore::NotesStore(const Clock& clock)
    : m_clock(clock)
    , m_connection(QStringLiteral("notes-") + QUuid::createUuid().toString(QUuid::WithoutBraces))
{
}

NotesStore::~NotesStore() { close(); }

void NotesStore::close()
{
    if (!QSqlDatabase::contains(m_connection))
        return;
    QSqlDatabase::database(m_connection, false).close();
    QSqlDatabase::removeDatabase(m_connection);
}

bool NotesStore::isOpen() const
{
    return QSqlDatabase::contains(m_connection) && QSqlDatabase::database(m_connection, false).isOpen();
}

std::optional<QString> NotesStore::exec(const QString& statement)
{
    QSqlQuery query(QSqlDatabase::database(m_connection, false));
    if (!query.exec(statement))
        return errorText(query.lastError());
    return std::nullopt;
}

std::optional<QString> NotesStore::open(const QString& path)
{
    close();
    m_path = path;
    QDir().mkpath(QFileInfo(path).absolutePath());
    const auto attempt = [this, &path]() -> std::optional<QString> {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_connection);
        db.setDatabaseName(path);
        if (!db.open())
            return errorText(db.lastError());
        // The whole file is read once, so that damage is found now and not halfway through a
        // change; a file that is no database fails on the first statement.
        QSqlQuery check(db);
        if (!check.exec(QStringLiteral("PRAGMA quick_check")) || !check.next())
            return errorText(check.lastError());
        if (const QString verdict = check.value(0).toString(); verdict != QLatin1StringView("ok"))
            return QStringLiteral("damaged (%1)").arg(verdict);
        check.finish();
        for (const char* pragma : {"PRAGMA journal_mode=WAL", "PRAGMA synchronous=FULL", "PRAGMA foreign_keys=ON"})
            if (auto error = exec(QLatin1StringView(pragma)))
                return error;
        return migrate();
    };
    const bool existed = QFileInfo::exists(path);
    auto error = attempt();
    if (!error)
        return std::nullopt;
    close();
    if (!existed)
        return error;
    // What could not be read is kept, with its log, and a new store takes its place.
    const QString aside = asideName(path);
    if (!QFile::rename(path, aside))
        return QStringLiteral("%1, and it could not be kept aside").arg(*error);
    for (const char* suffix : {"-wal", "-shm"})
        if (QFileInfo::exists(path + QLatin1StringView(suffix)))
            QFile::rename(path + QLatin1StringView(suffix), aside + QLatin1StringView(suffix));
    logLine(u"Notes", QStringLiteral("Could not open %1 (%2); kept it as %3 and started a new one.")
                          .arg(path, *error, aside));
    if (auto again = attempt()) {
        close();
        return again;
    }
    return std::nullopt;
}

std::optional<QString> NotesStore::migrate()
{
    QSqlDatabase db = QSqlDatabase::database(m_connection, false);
    QSqlQuery version(db);
    if (!version.exec(QStringLiteral("PRAGMA user_version")) || !version.next())
        return errorText(version.lastError());
    const int from = version.value(0).toInt();
    version.finish();
    if (from > schemaVersion)
        return QStringLiteral("it was written by a newer Kelvane (version %1)").arg(from);
    for (int step = from; step < schemaVersion; ++step) {
        auto error = transaction([&]() -> std::optional<QString> {
            for (const QString& statement :
                 QString::fromLatin1(migrations[step]).split(QLatin1Char(';'), Qt::SkipEmptyParts)) {
                QSqlQuery query(db);
                query.prepare(statement);
                if (statement.contains(QLatin1StringView(":now")))
                    query.bindValue(QStringLiteral(":now"), secondsSinceReferenceDate(m_clock.wallTime()));
                if (!query.exec())
                    return errorText(query.lastError());
            }
            return exec(QStringLiteral("PRAGMA user_version=%1").arg(step + 1));
        });
        if (error)
            return QStringLiteral("upgrading to version %1: %2").arg(step + 1).arg(*error);
    }
    return std::nullopt;
}

std::optional<QString> NotesStore::transaction(const std::function<std::optional<QString>()>& changes)
{
    // Nested: part of the outer one.
    if (m_depth > 0)
        return changes();
    QSqlDatabase db = QSqlDatabase::database(m_connection, false);
    if (!db.isOpen())
        return QStringLiteral("the notes database is not open");
    if (!db.transaction())
        return errorText(db.lastError());
    ++m_depth;
    auto error = changes();
    --m_depth;
    if (error) {
        db.rollback();
        return error;
    }
    if (!db.commit()) {
        const QString text = errorText(db.lastError());
        db.rollback();
        return text;
    }
    return std::nullopt;
}

std::optional<QString> NotesStore::load(Contents& contents)
{
    QSqlDatabase db = QSqlDatabase::database(m_connection, false);
    if (!db.isOpen())
        return QStringLiteral("the notes database is not open");
    contents = {};
    QSqlQuery query(db);
    query.setForwardOnly(true);
    if (!query.exec(QStringLiteral("SELECT id, title, body, code_mode, language, created, modified, pinned, position"
                                   " FROM notes ORDER BY pinned DESC, position, id")))
        return errorText(query.lastError());
    while (query.next())
        contents.notes.push_back(Note{query.value(0).toLongLong(), query.value(1).toString(), query.value(2).toString(),
                                      query.value(3).toBool(), query.value(4).toString(), query.value(5).toDouble(),
                                      query.value(6).toDouble(), query.value(7).toBool(), query.value(8).toLongLong()});
    if (!query.exec(QStringLiteral("SELECT id, text, done, completed, position, archived FROM todos"
                                   " WHERE archived = 0 ORDER BY position, id")))
        return errorText(query.lastError());
    while (query.next())
        contents.todos.push_back(Todo{query.value(0).toLongLong(), query.value(1).toString(), query.value(2).toBool(),
                                      query.value(3).isNull() ? std::nullopt : std::optional(query.value(3).toDouble()),
                                      query.value(4).toLongLong(), false});
    // Numbers are never given out twice, not even those of rows since removed.
    if (!query.exec(QStringLiteral("SELECT name, seq FROM sqlite_sequence")))
        return errorText(query.lastError());
    while (query.next()) {
        const QString table = query.value(0).toString();
        if (table == QLatin1StringView("notes"))
            contents.nextNoteId = query.value(1).toLongLong() + 1;
        else if (table == QLatin1StringView("todos"))
            contents.nextTodoId = query.value(1).toLongLong() + 1;
    }
    if (!query.exec(QStringLiteral("SELECT value FROM meta WHERE key = 'seeded'")))
        return errorText(query.lastError());
    contents.seeded = query.next();
    return std::nullopt;
}

std::optional<QString> NotesStore::allTodos(std::vector<Todo>& todos)
{
    QSqlQuery query(QSqlDatabase::database(m_connection, false));
    if (!query.exec(QStringLiteral("SELECT id, text, done, completed, position, archived FROM todos ORDER BY position, id")))
        return errorText(query.lastError());
    todos.clear();
    while (query.next())
        todos.push_back(Todo{query.value(0).toLongLong(), query.value(1).toString(), query.value(2).toBool(),
                             query.value(3).isNull() ? std::nullopt : std::optional(query.value(3).toDouble()),
                             query.value(4).toLongLong(), query.value(5).toBool()});
    return std::nullopt;
}

namespace {
std::optional<QString> run(const QString& connection, const QString& statement, const QVariantList& values)
{
    QSqlQuery query(QSqlDatabase::database(connection, false));
    if (!query.prepare(statement))
        return errorText(query.lastError());
    for (const QVariant& value : values)
        query.addBindValue(value);
    if (!query.exec())
        return errorText(query.lastError());
    return std::nullopt;
}
} // namespace

std::optional<QString> NotesStore::putNote(const Note& note)
{
    return transaction([&] {
        return run(m_connection,
                   QStringLiteral("INSERT OR REPLACE INTO notes(id, title, body, code_mode, language, created, modified,"
                                  " pinned, position) VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?)"),
                   {note.id, note.title.isEmpty() ? QVariant() : QVariant(note.title), note.body, note.codeMode,
                    note.language, note.created, note.modified, note.pinned, note.position});
    });
}

std::optional<QString> NotesStore::removeNote(qint64 id)
{
    return transaction([&] { return run(m_connection, QStringLiteral("DELETE FROM notes WHERE id = ?"), {id}); });
}

std::optional<QString> NotesStore::putTodo(const Todo& todo)
{
    return transaction([&] {
        return run(m_connection,
                   QStringLiteral("INSERT OR REPLACE INTO todos(id, text, done, completed, position, archived)"
                                  " VALUES(?, ?, ?, ?, ?, ?)"),
                   {todo.id, todo.text, todo.done, todo.completed ? QVariant(*todo.completed) : QVariant(),
                    todo.position, todo.archived});
    });
}

std::optional<QString> NotesStore::removeTodo(qint64 id)
{
    return transaction([&] { return run(m_connection, QStringLiteral("DELETE FROM todos WHERE id = ?"), {id}); });
}

namespace {
std::optional<QString> putPositions(NotesStore& store, const QString& connection, const QString& statement,
                                    const std::vector<std::pair<qint64, qint64>>& positions)
{
    return store.transaction([&]() -> std::optional<QString> {
        QSqlQuery query(QSqlDatabase::database(connection, false));
        if (!query.prepare(statement))
            return errorText(query.lastError());
        for (const auto& [id, position] : positions) {
            query.bindValue(0, position);
            query.bindValue(1, id);
            if (!query.exec())
                return errorText(query.lastError());
        }
        return std::nullopt;
    });
}
} // namespace

std::optional<QString> NotesStore::putNotePositions(const std::vector<std::pair<qint64, qint64>>& positions)
{
    return putPositions(*this, m_connection, QStringLiteral("UPDATE notes SET position = ? WHERE id = ?"), positions);
}

std::optional<QString> NotesStore::putTodoPositions(const std::vector<std::pair<qint64, qint64>>& positions)
{
    return putPositions(*this, m_connection, QStringLiteral("UPDATE todos SET position = ? WHERE id = ?"), positions);
}

std::optional<QString> NotesStore::markSeeded()
{
    return transaction([&] {
        return run(m_connection, QStringLiteral("INSERT OR REPLACE INTO meta(key, value) VALUES('seeded', '1')"), {});
    });
}

} // namespace kelvane
