#pragma once

#include <QSGRendererInterface>
#include <QString>

namespace kelvane {

// What draws the notches: Qt Quick's OpenGL path wherever the display has an OpenGL driver, the
// software renderer otherwise. Chosen once, after the application object exists and before the
// first window; `KELVANE_RENDERER` ("opengl" or "software") overrides the choice.
struct Renderer {
    QSGRendererInterface::GraphicsApi api = QSGRendererInterface::Software;
    // The one line that says what was chosen and why.
    QString description;

    static Renderer choose();
    // Makes `renderer` the one every Qt Quick window of the process uses.
    static void use(const Renderer& renderer);
};

} // namespace kelvane
