#include "activities/ActiveLiveActivitiesManager.h"
#include "core/Log.h"
#include "core/ManualScheduler.h"
#include "settings/SettingsStore.h"
#include "tray/TemporaryFiles.h"
#include "tray/Tray.h"

#include "TrayFixture.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocalServer>

#include <gtest/gtest.h>

using namespace kelvane;
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

    QDir().mkpath(applicationTemporaryFolder());
    while (!shelf.tray->files().empty())
        shelf.tray->removeFile(shelf.tray->files().front());
    EXPECT_TRUE(shelf.saved().isEmpty());
    EXPECT_TRUE(QFileInfo::exists(shelf.folder() + "/a 2.pdf"));
    EXPECT_FALSE(QFileInfo::exists(applicationTemporaryFolder()));
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
    EXPECT_EQ(TrayFile::truncatedName("sixteen_chars.md"), "sixteen_chars.md");
    EXPECT_EQ(TrayFile::truncatedName("seventeen_char.md"), "sevent...char.md");
}

// A file from the system temporary folder survives its source; a copy that fails keeps the
// original by reference and says so.
TEST(Tray, OwnsItsCopiesAndFallsBackToTheOriginal)
{
    Shelf shelf;
    const QString temporary = shelf.make("tmp/drag.txt", "dragged");
    shelf.add({temporary});
    QFile::remove(temporary);
    QFile copy(shelf.tray->files().front()->path());
    ASSERT_TRUE(copy.open(QIODevice::ReadOnly));
    EXPECT_EQ(copy.readAll(), "dragged");

    QLocalServer socket;
    ASSERT_TRUE(socket.listen(shelf.home.path() + "/src/socket"));
    LogCapture log;
    shelf.add({socket.fullServerName()});
    EXPECT_EQ(shelf.tray->files().back()->path(), socket.fullServerName());
    ASSERT_EQ(log.lines().size(), 1);
    EXPECT_TRUE(log.lines()[0].startsWith("[Tray] Failed to copy socket into tray dir: "));
    EXPECT_TRUE(log.lines()[0].endsWith(". Using original reference."));
    EXPECT_FALSE(QFileInfo::exists(shelf.folder() + "/socket"));
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
    const QByteArray outside = "[{\"url\": \"" + QUrl::fromLocalFile(mine).toEncoded() +
                               "\", \"addedAt\": \"2026-01-05T09:00:00Z\", \"originalName\": \"mine.txt\"}]";
    const struct {
        QByteArray saved;
        int files;
    } states[] = {{"[{\"url\": \"file:///x\"", 0}, {"not json", 0}, {"{\"url\": 1}", 0},
                  {"[{\"url\": \"relative/path\"}]", 0}, {outside, 1}};
    for (const auto& state : states) {
        log.clear();
        QFile file(shelf.tray->stateFile());
        file.open(QIODevice::WriteOnly | QIODevice::Truncate);
        file.write(state.saved);
        file.close();
        shelf.restart();
        EXPECT_EQ(shelf.tray->count(), state.files) << state.saved.toStdString();
        EXPECT_EQ(log.lines().size(), state.files == 0 ? 1 : 0) << log.lines().join('\n').toStdString();
        while (!shelf.tray->files().empty())
            shelf.tray->removeFile(shelf.tray->files().front());
        EXPECT_TRUE(QFileInfo::exists(mine));
        EXPECT_TRUE(QFileInfo::exists(shelf.folder() + "/two.txt"));
    }
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
        {[&] { return tray.handleKey(TrayKey::space, {}); }, "4", true},
        {[&] { return tray.handleKey(TrayKey::deleteKey, {}); }, "", true},
    };
    for (const auto& step : steps) {
        EXPECT_EQ(step.act(), step.taken) << step.selection.toStdString();
        EXPECT_EQ(selected(), step.selection);
    }
    EXPECT_EQ(shelf.names(), (QStringList{"0", "1", "2", "3"}));
    EXPECT_EQ(shelf.pasteboard.written, QList<QUrl>{QUrl::fromLocalFile(shelf.folder() + "/4")});
    EXPECT_EQ(shelf.sharing.previewed, QList<QUrl>{QUrl::fromLocalFile(shelf.folder() + "/4")});
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

TEST(TemporaryFiles, CleansItsFolderAndWhatDragsLeaveBehind)
{
    TemporaryHome home;
    ScopedEnvironment env;
    const QString temporary = home.path() + "/tmp";
    env.set("TMPDIR", temporary.toUtf8());
    for (const char* name : {"TemporaryDirectory.abc", "TemporaryDirectory.abcde", "TemporaryDirectory.ab12EF",
                             "TemporaryDirectory.abcdefg", "TemporaryDirectory.ab-de"})
        QDir().mkpath(temporary + "/" + name + "/inside");
    LogCapture log;
    cleanupTemporaryDirectory();
    EXPECT_EQ(log.lines(), (QStringList{"Removed temporary directory: TemporaryDirectory.ab12EF",
                                        "Removed temporary directory: TemporaryDirectory.abcde"}));
    EXPECT_EQ(QDir(temporary).entryList(QDir::Dirs | QDir::NoDotAndDotDot),
              (QStringList{"TemporaryDirectory.ab-de", "TemporaryDirectory.abc", "TemporaryDirectory.abcdefg"}));

    log.clear();
    QDir().mkpath(applicationTemporaryFolder() + "/drop");
    cleanupTemporaryDirectory();
    EXPECT_EQ(log.lines(), QStringList{"Specific temporary directory removed successfully"});

    struct Sharing : SharingService {
        int performed = 0;
        void perform(const QList<QUrl>&) override { ++performed; }
    } sharing;
    log.clear();
    airDropItems({QUrl("https://example.org")}, sharing);
    EXPECT_EQ(log.lines(), QStringList{"No file URLs to share via AirDrop"});
    EXPECT_EQ(sharing.performed, 0);
}
