#include "notes/NotesManager.h"
#include "notes/NotesRules.h"

#include "core/Log.h"
#include "core/ManualScheduler.h"
#include "settings/Keys.h"
#include "settings/SettingsDomain.h"

#include <QFile>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

using namespace kelvane;
using namespace std::chrono_literals;

namespace {

struct World {
    QTemporaryDir folder;
    ManualScheduler scheduler;
    InMemorySettingsDomain domain;
    SettingsStore settings{domain};
    QString path = folder.filePath(QStringLiteral("Notes/notes.sqlite"));

    std::unique_ptr<NotesManager> open() { return std::make_unique<NotesManager>(NotesManager::Dependencies{scheduler, settings, path}); }
    double now() const { return secondsSinceReferenceDate(scheduler.clock().wallTime()); }

    // What a second reader finds on the disk.
    NotesStore::Contents onDisk()
    {
        NotesStore store(scheduler.clock());
        NotesStore::Contents contents;
        EXPECT_EQ(store.open(path), std::nullopt);
        EXPECT_EQ(store.load(contents), std::nullopt);
        return contents;
    }
    std::vector<Todo> allTodos()
    {
        NotesStore store(scheduler.clock());
        std::vector<Todo> todos;
        EXPECT_EQ(store.open(path), std::nullopt);
        EXPECT_EQ(store.allTodos(todos), std::nullopt);
        return todos;
    }
};

// Waits until the store's thread has answered every change.
void settle(NotesManager& notes) { ASSERT_EQ(notes.save(), std::nullopt); QCoreApplication::processEvents(); }

QStringList bodies(const NotesStore::Contents& contents)
{
    QStringList list;
    for (const Note& note : contents.notes)
        list << note.body;
    return list;
}

} // namespace

TEST(NotesRules, TitlesComeFromTheFirstLineWithoutMarkdownMarks)
{
    const QString long70 = QString(QStringLiteral("👍🏽")).repeated(70);
    const struct {
        QString body;
        QString title;
    } rows[] = {
        {QStringLiteral("# Groceries\nmilk"), QStringLiteral("Groceries")},
        {QStringLiteral("\n\n   - [ ] call Anna  \nmore"), QStringLiteral("call Anna")},
        {QStringLiteral("> 1. quoted"), QStringLiteral("quoted")},
        {QStringLiteral("#hashtag stays"), QStringLiteral("#hashtag stays")},
        // Fences and rules frame the text; the title is what they frame.
        {QStringLiteral("```sh\nmake -j2\n```"), QStringLiteral("make -j2")},
        {QStringLiteral("---\n* * *\nAfter the rules"), QStringLiteral("After the rules")},
        {QStringLiteral("--- not a rule"), QStringLiteral("--- not a rule")},
        {QStringLiteral("  \n\t\n"), QString()},
        // Sixty characters as a reader counts them (a thumb with its skin tone is one).
        {long70, QString(QStringLiteral("👍🏽")).repeated(60) + QStringLiteral("…")},
    };
    for (const auto& row : rows)
        EXPECT_EQ(notes::derivedTitle(row.body), row.title) << row.body;
    Note own;
    own.title = QStringLiteral(" Own ");
    own.body = QStringLiteral("# first");
    EXPECT_EQ(notes::displayTitle(own), QStringLiteral("Own"));
}

