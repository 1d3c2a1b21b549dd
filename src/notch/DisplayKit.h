#pragma once

#include "KelvaneState.h"
#include "NotchController.h"
#include "NotchGestures.h"
#include "NotchViewModel.h"
#include "NotchWindow.h"

#include <QUuid>

#include <memory>

namespace kelvane {

// Everything one screen's notch is made of. A rebuild makes new ones; nothing is reused.
struct DisplayKit {
    QUuid id;
    ScreenInfo screen;
    // The hardware notch; (0, 0) on a screen without one.
    QSizeF notchSize;
    std::unique_ptr<KelvaneState> kelvane;
    std::unique_ptr<NotchViewModel> viewModel;
    std::unique_ptr<NotchController> controller;
    std::unique_ptr<NotchGestures> gestures;
    // Declared last so that it goes first: the views read the objects above.
    std::unique_ptr<NotchWindow> windowController;
};

} // namespace kelvane
