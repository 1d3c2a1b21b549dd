#pragma once

#include "ScreenProvider.h"

namespace kelvane {

// A screen as it was at the last rebuild: what decides whether a change matters.
struct Configuration {
    QRectF frame;
    double backingScaleFactor = 1;
    QString colorSpace;

    static inline const QString genericDeviceColorSpace = QStringLiteral("genericDevice");

    static Configuration of(const ScreenInfo& screen)
    {
        return {screen.frame, screen.backingScaleFactor,
                screen.colorSpace.value_or(genericDeviceColorSpace)};
    }
    bool operator==(const Configuration&) const = default;
};

} // namespace kelvane