TEST(NotesStore, AnOlderDatabaseIsUpgradedWithEverythingKept)
{
    World world;
    QDir().mkpath(QFileInfo(world.path).absolutePath());
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("v1"));
        db.setDatabaseName(world.path);
        ASSERT_TRUE(db.open());
        QSqlQuery q(db);
        for (const char* statement :
             {"CREATE TABLE notes(id INTEGER PRIMARY KEY AUTOINCREMENT, body TEXT NOT NULL DEFAULT '', created REAL NOT NULL DEFAULT 0, modified REAL NOT NULL DEFAULT 0)",
              "CREATE TABLE todos(id INTEGER PRIMARY KEY AUTOINCREMENT, text TEXT NOT NULL DEFAULT '', done INTEGER NOT NULL DEFAULT 0, position INTEGER NOT NULL DEFAULT 0)",
              "INSERT INTO notes(body, created, modified) VALUES('# Old one', 1, 2), ('Newer', 3, 4)",
              "INSERT INTO todos(text, done, position) VALUES('open', 0, 0), ('finished', 1, 1)",
              "DELETE FROM todos WHERE text = 'gone'", "PRAGMA user_version=1"})
            ASSERT_TRUE(q.exec(QLatin1StringView(statement))) << statement;
        db.close();
    }
    QSqlDatabase::removeDatabase(QStringLiteral("v1"));

    auto notes = world.open();
    ASSERT_EQ(notes->openError(), std::nullopt);
    // An existing store is not welcomed again; the newer note comes first.
    ASSERT_EQ(notes->seedAndPruneDefaultNotes(), std::nullopt);
    EXPECT_EQ(notes->notes()->rowCount(), 2);
    EXPECT_EQ(notes->notes()->index(0).data(NoteListModel::TitleRole), QStringLiteral("Newer"));
    EXPECT_EQ(notes->notes()->index(1).data(NoteListModel::TitleRole), QStringLiteral("Old one"));
    const auto todos = world.allTodos();
    ASSERT_EQ(todos.size(), 2u);
    EXPECT_EQ(todos[1].completed, std::optional(world.now())) << "done before dates were kept: counted from the upgrade";
    EXPECT_FALSE(todos[1].archived);
    // New rows never take the numbers of the old ones.
    EXPECT_EQ(notes->addNote(QStringLiteral("third")), 3);

    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("check"));
    db.setDatabaseName(world.path);
    ASSERT_TRUE(db.open());
    QSqlQuery q(db);
    ASSERT_TRUE(q.exec(QStringLiteral("PRAGMA user_version")) && q.next());
    EXPECT_EQ(q.value(0).toInt(), NotesStore::schemaVersion);
    ASSERT_TRUE(q.exec(QStringLiteral("PRAGMA journal_mode")) && q.next());
    EXPECT_EQ(q.value(0).toString(), QStringLiteral("wal"));
}

