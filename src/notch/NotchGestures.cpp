#include "NotchGestures.h"

#include "core/MainThread.h"

#include <cmath>

namespace kelvane {

NotchGestures::NotchGestures(Dependencies dependencies, QObject* parent)
    : QObject(parent)
    , m_deps(std::move(dependencies))
    , m_general(m_deps.settings, Keys::generalSettings(), this)
    , m_gestures(m_deps.settings, Keys::gestureControlSettings(), this)
{
}

bool NotchGestures::isOpen() const
{
    const auto mode = m_deps.kelvane.mode();
    return mode == KelvaneState::Mode::tuckle || mode == KelvaneState::Mode::tray;
}

bool NotchGestures::mayClose() const
{
    if (m_deps.kelvane.locked() || (m_deps.isTrackingMenu && m_deps.isTrackingMenu()))
        return false;
    return !(m_editing && m_general->preventUnhoverCloseWhenTyping);
}

// Hover and click -------------------------------------------------------------------------------

void NotchGestures::pointerEntered()
{
    assertMainThread();
    m_pointerInside = true;
    m_graceClose.cancel();
    m_deps.viewModel.setHovering(true);
    const auto mode = m_deps.kelvane.mode();
    const bool closed = mode == KelvaneState::Mode::closed;
    // Opened only if nothing changed the face while the pointer settled: a drag arriving meanwhile
    // has opened a face of its own, which hovering must not replace.
    if ((closed || m_deps.kelvane.hidden()) && m_general->alwaysOpenNotchOnHover)
        m_hoverOpen = m_deps.scheduler.schedule(secondsToDelay(hoverSettle), [this, mode] {
            if (m_pointerInside && !m_scrubbing && m_deps.kelvane.mode() == mode)
                m_deps.controller.openNotch(KelvaneState::Mode::tuckle);
        });
}

void NotchGestures::pointerExited()
{
    assertMainThread();
    m_pointerInside = false;
    m_hoverOpen.cancel();
    if (isOpen())
        scheduleClose();
    else
        m_deps.viewModel.setHovering(false);
}

void NotchGestures::scheduleClose()
{
    m_graceClose = m_deps.scheduler.schedule(secondsToDelay(closeGrace), [this] {
        if (!m_pointerInside && isOpen() && mayClose())
            m_deps.controller.closeNotch(false, true);
    });
}

void NotchGestures::menuClosed()
{
    if (!m_pointerInside && isOpen())
        scheduleClose();
}

void NotchGestures::clicked()
{
    assertMainThread();
    m_hoverOpen.cancel();
    if (!isOpen())
        m_deps.controller.openNotch(KelvaneState::Mode::tuckle);
}

// The pull --------------------------------------------------------------------------------------

void NotchGestures::setScrub(double expansion, bool pastThreshold)
{
    if (expansion == m_scrubExpansion && pastThreshold == m_scrubPastThreshold)
        return;
    m_scrubExpansion = expansion;
    m_scrubPastThreshold = pastThreshold;
    Q_EMIT scrubChanged();
}

void NotchGestures::pressed()
{
    assertMainThread();
    if (m_deps.kelvane.mode() != KelvaneState::Mode::closed || m_deps.kelvane.hidden() ||
        m_deps.viewModel.animatingBack())
        return;
    m_scrubbing = true;
    m_hoverOpen.cancel();
}

void NotchGestures::dragged(double travel)
{
    if (!m_scrubbing)
        return;
    if (!m_deps.viewModel.isPanning() && travel > 0)
        m_deps.viewModel.setPanning(true);
    // The notch follows the pointer down to the open panel's height, then resists.
    const double room = std::max(0.0, m_deps.viewModel.openFootprint(KelvaneState::Mode::tuckle).height() -
                                          m_deps.viewModel.drawnNotchSize().height());
    const double down = std::max(0.0, travel);
    const double expansion = down <= room ? down : room + (down - room) * scrubResistance;
    setScrub(expansion, down >= scrubCommit);
}

void NotchGestures::released()
{
    if (!std::exchange(m_scrubbing, false))
        return;
    if (m_scrubPastThreshold) {
        m_deps.viewModel.setPanning(false);
        setScrub(0, false);
        m_deps.controller.openNotch(KelvaneState::Mode::tuckle);
        return;
    }
    if (m_scrubExpansion <= 0) {
        m_deps.viewModel.setPanning(false);
        return;
    }
    // Not far enough: the notch springs back to its closed size.
    m_deps.viewModel.setAnimatingBack(true);
    setScrub(0, false);
    m_springBack = m_deps.scheduler.schedule(secondsToDelay(Springs::closePlain.settlingTime()), [this] {
        m_deps.viewModel.setAnimatingBack(false);
        m_deps.viewModel.setPanning(false);
    });
}

// Swipes ----------------------------------------------------------------------------------------

void NotchGestures::scrolled(double dx, double dy)
{
    assertMainThread();
    m_swipeEnd = m_deps.scheduler.schedule(secondsToDelay(swipeQuiet), [this] {
        m_scrollX = m_scrollY = 0;
        m_swipeDone = false;
    });
    if (m_swipeDone)
        return;
    m_scrollX += dx;
    m_scrollY += dy;
    if (std::max(std::abs(m_scrollX), std::abs(m_scrollY)) < swipeDistance)
        return;
    m_swipeDone = true;
    if (std::abs(m_scrollY) >= std::abs(m_scrollX))
        swiped(m_scrollY < 0 ? Swipe::down : Swipe::up);
    else
        swiped(m_scrollX < 0 ? Swipe::right : Swipe::left);
}

void NotchGestures::swiped(Swipe swipe)
{
    assertMainThread();
    if (!m_gestures->allowGestures)
        return;
    switch (swipe) {
    case Swipe::down:
        if (m_gestures->controlOpenState && !isOpen())
            m_deps.controller.openNotch(KelvaneState::Mode::tuckle);
        break;
    case Swipe::up:
        if (!m_gestures->controlOpenState)
            break;
        if (isOpen()) {
            if (mayClose())
                m_deps.controller.closeNotch(true, false);
        } else if (m_deps.kelvane.mode() == KelvaneState::Mode::closed && !m_deps.kelvane.hidden()) {
            m_deps.controller.hideNotch();
        }
        break;
    case Swipe::left:
    case Swipe::right:
        if (m_gestures->controlMedia && m_deps.skipTrack) {
            const int step = swipe == Swipe::right ? 1 : -1;
            m_deps.skipTrack(m_gestures->invertMediaGestures ? -step : step);
        }
        break;
    }
}

// Typing ----------------------------------------------------------------------------------------

void NotchGestures::setEditingText(bool editing)
{
    if (editing == m_editing)
        return;
    m_editing = editing;
    // Kept open while typing when the user asked for it; only the lock taken here is given back.
    if (editing && m_general->lockKVWhenTyping && !m_deps.kelvane.locked()) {
        m_deps.kelvane.setLocked(true);
        m_lockedForTyping = true;
    } else if (!editing && std::exchange(m_lockedForTyping, false)) {
        m_deps.kelvane.setLocked(false);
    }
    if (!editing && !m_pointerInside && isOpen())
        scheduleClose();
}

} // namespace kelvane
