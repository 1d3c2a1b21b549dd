#include "Renderer.h"

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
} // namespace

Renderer Renderer::choose()
{
    const QByteArray asked = qgetenv("KELVANE_RENDERER").trimmed().toLower();
    if (asked == "software")
        return software(QStringLiteral("asked for by KELVANE_RENDERER"));
    if (QGuiApplication::platformName() == QLatin1StringView("offscreen"))
        return software(QStringLiteral("there is no display"));
    const QString driver = openGLRenderer();
    if (driver.isEmpty())
        return software(QStringLiteral("the display offers no OpenGL"));
    return {QSGRendererInterface::OpenGL, QStringLiteral("Drawing with OpenGL (%1).").arg(driver)};
}

void Renderer::use(const Renderer& renderer) { QQuickWindow::setGraphicsApi(renderer.api); }

} // namespace kelvane
