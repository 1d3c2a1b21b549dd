#include "activities/ActiveLiveActivitiesManager.h"
#include "core/Log.h"
#include "core/ManualScheduler.h"
#include "settings/SettingsStore.h"
#include "tray/FileCopy.h"
#include "tray/StagingArea.h"
#include "tray/Tray.h"

#include "TrayFixture.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QLocalServer>

#include <sys/stat.h>

#include <gtest/gtest.h>

using namespace kelvane;
using namespace Qt::StringLiterals;
using kelvane::test::ScopedEnvironment;
using kelvane::test::TemporaryHome;
using kelvane::test::waitUntil;

using kelvane::test::Shelf;
using kelvane::test::FakePasteboard;


// Copies take free names, files already in the tray are not copied again, files added together
// are one stack, and the last file removed leaves its copy but cleans the drop folders.
TEST(Tray, CopiesUnderFreeNamesStacksTogetherAndKeepsCopiesWhenEmptied)
{
    Shelf shelf;
    const QString pdf = shelf.make("src/a.pdf"), readme = shelf.make("src/README"), dot = shelf.make("src/.profile");
    for (int i = 0; i < 3; ++i)
        shelf.add({pdf});
    shelf.add({readme});
    shelf.add({readme});
    shelf.add({dot});
    shelf.add({dot});
    EXPECT_EQ(shelf.names(), (QStringList{"a.pdf", "a 1.pdf", "a 2.pdf", "README", "README 1", ".profile", ".profile 1"}));
    for (const TrayFile* file : shelf.tray->files())
        EXPECT_EQ(QFileInfo(file->path()).path(), shelf.folder()) << file->name().toStdString();

    const QString inside = shelf.tray->files().front()->path();
    shelf.add({inside});
    EXPECT_EQ(shelf.tray->files().back()->path(), inside);
    EXPECT_EQ(shelf.tray->trayItems().size(), 8u);
    EXPECT_EQ(QDir(shelf.folder()).entryList(QDir::Files | QDir::Hidden).size(), 7);

    shelf.add({shelf.make("src/x.png"), shelf.make("src/y.png"), shelf.make("src/z.png")});
    const auto items = shelf.tray->trayItems();
    ASSERT_EQ(items.size(), 9u);
    EXPECT_TRUE(items.back().isStack);
    EXPECT_EQ(items.back().files.size(), 3u);
    EXPECT_EQ(Tray::stackName(items.back().files), "PNGs \u00B7 3");
    EXPECT_TRUE(shelf.activities.activeLiveActivities().contains(LiveActivity::tray));

    ASSERT_TRUE(shelf.staging->newDrop());
    while (!shelf.tray->files().empty())
        shelf.tray->removeFile(shelf.tray->files().front());
    EXPECT_TRUE(shelf.saved().isEmpty());
    EXPECT_TRUE(QFileInfo::exists(shelf.folder() + "/a 2.pdf"));
    EXPECT_FALSE(QFileInfo::exists(shelf.stagingRoot()));
    EXPECT_FALSE(shelf.activities.activeLiveActivities().contains(LiveActivity::tray));
    shelf.add({pdf});
    EXPECT_EQ(shelf.names(), QStringList{"a 3.pdf"});
}

TEST(Tray, NamesStacksAndShortNames)
{
    Shelf shelf;
    const struct {
        QStringList files;
        QString title;
    } stacks[] = {
        {{"src/x.png", "src/y.png"}, "PNGs \u00B7 2"},
        {{"src/x.png", "src/y.jpg"}, "src \u00B7 2"},
        {{"src/x.png", "other/y.jpg"}, "2 files"},
        {{}, "0 files"},
    };
    for (const auto& stack : stacks) {
        std::vector<std::unique_ptr<TrayFile>> owned;
        std::vector<TrayFile*> files;
        for (const QString& name : stack.files) {
            const QUrl url = QUrl::fromLocalFile(shelf.make(name));
            owned.push_back(std::make_unique<TrayFile>(url, std::nullopt, QDateTime(), TrayFile::read(url)));
            files.push_back(owned.back().get());
        }
        EXPECT_EQ(Tray::stackName(files), stack.title);
    }
}

