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
    // Models every notch view shows, by property name; windows made later receive them.
    void setServices(QVariantMap services);

private:
    QQmlEngine m_engine;
    QVariantMap m_services;
};

} // namespace kelvane
