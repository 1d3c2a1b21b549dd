#pragma once

#include "core/ProcessRunner.h"

namespace kelvane {

// Child processes through QProcess: no shell, output discarded, and a child that has not ended
// after ten seconds is killed and reported as a failure, so that no caller waits forever.
class QtProcessRunner final : public ProcessRunner {
public:
    ProcessOutcome execute(const QString& path, const QStringList& arguments) override;
};

} // namespace kelvane
