#pragma once

#include "tray/DropZone.h"

namespace kelvane {

// The pointer as the X server sees it, whoever holds the pointer grab (during another
// application's drag the notch receives no pointer events).
class X11PointerProbe final : public PointerProbe {
public:
    QPointF position() const override;
    bool leftButtonDown() const override;
};

} // namespace kelvane
