#include "QuickNotchWindowFactory.h"

#include "QuickNotchWindow.h"
#include "SpringValue.h"

#include "notch/KelvaneState.h"
#include "notch/NotchController.h"
#include "notch/NotchViewModel.h"
#include "notch/WindowsManager.h"

#include <QQmlEngine>

namespace kelvane {

namespace {
void registerTypes()
{
    static bool registered = false;
    if (registered)
        return;
    registered = true;
    const char* uri = "Kelvane";
    qmlRegisterType<SpringValue>(uri, 1, 0, "SpringValue");
    const QString owned = QStringLiteral("owned by the window manager");
    qmlRegisterUncreatableType<KelvaneState>(uri, 1, 0, "KelvaneState", owned);
    qmlRegisterUncreatableType<NotchViewModel>(uri, 1, 0, "NotchViewModel", owned);
    qmlRegisterUncreatableType<NotchController>(uri, 1, 0, "NotchController", owned);
    qmlRegisterUncreatableType<WindowsManager>(uri, 1, 0, "WindowsManager", owned);
    qmlRegisterUncreatableType<QuickNotchWindow>(uri, 1, 0, "NotchWindow", owned);
}
} // namespace

QuickNotchWindowFactory::QuickNotchWindowFactory()
{
    registerTypes();
}

std::unique_ptr<NotchWindow> QuickNotchWindowFactory::createWindow(const NotchWindowSetup& setup)
{
    return std::make_unique<QuickNotchWindow>(setup, m_engine);
}

} // namespace kelvane
