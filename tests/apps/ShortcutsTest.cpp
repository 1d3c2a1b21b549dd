#include "apps/ShortcutsManager.h"

#include "core/Log.h"
#include "core/ManualScheduler.h"
#include "settings/Keys.h"
#include "support/Polling.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

using namespace kelvane;
using namespace kelvane::test;

namespace {

struct World {
    QTemporaryDir home;
    ManualScheduler scheduler;
    InMemorySettingsDomain domain;
    SettingsStore settings{domain};
    QStringList selection;
    QString folder = home.filePath(QStringLiteral("Shortcuts"));
    std::unique_ptr<ShortcutsManager> shortcuts;

    void start()
    {
        shortcuts = std::make_unique<ShortcutsManager>(
            ShortcutsManager::Dependencies{scheduler, settings, folder, [this] { return selection; }});
    }
    QString write(const QString& name, const QByteArray& script, bool executable = true)
    {
        QDir().mkpath(folder);
        QFile file(folder + QLatin1Char('/') + name);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write("#!/bin/sh\n" + script);
        file.close();
        if (executable)
            file.setPermissions(file.permissions() | QFile::ExeOwner);
        return file.fileName();
    }
    // Lets the folder's change arrive and be read.
    bool settle(const std::function<bool()>& condition)
    {
        return waitUntil([&] {
            scheduler.advance(ShortcutsManager::rescanDelay);
            return condition();
        });
    }
    bool finished(const QString& name)
    {
        return waitUntil([&] {
            const auto* shortcut = shortcuts->shortcut(name);
            return shortcut && shortcut->state != ShortcutsManager::State::running;
        });
    }
    QStringList shownNames() const
    {
        QStringList names;
        for (const QVariant& entry : shortcuts->shown())
            names << entry.toMap().value(QStringLiteral("name")).toString();
        return names;
    }
};

} // namespace

TEST(Shortcuts, ArgumentsReachTheProgramAsTheyAreWithNoShellBetween)
{
    World world;
    const QString out = world.home.filePath(QStringLiteral("arguments"));
    world.write(QStringLiteral("Echo arguments.sh"), "printf '%s\\n' \"$@\" > '" + out.toUtf8() + "'\n");
    world.start();
    const QStringList files{world.home.filePath(QStringLiteral("a file with spaces.txt")),
                            QStringLiteral("it's \"quoted\""), QStringLiteral("$HOME and `date` and ;rm -rf"),
                            QStringLiteral("ünïcode ✓")};
    ASSERT_EQ(world.shortcuts->run(QStringLiteral("Echo arguments.sh"), files), std::nullopt);
    ASSERT_TRUE(world.finished(QStringLiteral("Echo arguments.sh")));
    QFile written(out);
    ASSERT_TRUE(written.open(QIODevice::ReadOnly));
    EXPECT_EQ(QString::fromUtf8(written.readAll()), files.join(QLatin1Char('\n')) + QLatin1Char('\n'));

    // A click gives it the tray's selection.
    world.selection = {QStringLiteral("/tmp/one"), QStringLiteral("/tmp/two words")};
    EXPECT_EQ(world.shortcuts->runWithSelection(QStringLiteral("Echo arguments.sh")), QString());
    ASSERT_TRUE(world.finished(QStringLiteral("Echo arguments.sh")));
    written.seek(0);
    EXPECT_EQ(QString::fromUtf8(written.readAll()), QStringLiteral("/tmp/one\n/tmp/two words\n"));
}

TEST(Shortcuts, EachRunEndsWithItsStatusAndLastLine)
{
    World world;
    world.write(QStringLiteral("ok"), "echo first\necho 'the last line'\necho\n");
    world.write(QStringLiteral("fails"), "echo 'no such thing' >&2\nexit 3\n");
    world.write(QStringLiteral("silent"), "exit 0\n");
    world.write(QStringLiteral("crashes"), "kill -SEGV $$\n");
    world.write(QStringLiteral("reads"), "read answer\necho \"got [$answer]\"\n");
    world.start();
    const struct {
        const char* name;
        ShortcutsManager::State state;
        std::optional<int> status;
        const char* lastLine;
    } cases[] = {
        {"ok", ShortcutsManager::State::done, 0, "the last line"},
        {"fails", ShortcutsManager::State::failed, 3, "no such thing"},
        {"silent", ShortcutsManager::State::done, 0, ""},
        {"crashes", ShortcutsManager::State::failed, std::nullopt, ""},
        // Nothing to read: it goes on at once instead of waiting for ever.
        {"reads", ShortcutsManager::State::done, 0, "got []"},
    };
    QSignalSpy finished(world.shortcuts.get(), &ShortcutsManager::finished);
    for (const auto& c : cases) {
        const QString name = QString::fromLatin1(c.name);
        ASSERT_EQ(world.shortcuts->run(name, {}), std::nullopt) << c.name;
        EXPECT_EQ(world.shortcuts->shortcut(name)->state, ShortcutsManager::State::running);
        EXPECT_EQ(world.shortcuts->run(name, {}), QStringLiteral("%1 is running already.").arg(name));
        ASSERT_TRUE(world.finished(name)) << c.name;
        const auto* shortcut = world.shortcuts->shortcut(name);
        EXPECT_EQ(shortcut->state, c.state) << c.name;
        EXPECT_EQ(shortcut->exitStatus, c.status) << c.name;
        EXPECT_EQ(shortcut->lastLine, QString::fromUtf8(c.lastLine)) << c.name;
        ASSERT_FALSE(finished.isEmpty());
        EXPECT_EQ(finished.last().at(2).toBool(), c.state == ShortcutsManager::State::done);
    }
    EXPECT_EQ(finished.size(), int(std::size(cases)));
    EXPECT_EQ(world.shortcuts->run(QStringLiteral("missing"), {}),
              QStringLiteral("There is no shortcut missing in %1.").arg(world.folder));
}

