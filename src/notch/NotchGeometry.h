#pragma once

#include "settings/SettingsTypes.h"

#include <QRectF>
#include <QSizeF>

#include <optional>

namespace kelvane::NotchGeometry {

// The camera housing is treated as this many inches wide.
inline constexpr double notchWidthInches = 1.44313723;
// Height of the notch drawn on a screen that has none, so there is something to hover and drop on.
inline constexpr double virtualNotchHeight = 32;
// A cell of the widget grid is this many points square.
inline constexpr double gridCellPoints = 50;
// Hover pop of the closed notch.
inline constexpr double hoverPopScale = 1.25;

// Points per inch from the screen's size in points and in millimetres; 72 when either is unknown.
QSizeF pointsPerInch(const QSizeF& sizeInPoints, const std::optional<QSizeF>& physicalSizeMm);
// The hardware notch: (0, 0) when the screen has no top inset.
QSizeF rawNotchSize(double safeAreaTopInset, const QSizeF& pointsPerInch);
// What is drawn on a screen without a notch.
QSizeF virtualNotchSize(const QSizeF& pointsPerInch);
// The raw size with half of each user offset; a screen without a notch keeps (0, 0).
QSizeF effectiveNotchSize(const QSizeF& raw, double widthFineTune, double heightFineTune);
// The size an open panel of `grid` cells grows to.
QSizeF openFootprint(const QSizeF& effectiveNotch, double screenWidth, const TuckleGrid::Size& grid);
// The scale of the closed notch: popped while hovered, never with the glass look.
double hoverScale(bool hovering, bool transluscent);
// A window that holds the largest panel with room for the springs' overshoot, and the popped notch.
QSizeF windowSize(const QSizeF& drawnNotch, const QSizeF& largestFootprint, double screenWidth);

// The window's rectangle relative to its screen in the y-up convention: centred, and reaching one
// point above the top edge so that no gap shows.
QRectF windowContentRect(const QSizeF& screenSize, const QSizeF& windowSize);
// The same rectangle in desktop coordinates with y pointing down, as windows are placed.
QRectF toDesktop(const QRectF& screenFrame, const QRectF& contentRectYUp);

} // namespace kelvane::NotchGeometry
