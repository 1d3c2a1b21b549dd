#include "core/Log.h"
#include "platform/linux/CanberraSoundPlayer.h"

#include "support/ScopedEnvironment.h"

#include <QFile>

#include <gtest/gtest.h>

using namespace kelvane;
using kelvane::test::ScopedEnvironment;
using kelvane::test::TemporaryHome;

// On a machine without a sound server or card the timers' sound stays silent, and says so once.
TEST(CanberraSoundPlayer, WithoutAudioSaysSoOnceAndGoesOn)
{
    TemporaryHome home;
    const QString noCards = home.path() + "/asound.conf";
    QFile(noCards).open(QIODevice::WriteOnly);
    ScopedEnvironment env;
    env.set("ALSA_CONFIG_PATH", noCards.toUtf8());
    env.set("PULSE_SERVER", "unix:" + home.path().toUtf8() + "/no-server");

    LogCapture log;
    {
        CanberraSoundPlayer player;
        player.play("Glass");
        player.play("Glass");
    }
    ASSERT_EQ(log.lines().size(), 1);
    EXPECT_TRUE(log.lines().first().startsWith("[Sound] Cannot play the \"complete\" sound (")) << log.lines().first();
    EXPECT_TRUE(log.lines().first().endsWith("); sounds stay silent."));
}
