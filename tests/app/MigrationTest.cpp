#include "app/LegacyMigration.h"

#include "core/Log.h"
#include "support/ScopedEnvironment.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSettings>
#include <QUrl>

#include <gtest/gtest.h>

using namespace kelvane;
using kelvane::test::TemporaryHome;

namespace {
struct Home : TemporaryHome {
    QString legacyConf() const { return configPath() + "/kelvanelabs/kelvane.conf"; }
    QString currentConf() const { return configPath() + "/kelvane/kelvane.conf"; }
    QString legacySupport() const { return path() + "/.local/share/com.kelvanelabs.Kelvane"; }
    QString currentSupport() const { return path() + "/.local/share/io.kelvane.Kelvane"; }

    static void write(const QString& file, const QByteArray& content)
    {
        QDir().mkpath(QFileInfo(file).absolutePath());
        QFile f(file);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(content);
    }
    static QByteArray read(const QString& file)
    {
        QFile f(file);
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }
};

QVariant currentValue(const Home& home, const QString& key)
{
    return QSettings(home.currentConf(), QSettings::IniFormat).value(key);
}
} // namespace

TEST(Migration, CopiesLegacyOnlyPreferencesOnce)
{
    Home home;
    {
        QSettings legacy(home.legacyConf(), QSettings::IniFormat);
        legacy.setValue("intro", false);
        legacy.setValue("preferredOpenMode", "tray");
        QSettings current(home.currentConf(), QSettings::IniFormat);
        current.setValue("preferredOpenMode", "tuckle");
    }
    migrateLegacyBundleIdentifier("io.kelvane.Kelvane");
    EXPECT_EQ(currentValue(home, "intro").toString(), "false");
    EXPECT_EQ(currentValue(home, "preferredOpenMode").toString(), "tuckle");
    EXPECT_EQ(currentValue(home, "migratedFromLegacyBundleIdentifier").toString(), "true");

    // A later change in the old domain, or a key the user has since reset, is not copied again.
    QSettings(home.legacyConf(), QSettings::IniFormat).setValue("rememberLastOpenTab", true);
    QSettings(home.currentConf(), QSettings::IniFormat).remove("intro");
    migrateLegacyBundleIdentifier("io.kelvane.Kelvane");
    EXPECT_FALSE(currentValue(home, "rememberLastOpenTab").isValid());
    EXPECT_FALSE(currentValue(home, "intro").isValid());
}

TEST(Migration, OnlyTheCurrentIdentifierMigratesAndAMissingLegacyDomainStillSetsTheFlag)
{
    for (const QString identifier : {"", "org.example.Kelvane"}) {
        Home home;
        QSettings(home.legacyConf(), QSettings::IniFormat).setValue("intro", false);
        migrateLegacyBundleIdentifier(identifier);
        EXPECT_FALSE(QFile::exists(home.currentConf())) << identifier;
    }
    Home home;
    migrateLegacyBundleIdentifier("io.kelvane.Kelvane");
    QSettings current(home.currentConf(), QSettings::IniFormat);
    EXPECT_EQ(current.allKeys(), QStringList{"migratedFromLegacyBundleIdentifier"});
}

// The tray's files and saved list come over; a file that cannot move is reported, stays where it
// was, and does not stop the others.
TEST(Migration, MovesTheTrayFolderAndPointsTheSavedListAtIt)
{
    Home home;
    const QString oldTray = home.legacySupport() + "/TrayFiles";
    Home::write(oldTray + "/a b.txt", "a");
    Home::write(home.legacySupport() + "/clash.txt", "old");
    Home::write(home.currentSupport() + "/clash.txt", "new");
    const QJsonArray records{
        QJsonObject{{"url", QUrl::fromLocalFile(oldTray + "/a b.txt").toString()}, {"originalName", "a b.txt"}},
        QJsonObject{{"url", "file:///elsewhere/c.txt"}, {"originalName", "c.txt"}},
    };
    Home::write(home.legacySupport() + "/tray_state.json", QJsonDocument(records).toJson());

    LogCapture log;
    migrateLegacyBundleIdentifier("io.kelvane.Kelvane");
    EXPECT_EQ(log.lines(), QStringList{"[Migration] Could not move " + home.legacySupport() + "/clash.txt to " +
                                       home.currentSupport() + "/clash.txt: File exists"});
    EXPECT_EQ(Home::read(home.currentSupport() + "/TrayFiles/a b.txt"), "a");
    EXPECT_EQ(Home::read(home.currentSupport() + "/clash.txt"), "new");
    EXPECT_EQ(Home::read(home.legacySupport() + "/clash.txt"), "old");

    const QJsonArray saved = QJsonDocument::fromJson(Home::read(home.currentSupport() + "/tray_state.json")).array();
    ASSERT_EQ(saved.size(), 2);
    EXPECT_EQ(QUrl(saved[0].toObject()["url"].toString()).toLocalFile(), home.currentSupport() + "/TrayFiles/a b.txt");
    EXPECT_EQ(saved[0].toObject()["originalName"], QJsonValue("a b.txt"));
    EXPECT_EQ(saved[1].toObject()["url"], QJsonValue("file:///elsewhere/c.txt"));
}
