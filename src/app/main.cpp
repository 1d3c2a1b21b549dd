#include "core/Log.h"
#include "core/QtScheduler.h"
#include "core/TimersManager.h"
#include "notch/HapticFeedback.h"
#include "notch/WindowsManager.h"
#include "platform/linux/QtScreenProvider.h"
#include "settings/NativeSettingsDomain.h"
#include "settings/SettingsStore.h"
#include "ui/QuickNotchWindowFactory.h"

#include <QGuiApplication>
#include <QQuickWindow>

using namespace kelvane;

int main(int argc, char** argv)
{
    // The notch is a handful of shapes: the software renderer starts faster and lighter than a
    // GPU context, and needs no GL driver.
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    // Windows above the others at a chosen place need X11 (also through XWayland); without an X
    // server the agent still runs, its notches kept off screen.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "xcb;offscreen");

    QGuiApplication app(argc, argv);
    QGuiApplication::setApplicationName(QStringLiteral("kelvane"));
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Kelvane"));
    QGuiApplication::setQuitOnLastWindowClosed(false);
    if (QGuiApplication::platformName() == QLatin1StringView("offscreen"))
        logLine(u"AppDelegate", QStringLiteral("No X display is available; the notches are kept off screen."));

    QtScheduler scheduler;
    TimersManager timers(scheduler);
    TimersManager::setShared(&timers);

    NativeSettingsDomain domain;
    SettingsStore settings(domain);
    SettingsStore::setShared(&settings);

    QtScreenProvider screens;
    QuickNotchWindowFactory windowFactory;
    NullHapticFeedback haptics;
    WindowsManager windowsManager(
        {scheduler, settings, screens, windowFactory, haptics, [] { return 0; }});
    WindowsManager::setShared(&windowsManager);

    return app.exec();
}
