#include "platform/linux/GioApplicationCatalog.h"

#include "apps/QuickAppsManager.h"
#include "core/Log.h"
#include "support/Polling.h"
#include "support/ScopedEnvironment.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace kelvane;
using namespace kelvane::test;

namespace {

// A folder of desktop entries as a distribution installs them, read in German, whose program
// records how it was started.
struct Desktop {
    QTemporaryDir root;
    ScopedEnvironment env;
    QString applications = root.filePath(QStringLiteral("share/applications"));
    QString record = root.filePath(QStringLiteral("started"));

    Desktop()
    {
        QDir().mkpath(applications);
        QDir().mkpath(root.filePath(QStringLiteral("home")));
        // Set before GLib first reads them: it keeps them for the life of the process.
        env.set("XDG_DATA_DIRS", root.filePath(QStringLiteral("share")).toUtf8());
        env.set("XDG_DATA_HOME", root.filePath(QStringLiteral("home")).toUtf8());
        env.set("LANGUAGE", "de");
        env.set("LANG", "de_DE.UTF-8");
        const QString recorder = root.filePath(QStringLiteral("recorder"));
        write(recorder, "#!/bin/sh\n{ echo \"id=$DESKTOP_STARTUP_ID\"; printf '%s\\n' \"$@\"; } > '" +
                            record.toUtf8() + ".part' && mv '" + record.toUtf8() + ".part' '" + record.toUtf8() + "'\n");
        QFile::setPermissions(recorder, QFile::permissions(recorder) | QFile::ExeOwner);
        const QByteArray exec = "Exec=" + recorder.toUtf8();
        entry("calc", "Name=Calculator\nName[de]=Taschenrechner\nGenericName=Calculator\nKeywords=math;sum;\n"
                      "Icon=accessories-calculator\n" + exec + " %F\nStartupNotify=true\nActions=new-window;\n\n"
                      "[Desktop Action new-window]\nName=New Window\nName[de]=Neues Fenster\n" + exec + " --new-window\n");
        entry("editor", "Name=Text Editor\nKeywords=notes;write;\nIcon=/opt/editor/icon.png\n" + exec + " %F\n");
        entry("settings-helper", "Name=Helper\nNoDisplay=true\n" + exec + "\n");
        entry("removed", "Name=Removed\nHidden=true\n" + exec + "\n");
        entry("needs-tool", "Name=Needs a tool\nTryExec=/nonexistent/tool\n" + exec + "\n");
        write(applications + QStringLiteral("/broken.desktop"), "this is not a desktop entry\n[[[\n");
    }
    static void write(const QString& path, const QByteArray& contents)
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(contents);
    }
    void entry(const char* name, const QByteArray& body)
    {
        write(applications + QLatin1Char('/') + QLatin1String(name) + QStringLiteral(".desktop"),
              "[Desktop Entry]\nType=Application\n" + body);
    }
    QStringList started()
    {
        QStringList lines;
        if (!waitUntil([&] { return QFile::exists(record); }))
            return lines;
        QFile file(record);
        if (file.open(QIODevice::ReadOnly))
            lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        QFile::remove(record);
        return lines;
    }
};

} // namespace

TEST(GioApplicationCatalog, ListsWhatAPersonMayChooseInTheirLanguageAndStartsIt)
{
    Desktop desktop;
    GioApplicationCatalog catalog;
    const std::vector<Application> installed = catalog.installed();
    QStringList ids;
    for (const Application& app : installed)
        ids << app.id;
    ids.sort();
    // Not shown in menus, hidden, without its program, or not an entry at all: left out.
    EXPECT_EQ(ids, QStringList({"calc.desktop", "editor.desktop"}));
    const auto calc = std::ranges::find(installed, QStringLiteral("calc.desktop"), &Application::id);
    ASSERT_NE(calc, installed.end());
    EXPECT_EQ(calc->name, "Taschenrechner");
    EXPECT_EQ(calc->keywords, QStringList({"math", "sum"}));
    EXPECT_EQ(calc->icon, "accessories-calculator");
    EXPECT_EQ(calc->actions, (std::vector<Application::Action>{{"new-window", "Neues Fenster"}}));
    const auto editor = std::ranges::find(installed, QStringLiteral("editor.desktop"), &Application::id);
    EXPECT_EQ(editor->icon, "/opt/editor/icon.png");

    // Started with files as they are, and with a startup id; an action with its own command.
    const QString odd = desktop.root.filePath(QStringLiteral("a file with spaces & $signs.txt"));
    EXPECT_EQ(catalog.launch(QStringLiteral("calc.desktop"), {}, {odd}), std::nullopt);
    QStringList started = desktop.started();
    ASSERT_EQ(started.size(), 2) << started.join(QLatin1Char('|')).toStdString();
    EXPECT_TRUE(started[0].startsWith(QStringLiteral("id=kelvane-"))) << started[0].toStdString();
    EXPECT_EQ(started[1], odd);
    EXPECT_EQ(catalog.launch(QStringLiteral("calc.desktop"), QStringLiteral("new-window"), {}), std::nullopt);
    started = desktop.started();
    ASSERT_EQ(started.size(), 2);
    EXPECT_EQ(started[1], "--new-window");
    EXPECT_EQ(catalog.launch(QStringLiteral("gone.desktop"), {}, {}), QStringLiteral("gone.desktop is not installed."));
}

TEST(GioApplicationCatalog, AnUninstalledQuickAppLeavesTheRowWithOneLine)
{
    Desktop desktop;
    GioApplicationCatalog catalog;
    LogCapture log;
    QuickAppsManager apps(catalog, desktop.root.filePath(QStringLiteral("data")));
    ASSERT_EQ(apps.add(QStringLiteral("calc.desktop")), QString());
    ASSERT_EQ(apps.add(QStringLiteral("editor.desktop")), QString());
    ASSERT_TRUE(QFile::remove(desktop.applications + QStringLiteral("/editor.desktop")));
    ASSERT_TRUE(waitUntil([&] { return apps.chosenIds() == QStringList{"calc.desktop"}; }, 10000));
    EXPECT_EQ(log.lines(),
              QStringList{"[QuickAppsManager] editor.desktop is no longer installed; it left the quick apps."});
    // Installed again, it is offered but not chosen again by itself.
    desktop.entry("editor", "Name=Text Editor\nExec=true\n");
    ASSERT_TRUE(waitUntil([&] { return apps.application(QStringLiteral("editor.desktop")) != nullptr; }, 10000));
    EXPECT_EQ(apps.chosenIds(), QStringList{"calc.desktop"});
}
