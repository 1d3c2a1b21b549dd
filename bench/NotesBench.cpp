// notes_bench: how long 10,000 notes and 10,000 to-dos take to load, against reading the same rows
// with plain SQLite queries; and how long the main thread is held while a note is typed into and
// saved, against the same keys with saving turned off.

#include "notes/NotesManager.h"

#include "core/QtScheduler.h"
#include "settings/SettingsDomain.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <vector>

using namespace kelvane;

namespace {

struct Figures {
    std::vector<double> values;
    void add(double v) { values.push_back(v); }
    double median()
    {
        std::sort(values.begin(), values.end());
        return values[values.size() / 2];
    }
    double spread() { return values.back() - values.front(); }
};

void fill(const QString& path, QtScheduler& scheduler, SettingsStore& settings)
{
    NotesManager notes({scheduler, settings, path});
    for (int i = 0; i < 10'000; ++i) {
        notes.addNote(
            QStringLiteral("# Note %1\nSome text of the note, a line or two long, with **bold** words.").arg(i));
        notes.addTodo(QStringLiteral("Something to do, number %1").arg(i));
    }
    notes.save();
}

double loadWithManager(const QString& path, QtScheduler& scheduler, SettingsStore& settings)
{
    QElapsedTimer timer;
    timer.start();
    NotesManager notes({scheduler, settings, path});
    const double ms = timer.nsecsElapsed() / 1e6;
    if (notes.notes()->rowCount() != 10'000 || notes.todos()->rowCount() != 10'000)
        std::fprintf(stderr, "unexpected row counts\n");
    return ms;
}

double loadBare(const QString& path)
{
    QElapsedTimer timer;
    timer.start();
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("bare"));
        db.setDatabaseName(path);
        db.open();
        QSqlQuery q(db);
        q.setForwardOnly(true);
        std::vector<std::pair<qint64, QString>> rows;
        q.exec(QStringLiteral("SELECT id, body FROM notes"));
        while (q.next())
            rows.emplace_back(q.value(0).toLongLong(), q.value(1).toString());
        q.exec(QStringLiteral("SELECT id, text FROM todos"));
        while (q.next())
            rows.emplace_back(q.value(0).toLongLong(), q.value(1).toString());
    }
    QSqlDatabase::removeDatabase(QStringLiteral("bare"));
    return timer.nsecsElapsed() / 1e6;
}

// Types 300 keys, one every 8 ms, into a note of the full store; the longest the main thread
// was kept from its loop (a key's work plus whatever saving took there).
double typingStall(const QString& path, QtScheduler& scheduler, SettingsStore& settings, bool saving)
{
    NotesManager notes({scheduler, settings, path});
    const qint64 id = notes.noteIdAt(0);
    QString text = notes.noteData(id).value(QStringLiteral("body")).toString();
    double worst = 0;
    QElapsedTimer gap;
    int keys = 0;
    QEventLoop loop;
    QTimer key;
    key.setInterval(8);
    QObject::connect(&key, &QTimer::timeout, [&] {
        // Late by more than the interval: the loop was held.
        if (keys > 0)
            worst = std::max(worst, gap.nsecsElapsed() / 1e6 - 8.0);
        gap.restart();
        QElapsedTimer work;
        work.start();
        text += QLatin1Char('a' + keys % 26);
        if (saving)
            notes.setNoteBody(id, text);
        worst = std::max(worst, work.nsecsElapsed() / 1e6);
        if (++keys == 300) {
            key.stop();
            // The last save, as the user pauses.
            QTimer::singleShot(NotesManager::typingSaveDelay + std::chrono::milliseconds(100), &loop,
                               &QEventLoop::quit);
        }
    });
    gap.start();
    key.start();
    loop.exec();
    return std::max(0.0, worst);
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QTemporaryDir folder;
    QtScheduler scheduler;
    InMemorySettingsDomain domain;
    SettingsStore settings(domain);
    const QString path = folder.filePath(QStringLiteral("notes.sqlite"));
    fill(path, scheduler, settings);

    Figures manager, bare, typing, quiet;
    for (int run = 0; run < 7; ++run) {
        // Sides alternate so that neither always finds the file in a warmer cache.
        if (run % 2 == 0) {
            manager.add(loadWithManager(path, scheduler, settings));
            bare.add(loadBare(path));
        } else {
            bare.add(loadBare(path));
            manager.add(loadWithManager(path, scheduler, settings));
        }
    }
    for (int run = 0; run < 5; ++run) {
        if (run % 2 == 0) {
            typing.add(typingStall(path, scheduler, settings, true));
            quiet.add(typingStall(path, scheduler, settings, false));
        } else {
            quiet.add(typingStall(path, scheduler, settings, false));
            typing.add(typingStall(path, scheduler, settings, true));
        }
    }
    const double load = manager.median(), base = bare.median();
    std::printf("load 10,000 notes + 10,000 to-dos: %.1f ms median (spread %.1f), plain queries %.1f ms "
                "(spread %.1f), ratio %.2f; goal under 150 ms: %s\n",
                load, manager.spread(), base, bare.spread(), load / base, load < 150 ? "met" : "NOT met");
    const double stall = typing.median(), idle = quiet.median();
    const double worstTyping = typing.values.back(), worstQuiet = quiet.values.back();
    std::printf("typing 300 keys with saving: longest main-thread hold %.2f ms median (spread %.2f, worst run %.2f); "
                "without saving %.2f ms (spread %.2f, worst run %.2f); goal under 16 ms: %s\n",
                stall, typing.spread(), worstTyping, idle, quiet.spread(), worstQuiet, stall < 16 ? "met" : "NOT met");
    return 0;
}
