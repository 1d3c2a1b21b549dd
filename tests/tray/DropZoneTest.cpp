#include "core/Log.h"
#include "tray/DropZone.h"

#include "TrayFixture.h"

using namespace kelvane;
using namespace std::chrono_literals;
using kelvane::test::FakePasteboard;
using kelvane::test::Shelf;
using kelvane::test::waitUntil;
using Mode = KelvaneState::Mode;

namespace {
struct FakePointer : PointerProbe {
    QPointF at;
    bool down = true;
    QPointF position() const override { return at; }
    bool leftButtonDown() const override { return down; }
};

// Writes its file into the folder it is given, or fails.
struct FakePromise : FilePromiseReceiver {
    QString name;
    bool fails = false;
    void receive(const QString& folder,
                 std::function<void(const std::optional<QUrl>&, const QString&)> done) override
    {
        if (fails)
            return done(std::nullopt, QStringLiteral("the source gave up"));
        QFile file(folder + "/" + name);
        file.open(QIODevice::WriteOnly);
        file.write("promised");
        file.close();
        done(QUrl::fromLocalFile(file.fileName()), {});
    }
};

// A notch's drop zone over a tray in a temporary home; the tray target is on the left of the drop
// area and the AirDrop target on its right.
struct Zone : Shelf {
    KelvaneState kelvane{scheduler, settings};
    FakePointer pointer;
    DropZone zone{{scheduler, settings, kelvane, *tray, *staging, sharing, pointer}};

    Zone()
    {
        zone.bindDropAreaCoords(DropZone::trayTargetID, {0, 40, 200, 100});
        zone.bindDropAreaCoords("airdrop", {220, 40, 100, 100});
    }
    // A drag of these types enters, moves to `at` and drops; `wait`: until the tray has it.
    bool drop(const QStringList& types, QPointF at, bool wait = true)
    {
        pasteboard.offered = types;
        zone.dropEntered(pasteboard);
        zone.dropUpdated(at);
        const bool accepted = zone.performDrop(pasteboard);
        if (wait) {
            EXPECT_TRUE(waitUntil([&] { return tray->isIdle(); }));
        }
        return accepted;
    }
    QString contents(int index) const { return read(tray->files().at(static_cast<size_t>(index))->path()); }
};

const QPointF onTray{50, 60}, onAirDrop{250, 60}, nowhere{210, 10};
} // namespace

// Each pipeline is offered for a drag carrying one of its types, and the target under the
// pointer is the one whose rectangle holds it, among the targets shown.
TEST(DropZone, OffersPipelinesByTypeAndHitTestsTheShownTargets)
{
    const struct {
        QStringList types;
        QStringList offered;
    } offers[] = {
        {{PasteboardType::fileURL}, {"airdrop"}},
        {{PasteboardType::plainText}, {"airdrop"}},
        {{PasteboardType::legacyURL}, {"airdrop"}},
        {{PasteboardType::filePromise, PasteboardType::png}, {}},
    };
    for (const auto& offer : offers) {
        Zone zone;
        zone.pasteboard.offered = offer.types;
        ASSERT_TRUE(zone.zone.viewEntered({0, 0, 10, 10}, zone.pasteboard));
        QStringList ids;
        for (const Pipeline& pipeline : zone.zone.availableActions())
            ids << pipeline.id;
        EXPECT_EQ(ids, offer.offered) << offer.types.join(",").toStdString();
        // The sharing target carries the name of the service that will send, where one runs.
        const bool serviceRuns = offer.types.contains(PasteboardType::plainText);
        zone.sharing.service = serviceRuns ? "KDE Connect" : "";
        QStringList labels;
        for (const QJsonValue& label : zone.zone.stateJson()["labels"].toArray())
            labels << label.toString();
        EXPECT_EQ(labels, offer.offered.isEmpty() ? QStringList{} : QStringList{serviceRuns ? "KDE Connect" : "AirDrop"});
        EXPECT_EQ(zone.kelvane.mode(), Mode::dragging);

        const struct {
            QPointF at;
            std::optional<QString> hovered;
        } points[] = {{onTray, "sheld"}, {onAirDrop, offer.offered.isEmpty() ? std::nullopt : std::optional<QString>("airdrop")},
                      {nowhere, std::nullopt}};
        for (const auto& point : points) {
            zone.zone.dropUpdated(point.at);
            EXPECT_EQ(zone.zone.hoveredDropTargetID(), point.hovered);
            EXPECT_EQ(zone.zone.droppingCoords(), point.at);
        }
    }
}

