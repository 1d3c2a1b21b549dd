#pragma once

#include <QSGRendererInterface>
#include <QString>

#include <functional>

namespace kelvane {

// What draws the notches: Qt Quick's OpenGL path where the display has a hardware OpenGL driver,
// the software renderer otherwise. An OpenGL that is itself drawn by the processor (Mesa's
// llvmpipe, as on virtual machines) is slower to start, heavier and slower per frame than Qt's
// own software renderer, so it counts as none. `KELVANE_RENDERER` ("opengl" or "software")
// overrides the choice. Chosen once, after the application object exists and before the first
// window.
struct Renderer {
    QSGRendererInterface::GraphicsApi api = QSGRendererInterface::Software;
    // The one line that says what was chosen and why.
    QString description;

    static Renderer choose();
    // The choice, from what was asked (`KELVANE_RENDERER`), the window system's platform name,
    // whether the machine has a graphics device at all, and the OpenGL driver's name (asked only
    // when needed, as asking loads the driver into the process for good; empty when there is no
    // OpenGL).
    static Renderer decide(const QByteArray& asked, const QString& platform, bool graphicsDevice,
                           const std::function<QString()>& openGLDriver);
    // Makes `renderer` the one every Qt Quick window of the process uses.
    static void use(const Renderer& renderer);
};

} // namespace kelvane
