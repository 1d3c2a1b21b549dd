#include "NotesManager.h"

#include "NotesRules.h"

#include "core/HandOff.h"
#include "core/Log.h"
#include "settings/Keys.h"

#include <QLocale>

#include <algorithm>

namespace kelvane {

// The thread the store lives on: SQLite connections belong to the thread that opened them.
class NotesManager::Worker {
public:
    Worker()
    {
        m_thread.setObjectName(QStringLiteral("Notes store"));
        m_context.moveToThread(&m_thread);
        m_thread.start();
    }
    ~Worker()
    {
        sync([this] { m_store.reset(); });
        m_thread.quit();
        m_thread.wait();
    }
    void async(std::function<void(NotesStore*)> task)
    {
        QMetaObject::invokeMethod(&m_context, Handed([this, task = std::move(task)] { task(m_store.get()); }),
                                  Qt::QueuedConnection);
    }
    // Runs after everything queued before it, and waits.
    void sync(const std::function<void()>& task)
    {
        QMetaObject::invokeMethod(&m_context, Handed([&task] { task(); }), Qt::BlockingQueuedConnection);
    }
    void open(const Clock& clock, const QString& path, std::optional<QString>& error, NotesStore::Contents& contents)
    {
        sync([&] {
            m_store = std::make_unique<NotesStore>(clock);
            error = m_store->open(path);
            if (!error)
                error = m_store->load(contents);
            if (error)
                m_store.reset();
        });
    }
    NotesStore* store() { return m_store.get(); }

private:
    QThread m_thread;
    QObject m_context;
    std::unique_ptr<NotesStore> m_store;
};

namespace {
const QString notOpen = QStringLiteral("the notes database could not be opened");
}

// Models ------------------------------------------------------------------------------------------

NoteListModel::NoteListModel(const Clock& clock)
    : m_clock(clock)
{
}

int NoteListModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : int(m_notes.size()); }

QVariant NoteListModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= int(m_notes.size()))
        return {};
    const Note& note = m_notes[size_t(index.row())];
    switch (role) {
    case IdRole:
        return note.id;
    case TitleRole:
    case Qt::DisplayRole:
        return notes::displayTitle(note);
    case BodyRole:
        return note.body;
    case CodeModeRole:
        return note.codeMode;
    case LanguageRole:
        return note.language;
    case PinnedRole:
        return note.pinned;
    case ModifiedRole: {
        // Today's notes by their time, older ones by their date.
        const auto modified = dateFromReferenceSeconds(note.modified);
        if (!modified)
            return QString();
        const QDateTime local = modified->toLocalTime();
        const QLocale locale;
        return local.date() == m_clock.wallTime().toLocalTime().date()
                   ? clockTime(local.time())
                   : locale.toString(local.date(), QLocale::ShortFormat);
    }
    default:
        return {};
    }
}

QHash<int, QByteArray> NoteListModel::roleNames() const
{
    return {{IdRole, "noteId"},       {TitleRole, "title"},   {BodyRole, "body"},        {CodeModeRole, "codeMode"},
            {LanguageRole, "language"}, {PinnedRole, "pinned"}, {ModifiedRole, "modified"}};
}

int TodoListModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : int(m_todos.size()); }

QVariant TodoListModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= int(m_todos.size()))
        return {};
    const Todo& todo = m_todos[size_t(index.row())];
    switch (role) {
    case IdRole:
        return todo.id;
    case TextRole:
    case Qt::DisplayRole:
        return todo.text;
    case DoneRole:
        return todo.done;
    default:
        return {};
    }
}

QHash<int, QByteArray> TodoListModel::roleNames() const
{
    return {{IdRole, "todoId"}, {TextRole, "text"}, {DoneRole, "done"}};
}

// Manager -----------------------------------------------------------------------------------------

