#include "Renderer.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QQuickWindow>

namespace kelvane {

namespace {
Renderer software(const QString& reason)
{
    return {QSGRendererInterface::Software, QStringLiteral("Drawing in software: %1.").arg(reason)};
}

// The OpenGL driver's own name for itself, or nothing when no context can be made current.
QString openGLRenderer()
{
    QOpenGLContext context;
    if (!context.create())
        return {};
    QOffscreenSurface surface;
    surface.setFormat(context.format());
    surface.create();
    if (!surface.isValid() || !context.makeCurrent(&surface))
        return {};
    const auto* name = reinterpret_cast<const char*>(context.functions()->glGetString(GL_RENDERER));
    QString renderer = name ? QString::fromUtf8(name) : QStringLiteral("unknown driver");
    context.doneCurrent();
    return renderer;
}

// An OpenGL that the processor draws, as on machines without a graphics driver.
bool drawnInSoftware(const QString& driver)
{
    for (const char* name : {"llvmpipe", "softpipe", "swrast", "software rasterizer", "swiftshader"})
        if (driver.contains(QLatin1StringView(name), Qt::CaseInsensitive))
            return true;
    return false;
}

// A device that a hardware OpenGL driver draws through: a DRM node, or NVIDIA's own.
bool hasGraphicsDevice()
{
    const QDir dri(QStringLiteral("/dev/dri"));
    return !dri.entryList({QStringLiteral("card*"), QStringLiteral("renderD*")}, QDir::System).isEmpty() ||
           QFile::exists(QStringLiteral("/dev/nvidiactl"));
}
} // namespace

Renderer Renderer::decide(const QByteArray& asked, const QString& platform, bool graphicsDevice,
                          const std::function<QString()>& openGLDriver)
{
    const QByteArray wanted = asked.trimmed().toLower();
    if (wanted == "software")
        return software(QStringLiteral("asked for by KELVANE_RENDERER"));
    if (platform == QLatin1StringView("offscreen"))
        return software(QStringLiteral("there is no display"));
    // Without one, an OpenGL can only be drawn by the processor: not even worth loading.
    if (!graphicsDevice && wanted != "opengl")
        return software(QStringLiteral("the machine has no graphics device"));
    const QString driver = openGLDriver();
    if (driver.isEmpty())
        return software(QStringLiteral("the display offers no OpenGL"));
    if (wanted != "opengl" && drawnInSoftware(driver))
        return software(QStringLiteral("the display's OpenGL (%1) is itself drawn by the processor").arg(driver));
    return {QSGRendererInterface::OpenGL, QStringLiteral("Drawing with OpenGL (%1).").arg(driver)};
}

Renderer Renderer::choose()
{
    return decide(qgetenv("KELVANE_RENDERER"), QGuiApplication::platformName(), hasGraphicsDevice(), openGLRenderer);
}

void Renderer::use(const Renderer& renderer) { QQuickWindow::setGraphicsApi(renderer.api); }

} // namespace kelvane
