#include "QuickPeeks.h"

#include "core/MainThread.h"

namespace kelvane {

QuickPeeks::QuickPeeks(Scheduler& scheduler, SettingsStore& settings, WindowsManager& windows, QObject* parent)
    : QObject(parent)
    , m_scheduler(scheduler)
    , m_windows(windows)
    , m_settings(settings, Keys::liveActivitiesSettings(), this)
{
}

void QuickPeeks::post(const QuickPeek& peek)
{
    assertMainThread();
    if (!m_settings->enableQuickPeek || peek.title.isEmpty())
        return;
    bool shown = false;
    for (const auto& kit : m_windows.displayKits()) {
        KelvaneState& kelvane = *kit->kelvane;
        if (kelvane.mode() == KelvaneState::Mode::closed && !kelvane.hidden()) {
            kelvane.setQuickPeek(QList<QuickPeek>{peek});
            shown = true;
        }
    }
    if (shown)
        m_end = m_scheduler.schedule(secondsToDelay(duration), [this] { clear(); });
}

void QuickPeeks::clear()
{
    for (const auto& kit : m_windows.displayKits())
        kit->kelvane->setQuickPeek(std::nullopt);
}

} // namespace kelvane