NotesManager::NotesManager(const Dependencies& dependencies, QObject* parent)
    : QObject(parent)
    , m_deps(dependencies)
    , m_worker(std::make_unique<Worker>())
    , m_notes(dependencies.scheduler.clock())
    , m_todos(nullptr)
    , m_languages(dependencies.languages)
{
    NotesStore::Contents contents;
    m_worker->open(m_deps.scheduler.clock(), m_deps.path, m_openError, contents);
    if (m_openError) {
        logLine(u"Notes", QStringLiteral("Could not open %1: %2. Notes are kept only until Kelvane quits.")
                              .arg(m_deps.path, *m_openError));
        return;
    }
    m_notes.m_notes = std::move(contents.notes);
    m_todos.m_todos = std::move(contents.todos);
    m_nextNoteId = contents.nextNoteId;
    m_nextTodoId = contents.nextTodoId;
    m_seeded = contents.seeded;
}

NotesManager::~NotesManager()
{
    flushTyping();
    m_worker.reset();
}

double NotesManager::now() const { return secondsSinceReferenceDate(m_deps.scheduler.clock().wallTime()); }

void NotesManager::write(std::function<std::optional<QString>(NotesStore&)> change, Done done)
{
    m_worker->async([this, change = std::move(change), done = std::move(done)](NotesStore* store) {
        std::optional<QString> error = store ? change(*store) : std::optional(notOpen);
        // The answer comes back to the main thread; if the manager is gone by then, so is it.
        QMetaObject::invokeMethod(
            this, Handed([this, error, done] {
                if (error && m_worker->store())
                    logLine(u"Notes", QStringLiteral("Could not save a change: %1").arg(*error));
                if (done)
                    done(error);
            }),
            Qt::QueuedConnection);
    });
}

void NotesManager::writeNote(const Note& note, Done done)
{
    write([note](NotesStore& store) { return store.putNote(note); }, std::move(done));
}

void NotesManager::writeTodo(const Todo& todo, Done done)
{
    write([todo](NotesStore& store) { return store.putTodo(todo); }, std::move(done));
}

std::optional<QString> NotesManager::seedAndPruneDefaultNotes()
{
    const int days = m_deps.settings.value(Keys::todoListWidgetSettings()).autoArchiveCompletedAfterDays;
    const double time = now();
    std::vector<qint64> empty;
    for (const Note& note : m_notes.m_notes)
        if (notes::isEmpty(note))
            empty.push_back(note.id);
    std::vector<Todo> archived;
    for (const Todo& todo : m_todos.m_todos)
        if (notes::shouldArchive(todo, time, days)) {
            archived.push_back(todo);
            archived.back().archived = true;
        }
    std::optional<Note> welcome;
    if (!m_seeded)
        welcome = Note{m_nextNoteId, {}, notes::welcomeNoteBody(), false, {}, time, time, false, 0};

    std::optional<QString> error;
    m_worker->sync([&] {
        NotesStore* store = m_worker->store();
        if (!store) {
            error = notOpen;
            return;
        }
        error = store->transaction([&]() -> std::optional<QString> {
            for (qint64 id : empty)
                if (auto failed = store->removeNote(id))
                    return failed;
            for (const Todo& todo : archived)
                if (auto failed = store->putTodo(todo))
                    return failed;
            if (welcome) {
                if (auto failed = store->putNote(*welcome))
                    return failed;
                return store->markSeeded();
            }
            return std::nullopt;
        });
    });
    // What is shown follows what the store holds.
    if (error)
        return error;
    m_seeded = true;
    const auto removeRows = [](auto& model, auto& rows, const auto& gone) {
        for (int row = int(rows.size()) - 1; row >= 0; --row)
            if (gone(rows[size_t(row)])) {
                model.beginRemoveRows({}, row, row);
                rows.erase(rows.begin() + row);
                model.endRemoveRows();
            }
    };
    removeRows(m_notes, m_notes.m_notes, [&](const Note& note) { return std::ranges::count(empty, note.id) > 0; });
    removeRows(m_todos, m_todos.m_todos, [&](const Todo& todo) {
        return std::ranges::any_of(archived, [&](const Todo& gone) { return gone.id == todo.id; });
    });
    if (!archived.empty())
        Q_EMIT todosChanged();
    if (welcome) {
        ++m_nextNoteId;
        m_notes.beginInsertRows({}, 0, 0);
        m_notes.m_notes.insert(m_notes.m_notes.begin(), *welcome);
        m_notes.endInsertRows();
        placeNote(0);
    }
    return std::nullopt;
}

