#pragma once

#include "notch/NotchWindow.h"

namespace kelvane {

class QuickNotchWindowFactory final : public NotchWindowFactory {
public:
    QuickNotchWindowFactory();
    std::unique_ptr<NotchWindow> createWindow(const NotchWindowSpec& spec) override;
};

} // namespace kelvane
