#include "activities/ActiveLiveActivitiesManager.h"
#include "core/ManualScheduler.h"
#include "core/SoundPlayer.h"
#include "core/TimersManager.h"
#include "timers/Duration.h"
#include "timers/TimerCommands.h"
#include "timers/TuckleTimersStore.h"

#include <QJsonObject>

#include <gtest/gtest.h>

using namespace kelvane;

TEST(Duration, ReadsWhatUsersType)
{
    const struct {
        const char* text;
        std::optional<qint64> seconds;
    } cases[] = {
        {"90", 90}, {" 2s ", 2}, {"5m", 300}, {"5 min", 300}, {"1h30m", 5400}, {"1m 30s", 90}, {"1.5m", 90},
        {"2H", 7200}, {"1:30", 90}, {"01:05", 65}, {"1:02:03", 3723}, {"0", 0}, {"168h", 604800},
        {"", std::nullopt}, {"abc", std::nullopt}, {"5x", std::nullopt}, {"-5", std::nullopt},
        {"1:75", std::nullopt}, {"1:2", std::nullopt}, {"1:60:00", std::nullopt}, {"169h", std::nullopt},
        {"m", std::nullopt}, {"5m5h", std::nullopt}, {"inf", std::nullopt},
    };
    for (const auto& c : cases)
        EXPECT_EQ(parseDuration(QString::fromUtf8(c.text)), c.seconds) << c.text;
}

TEST(TimerCommands, NameTimersByTheStartOfTheirIdAndRefuseWhatCannotBeDone)
{
    ManualScheduler scheduler;
    TimersManager keyed(scheduler);
    InMemorySettingsDomain domain;
    SettingsStore settings(domain);
    ActiveLiveActivitiesManager activities(settings);
    SilentSoundPlayer sound;
    TuckleTimersStore store({scheduler, keyed, domain, activities, sound});
    TimerCommands commands(store);

    EXPECT_EQ(commands.addTimer("Tea", "soon"), "Not a duration: \"soon\". Try 90, 5m, 1h30m or 1:30 (up to a week).");
    const auto tea = commands.add(" Tea ", "1:30");
    ASSERT_TRUE(tea.timer);
    EXPECT_EQ(commands.addTimer("", "2s"), "");
    scheduler.advance(std::chrono::seconds(2));

    const QString teaId = tea.timer->idText();
    const QString otherId = store.timers()[1]->idText();
    // The shortest prefix that tells the two apart, typed in lower case.
    qsizetype common = 0;
    while (teaId[common] == otherId[common])
        ++common;
    const QString teaPrefix = teaId.left(common + 1).toLower();

    EXPECT_EQ(commands.pause(teaPrefix), std::nullopt);
    EXPECT_EQ(tea.timer->state(), TimerEntry::State::paused);
    EXPECT_EQ(commands.pause(teaId), std::nullopt);
    EXPECT_EQ(commands.resume(teaId), std::nullopt);
    EXPECT_EQ(tea.timer->state(), TimerEntry::State::running);
    EXPECT_EQ(commands.resume(otherId), "The timer has ended; it cannot run again.");
    EXPECT_EQ(commands.pause("nope"), "No timer \"nope\".");
    EXPECT_EQ(commands.cancel(""), "No timer \"\".");

    const QJsonObject listed = commands.list().at(0).toObject();
    EXPECT_EQ(listed, (QJsonObject{{"id", teaId}, {"label", "Tea"}, {"state", "running"}, {"totalSeconds", 90},
                                   {"remainingSeconds", 88}}));
    EXPECT_EQ(commands.cancel(otherId), std::nullopt);
    EXPECT_EQ(commands.list().size(), 1);

    // Among seventeen ids two share their first character.
    for (int i = 0; i < 16; ++i)
        store.add("More", 60);
    QMap<QChar, int> firsts;
    for (const TimerEntry* timer : store.timers())
        ++firsts[timer->idText().front()];
    const QString shared(firsts.keys(*std::max_element(firsts.begin(), firsts.end())).front());
    EXPECT_EQ(commands.cancel(shared), QString("\"%1\" names more than one timer; give more of its id.").arg(shared));
}
