#include "NotchViewModel.h"

#include "FullscreenMonitor.h"
#include "IntroGuide.h"
#include "NotchGeometry.h"

namespace kelvane {

namespace {
template <class T>
bool assign(T& field, const T& value)
{
    if (field == value)
        return false;
    field = value;
    return true;
}
} // namespace

NotchViewModel::NotchViewModel(const Screen& screen, const KelvaneState& kelvane, const SettingsStore& settings,
                               QObject* parent)
    : QObject(parent)
    , m_screen(screen)
    , m_kelvane(kelvane)
    , m_general(settings, Keys::generalSettings(), this,
                [this](const GeneralSettings& general) {
                    update(general, isNonNotch(), m_isFullScreen);
                    Q_EMIT sizesChanged();
                    Q_EMIT fullScreenChanged();
                    Q_EMIT hoverScaleChanged();
                })
    , m_tuckle(settings, Keys::tuckleSettings(), this, [this](auto&) { Q_EMIT sizesChanged(); })
    , m_tray(settings, Keys::traySettings(), this, [this](auto&) { Q_EMIT sizesChanged(); })
    , m_dropArea(settings, Keys::dropAreaSettings(), this, [this](auto&) { Q_EMIT sizesChanged(); })
{
    update(m_general.get(), isNonNotch(), false);
    connect(&kelvane, &KelvaneState::modeChanged, this, [this] {
        Q_EMIT sizesChanged();
        Q_EMIT hoverScaleChanged();
    });
    connect(&kelvane, &KelvaneState::hiddenChanged, this, &NotchViewModel::hoverScaleChanged);
}

void NotchViewModel::update(const GeneralSettings& settings, bool isNonNotchScreen, bool isFullScreen)
{
    // Full-screen spaces are handled by the top bar, not here.
    Q_UNUSED(isFullScreen);
    const State state = isNonNotchScreen && !settings.enableOnNonNotchScreens ? State::disabled
                        : m_introActive                                       ? State::showingIntro
                                                                              : State::standardContent;
    if (assign(m_notchState, state))
        Q_EMIT notchStateChanged();
}

QObject* NotchViewModel::intro() const { return m_introActive ? m_intro : nullptr; }

void NotchViewModel::followIntro(IntroGuide& guide)
{
    m_intro = &guide;
    const auto follow = [this, &guide] {
        if (m_introActive == guide.isActive())
            return;
        m_introActive = guide.isActive();
        update(m_general.get(), isNonNotch(), m_isFullScreen);
        Q_EMIT notchStateChanged();
    };
    connect(&guide, &IntroGuide::changed, this, follow);
    follow();
}

void NotchViewModel::setFullScreen(bool fullScreen)
{
    if (assign(m_isFullScreen, fullScreen))
        Q_EMIT fullScreenChanged();
}

bool NotchViewModel::hiddenForFullScreen() const
{
    return m_isFullScreen && !notchShowsOverFullScreen(m_general->showInFullscreen, m_screen.builtInPanel);
}

void NotchViewModel::setFineTuning(std::optional<State> face)
{
    if (face && *face != State::fineTuningWidth && *face != State::fineTuningHeight)
        face.reset();
    if (face == m_fineTuning)
        return;
    m_fineTuning = face;
    Q_EMIT notchStateChanged();
}

QString NotchViewModel::fineTuning() const
{
    return m_fineTuning == State::fineTuningWidth    ? QStringLiteral("width")
           : m_fineTuning == State::fineTuningHeight ? QStringLiteral("height")
                                                     : QString();
}

void NotchViewModel::setHovering(bool hovering)
{
    if (assign(m_hovering, hovering)) {
        Q_EMIT hoveringChanged();
        Q_EMIT hoverScaleChanged();
    }
}

void NotchViewModel::setPressing(bool pressing)
{
    if (assign(m_pressing, pressing))
        Q_EMIT pressingChanged();
}

void NotchViewModel::setPanning(bool panning)
{
    if (assign(m_isPanning, panning)) {
        Q_EMIT isPanningChanged();
        Q_EMIT hoverScaleChanged();
    }
}

void NotchViewModel::setCancelPan(bool cancel)
{
    if (assign(m_cancelPan, cancel))
        Q_EMIT cancelPanChanged();
}

void NotchViewModel::setAnimatingBack(bool animatingBack)
{
    if (assign(m_animatingBack, animatingBack))
        Q_EMIT animatingBackChanged();
}

QSizeF NotchViewModel::notchSize() const
{
    return NotchGeometry::effectiveNotchSize(m_screen.rawNotchSize, m_general->notchWidthFineTune,
                                             m_general->notchHeightFineTune);
}

QSizeF NotchViewModel::drawnNotchSize() const
{
    // A screen without a camera housing gets a notch of the housing's width so there is something
    // to hover, click and drop onto; the user's offsets apply to it as to a real one.
    const QSizeF base = isNonNotch() ? NotchGeometry::virtualNotchSize(m_screen.pointsPerInch)
                                     : m_screen.rawNotchSize;
    return NotchGeometry::effectiveNotchSize(base, m_general->notchWidthFineTune,
                                             m_general->notchHeightFineTune);
}

QSizeF NotchViewModel::openFootprint(KelvaneState::Mode mode) const
{
    const TuckleGrid::Size& grid = mode == KelvaneState::Mode::tray       ? m_tray->size
                                   : mode == KelvaneState::Mode::dragging ? m_dropArea->size
                                                                          : m_tuckle->size;
    return NotchGeometry::openFootprint(drawnNotchSize(), m_screen.size.width(), grid);
}

QSizeF NotchViewModel::openFootprint() const { return openFootprint(m_kelvane.mode()); }

QSizeF NotchViewModel::windowSize() const
{
    QSizeF largest;
    for (auto mode : {KelvaneState::Mode::tuckle, KelvaneState::Mode::tray, KelvaneState::Mode::dragging})
        largest = largest.expandedTo(openFootprint(mode));
    return NotchGeometry::windowSize(drawnNotchSize(), largest, m_screen.size.width());
}

double NotchViewModel::hoverScale() const
{
    // The pop belongs to the closed notch only, and not while it is pulled open.
    const bool closedAndShown = m_kelvane.mode() == KelvaneState::Mode::closed && !m_kelvane.hidden();
    return NotchGeometry::hoverScale(m_hovering && closedAndShown && !m_isPanning,
                                     m_general->transluscent);
}

} // namespace kelvane
