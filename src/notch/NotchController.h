#pragma once

#include "HapticFeedback.h"
#include "KelvaneState.h"
#include "NotchViewModel.h"

#include <QObject>

#include <functional>

namespace kelvane {

// The open, close and hide operations of one notch window, as its views call them.
class NotchController : public QObject {
    Q_OBJECT
public:
    NotchController(KelvaneState& kelvane, NotchViewModel& viewModel, SettingsStore& settings,
                    Scheduler& scheduler, HapticFeedback& haptics,
                    std::function<int()> trayFileCount, QObject* parent = nullptr);

    // Opens on a face. An ordinary open (hover, click, swipe) asks for the widgets and may land on
    // the tray; a hidden notch is only brought back.
    Q_INVOKABLE void openNotch(kelvane::KelvaneState::Mode requested);
    // The same, by the mode's raw value ("tuckle", "tray", "dragging"); unknown names are ignored.
    Q_INVOKABLE void openNotchNamed(const QString& requested);
    Q_INVOKABLE void closeNotch(bool vibrate, bool unhover);
    Q_INVOKABLE void hideNotch();

    // Calibration: moves the closed notch's outline by these offsets (in points of the saved
    // fine-tune settings, of which half is applied), kept within `fineTuneLimit`.
    Q_INVOKABLE void fineTune(double width, double height);
    // Leaves the calibration face.
    Q_INVOKABLE void endFineTuning();
    static constexpr double fineTuneLimit = 200;

private:
    KelvaneState& m_kelvane;
    NotchViewModel& m_viewModel;
    SettingsStore& m_settings;
    Scheduler& m_scheduler;
    HapticFeedback& m_haptics;
    std::function<int()> m_trayFileCount;
    SettingValue<GeneralSettings> m_general;
    ScheduledTask m_closeCompletion;
};

} // namespace kelvane