// Whatever is dropped becomes files in the tray: files (those from the system temporary folder
// staged by a link, their originals left where they were), text, web addresses and promised
// files; a pipeline gets them instead, and its drop folder goes once it has read them.
TEST(DropZone, DeliversEveryKindOfContentToItsTarget)
{
    Zone zone;
    const QString temporary = zone.make("tmp/drag.txt", "dragged");
    zone.pasteboard.files = {QUrl::fromLocalFile(temporary), QUrl::fromLocalFile(zone.make("src/kept.txt"))};
    ASSERT_TRUE(zone.drop({PasteboardType::fileURL}, nowhere));
    EXPECT_EQ(zone.read(temporary), "dragged");
    EXPECT_TRUE(QFileInfo::exists(zone.home.path() + "/src/kept.txt"));
    EXPECT_EQ(zone.names(), (QStringList{"drag.txt", "kept.txt"}));
    EXPECT_EQ(zone.contents(0), "dragged");
    EXPECT_EQ(zone.kelvane.mode(), Mode::tray);

    // The same name from the temporary folder again: each drop stages in a folder of its own.
    QFile::remove(temporary);
    zone.make("tmp/drag.txt", "again");
    zone.pasteboard.files = {QUrl::fromLocalFile(temporary)};
    LogCapture log;
    zone.drop({PasteboardType::fileURL}, onTray);
    EXPECT_TRUE(log.lines().isEmpty()) << log.lines().join('\n').toStdString();
    EXPECT_EQ(zone.contents(2), "again");

    zone.pasteboard.files.clear();
    for (const char* text : {"a note: see you", "a note: see you", "https://example.org/a?b=1&c=2"}) {
        zone.pasteboard.text = text;
        zone.drop({PasteboardType::plainText}, onTray);
    }
    EXPECT_EQ(zone.names().mid(3), (QStringList{"shared_text.txt", "shared_text 1.txt", "shared_url.webloc"}));
    EXPECT_EQ(zone.contents(4), "a note: see you");
    EXPECT_TRUE(zone.contents(5).contains("<key>URL</key>\n\t<string>https://example.org/a?b=1&amp;c=2</string>"));

    zone.pasteboard.text.reset();
    auto promised = std::make_shared<FakePromise>(), broken = std::make_shared<FakePromise>();
    promised->name = "photo.jpg";
    broken->fails = true;
    zone.pasteboard.promises = {broken, promised};
    zone.drop({PasteboardType::filePromise}, onTray);
    EXPECT_EQ(zone.names().back(), "photo.jpg");
    EXPECT_EQ(log.lines().back(), "Error receiving promised file: the source gave up");

    // On the AirDrop target the staged files are shared; the user's own file stays where it was
    // even when nothing could send it, and the tray is left as it was and shown.
    zone.pasteboard.promises.clear();
    const QString share = zone.make("tmp/share.pdf", "mine");
    zone.pasteboard.files = {QUrl::fromLocalFile(share)};
    const auto before = zone.names();
    zone.sharing.holds = true;
    zone.drop({PasteboardType::fileURL}, onAirDrop);
    ASSERT_EQ(zone.sharing.shared.size(), 1);
    const QString staged = zone.sharing.shared[0].toLocalFile();
    EXPECT_TRUE(staged.startsWith(zone.stagingRoot() + "/"));
    EXPECT_EQ(zone.read(staged), "mine");
    zone.sharing.release();
    EXPECT_FALSE(QFileInfo::exists(QFileInfo(staged).path()));
    EXPECT_EQ(zone.read(share), "mine");
    EXPECT_EQ(zone.names(), before);
    EXPECT_EQ(zone.kelvane.mode(), Mode::tray);
}