std::optional<QString> NotesManager::save()
{
    flushTyping();
    std::optional<QString> error;
    m_worker->sync([&] {
        if (!m_worker->store())
            error = notOpen;
    });
    return error;
}

void NotesManager::flushTyping()
{
    m_typingSave.cancel();
    for (qint64 id : std::exchange(m_typing, {}))
        if (const Note* note = this->note(id))
            writeNote(*note);
}

// Notes -------------------------------------------------------------------------------------------

int NotesManager::noteRow(qint64 id) const
{
    const auto& notes = m_notes.m_notes;
    const auto found = std::ranges::find(notes, id, &Note::id);
    return found == notes.end() ? -1 : int(found - notes.begin());
}

const Note* NotesManager::note(qint64 id) const
{
    const int row = noteRow(id);
    return row < 0 ? nullptr : &m_notes.m_notes[size_t(row)];
}

void NotesManager::noteChanged(int row, const QList<int>& roles)
{
    const QModelIndex index = m_notes.index(row);
    Q_EMIT m_notes.dataChanged(index, index, roles);
}

// Moves a note whose pin or position changed to where the order puts it.
void NotesManager::placeNote(int row)
{
    auto& notes = m_notes.m_notes;
    const Note moved = notes[size_t(row)];
    const auto before = [](const Note& a, const Note& b) {
        return a.pinned != b.pinned ? a.pinned : a.position != b.position ? a.position < b.position : a.id < b.id;
    };
    std::vector<Note> others = notes;
    others.erase(others.begin() + row);
    const int target = int(std::ranges::partition_point(others, [&](const Note& n) { return before(n, moved); }) -
                           others.begin());
    if (target == row)
        return;
    m_notes.beginMoveRows({}, row, row, {}, target > row ? target + 1 : target);
    notes.erase(notes.begin() + row);
    notes.insert(notes.begin() + target, moved);
    m_notes.endMoveRows();
}

qint64 NotesManager::addNote(const QString& body, Done done)
{
    const double time = now();
    qint64 first = 0;
    for (const Note& note : m_notes.m_notes)
        first = std::min(first, note.position);
    const auto& settings = m_deps.settings.value(Keys::notesWidgetSettings());
    const Note note{m_nextNoteId++, {}, body, settings.codeMode, {}, time, time, false, first - 1};
    m_notes.beginInsertRows({}, 0, 0);
    m_notes.m_notes.insert(m_notes.m_notes.begin(), note);
    m_notes.endInsertRows();
    placeNote(0);
    writeNote(note, std::move(done));
    return note.id;
}

qint64 NotesManager::addCodeNote()
{
    const qint64 id = addNote();
    setNoteCodeMode(id, true);
    return id;
}

void NotesManager::setNoteBody(qint64 id, const QString& body)
{
    const int row = noteRow(id);
    if (row < 0 || m_notes.m_notes[size_t(row)].body == body)
        return;
    Note& note = m_notes.m_notes[size_t(row)];
    note.body = body;
    note.modified = now();
    noteChanged(row, {NoteListModel::BodyRole, NoteListModel::TitleRole, NoteListModel::ModifiedRole});
    m_typing.insert(id);
    m_typingSave = m_deps.scheduler.schedule(typingSaveDelay, [this] { flushTyping(); });
}

