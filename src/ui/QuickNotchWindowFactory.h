#pragma once

#include "notch/NotchWindow.h"

#include <QQmlEngine>

#include <functional>

namespace kelvane {

class DropZone;
class KelvaneState;

class QuickNotchWindowFactory final : public NotchWindowFactory {
public:
    QuickNotchWindowFactory();
    // The project's own QML types (module "Kelvane"), for every view that uses them.
    static void registerTypes();
    std::unique_ptr<NotchWindow> createWindow(const NotchWindowSetup& setup) override;
    // The one QML engine of the agent, for its other windows too.
    QQmlEngine& engine() { return m_engine; }
    // Models every notch view shows, by property name; windows made later receive them.
    void setServices(QVariantMap services);
    // Makes the drop zone of each new notch.
    using DropZoneMaker = std::function<std::unique_ptr<DropZone>(KelvaneState&)>;
    void setDropZoneMaker(DropZoneMaker maker) { m_dropZoneMaker = std::move(maker); }

private:
    QQmlEngine m_engine;
    QVariantMap m_services;
    DropZoneMaker m_dropZoneMaker;
};

} // namespace kelvane
