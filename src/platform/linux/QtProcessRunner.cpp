#include "QtProcessRunner.h"

#include <QProcess>

#include <csignal>

namespace kelvane {

ProcessOutcome QtProcessRunner::execute(const QString& path, const QStringList& arguments)
{
    constexpr int timeoutMs = 10'000;
    QProcess process;
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(path, arguments, QIODevice::NotOpen);
    if (!process.waitForStarted(timeoutMs))
        return ProcessOutcome::failedToLaunch(process.errorString());
    if (!process.waitForFinished(timeoutMs)) {
        process.kill();
        process.waitForFinished(1000);
        return ProcessOutcome::failedToLaunch(
            QStringLiteral("%1 did not finish within %2 s").arg(path).arg(timeoutMs / 1000));
    }
    if (process.exitStatus() == QProcess::CrashExit)
        return ProcessOutcome::exited(128 + SIGKILL);
    return ProcessOutcome::exited(process.exitCode());
}

} // namespace kelvane