// A file from the system temporary folder survives its source. Only regular files and folders
// are copied, and nothing that could block (a pipe with no writer, a socket, a device) holds the
// tray up: it is refused with one line and the next add goes in. A folder is never copied into
// itself: one that holds the tray folder is kept where it is, by reference.
TEST(Tray, TakesFilesAndFoldersAndNeverHangsOnAnythingElse)
{
    Shelf shelf;
    const QString temporary = shelf.make("tmp/drag.txt", "dragged");
    shelf.add({temporary});
    QFile::remove(temporary);
    EXPECT_EQ(shelf.read(shelf.tray->files().front()->path()), "dragged");

    QLocalServer socket;
    ASSERT_TRUE(socket.listen(shelf.home.path() + "/src/socket"));
    const QString fifo = shelf.home.path() + "/src/pipe";
    ASSERT_EQ(::mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
    shelf.make("Photos/a.jpg");
    ::mkfifo(QFile::encodeName(shelf.home.path() + "/Photos/pipe").constData(), 0600);
    const QString intoTray = shelf.home.path() + "/src/into-tray.txt";
    QFile::link(shelf.tray->files().front()->path(), intoTray);
    const struct {
        QString path;
        QString held; // the name it is held under; empty: refused
        bool byReference;
        QString line; // the start of the one line it prints; empty: none
    } cases[] = {
        {fifo, "", false, "[Tray] Refused pipe: it is neither a regular file nor a folder."},
        {socket.fullServerName(), "", false, "[Tray] Refused socket: it is neither a regular file nor a folder."},
        {"/dev/null", "", false, "[Tray] Refused null: it is neither a regular file nor a folder."},
        {shelf.home.path(), QFileInfo(shelf.home.path()).fileName(), true, "[Tray] Failed to copy "},
        {shelf.base(), "io.kelvane.Kelvane", true, "[Tray] Failed to copy io.kelvane.Kelvane into tray dir: "},
        {shelf.home.path() + "/Photos/", "Photos", false, "[Tray] Left 1 item(s) of Photos out of its copy: "},
        {intoTray, "into-tray.txt", false, ""},
    };
    for (const auto& c : cases) {
        LogCapture log;
        const int before = shelf.tray->count();
        shelf.add({c.path});
        shelf.add({shelf.make("src/next.txt")});
        ASSERT_EQ(shelf.tray->count(), before + (c.held.isEmpty() ? 1 : 2)) << c.path.toStdString();
        EXPECT_TRUE(shelf.names().back().startsWith("next")) << c.path.toStdString();
        EXPECT_EQ(log.lines().size(), c.line.isEmpty() ? 0 : 1) << log.lines().join('\n').toStdString();
        if (!c.line.isEmpty() && !log.lines().isEmpty()) {
            EXPECT_TRUE(log.lines()[0].startsWith(c.line)) << log.lines()[0].toStdString();
        }
        if (c.held.isEmpty())
            continue;
        const TrayFile* held = shelf.tray->files()[std::size_t(before)];
        EXPECT_EQ(held->name(), c.held);
        EXPECT_EQ(QFileInfo(held->path()).path() == shelf.folder(), !c.byReference) << held->path().toStdString();
    }
    // The copied folder holds its picture and not its pipe; nothing in the tray folder went deep.
    EXPECT_TRUE(QFileInfo(shelf.folder() + "/Photos/a.jpg").isFile());
    EXPECT_FALSE(QFileInfo::exists(shelf.folder() + "/Photos/pipe"));
    EXPECT_FALSE(QFileInfo(shelf.folder() + "/into-tray.txt").isSymLink());
    EXPECT_EQ(shelf.read(shelf.folder() + "/into-tray.txt"), "dragged");
    QDirIterator deep(shelf.folder(), QDir::Dirs | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (deep.hasNext())
        EXPECT_LT(deep.next().count('/') - shelf.folder().count('/'), 3) << deep.filePath().toStdString();

    // A copy that is cancelled leaves nothing behind, a file or a folder.
    for (const QString& source : {shelf.make("src/big.bin", QByteArray(1 << 20, 'x')), shelf.home.path() + "/Photos"}) {
        CopyControl control;
        control.cancelled = true;
        EXPECT_TRUE(copyItem(source, shelf.home.path() + "/copy", &control).has_value());
        EXPECT_FALSE(QFileInfo::exists(shelf.home.path() + "/copy"));
    }
}

// A name is shortened as a reader counts characters: an emoji, a flag or an accented letter is
// one and is never split. A name that ends in a dot keeps it before its number, and a dot-file is
// renamed whole.
TEST(Tray, NamesFilesAsAReaderCountsTheirCharacters)
{
    const struct {
        QString name;
        QString shown;
    } names[] = {
        {u"sixteen_chars.md"_s, u"sixteen_chars.md"_s},
        {u"seventeen_char.md"_s, u"sevent...char.md"_s},
        {u"\U0001F469\u200D\U0001F4BB meeting notes 2026.md"_s, u"\U0001F469\u200D\U0001F4BB meet...2026.md"_s},
        {u"\U0001F1EB\U0001F1F7\U0001F1E9\U0001F1EA trip photos.zip"_s, u"\U0001F1EB\U0001F1F7\U0001F1E9\U0001F1EA tri...tos.zip"_s},
        {u"Cafe\u0301 Menu\u0303 26.pdf"_s, u"Cafe\u0301 Menu\u0303 26.pdf"_s}, // 16 as seen, 18 code units
        {u"re\u0301sume\u0301 finale\u0301.docx"_s, u"re\u0301sume\u0301...le\u0301.docx"_s},
    };
    for (const auto& n : names)
        EXPECT_EQ(TrayFile::truncatedName(n.name), n.shown) << n.name.toStdString();

    Shelf shelf;
    const QString trail = shelf.make("src/trail."), dot = shelf.make("src/.bashrc");
    shelf.add({trail});
    shelf.add({trail});
    shelf.add({dot});
    EXPECT_EQ(shelf.names(), (QStringList{"trail.", "trail. 1", ".bashrc"}));
    shelf.tray->beginEditing(shelf.tray->files().back()->idText());
    EXPECT_EQ(shelf.tray->editingName(), ".bashrc");
}

// The ends of a selection follow their files as others go; an end whose file went is forgotten,
// so the selection never reaches a file that is no longer there.
TEST(Tray, SelectionFollowsRemovals)
{
    Shelf shelf;
    for (const char* name : {"src/0", "src/1", "src/2", "src/3", "src/4"})
        shelf.add({shelf.make(name)});
    Tray& tray = *shelf.tray;
    const auto selected = [&] {
        QStringList names;
        for (const TrayFile* f : tray.selectedFiles())
            names << f->name();
        return names.join(',');
    };
    tray.selectFile(tray.files()[4], {});
    tray.handleKey(TrayKey::deleteKey, {});
    tray.selectFile(tray.files()[0], {true, false});
    EXPECT_EQ(selected(), "0");
    tray.handleKey(TrayKey::c, {false, true});
    EXPECT_EQ(shelf.pasteboard.written, QList<QUrl>{QUrl::fromLocalFile(shelf.folder() + "/0")});

    // The anchor on "2" moves with it when "0" goes.
    tray.selectFile(tray.files()[2], {});
    tray.removeFile(tray.files()[0]);
    tray.selectFile(tray.files()[2], {true, false});
    EXPECT_EQ(selected(), "2,3");
    tray.removeFile(tray.files()[2]);
    tray.handleKey(TrayKey::left, {true, false});
    EXPECT_EQ(selected(), "1,2");
}

// What was saved comes back after a restart (files whose copies went are dropped with a line);
// a saved list that cannot be read leaves an empty tray and every file on disk where it was.
TEST(Tray, RestoresWhatWasSavedAndSurvivesABrokenSave)
{
    Shelf shelf;
    shelf.add({shelf.make("src/one.txt")});
    shelf.add({shelf.make("src/two.txt"), shelf.make("src/three.txt")});
    const QJsonObject record = shelf.saved()[1].toObject();
    EXPECT_EQ(record.keys(), (QStringList{"addedAt", "originalName", "stackID", "url"}));
    EXPECT_EQ(record["url"].toString(), QUrl::fromLocalFile(shelf.folder() + "/two.txt").toString());
    EXPECT_FALSE(shelf.saved()[0].toObject().contains("stackID"));

    QFile::remove(shelf.folder() + "/one.txt");
    LogCapture log;
    shelf.restart();
    EXPECT_EQ(shelf.names(), (QStringList{"two.txt", "three.txt"}));
    EXPECT_EQ(shelf.tray->trayItems().size(), 1u);
    EXPECT_EQ(log.lines(), QStringList{"[Tray] Dropping missing file from persisted state: one.txt"});

    const QString mine = shelf.make("Documents/mine.txt", "precious");
    const auto recordOf = [](const QString& path) {
        return "{\"url\": \"" + QUrl::fromLocalFile(path).toEncoded() +
               "\", \"addedAt\": \"2026-01-05T09:00:00Z\", \"originalName\": \"" + QFileInfo(path).fileName().toUtf8() + "\"}";
    };
    const QByteArray bad = "{\"url\": \"relative/path\", \"addedAt\": \"2026-01-05T09:00:00Z\", \"originalName\": \"x\"}";
    const struct {
        QByteArray saved;
        QStringList files;
        QString line; // how the one line it prints starts; empty: none, and nothing is kept aside
    } states[] = {
        {"[{\"url\": \"file:///x\"", {}, "[Tray] Failed to load tray state: "},
        {"not json", {}, "[Tray] Failed to load tray state: "},
        {"{\"url\": 1}", {}, "[Tray] Failed to load tray state: not a list of files"},
        {"[" + bad + "]", {}, "[Tray] Failed to load tray state: left out record 1 (no file URL)"},
        {"[" + recordOf(mine) + "]", {"mine.txt"}, ""},
        {"[" + recordOf(mine) + ", 7, " + bad + ", " + recordOf(shelf.folder() + "/two.txt") + "]", {"mine.txt", "two.txt"},
         "[Tray] Failed to load tray state: left out record 2 (not an object), record 3 (no file URL)"},
    };
    const QString broken = shelf.tray->stateFile() + ".broken";
    for (const auto& state : states) {
        log.clear();
        ASSERT_TRUE(waitUntil([&] { return shelf.tray->isIdle(); }));
        QFile::remove(broken);
        QFile file(shelf.tray->stateFile());
        file.open(QIODevice::WriteOnly | QIODevice::Truncate);
        file.write(state.saved);
        file.close();
        shelf.restart();
        EXPECT_EQ(shelf.names(), state.files) << state.saved.toStdString();
        ASSERT_EQ(log.lines().size(), state.line.isEmpty() ? 0 : 1) << log.lines().join('\n').toStdString();
        if (!state.line.isEmpty()) {
            EXPECT_TRUE(log.lines()[0].startsWith(state.line)) << log.lines()[0].toStdString();
            EXPECT_TRUE(log.lines()[0].endsWith("(kept as tray_state.json.broken)")) << log.lines()[0].toStdString();
        }
        // What could not be read is kept aside as it was, before the good records are saved again.
        EXPECT_EQ(QFileInfo::exists(broken), !state.line.isEmpty());
        if (QFileInfo::exists(broken)) {
            EXPECT_EQ(shelf.read(broken).toUtf8(), state.saved);
        }
        EXPECT_EQ(shelf.saved().size(), state.files.size());
        while (!shelf.tray->files().empty())
            shelf.tray->removeFile(shelf.tray->files().front());
        EXPECT_TRUE(QFileInfo::exists(mine));
        EXPECT_TRUE(QFileInfo::exists(shelf.folder() + "/two.txt"));
    }
}

// The saved list is read beside the notch: the tray answers at once, and what is added meanwhile
// waits for the list and comes after it, so the saved list is never written over unread.
TEST(Tray, LoadsItsSavedListBesideTheNotch)
{
    Shelf shelf;
    shelf.add({shelf.make("src/one.txt"), shelf.make("src/two.txt")});
    {
        test::PausedWorkers paused;
        shelf.restart(false);
        EXPECT_EQ(shelf.tray->count(), 0);
        EXPECT_FALSE(shelf.tray->isIdle());
        shelf.addLater({shelf.make("src/three.txt")});
        EXPECT_EQ(shelf.saved(false).size(), 2);
        paused.release();
        ASSERT_TRUE(waitUntil([&] { return shelf.tray->isIdle(); }));
    }
    EXPECT_EQ(shelf.names(), (QStringList{"one.txt", "two.txt", "three.txt"}));
    EXPECT_EQ(shelf.saved().size(), 3);
}

// Quitting while a copy waits or runs takes a moment at most: the copy is cancelled, nothing of
// it is left in the tray folder, and what was saved stays as it was.
TEST(Tray, QuitsWithinAMomentWhileACopyIsDue)
{
    Shelf shelf;
    shelf.add({shelf.make("src/kept.txt")});
    test::PausedWorkers paused;
    shelf.addLater({shelf.make("src/late.bin", QByteArray(1 << 20, 'x'))});
    shelf.addLater({shelf.make("src/later.txt")});
    QElapsedTimer clock;
    clock.start();
    shelf.tray->shutdown();
    EXPECT_LT(clock.elapsed(), 1500);
    paused.release();
    QThreadPool::globalInstance()->waitForDone();
    QCoreApplication::processEvents();
    EXPECT_EQ(shelf.names(), QStringList{"kept.txt"});
    EXPECT_EQ(QDir(shelf.folder()).entryList(QDir::Files), QStringList{"kept.txt"});
    EXPECT_EQ(shelf.saved().size(), 1);
}

// A file held by reference, outside the tray folder, is followed through its own renames and
// its deletion as they happen. A tray folder deleted from outside is made again for the next
// add, which is then a copy, and is watched again.
TEST(Tray, FollowsFilesItHoldsAndMakesItsFolderAgain)
{
    {
        Shelf shelf(true);
        const QString original = shelf.make("src/held.txt");
        shelf.add({original});
        ASSERT_EQ(shelf.tray->files().front()->path(), original);
        QFile::rename(original, shelf.home.path() + "/src/renamed.txt");
        EXPECT_TRUE(waitUntil([&] { return shelf.names() == QStringList{"renamed.txt"}; }));
        QFile::rename(shelf.home.path() + "/src/renamed.txt", shelf.home.path() + "/src/again.txt");
        EXPECT_TRUE(waitUntil([&] { return shelf.names() == QStringList{"again.txt"}; }));
        QFile::remove(shelf.home.path() + "/src/again.txt");
        EXPECT_TRUE(waitUntil([&] { return shelf.tray->count() == 0; }));
    }
    Shelf shelf;
    shelf.add({shelf.make("src/first.txt")});
    const QString folder = shelf.folder();
    ASSERT_TRUE(QDir(folder).removeRecursively());
    ASSERT_TRUE(waitUntil([&] { return shelf.tray->count() == 0; }));
    shelf.add({shelf.make("src/second.txt")});
    ASSERT_EQ(shelf.names(), QStringList{"second.txt"});
    EXPECT_EQ(shelf.tray->files().front()->path(), folder + "/second.txt");
    QFile::rename(folder + "/second.txt", folder + "/moved.txt");
    EXPECT_TRUE(waitUntil([&] { return shelf.names() == QStringList{"moved.txt"}; }));
}

TEST(Tray, SelectsWithClicksAndKeys)
{
    Shelf shelf;
    for (const char* name : {"src/0", "src/1", "src/2", "src/3", "src/4"})
        shelf.add({shelf.make(name)});
    Tray& tray = *shelf.tray;
    const auto file = [&](int i) { return tray.files()[std::size_t(i)]; };
    const auto selected = [&] {
        QStringList names;
        for (const TrayFile* f : tray.selectedFiles())
            names << f->name();
        return names.join(',');
    };
    const struct {
        std::function<bool()> act;
        QString selection;
        bool taken;
    } steps[] = {
        {[&] { tray.selectFile(file(1), {}); return true; }, "1", true},
        {[&] { tray.selectFile(file(3), {true, false}); return true; }, "1,2,3", true},
        {[&] { tray.selectFile(file(0), {true, false}); return true; }, "0,1", true},
        {[&] { tray.selectFile(file(4), {false, true}); return true; }, "0,1,4", true},
        {[&] { tray.selectFile(file(1), {false, true}); return true; }, "0,4", true},
        {[&] { return tray.handleKey(TrayKey::right, {}); }, "1", true},
        {[&] { return tray.handleKey(TrayKey::right, {true, false}); }, "1,2", true},
        {[&] { return tray.handleKey(TrayKey::right, {true, false}); }, "1,2,3", true},
        {[&] { return tray.handleKey(TrayKey::left, {}); }, "2", true},
        {[&] { return tray.handleKey(TrayKey::a, {}); }, "2", false},
        {[&] { return tray.handleKey(TrayKey::a, {false, true}); }, "0,1,2,3,4", true},
        {[&] { tray.selectFile(file(4), {}); return tray.handleKey(TrayKey::right, {}); }, "4", true},
        {[&] { return tray.handleKey(TrayKey::c, {false, true}); }, "4", true},
        {[&] { return tray.handleKey(TrayKey::space, {}) && tray.previewing(); }, "4", true},
        {[&] { return tray.handleKey(TrayKey::deleteKey, {}); }, "", true},
    };
    for (const auto& step : steps) {
        EXPECT_EQ(step.act(), step.taken) << step.selection.toStdString();
        EXPECT_EQ(selected(), step.selection);
    }
    EXPECT_EQ(shelf.names(), (QStringList{"0", "1", "2", "3"}));
    EXPECT_EQ(shelf.pasteboard.written, QList<QUrl>{QUrl::fromLocalFile(shelf.folder() + "/4")});
    // The previewed file went with its deletion, and the preview with it.
    EXPECT_FALSE(tray.previewing());
}

// Space previews every selected file in the notch, and Space or Escape closes the preview; a file
// that goes leaves it. Files the notch cannot show open in the desktop's previewer, and the text
// shown is only the start of a file, cut between characters.
TEST(Tray, PreviewsTheSelectedFiles)
{
    Shelf shelf;
    shelf.add({shelf.make("src/a.txt", QByteArray("caf\xC3\xA9 ") + QByteArray(5000, 'x')), shelf.make("src/b.pdf"),
               shelf.make("src/c.txt")});
    Tray& tray = *shelf.tray;
    const auto previewed = [&] {
        QStringList names;
        for (const TrayFile* f : tray.previewFiles())
            names << f->name();
        return names.join(',');
    };
    EXPECT_TRUE(tray.handleKey(TrayKey::space, {}));
    EXPECT_FALSE(tray.previewing());
    tray.selectAll();
    const struct {
        TrayKey key;
        bool taken;
        QString shown;
    } keys[] = {{TrayKey::space, true, "a.txt,b.pdf,c.txt"}, {TrayKey::space, true, ""}, {TrayKey::space, true, "a.txt,b.pdf,c.txt"},
                {TrayKey::escape, true, ""}, {TrayKey::escape, false, ""}};
    for (const auto& k : keys) {
        EXPECT_EQ(tray.handleKey(k.key, {}), k.taken);
        EXPECT_EQ(previewed(), k.shown);
        EXPECT_EQ(tray.previewing(), !k.shown.isEmpty());
    }
    tray.toggleQuickLookState();
    tray.removeFile(tray.files()[1]);
    EXPECT_EQ(previewed(), "a.txt,c.txt");
    tray.openInDesktopPreviewer(tray.files()[1]->idText());
    EXPECT_EQ(shelf.sharing.previewed, QList<QUrl>{QUrl::fromLocalFile(shelf.folder() + "/c.txt")});
    EXPECT_EQ(Tray::previewText(tray.files()[0]->path(), 4), "caf");
    EXPECT_EQ(Tray::previewText(tray.files()[0]->path(), 5), "caf\u00E9");
    EXPECT_EQ(Tray::previewText(shelf.home.path() + "/nothing"), "");
}

// Pasting takes files first, then a picture, then text; renaming keeps the extension; a file
// renamed from outside is followed, and one that is deleted leaves the tray.
TEST(Tray, PastesRenamesAndFollowsTheFolder)
{
    Shelf shelf;
    Tray& tray = *shelf.tray;
    LogCapture log;
    tray.pasteFromClipboard();
    EXPECT_EQ(log.lines(), QStringList{"[Tray] Paste: pasteboard contained nothing usable."});
    shelf.pasteboard.text = "hello";
    tray.pasteFromClipboard();
    shelf.pasteboard.picture = QImage(4, 4, QImage::Format_RGB32);
    tray.pasteFromClipboard();
    shelf.pasteboard.files = {QUrl::fromLocalFile(shelf.make("src/report.pdf"))};
    tray.pasteFromClipboard();
    ASSERT_TRUE(waitUntil([&] { return tray.isIdle() && tray.count() == 3; }));
    const QRegularExpression uuid("^[0-9A-F-]{36}\\.(txt|png)$");
    EXPECT_TRUE(uuid.match(shelf.names()[0]).hasMatch() && shelf.names()[0].endsWith(".txt"));
    EXPECT_TRUE(uuid.match(shelf.names()[1]).hasMatch() && shelf.names()[1].endsWith(".png"));
    EXPECT_EQ(shelf.names()[2], "report.pdf");

    TrayFile* report = tray.files()[2];
    tray.selectFile(report, {});
    tray.beginEditing(report->idText());
    tray.setEditingName("summary");
    EXPECT_TRUE(tray.handleKey(TrayKey::returnKey, {}));
    EXPECT_EQ(report->name(), "summary.pdf");
    EXPECT_TRUE(QFileInfo::exists(shelf.folder() + "/summary.pdf"));

    QFile::rename(shelf.folder() + "/summary.pdf", shelf.folder() + "/final.pdf");
    EXPECT_TRUE(waitUntil([&] { return report->name() == "final.pdf"; }));
    EXPECT_EQ(shelf.saved()[2].toObject()["originalName"].toString(), "final.pdf");
    QFile::remove(tray.files()[0]->path());
    EXPECT_TRUE(waitUntil([&] { return tray.count() == 2; }));
}

// The staging folder is this user's own: a link, a folder others may open, one of another user's
// or a file planted at its name is left as it is, with one line, and a fresh private folder
// serves instead. Cleaning never follows a link, takes only this user's own leftovers of other
// applications' drags, and leaves the drops still held.
TEST(StagingArea, StagesOnlyInAPrivateFolderAndCleansWithoutFollowingLinks)
{
    TemporaryHome home;
    ScopedEnvironment env;
    const QString temporary = home.path() + "/tmp", root = temporary + "/KelvaneTemp";
    env.set("TMPDIR", temporary.toUtf8());
    const QString victim = home.path() + "/Documents";
    QDir().mkpath(victim);
    QFile(victim + "/precious.txt").open(QIODevice::WriteOnly);

    const struct {
        const char* name;
        std::function<void()> plant;
        QString why;
    } planted[] = {
        {"a link", [&] { QFile::link(victim, root); }, "it is a symbolic link"},
        {"open to all", [&] { QDir().mkpath(root); QFile::setPermissions(root, QFileDevice::Permissions(0x7777)); }, "other users may open it"},
        {"another user's", [&] { QDir().mkpath(root); (void)::chown(QFile::encodeName(root).constData(), 65534, 65534); ::chmod(QFile::encodeName(root).constData(), 0700); }, "it belongs to another user"},
        {"a file", [&] { QFile(root).open(QIODevice::WriteOnly); }, "it is not a folder"},
        {"nothing", [] {}, ""},
    };
    for (const auto& p : planted) {
        if (QString(p.name) == "another user's" && ::getuid() != 0)
            continue;
        removeItem(root);
        QDir().mkpath(temporary);
        p.plant();
        const bool plantedFile = QFileInfo(root).isFile();
        QFile(root + "/theirs.txt").open(QIODevice::WriteOnly);
        LogCapture log;
        StagingArea staging;
        const auto drop = staging.newDrop();
        ASSERT_TRUE(drop) << p.name;
        struct stat info {};
        ::lstat(QFile::encodeName(QFileInfo(drop->folder()).path()).constData(), &info);
        EXPECT_EQ(info.st_mode & 0777, 0700u) << p.name;
        EXPECT_EQ(info.st_uid, ::getuid()) << p.name;
        if (p.why.isEmpty()) {
            EXPECT_EQ(QFileInfo(drop->folder()).path(), root);
            EXPECT_TRUE(log.lines().isEmpty()) << log.lines().join('\n').toStdString();
        } else {
            EXPECT_NE(QFileInfo(drop->folder()).path(), root) << p.name;
            EXPECT_EQ(log.lines(), QStringList{"[Tray] Refusing the staging folder " + root + ": " + p.why + "; using " +
                                               QFileInfo(drop->folder()).path() + " instead."});
        }
        const QString held = drop->folder();
        QFile(held + "/staged.txt").open(QIODevice::WriteOnly);
        staging.cleanup();
        EXPECT_TRUE(QFileInfo::exists(held + "/staged.txt")) << p.name;
        EXPECT_TRUE(QFileInfo::exists(victim + "/precious.txt")) << p.name;
        // What was planted is left as it was; our own folder loses what no drop holds.
        if (plantedFile)
            EXPECT_TRUE(QFileInfo(root).isFile()) << p.name;
        else
            EXPECT_EQ(QFileInfo::exists(root + "/theirs.txt"), !p.why.isEmpty()) << p.name;
    }

    for (const char* name : {"TemporaryDirectory.abc", "TemporaryDirectory.abcde", "TemporaryDirectory.ab12EF",
                             "TemporaryDirectory.abcdefg", "TemporaryDirectory.ab-de"})
        QDir().mkpath(temporary + "/" + name + "/inside");
    QFile::link(victim, temporary + "/TemporaryDirectory.linkd");
    removeItem(root);
    LogCapture log;
    StagingArea().cleanup();
    EXPECT_EQ(log.lines(), (QStringList{"Removed temporary directory: TemporaryDirectory.ab12EF",
                                        "Removed temporary directory: TemporaryDirectory.abcde"}));
    EXPECT_EQ(QDir(temporary).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
              (QStringList{"TemporaryDirectory.ab-de", "TemporaryDirectory.abc", "TemporaryDirectory.abcdefg",
                           "TemporaryDirectory.linkd"}));
    EXPECT_TRUE(QFileInfo::exists(victim + "/precious.txt"));

    log.clear();
    StagingArea staging;
    staging.newDrop()->removeWhenReleased();
    staging.cleanup();
    EXPECT_EQ(log.lines(), QStringList{"Specific temporary directory removed successfully"});
    EXPECT_FALSE(QFileInfo::exists(root));

    struct Sharing : SharingService {
        int performed = 0;
        void perform(const QList<QUrl>&, std::function<void()>) override { ++performed; }
    } sharing;
    log.clear();
    bool finished = false;
    airDropItems({QUrl("https://example.org")}, sharing, [&] { finished = true; });
    EXPECT_EQ(log.lines(), QStringList{"No file URLs to share via AirDrop"});
    EXPECT_EQ(sharing.performed, 0);
    EXPECT_TRUE(finished);
}
