#include "NotchController.h"

#include <algorithm>

#include "core/MainThread.h"

namespace kelvane {

NotchController::NotchController(KelvaneState& kelvane, NotchViewModel& viewModel,
                                 SettingsStore& settings, Scheduler& scheduler,
                                 HapticFeedback& haptics, std::function<int()> trayFileCount,
                                 QObject* parent)
    : QObject(parent)
    , m_kelvane(kelvane)
    , m_viewModel(viewModel)
    , m_settings(settings)
    , m_scheduler(scheduler)
    , m_haptics(haptics)
    , m_trayFileCount(std::move(trayFileCount))
    , m_general(settings, Keys::generalSettings(), this)
{
}

void NotchController::openNotch(KelvaneState::Mode requested)
{
    assertMainThread();
    const Spring spring = m_general->transluscent ? Springs::liquidOpenFootprint : Springs::animation;
    m_viewModel.setHovering(true);
    if (m_kelvane.hidden()) {
        m_kelvane.setHidden(false, spring);
        return;
    }
    KelvaneState::Mode mode = requested;
    if (requested == KelvaneState::Mode::tuckle) {
        const bool trayHasFiles = m_trayFileCount && m_trayFileCount() > 0;
        if (m_settings.value(Keys::autoOpenTrayWithFiles()) && trayHasFiles)
            mode = KelvaneState::Mode::tray;
        else if (m_settings.value(Keys::rememberLastOpenTab()) &&
                 m_kelvane.preferredOpenMode() == KelvaneState::Mode::tray)
            mode = KelvaneState::Mode::tray;
    } else if (requested == KelvaneState::Mode::closed) {
        return;
    }
    m_kelvane.setMode(mode, spring);
}

void NotchController::openNotchNamed(const QString& requested)
{
    if (const auto mode = KelvaneState::fromRawValue(requested))
        openNotch(*mode);
}

void NotchController::closeNotch(bool vibrate, bool unhover)
{
    assertMainThread();
    const Spring spring = m_general->transluscent ? Springs::liquidCloseFootprint : Springs::closePlain;
    if (vibrate && !m_general->disableHaptics)
        m_haptics.levelChange();
    if (unhover)
        m_viewModel.setHovering(false);
    if (m_viewModel.isPanning()) {
        // The pulled content springs back as the notch closes.
        m_viewModel.setAnimatingBack(true);
        m_viewModel.setCancelPan(true);
    } else {
        m_viewModel.setCancelPan(false);
    }
    m_kelvane.setMode(KelvaneState::Mode::closed, spring);
    const auto settle = secondsToDelay(spring.settlingTime());
    m_closeCompletion = m_scheduler.schedule(settle, [this] { m_viewModel.setAnimatingBack(false); });
}

void NotchController::hideNotch()
{
    assertMainThread();
    const Spring spring = m_general->transluscent ? Springs::liquidCloseFootprint : Springs::closePlain;
    m_kelvane.setHidden(true, spring);
}

void NotchController::fineTune(double width, double height)
{
    assertMainThread();
    m_settings.update(Keys::generalSettings(), [&](GeneralSettings& general) {
        general.notchWidthFineTune = std::clamp(general.notchWidthFineTune + width, -fineTuneLimit, fineTuneLimit);
        general.notchHeightFineTune = std::clamp(general.notchHeightFineTune + height, -fineTuneLimit, fineTuneLimit);
    });
}

void NotchController::endFineTuning() { m_viewModel.setFineTuning(std::nullopt); }

} // namespace kelvane