TEST(Shortcuts, ALongRunIsStoppedAndOneThatIgnoresItIsKilled)
{
    World world;
    world.write(QStringLiteral("sleeps"), "echo started\nexec sleep 30\n");
    world.write(QStringLiteral("stubborn"), "trap '' TERM\necho holding on\nwhile true; do sleep 0.05; done\n");
    world.start();
    for (const char* name : {"sleeps", "stubborn"}) {
        const QString shortcut = QString::fromLatin1(name);
        ASSERT_EQ(world.shortcuts->run(shortcut, {}), std::nullopt);
        QThread::msleep(200);
        world.shortcuts->stop(shortcut);
        if (shortcut == QStringLiteral("stubborn")) {
            // Asked, it stays; once the grace is over it is ended.
            QThread::msleep(300);
            QCoreApplication::processEvents();
            EXPECT_EQ(world.shortcuts->shortcut(shortcut)->state, ShortcutsManager::State::running);
            world.scheduler.advance(ShortcutsManager::stopGrace);
        }
        ASSERT_TRUE(world.finished(shortcut)) << name;
        EXPECT_EQ(world.shortcuts->shortcut(shortcut)->state, ShortcutsManager::State::idle);
        EXPECT_EQ(world.shortcuts->shortcut(shortcut)->exitStatus, std::nullopt);
        EXPECT_EQ(world.shortcuts->shortcut(shortcut)->lastLine, QStringLiteral("Stopped"));
    }
}

TEST(Shortcuts, TheFolderIsFollowedAndWhatCannotRunIsSaidOnce)
{
    World world;
    LogCapture log;
    world.write(QStringLiteral("b.sh"), "true\n");
    const QString readme = world.write(QStringLiteral("README.txt"), "not a program\n", false);
    world.write(QStringLiteral(".hidden"), "true\n");
    world.start();
    EXPECT_EQ(world.shownNames(), QStringList{"b.sh"});
    EXPECT_EQ(log.lines(), QStringList{QStringLiteral("[ShortcutsManager] %1 is not offered: it is not executable "
                                                      "(chmod +x makes it so).")
                                           .arg(readme)});
    EXPECT_TRUE(world.shortcuts->run(QStringLiteral("README.txt"), {})->endsWith(QStringLiteral("is not executable.")));

    // Added, renamed, made executable, removed: each shows without a restart, and the refusal is
    // not said again.
    world.write(QStringLiteral("a.sh"), "true\n");
    ASSERT_TRUE(world.settle([&] { return world.shownNames() == QStringList({"a.sh", "b.sh"}); }))
        << world.shownNames().join(QLatin1Char(',')).toStdString();
    ASSERT_TRUE(QFile::rename(world.folder + QStringLiteral("/b.sh"), world.folder + QStringLiteral("/Z last.sh")));
    ASSERT_TRUE(world.settle([&] { return world.shownNames() == QStringList({"a.sh", "Z last.sh"}); }));
    QFile(readme).setPermissions(QFile(readme).permissions() | QFile::ExeOwner);
    ASSERT_TRUE(world.settle([&] { return world.shownNames() == QStringList({"a.sh", "README.txt", "Z last.sh"}); }));
    ASSERT_TRUE(QFile::remove(world.folder + QStringLiteral("/a.sh")));
    ASSERT_TRUE(world.settle([&] { return world.shownNames() == QStringList({"README.txt", "Z last.sh"}); }));
    EXPECT_EQ(log.lines().size(), 1);

    // Chosen ones, in the chosen order; a link counts as what it points to, a broken one not.
    ASSERT_TRUE(QFile::link(world.folder + QStringLiteral("/Z last.sh"), world.folder + QStringLiteral("/linked")));
    ASSERT_TRUE(QFile::link(world.home.filePath(QStringLiteral("nowhere")), world.folder + QStringLiteral("/broken")));
    ASSERT_TRUE(world.settle([&] { return world.shortcuts->shortcut(QStringLiteral("broken")) != nullptr; }));
    world.settings.update(Keys::shortcutsWidgetSettings(), [](ShortcutsWidgetSettings& s) {
        s.shortcutsToDisplay = {QStringLiteral("linked"), QStringLiteral("gone"), QStringLiteral("broken"),
                                QStringLiteral("README.txt")};
    });
    EXPECT_EQ(world.shownNames(), QStringList({"linked", "README.txt"}));
    EXPECT_EQ(log.lines().size(), 2);
    EXPECT_TRUE(log.lines().last().endsWith(QStringLiteral("broken is not offered: it points to nothing.")));
    EXPECT_EQ(ShortcutsManager::labelOf(QStringLiteral("Resize images.sh")), QStringLiteral("Resize images"));
    EXPECT_EQ(ShortcutsManager::labelOf(QStringLiteral("backup.tar.sh")), QStringLiteral("backup.tar"));
}
