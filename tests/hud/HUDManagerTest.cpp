#include "core/Log.h"
#include "hud/HUDManager.h"

#include <gtest/gtest.h>

#include <set>

using namespace kelvane;

namespace {

// A small model of the system: the service manager starts the pop-up helper on kickstart, killall
// freezes or kills it, pgrep finds it. Executables can be missing.
struct FakeSystem : ProcessRunner {
    std::set<QString> missing;
    bool helperRunning = false;
    bool kickstartStartsHelper = true;
    QStringList trace;

    ProcessOutcome execute(const QString& path, const QStringList& arguments) override
    {
        trace << path.section('/', -1) + ' ' + arguments.join(' ');
        if (missing.count(path))
            return ProcessOutcome::failedToLaunch("No such file or directory");
        if (path == "/bin/launchctl" && kickstartStartsHelper)
            helperRunning = true;
        if (path == "/usr/bin/killall" && arguments.first() == "-KILL")
            helperRunning = false;
        if (path == "/usr/bin/pgrep")
            return ProcessOutcome::exited(helperRunning ? 0 : 1);
        return ProcessOutcome::exited(0);
    }

    HUDManager manager()
    {
        return HUDManager(*this, [this](std::chrono::microseconds d) { trace << QString("sleep %1").arg(d.count()); }, 501);
    }
};

QStringList logged(const std::function<void()>& run)
{
    LogCapture capture;
    run();
    return capture.lines();
}

} // namespace

TEST(HUDManager, DisableStopsTheHelperOnTheFirstAttemptAndDoesNotSleepAfterwards)
{
    FakeSystem system;
    const auto hud = system.manager();
    EXPECT_EQ(logged([&] { hud.disableSystemHUD(); }),
              (QStringList{"[HUDManager] disableSystemHUD attempt 1/3",
                           "[HUDManager] SIGSTOP sent (attempt 1)",
                           "[HUDManager] OSDUIHelper confirmed stopped/present after attempt 1"}));
    EXPECT_EQ(system.trace, (QStringList{"launchctl kickstart gui/501/com.apple.OSDUIHelper", "sleep 100000",
                                         "killall -STOP OSDUIHelper", "pgrep -x OSDUIHelper",
                                         "pgrep -x OSDUIHelper"}));
}

TEST(HUDManager, DisableGivesUpAfterThreeUnconfirmedAttempts)
{
    const QStringList unconfirmed{
        "[HUDManager] disableSystemHUD attempt 1/3",
        "[HUDManager] OSDUIHelper not confirmed after attempt 1, retrying...",
        "[HUDManager] disableSystemHUD attempt 2/3",
        "[HUDManager] OSDUIHelper not confirmed after attempt 2, retrying...",
        "[HUDManager] disableSystemHUD attempt 3/3",
        "[HUDManager] OSDUIHelper not confirmed after attempt 3, retrying...",
        "[HUDManager] disableSystemHUD: exhausted 3 attempts, OSDUIHelper may not be suppressed"};
    // Each missing tool adds its own line to every attempt (a desktop without the helper at all
    // is the common case off the original platform).
    struct Case {
        const char* name;
        std::set<QString> missing;
        QString extraLine;
    } cases[] = {
        {"helper never appears", {}, {}},
        {"no service manager", {"/bin/launchctl"}, "[HUDManager] kickstart failed (attempt %1): No such file or directory"},
        {"no killall", {"/usr/bin/killall"}, "[HUDManager] killall -STOP failed (attempt %1): No such file or directory"},
    };
    for (const auto& c : cases) {
        FakeSystem system;
        system.kickstartStartsHelper = false;
        system.missing = c.missing;
        QStringList expected = unconfirmed;
        if (!c.extraLine.isEmpty())
            for (int attempt = 3; attempt >= 1; --attempt)
                expected.insert(2 * attempt - 1, c.extraLine.arg(attempt));
        EXPECT_EQ(logged([&] { system.manager().disableSystemHUD(); }), expected) << c.name;
        // Three waits for the helper to come up, two between attempts: half a second in all.
        EXPECT_EQ(system.trace.count("sleep 100000"), 5) << c.name;
    }
}

TEST(HUDManager, DisableWithoutPgrepNeverConfirms)
{
    FakeSystem system;
    system.missing = {"/usr/bin/pgrep"};
    const QStringList lines = logged([&] { system.manager().disableSystemHUD(); });
    EXPECT_EQ(lines.count("[HUDManager] pgrep failed: No such file or directory"), 6);
    EXPECT_EQ(lines.last(), "[HUDManager] disableSystemHUD: exhausted 3 attempts, OSDUIHelper may not be suppressed");
}

TEST(HUDManager, EnableKillsTheFrozenHelperOnceThenHasNothingToKill)
{
    FakeSystem system;
    system.helperRunning = true;
    const auto hud = system.manager();
    EXPECT_EQ(logged([&] { hud.enableSystemHUD(); }),
              QStringList{"[HUDManager] enableSystemHUD: sent SIGKILL to OSDUIHelper"});
    system.trace.clear();
    EXPECT_EQ(logged([&] { hud.enableSystemHUD(); }),
              QStringList{"[HUDManager] enableSystemHUD: OSDUIHelper not running, nothing to kill"});
    EXPECT_EQ(system.trace, QStringList{"pgrep -x OSDUIHelper"});

    system.helperRunning = true;
    system.missing = {"/usr/bin/killall"};
    EXPECT_EQ(logged([&] { hud.enableSystemHUD(); }),
              QStringList{"[HUDManager] enableSystemHUD failed: No such file or directory"});
}
