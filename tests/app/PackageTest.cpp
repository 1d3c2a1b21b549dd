#include "support/AgentProcess.h"
#include "support/Polling.h"
#include "support/ScopedEnvironment.h"
#include "support/SessionBus.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QTextStream>

#include <gtest/gtest.h>

#include <unistd.h>

using namespace kelvane::test;

namespace {
QString packageIn(const QString& folder)
{
    const QStringList found = QDir(folder).entryList({"kelvane_" KELVANE_VERSION "_*.deb"}, QDir::Files);
    return found.size() == 1 ? folder + "/" + found.first() : QString();
}
} // namespace

// The Debian package built from this tree: its dependencies declared and present, installed into
// a fresh root, its desktop entry and metadata valid, and the installed agent started on demand
// by the session bus through its service file, answering kelvanectl; removed again, nothing stays.
TEST(Package, InstallsIntoAFreshRootIsValidAndTheBusStartsTheInstalledAgent)
{
    TemporaryHome home;
    QTemporaryDir work;
    const QString out = work.path() + "/out";
    const Result packed = run("cpack", {"--config", KELVANE_BUILD_DIR "/CPackConfig.cmake", "-B", out}, 110000);
    ASSERT_EQ(packed.status, 0) << packed.out.toStdString() << packed.err.toStdString();
    const QString deb = packageIn(out);
    ASSERT_FALSE(deb.isEmpty()) << QDir(out).entryList().join(' ').toStdString();

    // The libraries found by their symbols, the modules loaded at run time by name.
    const QString depends = run("dpkg-deb", {"-f", deb, "Depends"}).out;
    for (const char* needed : {"libqt6core6", "libqt6quick6", "qml6-module-qtquick-controls", "libqt6svg6"})
        EXPECT_TRUE(depends.contains(QLatin1StringView(needed))) << needed << " in " << depends.toStdString();
    // What apt would do with it here: install it alone, every dependency being met. Recommended
    // packages are the user's choice and are left out of the plan.
    if (geteuid() == 0) {
        const Result plan =
            run("apt-get", {"-s", "-o", "Debug::NoLocking=1", "--no-install-recommends", "install", deb}, 60000);
        EXPECT_EQ(plan.status, 0) << plan.err.toStdString();
        QStringList installs;
        for (const QString& line : plan.out.split('\n'))
            if (line.startsWith("Inst "))
                installs << line.section(' ', 1, 1);
        EXPECT_EQ(installs, QStringList{"kelvane"}) << plan.out.toStdString();
    } else {
        std::cout << "Not root: apt's plan for the package is not checked.\n";
    }

    // A fresh root with an empty package database.
    const QString root = work.path() + "/root";
    for (const char* sub : {"/var/lib/dpkg/info", "/var/lib/dpkg/updates", "/var/lib/dpkg/triggers"})
        QDir().mkpath(root + sub);
    QFile(root + "/var/lib/dpkg/status").open(QIODevice::WriteOnly);
    const QStringList dpkg{"--root=" + root, "--log=/dev/null", "--force-depends", "--force-not-root",
                           "--force-script-chrootless"};
    const Result installed = run("dpkg", dpkg + QStringList{"-i", deb});
    ASSERT_EQ(installed.status, 0) << installed.out.toStdString() << installed.err.toStdString();

    const QString usr = root + "/usr";
    for (const char* file : {"/bin/kelvane", "/bin/kelvanectl", "/share/applications/io.kelvane.Kelvane.desktop",
                             "/share/metainfo/io.kelvane.Kelvane.metainfo.xml",
                             "/share/icons/hicolor/scalable/apps/io.kelvane.Kelvane.svg",
                             "/share/icons/hicolor/48x48/apps/io.kelvane.Kelvane.png",
                             "/share/icons/hicolor/256x256/apps/io.kelvane.Kelvane.png",
                             "/share/dbus-1/services/io.kelvane.Kelvane.service", "/share/man/man1/kelvane.1",
                             "/share/man/man1/kelvanectl.1", "/share/bash-completion/completions/kelvanectl",
                             "/share/zsh/vendor-completions/_kelvanectl", "/share/doc/kelvane/CHANGELOG.md"})
        EXPECT_TRUE(QFile::exists(usr + file)) << file;
    const Result desktop = run("desktop-file-validate", {usr + "/share/applications/io.kelvane.Kelvane.desktop"});
    EXPECT_EQ(desktop.status, 0) << desktop.out.toStdString() << desktop.err.toStdString();
    const Result metainfo =
        run("appstreamcli", {"validate", "--no-net", usr + "/share/metainfo/io.kelvane.Kelvane.metainfo.xml"});
    EXPECT_EQ(metainfo.status, 0) << metainfo.out.toStdString() << metainfo.err.toStdString();
    const Result manual = run("man", {"--warnings", "-l", "-Tutf8", usr + "/share/man/man1/kelvanectl.1"});
    EXPECT_EQ(manual.status, 0) << manual.err.toStdString();
    EXPECT_TRUE(manual.err.isEmpty()) << manual.err.toStdString();

    // The completions: bash's offers the words of each place, zsh's reads.
    const QString bash = usr + "/share/bash-completion/completions/kelvanectl";
    const struct {
        const char* line;
        const char* offered;
    } completions[] = {{"kelvanectl settings get gen", "generalSettings"},
                       {"kelvanectl show-settings li", "liquid liveActivities"},
                       {"kelvanectl ti", "timer"},
                       {"kelvanectl timer p", "pause"}};
    for (const auto& c : completions) {
        const Result offered = run("bash", {"-c", "source /usr/share/bash-completion/bash_completion; source \"$1\"; "
                                                  "read -ra COMP_WORDS <<< \"$2\"; COMP_CWORD=$((${#COMP_WORDS[@]}-1)); "
                                                  "COMP_LINE=\"$2\"; COMP_POINT=${#COMP_LINE}; _kelvanectl; echo \"${COMPREPLY[*]}\"",
                                           "complete", bash, c.line});
        EXPECT_EQ(offered.out.trimmed(), c.offered) << c.line << offered.err.toStdString();
    }
    const Result zsh = run("zsh", {"-n", usr + "/share/zsh/vendor-completions/_kelvanectl"});
    EXPECT_EQ(zsh.status, 0) << zsh.err.toStdString();

    // The bus starts the installed agent when kelvanectl asks for it: its service file, pointed
    // at the fresh root instead of /usr.
    QFile service(usr + "/share/dbus-1/services/io.kelvane.Kelvane.service");
    ASSERT_TRUE(service.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(service.readAll());
    EXPECT_TRUE(text.contains("Name=io.kelvane.Kelvane\n") && text.contains("Exec=/usr/bin/kelvane\n")) << text.toStdString();
    const QString services = work.path() + "/services";
    QDir().mkpath(services);
    QFile moved(services + "/io.kelvane.Kelvane.service");
    ASSERT_TRUE(moved.open(QIODevice::WriteOnly));
    moved.write(QString(text).replace("Exec=/usr/bin/kelvane", "Exec=" + usr + "/bin/kelvane").toUtf8());
    moved.close();
    {
        SessionBus bus({services});
        const QString ctl = usr + "/bin/kelvanectl";
        const Result version = run(ctl, {"--version"});
        EXPECT_EQ(version.out, "kelvanectl " KELVANE_VERSION "\n");
        Result state;
        EXPECT_TRUE(waitUntil(
            [&] {
                state = run(ctl, {"state"});
                return state.status == 0 && QJsonDocument::fromJson(state.out.toUtf8())["notches"].toArray().size() == 2;
            },
            15000))
            << state.status << " " << state.out.toStdString() << state.err.toStdString();
        const Result quit = run(ctl, {"quit"});
        EXPECT_EQ(quit.status, 0) << quit.err.toStdString();
    }

    const Result removed = run("dpkg", dpkg + QStringList{"-r", "kelvane"});
    EXPECT_EQ(removed.status, 0) << removed.err.toStdString();
    QStringList left;
    for (QDirIterator it(usr, QDir::Files, QDirIterator::Subdirectories); it.hasNext();)
        left << it.next();
    EXPECT_TRUE(left.isEmpty()) << left.join(", ").toStdString();
}