TEST(NotesStore, ABrokenDatabaseIsKeptAsideNeverOverAnEarlierOne)
{
    World world;
    QDir().mkpath(QFileInfo(world.path).absolutePath());
    const auto writeGarbage = [&](const QByteArray& bytes) {
        QFile file(world.path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(bytes);
    };
    const QByteArray first = QByteArray("not a database at all ").repeated(300);
    writeGarbage(first);
    {
        LogCapture log;
        auto notes = world.open();
        EXPECT_EQ(notes->openError(), std::nullopt);
        ASSERT_EQ(log.lines().size(), 1);
        EXPECT_TRUE(log.lines()[0].startsWith(QStringLiteral("[Notes] Could not open ") + world.path)) << log.lines()[0];
        EXPECT_TRUE(log.lines()[0].endsWith(QStringLiteral("kept it as ") + world.path +
                                            QStringLiteral(".broken and started a new one.")));
        notes->addTodo(QStringLiteral("survives"));
        settle(*notes);
    }
    EXPECT_EQ(world.onDisk().todos.size(), 1u);
    // A damaged database (its pages cut short) is found at once too; the first copy stays as it was.
    QFile file(world.path);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    ASSERT_TRUE(file.resize(file.size() / 2 + 100));
    file.close();
    LogCapture log;
    auto notes = world.open();
    EXPECT_EQ(notes->openError(), std::nullopt);
    EXPECT_EQ(notes->todos()->rowCount(), 0);
    QFile kept(world.path + QStringLiteral(".broken"));
    ASSERT_TRUE(kept.open(QIODevice::ReadOnly));
    EXPECT_EQ(kept.readAll(), first);
    EXPECT_TRUE(QFileInfo::exists(world.path + QStringLiteral(".broken.2")));
}

TEST(NotesManager, TheWelcomeNoteComesOnceAndEmptyNotesGo)
{
    World world;
    {
        auto notes = world.open();
        ASSERT_EQ(notes->seedAndPruneDefaultNotes(), std::nullopt);
        ASSERT_EQ(notes->notes()->rowCount(), 1);
        EXPECT_EQ(notes->notes()->index(0).data(NoteListModel::TitleRole), QStringLiteral("Welcome to Kelvane"));
        const qint64 welcome = notes->notes()->index(0).data(NoteListModel::IdRole).toLongLong();
        notes->addNote(QStringLiteral("   \n"));
        notes->addNote();
        notes->addNote(QStringLiteral("kept"));
        EXPECT_TRUE(notes->removeNote(welcome));
        settle(*notes);
    }
    auto notes = world.open();
    ASSERT_EQ(notes->seedAndPruneDefaultNotes(), std::nullopt);
    EXPECT_EQ(bodies(world.onDisk()), QStringList{QStringLiteral("kept")});
    EXPECT_EQ(notes->notes()->rowCount(), 1);
}

TEST(NotesManager, DoneToDosAreArchivedOnlyOnceTheirDaysHavePassed)
{
    const struct {
        int days;
        double age; // seconds since done, at launch
        bool archived;
    } rows[] = {
        {7, 7 * 86400.0, false},     {7, 7 * 86400.0 + 1, true}, {0, 0, false},
        {0, 1, true},                {-1, 1e9, false},           {30, 29 * 86400.0, false},
    };
    for (const auto& row : rows) {
        World world;
        world.settings.update(Keys::todoListWidgetSettings(),
                              [&](TodoListWidgetSettings& s) { s.autoArchiveCompletedAfterDays = row.days; });
        qint64 done = 0;
        {
            auto notes = world.open();
            done = notes->addTodo(QStringLiteral("done"));
            notes->addTodo(QStringLiteral("open"));
            notes->setTodoDone(done, true);
            settle(*notes);
        }
        world.scheduler.advance(std::chrono::milliseconds(qint64(row.age * 1000)));
        auto notes = world.open();
        ASSERT_EQ(notes->seedAndPruneDefaultNotes(), std::nullopt);
        settle(*notes);
        const auto todos = world.allTodos();
        ASSERT_EQ(todos.size(), 2u);
        EXPECT_EQ(todos[0].archived, row.archived) << row.days << " days, " << row.age << " s";
        EXPECT_FALSE(todos[1].archived);
        EXPECT_EQ(notes->todos()->rowCount(), row.archived ? 1 : 2);
    }
}

TEST(NotesManager, TypingIsSavedShortlyAfterTheLastKeyAndEverythingSurvivesARestart)
{
    World world;
    qint64 id = 0;
    {
        auto notes = world.open();
        id = notes->addNote();
        for (const char* text : {"s", "sh", "sho", "shop"}) {
            notes->setNoteBody(id, QLatin1StringView(text));
            world.scheduler.advance(300ms);
        }
        QTest::qWait(50);
        EXPECT_EQ(bodies(world.onDisk()), QStringList{QString()}) << "saved while still typing";
        world.scheduler.advance(NotesManager::typingSaveDelay - 300ms);
        EXPECT_TRUE(QTest::qWaitFor([&] { return bodies(world.onDisk()) == QStringList{QStringLiteral("shop")}; }, 2000));

        // To-dos: add, check, edit, reorder, remove; a pin moves a note first.
        const qint64 a = notes->addTodo(QStringLiteral("a"));
        const qint64 b = notes->addTodo(QStringLiteral("b"));
        const qint64 c = notes->addTodo(QStringLiteral("c"));
        EXPECT_EQ(notes->addTodo(QStringLiteral("  ")), 0);
        notes->setTodoDone(b, true);
        notes->setTodoText(c, QStringLiteral("c edited"));
        notes->moveTodo(2, 0);
        notes->removeTodo(a);
        const qint64 other = notes->addNote(QStringLiteral("newer"));
        notes->setNotePinned(id, true);
        notes->setNoteCodeMode(other, true);
        notes->setNoteLanguage(other, QStringLiteral("cpp"));
        notes->setNoteBody(id, QStringLiteral("shopping"));
        EXPECT_EQ(notes->notes()->index(0).data(NoteListModel::IdRole).toLongLong(), id);
    }
    auto notes = world.open();
    ASSERT_EQ(notes->todos()->rowCount(), 2);
    EXPECT_EQ(notes->todos()->index(0).data(TodoListModel::TextRole), QStringLiteral("c edited"));
    EXPECT_EQ(notes->todos()->index(1).data(TodoListModel::DoneRole), true);
    ASSERT_EQ(notes->notes()->rowCount(), 2);
    EXPECT_EQ(notes->notes()->index(0).data(NoteListModel::BodyRole), QStringLiteral("shopping")) << "saved when closing";
    EXPECT_EQ(notes->notes()->index(1).data(NoteListModel::LanguageRole), QStringLiteral("cpp"));
    EXPECT_EQ(notes->languageOf(id), QStringLiteral("markdown"));
}

TEST(NotesManager, AStoreThatCannotBeMadeLeavesNotesInMemoryAndSaysSo)
{
    World world;
    // The folder is a file: no database can be made there.
    QFile blocker(world.folder.filePath(QStringLiteral("Notes")));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    LogCapture log;
    auto notes = world.open();
    ASSERT_TRUE(notes->openError());
    EXPECT_EQ(log.lines().size(), 1);
    EXPECT_TRUE(notes->seedAndPruneDefaultNotes());
    EXPECT_GT(notes->addTodo(QStringLiteral("still works")), 0);
    EXPECT_EQ(notes->todos()->rowCount(), 1);
    EXPECT_TRUE(notes->save());
}
