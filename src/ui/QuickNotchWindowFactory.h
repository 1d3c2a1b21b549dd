#pragma once

#include "notch/NotchWindow.h"

#include <QQmlEngine>

namespace kelvane {

class QuickNotchWindowFactory final : public NotchWindowFactory {
public:
    QuickNotchWindowFactory();
    std::unique_ptr<NotchWindow> createWindow(const NotchWindowSetup& setup) override;

private:
    QQmlEngine m_engine;
};

} // namespace kelvane
