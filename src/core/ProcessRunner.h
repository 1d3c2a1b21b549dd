#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace kelvane {

// How a child process ended: its exit status, or why it could not be run at all.
struct ProcessOutcome {
    std::optional<int> exitStatus;
    QString launchError;

    bool launched() const { return exitStatus.has_value(); }
    static ProcessOutcome exited(int status) { return {status, {}}; }
    static ProcessOutcome failedToLaunch(QString error) { return {std::nullopt, std::move(error)}; }
};

// Runs an executable with an argument list (never through a shell) and waits for it to exit.
class ProcessRunner {
public:
    virtual ~ProcessRunner() = default;
    virtual ProcessOutcome execute(const QString& path, const QStringList& arguments) = 0;
};

} // namespace kelvane
