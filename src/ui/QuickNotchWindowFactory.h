#pragma once

#include "notch/NotchWindow.h"

#include <QQmlEngine>

namespace kelvane {

class QuickNotchWindowFactory final : public NotchWindowFactory {
public:
    QuickNotchWindowFactory();
    std::unique_ptr<NotchWindow> createWindow(const NotchWindowSetup& setup) override;
    // The one QML engine of the agent, for its other windows too.
    QQmlEngine& engine() { return m_engine; }

private:
    QQmlEngine m_engine;
};

} // namespace kelvane
