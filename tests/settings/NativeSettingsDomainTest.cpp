#include "settings/NativeSettingsDomain.h"
#include "settings/SettingsStore.h"

#include "core/Log.h"
#include "support/Polling.h"
#include "support/ScopedEnvironment.h"

#include <QFile>
#include <QSettings>
#include <QSignalSpy>

#include <gtest/gtest.h>

using namespace kelvane;
using kelvane::test::TemporaryHome;

// The user's settings live in an INI file under the XDG config folder and survive a restart with
// their types intact, even though the file itself keeps only text.
TEST(NativeSettingsDomain, ValuesSurviveARestartInTheUsersConfigFolder)
{
    TemporaryHome home;
    GeneralSettings general;
    general.notchWidthFineTune = -7.5;
    general.preferredMediaSource = MediaSource::spotify;
    {
        NativeSettingsDomain domain;
        EXPECT_EQ(domain.fileName(), home.configPath() + "/kelvane/kelvane.conf");
        SettingsStore store(domain);
        store.setValue(Keys::generalSettings(), general);
        store.setValue(Keys::intro(), false);
        store.setValue(Keys::lastVersionNumber(), QString("1,2; \"3\""));
    }
    NativeSettingsDomain domain;
    SettingsStore store(domain);
    EXPECT_EQ(store.value(Keys::generalSettings()), general);
    EXPECT_FALSE(store.value(Keys::intro()));
    EXPECT_EQ(store.value(Keys::lastVersionNumber()), "1,2; \"3\"");
    EXPECT_EQ(store.value(Keys::tuckleSettings()), TuckleSettings{});
}

// Another process editing the file is a writer like any other: subscribers hear of the keys it
// changed, and of nothing the agent wrote itself.
TEST(NativeSettingsDomain, EditsByAnotherProcessReachSubscribers)
{
    TemporaryHome home;
    NativeSettingsDomain domain;
    SettingsStore store(domain);
    store.setValue(Keys::intro(), true);
    QSignalSpy changes(&domain, &SettingsDomain::valueChanged);

    {
        QSettings other(domain.fileName(), QSettings::IniFormat);
        other.setValue("rememberLastOpenTab", true);
        other.setValue("intro", true); // unchanged
    }
    ASSERT_TRUE(test::waitUntil([&] { return changes.count() >= 1; }));
    QCoreApplication::processEvents();
    ASSERT_EQ(changes.count(), 1);
    EXPECT_EQ(changes.at(0).at(0).toString(), "rememberLastOpenTab");
    EXPECT_TRUE(store.value(Keys::rememberLastOpenTab()));
}

TEST(NativeSettingsDomain, UnreadableFileIsReportedKeptAndReadAsDefaults)
{
    TemporaryHome home;
    const QString path = home.configPath() + "/kelvane/kelvane.conf";
    QDir().mkpath(home.configPath() + "/kelvane");
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("[General\nintro=\"unterminated\n\xff\xfe garbage");
    file.close();

    LogCapture log;
    NativeSettingsDomain domain;
    SettingsStore store(domain);
    EXPECT_TRUE(store.value(Keys::intro()));
    ASSERT_EQ(log.lines().size(), 1);
    EXPECT_EQ(log.lines().first(), QString("[Settings] %1 could not be read (kept as %1.broken); defaults are used.").arg(path));
    EXPECT_TRUE(QFile::exists(path + ".broken"));
}
