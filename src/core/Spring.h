#pragma once

#include <QObject>

namespace kelvane {

// A critically, under- or over-damped spring given the way designers give it: the response (the
// period of the undamped oscillation, in seconds) and the damping fraction (1 = no overshoot,
// below 1 = overshoot). The maths is that of a unit mass on a spring of stiffness (2π/response)².
struct Spring {
    Q_GADGET
    Q_PROPERTY(double response MEMBER response)
    Q_PROPERTY(double dampingFraction MEMBER dampingFraction)
    Q_PROPERTY(double blendDuration MEMBER blendDuration)
public:
    double response = 0.5;
    double dampingFraction = 1.0;
    double blendDuration = 0.0;

    bool operator==(const Spring&) const = default;

    // Displacement from the target and velocity, t seconds after a start with displacement x0 and
    // velocity v0 (units per second).
    Q_INVOKABLE double displacement(double t, double x0, double v0 = 0.0) const;
    Q_INVOKABLE double velocity(double t, double x0, double v0 = 0.0) const;
    // Progress from 0 to 1 of a move that starts at rest: overshoots past 1 when underdamped.
    Q_INVOKABLE double progress(double t) const { return 1.0 - displacement(t, 1.0); }
    // Time after which a move started at rest stays within tolerance of its target (relative to
    // the distance travelled): when the animation is logically complete.
    Q_INVOKABLE double settlingTime(double tolerance = 0.001) const;
    // Largest excursion past the target, relative to the distance travelled (0 when damped).
    Q_INVOKABLE double peakOvershoot() const;
};

// How panel content enters and leaves: scaled from the notch's anchor, moved and delayed.
struct ContentTransition {
    double scale = 0.5;
    double offset = -0.25;
    double delay = 0.1;
};

namespace Springs {
// Opening when the glass look is off.
inline constexpr Spring animation{0.5, 0.625, 0.0};
// Emphasised changes.
inline constexpr Spring intenseAnimation{0.5, 0.55, 0.0};
// Opening and closing with the glass look on.
inline constexpr Spring liquidOpenFootprint{0.5, 0.6, 0.0};
inline constexpr Spring liquidCloseFootprint{0.62, 0.62, 0.0};
// Closing with the glass look off, and closing when the window loses focus.
inline constexpr Spring closePlain{0.4, 1.0, 0.0};
inline constexpr Spring unhide{0.5, 1.0, 0.0};
// Removal of an expired volume or brightness indicator.
inline constexpr Spring indicatorResize{0.3, 0.7, 0.0};

inline constexpr Spring all[] = {animation,   intenseAnimation, liquidOpenFootprint,
                                 liquidCloseFootprint, closePlain, unhide, indicatorResize};

inline constexpr ContentTransition defaultTransition{0.5, -0.25, 0.1};
} // namespace Springs

} // namespace kelvane

Q_DECLARE_METATYPE(kelvane::Spring)
