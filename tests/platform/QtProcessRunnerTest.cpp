#include "platform/linux/QtProcessRunner.h"

#include <gtest/gtest.h>

using namespace kelvane;

// Real child processes: their exit status, and a launch failure told apart from a failing exit.
TEST(QtProcessRunner, ReportsExitStatusOrWhyNothingRan)
{
    const struct {
        QString path;
        QStringList arguments;
        std::optional<int> status;
    } cases[] = {
        {"/bin/true", {}, 0},
        {"/bin/false", {}, 1},
        {"/bin/sh", {"-c", "exit 7"}, 7},
        // Arguments are never read by a shell.
        {"/bin/echo", {"$(exit 3)", ";", "exit 4"}, 0},
        {"/bin/sh", {"-c", "kill -9 $$"}, 137},
        {"/nonexistent/launchctl", {"kickstart"}, std::nullopt},
    };
    QtProcessRunner runner;
    for (const auto& c : cases) {
        const ProcessOutcome outcome = runner.execute(c.path, c.arguments);
        EXPECT_EQ(outcome.exitStatus, c.status) << c.path;
        EXPECT_EQ(outcome.launchError.isEmpty(), c.status.has_value()) << c.path;
    }
}