void NotesManager::setNoteCodeMode(qint64 id, bool codeMode)
{
    const int row = noteRow(id);
    if (row < 0 || m_notes.m_notes[size_t(row)].codeMode == codeMode)
        return;
    m_notes.m_notes[size_t(row)].codeMode = codeMode;
    noteChanged(row, {NoteListModel::CodeModeRole});
    writeNote(m_notes.m_notes[size_t(row)]);
}

void NotesManager::setNoteLanguage(qint64 id, const QString& language)
{
    const int row = noteRow(id);
    if (row < 0 || m_notes.m_notes[size_t(row)].language == language)
        return;
    m_notes.m_notes[size_t(row)].language = language;
    noteChanged(row, {NoteListModel::LanguageRole});
    writeNote(m_notes.m_notes[size_t(row)]);
}

void NotesManager::setNotePinned(qint64 id, bool pinned)
{
    const int row = noteRow(id);
    if (row < 0 || m_notes.m_notes[size_t(row)].pinned == pinned)
        return;
    m_notes.m_notes[size_t(row)].pinned = pinned;
    noteChanged(row, {NoteListModel::PinnedRole});
    writeNote(m_notes.m_notes[size_t(row)]);
    placeNote(row);
}

bool NotesManager::removeNote(qint64 id, Done done)
{
    const int row = noteRow(id);
    if (row < 0)
        return false;
    m_typing.erase(id);
    m_notes.beginRemoveRows({}, row, row);
    m_notes.m_notes.erase(m_notes.m_notes.begin() + row);
    m_notes.endRemoveRows();
    write([id](NotesStore& store) { return store.removeNote(id); }, std::move(done));
    Q_EMIT noteRemoved(id);
    return true;
}

QVariantMap NotesManager::noteData(qint64 id) const
{
    const Note* note = this->note(id);
    if (!note)
        return {};
    return {{QStringLiteral("noteId"), note->id},         {QStringLiteral("title"), notes::displayTitle(*note)},
            {QStringLiteral("body"), note->body},         {QStringLiteral("codeMode"), note->codeMode},
            {QStringLiteral("language"), languageOf(id)}, {QStringLiteral("pinned"), note->pinned}};
}

qint64 NotesManager::noteIdAt(int row) const
{
    return row >= 0 && row < int(m_notes.m_notes.size()) ? m_notes.m_notes[size_t(row)].id : 0;
}

QString NotesManager::titleOf(const QString& body) const { return notes::derivedTitle(body); }

QString NotesManager::languageOf(qint64 id) const
{
    const Note* note = this->note(id);
    if (note && !note->language.isEmpty())
        return note->language;
    return m_deps.settings.value(Keys::notesWidgetSettings()).defaultCodeModeLanguage;
}

// To-dos ------------------------------------------------------------------------------------------

int NotesManager::todoRow(qint64 id) const
{
    const auto& todos = m_todos.m_todos;
    const auto found = std::ranges::find(todos, id, &Todo::id);
    return found == todos.end() ? -1 : int(found - todos.begin());
}

const Todo* NotesManager::todo(qint64 id) const
{
    const int row = todoRow(id);
    return row < 0 ? nullptr : &m_todos.m_todos[size_t(row)];
}

int NotesManager::openTodoCount() const
{
    return int(std::ranges::count(m_todos.m_todos, false, &Todo::done));
}

qint64 NotesManager::addTodo(const QString& text, Done done)
{
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty())
        return 0;
    auto& todos = m_todos.m_todos;
    const qint64 position = todos.empty() ? 0 : todos.back().position + 1;
    const Todo todo{m_nextTodoId++, trimmed, false, std::nullopt, position, false};
    m_todos.beginInsertRows({}, int(todos.size()), int(todos.size()));
    todos.push_back(todo);
    m_todos.endInsertRows();
    writeTodo(todo, std::move(done));
    Q_EMIT todosChanged();
    return todo.id;
}

