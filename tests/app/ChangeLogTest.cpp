#include "app/ChangeLog.h"

#include "core/ManualScheduler.h"
#include "notch/IntroGuide.h"
#include "settings/Keys.h"
#include "settings/SettingsDomain.h"
#include "settings/SettingsStore.h"

#include <gtest/gtest.h>

#include <memory>

using namespace kelvane;

namespace {
const char* const changeLog = R"(# What is new in Kelvane

Some words about the log.

## Unreleased
- not out yet

## 0.3.0 - 2026-12-20
- The settings window has every pane.
- Start at login, from the General pane,
  written where the desktop looks.

## [0.2.1] (2026-12-05)
* A fix.

## v0.2.0
- Glass.
## 0.1.0 — 2026-11-01
- First release.
)";

QStringList versions(const QList<Release>& releases)
{
    QStringList list;
    for (const Release& release : releases)
        list << release.version.toString();
    return list;
}
} // namespace

// The log's releases in its order, with their dates and items (an item going on over an
// indented line is one); what is not a release is left out.
TEST(ChangeLog, ReadsEachReleaseItsDateAndItsChanges)
{
    const QList<Release> releases = parseChangeLog(QString::fromUtf8(changeLog));
    EXPECT_EQ(versions(releases), (QStringList{"0.3.0", "0.2.1", "0.2.0", "0.1.0"}));
    ASSERT_EQ(releases.size(), 4);
    EXPECT_EQ(releases[0].date, "2026-12-20");
    EXPECT_EQ(releases[0].changes, (QStringList{"The settings window has every pane.",
                                                "Start at login, from the General pane, written where the desktop looks."}));
    EXPECT_EQ(releases[1].date, "2026-12-05");
    EXPECT_EQ(releases[1].changes, QStringList{"A fix."});
    EXPECT_EQ(releases[2].date, "");
    EXPECT_EQ(releases[3].date, "2026-11-01");
    EXPECT_TRUE(parseChangeLog(QStringLiteral("no releases\n- at all")).isEmpty());
}

// Shown once after an upgrade, with what came since; not on the first run, nor when the version
// is the same, older, or unreadable; the version last run always becomes the running one.
TEST(ChangeLog, ShowsWhatCameSinceTheVersionLastRunOnceAndNotOnTheFirstRun)
{
    const QList<Release> log = parseChangeLog(QString::fromUtf8(changeLog));
    const struct {
        QString lastRun;
        QString running;
        QStringList shown;
    } runs[] = {
        {"0", "0.3.0", {}},
        {"0.1.0", "0.3.0", {"0.3.0", "0.2.1", "0.2.0"}},
        {"0.2.0", "0.2.1", {"0.2.1"}},
        {"0.3.0", "0.3.0", {}},
        {"0.4.0", "0.3.0", {}},
        {"yesterday's", "0.3.0", {}},
        {"", "0.3.0", {}},
    };
    for (const auto& r : runs) {
        InMemorySettingsDomain domain;
        SettingsStore settings{domain};
        settings.setValue(Keys::lastVersionNumber(), r.lastRun);
        const QVersionNumber running = QVersionNumber::fromString(r.running);
        EXPECT_EQ(versions(releasesSinceLastRun(settings, running, log)), r.shown) << r.lastRun.toStdString();
        EXPECT_EQ(settings.value(Keys::lastVersionNumber()), r.running);
        EXPECT_TRUE(releasesSinceLastRun(settings, running, log).isEmpty()) << "shown once";
    }
}

// What a start shows first, in virtual time: the very first run the introduction and no change
// log; the introduction steps on by itself or by a click and ends by turning itself off; an
// update then shows what is new and no introduction; a reset brings the introduction back.
TEST(FirstRun, IntroductionFirstThenWhatIsNewAfterAnUpdateAndIntroductionAgainAfterAReset)
{
    const QList<Release> log = parseChangeLog(QString::fromUtf8(changeLog));
    InMemorySettingsDomain domain;
    SettingsStore settings{domain};
    ManualScheduler scheduler;
    const auto start = [&](const char* version) {
        auto guide = std::make_unique<IntroGuide>(settings, scheduler);
        const QList<Release> shown = releasesSinceLastRun(settings, QVersionNumber::fromString(version), log);
        return std::pair{std::move(guide), versions(shown)};
    };

    auto [guide, shown] = start("0.2.0");
    EXPECT_TRUE(shown.isEmpty());
    ASSERT_TRUE(guide->isActive());
    EXPECT_EQ(guide->step(), 0);
    scheduler.advance(IntroGuide::stepDuration - std::chrono::milliseconds(1));
    EXPECT_EQ(guide->step(), 0);
    scheduler.advance(std::chrono::milliseconds(1));
    EXPECT_EQ(guide->step(), 1);
    guide->next();
    EXPECT_EQ(guide->step(), 2);
    EXPECT_FALSE(guide->title().isEmpty());
    scheduler.advance(IntroGuide::stepDuration * (IntroGuide::stepCount() - 2));
    EXPECT_FALSE(guide->isActive());
    EXPECT_FALSE(settings.value(Keys::intro()));
    scheduler.advance(IntroGuide::stepDuration * 3);
    EXPECT_FALSE(settings.value(Keys::intro())) << "ended for good";

    // The same version again: nothing; an update: what came since, and no introduction.
    EXPECT_TRUE(start("0.2.0").second.isEmpty());
    auto [updated, news] = start("0.3.0");
    EXPECT_EQ(news, (QStringList{"0.3.0", "0.2.1"}));
    EXPECT_FALSE(updated->isActive());

    // A reset: the introduction again, from its first step; skipped, it is over at once.
    settings.resetDefaults();
    ASSERT_TRUE(updated->isActive());
    EXPECT_EQ(updated->step(), 0);
    updated->finish();
    EXPECT_FALSE(updated->isActive());
    EXPECT_FALSE(settings.value(Keys::intro()));
    EXPECT_EQ(settings.value(Keys::lastVersionNumber()), "0.3.0") << "a reset does not bring the change log back";
}
