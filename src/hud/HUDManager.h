#pragma once

#include "core/ProcessRunner.h"

#include <chrono>
#include <functional>

namespace kelvane {

// Keeps the system's own volume and brightness pop-up from showing while the notch draws its own:
// the helper process that draws it is started if needed and frozen with a stop signal; giving
// the pop-up back kills the frozen helper so that the service manager starts a fresh one.
// Both operations block their caller (child processes and short sleeps) and touch no shared
// state, so they may run on any thread; the running agent calls them off the main thread.
class HUDManager {
public:
    using Sleep = std::function<void(std::chrono::microseconds)>;

    HUDManager(ProcessRunner& runner, Sleep sleep, unsigned userId);

    void disableSystemHUD() const;
    void enableSystemHUD() const;

    static constexpr int maxAttempts = 3;
    static constexpr std::chrono::microseconds settleDelay{100'000};

    static HUDManager& shared();
    static void setShared(HUDManager* instance);

private:
    bool isOSDRunning() const;

    ProcessRunner& m_runner;
    Sleep m_sleep;
    unsigned m_userId;
};

} // namespace kelvane