bool NotesManager::setTodoDone(qint64 id, bool done, Done answer)
{
    const int row = todoRow(id);
    if (row < 0)
        return false;
    Todo& todo = m_todos.m_todos[size_t(row)];
    if (todo.done != done) {
        todo.done = done;
        todo.completed = done ? std::optional(now()) : std::nullopt;
        const QModelIndex index = m_todos.index(row);
        Q_EMIT m_todos.dataChanged(index, index, {TodoListModel::DoneRole});
        Q_EMIT todosChanged();
    }
    writeTodo(todo, std::move(answer));
    return true;
}

void NotesManager::setTodoText(qint64 id, const QString& text)
{
    const int row = todoRow(id);
    const QString trimmed = text.trimmed();
    if (row < 0 || m_todos.m_todos[size_t(row)].text == trimmed)
        return;
    // Emptied in place: the to-do goes.
    if (trimmed.isEmpty()) {
        removeTodo(id);
        return;
    }
    m_todos.m_todos[size_t(row)].text = trimmed;
    const QModelIndex index = m_todos.index(row);
    Q_EMIT m_todos.dataChanged(index, index, {TodoListModel::TextRole});
    writeTodo(m_todos.m_todos[size_t(row)]);
}

void NotesManager::moveTodo(int from, int to)
{
    auto& todos = m_todos.m_todos;
    const int count = int(todos.size());
    if (from < 0 || from >= count || to < 0 || to >= count || from == to)
        return;
    m_todos.beginMoveRows({}, from, from, {}, to > from ? to + 1 : to);
    const Todo moved = todos[size_t(from)];
    todos.erase(todos.begin() + from);
    todos.insert(todos.begin() + to, moved);
    m_todos.endMoveRows();
    // Positions are the rows' places; only those that changed are written.
    std::vector<std::pair<qint64, qint64>> positions;
    for (int row = 0; row < count; ++row)
        if (Todo& todo = todos[size_t(row)]; todo.position != row)
            positions.emplace_back(todo.id, todo.position = row);
    write([positions](NotesStore& store) { return store.putTodoPositions(positions); });
}

bool NotesManager::removeTodo(qint64 id, Done done)
{
    const int row = todoRow(id);
    if (row < 0)
        return false;
    m_todos.beginRemoveRows({}, row, row);
    m_todos.m_todos.erase(m_todos.m_todos.begin() + row);
    m_todos.endRemoveRows();
    write([id](NotesStore& store) { return store.removeTodo(id); }, std::move(done));
    Q_EMIT todosChanged();
    return true;
}

// For the command line ----------------------------------------------------------------------------

QJsonObject NotesManager::noteJson(const Note& note) const
{
    return {{QStringLiteral("id"), note.id},
            {QStringLiteral("title"), notes::displayTitle(note)},
            {QStringLiteral("body"), note.body},
            {QStringLiteral("codeMode"), note.codeMode},
            {QStringLiteral("language"), note.codeMode ? languageOf(note.id) : QString()},
            {QStringLiteral("pinned"), note.pinned},
            {QStringLiteral("modified"), dateFromReferenceSeconds(note.modified).value_or(QDateTime()).toString(Qt::ISODate)}};
}

QJsonArray NotesManager::notesJson() const
{
    QJsonArray list;
    for (const Note& note : m_notes.m_notes) {
        QJsonObject entry = noteJson(note);
        entry.remove(QStringLiteral("body"));
        list.append(entry);
    }
    return list;
}

QJsonArray NotesManager::todosJson() const
{
    QJsonArray list;
    for (const Todo& todo : m_todos.m_todos)
        list.append(QJsonObject{{QStringLiteral("id"), todo.id},
                                {QStringLiteral("text"), todo.text},
                                {QStringLiteral("done"), todo.done}});
    return list;
}

} // namespace kelvane
