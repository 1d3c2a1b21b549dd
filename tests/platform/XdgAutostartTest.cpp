#include "platform/linux/XdgAutostart.h"

#include "support/ScopedEnvironment.h"

#include <QDir>
#include <QFile>
#include <QProcess>

#include <glib.h>

#include <gtest/gtest.h>

using namespace kelvane;
using namespace kelvane::test;

namespace {
void write(const QString& path, const QByteArray& text)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(text);
}

// What desktop-file-validate says of an entry: nothing when it is valid.
QString validate(const QString& path)
{
    QProcess validator;
    validator.setProcessChannelMode(QProcess::MergedChannels);
    validator.start(QStringLiteral("desktop-file-validate"), {path});
    if (!validator.waitForFinished(10000))
        return QStringLiteral("desktop-file-validate did not run");
    return QString::fromUtf8(validator.readAll()).trimmed() + (validator.exitCode() ? QStringLiteral(" (failed)") : QString());
}

// The program an entry's Exec line runs, read as the desktop reads it (a doubled percent sign is
// one).
QString execProgram(const QString& path)
{
    GKeyFile* file = g_key_file_new();
    QString program;
    if (g_key_file_load_from_file(file, QFile::encodeName(path).constData(), G_KEY_FILE_NONE, nullptr)) {
        gchar* exec = g_key_file_get_string(file, "Desktop Entry", "Exec", nullptr);
        gchar** argv = nullptr;
        if (exec && g_shell_parse_argv(exec, nullptr, &argv, nullptr))
            program = QString::fromUtf8(argv[0]).replace(QStringLiteral("%%"), QStringLiteral("%"));
        g_strfreev(argv);
        g_free(exec);
    }
    g_key_file_free(file);
    return program;
}
} // namespace

// Starting at login writes a valid entry that runs the program (a path with spaces and shell
// characters included) and stopping removes it; a system entry starts the program until the
// user's own entry hides it; an entry the desktop switched off counts as off; a folder that
// cannot be written is told.
TEST(XdgAutostart, WritesAValidEntryFollowsWhatIsThereAndSaysWhenItCannot)
{
    TemporaryHome home;
    ScopedEnvironment env;
    const QString system = home.path() + "/etc-xdg";
    env.set("XDG_CONFIG_DIRS", system.toUtf8());
    const QString program = home.path() + "/My Apps/$HOME's \"kelvane\" 100%";
    XdgAutostart autostart(QStringLiteral("io.kelvane.Kelvane"), QStringLiteral("Kelvane"), program);
    const QString entry = autostart.entryPath();
    EXPECT_EQ(entry, home.configPath() + "/autostart/io.kelvane.Kelvane.desktop");
    EXPECT_FALSE(autostart.isEnabled());

    ASSERT_EQ(autostart.setEnabled(true), std::nullopt);
    EXPECT_TRUE(XdgAutostart(QStringLiteral("io.kelvane.Kelvane"), {}, {}).isEnabled());
    EXPECT_EQ(validate(entry), QString());
    EXPECT_EQ(execProgram(entry), program);
    ASSERT_EQ(autostart.setEnabled(false), std::nullopt);
    EXPECT_FALSE(QFile::exists(entry));
    EXPECT_FALSE(autostart.isEnabled());

    write(system + "/autostart/io.kelvane.Kelvane.desktop",
          "[Desktop Entry]\nType=Application\nName=Kelvane\nExec=/usr/bin/kelvane\n");
    EXPECT_TRUE(autostart.isEnabled());
    ASSERT_EQ(autostart.setEnabled(false), std::nullopt);
    EXPECT_TRUE(QFile::exists(entry));
    EXPECT_FALSE(autostart.isEnabled());
    EXPECT_EQ(validate(entry), QString());
    ASSERT_EQ(autostart.setEnabled(true), std::nullopt);
    EXPECT_FALSE(QFile::exists(entry)) << "the system's entry is enough";
    EXPECT_TRUE(autostart.isEnabled());
    QFile::remove(system + "/autostart/io.kelvane.Kelvane.desktop");

    const struct {
        QByteArray text;
        bool enabled;
    } written[] = {
        {"[Desktop Entry]\nType=Application\nName=K\nExec=k\n", true},
        {"[Desktop Entry]\nType=Application\nName=K\nExec=k\nX-GNOME-Autostart-enabled=false\n", false},
        {"[Desktop Entry]\nType=Application\nName=K\nExec=k\nHidden=true\n", false},
        {"not an entry at all \xff\n", false},
    };
    for (const auto& w : written) {
        write(entry, w.text);
        EXPECT_EQ(autostart.isEnabled(), w.enabled) << w.text.constData();
    }

    QFile::remove(entry);
    QDir(home.configPath() + "/autostart").removeRecursively();
    write(home.configPath() + "/autostart", "a file where the folder should be");
    const auto error = autostart.setEnabled(true);
    ASSERT_TRUE(error.has_value());
    EXPECT_TRUE(error->contains(entry)) << error->toStdString();
    EXPECT_FALSE(autostart.isEnabled());
}
