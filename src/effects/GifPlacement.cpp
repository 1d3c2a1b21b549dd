#include "GifPlacement.h"

#include <cmath>

namespace kelvane {

QRectF placeGif(const QSizeF& box, const QSizeF& frame, double scale, double horizontalOffset, double verticalOffset)
{
    if (box.isEmpty() || frame.isEmpty())
        return {};
    if (!std::isfinite(scale) || scale <= 0)
        scale = 1;
    const double dx = std::isfinite(horizontalOffset) ? horizontalOffset : 0;
    const double dy = std::isfinite(verticalOffset) ? verticalOffset : 0;
    const QSizeF size = frame.scaled(box, Qt::KeepAspectRatio) * scale;
    return {(box.width() - size.width()) / 2 + dx, (box.height() - size.height()) / 2 - dy, size.width(),
            size.height()};
}

} // namespace kelvane
