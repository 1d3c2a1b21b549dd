#include "HUDManager.h"

#include "core/Log.h"

namespace kelvane {

namespace {
const QString launchctl = QStringLiteral("/bin/launchctl");
const QString killall = QStringLiteral("/usr/bin/killall");
const QString pgrep = QStringLiteral("/usr/bin/pgrep");
const QString helperName = QStringLiteral("OSDUIHelper");
const QString helperLabel = QStringLiteral("com.apple.OSDUIHelper");

HUDManager* s_shared = nullptr;

void log(QStringView format, const auto&... arguments)
{
    systemLog(formatLog(format, arguments...));
}
} // namespace

HUDManager::HUDManager(ProcessRunner& runner, Sleep sleep, unsigned userId)
    : m_runner(runner)
    , m_sleep(std::move(sleep))
    , m_userId(userId)
{
}

void HUDManager::disableSystemHUD() const
{
    for (int attempt = 1; attempt <= maxAttempts; ++attempt) {
        log(u"[HUDManager] disableSystemHUD attempt %d/%d", attempt, maxAttempts);

        // Makes sure the helper exists, so that there is something to freeze.
        const QString target = QStringLiteral("gui/%1/%2").arg(m_userId).arg(helperLabel);
        const auto kickstart = m_runner.execute(launchctl, {QStringLiteral("kickstart"), target});
        if (!kickstart.launched())
            log(u"[HUDManager] kickstart failed (attempt %d): %{public}@", attempt, kickstart.launchError);
        m_sleep(settleDelay);

        const auto stop = m_runner.execute(killall, {QStringLiteral("-STOP"), helperName});
        if (!stop.launched()) {
            log(u"[HUDManager] killall -STOP failed (attempt %d): %{public}@", attempt, stop.launchError);
        } else {
            if (isOSDRunning())
                log(u"[HUDManager] SIGSTOP sent (attempt %d)", attempt);
            if (isOSDRunning()) {
                log(u"[HUDManager] OSDUIHelper confirmed stopped/present after attempt %d", attempt);
                return;
            }
        }

        log(u"[HUDManager] OSDUIHelper not confirmed after attempt %d, retrying...", attempt);
        if (attempt == maxAttempts) {
            log(u"[HUDManager] disableSystemHUD: exhausted %d attempts, OSDUIHelper may not be suppressed",
                maxAttempts);
            return;
        }
        m_sleep(settleDelay);
    }
}

void HUDManager::enableSystemHUD() const
{
    if (!isOSDRunning()) {
        log(u"[HUDManager] enableSystemHUD: OSDUIHelper not running, nothing to kill");
        return;
    }
    // The frozen helper ends; the service manager starts a fresh one when the pop-up is next due.
    const auto kill = m_runner.execute(killall, {QStringLiteral("-KILL"), helperName});
    if (kill.launched())
        log(u"[HUDManager] enableSystemHUD: sent SIGKILL to OSDUIHelper");
    else
        log(u"[HUDManager] enableSystemHUD failed: %{public}@", kill.launchError);
}

bool HUDManager::isOSDRunning() const
{
    const auto outcome = m_runner.execute(pgrep, {QStringLiteral("-x"), helperName});
    if (!outcome.launched()) {
        log(u"[HUDManager] pgrep failed: %{public}@", outcome.launchError);
        return false;
    }
    return *outcome.exitStatus == 0;
}

HUDManager& HUDManager::shared()
{
    Q_ASSERT(s_shared);
    return *s_shared;
}

void HUDManager::setShared(HUDManager* instance) { s_shared = instance; }

} // namespace kelvane
