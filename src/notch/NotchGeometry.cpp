#include "NotchGeometry.h"

#include "core/Spring.h"

#include <algorithm>
#include <cmath>

namespace kelvane::NotchGeometry {

QSizeF pointsPerInch(const QSizeF& sizeInPoints, const std::optional<QSizeF>& physicalSizeMm)
{
    if (!physicalSizeMm || !(physicalSizeMm->width() > 0) || !(physicalSizeMm->height() > 0) ||
        !(sizeInPoints.width() > 0) || !(sizeInPoints.height() > 0))
        return {72, 72};
    return {sizeInPoints.width() * 25.4 / physicalSizeMm->width(),
            sizeInPoints.height() * 25.4 / physicalSizeMm->height()};
}

QSizeF rawNotchSize(double safeAreaTopInset, const QSizeF& pointsPerInch)
{
    if (safeAreaTopInset == 0)
        return {0, 0};
    return {pointsPerInch.width() * notchWidthInches, safeAreaTopInset};
}

QSizeF virtualNotchSize(const QSizeF& pointsPerInch)
{
    return {pointsPerInch.width() * notchWidthInches, virtualNotchHeight};
}

QSizeF effectiveNotchSize(const QSizeF& raw, double widthFineTune, double heightFineTune)
{
    if (raw.height() == 0)
        return raw;
    return {raw.width() + widthFineTune * 0.5, raw.height() + heightFineTune * 0.5};
}

QSizeF openFootprint(const QSizeF& effectiveNotch, double screenWidth, const TuckleGrid::Size& grid)
{
    const double panelWidth = grid.width.value * gridCellPoints;
    const double available = std::max(screenWidth - 80, 320.0);
    const double width = std::max(effectiveNotch.width(), std::min(available, panelWidth));
    const double base = effectiveNotch.height() > 21.12 ? effectiveNotch.height() : 32.0;
    return {width, base + 50.0 * grid.height.value + 25.0};
}

double hoverScale(bool hovering, bool transluscent)
{
    return hovering && !transluscent ? hoverPopScale : 1.0;
}

QSizeF windowSize(const QSizeF& drawnNotch, const QSizeF& largestFootprint, double screenWidth)
{
    double overshoot = 0;
    for (const Spring& spring : Springs::all)
        overshoot = std::max(overshoot, spring.peakOvershoot());
    const double width = std::max(largestFootprint.width() * (1 + overshoot),
                                  drawnNotch.width() * hoverPopScale);
    const double height = std::max(largestFootprint.height() * (1 + overshoot),
                                   drawnNotch.height() * hoverPopScale);
    // One extra point: the window starts one point above the screen.
    return {std::min(std::ceil(width), screenWidth), std::ceil(height) + 1};
}

QRectF windowContentRect(const QSizeF& screenSize, const QSizeF& windowSize)
{
    return {(screenSize.width() - windowSize.width()) * 0.5,
            screenSize.height() - windowSize.height() + 1.0, windowSize.width(),
            windowSize.height()};
}

QRectF toDesktop(const QRectF& screenFrame, const QRectF& contentRectYUp)
{
    const double topFromScreenTop =
        screenFrame.height() - (contentRectYUp.y() + contentRectYUp.height());
    return {screenFrame.x() + contentRectYUp.x(), screenFrame.y() + topFromScreenTop,
            contentRectYUp.width(), contentRectYUp.height()};
}

} // namespace kelvane::NotchGeometry
