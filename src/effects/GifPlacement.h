#pragma once

#include "settings/SettingsTypes.h"

#include <QRectF>

namespace kelvane {

// Where an animation is drawn in its box: fitted whole and centred, then scaled by `scale`
// about the centre and moved by the offsets (points; a positive vertical offset moves it up).
// A scale that is not a positive number counts as 1.
QRectF placeGif(const QSizeF& box, const QSizeF& frame, double scale, double horizontalOffset, double verticalOffset);
// Whether the animation's pixels are blended when scaled, or kept sharp.
inline bool smoothGif(GIFScalingQuality quality) { return quality == GIFScalingQuality::interpolated; }

} // namespace kelvane
