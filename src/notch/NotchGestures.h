#pragma once

#include "NotchController.h"

#include "core/Scheduler.h"
#include "settings/SettingValue.h"

#include <QObject>

#include <functional>

namespace kelvane {

// What the pointer, the wheel and the touchpad do to one notch: hover, click, the pull that opens
// it ("scrub"), swipes, the context menu and typing. It decides; the controller opens and closes.
class NotchGestures : public QObject {
    Q_OBJECT
    // How far the closed notch is pulled down, in points (0 when it is not pulled).
    Q_PROPERTY(double scrubExpansion READ scrubExpansion NOTIFY scrubChanged)
    Q_PROPERTY(bool scrubPastThreshold READ scrubPastThreshold NOTIFY scrubChanged)
public:
    // The pointer rests this long on the closed notch before a hover opens it.
    static constexpr double hoverSettle = 0.1;
    // An open panel closes this long after the pointer left it, unless it comes back.
    static constexpr double closeGrace = 0.3;
    // A pull of this many points opens the notch when let go.
    static constexpr double scrubCommit = 40;
    // Pulled past the open height, the notch follows the pointer at this fraction.
    static constexpr double scrubResistance = 0.3;
    // One notch of a wheel, in Qt's eighths of a degree: a swipe is at least this much scrolling.
    static constexpr double swipeDistance = 120;
    // A swipe ends after this long without scrolling; one swipe is one action.
    static constexpr double swipeQuiet = 0.25;

    enum class Swipe { down, up, left, right };
    Q_ENUM(Swipe)

    struct Dependencies {
        KelvaneState& kelvane;
        NotchViewModel& viewModel;
        NotchController& controller;
        Scheduler& scheduler;
        const SettingsStore& settings;
        // A context menu of the notch is up.
        std::function<bool()> isTrackingMenu;
        // Skips one track: +1 the next, -1 the previous.
        std::function<void(int)> skipTrack;
    };
    explicit NotchGestures(Dependencies dependencies, QObject* parent = nullptr);

    Q_INVOKABLE void pointerEntered();
    Q_INVOKABLE void pointerExited();
    Q_INVOKABLE void clicked();

    // The pull: a press on the closed notch, the pointer's travel down since the press, the release.
    Q_INVOKABLE void pressed();
    Q_INVOKABLE void dragged(double travel);
    Q_INVOKABLE void released();
    double scrubExpansion() const { return m_scrubExpansion; }
    bool scrubPastThreshold() const { return m_scrubPastThreshold; }

    // Wheel or smooth-scroll deltas as Qt gives them (positive y scrolls up, positive x left).
    Q_INVOKABLE void scrolled(double dx, double dy);
    // A touchpad swipe that the system recognised as one.
    Q_INVOKABLE void swiped(kelvane::NotchGestures::Swipe swipe);

    // Text is being edited in the panel, or no longer.
    Q_INVOKABLE void setEditingText(bool editing);
    // The context menu went away: an open panel the pointer left meanwhile closes.
    Q_INVOKABLE void menuClosed();

Q_SIGNALS:
    void scrubChanged();

private:
    bool isOpen() const;
    bool mayClose() const;
    void scheduleClose();
    void setScrub(double expansion, bool pastThreshold);

    Dependencies m_deps;
    SettingValue<GeneralSettings> m_general;
    SettingValue<GestureControlSettings> m_gestures;
    ScheduledTask m_hoverOpen;
    ScheduledTask m_graceClose;
    ScheduledTask m_swipeEnd;
    ScheduledTask m_springBack;
    bool m_pointerInside = false;
    bool m_editing = false;
    bool m_lockedForTyping = false;
    double m_scrollX = 0;
    double m_scrollY = 0;
    bool m_swipeDone = false;
    bool m_scrubbing = false;
    double m_scrubExpansion = 0;
    bool m_scrubPastThreshold = false;
};

} // namespace kelvane
