#pragma once

#include "KelvaneState.h"

#include "settings/SettingValue.h"

#include <QObject>
#include <QSizeF>

namespace kelvane {

class IntroGuide;

// View-level state of one notch window: its face, the pointer, and the sizes its content is drawn
// at (the effective notch, the popped notch, the footprint of the open panel, the window itself).
class NotchViewModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(State notchState READ notchState NOTIFY notchStateChanged)
    // "width" or "height" while a calibration face is up, empty otherwise.
    Q_PROPERTY(QString fineTuning READ fineTuning NOTIFY notchStateChanged)
    // The introduction's steps, while its face is shown.
    Q_PROPERTY(QObject* intro READ intro NOTIFY notchStateChanged)
    Q_PROPERTY(bool isDisabled READ isDisabled NOTIFY notchStateChanged)
    Q_PROPERTY(bool hovering READ hovering WRITE setHovering NOTIFY hoveringChanged)
    Q_PROPERTY(bool pressing READ pressing WRITE setPressing NOTIFY pressingChanged)
    Q_PROPERTY(bool isPanning READ isPanning WRITE setPanning NOTIFY isPanningChanged)
    Q_PROPERTY(bool cancelPan READ cancelPan NOTIFY cancelPanChanged)
    Q_PROPERTY(bool animatingBack READ animatingBack NOTIFY animatingBackChanged)
    Q_PROPERTY(bool isNonNotch READ isNonNotch CONSTANT)
    Q_PROPERTY(QSizeF notchSize READ notchSize NOTIFY sizesChanged)
    Q_PROPERTY(QSizeF drawnNotchSize READ drawnNotchSize NOTIFY sizesChanged)
    Q_PROPERTY(QSizeF openFootprint READ openFootprint NOTIFY sizesChanged)
    Q_PROPERTY(QSizeF windowSize READ windowSize NOTIFY sizesChanged)
    Q_PROPERTY(double hoverScale READ hoverScale NOTIFY hoverScaleChanged)
    Q_PROPERTY(double contentPadding READ contentPadding NOTIFY sizesChanged)
    // How the notch is drawn: the handle of a hidden notch, translucency, round buttons.
    Q_PROPERTY(QSizeF handleSize READ handleSize NOTIFY sizesChanged)
    Q_PROPERTY(bool transparentHandle READ transparentHandle NOTIFY sizesChanged)
    Q_PROPERTY(bool transluscent READ transluscent NOTIFY sizesChanged)
    Q_PROPERTY(bool preferRoundButtons READ preferRoundButtons NOTIFY sizesChanged)
    // A full-screen window is what this screen shows, and whether the notch then keeps away.
    Q_PROPERTY(bool isFullScreen READ isFullScreen NOTIFY fullScreenChanged)
    Q_PROPERTY(bool hiddenForFullScreen READ hiddenForFullScreen NOTIFY fullScreenChanged)
public:
    enum class State { fineTuningWidth, fineTuningHeight, disabled, showingIntro, standardContent };
    Q_ENUM(State)

    struct Screen {
        QSizeF rawNotchSize;
        QSizeF size;
        QSizeF pointsPerInch;
        // The notebook's own panel, where the camera sits.
        bool builtInPanel = false;
    };

    NotchViewModel(const Screen& screen, const KelvaneState& kelvane, const SettingsStore& settings,
                   QObject* parent = nullptr);

    State notchState() const { return m_fineTuning.value_or(m_notchState); }
    bool isDisabled() const { return notchState() == State::disabled; }
    // Shows a calibration face (`fineTuningWidth` or `fineTuningHeight`), or with none the face
    // the settings give.
    void setFineTuning(std::optional<State> face);
    QString fineTuning() const;
    // The face for these settings: no notch at all on a screen without one when the user wants
    // notches only where there is a camera housing.
    void update(const GeneralSettings& settings, bool isNonNotch, bool isFullScreen);
    // Shows the introduction's face (`showingIntro`) while the guide is active.
    void followIntro(IntroGuide& guide);
    QObject* intro() const;

    bool hovering() const { return m_hovering; }
    void setHovering(bool hovering);
    bool pressing() const { return m_pressing; }
    void setPressing(bool pressing);
    bool isPanning() const { return m_isPanning; }
    void setPanning(bool panning);
    bool cancelPan() const { return m_cancelPan; }
    void setCancelPan(bool cancel);
    bool animatingBack() const { return m_animatingBack; }
    void setAnimatingBack(bool animatingBack);

    bool isNonNotch() const { return m_screen.rawNotchSize.height() == 0; }
    QSizeF notchSize() const;
    QSizeF drawnNotchSize() const;
    QSizeF openFootprint() const;
    QSizeF openFootprint(KelvaneState::Mode mode) const;
    QSizeF windowSize() const;
    double hoverScale() const;
    double contentPadding() const { return m_general->contentPadding; }
    QSizeF handleSize() const { return m_general->handleSize; }
    bool transparentHandle() const { return m_general->transparentHandle; }
    bool transluscent() const { return m_general->transluscent; }
    bool preferRoundButtons() const { return m_general->preferRoundButtons; }

    bool isFullScreen() const { return m_isFullScreen; }
    void setFullScreen(bool fullScreen);
    bool hiddenForFullScreen() const;

Q_SIGNALS:
    void notchStateChanged();
    void hoveringChanged();
    void pressingChanged();
    void isPanningChanged();
    void cancelPanChanged();
    void animatingBackChanged();
    void sizesChanged();
    void hoverScaleChanged();
    void fullScreenChanged();

private:
    const Screen m_screen;
    const KelvaneState& m_kelvane;
    SettingValue<GeneralSettings> m_general;
    SettingValue<TuckleSettings> m_tuckle;
    SettingValue<TraySettings> m_tray;
    SettingValue<DropAreaSettings> m_dropArea;

    State m_notchState = State::standardContent;
    std::optional<State> m_fineTuning;
    bool m_hovering = false;
    bool m_pressing = false;
    bool m_isPanning = false;
    bool m_cancelPan = false;
    bool m_animatingBack = false;
    bool m_isFullScreen = false;
    bool m_introActive = false;
    IntroGuide* m_intro = nullptr;
};

} // namespace kelvane