// Staged files are the drop's own until its add is done: removing the last tray file, a second
// text drop and a pipeline drop, all while the copies wait, leave every add its own files; and
// no file outside the tray's folders is moved or deleted.
TEST(DropZone, StagedFilesOutliveEveryCleanupThatRacesTheirAdd)
{
    Zone zone;
    zone.add({zone.make("src/only.txt")});
    const QString users = zone.make("tmp/download.zip", "zip");
    {
        test::PausedWorkers paused;
        for (const char* text : {"first words", "second words"}) {
            zone.pasteboard.text = text;
            zone.drop({PasteboardType::plainText}, onTray, false);
        }
        zone.pasteboard.text.reset();
        zone.pasteboard.files = {QUrl::fromLocalFile(users)};
        zone.drop({PasteboardType::fileURL}, onTray, false);
        zone.sharing.holds = true;
        zone.drop({PasteboardType::fileURL}, onAirDrop, false);
        zone.tray->removeFile(zone.tray->files().front());
        EXPECT_EQ(zone.tray->count(), 0);
        paused.release();
        ASSERT_TRUE(waitUntil([&] { return zone.tray->isIdle(); }));
    }
    EXPECT_EQ(zone.names(), (QStringList{"shared_text.txt", "shared_text 1.txt", "download.zip"}));
    EXPECT_EQ(zone.contents(0), "first words");
    EXPECT_EQ(zone.contents(1), "second words");
    EXPECT_EQ(zone.contents(2), "zip");
    const QString shared = zone.sharing.shared.value(0).toLocalFile();
    EXPECT_EQ(zone.read(shared), "zip");
    // The drops added to the tray are gone with their adds; the pipeline's waits for its service.
    EXPECT_EQ(QDir(zone.stagingRoot()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
              QStringList{QFileInfo(shared).dir().dirName()});
    zone.sharing.release();
    EXPECT_FALSE(QFileInfo::exists(shared));
    EXPECT_EQ(zone.read(users), "zip");
    EXPECT_TRUE(QFileInfo::exists(zone.home.path() + "/src/only.txt"));
    while (zone.tray->count() > 0)
        zone.tray->removeFile(zone.tray->files().front());
    EXPECT_FALSE(QFileInfo::exists(zone.stagingRoot()));
    EXPECT_EQ(zone.read(users), "zip");
}

// A drag of nothing the notch can take leaves it as it is. After a pipeline an empty tray closes;
// a drop on the tray shows it even when nothing came of the drop; suppressed drops are refused
// whole.
TEST(DropZone, ClosesWhenTheTrayIsEmptyAndRefusesSuppressedDrops)
{
    Zone zone;
    for (const QStringList& types : {QStringList{}, QStringList{PasteboardType::png}, QStringList{"application/x-color"}}) {
        zone.pasteboard.offered = types;
        EXPECT_FALSE(zone.zone.viewEntered({0, 0, 10, 10}, zone.pasteboard)) << types.join(',').toStdString();
        EXPECT_EQ(zone.kelvane.mode(), Mode::closed);
    }
    zone.pasteboard.files = {QUrl::fromLocalFile(zone.make("src/a.pdf"))};
    zone.drop({PasteboardType::fileURL}, onAirDrop);
    EXPECT_EQ(zone.sharing.shared.size(), 1);
    EXPECT_EQ(zone.kelvane.mode(), Mode::closed);

    zone.pasteboard.files.clear();
    zone.drop({PasteboardType::png}, onTray);
    EXPECT_EQ(zone.kelvane.mode(), Mode::tray);
    EXPECT_EQ(zone.tray->count(), 0);

    zone.zone.setDropsSuppressed(true);
    zone.pasteboard.files = {QUrl::fromLocalFile(zone.home.path() + "/src/a.pdf")};
    EXPECT_FALSE(zone.drop({PasteboardType::fileURL}, onTray));
    EXPECT_FALSE(zone.zone.viewEntered({0, 0, 10, 10}, zone.pasteboard));
    EXPECT_EQ(zone.kelvane.mode(), Mode::tray);
    EXPECT_EQ(zone.tray->count(), 0);
}

// A leave reported while the button is held near the notch is not yet the end of the drag: only
// straying more than 12 points from every rectangle the view had, or letting go, ends it.
TEST(DropZone, LeavingWaitsWhileTheButtonIsHeldNearTheNotch)
{
    const struct {
        const char* name;
        QPointF at;
        bool down;
        bool trayHasFiles;
        Mode after;
    } cases[] = {
        {"held within the margin", {311, 51}, true, false, Mode::dragging},
        {"held just above the screen's edge", {150, -11}, true, false, Mode::dragging},
        {"held too far away", {313, 20}, true, false, Mode::closed},
        {"let go inside", {150, 20}, false, false, Mode::closed},
        {"gone with files in the tray", {400, 400}, true, true, Mode::tray},
    };
    for (const auto& c : cases) {
        Zone zone;
        if (c.trayHasFiles)
            zone.add({zone.make("src/a.pdf")});
        zone.pasteboard.offered = {PasteboardType::fileURL};
        // The view grows from the closed notch to the open drop area as the drag goes on.
        zone.zone.viewEntered({100, 0, 100, 10}, zone.pasteboard);
        zone.zone.viewUpdated({0, 0, 300, 40}, onTray);
        zone.pointer.at = c.at;
        zone.pointer.down = c.down;
        zone.zone.viewExited({0, 0, 300, 40});
        zone.scheduler.advance(40ms);
        EXPECT_EQ(zone.kelvane.mode(), Mode::dragging) << c.name;
        zone.scheduler.advance(200ms);
        EXPECT_EQ(zone.kelvane.mode(), c.after) << c.name;
        EXPECT_EQ(zone.zone.exitTimerActive(), c.after == Mode::dragging) << c.name;
        if (c.after == Mode::dragging) {
            // Coming back cancels the wait; moving off later ends it within one tick.
            zone.zone.viewUpdated({0, 0, 300, 40}, onTray);
            EXPECT_FALSE(zone.zone.exitTimerActive());
            zone.zone.viewExited({0, 0, 300, 40});
            zone.pointer.at = {500, 500};
            zone.scheduler.advance(50ms);
            EXPECT_EQ(zone.kelvane.mode(), Mode::closed) << c.name;
            EXPECT_FALSE(zone.zone.droppingCoords().has_value());
            EXPECT_TRUE(zone.zone.availableActions().isEmpty());
        }
    }
}
